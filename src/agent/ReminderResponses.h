#pragma once

#include "agent/ReminderDelivery.h"
#include "agent/UserStore.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/bus/Bus.h"
#include "platform/bus/NotificationDaemon.h"
#include "schedule/NotificationScheduling.h"
#include "schedule/ReminderScheduler.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace korvex::agent {

/// Does what the user has chosen at a notification: completes the todo, or shows it in a window.
/// Main thread; all that it is given must outlive it.
class ReminderResponses final {
public:
    /// Starts the desktop app with a link and the desktop's leave to come forward, where the bus
    /// cannot; false where that cannot be.
    using StartDesktop = std::function<bool(const std::string& link, const std::string& token)>;

    struct Parts {
        platform::bus::Bus& bus;
        base::RunLoop& runLoop;
        UserStore& store;
        ReminderDelivery& delivery;
        schedule::NotificationScheduling& client;
        schedule::ReminderScheduler& scheduler;
        const base::Clock& clock;
        base::LogSink& log;
        StartDesktop startDesktop;
    };
    ReminderResponses(Parts parts, platform::bus::NotificationDaemon& daemon);

    /// Emitted when something was done: the store or what is to be shown has changed.
    base::Signal<>& responded() { return m_responded; }
    /// Whether nothing that the user has chosen is still to be done.
    bool isQuiet() const { return m_unfinished.empty() && m_opening.empty(); }
    /// To be called before it ends: tries once more what else would be forgotten.
    void finishNow();

private:
    void take(const platform::bus::NotificationDaemon::Choice& choice);
    /// The todo that it reminds of; absent for another program's.
    std::optional<base::Uuid> entryOf(const platform::bus::NotificationDaemon::Shown& shown);
    enum class Completion { done, refused, failed };
    /// `refused` where the todo stays open though nothing has failed, as on an archived board.
    Completion complete(const base::Uuid& entry);
    Completion completeStored(const base::Uuid& entry);
    /// What the user has ticked is not given up because the store is in somebody's hands just now:
    /// it is tried again after a while that doubles, and its notification stays meanwhile.
    void completeLater(const base::Uuid& entry,
                       const platform::bus::NotificationDaemon::Choice& choice);
    /// By value: the timer that calls it may go meanwhile.
    void completeAgain(base::Uuid entry, platform::bus::NotificationDaemon::Choice choice);
    void finish(Completion completion, const base::Uuid& entry,
                const platform::bus::NotificationDaemon::Choice& choice);
    /// Its notification stays until somebody has taken the todo.
    void show(const base::Uuid& entry, const platform::bus::NotificationDaemon::Choice& choice);
    void withdraw(const base::Uuid& entry);

    Parts m_parts;
    platform::bus::NotificationDaemon& m_daemon;
    base::Logger m_log;
    base::Signal<> m_responded;
    struct Unfinished {
        std::chrono::duration<double> pause{};
        std::unique_ptr<base::RunLoop::Timer> timer;
    };
    std::map<base::Uuid, Unfinished> m_unfinished;
    /// Links that the app has not answered to yet.
    std::map<base::Uuid, base::Subscription> m_opening;
    base::Subscription m_choices;
};

} // namespace korvex::agent
