#pragma once

#include "platform/bus/Bus.h"

#include <chrono>
#include <memory>
#include <string>

namespace korvex::platform::bus {

/// After so long a bus that has not answered, or took nothing more, is asked again.
inline constexpr std::chrono::seconds kAskAgain{10};

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
    void ask();
    void take(const std::string& owner);

    Bus& m_bus;
    std::string m_name;
    std::string m_owner;
    bool m_isKnown = false;
    base::Signal<const std::string&> m_changed;
    base::Subscription m_changes;
    base::Subscription m_asked;
    std::unique_ptr<base::RunLoop::Timer> m_askAgain;
    base::Subscription m_states;
};

} // namespace korvex::platform::bus
