#include "platform/bus/NameClaim.h"

#include "platform/bus/BusNames.h"

#include <cstdint>

namespace korvex::platform::bus {

namespace {

constexpr std::uint32_t kDoNotQueue = 4;

/// What the bus answers.
constexpr std::uint32_t kIsOwner = 1;
constexpr std::uint32_t kAlreadyOwner = 4;

MethodAddress busMethod(const char* member) {
    return {
        .destination = kBusName, .path = kBusPath, .interface = kBusInterface, .member = member};
}

} // namespace

NameClaim::NameClaim(Bus& bus, std::string name)
    : m_bus(bus), m_name(std::move(name)), m_watch(bus, m_name) {
    m_owners = m_watch.changed().connect([this](const std::string& now) { follow(now); });
    m_states = m_bus.stateChanged().connect([this](Bus::State state) {
        m_askAgain.reset();
        if (state == Bus::State::connected) {
            ask();
        } else if (state == Bus::State::waiting) {
            set(State::open);
        }
    });
    if (m_bus.isConnected()) {
        ask();
    }
}

NameClaim::~NameClaim() {
    if (m_bus.isConnected()) {
        m_bus.send(busMethod("ReleaseName"), arguments(m_name));
    }
}

void NameClaim::ask() {
    m_asked = m_bus.call(busMethod("RequestName"), arguments(m_name, kDoNotQueue),
                         [this](const Reply& reply) { take(reply); });
}

void NameClaim::take(const Reply& reply) {
    if (const auto* const error = reply.error()) {
        if (error->isForNow()) {
            m_askAgain = m_bus.runLoop().callAfter(kAskAgain, [this] { ask(); });
        }
        // An answer that came too late may have given us the name.
        if (m_state != State::owned) {
            set(error->which() == BusErrorCase::refused ? State::refused : State::open);
        }
        return;
    }
    const auto answer = reply.read<std::uint32_t>();
    set(answer == kIsOwner || answer == kAlreadyOwner ? State::owned : State::taken);
}

void NameClaim::follow(const std::string& owner) {
    if (!m_bus.isConnected()) {
        return;
    }
    if (owner == m_bus.uniqueName()) {
        set(State::owned);
    } else if (owner.empty() && m_state == State::taken) {
        ask(); // whoever had it has left
    } else if (!owner.empty() && m_state != State::open) {
        set(State::taken);
    }
}

void NameClaim::set(State state) {
    if (state != m_state) {
        m_state = state;
        m_changed.emit(state);
    }
}

} // namespace korvex::platform::bus
