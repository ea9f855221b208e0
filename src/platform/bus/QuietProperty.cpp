#include "platform/bus/QuietProperty.h"

#include <utility>

namespace korvex::platform::bus {

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

} // namespace

QuietProperty::QuietProperty(Bus& bus, Property property, Tell tell)
    : m_bus(bus), m_property(std::move(property)), m_tell(std::move(tell)) {
    m_signals = m_bus.match({.sender = kName,
                             .path = kPath,
                             .interface = kProperties,
                             .member = "PropertiesChanged",
                             .argument = m_property.interface},
                            [this](const IncomingSignal&) { look(); });
}

void QuietProperty::look() {
    m_asked = m_bus.call({.destination = kName,
                          .path = kPath,
                          .interface = kProperties,
                          .member = "Get",
                          .start = MethodAddress::Start::never},
                         arguments(m_property.interface, m_property.name),
                         [this](const Reply& reply) { take(reply); });
}

void QuietProperty::take(const Reply& reply) {
    tellAnswer(m_tell, reply, [](const Reply& said) {
        const auto value = said.read<Value>();
        const auto* const isQuieted = value.as<bool>();
        return NotificationSetting{.isQuieted = isQuieted && *isQuieted};
    });
}

} // namespace korvex::platform::bus
