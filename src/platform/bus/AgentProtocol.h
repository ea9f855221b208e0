#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "platform/bus/Bus.h"
#include "schedule/ReminderCenter.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
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
inline constexpr const char* kGetStatus = "GetStatus";
/// What it holds, the newest first.
inline constexpr const char* kList = "List";
} // namespace agent_method
/// Carries the status whenever it is another.
inline constexpr const char* kAgentStatusChanged = "StatusChanged";
/// The agent looks after another store than the one it was asked about.
inline constexpr const char* kAgentHasOtherStore = "dev.korvex.Agent.Error.OtherStore";

MethodAddress agentMethod(const char* member, MethodAddress::Start start);
/// The path as a text for the bus; empty, which is the agent's own store, where it is none.
std::string agentStoreArgument(const std::filesystem::path& storeFile);

/// What the agent says of itself.
struct AgentStatus {
    schedule::ReminderCenter::Status reminders = {};
    std::string version = {};
    std::uint32_t processID = 0;
    /// Who shows notifications, in its own words; empty where nobody is there.
    std::string daemon = {};
    /// When it has something to show next.
    std::optional<base::Instant> nextDue = std::nullopt;

    bool operator==(const AgentStatus&) const = default;

    Dictionary toDictionary() const;
    /// What is missing or of another type is as if nothing were known of it.
    static AgentStatus of(const Dictionary& values);
};

/// One reminder that the agent holds.
struct AgentReminder {
    enum class State {
        /// Still to be shown.
        pending,
        /// To be seen now.
        shown,
        /// Shown, and closed since.
        closed,
        /// Shown, and no longer asked for.
        withdrawn,
    };
    base::Uuid entryID;
    base::Instant date;
    /// Empty for what is only remembered.
    std::string body;
    State state = State::pending;

    bool operator==(const AgentReminder&) const = default;

    /// How many are told at once.
    static constexpr std::size_t kMost = 1000;
    /// Identifier, moment, body, state.
    using OnBus = std::tuple<std::string, double, std::string, std::string>;
    OnBus toBus() const;
    /// Absent for what is none.
    static std::optional<AgentReminder> of(const OnBus& told);
    /// What `List` has answered. Throws BusError.
    static std::vector<AgentReminder> allOf(const Reply& reply);
};
/// What people and JSON call it.
std::string_view nameOf(AgentReminder::State state);

} // namespace korvex::platform::bus
