#include "cli/commands/HelpFormatter.h"

#include "cli/terminal/DisplayText.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace korvex::cli {

namespace {

constexpr std::size_t kHelpWidth = 96;

using Row = std::pair<std::string, std::string>;

std::string positionalUsage(const CLI::Option& option) {
    const auto name = option.get_name(true) + (option.get_expected_max() > 1 ? "…" : "");
    return option.get_required() ? name : "[" + name + "]";
}

std::string optionUsage(const CLI::Option& option) {
    const auto takesValue = option.get_expected_max() > 0;
    auto names = option.get_name(false, true);
    if (const auto comma = names.find(','); comma != std::string::npos) {
        names.insert(comma + 1, " ");
    }
    return takesValue ? names + " " + option.get_type_name() : names;
}

std::string table(const std::string& title, const std::vector<Row>& rows) {
    if (rows.empty()) {
        return {};
    }
    std::size_t width = 0;
    for (const auto& row : rows) {
        width = std::max(width, displayWidth(row.first));
    }
    std::string text = "\n" + title + ":\n";
    for (const auto& [left, right] : rows) {
        auto indent = "  " + left + std::string(width - displayWidth(left) + 2, ' ');
        for (const auto piece : wrapped(right, kHelpWidth - width - 4)) {
            text.append(indent).append(piece).append("\n");
            indent.assign(width + 4, ' ');
        }
    }
    return text;
}

} // namespace

std::string HelpFormatter::make_help(const CLI::App* command, std::string name,
                                     CLI::AppFormatMode) const {
    std::vector<Row> arguments;
    std::vector<Row> options;
    auto usage = "Usage: " + name;
    for (const auto* option : command->get_options()) {
        if (option->get_positional()) {
            usage += " " + positionalUsage(*option);
            arguments.emplace_back(option->get_name(true), option->get_description());
        } else {
            options.emplace_back(optionUsage(*option), option->get_description());
        }
    }
    std::vector<Row> commands;
    for (const auto* each : command->get_subcommands([](const CLI::App*) { return true; })) {
        commands.emplace_back(each->get_name(), each->get_description());
    }
    usage += commands.empty() ? " [OPTION…]" : " [OPTION…] COMMAND …";

    auto help = usage + "\n\n" + command->get_description() + ".\n" +
                table("Arguments", arguments) + table("Commands", commands) +
                table("Options", options);
    if (!command->get_footer().empty()) {
        help += "\n" + command->get_footer() + "\n";
    }
    if (command->get_parent()) {
        help += "\n--json and --data-dir DIR go with every command; see korvex --help.\n";
    }
    return help;
}

} // namespace korvex::cli
