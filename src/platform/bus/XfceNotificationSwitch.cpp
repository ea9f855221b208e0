#include "platform/bus/XfceNotificationSwitch.h"

#include "app/Launch.h"

#include <algorithm>
#include <string>
#include <utility>

namespace korvex::platform::bus {

namespace {

constexpr const char* kName = "org.xfce.Xfconf";
constexpr const char* kPath = "/org/xfce/Xfconf";
constexpr const char* kInterface = "org.xfce.Xfconf";
/// All settings of Xfce's notification daemon, and two of them.
constexpr const char* kChannel = "xfce4-notifyd";
constexpr const char* kRoot = "/";
constexpr const char* kMuted = "/applications/muted_applications";
constexpr const char* kDoNotDisturb = "/do-not-disturb";

/// The daemon knows programs by their desktop files.
bool namesUs(const Value& value) {
    const auto* const name = value.as<std::string>();
    return name && *name == app::kDesktopName;
}

} // namespace

XfceNotificationSwitch::XfceNotificationSwitch(Bus& bus, Tell tell)
    : m_bus(bus), m_tell(std::move(tell)) {
    // One of another value, or one that was taken back.
    m_signals =
        m_bus.match({.sender = kName, .path = kPath, .interface = kInterface, .argument = kChannel},
                    [this](const IncomingSignal&) { look(); });
}

void XfceNotificationSwitch::look() {
    m_asked = m_bus.call({.destination = kName,
                          .path = kPath,
                          .interface = kInterface,
                          .member = "GetAllProperties"},
                         arguments(std::string(kChannel), std::string(kRoot)),
                         [this](const Reply& reply) { take(reply); });
}

void XfceNotificationSwitch::take(const Reply& reply) {
    tellAnswer(m_tell, reply, [](const Reply& said) {
        const auto values = said.read<Dictionary>();
        const auto* const muted = find<ValueArray>(values, kMuted);
        const auto* const isQuieted = find<bool>(values, kDoNotDisturb);
        return NotificationSetting{
            .isOff = muted && std::any_of(muted->items.begin(), muted->items.end(), namesUs),
            .isQuieted = isQuieted && *isQuieted};
    });
}

} // namespace korvex::platform::bus
