#include "agent/ReminderDelivery.h"

#include "AgentParts.h"
#include "schedule/TodoStore.h"
#include "support/TemporaryFolder.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <sys/resource.h>

#include <csignal>
#include <set>

namespace korvex::agent {
namespace {

using base::Instant;
using model::Entry;
using schedule::ReminderRequest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr Instant kNow{1000};
const std::string kDaemon = "bus :1.4";

class ReminderDeliveryTest : public ::testing::Test {
protected:
    ReminderDeliveryTest() { start(); }

    void start() {
        agent.reset();
        agent.emplace(file, *store.container, clock, runLoop, store.log);
        runLoop.runPosted();
    }
    ReminderDelivery& delivery() { return agent->delivery; }

    Entry& add(const std::string& content, double reminder) {
        auto& entry = store.add({.content = content, .reminderDate = Instant{reminder}}, &board);
        save();
        return entry;
    }
    /// And plans what has changed.
    void save() {
        store.context.save();
        if (agent) {
            agent->scheduler.requestReconcile();
            runLoop.runPosted();
        }
    }
    static ReminderRequest request(const Entry& entry) {
        return {entry.id(), *entry.reminderDate(), entry.content()};
    }
    /// What is due is shown, each under the next number.
    void showAll() {
        for (const auto& due : delivery().takeDue()) {
            delivery().recordPosted(due, {++number, kDaemon});
        }
    }

    tests::TemporaryFolder folder;
    std::filesystem::path file = folder / "reminders.sqlite";
    tests::TodoStore store{folder / "Primary.store"};
    model::Board& board = store.addBoard();
    tests::FakeClock clock{kNow};
    tests::FakeRunLoop runLoop;
    std::optional<tests::AgentParts> agent;
    std::uint32_t number = 0;
};

TEST_F(ReminderDeliveryTest, ADueReminderIsGivenOutOnceAndStaysPendingUntilItIsAnswered) {
    auto& first = add("first", 1010);
    auto& second = add("second", 1020);
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    EXPECT_EQ(delivery().nextDue(), Instant{1010});
    clock.set({1010});
    const auto due = delivery().takeDue();
    EXPECT_THAT(due, ElementsAre(request(first)));
    EXPECT_EQ(delivery().nextDue(), Instant{1020});
    EXPECT_THAT(delivery().takeDue(), IsEmpty()) << "it is under way";
    save();
    EXPECT_THAT(delivery().takeDue(), IsEmpty()) << "and no reconcile takes it back";

    start();
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(first))) << "nobody has answered";
    delivery().recordPosted(due[0], {1, kDaemon});
    EXPECT_EQ(delivery().entryOf({1, kDaemon}), first.id());
    clock.set({1020});
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(second)));
    EXPECT_EQ(delivery().nextDue(), std::nullopt);
}

TEST_F(ReminderDeliveryTest, TheClockIsSetInBothDirections) {
    auto& todo = add("todo", 5000);
    auto& waiting = add("waiting", 5000);
    clock.set({9000});
    auto due = delivery().takeDue();
    ASSERT_THAT(due, SizeIs(2));
    const auto isTodo = due[0].entryID == todo.id();
    delivery().recordPosted(due[isTodo ? 0 : 1], {1, kDaemon});
    delivery().recordFailed(due[isTodo ? 1 : 0]);
    // Back: what was shown is not shown again, what was not is due at its time.
    clock.set({2000});
    save();
    runLoop.advance(2);
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    EXPECT_EQ(delivery().nextDue(), Instant{5000});
    todo.setContent("todo, said otherwise");
    save();
    clock.set({5000});
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(waiting)));
    save();
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
}

TEST_F(ReminderDeliveryTest, WhatTheStoreDoesNotAskForAnyMoreIsNotShown) {
    auto& completed = add("completed", 1010);
    auto& deleted = add("deleted", 1010);
    auto& later = add("later", 1010);
    auto& sooner = add("sooner", 1010);
    auto& edited = add("edited", 1010);
    agent.reset();
    completed.setIsCompleted(true);
    store.context.remove(deleted);
    later.setSchedule({.reminderDate = Instant{3000}});
    sooner.setSchedule({.reminderDate = Instant{1005}});
    edited.setContent("edited since");
    save();
    clock.set({2000});
    start();
    EXPECT_THAT(delivery().takeDue(),
                testing::UnorderedElementsAre(request(sooner), request(edited)));
    EXPECT_EQ(delivery().nextDue(), Instant{3000});
}

TEST_F(ReminderDeliveryTest, WhatCameDueBeforeAnybodyPlannedItIsCaughtUpOnce) {
    auto& early = add("early", 900);
    agent.reset();
    auto& missed = add("missed", 1500);
    auto& restored = add("open again, after its moment", 1500);
    restored.setUpdatedAt({1600});
    save();
    clock.set({2000});
    start();
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(missed)))
        << "not " << early.content() << ", which was in the past when an agent saw it";
    delivery().recordPosted(request(missed), {1, kDaemon});
    // Set for a moment that has come before the agent has heard of it.
    auto& late = store.add({.content = "late", .reminderDate = Instant{2001}}, &board);
    store.context.save();
    clock.set({2002});
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(late)));
    delivery().recordPosted(request(late), {2, kDaemon});
    clock.set({1400});
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    clock.set({3000});
    start();
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
}

TEST_F(ReminderDeliveryTest, AFailingDaemonIsLeftAloneForLongerAndLonger) {
    add("first", 1010);
    add("second", 1010);
    clock.set({1010});
    double total = 0;
    double last = 0;
    for (int i = 0; i < 12; ++i) {
        const auto due = delivery().takeDue();
        ASSERT_THAT(due, SizeIs(2)) << "none is lost";
        delivery().recordFailed(due[0]);
        delivery().recordFailed(due[1]);
        const auto delay = delivery().retryDelay();
        ASSERT_TRUE(delay);
        EXPECT_GE(delay->count(), last);
        last = delay->count();
        total += last;
        // However the clock is set, it is time that has to pass.
        clock.advance(i % 2 == 0 ? 4000 : -3000);
        runLoop.advance(last * 0.9);
        EXPECT_THAT(delivery().takeDue(), IsEmpty());
        runLoop.advance(last * 0.1 + 0.001);
    }
    EXPECT_EQ(last, 300);
    EXPECT_GT(total, 1000);
    const auto due = delivery().takeDue();
    delivery().recordFailed(due[0]);
    delivery().recordFailed(due[1]);
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    delivery().setDaemon(kDaemon);
    EXPECT_THAT(delivery().takeDue(), SizeIs(2)) << "another daemon may do better";
}

TEST_F(ReminderDeliveryTest, AnotherDaemonShowsWhatTheFormerHasShown) {
    add("open", 1010);
    auto& closed = add("closed", 1011);
    clock.set({1020});
    delivery().setDaemon(kDaemon);
    showAll();
    delivery().recordClosed({2, kDaemon});
    delivery().setDaemon(std::nullopt);
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    delivery().setDaemon(kDaemon);
    EXPECT_THAT(delivery().takeDue(), IsEmpty()) << "it is the same one";
    delivery().setDaemon("bus :1.9");
    EXPECT_EQ(delivery().entryOf({1, kDaemon}), std::nullopt);
    const auto due = delivery().takeDue();
    ASSERT_THAT(due, SizeIs(1));
    EXPECT_NE(due[0].entryID, closed.id());
    EXPECT_THAT(delivery().takeWithdrawals(), IsEmpty());
    // An answer of the former one, which has shown it and is gone.
    delivery().recordPosted(due[0], {3, kDaemon});
    EXPECT_THAT(delivery().takeDue(), SizeIs(1));
}

TEST_F(ReminderDeliveryTest, AnotherAgentClosesWhatTheFormerHasShownAndShowsItAnew) {
    auto& todo = add("todo", 1010);
    clock.set({1010});
    delivery().setDaemon(kDaemon);
    showAll();
    start();
    EXPECT_THAT(delivery().takeWithdrawals(), IsEmpty()) << "the daemon is not known yet";
    delivery().setDaemon(kDaemon);
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(todo)));
    EXPECT_THAT(delivery().takeWithdrawals(), ElementsAre(ShownNotification{1, kDaemon}));
    delivery().recordPosted(request(todo), {2, kDaemon});
    delivery().recordClosed({1, kDaemon});
    EXPECT_EQ(delivery().entryOf({2, kDaemon}), todo.id());
    EXPECT_THAT(agent->table.withdrawals(), IsEmpty());
}

TEST_F(ReminderDeliveryTest, WhatIsShownGoesWithItsTodo) {
    auto& completed = add("completed", 1010);
    add("stays", 1011);
    auto& moved = add("moved", 1012);
    auto& elsewhere = add("elsewhere", 1013);
    clock.set({1020});
    showAll();
    const base::Uuid ids[] = {completed.id()};
    agent->scheduler.removePending(ids);
    EXPECT_THAT(delivery().takeWithdrawals(), ElementsAre(ShownNotification{1, kDaemon}));
    EXPECT_THAT(delivery().takeWithdrawals(), IsEmpty()) << "it is being closed";
    moved.setSchedule({.reminderDate = Instant{3000}});
    // By somebody who has told nobody but the store.
    store.context.remove(elsewhere);
    save();
    delivery().reviewShown();
    EXPECT_THAT(delivery().takeWithdrawals(),
                testing::UnorderedElementsAre(ShownNotification{3, kDaemon},
                                              ShownNotification{4, kDaemon}));
    // Completed while the daemon is being asked to show it.
    auto& late = add("late", 1030);
    clock.set({1030});
    const auto due = delivery().takeDue();
    late.setIsCompleted(true);
    save();
    const base::Uuid lateID[] = {late.id()};
    agent->scheduler.removePending(lateID);
    delivery().recordPosted(due.at(0), {9, kDaemon});
    EXPECT_THAT(delivery().takeWithdrawals(), ElementsAre(ShownNotification{9, kDaemon}));
}

/// As long as it lives, no file of this process grows.
class FullDisk {
public:
    FullDisk() {
        ::getrlimit(RLIMIT_FSIZE, &m_former);
        ::setrlimit(RLIMIT_FSIZE, std::array{rlimit{0, m_former.rlim_max}}.data());
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_former{};
    void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(ReminderDeliveryTest, AnAnswerThatCannotBeWrittenIsWrittenLater) {
    auto& first = add("first", 1010);
    auto& second = add("second", 1010);
    clock.set({1010});
    const auto due = delivery().takeDue();
    ASSERT_THAT(due, SizeIs(2));
    store.log.expectError("A reminder is shown and could not be recorded; code ");
    {
        const FullDisk disk;
        delivery().recordPosted(request(first), {1, kDaemon});
        delivery().recordPosted(request(second), {2, kDaemon});
        delivery().recordClosed({2, kDaemon});
        EXPECT_EQ(delivery().entryOf({1, kDaemon}), first.id());
        EXPECT_THAT(delivery().takeDue(), IsEmpty()) << "it is shown, whatever is written";
    }
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    const auto rows = agent->table.rows(5);
    ASSERT_THAT(rows, SizeIs(2));
    for (const auto& row : rows) {
        EXPECT_EQ(row.state,
                  row.request.entryID == first.id() ? ReminderState::posted : ReminderState::gone);
    }
}

TEST_F(ReminderDeliveryTest, WhatWasClosedAndCouldNotBeWrittenIsNotShownByTheNextDaemon) {
    auto& kept = add("kept", 1010);
    auto& closed = add("closed", 1010);
    clock.set({1010});
    ASSERT_THAT(delivery().takeDue(), SizeIs(2));
    store.log.expectError("A reminder is shown and could not be recorded; code ");
    {
        const FullDisk disk;
        delivery().recordPosted(request(kept), {1, kDaemon});
        delivery().recordPosted(request(closed), {2, kDaemon});
        delivery().recordClosed({2, kDaemon});
    }
    delivery().setDaemon("bus :1.9");
    const auto again = delivery().takeDue();
    ASSERT_THAT(again, SizeIs(1));
    EXPECT_EQ(again.front().entryID, kept.id());
}

TEST_F(ReminderDeliveryTest, ManyAreShownAFewAtATime) {
    constexpr std::size_t kMany = 3 * ReminderDelivery::kMaximumUnderWay + 5;
    for (std::size_t i = 0; i < kMany; ++i) {
        store.add({.content = std::to_string(i), .reminderDate = Instant{1010}}, &board);
    }
    auto& stale = add("stale", 1010);
    stale.setIsCompleted(true);
    store.context.save();
    clock.set({1010});
    std::set<base::Uuid> shown;
    for (;;) {
        const auto due = delivery().takeDue();
        EXPECT_LE(due.size(), ReminderDelivery::kMaximumUnderWay);
        if (due.empty()) {
            break;
        }
        for (const auto& each : due) {
            EXPECT_TRUE(shown.insert(each.entryID).second);
            delivery().recordPosted(each, {++number, kDaemon});
        }
    }
    EXPECT_THAT(shown, SizeIs(kMany));
}

TEST_F(ReminderDeliveryTest, WithoutAStoreToCompareWithTheTableIsBelieved) {
    auto& todo = add("todo", 1010);
    clock.set({1010});
    const auto due = request(todo);
    SQLite::Database((folder / "Primary.store").string(), SQLite::OPEN_READWRITE)
        .exec("ALTER TABLE Entry RENAME TO Elsewhere");
    EXPECT_THAT(delivery().takeDue(), ElementsAre(due));
    EXPECT_EQ(store.log.count("A reminder cannot be compared with the store; code "), 1U);
}

} // namespace
} // namespace korvex::agent
