#include "cli/bus/CommandBus.h"

#include "platform/bus/AgentProtocol.h"
#include "platform/bus/StoreChangeSignal.h"
#include "platform/system/ProgramFile.h"
#include "platform/systemd/SdEventRunLoop.h"

#include <algorithm>
#include <optional>
#include <system_error>

namespace korvex::cli {

namespace {

using namespace std::chrono_literals;
using platform::bus::Bus;
using platform::bus::MethodAddress;
using platform::bus::Reply;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kLongestAnnouncement = 100ms;
constexpr Seconds kLongestConnecting = 1s;
/// Beyond the time limit of the call itself.
constexpr Seconds kLongestEnd = 1s;
/// Long enough for an agent that is being started.
constexpr Seconds kLongestListing = 5s;
constexpr Seconds kStarting = 50ms;

constexpr const char* kNoBus = "There is no session bus.";
constexpr const char* kNotRunning = "It is not running.";
constexpr const char* kSilent = "It does not answer.";
constexpr const char* kUnusable = "It does not answer as it should.";
constexpr const char* kOtherStore = "One runs that looks after another store.";

} // namespace

struct CommandBus::Connection {
    explicit Connection(base::LogSink& log) : bus(platform::bus::WhichBus::session, loop, log) {}

    platform::systemd::SdEventRunLoop loop;
    Bus bus;
};

CommandBus::CommandBus(base::LogSink& log, Seconds desktopPatience)
    : m_log(log), m_desktopPatience(desktopPatience) {}
CommandBus::~CommandBus() = default;

CommandBus::Connection* CommandBus::connect(Seconds limit) {
    try {
        if (!m_connection) {
            m_connection = std::make_unique<Connection>(m_log);
            m_connection->bus.start();
        }
        auto& connection = *m_connection;
        connection.loop.runUntil([&] { return connection.bus.state() != Bus::State::connecting; },
                                 limit);
    } catch (const std::system_error&) {
        m_connection.reset(); // the system has no more descriptors
        return nullptr;
    }
    if (!m_connection->bus.isConnected()) {
        m_connection.reset();
    }
    return m_connection.get();
}

void CommandBus::storeChanged(const std::filesystem::path& storeFile) {
    const auto end = std::chrono::steady_clock::now() + kLongestAnnouncement;
    const auto rest = [&] { return Seconds(end - std::chrono::steady_clock::now()); };
    // The bus may have been started anew since it was last used.
    for (int attempt = 0; attempt < 2; ++attempt) {
        auto* const connection = connect(rest());
        if (!connection) {
            return;
        }
        auto& bus = connection->bus;
        if (announceStoreChange(bus, storeFile)) {
            connection->loop.runUntil([&] { return !bus.hasUnsent() || !bus.isConnected(); },
                                      rest());
            if (bus.isConnected()) {
                return;
            }
        }
        m_connection.reset();
    }
}

RunningDesktop::Answer CommandBus::ask(const app::Launch& launch) {
    using Answer = RunningDesktop::Answer;
    using platform::bus::BusErrorCase;
    auto* const connection = connect(kLongestConnecting);
    if (!connection) {
        return Answer::notThere;
    }
    std::optional<Answer> answer;
    const auto asked = callDesktop(
        connection->bus, launch, platform::bus::MethodAddress::Start::never,
        [&](const platform::bus::Reply& reply) {
            const auto* const error = reply.error();
            answer = !error                                     ? Answer::taken
                     : error->which() == BusErrorCase::timedOut ? Answer::silent
                                                                : Answer::notThere;
        },
        m_desktopPatience);
    connection->loop.runUntil([&] { return answer.has_value(); }, m_desktopPatience + kLongestEnd);
    return answer.value_or(Answer::silent);
}

CommandBus::Called CommandBus::callAgent(const char* method, const platform::bus::Arguments& sent,
                                         MethodAddress::Start start, Seconds limit,
                                         const std::function<void(const Reply&)>& take) {
    const auto end = std::chrono::steady_clock::now() + limit;
    auto* const connection = connect(limit);
    if (!connection) {
        return Called::noBus;
    }
    std::optional<Called> called;
    const auto asked = connection->bus.call(platform::bus::agentMethod(method, start), sent,
                                            [&](const Reply& reply) {
                                                if (const auto* const error = reply.error()) {
                                                    called = calledOf(*error);
                                                    return;
                                                }
                                                called = Called::unusable;
                                                if (take) {
                                                    take(reply);
                                                }
                                                called = Called::answered;
                                            });
    connection->loop.runUntil([&] { return called.has_value(); },
                              end - std::chrono::steady_clock::now());
    return called.value_or(Called::silent);
}

CommandBus::Called CommandBus::calledOf(const platform::bus::BusError& error) {
    const auto& name = error.name();
    if (name.empty()) {
        return Called::silent;
    }
    if (name == platform::bus::kAgentHasOtherStore) {
        return Called::otherStore;
    }
    // Nobody has it, and it could not be started: by the bus, or by systemd for the bus.
    return error.isAboutNobody() || name.starts_with("org.freedesktop.DBus.Error.Spawn.") ||
                   name.starts_with("org.freedesktop.systemd1.")
               ? Called::nobodyThere
               : Called::unusable;
}

void CommandBus::planReminders(const std::filesystem::path& storeFile,
                               const std::vector<std::string>& withdrawn) {
    auto told = withdrawn;
    told.resize(std::min(told.size(), platform::bus::kMostWithdrawn));
    const auto called =
        callAgent(platform::bus::agent_method::kReconcile,
                  platform::bus::arguments(platform::bus::agentStoreArgument(storeFile), told),
                  MethodAddress::Start::allowed, kLongestAnnouncement, {});
    if (called == Called::nobodyThere) {
        // The bus has not been told how: it stands beside this program then, and plans at its
        // start.
        platform::system::startBeside(platform::bus::kAgentProgram);
    }
}

RunningAgent::Answer<app::AgentStatus>
CommandBus::agentStatus(const std::filesystem::path& storeFile) {
    RunningAgent::Answer<app::AgentStatus> answer;
    const auto called =
        callAgent(platform::bus::agent_method::kGetStatus,
                  platform::bus::arguments(platform::bus::agentStoreArgument(storeFile)),
                  MethodAddress::Start::never, kLongestListing, [&](const Reply& reply) {
                      answer.said =
                          platform::bus::agentStatusOf(reply.read<platform::bus::Dictionary>());
                  });
    answer.reason = reasonOf(called);
    return answer;
}

RunningAgent::Answer<app::AgentReminders>
CommandBus::agentReminders(const std::filesystem::path& storeFile) {
    RunningAgent::Answer<app::AgentReminders> answer;
    const auto store = platform::bus::agentStoreArgument(storeFile);
    const auto end = std::chrono::steady_clock::now() + kLongestListing;
    auto called = Called::nobodyThere;
    auto isStarted = false;
    do {
        called = callAgent(
            platform::bus::agent_method::kList, platform::bus::arguments(store),
            MethodAddress::Start::allowed, end - std::chrono::steady_clock::now(),
            [&](const Reply& reply) { answer.said = platform::bus::agentRemindersOf(reply); });
        if (called != Called::nobodyThere) {
            break;
        }
        if (!isStarted && !platform::system::startBeside(platform::bus::kAgentProgram)) {
            break;
        }
        isStarted = true;
        m_connection->loop.runUntil([] { return false; }, kStarting);
    } while (std::chrono::steady_clock::now() < end);
    answer.reason = reasonOf(called);
    return answer;
}

std::string CommandBus::reasonOf(Called called) {
    switch (called) {
    case Called::answered:
        break;
    case Called::unusable:
        return kUnusable;
    case Called::otherStore:
        return kOtherStore;
    case Called::nobodyThere:
        return kNotRunning;
    case Called::silent:
        return kSilent;
    case Called::noBus:
        return kNoBus;
    }
    return {};
}

} // namespace korvex::cli
