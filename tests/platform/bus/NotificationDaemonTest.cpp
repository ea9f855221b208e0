#include "platform/bus/NotificationDaemon.h"
#include "platform/bus/BusFixture.h"

#include <fstream>

namespace korvex::platform::bus {
namespace {

using Presence = NotificationDaemon::Presence;

class NotificationDaemonTest : public tests::BusFixture {
protected:
    NotificationDaemonTest() {
        std::filesystem::create_directories(m_services);
        m_daemon.emplace(socket(), m_services);
    }
    void install() const {
        std::ofstream(m_services / "test.service")
            << "[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=/bin/false\n";
    }
    bool is(Presence presence) {
        return m_loop.runUntil([&] { return m_notifications.presence() == presence; });
    }

    std::filesystem::path m_services = m_folder / "services";
    Bus m_bus{WhichBus::session, m_loop, m_log};
    NotificationDaemon m_notifications{m_bus, m_log};
};

TEST_F(NotificationDaemonTest, OneThatIsInstalledWhileTheSessionRunsIsFound) {
    connect(m_bus);
    ASSERT_TRUE(is(Presence::missing));
    int changes = 0;
    const auto changing = m_notifications.changed().connect([&] { ++changes; });
    install();
    EXPECT_TRUE(is(Presence::startable));
    EXPECT_EQ(changes, 1);
    std::filesystem::remove(m_services / "test.service");
    EXPECT_TRUE(is(Presence::missing));
}

TEST_F(NotificationDaemonTest, ABusThatIsSlowToSayItHasNotSaidThatThereIsNone) {
    install();
    killDaemon();
    m_daemon.emplace(socket(), m_services); // which knows it from its start
    connect(m_bus);
    m_daemon->hang();
    m_loop.advance(11);
    EXPECT_NE(m_notifications.presence(), Presence::missing);
    m_daemon->wake();
    m_loop.runUntil([] { return false; }, std::chrono::milliseconds(50));
    m_loop.advance(30); // it is asked again
    ASSERT_TRUE(is(Presence::startable));
    m_daemon->hang();
    m_notifications.look();
    m_loop.advance(11);
    EXPECT_EQ(m_notifications.presence(), Presence::startable);
    m_daemon->wake();
}

} // namespace
} // namespace korvex::platform::bus
