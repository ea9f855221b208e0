#include "cli/bus/CommandBus.h"

#include "platform/bus/StoreChangeSignal.h"
#include "platform/systemd/SdEventRunLoop.h"

#include <optional>
#include <system_error>

namespace korvex::cli {

namespace {

using namespace std::chrono_literals;
using platform::bus::Bus;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kLongestAnnouncement = 100ms;
constexpr Seconds kLongestConnecting = 1s;
/// Beyond the time limit of the call itself.
constexpr Seconds kLongestEnd = 1s;

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

} // namespace korvex::cli
