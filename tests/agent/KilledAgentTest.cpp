#include "AgentMachine.h"
#include "agent/ReminderTable.h"
#include "app/StoreLocation.h"
#include "base/Calendar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <random>

namespace korvex::agent {
namespace {

using tests::RecordingDaemon;
using namespace std::chrono_literals;

/// A session in which the agent is killed all the time, the notification daemon starts anew, the
/// zone is another at each start, and two programs set reminders and complete todos. The user
/// closes whatever is shown. What may be shown once more is what the agent's table says when it is
/// killed, and what a daemon has taken with it.
class KilledAgent : public tests::AgentMachine {
protected:
    struct Todo {
        base::Uuid id;
        base::Instant due;
        int shown = 0;
        int mayBeShown = 1;
        /// The notification that stands on the screen, if one does.
        std::optional<std::uint32_t> live = std::nullopt;
        /// Somebody has completed it before it was due.
        bool isCompleted = false;
        /// A machine that stood still for seconds had its reminder set when that was past.
        bool isExcused = false;
    };

    KilledAgent() {
        // Where no agent lies beside it: the only ones are those that are killed here.
        std::filesystem::copy_file(KORVEX_PROGRAM, m_program);
        m_bus.start();
        startDaemon();
        const auto count = std::getenv("KORVEX_FULL_STRESS") ? 1000 : 80;
        for (int i = 0; i < count; ++i) {
            m_todos.push_back({.id = add("Todo " + std::to_string(i), std::nullopt)});
        }
        const auto begin = m_clock.now() + 5;
        for (int i = 0; i < count; ++i) {
            m_todos[std::size_t(i)].due = begin + i * 0.06;
        }
    }
    ~KilledAgent() override { endCommand(0); }

    int pick(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }
    base::Instant end() const { return m_todos.back().due; }

    /// Everybody does what is to be done by now.
    void step() {
        pass(5ms);
        const auto now = m_clock.now();
        while (!m_toClose.empty() && m_toClose.front().first <= now) {
            const auto shown = m_toClose.front().second;
            m_toClose.pop_front();
            m_daemon->close(shown);
            if (auto& live = todoOf(shown).live; live == shown.id) {
                live.reset();
            }
        }
        endCommand(WNOHANG);
        for (; m_planned < m_todos.size() && m_todos[m_planned].due - now < 4; ++m_planned) {
            auto& todo = m_todos[m_planned];
            if (m_planned % 2 == 0) {
                m_store.context->refresh();
                auto* const entry = m_store.context->find<model::Entry>(todo.id);
                entry->setSchedule({.reminderDate = todo.due});
                entry->setIsCompleted(isToBeCompleted(todo));
                m_store.context->save();
                written(todo);
            } else {
                m_forOthers.push_back(&todo);
            }
        }
        if (m_command < 0 && !m_forOthers.empty()) {
            const auto& todo = *m_forOthers.front();
            const auto korvex = m_program.string() + " ";
            m_command = tests::start(
                {"sh", "-c",
                 korvex + "remind " + todo.id.text() + " " + base::isoText(todo.due) +
                     (isToBeCompleted(todo) ? " && " + korvex + "complete " + todo.id.text() : "") +
                     " > /dev/null"});
        }
    }
    void endCommand(int how) {
        int status = 0;
        if (m_command > 0 && ::waitpid(m_command, &status, how) == m_command) {
            m_command = -1;
            auto& todo = *m_forOthers.front();
            m_forOthers.pop_front();
            written(todo);
            EXPECT_TRUE(status == 0 || todo.isExcused);
        }
    }
    void kill() {
        ++m_kills;
        killAgent();
        // What it had sent by then comes still.
        ASSERT_TRUE(until([&] { return m_agentName.isKnown() && m_agentName.owner().empty(); }));
        pass(20ms);
        ReminderTable table(app::reminderFile(m_folder / "state", app::dataDirectory({})), m_log);
        for (const auto& row : table.rows(m_todos.size()).read) {
            if (row.state == ReminderState::posted) {
                // The next one shows it anew: what this one has shown leads to nobody.
                m_unheard += allowAgain(todoOf(row.request)) && !todoOf(row.request).live;
            } else if (row.state == ReminderState::pending) {
                m_between += allowAgain(todoOf(row.request));
            }
        }
    }
    void start() {
        static constexpr std::array kZones{"Pacific/Apia", "Europe/Berlin", "America/St_Johns"};
        m_zone.emplace("TZ", kZones.at(std::size_t(pick(0, int{kZones.size()} - 1))));
        startAgent();
    }
    void startDaemon() {
        m_toClose.clear();
        for (auto& todo : m_todos) {
            if (std::exchange(todo.live, std::nullopt)) {
                allowAgain(todo);
            }
        }
        m_daemon.reset();
        m_daemon.emplace(m_loop, m_log);
        m_daemon->onShow = [this](const auto& shown) {
            auto& todo = todoOf(shown);
            ++todo.shown;
            todo.live = shown.id;
            EXPECT_FALSE(todo.isCompleted);
            EXPECT_GE(m_clock.now() + 0.001, todo.due) << "commands are told it in milliseconds";
            m_toClose.emplace_back(m_clock.now() + 0.02, shown);
        };
        ASSERT_TRUE(until([&] { return m_daemon->isThere(); }));
    }

    std::vector<Todo> m_todos;
    int m_kills = 0;
    /// Kills between the daemon's answer and its record.
    int m_between = 0;
    /// The user had closed it, and nobody had recorded that.
    int m_unheard = 0;

private:
    void written(Todo& todo) {
        todo.isExcused = m_clock.now() >= todo.due;
        todo.isCompleted = !todo.isExcused && isToBeCompleted(todo);
    }
    bool isToBeCompleted(const Todo& todo) const { return (&todo - m_todos.data()) % 5 == 4; }
    template <typename Notification>
    Todo& todoOf(const Notification& notification) {
        return m_todos.at(std::stoul(notification.body.substr(std::string("Todo ").size())));
    }
    /// True when it was not allowed before.
    static bool allowAgain(Todo& todo) {
        const auto isNew = todo.shown == todo.mayBeShown;
        todo.mayBeShown += isNew ? 1 : 0;
        return isNew;
    }

    std::mt19937 m_random{7};
    std::filesystem::path m_program = m_folder / "korvex";
    std::optional<tests::ScopedEnvironment> m_zone;
    platform::bus::Bus m_bus{platform::bus::WhichBus::session, m_loop, m_log};
    platform::bus::NameWatch m_agentName{m_bus, platform::bus::kAgentName};
    std::optional<RecordingDaemon> m_daemon;
    std::deque<std::pair<base::Instant, RecordingDaemon::Shown>> m_toClose;
    std::size_t m_planned = 0;
    std::deque<Todo*> m_forOthers;
    pid_t m_command = -1;
};

TEST_F(KilledAgent, ShowsEachReminderOnce) {
    start();
    for (auto next = m_clock.now() + 1; m_clock.now() < end() - 0.5;) {
        step();
        if (m_clock.now() < next) {
            continue;
        }
        next = m_clock.now() + 0.001 * pick(60, 500);
        const auto what = pick(1, 5);
        if (what > 1) {
            kill();
        }
        if (what < 3) {
            startDaemon();
        }
        if (what > 1) {
            start();
        }
    }
    const auto isDone = [](const Todo& todo) {
        return todo.isCompleted || todo.isExcused || todo.shown > 0;
    };
    until([&] {
        step();
        return std::all_of(m_todos.begin(), m_todos.end(), isDone);
    });
    for (int i = 0; i < 100; ++i) {
        step();
    }
    int again = 0;
    for (const auto& todo : m_todos) {
        EXPECT_TRUE(isDone(todo)) << "lost, due at " << todo.due.seconds;
        EXPECT_LE(todo.shown, todo.mayBeShown) << "due at " << todo.due.seconds;
        again += todo.shown > 1 ? 1 : 0;
    }
    std::cout << m_todos.size() << " reminders, " << m_kills << " kills, shown again: " << again
              << ", of which the kill fell between answer and record: " << m_between
              << ", between closing and record: " << m_unheard << "\n";
    EXPECT_LT(std::count_if(m_todos.begin(), m_todos.end(),
                            [](const Todo& todo) { return todo.isExcused; }),
              int(m_todos.size()) / 20)
        << "this machine is too slow";
    EXPECT_GT(m_kills, 10);
    EXPECT_LT(m_between + m_unheard, m_kills / 2) << "it does not record what it is answered";
}

} // namespace
} // namespace korvex::agent
