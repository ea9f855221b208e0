#pragma once

#include "app/SystemAppearance.h"
#include "platform/bus/Bus.h"

#include <string>
#include <vector>

namespace korvex::platform::bus {

/// Asks the desktop's settings portal whether the user prefers dark windows, more contrast and less
/// motion, and follows changes. Says what differs from what it said before, and from no preference
/// at first; without a portal never anything. Main thread; the bus must outlive it.
class SystemAppearanceWatcher final {
public:
    explicit SystemAppearanceWatcher(Bus& bus);

    base::Signal<app::SystemAppearance>& changed() { return m_changed; }

private:
    void askAll();
    void ask(const std::string& group, const std::string& key);
    void take(const std::string& group, const std::string& key, const Value& value);
    void tell();

    Bus& m_bus;
    base::Signal<app::SystemAppearance> m_changed;
    app::SystemAppearance m_appearance;
    app::SystemAppearance m_told;
    /// The windows are drawn anew for all the answers at once.
    int m_awaited = 0;
    bool m_prefersLessMotion = false;
    bool m_isWithoutAnimations = false;
    std::vector<base::Subscription> m_asked;
    base::Subscription m_settings;
    base::Subscription m_states;
};

} // namespace korvex::platform::bus
