#include "agent/ReminderPosting.h"

#include "base/Error.h"
#include "store/StoreError.h"

#include <chrono>
#include <string>
#include <utility>

namespace korvex::agent {

namespace {

using platform::bus::NotificationDaemon;
using schedule::ReminderNotification;

/// One that is damaged is begun anew, which need not wait.
constexpr std::chrono::seconds kDamageRetry{1};

ShownNotification toShown(const NotificationDaemon::Shown& shown) {
    return {.id = shown.id, .daemon = shown.daemon};
}

NotificationDaemon::Notification notificationOf(const schedule::ReminderRequest& request) {
    return {.title = std::string(ReminderNotification::kTitle),
            .body = request.body,
            .action = std::string(ReminderNotification::kCompleteAction),
            .actionTitle = std::string(ReminderNotification::kCompleteTitle),
            .category = std::string(ReminderNotification::kCategory)};
}

} // namespace

ReminderPosting::ReminderPosting(ReminderDelivery& delivery, UserStore& store,
                                 NotificationDaemon& daemon, base::RunLoop& runLoop,
                                 base::LogSink& log)
    : m_delivery(delivery),
      m_store(store),
      m_daemon(daemon),
      m_runLoop(runLoop),
      m_log(log, "ReminderPosting"),
      m_due(runLoop, [this] { serve(); }) {
    m_closed = m_daemon.closed().connect([this](const NotificationDaemon::Shown& shown) {
        attempt([&] { m_delivery.recordClosed(toShown(shown)); });
    });
}

void ReminderPosting::begin() {
    m_hasBegun = true;
    serve();
}

void ReminderPosting::serve() {
    attempt([this] {
        if (m_daemon.presence() == NotificationDaemon::Presence::unknown) {
            return;
        }
        try {
            m_store.open();
        } catch (const base::Error&) {
            // It is logged, and followed by who plans. What is due goes by the table meanwhile;
            // where that has failed, the next call says so.
        }
        m_delivery.setDaemon(m_daemon.identity());
        m_delivery.reviewShown();
        if (!m_hasBegun) {
            return;
        }
        // Where nobody can be had, all of it waits for somebody to come.
        if (m_daemon.presence() != NotificationDaemon::Presence::missing) {
            for (const auto& request : m_delivery.takeDue()) {
                post(request);
            }
        }
        for (const auto& shown : m_delivery.takeWithdrawals()) {
            close(shown);
        }
        awaitNext();
    });
}

void ReminderPosting::post(const schedule::ReminderRequest& request) {
    ++m_awaited;
    m_daemon.show(notificationOf(request), [this, request](const auto& outcome) {
        answered([&] {
            // It may be the first thing that is heard of this daemon.
            m_delivery.setDaemon(m_daemon.identity());
            if (outcome.shown) {
                m_delivery.recordPosted(request, toShown(*outcome.shown));
            } else if (outcome.isRefused) {
                m_delivery.recordRefused(request);
            } else {
                m_delivery.recordFailed(request);
            }
        });
    });
}

void ReminderPosting::close(const ShownNotification& shown) {
    ++m_awaited;
    m_daemon.close({shown.id, shown.daemon},
                   [this, shown] { answered([&] { m_delivery.recordClosed(shown); }); });
}

void ReminderPosting::answered(const std::function<void()>& record) {
    --m_awaited;
    attempt(record);
    // Once for all the answers that have come together.
    if (!std::exchange(m_willServe, true)) {
        m_runLoop.post([this, life = std::weak_ptr<const bool>(m_life)] {
            if (!life.expired()) {
                m_willServe = false;
                serve();
            }
        });
    }
    if (isQuiet()) {
        m_becameQuiet.emit();
    }
}

void ReminderPosting::awaitNext() {
    m_due.set(m_delivery.nextDue());
    m_retry.reset();
    if (const auto delay = m_delivery.retryDelay()) {
        m_retry = m_runLoop.callAfter(*delay, [this] { serve(); });
    }
}

void ReminderPosting::attempt(const std::function<void()>& work) {
    try {
        work();
    } catch (const store::StoreError& error) {
        m_log.error(std::string("The file of reminders cannot be used: ") + error.what());
        m_retry = m_runLoop.callAfter(ReminderFile::isDamage(error) ? kDamageRetry : kTableRetry,
                                      [this] { m_tableFailed.emit(); });
    }
}

} // namespace korvex::agent
