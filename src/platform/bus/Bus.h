#pragma once

#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/bus/BusAddress.h"
#include "platform/bus/IncomingMessage.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>

struct sd_bus;

namespace korvex::platform::bus {

class BusConnection;

/// A method of another program.
struct MethodAddress {
    /// Whether the bus may start who has the name, where nobody runs.
    enum class Start { allowed, never };

    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
    Start start = Start::allowed;
};

/// A signal of ours.
struct SignalAddress {
    std::string path;
    std::string interface;
    std::string member;
    /// Empty for all who listen.
    std::string destination = {};
};

/// Which signals are wanted; what is empty may be anything.
struct SignalRule {
    /// By a name that somebody may have: only signals of who has it then.
    std::string sender = {};
    std::string path = {};
    std::string interface = {};
    std::string member = {};
    /// The first argument, which is a string.
    std::string argument = {};
};

/// The one way to other programs. Connects once it is started, and again whenever the bus has gone
/// away, at first soon and then less and less often: whoever has asked for signals or for a name
/// (`NameClaim`), or offers an object (`OfferedObject`), keeps what they have over that. Nothing
/// here waits: answers come through the run loop.
///
/// Handlers may throw BusError, which is logged, and may destroy what they belong to, the bus too.
/// Main thread; the run loop and the log must outlive it.
class Bus final {
public:
    static constexpr std::chrono::duration<double> kPatience = std::chrono::seconds(10);

    Bus(WhichBus which, base::RunLoop& runLoop, base::LogSink& log);
    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// Connects from now on; only the first call counts.
    void start();

    /// `waiting` is also said where there is no bus: it is tried again later.
    enum class State { idle, connecting, connected, waiting };
    State state() const { return m_state; }
    /// Emitted whenever the state is another.
    base::Signal<State>& stateChanged() { return m_stateChanged; }
    bool isConnected() const { return m_state == State::connected; }
    /// The name that no other connection has; empty without a bus.
    std::string uniqueName() const;

    using Answer = std::function<void(const Reply&)>;
    /// Calls a method. The answer is called once and never from within this function, also where
    /// there is no bus or the time is over; not at all once the subscription has ended.
    [[nodiscard]] base::Subscription call(const MethodAddress& method, const Arguments& arguments,
                                          Answer answer,
                                          std::chrono::duration<double> limit = kPatience);
    /// Calls a method whose answer nobody wants. False when it could not be sent.
    bool send(const MethodAddress& method, const Arguments& arguments = {});
    /// Sends a signal. False when it could not be.
    bool emit(const SignalAddress& signal, const Arguments& arguments = {});

    using Take = std::function<void(const IncomingSignal&)>;
    /// Calls `take` with each such signal until the subscription ends.
    [[nodiscard]] base::Subscription match(SignalRule rule, Take take);

    /// Whether something waits to be taken by the bus.
    bool hasUnsent() const;
    /// Whether it takes one more message.
    bool hasRoom() const;

    base::RunLoop& runLoop() const { return m_runLoop; }

    /// For those who speak sd-bus's language: null without a bus. `wrote` after what may have sent
    /// something.
    sd_bus* connection() const;
    void wrote();
    /// Carries out what other programs have asked for: nothing that is thrown gets past.
    void guard(const std::function<void()>& work, const std::string& about) const noexcept;

private:
    struct Call;
    struct Match;

    void connect();
    void connectionReady();
    void connectionEnded();
    /// Throws BusError where it cannot be made or sent.
    void queue(sd_bus_message* message, std::size_t bytes);
    /// For so many bytes.
    void requireRoom(std::size_t bytes);
    void finish(const std::shared_ptr<Call>& call, const Reply& reply);
    void fail(const std::shared_ptr<Call>& call, const BusError& error);
    void failAllCalls();
    void install(Match& match);

    WhichBus m_which;
    base::RunLoop& m_runLoop;
    base::Logger m_log;
    State m_state = State::idle;
    base::Signal<State> m_stateChanged;
    /// Before the connection, which must go first: what it knows are parts of these.
    std::list<std::shared_ptr<Call>> m_calls;
    std::list<std::shared_ptr<Match>> m_matches;
    std::unique_ptr<BusConnection> m_connection;
    /// Since nothing waited any more to be taken.
    std::size_t m_unsentBytes = 0;
    bool m_hasBeenConnected = false;
    std::chrono::duration<double> m_readySince{};
    std::chrono::duration<double> m_pause;
    std::unique_ptr<base::RunLoop::Timer> m_retry;
    std::shared_ptr<const bool> m_life = std::make_shared<bool>(true);
};

} // namespace korvex::platform::bus
