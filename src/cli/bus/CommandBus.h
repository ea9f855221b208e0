#pragma once

#include "app/StoreChangeChannel.h"
#include "base/Log.h"
#include "cli/session/RunningAgent.h"
#include "cli/session/RunningDesktop.h"
#include "platform/bus/Bus.h"
#include "platform/bus/DesktopApplication.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvex::cli {

/// The bus for a program that has no run loop but when it asks somebody something: connects when it
/// is first needed. A bus that does not answer holds a command up for a moment at most. One thread.
class CommandBus final : public app::StoreChangeBroadcaster,
                         public RunningDesktop,
                         public RunningAgent {
public:
    /// How long the desktop app has to answer.
    explicit CommandBus(base::LogSink& log, std::chrono::duration<double> desktopPatience =
                                                platform::bus::kDesktopPatience);
    ~CommandBus() override;

    /// Takes a tenth of a second at most.
    void storeChanged(const std::filesystem::path& storeFile) override;
    RunningDesktop::Answer ask(const app::Launch& launch) override;
    /// Takes a tenth of a second at most.
    void planReminders(const std::filesystem::path& storeFile,
                       const std::vector<std::string>& withdrawn) override;
    RunningAgent::Answer<app::AgentStatus>
    agentStatus(const std::filesystem::path& storeFile) override;
    RunningAgent::Answer<app::AgentReminders>
    agentReminders(const std::filesystem::path& storeFile) override;

private:
    using Seconds = std::chrono::duration<double>;
    struct Connection;
    /// What came of a call of the agent.
    enum class Called { answered, unusable, otherStore, nobodyThere, silent, noBus };
    static Called calledOf(const platform::bus::BusError& error);
    static std::string reasonOf(Called called);

    /// Null where there is no bus, or none that answers within the limit.
    Connection* connect(Seconds limit);
    /// `take` gets the answer, where it is no error; it may throw BusError.
    Called callAgent(const char* method, const platform::bus::Arguments& sent,
                     platform::bus::MethodAddress::Start start, Seconds limit,
                     const std::function<void(const platform::bus::Reply&)>& take);

    base::LogSink& m_log;
    std::chrono::duration<double> m_desktopPatience;
    std::unique_ptr<Connection> m_connection;
};

} // namespace korvex::cli
