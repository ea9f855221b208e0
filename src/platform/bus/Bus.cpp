#include "platform/bus/Bus.h"

#include "platform/bus/BusConnection.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/NameWatch.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <utility>

namespace korvex::platform::bus {

namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

/// A bus that was started anew is soon there; where none comes, looking for it costs little.
constexpr Seconds kShortestPause = 100ms;
constexpr Seconds kLongestPause = 30s;
/// A connection that held for less was none.
constexpr Seconds kSteady = 5s;
/// So many may wait until the bus takes them. More come only where it hangs.
constexpr std::size_t kMostUnsent = 1024;
constexpr std::size_t kMostUnsentBytes = 16 * MessageWriter::kMostBytes;

void require(int result) {
    if (result < 0) {
        throw BusError(result == -ENOTCONN || result == -ECONNRESET ? BusErrorCase::noBus
                       : result == -ENOBUFS                         ? BusErrorCase::busy
                                                                    : BusErrorCase::invalid);
    }
}

/// How many bytes they are.
std::size_t write(sd_bus_message* message, const Arguments& arguments) {
    MessageWriter writer(message);
    if (arguments) {
        arguments(writer);
    }
    return writer.size();
}

std::pair<MessagePointer, std::size_t> makeCall(sd_bus* bus, const MethodAddress& method,
                                                const Arguments& arguments) {
    if (!bus) {
        throw BusError(BusErrorCase::noBus);
    }
    sd_bus_message* made = nullptr;
    require(sd_bus_message_new_method_call(bus, &made, method.destination.c_str(),
                                           method.path.c_str(), method.interface.c_str(),
                                           method.member.c_str()));
    MessagePointer message(made);
    require(sd_bus_message_set_auto_start(made, method.start == MethodAddress::Start::allowed));
    const auto bytes = write(made, arguments);
    return {std::move(message), bytes};
}

std::string textOf(const SignalRule& rule) {
    std::string text = "type='signal'";
    const auto add = [&text](const char* key, const std::string& value) {
        if (!value.empty()) {
            text += std::string(",") + key + "='" + value + "'";
        }
    };
    add("sender", rule.sender);
    add("path", rule.path);
    add("interface", rule.interface);
    add("member", rule.member);
    add("arg0", rule.argument);
    return text;
}

/// A name that goes from one to another. The bus itself, and each connection, have theirs for good,
/// and it is what their messages have as the sender.
bool isWellKnown(const std::string& name) {
    return !name.empty() && !name.starts_with(':') && name != kBusName;
}

} // namespace

struct Bus::Call {
    /// Null once it is finished, or the bus is gone.
    Bus* bus;
    Answer answer;
    std::weak_ptr<Call> self;
    SlotPointer slot;
    std::unique_ptr<base::RunLoop::Timer> limit;

    static int take(sd_bus_message* message, void* self, sd_bus_error*) {
        const auto call = static_cast<Call*>(self)->self.lock();
        call->bus->finish(call, Reply(message));
        return 1;
    }
};

struct Bus::Match {
    /// Null once the bus is gone.
    Bus* bus;
    SignalRule rule;
    Take take;
    std::weak_ptr<Match> self;
    /// Only for a sender whose name others may have later.
    std::unique_ptr<NameWatch> sender;
    SlotPointer slot;

    static int receive(sd_bus_message* message, void* self, sd_bus_error*) {
        // Ended meanwhile, it must last until its handler has returned.
        const auto match = static_cast<Match*>(self)->self.lock();
        const IncomingSignal signal(message);
        if (match->isMeant(signal)) {
            match->bus->guard([&] { match->take(signal); }, "a signal of " + match->rule.interface);
        }
        return 0;
    }
    /// What is sent to us alone passes the bus's own filter, whoever sends it.
    bool isMeant(const IncomingSignal& signal) const {
        if (!sender) {
            return rule.sender.empty() || rule.sender == signal.sender();
        }
        return sender->isKnown() ? sender->owner() == signal.sender() : signal.isToAll();
    }
    static int installed(sd_bus_message* message, void* self, sd_bus_error*) {
        const auto& match = *static_cast<Match*>(self);
        if (const auto reply = Reply(message); reply.error()) {
            match.bus->m_log.warning("Signals cannot be heard: " +
                                     reply.error()->errorDescription());
        }
        return 1;
    }
};

Bus::Bus(WhichBus which, base::RunLoop& runLoop, base::LogSink& log)
    : m_which(which), m_runLoop(runLoop), m_log(log, "Bus"), m_pause(kShortestPause) {}

Bus::~Bus() {
    // One whose handler runs just now lives a little longer, and handles may live for long.
    for (const auto& call : m_calls) {
        call->bus = nullptr;
        call->slot.reset();
        call->limit.reset();
    }
    for (const auto& match : m_matches) {
        match->bus = nullptr;
        match->slot.reset();
    }
}

void Bus::start() {
    if (m_state == State::idle) {
        connect();
    }
}

void Bus::connect() {
    m_retry.reset();
    const auto address = busAddress(m_which);
    if (!address) {
        connectionEnded();
        return;
    }
    m_connection = std::make_unique<BusConnection>(
        m_runLoop, *address,
        BusConnection::Listener{.ready = [this] { connectionReady(); },
                                .ended = [this] { connectionEnded(); }});
    m_state = State::connecting;
    m_stateChanged.emit(State::connecting);
}

void Bus::connectionReady() {
    m_readySince = m_runLoop.elapsed();
    m_state = State::connected;
    if (std::exchange(m_hasBeenConnected, true)) {
        m_log.info("Connected again");
    }
    for (const auto& match : m_matches) {
        install(*match);
    }
    m_stateChanged.emit(State::connected);
}

void Bus::connectionEnded() {
    if (isConnected()) {
        m_log.info("The connection has ended");
        if (m_runLoop.elapsed() - m_readySince >= kSteady) {
            m_pause = kShortestPause;
        }
    }
    for (const auto& match : m_matches) {
        match->slot.reset();
    }
    m_retry = m_runLoop.callAfter(m_pause, [this] { connect(); });
    m_pause = std::min(m_pause * 2, kLongestPause);
    // Those who are told now may ask for something again, and are told of that in turn.
    const auto ended = std::move(m_connection);
    const std::weak_ptr<const bool> life = m_life;
    const auto before = std::exchange(m_state, State::waiting);
    failAllCalls();
    if (!life.expired() && before != State::waiting) {
        m_stateChanged.emit(State::waiting);
    }
}

std::string Bus::uniqueName() const {
    const char* name = nullptr;
    return isConnected() && sd_bus_get_unique_name(connection(), &name) >= 0 ? name : "";
}

base::Subscription Bus::call(const MethodAddress& method, const Arguments& arguments, Answer answer,
                             Seconds limit) {
    const auto call = std::make_shared<Call>(Call{this, std::move(answer), {}, {}, {}});
    const std::weak_ptr<Call> reference = call;
    call->self = reference;
    m_calls.push_back(call);
    try {
        const auto [message, bytes] = makeCall(connection(), method, arguments);
        requireRoom(bytes);
        sd_bus_slot* slot = nullptr;
        // The time limit is the run loop's.
        require(sd_bus_call_async(connection(), &slot, message.get(), &Call::take, call.get(),
                                  UINT64_MAX));
        call->slot.reset(slot);
        call->limit = m_runLoop.callAfter(limit, [this, reference] {
            if (const auto late = reference.lock()) {
                fail(late, BusError(BusErrorCase::timedOut));
            }
        });
        wrote();
    } catch (const BusError& error) {
        m_runLoop.post([this, reference, error] {
            if (const auto failed = reference.lock()) {
                fail(failed, error);
            }
        });
    }
    return base::Subscription([reference] {
        if (const auto unwanted = reference.lock()) {
            unwanted->slot.reset();
            if (auto* const bus = unwanted->bus) {
                bus->m_calls.remove(unwanted);
            }
        }
    });
}

void Bus::finish(const std::shared_ptr<Call>& call, const Reply& reply) {
    call->slot.reset();
    call->limit.reset();
    m_calls.remove(call);
    call->bus = nullptr;
    const auto answer = std::move(call->answer);
    guard([&] { answer(reply); }, "an answer");
}

void Bus::fail(const std::shared_ptr<Call>& call, const BusError& error) {
    finish(call, Reply(error));
}

void Bus::failAllCalls() {
    const std::weak_ptr<const bool> life = m_life;
    // Each may ask again, which fails later, and end others.
    const std::list<std::weak_ptr<Call>> failing(m_calls.begin(), m_calls.end());
    for (const auto& each : failing) {
        if (const auto call = each.lock(); call && !life.expired()) {
            fail(call, BusError(BusErrorCase::noBus));
        }
    }
}

bool Bus::send(const MethodAddress& method, const Arguments& arguments) {
    try {
        const auto [message, bytes] = makeCall(connection(), method, arguments);
        require(sd_bus_message_set_expect_reply(message.get(), 0));
        queue(message.get(), bytes);
        return true;
    } catch (const BusError& error) {
        m_log.info(method.member + " was not sent: " + error.errorDescription());
        return false;
    }
}

bool Bus::emit(const SignalAddress& signal, const Arguments& arguments) {
    if (!connection()) {
        return false;
    }
    try {
        sd_bus_message* made = nullptr;
        require(sd_bus_message_new_signal(connection(), &made, signal.path.c_str(),
                                          signal.interface.c_str(), signal.member.c_str()));
        const MessagePointer message(made);
        if (!signal.destination.empty()) {
            require(sd_bus_message_set_destination(made, signal.destination.c_str()));
        }
        const auto bytes = write(made, arguments);
        queue(made, bytes);
        return true;
    } catch (const BusError& error) {
        m_log.info(signal.member + " was not sent: " + error.errorDescription());
        return false;
    }
}

void Bus::queue(sd_bus_message* message, std::size_t bytes) {
    requireRoom(bytes);
    require(sd_bus_send(connection(), message, nullptr));
    wrote();
}

void Bus::requireRoom(std::size_t bytes) {
    m_unsentBytes = hasUnsent() ? m_unsentBytes : 0;
    if (!hasRoom() || m_unsentBytes + bytes > kMostUnsentBytes) {
        throw BusError(BusErrorCase::busy);
    }
    m_unsentBytes += bytes;
}

base::Subscription Bus::match(SignalRule rule, Take take) {
    const auto match =
        std::make_shared<Match>(Match{this, std::move(rule), std::move(take), {}, nullptr, {}});
    const std::weak_ptr<Match> reference = match;
    match->self = reference;
    if (isWellKnown(match->rule.sender)) {
        match->sender = std::make_unique<NameWatch>(*this, match->rule.sender);
    }
    m_matches.push_back(match);
    if (isConnected()) {
        install(*match);
    }
    return base::Subscription([reference] {
        if (const auto unwanted = reference.lock()) {
            unwanted->slot.reset(); // which tells the bus
            if (auto* const bus = unwanted->bus) {
                bus->m_matches.remove(unwanted);
                bus->wrote();
            }
        }
    });
}

void Bus::install(Match& match) {
    sd_bus_slot* slot = nullptr;
    const auto result = sd_bus_add_match_async(connection(), &slot, textOf(match.rule).c_str(),
                                               &Match::receive, &Match::installed, &match);
    match.slot.reset(slot);
    if (result < 0) {
        m_log.warning("Signals of " + match.rule.interface + " cannot be heard");
    }
    wrote();
}

bool Bus::hasUnsent() const {
    return m_connection && m_connection->unsentCount() > 0;
}

bool Bus::hasRoom() const {
    return m_connection && m_connection->unsentCount() < kMostUnsent;
}

sd_bus* Bus::connection() const {
    return m_connection ? m_connection->get() : nullptr;
}

void Bus::wrote() {
    if (m_connection) {
        m_connection->wrote();
    }
}

void Bus::guard(const std::function<void()>& work, const std::string& about) const noexcept {
    // The bus may be gone when the work returns.
    const auto log = m_log;
    try {
        work();
    } catch (const BusError& error) {
        log.info("Left aside " + about + ": " + error.errorDescription());
    } catch (const base::Error& error) {
        log.warning("Could not take " + about + ": " + error.errorDescription());
    } catch (const std::exception& error) {
        log.error("Could not take " + about + ": " + error.what());
    }
}

} // namespace korvex::platform::bus
