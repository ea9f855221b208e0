#include "platform/bus/AgentProtocol.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace korvex::platform::bus {

namespace {

using schedule::AuthorizationStatus;
using State = AgentReminder::State;

constexpr const char* kAuthorization = "authorization";
constexpr const char* kReason = "reason";
constexpr const char* kPermissionError = "permission-error";
constexpr const char* kSchedulingError = "scheduling-error";
constexpr const char* kVersion = "version";
constexpr const char* kProcess = "process";
constexpr const char* kDaemon = "daemon";
constexpr const char* kNextDue = "next-due";

constexpr std::array<std::pair<AuthorizationStatus, const char*>, 6> kAuthorizations{{
    {AuthorizationStatus::notDetermined, "not-determined"},
    {AuthorizationStatus::denied, "denied"},
    {AuthorizationStatus::authorized, "authorized"},
    {AuthorizationStatus::provisional, "provisional"},
    {AuthorizationStatus::ephemeral, "ephemeral"},
    {AuthorizationStatus::unavailable, "unavailable"},
}};
constexpr std::array<std::pair<State, std::string_view>, 4> kStates{{
    {State::pending, "pending"},
    {State::shown, "shown"},
    {State::closed, "closed"},
    {State::withdrawn, "withdrawn"},
}};

template <typename Kind>
Kind valueOr(const Dictionary& values, const char* name, Kind otherwise) {
    const auto* const found = find<Kind>(values, name);
    return found ? *found : otherwise;
}

std::optional<std::string> textAt(const Dictionary& values, const char* name) {
    const auto* const text = find<std::string>(values, name);
    return text ? std::optional(*text) : std::nullopt;
}

} // namespace

MethodAddress agentMethod(const char* member, MethodAddress::Start start) {
    return {.destination = kAgentName,
            .path = kAgentPath,
            .interface = kAgentInterface,
            .member = member,
            .start = start};
}

std::string agentStoreArgument(const std::filesystem::path& storeFile) {
    return base::isValidUtf8(storeFile.native()) ? storeFile.native() : std::string();
}

Dictionary AgentStatus::toDictionary() const {
    Dictionary values{{kReason, Value(reminders.reason)},
                      {kVersion, Value(version)},
                      {kProcess, Value(processID)},
                      {kDaemon, Value(daemon)}};
    for (const auto& [status, name] : kAuthorizations) {
        if (status == reminders.authorization) {
            values.emplace(kAuthorization, Value(name));
        }
    }
    for (const auto& [name, message] :
         {std::pair(kPermissionError, reminders.permissionErrorMessage),
          {kSchedulingError, reminders.schedulingErrorMessage}}) {
        if (message) {
            values.emplace(name, Value(*message));
        }
    }
    if (nextDue) {
        values.emplace(kNextDue, Value(nextDue->seconds));
    }
    return values;
}

AgentStatus AgentStatus::of(const Dictionary& values) {
    AgentStatus status{.reminders = {.reason = valueOr<std::string>(values, kReason, {}),
                                     .permissionErrorMessage = textAt(values, kPermissionError),
                                     .schedulingErrorMessage = textAt(values, kSchedulingError)},
                       .version = valueOr<std::string>(values, kVersion, {}),
                       .processID = valueOr<std::uint32_t>(values, kProcess, 0),
                       .daemon = valueOr<std::string>(values, kDaemon, {})};
    const auto authorization = valueOr<std::string>(values, kAuthorization, {});
    for (const auto& [known, name] : kAuthorizations) {
        if (name == authorization) {
            status.reminders.authorization = known;
        }
    }
    if (const auto* const seconds = find<double>(values, kNextDue)) {
        status.nextDue = base::Instant{*seconds};
    }
    return status;
}

AgentReminder::OnBus AgentReminder::toBus() const {
    return {entryID.text(), date.seconds, body, std::string(nameOf(state))};
}

std::optional<AgentReminder> AgentReminder::of(const OnBus& told) {
    const auto& [id, seconds, body, name] = told;
    const auto entry = base::Uuid::parse(id);
    const auto state =
        std::find_if(kStates.begin(), kStates.end(),
                     [&name = name](const auto& each) { return each.second == name; });
    if (!entry || state == kStates.end() || !base::Instant{seconds}.isValid()) {
        return std::nullopt;
    }
    return AgentReminder{*entry, {seconds}, body, state->first};
}

std::vector<AgentReminder> AgentReminder::allOf(const Reply& reply) {
    std::vector<AgentReminder> reminders;
    for (const auto& told : reply.read<std::vector<OnBus>>()) {
        if (auto reminder = of(told)) {
            reminders.push_back(*std::move(reminder));
        }
    }
    return reminders;
}

std::string_view nameOf(State state) {
    return kStates.at(static_cast<std::size_t>(state)).second;
}

} // namespace korvex::platform::bus
