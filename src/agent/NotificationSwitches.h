#pragma once

#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/bus/NotificationDaemon.h"
#include "platform/bus/NotificationSwitch.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace korvex::agent {

/// What the user has said about our notifications in the settings of the desktop whose daemon runs:
/// nobody else's are asked, which would start their services. Of a daemon that is not known here,
/// nothing is known to be switched off; where the desktop is too slow, what it has said last holds
/// until it says more. Main thread; all that it is given must outlive it.
class NotificationSwitches final {
public:
    /// `settings` is the user's folder for settings.
    NotificationSwitches(platform::bus::Bus& bus, platform::bus::NotificationDaemon& daemon,
                         base::RunLoop& runLoop, std::filesystem::path settings);

    /// Whether the desktop has said it, or nobody is to be asked.
    bool isKnown() const { return m_daemon.isKnown() && (!m_switch || m_hasAnswered); }
    const platform::bus::NotificationSetting& setting() const { return m_setting; }
    /// Emitted when it is first known, and when it is another.
    base::Signal<>& changed() { return m_changed; }
    void look();

private:
    void follow();
    std::unique_ptr<platform::bus::NotificationSwitch> switchOf(const std::string& daemonName);
    void take(const std::optional<platform::bus::NotificationSetting>& told);

    platform::bus::Bus& m_bus;
    platform::bus::NotificationDaemon& m_daemon;
    base::RunLoop& m_runLoop;
    std::filesystem::path m_settings;
    /// The daemon whose switch that is.
    std::string m_identity;
    std::unique_ptr<platform::bus::NotificationSwitch> m_switch;
    bool m_hasAnswered = false;
    /// Until it is asked again, as it was too slow.
    std::chrono::duration<double> m_pause;
    std::unique_ptr<base::RunLoop::Timer> m_retry;
    platform::bus::NotificationSetting m_setting;
    base::Signal<> m_changed;
    base::Subscription m_daemons;
};

} // namespace korvex::agent
