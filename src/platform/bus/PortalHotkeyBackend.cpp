#include "platform/bus/PortalHotkeyBackend.h"

#include "app/KeyCodes.h"
#include "app/Launch.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace korvex::platform::bus {

namespace {

using Shortcut = app::QuickEntryShortcut;
using State = app::HotkeyStatus::State;

constexpr const char* kInterface = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* kSessionInterface = "org.freedesktop.portal.Session";
constexpr const char* kRegistry = "org.freedesktop.host.portal.Registry";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kId = "quick-entry";
/// From this version on the desktop shows its settings when asked.
constexpr std::uint32_t kVersionWithSettings = 2;

MethodAddress portalMethod(const char* interface, const char* member) {
    return {
        .destination = kPortalName, .path = kPortalPath, .interface = interface, .member = member};
}

/// What the key types on the layout that its number is of; empty where a desktop need not get a
/// proposal.
std::string proposedKey(std::uint32_t keyCode) {
    constexpr std::uint32_t kSpace = 49;
    /// By number, a blank where there is no letter or digit.
    constexpr std::string_view kTyped = "asdfhgzxcv bqweryt123465 97 80 ou ip lj k    nm";
    if (keyCode == kSpace) {
        return "space";
    }
    if (keyCode < kTyped.size() && kTyped[keyCode] != ' ') {
        return {kTyped[keyCode]};
    }
    const auto name = app::fixedKeyText(keyCode);
    const auto isFunctionKey = name && name->size() > 1 && name->front() == 'F' &&
                               std::isdigit(static_cast<unsigned char>((*name)[1])) != 0;
    return isFunctionKey ? std::string(*name) : std::string();
}

/// As desktops write shortcuts for one another: "CTRL+ALT+space".
std::string proposalFor(const Shortcut& shortcut) {
    constexpr std::pair<std::uint32_t, const char*> kNames[] = {{Shortcut::kCommand, "CTRL+"},
                                                                {Shortcut::kOption, "ALT+"},
                                                                {Shortcut::kShift, "SHIFT+"},
                                                                {Shortcut::kControl, "LOGO+"}};
    const auto key = proposedKey(shortcut.keyCode);
    if (key.empty()) {
        return {};
    }
    std::string text;
    for (const auto& [modifier, name] : kNames) {
        text += (shortcut.modifiers & modifier) != 0 ? name : "";
    }
    return text + key;
}

/// By their names, with what the desktop says of each.
using BoundShortcuts = std::vector<std::tuple<std::string, Dictionary>>;

/// What the desktop says of our shortcut among those of the session; absent where it has none.
std::optional<std::string> triggerIn(const BoundShortcuts& all) {
    const auto found = std::find_if(all.begin(), all.end(),
                                    [](const auto& each) { return std::get<0>(each) == kId; });
    if (found == all.end()) {
        return std::nullopt;
    }
    const auto* const text = find<std::string>(std::get<1>(*found), "trigger_description");
    return text ? *text : std::string();
}

BoundShortcuts shortcutsOf(const Dictionary& results) {
    BoundShortcuts shortcuts;
    if (const auto* const array = find<ValueArray>(results, "shortcuts")) {
        for (const auto& item : array->items) {
            const auto* const fields = item.as<ValueStructure>();
            if (fields && fields->fields.size() == 2 && fields->fields[0].as<std::string>() &&
                fields->fields[1].as<Dictionary>()) {
                shortcuts.emplace_back(*fields->fields[0].as<std::string>(),
                                       *fields->fields[1].as<Dictionary>());
            }
        }
    }
    return shortcuts;
}

/// An object's path, which portals once gave as a text.
std::string pathIn(const Dictionary& results, const char* name) {
    if (const auto* const text = find<std::string>(results, name)) {
        return *text;
    }
    const auto* const path = find<ObjectPath>(results, name);
    return path ? path->text : std::string();
}

} // namespace

PortalHotkeyBackend::PortalHotkeyBackend(std::string description, base::RunLoop& runLoop,
                                         base::LogSink& log)
    : m_runLoop(runLoop),
      m_log(log, "Hotkey"),
      m_description(std::move(description)),
      m_bus(WhichBus::session, runLoop, log),
      m_portal(m_bus, kPortalName) {}

int PortalHotkeyBackend::installHandler() {
    m_owners = m_portal.changed().connect([this](const std::string& owner) {
        const auto wasServed = !m_session.empty();
        if (owner != m_server) {
            m_isIntroduced = false;
            if (wasServed) {
                waitToAskAgain();
            }
        }
        if (!owner.empty() && m_status.state == State::managedByDesktop) {
            begin(); // one that has come back, or only now
        }
    });
    m_states = m_bus.stateChanged().connect([this](Bus::State state) {
        if (state == Bus::State::connected) {
            m_isIntroduced = false;
            begin();
        } else if (state == Bus::State::waiting) {
            loseSession();
            setStatus({State::managedByDesktop});
        }
    });
    m_bus.start();
    return 0;
}

app::HotkeyStatus PortalHotkeyBackend::registerShortcut(const Shortcut& shortcut) {
    m_wanted = shortcut;
    if (m_session.empty() && !m_request && m_bus.isConnected()) {
        m_status = {State::asked};
        begin();
    }
    return m_status;
}

void PortalHotkeyBackend::unregisterShortcut() {
    m_wanted.reset();
    m_retry.reset();
    endSession();
    m_status = {State::asked};
}

void PortalHotkeyBackend::begin() {
    m_retry.reset();
    if (!m_wanted || !m_bus.isConnected()) {
        return;
    }
    loseSession();
    if (m_isIntroduced) {
        createSession();
    } else {
        introduce();
    }
}

void PortalHotkeyBackend::introduce() {
    m_asked = m_bus.call(
        portalMethod(kRegistry, "Register"),
        arguments(std::string(app::kDesktopName), Dictionary()), [this](const Reply& reply) {
            m_isIntroduced = true;
            // Older portals know us by where we were started, or not at all.
            if (const auto* const error = reply.error(); error && error->isAboutNobody()) {
                giveUp(*error);
            } else {
                createSession();
            }
        });
}

void PortalHotkeyBackend::createSession() {
    m_request = std::make_unique<PortalRequest>(
        m_bus, kInterface, "CreateSession", arguments(),
        Dictionary{{"session_handle_token", Value(portalToken())}},
        PortalRequest::Listener{
            .answered =
                [this](PortalRequest::Outcome outcome, const Dictionary& results) {
                    m_session = pathIn(results, "session_handle");
                    if (m_session.empty() && outcome == PortalRequest::Outcome::ended) {
                        waitToAskAgain();
                    } else if (m_session.empty()) {
                        giveUp(BusError(BusErrorCase::refused, {}, "no session"));
                    } else {
                        m_server = m_portal.owner();
                        listen();
                        bind();
                    }
                },
            .failed = [this](const BusError& error) { giveUp(error); }});
}

void PortalHotkeyBackend::bind() {
    Dictionary about{{"description", Value(m_description)}};
    if (const auto proposal = proposalFor(*m_wanted); !proposal.empty()) {
        about.emplace("preferred_trigger", Value(proposal));
    }
    std::vector<std::tuple<std::string, Dictionary>> shortcuts{{kId, std::move(about)}};
    m_request = std::make_unique<PortalRequest>(
        m_bus, kInterface, "BindShortcuts",
        arguments(ObjectPath{m_session}, std::move(shortcuts), std::string()), Dictionary{},
        PortalRequest::Listener{
            .answered =
                [this](PortalRequest::Outcome outcome, const Dictionary& results) {
                    switch (outcome) {
                    case PortalRequest::Outcome::done:
                        takeBound(results);
                        break;
                    case PortalRequest::Outcome::cancelled:
                        endSession();
                        setStatus({State::declined, static_cast<int>(outcome)});
                        break;
                    case PortalRequest::Outcome::ended: // as where the screen was locked meanwhile
                        endSession();
                        waitToAskAgain();
                        break;
                    }
                },
            .failed = [this](const BusError& error) { giveUp(error); }});
}

void PortalHotkeyBackend::takeBound(const Dictionary& results) {
    m_request.reset();
    if (auto trigger = triggerIn(shortcutsOf(results))) {
        askVersion();
        setStatus({.state = State::boundByDesktop, .trigger = std::move(*trigger)});
    } else {
        endSession(); // whose shortcuts are bound once: to ask again needs another
        setStatus({State::declined});
    }
}

void PortalHotkeyBackend::askVersion() {
    m_asked = m_bus.call(portalMethod(kProperties, "Get"),
                         arguments(std::string(kInterface), std::string("version")),
                         [this](const Reply& reply) {
                             const auto value = reply.error() ? Value() : reply.read<Value>();
                             const auto* const version = value.as<std::uint32_t>();
                             m_hasSettings = version && *version >= kVersionWithSettings;
                         });
}

void PortalHotkeyBackend::openDesktopSettings() {
    if (m_hasSettings && !m_session.empty()) {
        m_bus.send(portalMethod(kInterface, "ConfigureShortcuts"),
                   arguments(ObjectPath{m_session}, std::string(), Dictionary()));
    }
}

void PortalHotkeyBackend::listen() {
    m_activations = m_bus.match(
        {.sender = kPortalName,
         .path = kPortalPath,
         .interface = kInterface,
         .member = "Activated"},
        [this](const IncomingSignal& signal) {
            const auto [session, id, time, options] =
                signal.read<ObjectPath, std::string, std::uint64_t, Dictionary>();
            if (session.text == m_session && id == kId) {
                m_pause = kFirstPause;
                const auto* const token = find<std::string>(options, "activation_token");
                didPress().emit(
                    {.timestamp = 0, .activationToken = token ? *token : std::string()});
            }
        });
    m_changes = m_bus.match(
        {.sender = kPortalName,
         .path = kPortalPath,
         .interface = kInterface,
         .member = "ShortcutsChanged"},
        [this](const IncomingSignal& signal) {
            const auto [session, changed] = signal.read<ObjectPath, BoundShortcuts>();
            if (session.text != m_session) {
                return;
            }
            if (auto trigger = triggerIn(changed)) {
                setStatus({.state = State::boundByDesktop, .trigger = std::move(*trigger)});
            }
        });
    m_ends = m_bus.match({.sender = kPortalName,
                          .path = m_session,
                          .interface = kSessionInterface,
                          .member = "Closed"},
                         [this](const IncomingSignal&) { waitToAskAgain(); });
}

void PortalHotkeyBackend::giveUp(const BusError& error) {
    m_log.info("No portal for shortcuts: " + error.errorDescription());
    endSession(); // what it may have bound meanwhile is bound once more by the next one
    if (error.isForNow()) {
        waitToAskAgain();
        return;
    }
    setStatus({State::managedByDesktop});
}

void PortalHotkeyBackend::loseSession() {
    m_session.clear();
    m_hasSettings = false;
    m_request.reset();
    m_asked.cancel();
    m_activations.cancel();
    m_changes.cancel();
    m_ends.cancel();
}

void PortalHotkeyBackend::endSession() {
    if (!m_session.empty()) {
        m_bus.send({.destination = kPortalName,
                    .path = m_session,
                    .interface = kSessionInterface,
                    .member = "Close"});
    }
    loseSession();
}

void PortalHotkeyBackend::waitToAskAgain() {
    loseSession();
    m_retry = m_runLoop.callAfter(m_pause, [this] { begin(); });
    m_pause = std::min(m_pause * 2, kLongestPause);
    setStatus({State::managedByDesktop});
}

void PortalHotkeyBackend::setStatus(app::HotkeyStatus status) {
    if (m_status != status) {
        m_status = std::move(status);
        if (m_wanted) {
            didChangeStatus().emit(m_status);
        }
    }
}

} // namespace korvex::platform::bus
