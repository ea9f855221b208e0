#include "cli/bus/CommandBus.h"

#include "platform/bus/AgentProtocol.h"
#include "platform/bus/DesktopApplication.h"
#include "platform/bus/NameClaim.h"
#include "platform/bus/OfferedObject.h"
#include "platform/bus/StoreChangeSignal.h"
#include "platform/systemd/SdEventRunLoop.h"
#include "support/RecordingLog.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <thread>

namespace korvex::cli {
namespace {

using namespace std::chrono_literals;
using platform::bus::Bus;
using platform::bus::WhichBus;
using platform::systemd::SdEventRunLoop;
using tests::ScopedEnvironment;
using tests::SessionBus;

/// Another program on the bus, which listens for changes.
class Listener {
public:
    Listener() {
        m_bus.start();
        EXPECT_TRUE(m_loop.runUntil([&] { return m_bus.isConnected(); }, 10s));
        // Once this is answered, what was asked for before has been taken.
        std::optional<bool> isListening;
        const auto asked = m_bus.call({.destination = "org.freedesktop.DBus",
                                       .path = "/",
                                       .interface = "org.freedesktop.DBus.Peer",
                                       .member = "Ping"},
                                      {}, [&](const auto& reply) { isListening = !reply.error(); });
        EXPECT_TRUE(m_loop.runUntil([&] { return isListening.has_value(); }, 10s));
    }
    /// The store that changed next; absent when the bus has nothing for a long while.
    std::optional<std::string> next() {
        m_heard.reset();
        m_loop.runUntil([&] { return m_heard.has_value(); }, 10s);
        return m_heard;
    }

private:
    tests::RecordingLog m_log;
    SdEventRunLoop m_loop;
    Bus m_bus{WhichBus::session, m_loop, m_log};
    std::optional<std::string> m_heard;
    base::Subscription m_signals =
        m_bus.match({.interface = "Korvex.SharedStoreChanged", .member = "Changed"},
                    [this](const auto& signal) { m_heard = signal.template read<std::string>(); });
};

/// The desktop app on a thread of its own, as it would be in a process of its own.
class Desktop {
public:
    enum class Manner { answering, hanging };
    explicit Desktop(Manner manner) {
        std::promise<void> named;
        m_thread = std::jthread([this, manner, &named](const std::stop_token& stop) {
            tests::RecordingLog log;
            SdEventRunLoop loop;
            Bus bus(WhichBus::session, loop, log);
            platform::bus::DesktopApplication application(bus);
            const auto launching = application.launched().connect(
                [this](const app::Launch& launch) { launched.set_value(launch); });
            const platform::bus::NameClaim name(bus, app::kDesktopName);
            bus.start();
            loop.runUntil([&] { return name.state() == platform::bus::NameClaim::State::owned; },
                          10s);
            named.set_value();
            while (!stop.stop_requested()) {
                if (manner == Manner::answering) {
                    loop.runUntil([&] { return stop.stop_requested(); }, 5ms);
                } else {
                    std::this_thread::sleep_for(5ms);
                }
            }
        });
        named.get_future().wait();
    }

    std::promise<app::Launch> launched;

private:
    std::jthread m_thread;
};

/// What has the agent's name and answers as no agent of today does.
class OddAgent {
public:
    OddAgent() {
        std::promise<void> named;
        m_thread = std::jthread([&named](const std::stop_token& stop) {
            using namespace platform::bus;
            tests::RecordingLog log;
            SdEventRunLoop loop;
            Bus bus(WhichBus::session, loop, log);
            const OfferedObject object(bus, kAgentPath,
                                       {.name = kAgentInterface,
                                        .methods = {
                                            Interface::method<std::string>(
                                                agent_method::kList,
                                                [](IncomingCall& call, const auto&) {
                                                    call.fail("org.freedesktop.DBus.Error.Failed",
                                                              "no table");
                                                },
                                                "s"),
                                            Interface::method<std::string>(
                                                agent_method::kGetStatus,
                                                [](IncomingCall& call, const auto& store) {
                                                    call.reply(arguments(store));
                                                },
                                                "s"),
                                        }});
            const NameClaim name(bus, kAgentName);
            bus.start();
            loop.runUntil([&] { return name.state() == NameClaim::State::owned; }, 10s);
            named.set_value();
            while (!stop.stop_requested()) {
                loop.runUntil([&] { return stop.stop_requested(); }, 5ms);
            }
        });
        named.get_future().wait();
    }

private:
    std::jthread m_thread;
};

class CommandBusTest : public ::testing::Test {
protected:
    std::filesystem::path socket() const { return m_folder / "bus"; }

    tests::TemporaryFolder m_folder;
    ScopedEnvironment m_address{"DBUS_SESSION_BUS_ADDRESS", std::nullopt};
    ScopedEnvironment m_runtimeFolder{"XDG_RUNTIME_DIR", m_folder.path()};
    tests::RecordingLog m_log;
    CommandBus m_commandBus{m_log, 500ms};
};

TEST_F(CommandBusTest, TellsOtherProgramsWhichStoreChanged) {
    const SessionBus bus(m_folder / "elsewhere");
    const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", bus.address());
    Listener listener;
    for (const char* store : {"/data/Primary.store", "/data/ö/Primary.store"}) {
        m_commandBus.storeChanged(store);
        EXPECT_EQ(listener.next(), store);
    }
    m_commandBus.storeChanged("/not-utf-8/\xFF");
    m_commandBus.storeChanged("/data/Primary.store");
    EXPECT_EQ(listener.next(), "/data/Primary.store");
}

TEST_F(CommandBusTest, FindsTheBusInTheRuntimeFolderAndOneThatWasStartedAnew) {
    m_commandBus.storeChanged("/before/there/is/one");
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path())) << "no bus is started";
    for (int round = 0; round < 2; ++round) {
        const SessionBus bus(socket());
        Listener listener;
        m_commandBus.storeChanged("/data/Primary.store");
        EXPECT_EQ(listener.next(), "/data/Primary.store") << round;
        std::filesystem::remove(socket());
    }
}

TEST_F(CommandBusTest, ABusThatHangsHoldsACommandUpForAMoment) {
    const SessionBus bus(socket());
    bus.hang();
    const auto start = std::chrono::steady_clock::now();
    m_commandBus.storeChanged("/data/Primary.store");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
    EXPECT_EQ(m_commandBus.ask({}), RunningDesktop::Answer::notThere);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    bus.wake();
}

TEST_F(CommandBusTest, AnAgentThatAnswersWhatNobodyUnderstandsIsThereAndSaidToBe) {
    const SessionBus bus(socket());
    EXPECT_EQ(m_commandBus.agentStatus("/s").reason, "It is not running.");
    const OddAgent agent;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(m_commandBus.agentReminders("/s").reason, "It does not answer as it should.");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s) << "it is not asked again and again";
    const auto status = m_commandBus.agentStatus("/s");
    EXPECT_FALSE(status.said);
    EXPECT_EQ(status.reason, "It does not answer as it should.");
}

TEST_F(CommandBusTest, TheRunningAppIsToldWhatIsWantedAndOneThatHangsIsFoundOut) {
    EXPECT_EQ(m_commandBus.ask({}), RunningDesktop::Answer::notThere) << "there is no bus";
    const SessionBus bus(socket());
    EXPECT_EQ(m_commandBus.ask({}), RunningDesktop::Answer::notThere) << "nobody is on it";
    const app::Launch launches[] = {
        {.token = "token"},
        {.links = {"korvex://board/inbox", "korvex://x"}, .token = "abc_TIME12"},
        {.action = "quick-entry", .parameters = {"--type", "text"}, .token = "t"}};
    for (const auto& launch : launches) {
        Desktop desktop(Desktop::Manner::answering);
        EXPECT_EQ(m_commandBus.ask(launch), RunningDesktop::Answer::taken);
        EXPECT_EQ(desktop.launched.get_future().get(), launch);
    }
    const Desktop hanging(Desktop::Manner::hanging);
    EXPECT_EQ(m_commandBus.ask({}), RunningDesktop::Answer::silent);
}

} // namespace
} // namespace korvex::cli
