#pragma once

#include "platform/bus/NameClaim.h"
#include "platform/bus/OfferedObject.h"
#include "platform/bus/PortalRequest.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvex::tests {

/// A desktop's portal for global shortcuts, at whose keyboard the test sits. As the real one, it
/// takes a program's name only before anything else, and a session's shortcuts only once.
class MockPortal {
public:
    using Bus = platform::bus::Bus;
    using Call = platform::bus::IncomingCall;
    using Dictionary = platform::bus::Dictionary;
    using Interface = platform::bus::Interface;
    using Value = platform::bus::Value;
    using Path = platform::bus::ObjectPath;
    using Shortcuts = std::vector<std::tuple<std::string, Dictionary>>;

    enum class Kind { full, withoutRegistry, withoutShortcuts };

    explicit MockPortal(Bus& bus, Kind kind = Kind::full) : m_bus(bus) {
        if (kind != Kind::withoutRegistry) {
            m_registry.emplace(
                bus, platform::bus::kPortalPath,
                Interface{.name = "org.freedesktop.host.portal.Registry",
                          .methods = {Interface::method<std::string, Dictionary>(
                              "Register", [this](Call& call, const auto& id, const auto&) {
                                  if (!m_known.emplace(call.sender(), id).second) {
                                      call.fail("org.freedesktop.DBus.Error.Failed", "known");
                                  } else {
                                      call.reply();
                                  }
                              })}});
        }
        if (kind != Kind::withoutShortcuts) {
            m_shortcuts.emplace(bus, platform::bus::kPortalPath, shortcutsInterface());
        }
        m_name.emplace(bus, platform::bus::kPortalName);
    }

    bool isThere() const { return m_name->state() == platform::bus::NameClaim::State::owned; }
    /// By which name the program of the session is known; empty for none.
    std::string program() { return m_known[m_client]; }

    void press(const std::string& token) {
        m_shortcuts->emit("Activated",
                          platform::bus::arguments(Path{m_session}, std::string("quick-entry"),
                                                   std::uint64_t{7},
                                                   Dictionary{{"activation_token", Value(token)}}));
    }
    void setTrigger(const std::string& now) {
        m_shortcuts->emit("ShortcutsChanged",
                          platform::bus::arguments(Path{m_session}, shortcuts(now)));
    }
    void endSession() { m_sessionObject->emit("Closed", platform::bus::arguments(Dictionary())); }
    /// Answers what the user was asked.
    void answer(std::uint32_t outcome) {
        respond(m_pending, outcome, outcome == 0 && !bindsNothing ? bound() : Dictionary());
    }

    /// The user takes the time to think.
    bool asksUser = false;
    std::uint32_t usersAnswer = 0;
    /// It does not even say that it asks.
    bool isTooSlow = false;
    /// It says that it is done, and has left the shortcut out.
    bool bindsNothing = false;
    std::string trigger = "Alt+Space";
    /// What was asked for.
    int sessions = 0;
    int bindings = 0;
    int closings = 0;
    int settingsOpened = 0;
    Dictionary proposal;

private:
    Interface shortcutsInterface() {
        return {.name = "org.freedesktop.portal.GlobalShortcuts",
                .methods = {Interface::method<Dictionary>(
                                "CreateSession",
                                [this](Call& call, const Dictionary& options) {
                                    createSession(call, options);
                                },
                                "o"),
                            Interface::method<Path, Shortcuts, std::string, Dictionary>(
                                "BindShortcuts",
                                [this](Call& call, const Path& session, const Shortcuts& wanted,
                                       const std::string&, const Dictionary& options) {
                                    bind(call, session, wanted, options);
                                },
                                "o"),
                            Interface::method<Path, std::string, Dictionary>(
                                "ConfigureShortcuts",
                                [this](Call& call, const auto&, const auto&, const auto&) {
                                    ++settingsOpened;
                                    call.reply();
                                })},
                .properties = {Interface::property<std::uint32_t>("version", [] { return 2; })},
                .signals = {{.name = "Activated", .carries = "osta{sv}"},
                            {.name = "ShortcutsChanged", .carries = "oa(sa{sv})"}}};
    }

    void createSession(Call& call, const Dictionary& options) {
        ++sessions;
        m_client = call.sender();
        m_known.emplace(m_client, "");
        m_isBound = false;
        m_session = place("session", options, "session_handle_token");
        m_sessionObject.emplace(m_bus, m_session,
                                Interface{.name = "org.freedesktop.portal.Session",
                                          .methods = {Interface::method<>("Close",
                                                                          [this](Call& closing) {
                                                                              ++closings;
                                                                              closing.reply();
                                                                          })},
                                          .signals = {{.name = "Closed", .carries = "a{sv}"}}});
        const auto request = place("request", options, "handle_token");
        call.reply(platform::bus::arguments(Path{request}));
        respond(request, 0, {{"session_handle", Value(m_session)}});
    }

    void bind(Call& call, const Path& session, const Shortcuts& wanted, const Dictionary& options) {
        if (session.text != m_session || std::exchange(m_isBound, true)) {
            call.fail("org.freedesktop.DBus.Error.AccessDenied", "Invalid session");
            return;
        }
        ++bindings;
        if (isTooSlow) {
            m_unanswered.emplace_back(std::move(call));
            return;
        }
        proposal = std::get<1>(wanted.at(0));
        m_pending = place("request", options, "handle_token");
        call.reply(platform::bus::arguments(Path{m_pending}));
        if (!asksUser) {
            answer(usersAnswer);
        }
    }

    void respond(const std::string& request, std::uint32_t outcome, const Dictionary& results) {
        m_bus.emit({.path = request,
                    .interface = "org.freedesktop.portal.Request",
                    .member = "Response",
                    .destination = m_client},
                   platform::bus::arguments(outcome, results));
    }

    std::string place(const char* kind, const Dictionary& options, const char* token) const {
        auto sender = m_client;
        std::erase(sender, ':');
        std::replace(sender.begin(), sender.end(), '.', '_');
        return std::string(platform::bus::kPortalPath) + "/" + kind + "/" + sender + "/" +
               *platform::bus::find<std::string>(options, token);
    }

    static Shortcuts shortcuts(const std::string& now) {
        return {{"quick-entry", Dictionary{{"trigger_description", Value(now)}}}};
    }
    Dictionary bound() const {
        using platform::bus::ValueArray;
        using platform::bus::ValueStructure;
        return {
            {"shortcuts",
             Value(ValueArray{
                 .element = "(sa{sv})",
                 .items = {Value(ValueStructure{
                     .fields = {Value("quick-entry"),
                                Value(Dictionary{{"trigger_description", Value(trigger)}})}})}})}};
    }

    Bus& m_bus;
    std::map<std::string, std::string> m_known;
    std::string m_client;
    std::string m_session;
    std::string m_pending;
    std::vector<Call> m_unanswered;
    bool m_isBound = false;
    std::optional<platform::bus::OfferedObject> m_registry;
    std::optional<platform::bus::OfferedObject> m_shortcuts;
    std::optional<platform::bus::OfferedObject> m_sessionObject;
    std::optional<platform::bus::NameClaim> m_name;
};

} // namespace korvex::tests
