#pragma once

#include "app/AgentStatus.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvex::cli {

/// The agent, which reminds of the todos of the user's own store.
class RunningAgent {
public:
    virtual ~RunningAgent() = default;

    /// Asks it to plan anew, and to remove the notifications of these identifiers at once; starts
    /// it where it does not run. Nothing is lost where it cannot be reached: it plans from the
    /// store whenever it starts. Must not throw.
    virtual void planReminders(const std::filesystem::path& storeFile,
                               const std::vector<std::string>& withdrawn) = 0;

    /// What it answers, or why it does not: also where it looks after another store.
    template <typename Said>
    struct Answer {
        std::optional<Said> said = std::nullopt;
        std::string reason = {};
    };
    /// Does not start it.
    virtual Answer<app::AgentStatus> agentStatus(const std::filesystem::path& storeFile) = 0;
    /// Starts it where it does not run.
    virtual Answer<app::AgentReminders> agentReminders(const std::filesystem::path& storeFile) = 0;
};

} // namespace korvex::cli
