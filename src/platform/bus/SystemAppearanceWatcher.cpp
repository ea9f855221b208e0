#include "platform/bus/SystemAppearanceWatcher.h"

#include "platform/bus/PortalRequest.h"

#include <cstdint>

namespace korvex::platform::bus {

namespace {

constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kAppearance = "org.freedesktop.appearance";
constexpr const char* kColorScheme = "color-scheme";
constexpr const char* kContrast = "contrast";
constexpr const char* kReducedMotion = "reduced-motion";
/// Desktops whose portal does not know the key for less motion have it here, the other way round.
constexpr const char* kInterfaceSettings = "org.gnome.desktop.interface";
constexpr const char* kAnimations = "enable-animations";
/// What the user prefers, as the portal numbers it; any other number is no preference.
constexpr std::uint32_t kDark = 1;
constexpr std::uint32_t kLight = 2;

std::uint32_t numberOf(const Value& value) {
    const auto* const number = value.as<std::uint32_t>();
    return number ? *number : 0;
}

} // namespace

SystemAppearanceWatcher::SystemAppearanceWatcher(Bus& bus) : m_bus(bus) {
    m_settings = m_bus.match({.sender = kPortalName,
                              .path = kPortalPath,
                              .interface = kInterface,
                              .member = "SettingChanged"},
                             [this](const IncomingSignal& signal) {
                                 const auto [group, key, value] =
                                     signal.read<std::string, std::string, Value>();
                                 take(group, key, value);
                                 tell();
                             });
    m_states = m_bus.stateChanged().connect([this](Bus::State state) {
        if (state == Bus::State::connected) {
            askAll();
        }
    });
    if (m_bus.isConnected()) {
        askAll();
    }
}

void SystemAppearanceWatcher::askAll() {
    m_asked.clear();
    m_awaited = 0;
    ask(kAppearance, kColorScheme);
    ask(kAppearance, kContrast);
    ask(kAppearance, kReducedMotion);
    ask(kInterfaceSettings, kAnimations);
}

void SystemAppearanceWatcher::ask(const std::string& group, const std::string& key) {
    ++m_awaited;
    m_asked.push_back(m_bus.call({.destination = kPortalName,
                                  .path = kPortalPath,
                                  .interface = kInterface,
                                  .member = "Read"},
                                 arguments(group, key), [this, group, key](const Reply& reply) {
                                     --m_awaited;
                                     try {
                                         take(group, key, reply.read<Value>());
                                     } catch (const BusError&) {
                                         // No portal, or one that does not know the key.
                                     }
                                     tell();
                                 }));
}

void SystemAppearanceWatcher::take(const std::string& group, const std::string& key,
                                   const Value& value) {
    if (group == kAppearance && key == kColorScheme) {
        const auto scheme = numberOf(value);
        m_appearance.appearance = scheme == kDark    ? app::SystemAppearance::Scheme::dark
                                  : scheme == kLight ? app::SystemAppearance::Scheme::light
                                                     : app::SystemAppearance::Scheme::unknown;
    } else if (group == kAppearance && key == kContrast) {
        m_appearance.contrast = numberOf(value) == 1 ? app::SystemAppearance::Contrast::high
                                                     : app::SystemAppearance::Contrast::usual;
    } else if (group == kAppearance && key == kReducedMotion) {
        m_prefersLessMotion = numberOf(value) == 1;
    } else if (group == kInterfaceSettings && key == kAnimations) {
        const auto* const animates = value.as<bool>();
        m_isWithoutAnimations = animates && !*animates;
    }
    m_appearance.motion = m_prefersLessMotion || m_isWithoutAnimations
                              ? app::SystemAppearance::Motion::still
                              : app::SystemAppearance::Motion::usual;
}

void SystemAppearanceWatcher::tell() {
    if (m_awaited == 0 && m_appearance != m_told) {
        m_told = m_appearance;
        m_changed.emit(m_told);
    }
}

} // namespace korvex::platform::bus
