#pragma once

#include "platform/bus/NameWatch.h"

#include <string>

namespace korvex::platform::bus {

/// Wants a name on the bus for as long as it lives: asks for it, without waiting in a queue, and
/// again when whoever has it leaves or the bus comes back. Nobody can take it away. Main thread;
/// the bus must outlive it.
class NameClaim final {
public:
    NameClaim(Bus& bus, std::string name);
    /// Gives the name back.
    ~NameClaim();
    NameClaim(const NameClaim&) = delete;
    NameClaim& operator=(const NameClaim&) = delete;

    enum class State {
        open,    ///< there is no bus, or it has not answered yet, and is asked again
        owned,   ///< ours
        taken,   ///< another program has it; `owner` says which
        refused, ///< the bus gives it to nobody like us
    };
    State state() const { return m_state; }
    /// The connection that has the name.
    const std::string& owner() const { return m_watch.owner(); }
    base::Signal<State>& changed() { return m_changed; }

private:
    void ask();
    void take(const Reply& reply);
    void follow(const std::string& owner);
    void set(State state);

    Bus& m_bus;
    std::string m_name;
    State m_state = State::open;
    base::Signal<State> m_changed;
    NameWatch m_watch;
    base::Subscription m_owners;
    base::Subscription m_asked;
    std::unique_ptr<base::RunLoop::Timer> m_askAgain;
    base::Subscription m_states;
};

} // namespace korvex::platform::bus
