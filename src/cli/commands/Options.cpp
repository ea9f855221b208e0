#include "cli/commands/Options.h"

#include "cli/terminal/CommandLineError.h"

#include "base/Text.h"
#include "schedule/TodoReminderPreset.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace korvex::cli {

namespace {

/// More arguments than a system passes to a program.
constexpr int kManyArguments = 1 << 24;

const std::string& checkedUtf8(const std::string& text, const std::string& name) {
    if (!base::isValidUtf8(text)) {
        throw refusal(name + " is not valid UTF-8 text.");
    }
    return text;
}

template <typename Target>
CLI::Option* addOneText(CLI::App& command, const std::string& name, const std::string& valueName,
                        Target& target, const std::string& help) {
    auto* option = command.add_option(
        name,
        [name, &target](const CLI::results_t& typed) {
            target = checkedUtf8(typed.front(), name);
            return true;
        },
        help);
    return option->type_name(valueName);
}

std::string presetNames() {
    std::string names;
    for (const auto preset : schedule::kAllReminderPresets) {
        names += (names.empty() ? "" : ", ") + std::string(schedule::name(preset));
    }
    return names;
}

} // namespace

CLI::Option* addText(CLI::App& command, const std::string& name, const std::string& valueName,
                     std::string& target, const std::string& help) {
    return addOneText(command, name, valueName, target, help);
}

CLI::Option* addText(CLI::App& command, const std::string& name, const std::string& valueName,
                     std::optional<std::string>& target, const std::string& help) {
    return addOneText(command, name, valueName, target, help);
}

CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& target,
                      const std::string& help) {
    auto* option = command.add_option(
        name,
        [name, &target](const CLI::results_t& typed) {
            for (const auto& text : typed) {
                target.push_back(checkedUtf8(text, name));
            }
            return true;
        },
        help);
    // A fixed, huge number that need not be reached, rather than "any number": only so does the
    // parser leave brackets in a text alone.
    return option->type_name(name)
        ->expected(kManyArguments)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->required();
}

CLI::Option* addFiles(CLI::App& command, const std::string& name, std::vector<std::string>& target,
                      const std::string& help) {
    const auto isOption = name.starts_with('-');
    auto* option = command.add_option(
        name,
        [name, &target](const CLI::results_t& typed) {
            if (std::any_of(typed.begin(), typed.end(),
                            [](const auto& each) { return each.empty(); })) {
                throw wrongUsage(name + " needs a path.");
            }
            target = typed;
            return true;
        },
        help);
    return option->type_name(isOption ? "FILE" : name)
        ->expected(isOption ? 1 : kManyArguments)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->required(!isOption);
}

ScheduleOptionSet addScheduleOptions(CLI::App& command, ScheduleOptions& target) {
    auto* due = addText(command, "--due", "WHEN", target.due, "When it is due: a day or a time");
    auto* from = addText(command, "--from", "WHEN", target.from,
                         "Where a window begins that ends at --due; both are times");
    from->needs(due);
    auto* remind = addText(command, "--remind", "WHEN", target.remind,
                           "When to remind of it: a time, a day, or one of the presets below");
    addWhenHelp(command, "--due");
    return {due, from, remind};
}

void addWhenHelp(CLI::App& command, const std::string& anchor) {
    command.footer(
        "WHEN is a day (2025-03-10, today, tomorrow), a local time (2025-03-10T14:30, or 14:30 "
        "for\nthe next one), or a time with Z or an offset (2025-03-10T14:30+01:00). A reminder "
        "on a day\ncomes at the default reminder time. Presets count back from " +
        anchor + ":\n  " + presetNames() + ".");
}

} // namespace korvex::cli
