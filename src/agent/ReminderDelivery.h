#pragma once

#include "agent/ReminderTable.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "schedule/ReminderRequest.h"
#include "schedule/StoredReminders.h"
#include "store/ModelContext.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvex::agent {

/// Which reminders are to be shown now, and what comes next. Knows no bus: whoever has one asks
/// this after each event, hands what it says to the notification daemon, and reports what became of
/// it. A request stays pending until the daemon's answer is recorded, so that none is lost; between
/// the two it is under way, and not given out again by this object. What is due is compared with
/// the store once more before it is shown. Throws StoreError where the table fails. Main thread;
/// all that it is given must outlive it.
class ReminderDelivery {
public:
    /// How many are under way at once.
    static constexpr std::size_t kMaximumUnderWay = 16;

    /// The run loop only says how much time has passed, however the clock was set meanwhile.
    ReminderDelivery(ReminderTable& table, const base::Clock& clock, const base::RunLoop& runLoop,
                     base::LogSink& log);

    /// The store to compare with, from now on; without one, and where it cannot be read, the table
    /// is believed.
    void useStore(store::ModelContext* context);

    /// Which daemon shows notifications from now on; absent while there is none. What another one
    /// has shown is gone with it and due again. At first also what this one has shown to a former
    /// agent, whose notifications do not lead here, and are to be closed.
    void setDaemon(const std::optional<std::string>& daemon);

    /// What is to be shown now; each is answered by `recordPosted` or `recordFailed`. That too what
    /// was set and came due before anybody planned it, as while no agent was there. A todo that was
    /// changed since, such as one that is open again, is no longer reminded of.
    std::vector<schedule::ReminderRequest> takeDue();
    /// When there is something to be shown next, by the clock: to be asked again whenever something
    /// was taken, reported or planned, and when the clock was set or the machine has slept. Absent
    /// where nothing waits.
    std::optional<base::Instant> nextDue();
    /// How long `takeDue` gives nothing out since the daemon has failed; absent where it has not.
    std::optional<std::chrono::duration<double>> retryDelay() const;

    /// The daemon shows it. Where the table cannot be written, that is remembered and written
    /// later: it is not shown twice for that.
    void recordPosted(const schedule::ReminderRequest& request, const ShownNotification& shown);
    /// The daemon refused it, or did not answer. It is tried again after a while that doubles with
    /// each failure, or when there is another daemon.
    void recordFailed(const schedule::ReminderRequest& request);
    /// A notification was closed, by whomever.
    void recordClosed(const ShownNotification& shown);

    /// Notifications that the daemon is to close; each is answered by `recordClosed`, also where it
    /// knows of none, and else given out again to the next agent.
    std::vector<ShownNotification> takeWithdrawals();
    /// The todo that a notification of ours reminds of.
    std::optional<base::Uuid> entryOf(const ShownNotification& shown);
    /// Withdraws what is shown and no longer asked for in the store. To be called when that may
    /// have changed.
    void reviewShown();

private:
    /// The daemon's answer that could not be written yet.
    struct Unrecorded {
        schedule::ReminderRequest request;
        ShownNotification shown;
        bool isClosed = false;
    };

    void catchUp(base::Instant now);
    void recordAgain();
    bool isTaken(const schedule::ReminderRequest& request) const;
    void forgetUnderWay(const schedule::ReminderRequest& request);
    bool stillStands(schedule::ReminderRequest& request, base::Instant now);
    /// What the store asks for; absent where nobody can say.
    struct Asked {
        std::optional<schedule::ReminderRequest> request;
    };
    std::optional<Asked> asked(const base::Uuid& entry) const;

    ReminderTable& m_table;
    const base::Clock& m_clock;
    const base::RunLoop& m_runLoop;
    base::Logger m_log;
    store::ModelContext* m_context = nullptr;
    /// Up to when `catchUp` has looked. The table has it too, but not each time.
    std::optional<base::Instant> m_watchedUntil;
    std::optional<std::string> m_daemon;
    bool m_hadDaemon = false;
    std::vector<schedule::ReminderRequest> m_underWay;
    std::vector<Unrecorded> m_unrecorded;
    std::vector<ShownNotification> m_closing;
    int m_failures = 0;
    std::optional<std::chrono::duration<double>> m_retryAt;
};

} // namespace korvex::agent
