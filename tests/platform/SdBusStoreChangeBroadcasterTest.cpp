#include "platform/systemd/SdBusStoreChangeBroadcaster.h"

#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace korvex::platform::systemd {
namespace {

using tests::ScopedEnvironment;
using tests::SessionBus;

/// Another program on the bus, which listens for changes.
class Listener {
public:
    explicit Listener(const SessionBus& bus) {
        require(sd_bus_new(&m_bus));
        require(sd_bus_set_address(m_bus, bus.address().c_str()));
        require(sd_bus_set_bus_client(m_bus, 1));
        require(sd_bus_start(m_bus));
        require(sd_bus_match_signal(m_bus, nullptr, nullptr, "/Korvex/SharedStore",
                                    "Korvex.SharedStoreChanged", "Changed", &Listener::take, this));
    }
    ~Listener() { sd_bus_close_unref(m_bus); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// The store that changed next; absent when the bus has nothing for a long while.
    std::optional<std::string> next() {
        constexpr std::uint64_t kLongWhile = 10'000'000;
        m_heard.reset();
        while (!m_heard) {
            const int processed = sd_bus_process(m_bus, nullptr);
            if (processed < 0 || (processed == 0 && sd_bus_wait(m_bus, kLongWhile) <= 0)) {
                break;
            }
        }
        return m_heard;
    }

private:
    static void require(int result) {
        if (result < 0) {
            throw std::runtime_error("sd-bus error " + std::to_string(result));
        }
    }
    static int take(sd_bus_message* message, void* self, sd_bus_error*) {
        const char* path = nullptr;
        require(sd_bus_message_read(message, "s", &path));
        static_cast<Listener*>(self)->m_heard = path;
        return 0;
    }

    sd_bus* m_bus = nullptr;
    std::optional<std::string> m_heard;
};

class SdBusStoreChangeBroadcasterTest : public ::testing::Test {
protected:
    std::filesystem::path socket() const { return m_folder / "bus"; }

    tests::TemporaryFolder m_folder;
    ScopedEnvironment m_address{"DBUS_SESSION_BUS_ADDRESS", std::nullopt};
    ScopedEnvironment m_runtimeFolder{"XDG_RUNTIME_DIR", m_folder.path()};
    SdBusStoreChangeBroadcaster m_broadcaster;
};

TEST_F(SdBusStoreChangeBroadcasterTest, TellsOtherProgramsWhichStoreChanged) {
    const SessionBus bus(m_folder / "elsewhere");
    const ScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", bus.address());
    Listener listener(bus);
    for (const char* store : {"/data/Primary.store", "/data/ö/Primary.store"}) {
        m_broadcaster.storeChanged(store);
        EXPECT_EQ(listener.next(), store);
    }
    m_broadcaster.storeChanged("/not-utf-8/\xFF");
    m_broadcaster.storeChanged("/data/Primary.store");
    EXPECT_EQ(listener.next(), "/data/Primary.store");
}

TEST_F(SdBusStoreChangeBroadcasterTest, FindsTheBusInTheRuntimeFolder) {
    m_broadcaster.storeChanged("/before/there/is/one");
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path())) << "no bus is started";

    const SessionBus bus(socket());
    Listener listener(bus);
    m_broadcaster.storeChanged("/data/Primary.store");
    EXPECT_EQ(listener.next(), "/data/Primary.store");
}

TEST_F(SdBusStoreChangeBroadcasterTest, ReachesABusThatWasStartedAnew) {
    SessionBus bus(socket());
    m_broadcaster.storeChanged("/data/Primary.store");
    bus.stop();
    std::filesystem::remove(socket());

    const SessionBus another(socket());
    Listener listener(another);
    m_broadcaster.storeChanged("/data/Primary.store");
    EXPECT_EQ(listener.next(), "/data/Primary.store");
}

TEST_F(SdBusStoreChangeBroadcasterTest, IsNotHeldUpByABusThatHangs) {
    const SessionBus bus(socket());
    bus.hang();
    auto told =
        std::async(std::launch::async, [&] { m_broadcaster.storeChanged("/data/Primary.store"); });
    EXPECT_EQ(told.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    bus.wake();
}

} // namespace
} // namespace korvex::platform::systemd
