#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "schedule/ReminderCenter.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::app {

/// What the agent, which reminds of todos for all programs, says of itself.
struct AgentStatus {
    schedule::ReminderCenter::Status reminders = {};
    std::string version = {};
    std::uint32_t processID = 0;
    /// Who shows notifications, in its own words; empty where nobody is there.
    std::string daemon = {};
    /// When the next one that was not shown is due, which may be past where nobody shows it.
    std::optional<base::Instant> nextDue = std::nullopt;
    /// False where that cannot be read: then it says nothing that `nextDue` is absent.
    bool isNextDueKnown = true;

    bool operator==(const AgentStatus&) const = default;
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
};
/// What is to come, the soonest first, then what was shown, the latest first.
struct AgentReminders {
    std::vector<AgentReminder> listed = {};
    /// How many the agent holds besides.
    std::size_t more = 0;
};
/// What people and programs call it.
std::string_view nameOf(AgentReminder::State state);
std::optional<AgentReminder::State> agentReminderState(std::string_view name);

} // namespace korvex::app
