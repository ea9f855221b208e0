#pragma once

#include "cli/CommandLineError.h"
#include "cli/Session.h"

#include <string>
#include <vector>

namespace korvex::cli {

/// Runs the command that `arguments` (without the program's own name) ask for. The one place that
/// catches: every failure ends here as a message on standard error and an exit status.
ExitStatus runCommandLine(std::vector<std::string> arguments, const Environment& environment);

} // namespace korvex::cli
