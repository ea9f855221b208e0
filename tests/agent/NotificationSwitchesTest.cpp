#include "agent/NotificationSwitches.h"

#include "RecordingDaemon.h"
#include "platform/bus/BusFixture.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvex::agent {
namespace {

using platform::bus::Dictionary;
using platform::bus::IncomingCall;
using platform::bus::Interface;
using platform::bus::Value;

class NotificationSwitchesTest : public tests::BusFixture {
protected:
    /// Xfce's service for settings answers only when it is told to.
    struct Settings {
        Settings(base::RunLoop& runLoop, base::LogSink& log)
            : bus(platform::bus::WhichBus::session, runLoop, log),
              object(bus, "/org/xfce/Xfconf",
                     {.name = "org.xfce.Xfconf",
                      .methods = {Interface::method<std::string, std::string>(
                          "GetAllProperties",
                          [this](IncomingCall& call, const auto&, const auto&) {
                              asked.emplace_back(std::move(call));
                          },
                          "a{sv}")}}) {
            bus.start();
            name.emplace(bus, "org.xfce.Xfconf");
        }
        void answer(bool isQuieted) {
            asked.back().reply(
                platform::bus::arguments(Dictionary{{"/do-not-disturb", Value(isQuieted)}}));
            asked.pop_back();
        }

        Bus bus;
        platform::bus::OfferedObject object;
        std::vector<IncomingCall> asked;
        std::optional<platform::bus::NameClaim> name;
    };

    bool comesTo(const std::function<bool()>& condition) { return m_loop.runUntil(condition); }
};

TEST_F(NotificationSwitchesTest, ADesktopThatIsTooSlowOnceHasNotSaidThatAllIsShown) {
    startDaemon();
    Settings settings(m_loop, m_log);
    tests::RecordingDaemon recorder(m_loop, m_log, {"actions"}, "Xfce Notify Daemon");
    ASSERT_TRUE(comesTo([&] {
        return recorder.isThere() &&
               settings.name->state() == platform::bus::NameClaim::State::owned;
    }));
    Bus bus(platform::bus::WhichBus::session, m_loop, m_log);
    platform::bus::NotificationDaemon daemon(bus, m_log);
    NotificationSwitches switches(bus, daemon, m_loop, m_folder.path());
    connect(bus);
    const auto isAsked = [&] { return settings.asked.size() == 1; };
    ASSERT_TRUE(comesTo(isAsked));
    settings.answer(true);
    ASSERT_TRUE(comesTo([&] { return switches.isKnown(); }));
    EXPECT_TRUE(switches.setting().isQuieted);

    switches.look();
    ASSERT_TRUE(comesTo(isAsked));
    m_loop.advance(Bus::kPatience.count());
    EXPECT_TRUE(switches.setting().isQuieted) << "nobody has said anything else";
    settings.asked.clear();
    m_loop.advance(10);
    ASSERT_TRUE(comesTo(isAsked)) << "it is asked again";
    settings.answer(false);
    EXPECT_TRUE(comesTo([&] { return !switches.setting().isQuieted; }));
    m_loop.advance(3600);
    settle(bus);
    EXPECT_TRUE(settings.asked.empty());
}

} // namespace
} // namespace korvex::agent
