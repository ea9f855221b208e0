#include "agent/ReminderDelivery.h"

#include "store/StoreError.h"

#include <algorithm>
#include <cmath>

namespace korvex::agent {

using schedule::ReminderRequest;
using store::StoreError;

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds kFirstRetry{1};
constexpr Seconds kLongestRetry{300};
/// In seconds: how far the written moment may lie behind.
constexpr double kWatchedFor = 3600;

bool isSame(const ReminderRequest& left, const ReminderRequest& right) {
    return left.entryID == right.entryID && left.date == right.date;
}

} // namespace

ReminderDelivery::ReminderDelivery(ReminderTable& table, const base::Clock& clock,
                                   const base::RunLoop& runLoop, base::LogSink& log)
    : m_table(table), m_clock(clock), m_runLoop(runLoop), m_log(log, "ReminderDelivery") {}

void ReminderDelivery::useStore(store::ModelContext* context) {
    m_context = context;
    catchUp(m_clock.now());
}

void ReminderDelivery::catchUp(base::Instant now) {
    if (!m_context) {
        return;
    }
    const auto written = m_table.watchedUntil();
    const auto since = m_watchedUntil ? m_watchedUntil : written;
    std::vector<ReminderRequest> missed;
    try {
        schedule::StoredReminders(*m_context)
            .forEachBetween(since.value_or(now), now, [&](const auto& view) {
                if (view.updatedAt <= view.date) {
                    missed.push_back(view.request());
                }
            });
    } catch (const StoreError& error) {
        m_log.warning("Missed reminders cannot be read; code " + std::to_string(error.code()));
        return;
    }
    // What was looked at already is known, so it may be looked at again: to write each moment down
    // would cost more.
    if (!missed.empty() || !m_watchedUntil || !written || now < *written ||
        now - *written > kWatchedFor) {
        m_table.changeTogether([&] {
            for (const auto& request : missed) {
                m_table.putUnlessKnown(request);
            }
            m_table.setWatchedUntil(now);
        });
    }
    m_watchedUntil = now;
}

void ReminderDelivery::setDaemon(const std::optional<std::string>& daemon) {
    if (daemon == m_daemon) {
        return;
    }
    if (daemon) {
        // What was closed under the former one must not be due again.
        recordAgain();
        if (m_hadDaemon) {
            m_table.postOthersAgain(*daemon);
        } else {
            m_table.postAllAgain(*daemon);
        }
        m_hadDaemon = true;
        m_failures = 0;
        m_retryAt.reset();
        m_closing.clear();
        std::erase_if(m_unrecorded,
                      [&](const Unrecorded& each) { return each.shown.daemon != *daemon; });
    }
    m_daemon = daemon;
}

std::vector<ReminderRequest> ReminderDelivery::takeDue() {
    const auto now = m_clock.now();
    catchUp(now);
    recordAgain();
    std::vector<ReminderRequest> taken;
    if (retryDelay()) {
        return taken;
    }
    // As long as some do not stand any more, others may be due behind them.
    for (auto areOthers = true; areOthers && m_underWay.size() < kMaximumUnderWay;) {
        areOthers = false;
        for (auto& request :
             m_table.due(now, kMaximumUnderWay + m_underWay.size() + m_unrecorded.size())) {
            if (isTaken(request) || m_underWay.size() == kMaximumUnderWay) {
                continue;
            }
            if (stillStands(request, now)) {
                m_underWay.push_back(request);
                taken.push_back(std::move(request));
            } else {
                areOthers = true;
            }
        }
    }
    return taken;
}

std::optional<base::Instant> ReminderDelivery::nextDue() {
    return m_table.nextDue(m_clock.now());
}

std::optional<Seconds> ReminderDelivery::retryDelay() const {
    const auto now = m_runLoop.elapsed();
    return m_retryAt && *m_retryAt > now ? std::optional(*m_retryAt - now) : std::nullopt;
}

bool ReminderDelivery::stillStands(ReminderRequest& request, base::Instant now) {
    const auto answer = asked(request.entryID);
    if (!answer) {
        return true;
    }
    if (!answer->request) {
        m_table.withdraw(request.entryID);
        return false;
    }
    if (*answer->request != request) {
        m_table.put(*answer->request);
        request = *answer->request;
    }
    return request.date <= now;
}

std::optional<ReminderDelivery::Asked> ReminderDelivery::asked(const base::Uuid& entry) const {
    if (!m_context) {
        return std::nullopt;
    }
    try {
        return Asked{schedule::StoredReminders(*m_context).of(entry)};
    } catch (const StoreError& error) {
        // Rather a reminder too many than one too few.
        m_log.warning("A reminder cannot be compared with the store; code " +
                      std::to_string(error.code()));
        return std::nullopt;
    }
}

void ReminderDelivery::recordPosted(const ReminderRequest& request,
                                    const ShownNotification& shown) {
    forgetUnderWay(request);
    if (!m_hadDaemon) {
        setDaemon(shown.daemon);
    }
    if (shown.daemon != m_daemon) {
        return; // gone with it, and due again
    }
    m_failures = 0;
    m_unrecorded.push_back({.request = request, .shown = shown});
    recordAgain();
}

void ReminderDelivery::recordAgain() {
    try {
        while (!m_unrecorded.empty()) {
            const auto& [request, shown, isClosed] = m_unrecorded.front();
            m_table.setPosted(request.entryID, request.date, shown);
            if (isClosed) {
                m_table.setClosed(shown);
            }
            m_unrecorded.erase(m_unrecorded.begin());
        }
    } catch (const StoreError& error) {
        m_log.error("A reminder is shown and could not be recorded; code " +
                    std::to_string(error.code()));
    }
}

void ReminderDelivery::recordFailed(const ReminderRequest& request) {
    forgetUnderWay(request);
    if (retryDelay()) {
        return; // together with another, which has said so already
    }
    const auto delay = std::min(kFirstRetry * std::exp2(std::min(m_failures, 30)), kLongestRetry);
    ++m_failures;
    m_retryAt = m_runLoop.elapsed() + delay;
}

void ReminderDelivery::recordClosed(const ShownNotification& shown) {
    std::erase(m_closing, shown);
    const auto unrecorded =
        std::find_if(m_unrecorded.begin(), m_unrecorded.end(),
                     [&](const Unrecorded& each) { return each.shown == shown; });
    if (unrecorded != m_unrecorded.end()) {
        unrecorded->isClosed = true;
    } else {
        m_table.setClosed(shown);
    }
}

std::vector<ShownNotification> ReminderDelivery::takeWithdrawals() {
    std::vector<ShownNotification> taken;
    for (auto& shown : m_table.withdrawals()) {
        if (shown.daemon == m_daemon &&
            std::find(m_closing.begin(), m_closing.end(), shown) == m_closing.end()) {
            m_closing.push_back(shown);
            taken.push_back(std::move(shown));
        }
    }
    return taken;
}

std::optional<base::Uuid> ReminderDelivery::entryOf(const ShownNotification& shown) {
    for (const auto& each : m_unrecorded) {
        if (each.shown == shown) {
            return each.request.entryID;
        }
    }
    return m_table.entryOf(shown);
}

void ReminderDelivery::reviewShown() {
    for (const auto& request : m_table.posted()) {
        const auto answer = asked(request.entryID);
        if (answer && (!answer->request || answer->request->date != request.date)) {
            m_table.withdraw(request.entryID);
        }
    }
}

bool ReminderDelivery::isTaken(const ReminderRequest& request) const {
    return std::any_of(m_underWay.begin(), m_underWay.end(),
                       [&](const auto& each) { return isSame(each, request); }) ||
           std::any_of(m_unrecorded.begin(), m_unrecorded.end(),
                       [&](const auto& each) { return isSame(each.request, request); });
}

void ReminderDelivery::forgetUnderWay(const ReminderRequest& request) {
    std::erase_if(m_underWay, [&](const auto& each) { return isSame(each, request); });
}

} // namespace korvex::agent
