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
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvex::agent {

/// Which reminders are to be shown now, and what comes next. Knows no bus: whoever has one asks
/// this after each event, hands what it says to the notification daemon, and reports what became of
/// it. A request stays pending until the daemon's answer is recorded, so that none is lost; between
/// the two it is under way, and not given out again by this object. What is due is compared with
/// the store once more before it is shown. What cannot be written is known here until it can.
/// Throws StoreError where the table cannot be read, with nothing changed. Main thread; all that it
/// is given must outlive it.
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

    /// Somebody wants to know whether it goes now: what has failed or was refused is due at once.
    void endPauses();

    /// What is to be shown now; each is answered by `recordPosted`, `recordFailed` or
    /// `recordRefused`. That too what was set and came due before anybody planned it, as while no
    /// agent was there. A todo that was changed since, such as one that is open again, is no longer
    /// reminded of.
    std::vector<schedule::ReminderRequest> takeDue();
    /// When there is something to be shown next, by the clock: to be asked again whenever something
    /// was taken, reported or planned, and when the clock was set or the machine has slept. Absent
    /// where nothing waits.
    std::optional<base::Instant> nextDue();
    /// After how long `takeDue` is to be asked again though nothing has happened, since the daemon,
    /// the table or the store has failed; absent where none has.
    std::optional<std::chrono::duration<double>> retryDelay() const;

    /// The daemon shows it.
    void recordPosted(const schedule::ReminderRequest& request, const ShownNotification& shown);
    /// There is no daemon, or it did not answer. All that is due is tried again after a while that
    /// doubles with each failure, or when there is another daemon.
    void recordFailed(const schedule::ReminderRequest& request);
    /// The daemon answered that it does not show it. The same, of this one alone.
    void recordRefused(const schedule::ReminderRequest& request);
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
    using Seconds = std::chrono::duration<double>;

    /// What has happened and could not be written yet.
    struct Unrecorded {
        enum class What { posted, closed, firstDaemon, otherDaemon } what;
        /// Of a daemon only its name.
        ShownNotification shown;
        schedule::ReminderRequest request = {};
    };
    /// A while that doubles each time.
    struct BackOff {
        int failures = 0;
        std::optional<Seconds> until = std::nullopt;

        void lengthen(Seconds now);
    };
    struct Refused {
        schedule::ReminderRequest request;
        BackOff backOff;
    };
    enum class Standing { asked, notAsked, unknown };

    void catchUp(base::Instant now);
    void record(Unrecorded unrecorded);
    void recordAgain();
    bool attemptWrite(const std::function<void()>& write);
    bool isUnrecordedClosed(const ShownNotification& shown) const;
    bool isTaken(const schedule::ReminderRequest& request) const;
    bool isWaiting(const BackOff& backOff) const;
    void forgetUnderWay(const schedule::ReminderRequest& request);
    Standing standingOf(schedule::ReminderRequest& request, base::Instant now);
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
    /// The one that is there, or else was there last.
    std::optional<std::string> m_lastDaemon;
    std::vector<schedule::ReminderRequest> m_underWay;
    /// In the order in which it has happened, as it must be written.
    std::vector<Unrecorded> m_unrecorded;
    std::vector<ShownNotification> m_closing;
    BackOff m_backOff;
    std::vector<Refused> m_refused;
    /// When the table or the store, which has failed, is to be tried again.
    std::optional<Seconds> m_tryAgainAt;
    bool m_hasSaidFailure = false;
};

} // namespace korvex::agent
