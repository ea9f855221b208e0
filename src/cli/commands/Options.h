#pragma once

#include "cli/session/When.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace korvex::cli {

/// How the help says what may be typed for an entry.
inline constexpr const char* kEntryHelp =
    "The entry, by its identifier or the first 4 or more characters of it";
inline constexpr const char* kTodoHelp =
    "The todo, by its identifier or the first 4 or more characters of it";
inline constexpr const char* kAttachmentHelp =
    "The attachment, by its filename, its identifier or the first 4 or more characters of that";

/// One text, exactly as it was typed. A name without dashes stands at its place among the
/// arguments. Text that is not UTF-8 is refused when the arguments are read.
CLI::Option* addText(CLI::App& command, const std::string& name, const std::string& valueName,
                     std::string& target, const std::string& help);
CLI::Option* addText(CLI::App& command, const std::string& name, const std::string& valueName,
                     std::optional<std::string>& target, const std::string& help);

/// One or more texts at their place among the arguments, exactly as they were typed: the parser's
/// own lists would take "[a,b]" apart.
CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& target,
                      const std::string& help);

/// One or more paths, of any bytes, at their place among the arguments; with dashes before its name
/// an option that takes one and may be given again.
CLI::Option* addFiles(CLI::App& command, const std::string& name, std::vector<std::string>& target,
                      const std::string& help);

/// --due, --from and --remind.
struct ScheduleOptionSet {
    CLI::Option* due;
    CLI::Option* from;
    CLI::Option* remind;
};
ScheduleOptionSet addScheduleOptions(CLI::App& command, ScheduleOptions& target);
/// What WHEN and the presets are, below the help of a command. `anchor`: from what they count back.
void addWhenHelp(CLI::App& command, const std::string& anchor);

} // namespace korvex::cli
