#pragma once

#include "base/Log.h"

#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::cli {

/// Where there is no journal: keeps what failed until the command has ended. One that is refused
/// says itself why. Whoever ends the program before, as with a second Ctrl+C, is told of none.
class HeldErrors final : public base::LogSink {
public:
    bool accepts(base::LogLevel level) const override { return level >= base::LogLevel::error; }
    void write(base::LogLevel level, std::string_view category, std::string_view message) override {
        if (!accepts(level)) {
            return;
        }
        try {
            m_lines.emplace_back(category, message);
        } catch (const std::bad_alloc&) {
            // What is logged must not fail what it is about.
        }
    }
    void tell() const {
        base::StandardErrorLog standardError(base::LogLevel::error);
        for (const auto& [category, message] : m_lines) {
            standardError.write(base::LogLevel::error, category, message);
        }
    }

private:
    std::vector<std::pair<std::string, std::string>> m_lines;
};

} // namespace korvex::cli
