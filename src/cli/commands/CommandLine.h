#pragma once

#include "cli/session/Session.h"
#include "cli/terminal/CommandLineError.h"

#include <memory>
#include <string>
#include <vector>

namespace korvex::cli {

/// One run of the program. What the command worked with lives as long as this.
class CommandLine {
public:
    explicit CommandLine(const Environment& environment) : m_environment(environment) {}

    /// Carries out the command that `arguments` (without the program's own name) ask for; once. The
    /// one place that catches: every failure ends here as a message on standard error and an exit
    /// status.
    ExitStatus run(std::vector<std::string> arguments);

private:
    ExitStatus carryOut(std::vector<std::string> arguments);

    Environment m_environment;
    std::unique_ptr<Session> m_session;
};

} // namespace korvex::cli
