#pragma once

#include "platform/bus/Bus.h"

#include <string>

namespace korvex::platform::bus {

/// Follows who has a name on the bus. Nobody has one where there is no bus. Main thread; the bus
/// must outlive it.
class NameWatch final {
public:
    NameWatch(Bus& bus, std::string name);

    /// The connection that has the name; empty when none does, or when that is not known yet.
    const std::string& owner() const { return m_owner; }
    /// Whether the bus has said it.
    bool isKnown() const { return m_isKnown; }
    /// Emitted with the owner when it is another, and when it is first known.
    base::Signal<const std::string&>& changed() { return m_changed; }

private:
    void follow(Bus::State state);
    void take(const std::string& owner);

    Bus& m_bus;
    std::string m_name;
    std::string m_owner;
    bool m_isKnown = false;
    base::Signal<const std::string&> m_changed;
    base::Subscription m_changes;
    base::Subscription m_asked;
    base::Subscription m_states;
};

} // namespace korvex::platform::bus
