#pragma once

#include "base/Log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::tests {

/// Keeps what is logged. An error that the test did not expect fails it, and so does an expected
/// one that did not come. Any thread.
class RecordingLog final : public base::LogSink {
public:
    struct Line {
        base::LogLevel level;
        std::string category;
        std::string message;
    };

    ~RecordingLog() override {
        for (const auto& line : m_lines) {
            if (line.level == base::LogLevel::error && !takeExpectation(line.message)) {
                ADD_FAILURE() << "unexpected error in the log: [" << line.category << "] "
                              << line.message;
            }
        }
        for (const auto& expected : m_expectations) {
            if (!expected.hasCome) {
                ADD_FAILURE() << "missing error in the log: " << expected.part;
            }
        }
    }

    /// Any number of error lines with this part may come, and at least one must.
    void expectError(std::string part) { m_expectations.push_back({std::move(part)}); }

    void write(base::LogLevel level, std::string_view category, std::string_view message) override {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back({level, std::string(category), std::string(message)});
    }

    std::vector<Line> lines() const {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

    std::size_t count(std::string_view part) const {
        const std::lock_guard lock(m_mutex);
        return static_cast<std::size_t>(
            std::count_if(m_lines.begin(), m_lines.end(), [part](const Line& line) {
                return line.message.find(part) != std::string::npos;
            }));
    }

private:
    struct Expectation {
        std::string part;
        bool hasCome = false;
    };

    bool takeExpectation(std::string_view message) {
        bool isExpected = false;
        for (auto& each : m_expectations) {
            if (message.find(each.part) != std::string_view::npos) {
                each.hasCome = true;
                isExpected = true;
            }
        }
        return isExpected;
    }

    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
    std::vector<Expectation> m_expectations;
};

} // namespace korvex::tests
