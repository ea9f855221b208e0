#include "platform/bus/AgentProtocol.h"

#include "base/Text.h"
#include "platform/bus/StoreChangeSignal.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <utility>

namespace korvex::platform::bus {

namespace {

using schedule::AuthorizationStatus;

constexpr const char* kAuthorization = "authorization";
constexpr const char* kReason = "reason";
constexpr const char* kCanAct = "can-act";
constexpr const char* kQuieted = "quieted";
constexpr const char* kPermissionError = "permission-error";
constexpr const char* kSchedulingError = "scheduling-error";
constexpr const char* kVersion = "version";
constexpr const char* kProcess = "process";
constexpr const char* kDaemon = "daemon";
constexpr const char* kNextDue = "next-due";
constexpr const char* kNextDueKnown = "next-due-known";

constexpr std::array<std::pair<AuthorizationStatus, const char*>, 6> kAuthorizations{{
    {AuthorizationStatus::notDetermined, "not-determined"},
    {AuthorizationStatus::denied, "denied"},
    {AuthorizationStatus::authorized, "authorized"},
    {AuthorizationStatus::provisional, "provisional"},
    {AuthorizationStatus::ephemeral, "ephemeral"},
    {AuthorizationStatus::unavailable, "unavailable"},
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
    auto name = storeNameOf(storeFile);
    return base::isValidUtf8(name) ? std::move(name) : std::string();
}

Dictionary toDictionary(const app::AgentStatus& said) {
    const auto& reminders = said.reminders;
    Dictionary values{
        {kReason, Value(reminders.reason)},         {kCanAct, Value(reminders.canAct)},
        {kQuieted, Value(reminders.isQuieted)},     {kVersion, Value(said.version)},
        {kProcess, Value(said.processID)},          {kDaemon, Value(said.daemon)},
        {kNextDueKnown, Value(said.isNextDueKnown)}};
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
    if (said.nextDue) {
        values.emplace(kNextDue, Value(said.nextDue->seconds));
    }
    return values;
}

app::AgentStatus agentStatusOf(const Dictionary& values) {
    app::AgentStatus status{
        .reminders = {.reason = valueOr<std::string>(values, kReason, {}),
                      .canAct = valueOr(values, kCanAct, true),
                      .isQuieted = valueOr(values, kQuieted, false),
                      .permissionErrorMessage = textAt(values, kPermissionError),
                      .schedulingErrorMessage = textAt(values, kSchedulingError)},
        .version = valueOr<std::string>(values, kVersion, {}),
        .processID = valueOr<std::uint32_t>(values, kProcess, 0),
        .daemon = valueOr<std::string>(values, kDaemon, {}),
        .isNextDueKnown = valueOr(values, kNextDueKnown, true)};
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

AgentReminderOnBus toBus(const app::AgentReminder& reminder) {
    return {reminder.entryID.text(), reminder.date.seconds, reminder.body,
            std::string(app::nameOf(reminder.state))};
}

std::optional<app::AgentReminder> agentReminderOf(const AgentReminderOnBus& told) {
    const auto& [id, seconds, body, name] = told;
    const auto entry = base::Uuid::parse(id);
    const auto state = app::agentReminderState(name);
    const base::Instant date{seconds};
    if (!entry || !state || !date.isValid()) {
        return std::nullopt;
    }
    return app::AgentReminder{*entry, date, body, *state};
}

Arguments argumentsOf(const app::AgentReminders& reminders) {
    std::vector<AgentReminderOnBus> told;
    told.reserve(reminders.listed.size());
    for (const auto& each : reminders.listed) {
        told.push_back(toBus(each));
    }
    constexpr std::size_t kLargest = std::numeric_limits<std::uint32_t>::max();
    return arguments(std::move(told),
                     static_cast<std::uint32_t>(std::min(reminders.more, kLargest)));
}

app::AgentReminders agentRemindersOf(const Reply& reply) {
    const auto [told, more] = reply.read<std::vector<AgentReminderOnBus>, std::uint32_t>();
    app::AgentReminders reminders{.more = more};
    for (const auto& each : told) {
        if (auto reminder = agentReminderOf(each)) {
            reminders.listed.push_back(*std::move(reminder));
        }
    }
    return reminders;
}

} // namespace korvex::platform::bus
