#include "platform/bus/NotificationDaemon.h"

#include "app/Launch.h"
#include "base/Text.h"
#include "platform/bus/BusNames.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace korvex::platform::bus {

namespace {

constexpr const char* kName = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr const char* kInterface = "org.freedesktop.Notifications";

constexpr const char* kProgram = "Korvex";
constexpr const char* kIcon = "korvex";
constexpr const char* kSound = "message-new-instant";
constexpr std::uint8_t kNormalUrgency = 1;
/// It stays until somebody has seen it: who is away at the moment is to be reminded too.
constexpr std::int32_t kNeverExpires = 0;
/// The bus says when who was asked has gone. One that is there shows what waits for it as soon as
/// it goes on: to ask anew would show that twice, and nobody would know the number of the first.
constexpr std::chrono::hours kUntilAnswered{24};

MethodAddress methodOf(const char* member, MethodAddress::Start start) {
    return {.destination = kName,
            .path = kPath,
            .interface = kInterface,
            .member = member,
            .start = start};
}

/// A body is markup for the daemons that understand some.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char each : text) {
        switch (each) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += each;
        }
    }
    return result;
}

/// What was answered; absent for an error, and for what is not of these types.
template <typename... Types>
auto answerOf(const Reply& reply) -> std::optional<decltype(reply.read<Types...>())> {
    try {
        return reply.read<Types...>();
    } catch (const BusError&) {
        return std::nullopt;
    }
}

std::string failureOf(const Reply& reply) {
    return reply.error() ? reply.error()->errorDescription()
                         : BusError(BusErrorCase::unreadable).errorDescription();
}

/// Rather than that nobody has answered: the bus says that too, where who was asked has gone.
bool isRefusal(const Reply& reply) {
    const auto* const error = reply.error();
    return error && error->which() == BusErrorCase::refused && !error->isAboutNobody() &&
           error->name() != "org.freedesktop.DBus.Error.NoReply";
}

} // namespace

NotificationDaemon::NotificationDaemon(Bus& bus, base::LogSink& log)
    : m_bus(bus), m_log(log, "Notifications"), m_owner(bus, kName) {
    m_owners = m_owner.changed().connect([this](const std::string&) { follow(); });
    m_states = m_bus.stateChanged().connect([this](Bus::State state) {
        if (state == Bus::State::connected) {
            setFailure(Failure::none); // on a former bus
            look();
        }
    });
    if (m_bus.isConnected()) {
        look();
    }
    m_services = m_bus.match({.sender = kBusName,
                              .path = kBusPath,
                              .interface = kBusInterface,
                              .member = "ActivatableServicesChanged"},
                             [this](const IncomingSignal&) { look(); });
    // Some tell the sender alone, some everybody: the number and who says it decide.
    m_signals = m_bus.match({.sender = kName, .path = kPath, .interface = kInterface},
                            [this](const IncomingSignal& signal) { take(signal); });
}

NotificationDaemon::Presence NotificationDaemon::presence() const {
    if (!m_owner.owner().empty()) {
        return Presence::running;
    }
    if (!m_owner.isKnown() || !m_isStartable) {
        return Presence::unknown;
    }
    return *m_isStartable ? Presence::startable : Presence::missing;
}

bool NotificationDaemon::isKnown() const {
    return presence() == Presence::running ? m_isIntroduced && !m_isGreeting
                                           : presence() != Presence::unknown;
}

std::optional<std::string> NotificationDaemon::identity() const {
    return m_owner.owner().empty() ? std::nullopt : std::optional(identityOf(m_owner.owner()));
}

std::string NotificationDaemon::identityOf(const std::string& uniqueName) const {
    return m_bus.busID() + uniqueName;
}

void NotificationDaemon::look() {
    if (m_failure != Failure::none && !m_isGreeting) {
        greet();
    }
    askForServices();
}

void NotificationDaemon::askForServices() {
    m_askAgain.reset();
    m_asked =
        m_bus.call({.destination = kBusName,
                    .path = kBusPath,
                    .interface = kBusInterface,
                    .member = "ListActivatableNames"},
                   {}, [this](const Reply& reply) {
                       if (reply.error() && reply.error()->isForNow()) {
                           m_askAgain =
                               m_bus.runLoop().callAfter(kAskAgain, [this] { askForServices(); });
                           return;
                       }
                       const auto names = answerOf<std::vector<std::string>>(reply);
                       const auto isStartable =
                           names && std::find(names->begin(), names->end(), kName) != names->end();
                       if (m_isStartable != isStartable) {
                           m_isStartable = isStartable;
                           m_changed.emit();
                       }
                   });
}

void NotificationDaemon::setFailure(Failure failure) {
    if (failure == Failure::none) {
        m_refusingSince.reset();
    }
    if (std::exchange(m_failure, failure) != failure) {
        m_changed.emit();
    }
}

void NotificationDaemon::follow() {
    m_capabilities.reset();
    m_isIntroduced = false;
    m_name.clear();
    m_description.clear();
    m_token = {};
    // Whoever comes now, or is started next, may do better.
    m_failure = Failure::none;
    m_refusingSince.reset();
    if (!m_owner.owner().empty()) {
        greet();
        introduce();
    } else {
        look();
    }
    m_changed.emit();
}

void NotificationDaemon::introduce() {
    m_introduction = m_bus.call(methodOf("GetServerInformation", MethodAddress::Start::never), {},
                                [this](const Reply& reply) { takeIntroduction(reply); });
}

void NotificationDaemon::takeIntroduction(const Reply& reply) {
    m_isIntroduced = true;
    if (const auto said = answerOf<std::string, std::string, std::string>(reply)) {
        const auto& [name, vendor, version] = *said;
        m_name = name;
        m_description = version.empty() ? name : name + " " + version;
    }
    m_changed.emit();
}

void NotificationDaemon::greet() {
    m_isGreeting = true;
    m_greeting = m_bus.call(methodOf("GetCapabilities", MethodAddress::Start::allowed), {},
                            [this](const Reply& reply) { takeCapabilities(reply); });
}

void NotificationDaemon::takeCapabilities(const Reply& reply) {
    m_isGreeting = false;
    const auto waiting = std::exchange(m_waiting, {});
    const auto said = answerOf<std::vector<std::string>>(reply);
    if (!said) {
        m_log.warning("Nobody shows notifications: " + failureOf(reply));
        m_failure = m_owner.owner().empty() ? Failure::notStarted : Failure::silent;
        for (const auto& each : waiting) {
            each.answer({});
        }
    } else {
        m_capabilities.emplace(said->begin(), said->end());
        if (m_isIntroduced && m_name.empty()) {
            introduce(); // it was too slow to say its name, too
        }
        const auto isSilentStill = std::any_of(
            m_calls.begin(), m_calls.end(), [](const auto& each) { return each.second.isOverdue; });
        if (m_failure != Failure::refusing && !isSilentStill) {
            m_failure = Failure::none;
        }
        for (const auto& each : waiting) {
            post(each);
        }
    }
    m_changed.emit();
}

void NotificationDaemon::show(const Notification& notification, Answer answer) {
    Waiting waiting{notification, std::move(answer)};
    if (m_capabilities) {
        post(waiting);
        return;
    }
    m_waiting.push_back(std::move(waiting));
    if (!m_isGreeting) {
        greet();
    }
}

void NotificationDaemon::post(const Waiting& waiting) {
    const auto& [title, body, action, actionTitle, category] = waiting.notification;
    std::vector<std::string> actions;
    if (can(kActions)) {
        actions = {kOpen, "Open", action, actionTitle};
    }
    const Dictionary hints{{"desktop-entry", Value(app::kDesktopName)},
                           {"category", Value(category)},
                           {"urgency", Value(kNormalUrgency)},
                           {"sound-name", Value(kSound)}};
    // A store from elsewhere may hold any bytes, and the bus carries text only.
    const auto text = base::repairedUtf8(body);
    const auto take = [this, answer = waiting.answer](const Reply& reply) {
        if (const auto id = answerOf<std::uint32_t>(reply)) {
            answer({.shown = Shown{*id, identityOf(reply.sender())}});
            setFailure(Failure::none);
            return;
        }
        m_log.warning("A notification was not shown: " + failureOf(reply));
        const auto isRefused = isRefusal(reply);
        answer({.isRefused = isRefused});
        if (isRefused) {
            takeRefusal();
        } else {
            setFailure(Failure::silent);
        }
    };
    const auto number =
        call("Notify",
             arguments(std::string(kProgram), std::uint32_t{0}, std::string(kIcon), title,
                       can("body-markup") ? escaped(text) : text, actions, hints, kNeverExpires),
             take, kUntilAnswered);
    m_calls[number].silence = m_bus.runLoop().callAfter(Bus::kPatience, [this, number] {
        m_calls[number].isOverdue = true;
        m_log.warning("A notification was not shown so far: there is no answer.");
        setFailure(Failure::silent);
    });
}

/// One that is asked too often refuses for a moment, and single ones.
void NotificationDaemon::takeRefusal() {
    const auto now = m_bus.runLoop().elapsed();
    if (!m_refusingSince) {
        m_refusingSince = now;
    } else if (now - *m_refusingSince >= Bus::kPatience) {
        setFailure(Failure::refusing);
    }
}

void NotificationDaemon::close(const Shown& shown, std::function<void()> closed) {
    if (shown.daemon != identity()) {
        closed();
        return;
    }
    call("CloseNotification", arguments(shown.id),
         [closed = std::move(closed)](const Reply&) { closed(); });
}

std::uint64_t NotificationDaemon::call(const char* member, const Arguments& sent,
                                       Bus::Answer answer, std::chrono::duration<double> limit) {
    const auto number = ++m_lastCall;
    m_calls[number].answer = m_bus.call(
        methodOf(member, MethodAddress::Start::never), sent,
        [this, number, answer = std::move(answer)](const Reply& reply) {
            const auto done = m_calls.extract(number);
            answer(reply);
        },
        limit);
    return number;
}

void NotificationDaemon::take(const IncomingSignal& signal) {
    const auto member = signal.member();
    const Shown shown{.daemon = identityOf(signal.sender())};
    if (member == "ActivationToken") {
        auto [id, token] = signal.read<std::uint32_t, std::string>();
        m_token = {id, std::move(token)};
    } else if (member == "ActionInvoked") {
        const auto [id, action] = signal.read<std::uint32_t, std::string>();
        const auto token = std::exchange(m_token, {});
        m_chosen.emit({.shown = {id, shown.daemon},
                       .action = action,
                       .token = token.first == id ? token.second : std::string()});
    } else if (member == "NotificationClosed") {
        const auto [id, reason] = signal.read<std::uint32_t, std::uint32_t>();
        m_closed.emit({id, shown.daemon});
    }
}

} // namespace korvex::platform::bus
