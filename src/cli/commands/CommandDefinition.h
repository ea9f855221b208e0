#pragma once

#include "cli/commands/Commands.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace korvex::cli {

/// A command in the making: the parser's part, and the options that its arguments go to.
template <typename Options>
struct CommandDefinition {
    CLI::App& parser;
    std::shared_ptr<Options> options;
};

/// Of a command without arguments.
struct NoOptions {};

/// Adds a command whose arguments become an `Options` and are carried out by `run`.
template <typename Options>
CommandDefinition<Options> addCommand(CLI::App& parent, const std::string& name,
                                      const std::string& description, Action& chosen,
                                      ExitStatus (*run)(Session&, const Options&)) {
    auto* parser = parent.add_subcommand(name, description);
    // So that --json and --data-dir are understood behind the command too.
    parser->fallthrough();
    auto options = std::make_shared<Options>();
    parser->final_callback([&chosen, options, run] {
        chosen = [options, run](Session& session) { return run(session, *options); };
    });
    return {*parser, std::move(options)};
}

} // namespace korvex::cli
