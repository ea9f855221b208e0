#include "AgentMachine.h"
#include "support/XServer.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <random>
#include <set>

namespace korvex::agent {
namespace {

using tests::RecordingDaemon;
using namespace std::chrono_literals;

class AgentProcess : public tests::AgentMachine {
protected:
    /// The connection that has the agent's name, as another program sees it.
    std::string owner() {
        platform::bus::Bus bus(platform::bus::WhichBus::session, m_loop, m_log);
        const platform::bus::NameWatch watch(bus, platform::bus::kAgentName);
        bus.start();
        until([&] { return watch.isKnown(); });
        return watch.owner();
    }
    bool isThere() {
        return until([&] { return !owner().empty(); });
    }
    /// `take` gets what the agent answers, where it does.
    template <typename Take>
    void ask(const char* method, Take&& take) {
        platform::bus::Bus bus(platform::bus::WhichBus::session, m_loop, m_log);
        bus.start();
        until([&] { return bus.isConnected(); });
        auto isAnswered = false;
        const auto asked =
            bus.call(platform::bus::agentMethod(method, platform::bus::MethodAddress::Start::never),
                     platform::bus::arguments(std::string()), [&](const auto& reply) {
                         isAnswered = true;
                         if (!reply.error()) {
                             take(reply);
                         }
                     });
        until([&] { return isAnswered; });
    }
    schedule::ReminderCenter::Status status() {
        schedule::ReminderCenter::Status status;
        ask(platform::bus::agent_method::kGetStatus, [&](const auto& reply) {
            status = platform::bus::agentStatusOf(reply.template read<platform::bus::Dictionary>())
                         .reminders;
        });
        return status;
    }
    bool says(schedule::AuthorizationStatus authorization) {
        return until([&] { return status().authorization == authorization; });
    }
    bool saysQuieted(bool isQuieted) {
        return until([&] { return status().isQuieted == isQuieted; });
    }
};

TEST_F(AgentProcess, ThereIsOneForASessionAndItEndsWithThat) {
    startAgent();
    ASSERT_TRUE(isThere());
    EXPECT_EQ(endOf(tests::start({KORVEX_AGENT_PROGRAM})), 0) << "a second one";
    m_sessionBus->stop();
    EXPECT_EQ(endOf(m_agent), 0) << "the session has ended";
    std::filesystem::remove(m_folder / "bus");
    EXPECT_EQ(endOf(tests::start({KORVEX_AGENT_PROGRAM})), 1) << "a session that cannot be reached";
    {
        const tests::ScopedEnvironment noBus("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
        EXPECT_EQ(endOf(tests::start({KORVEX_AGENT_PROGRAM})), 1) << "no session";
    }
    startBus();
    startAgent();
    ASSERT_TRUE(isThere());
    ::kill(m_agent, SIGTERM);
    EXPECT_EQ(endOf(m_agent), 0) << "it was asked to end";
    m_agent = -1;
}

TEST_F(AgentProcess, AnotherVersionGoesOnInItsPlace) {
    const auto program = m_folder / "korvex-agent";
    std::filesystem::copy_file(KORVEX_AGENT_PROGRAM, program);
    m_agent = tests::start({program.string()});
    ASSERT_TRUE(isThere());
    const auto before = owner();
    const auto other = m_folder / "other";
    std::filesystem::copy_file(KORVEX_AGENT_PROGRAM, other);
    std::filesystem::rename(other, program);
    EXPECT_TRUE(until([&] {
        const auto now = owner();
        return !now.empty() && now != before;
    }));
    EXPECT_EQ(::kill(m_agent, 0), 0) << "it is the same process";
}

TEST_F(AgentProcess, TheCommandLineStartsItAndLearnsWhatItHolds) {
    const auto korvex = [&](const std::string& arguments) {
        const auto said = m_folder / "said";
        EXPECT_EQ(tests::run({"sh", "-c",
                              std::string(KORVEX_PROGRAM " ") + arguments + " > " + said.string()}),
                  0);
        std::ifstream file(said);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    EXPECT_THAT(korvex("agent status"), ::testing::HasSubstr("not running"));
    korvex("add 'Water plants' --remind 2099-03-10T09:00");
    ASSERT_TRUE(isThere()) << "the bus does not know it, so it is started beside the program";
    EXPECT_THAT(korvex("reminders"), ::testing::HasSubstr("pending  Water plants"));
    EXPECT_THAT(korvex("agent status"), ::testing::HasSubstr("Unavailable"));
    const auto todo = korvex("reminders --json").substr(8, 36);
    korvex("complete " + todo);
    EXPECT_EQ(korvex("reminders"), "");
}

/// These two desktops cannot run here: what is read is what their settings programs write.
TEST_F(AgentProcess, WhatPlasmasAndGnomesUsersHaveSwitchedOffIsSaid) {
    using enum schedule::AuthorizationStatus;
    const tests::ScopedEnvironment backend("GSETTINGS_BACKEND", "keyfile");
    std::filesystem::create_directories(m_folder / "config");
    const auto plasma = m_folder / "config" / "plasmanotifyrc";
    const auto write = [&](const std::string& lines) {
        std::ofstream(plasma)
            << "[Applications][org.other]\nShowPopups=false\nShowInHistory=false\n"
               "\n[Applications][dev.korvex.Korvex]\n"
            << lines << "\n[Notifications]\nShowPopups=false\n";
    };
    write("Seen=true");
    std::optional<RecordingDaemon> daemon(std::in_place, m_loop, m_log, std::vector<std::string>{},
                                          "Plasma");
    ASSERT_TRUE(until([&] { return daemon->isThere(); }));
    startAgent();
    EXPECT_TRUE(says(authorized));
    EXPECT_FALSE(status().canAct) << "it has no buttons";
    write("ShowPopups=false");
    EXPECT_TRUE(saysQuieted(true));
    EXPECT_EQ(status().authorization, authorized) << "they are listed";
    write("ShowPopups=false\nShowInHistory=false");
    EXPECT_TRUE(says(denied));

    daemon.reset();
    daemon.emplace(m_loop, m_log, std::vector<std::string>{"actions"}, "gnome-shell");
    EXPECT_TRUE(says(authorized));
    EXPECT_TRUE(saysQuieted(false));
    EXPECT_TRUE(status().canAct);
    const auto set = [&](const std::string& where, const char* key, const char* value) {
        const auto schema = "org.gnome.desktop.notifications" + where;
        EXPECT_EQ(tests::run({"gsettings", "set", schema, key, value}), 0);
        daemon->emit(
            {.path = "/ca/desrt/dconf/Writer/user",
             .interface = "ca.desrt.dconf.Writer",
             .member = "Notify"},
            platform::bus::arguments(std::string("/org/gnome/desktop/notifications/") + key,
                                     std::vector<std::string>{""}, std::string("tag")));
    };
    const std::string ours =
        ".application:/org/gnome/desktop/notifications/application/dev-korvex-korvex/";
    set(ours, "enable", "false");
    EXPECT_TRUE(says(denied));
    set(ours, "enable", "true");
    EXPECT_TRUE(says(authorized));
    EXPECT_FALSE(status().isQuieted);
    set("", "show-banners", "false");
    EXPECT_TRUE(saysQuieted(true));
    set("", "show-banners", "true");
    EXPECT_TRUE(saysQuieted(false));
}

TEST_F(AgentProcess, EachReminderComesOnceHoweverOftenItIsKilled) {
    constexpr int kReminders = 60;
    RecordingDaemon daemon(m_loop, m_log);
    ASSERT_TRUE(until([&] { return daemon.isThere(); }));
    std::mt19937 random(7);
    const auto pick = [&](int from, int to) {
        return std::uniform_int_distribution<int>(from, to)(random);
    };
    // What is to be seen when it is killed is shown anew by the next one. The user closes each one
    // a little later; the agent knows of that when it has read it.
    constexpr Seconds kHeard(0.4); // the machine may be busy
    std::map<std::string, Seconds> live;
    std::map<std::string, int> allowed;
    std::vector<std::pair<Seconds, RecordingDaemon::Shown>> toClose;
    daemon.onShow = [&](const auto& shown) {
        live[shown.body] = Seconds::max();
        toClose.emplace_back(m_loop.elapsed() + Seconds(0.02), shown);
    };
    std::set<std::string> completed;
    for (int i = 0; i < kReminders; ++i) {
        const auto id = add("Todo " + std::to_string(i), 1 + i * 0.1);
        if (i % 10 == 9) {
            // This one is completed before it is due.
            m_store.context->find<model::Entry>(id)->setIsCompleted(true);
            m_store.context->save();
            completed.insert("Todo " + std::to_string(i));
        }
    }
    startAgent();
    int kills = 0;
    auto nextKill = m_loop.elapsed() + Seconds(1);
    const auto end = m_loop.elapsed() + Seconds(1 + kReminders * 0.1 + 2);
    while (m_loop.elapsed() < end) {
        pass(5ms);
        const auto now = m_loop.elapsed();
        for (auto& [when, shown] : toClose) {
            if (when <= now) {
                daemon.close(shown);
                live[shown.body] = now;
                when = Seconds::max();
            }
        }
        if (now >= nextKill && now < end - Seconds(1.5)) {
            killAgent();
            ++kills;
            pass(20ms); // what it had sent by then comes still
            for (const auto& [body, closedAt] : live) {
                allowed[body] += closedAt == Seconds::max() || now - closedAt < kHeard ? 1 : 0;
            }
            startAgent();
            nextKill = now + Seconds(0.001 * pick(60, 500));
        }
    }
    int again = 0;
    for (int i = 0; i < kReminders; ++i) {
        const auto body = "Todo " + std::to_string(i);
        const auto count = static_cast<int>(daemon.count(body));
        if (completed.contains(body)) {
            EXPECT_EQ(count, 0) << body;
        } else {
            EXPECT_GE(count, 1) << body << " is lost";
            EXPECT_LE(count, 1 + allowed[body]) << body;
            again += count - 1;
        }
    }
    std::cout << kReminders << " reminders, " << kills << " kills, shown again: " << again << "\n";
    EXPECT_GT(kills, 10);
}

TEST_F(AgentProcess, ADueSecondIsKeptAndNothingWakesItOtherwise) {
    RecordingDaemon daemon(m_loop, m_log);
    ASSERT_TRUE(until([&] { return daemon.isThere(); }));
    const auto due = m_clock.now() + 1.5;
    add("Now", 1.5);
    add("Tomorrow", 86400);
    startAgent();
    ASSERT_TRUE(isThere());
    ASSERT_TRUE(until([&] { return daemon.shown().size() == 1; }));
    const auto late = m_clock.now() - due;
    EXPECT_GE(late, -0.001);
    EXPECT_LT(late, 0.5) << "even on a busy machine";
    pass(1500ms);
    const auto wakeUps = [&] {
        std::ifstream status("/proc/" + std::to_string(m_agent) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("voluntary_ctxt_switches:")) {
                return std::stoi(line.substr(line.find(':') + 1));
            }
        }
        return -1;
    };
    const auto before = wakeUps();
    EXPECT_GE(before, 0);
    pass(5s);
    EXPECT_EQ(wakeUps(), before);
    EXPECT_TRUE(isThere()) << "who has ended is not woken either";
}

/// With a notification daemon as people have it, on a screen.
class AgentOnScreen : public AgentProcess {
protected:
    AgentOnScreen() : m_display("DISPLAY", m_screen.display()) {}
    ~AgentOnScreen() override {
        if (m_daemon > 0) {
            ::kill(m_daemon, SIGTERM);
            ::waitpid(m_daemon, nullptr, 0);
        }
    }
    void startDaemon(const std::vector<std::string>& command) {
        m_daemon = tests::start(command);
        ASSERT_GT(m_daemon, 0) << command.front();
        platform::bus::Bus bus(platform::bus::WhichBus::session, m_loop, m_log);
        const platform::bus::NameWatch watch(bus, "org.freedesktop.Notifications");
        bus.start();
        ASSERT_TRUE(until([&] { return !watch.owner().empty(); }));
    }
    std::vector<app::AgentReminder> reminders() {
        std::vector<app::AgentReminder> told;
        ask(platform::bus::agent_method::kList,
            [&](const auto& reply) { told = platform::bus::agentRemindersOf(reply).listed; });
        return told;
    }
    void startXfcesDaemon() {
        // It asks other services for its settings.
        m_sessionBus.emplace(m_folder / "bus", "/usr/share/dbus-1/services");
        // It is on nobody's path: its own service says where it is, on any architecture.
        startDaemon({"sh", "-c",
                     "exec $(sed -n 's/^Exec=//p' "
                     "/usr/share/dbus-1/services/org.xfce.xfce4-notifyd.Notifications.service)"});
    }
    bool isShown() {
        return until([&] {
            const auto all = reminders();
            return !all.empty() && all.front().state == app::AgentReminder::State::shown;
        });
    }

    tests::XServer m_screen;
    tests::ScopedEnvironment m_display;
    pid_t m_daemon = -1;
};

TEST_F(AgentOnScreen, DunstShowsATodoAndItsMenuCompletesIt) {
    // The menu is a program that chooses the line that it is told.
    const auto menu = m_folder / "menu";
    std::ofstream(menu) << "#!/bin/sh\ngrep -m1 'Mark Complete'\n";
    std::filesystem::permissions(menu, std::filesystem::perms::owner_all);
    const auto configuration = m_folder / "dunstrc";
    std::ofstream(configuration) << "[global]\ndmenu = " << menu.string() << "\n";
    startDaemon({"dunst", "-conf", configuration.string()});
    const auto todo = add("Ring the bell", 0.5);
    startAgent();
    ASSERT_TRUE(isShown());
    ASSERT_EQ(tests::run({"dunstctl", "context"}), 0);
    EXPECT_TRUE(until([&] { return isCompleted(todo); }));
    EXPECT_TRUE(
        until([&] { return reminders().front().state == app::AgentReminder::State::withdrawn; }));
}

TEST_F(AgentOnScreen, DunstThatIsStartedAnewShowsItAgain) {
    startDaemon({"dunst"});
    const auto todo = add("Still open", 0.5);
    startAgent();
    ASSERT_TRUE(isShown());
    ::kill(m_daemon, SIGKILL);
    ::waitpid(m_daemon, nullptr, 0);
    startDaemon({"dunst"});
    EXPECT_TRUE(until([] {
        return tests::run({"sh", "-c", "test \"$(dunstctl count displayed)\" = 1"}) == 0;
    }));
    ASSERT_TRUE(isShown());
    EXPECT_FALSE(isCompleted(todo));
    ASSERT_EQ(tests::run({"dunstctl", "close-all"}), 0);
    EXPECT_TRUE(
        until([&] { return reminders().front().state == app::AgentReminder::State::closed; }));
}

TEST_F(AgentOnScreen, XfcesDaemonCompletesAtAClick) {
    startXfcesDaemon();
    const auto todo = add("Water the plants", 0.5);
    startAgent();
    ASSERT_TRUE(isShown());
    // The right one of the two buttons at the foot of its window.
    EXPECT_TRUE(until([&] {
        tests::run({"sh", "-c",
                    "eval $(xdotool search --onlyvisible --class xfce4-notifyd "
                    "getwindowgeometry --shell | head -5) && "
                    "xdotool mousemove $((X + WIDTH * 3 / 4)) $((Y + HEIGHT - 30)) click 1"});
        pass(300ms);
        return isCompleted(todo);
    }));
    EXPECT_TRUE(
        until([&] { return reminders().front().state == app::AgentReminder::State::withdrawn; }));
}

TEST_F(AgentOnScreen, WhatIsSwitchedOffInTheDesktopsSettingsIsSaid) {
    using enum schedule::AuthorizationStatus;
    startXfcesDaemon();
    startAgent();
    EXPECT_TRUE(says(authorized));
    const auto set = [](std::vector<std::string> what) {
        what.insert(what.begin(), {"xfconf-query", "-c", "xfce4-notifyd", "-p"});
        EXPECT_EQ(tests::run(what), 0);
    };
    const std::string muted = "/applications/muted_applications";
    set({muted, "-n", "-a", "-t", "string", "-s", "other", "-t", "string", "-s",
         "dev.korvex.Korvex"});
    EXPECT_TRUE(says(denied));
    set({muted, "-r"});
    EXPECT_TRUE(says(authorized));
    EXPECT_FALSE(status().isQuieted);
    set({"/do-not-disturb", "-n", "-t", "bool", "-s", "true"});
    EXPECT_TRUE(saysQuieted(true));
    EXPECT_EQ(status().authorization, authorized) << "they are shown later";

    ::kill(m_daemon, SIGTERM);
    ::waitpid(m_daemon, nullptr, 0);
    startDaemon({"dunst"});
    EXPECT_TRUE(saysQuieted(false)) << "it is another daemon";
    EXPECT_EQ(tests::run({"dunstctl", "set-paused", "true"}), 0);
    EXPECT_TRUE(saysQuieted(true));
    EXPECT_EQ(tests::run({"dunstctl", "set-paused", "false"}), 0);
    EXPECT_TRUE(saysQuieted(false));
}

} // namespace
} // namespace korvex::agent
