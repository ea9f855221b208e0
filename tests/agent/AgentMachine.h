#pragma once

#include "RecordingDaemon.h"
#include "base/Clock.h"
#include "model/Entry.h"
#include "platform/bus/AgentProtocol.h"
#include "platform/systemd/SdEventRunLoop.h"
#include "storage/StoreStart.h"
#include "support/Program.h"
#include "support/RecordingLog.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace korvex::tests {

/// A user's session with the program korvex-agent itself in it, and with whatever notification
/// daemon a test starts. Time is real.
class AgentMachine : public ::testing::Test {
protected:
    using Seconds = std::chrono::duration<double>;
    static constexpr Seconds kPatience = std::chrono::seconds(20);

    AgentMachine() {
        std::filesystem::create_directories(m_folder / "services");
        startBus();
        m_store =
            storage::StoreStart::open({.storeFile = storeFile(), .now = m_clock.now()}, m_log);
    }
    ~AgentMachine() override { killAgent(); }

    std::filesystem::path storeFile() const {
        return m_folder / "data" / "korvex" / "Primary.store";
    }
    void startBus() { m_sessionBus.emplace(m_folder / "bus", m_folder / "services"); }

    /// Its reminder comes so many seconds from now.
    base::Uuid add(const std::string& content, std::optional<double> after) {
        const auto id = base::Uuid::random();
        const auto now = m_clock.now();
        m_store.context->insert(std::make_unique<model::Entry>(model::EntryFields{
            .id = id,
            .typeRawValue = "todo",
            .content = content,
            .createdAt = now,
            .updatedAt = now,
            .reminderDate = after ? std::optional(now + *after) : std::nullopt}));
        m_store.context->save();
        return id;
    }
    bool isCompleted(const base::Uuid& id) {
        m_store.context->refresh();
        return m_store.context->find<model::Entry>(id)->isCompleted();
    }

    void startAgent() { m_agent = start({KORVEX_AGENT_PROGRAM}); }
    void killAgent() {
        if (m_agent > 0) {
            ::kill(m_agent, SIGKILL);
            ::waitpid(m_agent, nullptr, 0);
            m_agent = -1;
        }
    }
    /// The exit status of a program that ends by itself; -1 where it does not.
    int endOf(pid_t process) {
        int status = 0;
        const auto hasEnded =
            until([&] { return ::waitpid(process, &status, WNOHANG) == process; });
        return hasEnded && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    template <typename Condition>
    bool until(Condition&& condition, Seconds limit = kPatience) {
        const auto end = m_loop.elapsed() + limit;
        while (!condition()) {
            if (m_loop.elapsed() > end) {
                return false;
            }
            m_loop.runUntil([] { return false; }, std::chrono::milliseconds(5));
        }
        return true;
    }
    void pass(Seconds time) {
        m_loop.runUntil([] { return false; }, time);
    }

    TemporaryFolder m_folder;
    ScopedEnvironment m_address{"DBUS_SESSION_BUS_ADDRESS",
                                "unix:path=" + (m_folder / "bus").string()};
    ScopedEnvironment m_systemAddress{"DBUS_SYSTEM_BUS_ADDRESS", std::nullopt};
    ScopedEnvironment m_data{"XDG_DATA_HOME", (m_folder / "data").string()};
    ScopedEnvironment m_state{"XDG_STATE_HOME", (m_folder / "state").string()};
    ScopedEnvironment m_config{"XDG_CONFIG_HOME", (m_folder / "config").string()};
    ScopedEnvironment m_runtime{"XDG_RUNTIME_DIR", m_folder.path().string()};
    RecordingLog m_log;
    base::SystemClock m_clock;
    platform::systemd::SdEventRunLoop m_loop;
    std::optional<SessionBus> m_sessionBus;
    storage::StartedStore m_store;
    pid_t m_agent = -1;
};

} // namespace korvex::tests
