#include "agent/ReminderDelivery.h"

#include "store/StoreError.h"

#include <algorithm>
#include <cmath>
#include <utility>

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
    const auto since = (m_watchedUntil ? m_watchedUntil : written).value_or(now);
    std::vector<ReminderRequest> missed;
    try {
        schedule::StoredReminders(*m_context).forEachBetween(since, now, [&](const auto& view) {
            if (view.updatedAt <= view.date) {
                missed.push_back(view.request());
            }
        });
    } catch (const StoreError& error) {
        m_log.warning("Missed reminders cannot be read; code " + std::to_string(error.code()));
        m_tryAgainAt = m_runLoop.elapsed() + kTableRetry;
        return;
    }
    // What was looked at already is known, so it may be looked at again: to write each moment down
    // would cost more.
    const auto isWritten = (missed.empty() && m_watchedUntil && written && now >= *written &&
                            now - *written <= kWatchedFor) ||
                           attemptWrite([&] {
                               m_table.changeTogether([&] {
                                   for (const auto& request : missed) {
                                       m_table.putUnlessKnown(request);
                                   }
                                   m_table.setWatchedUntil(now);
                               });
                           });
    m_watchedUntil = isWritten ? now : std::min(since, now);
}

void ReminderDelivery::setDaemon(const std::optional<std::string>& daemon) {
    if (daemon == m_daemon) {
        return;
    }
    m_daemon = daemon;
    if (!daemon) {
        return;
    }
    // It may do better; one that ends whenever it is asked does not.
    endPauses();
    m_closing.clear();
    using enum Unrecorded::What;
    const auto what = m_lastDaemon ? otherDaemon : firstDaemon;
    m_lastDaemon = daemon;
    record({.what = what, .shown = {.daemon = *daemon}});
}

void ReminderDelivery::endPauses() {
    m_backOff.until.reset();
    for (auto& each : m_refused) {
        each.backOff.until.reset();
    }
}

std::vector<ReminderRequest> ReminderDelivery::takeDue() {
    const auto now = m_clock.now();
    m_tryAgainAt.reset();
    recordAgain();
    catchUp(now);
    std::vector<ReminderRequest> taken;
    if (isWaiting(m_backOff)) {
        return taken;
    }
    const auto room = kMaximumUnderWay - m_underWay.size();
    // What does not stand any more and cannot be written away.
    std::vector<ReminderRequest> left;
    // As long as some do not stand any more, others may be due behind them.
    for (auto areOthers = true; areOthers && taken.size() < room;) {
        areOthers = false;
        const auto atMost = kMaximumUnderWay + m_underWay.size() + m_unrecorded.size() +
                            m_refused.size() + left.size();
        for (auto& request : m_table.due(now, atMost)) {
            const auto isLikeIt = [&](const auto& each) { return isSame(each, request); };
            if (taken.size() == room || isTaken(request) ||
                std::any_of(taken.begin(), taken.end(), isLikeIt) ||
                std::any_of(left.begin(), left.end(), isLikeIt)) {
                continue;
            }
            const auto standing = standingOf(request, now);
            if (standing == Standing::asked) {
                taken.push_back(std::move(request));
                continue;
            }
            areOthers = true;
            if (standing == Standing::unknown) {
                left.push_back(std::move(request));
            }
        }
    }
    m_underWay.insert(m_underWay.end(), taken.begin(), taken.end());
    return taken;
}

std::optional<base::Instant> ReminderDelivery::nextDue() {
    return m_table.nextDue(m_clock.now());
}

std::optional<Seconds> ReminderDelivery::retryDelay() const {
    const auto now = m_runLoop.elapsed();
    std::optional<Seconds> soonest;
    const auto add = [&](const std::optional<Seconds>& moment) {
        if (moment && *moment > now && (!soonest || *moment - now < *soonest)) {
            soonest = *moment - now;
        }
    };
    add(m_backOff.until);
    add(m_tryAgainAt);
    for (const auto& each : m_refused) {
        add(each.backOff.until);
    }
    return soonest;
}

/// `unknown` where it is not asked for now, and the table could not be told. `request` is then as
/// it was.
ReminderDelivery::Standing ReminderDelivery::standingOf(ReminderRequest& request,
                                                        base::Instant now) {
    const auto answer = asked(request.entryID);
    if (!answer || answer->request == request) {
        return Standing::asked;
    }
    const auto isWritten = attemptWrite([&] {
        if (answer->request) {
            m_table.put(*answer->request);
        } else {
            m_table.withdraw(request.entryID);
        }
    });
    // Under another moment than the table's its answer could not be recorded.
    if (!isWritten && !(answer->request && isSame(*answer->request, request))) {
        return Standing::unknown;
    }
    if (!answer->request) {
        return Standing::notAsked;
    }
    request = *answer->request;
    return request.date <= now ? Standing::asked : Standing::notAsked;
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
    std::erase_if(m_refused, [&](const Refused& each) { return isSame(each.request, request); });
    if (!m_lastDaemon) {
        setDaemon(shown.daemon);
    }
    if (shown.daemon != m_daemon) {
        return; // gone with it, and due again
    }
    m_backOff = {};
    record({.what = Unrecorded::What::posted, .shown = shown, .request = request});
}

void ReminderDelivery::record(Unrecorded unrecorded) {
    m_unrecorded.push_back(std::move(unrecorded));
    recordAgain();
}

void ReminderDelivery::recordAgain() {
    const auto write = [this](const Unrecorded& each) {
        switch (each.what) {
        case Unrecorded::What::posted:
            return m_table.setPosted(each.request.entryID, each.request.date, each.shown);
        case Unrecorded::What::closed:
            return m_table.setClosed(each.shown);
        case Unrecorded::What::firstDaemon:
            return m_table.postAllAgain(each.shown.daemon);
        case Unrecorded::What::otherDaemon:
            return m_table.postOthersAgain(each.shown.daemon);
        }
    };
    while (!m_unrecorded.empty() && attemptWrite([&] { write(m_unrecorded.front()); })) {
        m_unrecorded.erase(m_unrecorded.begin());
    }
}

bool ReminderDelivery::attemptWrite(const std::function<void()>& write) {
    try {
        write();
        m_hasSaidFailure = false;
        return true;
    } catch (const StoreError& error) {
        if (!std::exchange(m_hasSaidFailure, true)) {
            m_log.error("What has become of a reminder could not be recorded; code " +
                        std::to_string(error.code()));
        }
        m_tryAgainAt = m_runLoop.elapsed() + kTableRetry;
        return false;
    }
}

void ReminderDelivery::recordFailed(const ReminderRequest& request) {
    forgetUnderWay(request);
    // Together with another it is one failure.
    if (!isWaiting(m_backOff)) {
        m_backOff.lengthen(m_runLoop.elapsed());
    }
}

void ReminderDelivery::recordRefused(const ReminderRequest& request) {
    forgetUnderWay(request);
    const auto now = m_runLoop.elapsed();
    // Nobody asks for those any more.
    std::erase_if(m_refused, [&](const Refused& each) {
        return each.backOff.until && *each.backOff.until + kLongestRetry < now;
    });
    auto known = std::find_if(m_refused.begin(), m_refused.end(),
                              [&](const Refused& each) { return isSame(each.request, request); });
    if (known == m_refused.end()) {
        known = m_refused.insert(known, Refused{.request = request, .backOff = {}});
    }
    known->backOff.lengthen(now);
}

void ReminderDelivery::BackOff::lengthen(Seconds now) {
    until = now + std::min(kFirstRetry * std::exp2(std::min(failures, 30)), kLongestRetry);
    ++failures;
}

bool ReminderDelivery::isWaiting(const BackOff& backOff) const {
    return backOff.until && *backOff.until > m_runLoop.elapsed();
}

void ReminderDelivery::recordClosed(const ShownNotification& shown) {
    std::erase(m_closing, shown);
    record({.what = Unrecorded::What::closed, .shown = shown});
}

std::vector<ShownNotification> ReminderDelivery::takeWithdrawals() {
    std::vector<ShownNotification> taken;
    for (auto& shown : m_table.withdrawals()) {
        if (shown.daemon == m_daemon && !isUnrecordedClosed(shown) &&
            std::find(m_closing.begin(), m_closing.end(), shown) == m_closing.end()) {
            m_closing.push_back(shown);
            taken.push_back(std::move(shown));
        }
    }
    return taken;
}

std::optional<base::Uuid> ReminderDelivery::entryOf(const ShownNotification& shown) {
    for (auto each = m_unrecorded.rbegin(); each != m_unrecorded.rend(); ++each) {
        if (each->shown == shown) {
            return each->what == Unrecorded::What::posted ? std::optional(each->request.entryID)
                                                          : std::nullopt;
        }
    }
    return m_table.entryOf(shown);
}

void ReminderDelivery::reviewShown() {
    recordAgain();
    for (const auto& request : m_table.posted()) {
        const auto answer = asked(request.entryID);
        if (answer && (!answer->request || answer->request->date != request.date)) {
            attemptWrite([&] { m_table.withdraw(request.entryID); });
        }
    }
}

bool ReminderDelivery::isUnrecordedClosed(const ShownNotification& shown) const {
    return std::any_of(m_unrecorded.begin(), m_unrecorded.end(), [&](const Unrecorded& each) {
        return each.what == Unrecorded::What::closed && each.shown == shown;
    });
}

bool ReminderDelivery::isTaken(const ReminderRequest& request) const {
    const auto isShown = [&](const Unrecorded& each) {
        return each.what == Unrecorded::What::posted && isSame(each.request, request) &&
               (each.shown.daemon == m_lastDaemon || isUnrecordedClosed(each.shown));
    };
    return std::any_of(m_underWay.begin(), m_underWay.end(),
                       [&](const auto& each) { return isSame(each, request); }) ||
           std::any_of(m_unrecorded.begin(), m_unrecorded.end(), isShown) ||
           std::any_of(m_refused.begin(), m_refused.end(), [&](const Refused& each) {
               return isSame(each.request, request) && isWaiting(each.backOff);
           });
}

void ReminderDelivery::forgetUnderWay(const ReminderRequest& request) {
    std::erase_if(m_underWay, [&](const auto& each) { return isSame(each, request); });
}

} // namespace korvex::agent
