#pragma once

#include "agent/ReminderDelivery.h"
#include "agent/UserStore.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/Signal.h"
#include "platform/bus/Bus.h"
#include "platform/bus/NotificationDaemon.h"
#include "schedule/NotificationScheduling.h"
#include "schedule/ReminderScheduler.h"

#include <functional>
#include <map>
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

private:
    void take(const platform::bus::NotificationDaemon::Choice& choice);
    void complete(const base::Uuid& entry);
    void completeStored(const base::Uuid& entry);
    void withdraw(const base::Uuid& entry);
    void open(const base::Uuid& entry, const std::string& token);

    Parts m_parts;
    platform::bus::NotificationDaemon& m_daemon;
    base::Logger m_log;
    base::Signal<> m_responded;
    /// Links that the app has not answered to yet.
    std::map<base::Uuid, base::Subscription> m_opening;
    base::Subscription m_choices;
};

} // namespace korvex::agent
