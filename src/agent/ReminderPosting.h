#pragma once

#include "agent/ReminderDelivery.h"
#include "agent/UserStore.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/bus/NotificationDaemon.h"
#include "platform/system/WallClockTimer.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace korvex::agent {

/// Hands what is due to whoever shows notifications, at its moment, and what became of it back.
/// Main thread; all that it is given must outlive it.
class ReminderPosting final {
public:
    /// What is due is compared with the store, which is opened for that.
    ReminderPosting(ReminderDelivery& delivery, UserStore& store,
                    platform::bus::NotificationDaemon& daemon, base::RunLoop& runLoop,
                    base::LogSink& log);

    /// To be called once it is certain that nobody else shows the same: until then nothing is
    /// handed out.
    void begin();
    /// Does what is to be done now, and sees to it that it is called when there is more. To be
    /// called after every event: a reconcile, an action, a change of the clock, another daemon.
    void serve();
    /// Whether it waits for no answer of the daemon.
    bool isQuiet() const { return m_awaited == 0; }

    /// The table has failed: it is to be reconciled, which begins one anew that is damaged.
    base::Signal<>& tableFailed() { return m_tableFailed; }
    /// Emitted when the last answer has come.
    base::Signal<>& becameQuiet() { return m_becameQuiet; }

private:
    void post(const schedule::ReminderRequest& request);
    void close(const ShownNotification& shown);
    void answered(const std::function<void()>& record);
    void attempt(const std::function<void()>& work);
    void awaitNext();

    ReminderDelivery& m_delivery;
    UserStore& m_store;
    platform::bus::NotificationDaemon& m_daemon;
    base::RunLoop& m_runLoop;
    base::Logger m_log;
    bool m_hasBegun = false;
    std::size_t m_awaited = 0;
    bool m_willServe = false;
    platform::system::WallClockTimer m_due;
    /// After a failure, of the daemon or of the table.
    std::unique_ptr<base::RunLoop::Timer> m_retry;
    base::Signal<> m_tableFailed;
    base::Signal<> m_becameQuiet;
    base::Subscription m_closed;
    /// Gone with this object: posted work may outlive it.
    std::shared_ptr<const bool> m_life = std::make_shared<bool>(true);
};

} // namespace korvex::agent
