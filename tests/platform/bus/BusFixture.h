#pragma once

#include "platform/bus/Bus.h"
#include "support/FakeRunLoop.h"
#include "support/RecordingLog.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace korvex::tests {

/// A real bus in the place where programs look for it. What waits for messages waits in real time,
/// what waits for time in the loop's, which stands still unless the test moves it.
class BusFixture : public ::testing::Test {
protected:
    using Bus = platform::bus::Bus;

    BusFixture() : m_runtimeFolder("XDG_RUNTIME_DIR", m_folder.path()) {}

    std::filesystem::path socket() const { return m_folder / "bus"; }
    void startDaemon() { m_daemon.emplace(socket()); }
    void killDaemon() {
        m_daemon.reset();
        std::filesystem::remove(socket());
    }
    bool reaches(const Bus& bus, Bus::State state) {
        return m_loop.runUntil([&] { return bus.state() == state; });
    }
    void connect(Bus& bus) {
        bus.start();
        ASSERT_TRUE(reaches(bus, Bus::State::connected));
    }
    /// While time passes, so that what waits a moment goes on: in steps that leave a connection
    /// time to be made.
    template <typename Condition>
    bool patiently(Condition&& condition) {
        for (int tenths = 0; tenths < 600; ++tenths) {
            if (m_loop.runUntil(condition, std::chrono::milliseconds(10))) {
                return true;
            }
            m_loop.advance(0.1);
        }
        return false;
    }
    /// Lets what is under way arrive: whatever was sent before on the same connection has.
    void settle(Bus& bus) {
        bool isAnswered = false;
        const auto asked = bus.call({.destination = "org.freedesktop.DBus",
                                     .path = "/org/freedesktop/DBus",
                                     .interface = "org.freedesktop.DBus.Peer",
                                     .member = "Ping"},
                                    {}, [&](const auto&) { isAnswered = true; });
        ASSERT_TRUE(m_loop.runUntil([&] { return isAnswered; }));
    }

    TemporaryFolder m_folder;
    ScopedEnvironment m_address{"DBUS_SESSION_BUS_ADDRESS", std::nullopt};
    ScopedEnvironment m_runtimeFolder;
    FakeRunLoop m_loop;
    RecordingLog m_log;
    std::optional<SessionBus> m_daemon;
};

} // namespace korvex::tests
