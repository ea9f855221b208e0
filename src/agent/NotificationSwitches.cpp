#include "agent/NotificationSwitches.h"

#include "agent/GnomeNotificationSwitch.h"
#include "agent/PlasmaNotificationSwitch.h"
#include "platform/bus/QuietProperty.h"
#include "platform/bus/XfceNotificationSwitch.h"

#include <algorithm>
#include <utility>

namespace korvex::agent {

using platform::bus::NotificationSetting;
using platform::bus::NotificationSwitch;

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::duration<double> kShortestPause = 10s;
constexpr std::chrono::duration<double> kLongestPause = 600s;

} // namespace

NotificationSwitches::NotificationSwitches(platform::bus::Bus& bus,
                                           platform::bus::NotificationDaemon& daemon,
                                           base::RunLoop& runLoop, std::filesystem::path settings)
    : m_bus(bus),
      m_daemon(daemon),
      m_runLoop(runLoop),
      m_settings(std::move(settings)),
      m_pause(kShortestPause) {
    m_daemons = m_daemon.changed().connect([this] { follow(); });
}

void NotificationSwitches::look() {
    if (m_switch) {
        m_switch->look();
    }
}

void NotificationSwitches::follow() {
    // Named only once it has said its name.
    auto identity =
        m_daemon.name().empty() ? std::string() : m_daemon.identity().value_or(std::string());
    if (identity == m_identity) {
        return;
    }
    m_identity = std::move(identity);
    m_hasAnswered = false;
    m_setting = {};
    m_pause = kShortestPause;
    m_retry.reset();
    m_switch = switchOf(m_daemon.name());
    look();
}

std::unique_ptr<NotificationSwitch> NotificationSwitches::switchOf(const std::string& daemonName) {
    using platform::bus::QuietProperty;
    auto tell = [this](const std::optional<NotificationSetting>& told) { take(told); };
    if (daemonName == "Xfce Notify Daemon") {
        return std::make_unique<platform::bus::XfceNotificationSwitch>(m_bus, tell);
    }
    if (daemonName == "gnome-shell") {
        return std::make_unique<GnomeNotificationSwitch>(m_bus, m_runLoop, tell);
    }
    if (daemonName == "Plasma") {
        return std::make_unique<PlasmaNotificationSwitch>(m_bus, m_runLoop, m_settings, tell);
    }
    if (daemonName == "dunst") {
        return std::make_unique<QuietProperty>(m_bus, QuietProperty::ofDunst(), tell);
    }
    return nullptr;
}

void NotificationSwitches::take(const std::optional<NotificationSetting>& told) {
    if (told) {
        m_pause = kShortestPause;
        m_retry.reset();
    } else if (!m_retry) { // one that is asked for two things may be too slow with both
        m_retry = m_runLoop.callAfter(m_pause, [this] {
            m_retry.reset();
            look();
        });
        m_pause = std::min(m_pause * 2, kLongestPause);
    }
    const auto setting = told.value_or(m_setting);
    if (!std::exchange(m_hasAnswered, true) || setting != m_setting) {
        m_setting = setting;
        m_changed.emit();
    }
}

} // namespace korvex::agent
