#pragma once

#include "app/StoreLocation.h"
#include "cli/commands/CommandLine.h"
#include "model/SchemaVersions.h"
#include "support/FakeClock.h"
#include "support/RecordingLog.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace korvex::tests {

class CountingBroadcaster final : public app::StoreChangeBroadcaster {
public:
    void storeChanged(const std::filesystem::path&) override { ++count; }
    int count = 0;
};

/// Says what it is told to say, and keeps what it was asked for.
class FakeDesktop final : public cli::RunningDesktop {
public:
    Answer ask(const app::Launch& launch) override {
        asked.push_back(launch);
        return answer;
    }
    Answer answer = Answer::notThere;
    std::vector<app::Launch> asked;
};

/// Says what it is told to say, and keeps what it was asked for.
class FakeAgent final : public cli::RunningAgent {
public:
    void planReminders(const std::filesystem::path&,
                       const std::vector<std::string>& withdrawn) override {
        asked.push_back(withdrawn);
    }
    Answer<app::AgentStatus> agentStatus(const std::filesystem::path&) override { return status; }
    Answer<app::AgentReminders> agentReminders(const std::filesystem::path&) override {
        return reminders;
    }

    Answer<app::AgentStatus> status{.reason = "It is not running."};
    Answer<app::AgentReminders> reminders{.reason = "There is no session bus."};
    std::vector<std::vector<std::string>> asked;
};

/// What a command printed and how it ended.
struct Outcome {
    cli::ExitStatus status;
    std::string output;
    std::string error;
};

/// The command line within the test, at a fixed moment in Berlin, on a store file of its own.
class CommandLineFixture : public ::testing::Test {
protected:
    Outcome run(std::vector<std::string> arguments, const std::string& input = {}) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        const File in(input);
        const File out;
        const File err;
        cli::CommandLine commandLine({clock, log, broadcaster, desktop, agent, in.descriptor(),
                                      out.descriptor(), err.descriptor()});
        const auto status = commandLine.run(std::move(arguments));
        return {status, out.text(), err.text()};
    }

    /// What a command prints that must succeed, without the last line break.
    std::string result(std::vector<std::string> arguments, const std::string& input = {}) {
        auto outcome = run(std::move(arguments), input);
        EXPECT_EQ(outcome.status, cli::ExitStatus::done) << outcome.error;
        EXPECT_EQ(outcome.error, "");
        if (outcome.output.ends_with('\n')) {
            outcome.output.pop_back();
        }
        return outcome.output;
    }

    std::unique_ptr<store::ModelContainer> openStore() {
        return store::ModelContainer::open(model::currentSchema(),
                                           {.file = app::storeFile(folder.path())}, log);
    }

    RecordingLog log;
    TemporaryFolder folder;
    /// 2025-03-10 13:00:00 UTC, a Monday; 14:00 in Berlin.
    FakeClock clock{base::Instant::fromUnixSeconds(1'741'611'600)};
    CountingBroadcaster broadcaster;
    FakeDesktop desktop;
    FakeAgent agent;

private:
    ScopedEnvironment m_zone{"TZ", "Europe/Berlin"};
    ScopedEnvironment m_locale{"LC_ALL", "en_US.UTF-8"};
    ScopedEnvironment m_settings{"XDG_CONFIG_HOME", folder.path().string()};

    /// A file without a name, in the place of standard input, output and error.
    class File {
    public:
        explicit File(const std::string& content = {}) : m_file(std::tmpfile()) {
            std::fwrite(content.data(), 1, content.size(), m_file);
            std::rewind(m_file);
        }
        ~File() { std::fclose(m_file); }
        File(const File&) = delete;
        File& operator=(const File&) = delete;

        int descriptor() const { return ::fileno(m_file); }
        std::string text() const {
            std::rewind(m_file);
            std::string text;
            char buffer[4096];
            while (const auto count = std::fread(buffer, 1, sizeof buffer, m_file)) {
                text.append(buffer, count);
            }
            return text;
        }

    private:
        std::FILE* m_file;
    };
};

} // namespace korvex::tests
