#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace korvex::cli {

/// The help of a command: what it does, how it is written, its arguments and options.
class HelpFormatter final : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* command, std::string name,
                          CLI::AppFormatMode mode) const override;
};

} // namespace korvex::cli
