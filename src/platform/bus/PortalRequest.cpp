#include "platform/bus/PortalRequest.h"

#include "base/Uuid.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace korvex::platform::bus {

namespace {

constexpr const char* kRequest = "org.freedesktop.portal.Request";

/// Where the portal puts the request: known before it is asked, so that no answer is missed.
std::string pathOf(const Bus& bus, const std::string& token) {
    auto sender = bus.uniqueName();
    std::erase(sender, ':');
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPortalPath) + "/request/" + sender + "/" + token;
}

} // namespace

PortalRequest::PortalRequest(Bus& bus, const std::string& interface, const std::string& member,
                             First first, Dictionary options, Listener listener)
    : m_bus(bus), m_listener(std::move(listener)) {
    const auto token = portalToken();
    options.insert_or_assign("handle_token", Value(token));
    listenAt(pathOf(bus, token));
    m_asked = bus.call(
        {.destination = kPortalName, .path = kPortalPath, .interface = interface, .member = member},
        [first = std::move(first), options = std::move(options)](MessageWriter& writer) {
            first(writer);
            writer.write(options);
        },
        [this](const Reply& reply) {
            if (const auto* const error = reply.error()) {
                m_responses.cancel();
                const auto failed = m_listener.failed;
                failed(*error);
                return;
            }
            // Old portals choose the place themselves.
            if (const auto path = reply.read<ObjectPath>().text; path != m_path) {
                listenAt(path);
            }
        });
}

void PortalRequest::listenAt(const std::string& path) {
    m_path = path;
    m_responses = m_bus.match(
        {.sender = kPortalName, .path = path, .interface = kRequest, .member = "Response"},
        [this](const IncomingSignal& signal) {
            const auto [outcome, results] = signal.read<std::uint32_t, Dictionary>();
            m_responses.cancel();
            const auto answered = m_listener.answered;
            answered(outcome <= 2 ? static_cast<Outcome>(outcome) : Outcome::ended, results);
        });
}

std::string portalToken() {
    auto token = "korvex_" + base::Uuid::random().text();
    std::replace(token.begin(), token.end(), '-', '_');
    return token;
}

} // namespace korvex::platform::bus
