#pragma once

#include "app/AgentStatus.h"
#include "platform/bus/Bus.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvex::platform::bus {

/// How the agent is known on the bus, and the program that is it.
inline constexpr const char* kAgentName = "dev.korvex.Agent";
inline constexpr const char* kAgentPath = "/dev/korvex/Agent";
inline constexpr const char* kAgentInterface = "dev.korvex.Agent";
inline constexpr const char* kAgentProgram = "korvex-agent";

/// What can be asked of it.
namespace agent_method {
/// Takes the store's path and the identifiers of notifications that are to be removed at once; then
/// it plans anew, soon. Answers with its status.
inline constexpr const char* kReconcile = "Reconcile";
/// Looks again whether notifications may be shown. Answers with its status.
inline constexpr const char* kRequestAuthorization = "RequestAuthorization";
/// These two take the store's path.
inline constexpr const char* kGetStatus = "GetStatus";
/// What it holds, and how many more there are.
inline constexpr const char* kList = "List";
} // namespace agent_method
/// So many identifiers at most: one message must not grow without end. What is more is found by the
/// reconcile, which comes with it.
inline constexpr std::size_t kMostWithdrawn = 1000;
/// Carries the status whenever it is another.
inline constexpr const char* kAgentStatusChanged = "StatusChanged";
/// The agent looks after another store than the one it was asked about.
inline constexpr const char* kAgentHasOtherStore = "dev.korvex.Agent.Error.OtherStore";

MethodAddress agentMethod(const char* member, MethodAddress::Start start);
/// What the store is called on the bus, whichever way leads there; empty, which is the agent's own
/// store, where that is no text. Looks at the file system, so it is for one's own store only.
std::string agentStoreArgument(const std::filesystem::path& storeFile);

Dictionary toDictionary(const app::AgentStatus& status);
/// What is missing or of another type is as if nothing were known of it.
app::AgentStatus agentStatusOf(const Dictionary& values);

/// A reminder as it is told: identifier, moment, body, state.
using AgentReminderOnBus = std::tuple<std::string, double, std::string, std::string>;
AgentReminderOnBus toBus(const app::AgentReminder& reminder);
/// Absent for what is none.
std::optional<app::AgentReminder> agentReminderOf(const AgentReminderOnBus& told);
/// What `List` answers.
Arguments argumentsOf(const app::AgentReminders& reminders);
/// Throws BusError.
app::AgentReminders agentRemindersOf(const Reply& reply);

} // namespace korvex::platform::bus
