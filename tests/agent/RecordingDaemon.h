#pragma once

#include "platform/bus/NameClaim.h"
#include "platform/bus/OfferedObject.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvex::tests {

/// A notification daemon on the bus that writes down what it is to show, and fails as it is told.
class RecordingDaemon {
public:
    using Bus = platform::bus::Bus;
    using Interface = platform::bus::Interface;
    using IncomingCall = platform::bus::IncomingCall;

    struct Shown {
        std::uint32_t id;
        std::string sender;
        std::string title;
        std::string body;
        std::vector<std::string> actions;
        platform::bus::Dictionary hints;
        std::int32_t timeout;
    };
    /// Whether an answer goes to who has shown the notification, or to everybody.
    enum class Tells { sender, everybody };

    RecordingDaemon(base::RunLoop& runLoop, base::LogSink& log,
                    std::vector<std::string> capabilities = {"actions", "body", "body-markup"},
                    std::string saysItIs = "recorder")
        : m_capabilities(std::move(capabilities)),
          m_saysItIs(std::move(saysItIs)),
          m_bus(platform::bus::WhichBus::session, runLoop, log),
          m_object(m_bus, kPath, interface()) {
        m_bus.start();
        m_name.emplace(m_bus, kName);
    }

    bool isThere() const { return m_name->state() == platform::bus::NameClaim::State::owned; }
    const std::vector<Shown>& shown() const { return m_shown; }
    const std::vector<std::uint32_t>& closed() const { return m_closed; }
    std::size_t count(const std::string& body) const {
        return static_cast<std::size_t>(std::count_if(
            m_shown.begin(), m_shown.end(), [&](const auto& each) { return each.body == body; }));
    }
    /// So many next notifications are refused.
    void refuseNext(int count) { m_refusals = count; }
    /// Called with each notification before it is answered.
    std::function<void(const Shown&)> onShow;

    /// As another program.
    void emit(const platform::bus::SignalAddress& signal,
              const platform::bus::Arguments& arguments) {
        m_bus.emit(signal, arguments);
    }
    void tell(const Shown& shown, const std::string& member,
              const platform::bus::Arguments& arguments, Tells tells) {
        m_bus.emit({.path = kPath,
                    .interface = kName,
                    .member = member,
                    .destination = tells == Tells::sender ? shown.sender : std::string()},
                   arguments);
    }
    void choose(const Shown& shown, const std::string& action, Tells tells,
                const std::string& token = {}) {
        if (!token.empty()) {
            tell(shown, "ActivationToken", platform::bus::arguments(shown.id, token), tells);
        }
        tell(shown, "ActionInvoked", platform::bus::arguments(shown.id, action), tells);
    }
    void close(const Shown& shown, Tells tells = Tells::sender) {
        tell(shown, "NotificationClosed", platform::bus::arguments(shown.id, std::uint32_t{2}),
             tells);
    }

private:
    static constexpr const char* kName = "org.freedesktop.Notifications";
    static constexpr const char* kPath = "/org/freedesktop/Notifications";

    Interface interface() {
        using namespace platform::bus;
        return {
            .name = kName,
            .methods = {
                Interface::method<>(
                    "GetCapabilities",
                    [this](IncomingCall& call) { call.reply(arguments(m_capabilities)); }, "as"),
                Interface::method<>(
                    "GetServerInformation",
                    [this](IncomingCall& call) {
                        call.reply(arguments(m_saysItIs, std::string("korvex"), std::string("1"),
                                             std::string("1.2")));
                    },
                    "ssss"),
                Interface::method<std::string, std::uint32_t, std::string, std::string, std::string,
                                  std::vector<std::string>, Dictionary, std::int32_t>(
                    "Notify",
                    [this](IncomingCall& call, const auto&, const auto&, const auto&,
                           const auto& title, const auto& body, const auto& actions,
                           const auto& hints, const auto& timeout) {
                        if (m_refusals > 0) {
                            --m_refusals;
                            call.fail(
                                "org.freedesktop.Notifications.Error.ExcessNotificationGeneration",
                                "Created too many similar notifications in quick succession");
                            return;
                        }
                        const Shown shown{++m_lastId, call.sender(), title,  body,
                                          actions,    hints,         timeout};
                        m_shown.push_back(shown);
                        if (onShow) {
                            onShow(shown);
                        }
                        if (call.isOpen()) {
                            call.reply(arguments(shown.id));
                        }
                    },
                    "u"),
                Interface::method<std::uint32_t>("CloseNotification",
                                                 [this](IncomingCall& call, const auto& id) {
                                                     m_closed.push_back(id);
                                                     call.reply();
                                                 }),
            }};
    }

    std::vector<std::string> m_capabilities;
    std::string m_saysItIs;
    std::vector<Shown> m_shown;
    std::vector<std::uint32_t> m_closed;
    std::uint32_t m_lastId = 0;
    int m_refusals = 0;
    Bus m_bus;
    platform::bus::OfferedObject m_object;
    std::optional<platform::bus::NameClaim> m_name;
};

} // namespace korvex::tests
