#include "schedule/ScheduleClock.h"

#include "model/Board.h"
#include "model/Entry.h"
#include "model/SchemaVersions.h"
#include "support/FakeClock.h"
#include "support/FakeRunLoop.h"
#include "support/Moments.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace korvex::schedule {
namespace {

using base::Instant;
using model::TodoSchedule;
using tests::moment;

/// How long after a transition the timer fires.
constexpr double kMargin = 0.05;
constexpr double kDay = 86'400;

class ScheduleClockTest : public ::testing::Test {
protected:
    static Instant at(std::string_view text) { return moment(text, "Europe/Berlin"); }

    static std::unique_ptr<store::ModelContainer> openStore(base::LogSink& log,
                                                            const std::filesystem::path& file) {
        return store::ModelContainer::open(model::currentSchema(), {.file = file}, log);
    }

    struct Todo {
        TodoSchedule schedule;
        model::EntryType type = model::EntryType::todo;
        bool isCompleted = false;
    };

    static void add(store::ModelContext& context, const Todo& todo) {
        model::BoardFields board{.id = base::Uuid::random()};
        model::EntryFields fields{.id = base::Uuid::random(),
                                  .typeRawValue = std::string(model::rawValue(todo.type)),
                                  .content = "something",
                                  .isCompleted = todo.isCompleted};
        auto& entry = context.insert(std::make_unique<model::Entry>(std::move(fields)));
        entry.setSchedule(todo.schedule);
        entry.setBoard(&context.insert(std::make_unique<model::Board>(std::move(board))));
        context.save();
    }
    void add(const Todo& todo) {
        store::ModelContext context(*m_container);
        add(context, todo);
    }

    ScheduleClock makeClock() {
        return {m_clock, m_runLoop, [this] { return tests::zone(m_zone); }, m_log};
    }
    /// Lets the time pass, on the clock and in the run loop, until the timer has fired.
    void passToTimer() {
        m_clock.advance(m_runLoop.delays().front());
        m_runLoop.advanceToNextTimer();
    }
    void expectTimer(Instant transition) {
        const auto delays = m_runLoop.delays();
        ASSERT_EQ(delays.size(), 1U);
        EXPECT_NEAR(delays.front(), transition - m_clock.now() + kMargin, 1e-6);
    }

    tests::RecordingLog m_log;
    tests::TemporaryFolder m_folder;
    tests::FakeClock m_clock{at("2025-01-15T09:00")};
    tests::FakeRunLoop m_runLoop;
    std::string m_zone = "Europe/Berlin";
    std::unique_ptr<store::ModelContainer> m_container = openStore(m_log, {});
};

TEST_F(ScheduleClockTest, TheNextTransitionIsMidnightOrWhatComesBefore) {
    struct Case {
        const char* what;
        std::vector<Todo> todos;
        const char* expected;
    };
    const auto now = at("2025-01-15T09:00");
    constexpr const char* kMidnight = "2025-01-16T00:00";
    for (const auto& each : {
             Case{"nothing", {}, kMidnight},
             Case{"all day", {{{.dueDay = 20250115}}}, kMidnight},
             Case{"due", {{{.dueDate = at("2025-01-15T10:00")}}}, "2025-01-15T10:00"},
             Case{"due now", {{{.dueDate = now}}}, kMidnight},
             Case{"due before", {{{.dueDate = now - 1}}}, kMidnight},
             Case{"due after midnight", {{{.dueDate = at("2025-01-16T00:00:01")}}}, kMidnight},
             Case{"the end of a window",
                  {{{.dueDate = at("2025-01-15T11:00"), .dueStartDate = at("2025-01-15T10:00")}}},
                  "2025-01-15T11:00"},
             Case{"reminder", {{{.reminderDate = at("2025-01-15T09:30")}}}, "2025-01-15T09:30"},
             Case{"reminder before the due time",
                  {{{.dueDate = at("2025-01-15T10:00"), .reminderDate = at("2025-01-15T09:30")}}},
                  "2025-01-15T09:30"},
             Case{"the first of several",
                  {{{.dueDate = at("2025-01-15T12:00")}},
                   {{.dueDate = at("2025-01-15T08:00")}},
                   {{.reminderDate = at("2025-01-15T11:30")}},
                   {{.dueDate = at("2025-01-15T11:00")}}},
                  "2025-01-15T11:00"},
             Case{"completed",
                  {{.schedule = {.dueDate = at("2025-01-15T10:00"),
                                .reminderDate = at("2025-01-15T09:30")},
                  .isCompleted = true}},
                  kMidnight},
             Case{"a text entry",
                  {{.schedule = {.dueDate = at("2025-01-15T10:00")},
                  .type = model::EntryType::text}},
                  kMidnight},
         }) {
        const auto container = openStore(m_log, {});
        store::ModelContext context(*container);
        for (const auto& todo : each.todos) {
            add(context, todo);
        }
        store::ModelContext fresh(*container);
        EXPECT_EQ(ScheduleClock::nextTransition(fresh, now, base::Calendar(tests::zone(m_zone))),
                  at(each.expected))
            << each.what;
    }
}

TEST_F(ScheduleClockTest, MidnightIsWhereTheNextDayBegins) {
    struct Case {
        const char* zone;
        const char* now;
        const char* midnight;
    };
    store::ModelContext context(*m_container);
    for (const auto& each : {
             Case{"Europe/Berlin", "2025-03-30T01:00", "2025-03-31T00:00+02:00"}, // 23 hours
             Case{"Europe/Berlin", "2025-10-26T01:00", "2025-10-27T00:00+01:00"}, // 25 hours
             Case{"America/Sao_Paulo", "2018-11-03T22:00", "2018-11-04T01:00-02:00"},
             Case{"America/Sao_Paulo", "2018-11-04T22:00", "2018-11-05T00:00-02:00"},
             Case{"Pacific/Apia", "2011-12-29T22:00", "2011-12-31T00:00+14:00"},
             // The clocks go back over midnight: the day that has ended ends once more.
             Case{"America/St_Johns", "2006-10-28T23:30-03:30", "2006-10-29T00:00-03:30"},
             Case{"America/St_Johns", "2006-10-29T00:00-03:30", "2006-10-30T00:00-03:30"},
             Case{"UTC", "2025-01-15T00:00", "2025-01-16T00:00Z"},
         }) {
        EXPECT_EQ(ScheduleClock::nextTransition(context, moment(each.now, each.zone),
                                                base::Calendar(tests::zone(each.zone))),
                  moment(each.midnight))
            << each.zone << " " << each.now;
    }
    const auto end = Instant::distantFuture();
    EXPECT_EQ(ScheduleClock::nextTransition(context, end, base::Calendar(base::TimeZone::utc())),
              end + kDay);
}

TEST_F(ScheduleClockTest, TicksWhenATodoFallsDueAndAtMidnight) {
    add({.schedule = {.dueDate = at("2025-01-15T10:00")}});
    auto clock = makeClock();
    std::vector<Instant> ticks;
    const auto subscription = clock.didTick().connect([&](Instant now) { ticks.push_back(now); });
    clock.start(*m_container);
    EXPECT_EQ(clock.now(), at("2025-01-15T09:00"));
    expectTimer(at("2025-01-15T10:00"));

    passToTimer();
    ASSERT_EQ(ticks.size(), 1U);
    EXPECT_GT(ticks.back(), at("2025-01-15T10:00")) << "the moment itself is past";
    EXPECT_EQ(clock.now(), ticks.back());
    expectTimer(at("2025-01-16T00:00"));

    passToTimer();
    ASSERT_EQ(ticks.size(), 2U);
    EXPECT_EQ(base::Calendar(tests::zone(m_zone)).day(ticks.back()), 20250116);
    expectTimer(at("2025-01-17T00:00"));
}

TEST_F(ScheduleClockTest, LooksAgainAfterEverySave) {
    auto clock = makeClock();
    clock.start(*m_container);
    expectTimer(at("2025-01-16T00:00"));
    add({.schedule = {.dueDate = at("2025-01-15T12:00")}});
    add({.schedule = {.reminderDate = at("2025-01-15T11:00")}});
    EXPECT_EQ(m_runLoop.postedCount(), 1U) << "one refresh for all that was saved before it";
    m_runLoop.runPosted();
    expectTimer(at("2025-01-15T11:00"));
}

TEST_F(ScheduleClockTest, TakesTheZoneThatTheMachineHasNow) {
    auto clock = makeClock();
    clock.start(*m_container);
    m_zone = "Asia/Kolkata";
    clock.scheduleRefresh();
    m_runLoop.runPosted();
    expectTimer(moment("2025-01-16T00:00", "Asia/Kolkata"));
}

TEST_F(ScheduleClockTest, RequestsOfAllThreadsAreOneRefresh) {
    auto clock = makeClock();
    clock.start(*m_container);
    int ticks = 0;
    const auto subscription = clock.didTick().connect([&](Instant) { ++ticks; });
    m_clock.advance(1);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&clock] {
            for (int request = 0; request < 1000; ++request) {
                clock.scheduleRefresh();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(m_runLoop.postedCount(), 1U);
    m_runLoop.runPosted();
    EXPECT_EQ(ticks, 1);

    m_clock.advance(1);
    clock.scheduleRefresh();
    m_runLoop.runPosted();
    EXPECT_EQ(ticks, 2) << "a later request is a refresh of its own";
}

TEST_F(ScheduleClockTest, MayEndWithARequestAndATimerOpen) {
    {
        auto clock = makeClock();
        clock.start(*m_container);
        clock.scheduleRefresh();
    }
    EXPECT_TRUE(m_runLoop.delays().empty());
    m_runLoop.runPosted();
    EXPECT_TRUE(m_runLoop.delays().empty()) << "the open request set a timer for nobody";
    add({.schedule = {.dueDate = at("2025-01-18T12:00")}});
    EXPECT_EQ(m_runLoop.postedCount(), 0U);
}

TEST_F(ScheduleClockTest, TriesAgainTomorrowWhenTheStoreCannotBeRead) {
    m_log.expectError("Could not read due transitions");
    const auto file = m_folder / "Primary.store";
    const auto container = openStore(m_log, file);
    auto clock = makeClock();
    clock.start(*container);
    SQLite::Database(file, SQLite::OPEN_READWRITE).exec("DROP TABLE Entry");
    m_clock.advance(60);
    clock.refresh();
    EXPECT_EQ(clock.now(), at("2025-01-15T09:01")) << "the time goes on all the same";
    expectTimer(m_clock.now() + kDay);
    EXPECT_EQ(m_log.count("Could not read due transitions"), 1U);
}

} // namespace
} // namespace korvex::schedule
