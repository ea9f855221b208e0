#include "platform/bus/NameWatch.h"

#include "platform/bus/BusNames.h"

#include <tuple>

namespace korvex::platform::bus {

NameWatch::NameWatch(Bus& bus, std::string name) : m_bus(bus), m_name(std::move(name)) {
    m_changes = m_bus.match({.sender = kBusName,
                             .path = kBusPath,
                             .interface = kBusInterface,
                             .member = "NameOwnerChanged",
                             .argument = m_name},
                            [this](const IncomingSignal& signal) {
                                auto [changed, before, now] =
                                    signal.read<std::string, std::string, std::string>();
                                // Newer than any answer that is still to come.
                                m_asked.cancel();
                                m_askAgain.reset();
                                take(now);
                            });
    m_states = m_bus.stateChanged().connect([this](Bus::State state) { follow(state); });
    follow(m_bus.state());
}

void NameWatch::follow(Bus::State state) {
    m_askAgain.reset();
    if (state == Bus::State::connected) {
        ask();
    } else if (state == Bus::State::waiting && m_isKnown) {
        m_isKnown = false;
        if (!m_owner.empty()) {
            m_owner.clear();
            m_changed.emit(m_owner);
        }
    }
}

void NameWatch::ask() {
    m_asked = m_bus.call({.destination = kBusName,
                          .path = kBusPath,
                          .interface = kBusInterface,
                          .member = "GetNameOwner"},
                         arguments(m_name), [this](const Reply& reply) {
                             const auto* const error = reply.error();
                             if (!error) {
                                 take(reply.read<std::string>());
                             } else if (error->isAboutNobody()) {
                                 take({});
                             } else if (error->isForNow()) {
                                 m_askAgain =
                                     m_bus.runLoop().callAfter(kAskAgain, [this] { ask(); });
                             }
                         });
}

void NameWatch::take(const std::string& owner) {
    if (m_isKnown && owner == m_owner) {
        return;
    }
    m_isKnown = true;
    m_owner = owner;
    m_changed.emit(m_owner);
}

} // namespace korvex::platform::bus
