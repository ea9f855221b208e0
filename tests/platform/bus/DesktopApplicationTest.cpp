#include "BusFixture.h"

#include "platform/bus/DesktopApplication.h"
#include "platform/bus/NameClaim.h"

#include <future>
#include <systemd/sd-bus.h>

namespace korvex::platform::bus {
namespace {

class DesktopApplicationTest : public tests::BusFixture {};

/// Another program, which knows the standard and nothing of ours. Whether each call succeeded.
std::vector<bool> launchFromElsewhere(const std::string& address) {
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    sd_bus_set_address(bus, address.c_str());
    sd_bus_set_bus_client(bus, 1);
    sd_bus_start(bus);
    std::vector<bool> succeeded;
    const auto call = [&](const char* member, const char* types, auto... values) {
        succeeded.push_back(sd_bus_call_method(bus, "dev.korvex.Korvex", "/dev/korvex/Korvex",
                                               "org.freedesktop.Application", member, nullptr,
                                               nullptr, types, values...) >= 0);
    };
    call("Activate", "a{sv}", 0);
    call("Activate", "a{sv}", 2, "desktop-startup-id", "s", "x11_TIME5", "activation-token", "s",
         std::string(2000, 'x').c_str());
    call("Open", "asa{sv}", 1, "korvex://board/inbox", 2, "activation-token", "s", "wayland",
         "desktop-startup-id", "s", "x11");
    call("ActivateAction", "sava{sv}", "quick-entry", 2, "s", "Work", "i", 7, 1, "activation-token",
         "u", 1U);
    call("Open", "as", 1, "korvex://board/inbox");
    call("Quit", "");
    sd_bus_flush_close_unref(bus);
    return succeeded;
}

TEST_F(DesktopApplicationTest, LaunchersAskByTheTypesOfTheStandard) {
    startDaemon();
    Bus bus(WhichBus::session, m_loop, m_log);
    DesktopApplication application(bus);
    const NameClaim name(bus, app::kDesktopName);
    std::vector<app::Launch> launches;
    const auto listening = application.launched().connect(
        [&](const app::Launch& launch) { launches.push_back(launch); });
    connect(bus);
    ASSERT_TRUE(m_loop.runUntil([&] { return name.state() == NameClaim::State::owned; }));
    auto elsewhere = std::async(std::launch::async, launchFromElsewhere, m_daemon->address());
    ASSERT_TRUE(m_loop.runUntil(
        [&] { return elsewhere.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(elsewhere.get(), (std::vector<bool>{true, true, true, true, false, false}));
    EXPECT_EQ(launches, (std::vector<app::Launch>{
                            {},
                            {.token = "x11_TIME5"},
                            {.links = {"korvex://board/inbox"}, .token = "wayland"},
                            {.action = "quick-entry", .parameters = {"Work"}},
                        }));
}

} // namespace
} // namespace korvex::platform::bus
