#include "agent/ReminderDelivery.h"

#include "AgentParts.h"
#include "NothingCanGrow.h"
#include "schedule/TodoStore.h"
#include "support/TemporaryFolder.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <set>

namespace korvex::agent {
namespace {

using base::Instant;
using model::Entry;
using schedule::ReminderRequest;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Seconds = std::chrono::duration<double>;

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
    delivery().recordClosed({1, kDaemon});
    const auto planned = store.log.count("Scheduled reminder for entry ");
    // Back: what was shown is not shown again, what was not is due at its time.
    clock.set({2000});
    save();
    runLoop.advance(2);
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    EXPECT_EQ(delivery().nextDue(), Instant{5000});
    EXPECT_EQ(store.log.count("Scheduled reminder for entry "), planned) << "neither is touched";
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
    // One that ends whenever it is asked is not started again and again.
    for (int i = 0; i < 10; ++i) {
        delivery().recordFailed(due[0]);
        delivery().recordFailed(due[1]);
        EXPECT_GT(delivery().retryDelay().value_or(Seconds{}), Seconds{200});
        delivery().setDaemon(std::nullopt);
        runLoop.advance(301);
        ASSERT_THAT(delivery().takeDue(), SizeIs(2));
        delivery().setDaemon("bus :1." + std::to_string(i));
    }
    delivery().recordPosted(due[0], {1, "bus :1.9"});
    delivery().recordFailed(due[1]);
    EXPECT_EQ(delivery().retryDelay(), Seconds{1});
}

TEST_F(ReminderDeliveryTest, OneThatTheDaemonRefusesHoldsNoOtherUp) {
    auto& refused = add("refused", 1010);
    auto& other = add("other", 1020);
    clock.set({1010});
    delivery().setDaemon(kDaemon);
    double last = 0;
    for (int i = 0; i < 12; ++i) {
        const auto due = delivery().takeDue();
        ASSERT_THAT(due, ElementsAre(request(refused)));
        delivery().recordRefused(due[0]);
        EXPECT_THAT(delivery().takeDue(), IsEmpty());
        const auto delay = delivery().retryDelay().value_or(Seconds{}).count();
        EXPECT_TRUE(delay > last || delay == 300) << delay;
        last = delay;
        runLoop.advance(last + 0.001);
    }
    EXPECT_EQ(last, 300);
    delivery().recordRefused(delivery().takeDue().at(0));
    clock.set({1020});
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(other)));
    delivery().recordPosted(request(other), {1, kDaemon});
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    delivery().setDaemon("bus :1.9");
    EXPECT_THAT(delivery().takeDue(), Contains(request(refused))) << "it may do better";
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

TEST_F(ReminderDeliveryTest, AnAnswerThatCannotBeWrittenIsWrittenLater) {
    auto& first = add("first", 1010);
    auto& second = add("second", 1010);
    auto& third = add("third", 5000);
    clock.set({1010});
    const auto due = delivery().takeDue();
    ASSERT_THAT(due, SizeIs(2));
    store.log.expectError("could not be recorded; code ");
    {
        const tests::NothingCanGrow disk;
        delivery().recordPosted(request(first), {1, kDaemon});
        delivery().recordPosted(request(second), {2, kDaemon});
        delivery().recordClosed({2, kDaemon});
        EXPECT_EQ(delivery().entryOf({1, kDaemon}), first.id());
        EXPECT_EQ(delivery().entryOf({2, kDaemon}), std::nullopt);
        EXPECT_THAT(delivery().takeDue(), IsEmpty()) << "it is shown, whatever is written";
        // Long enough for the mark to be written, which cannot be either.
        clock.set({9000});
        EXPECT_THAT(delivery().takeDue(), ElementsAre(request(third)));
        EXPECT_TRUE(delivery().retryDelay()) << "nothing else says that it can be written again";
    }
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    EXPECT_EQ(delivery().retryDelay(), std::nullopt);
    const auto rows = agent->table.rows(5).read;
    ASSERT_THAT(rows, SizeIs(3));
    for (const auto& row : rows) {
        EXPECT_EQ(row.state, row.request.entryID == first.id()    ? ReminderState::posted
                             : row.request.entryID == second.id() ? ReminderState::gone
                                                                  : ReminderState::pending);
    }
}

TEST_F(ReminderDeliveryTest, WhatDoesNotStandAndCannotBeWrittenAwayHoldsNothingUp) {
    auto& first = add("first", 1010);
    std::vector<Entry*> stale;
    for (std::size_t i = 0; i < 2 * ReminderDelivery::kMaximumUnderWay; ++i) {
        stale.push_back(&add("stale", 1011));
    }
    auto& last = add("last", 1012);
    for (auto* const each : stale) {
        each->setIsCompleted(true);
    }
    store.context.save();
    clock.set({1020});
    store.log.expectError("could not be recorded; code ");
    {
        const tests::NothingCanGrow disk;
        EXPECT_THAT(delivery().takeDue(), ElementsAre(request(first), request(last)));
        EXPECT_THAT(delivery().takeDue(), IsEmpty());
    }
    delivery().recordFailed(request(last));
    delivery().recordPosted(request(first), {1, kDaemon});
    runLoop.advance(10);
    EXPECT_THAT(delivery().takeDue(), ElementsAre(request(last)));
    EXPECT_THAT(agent->table.rows(5).read, SizeIs(2));
}

TEST_F(ReminderDeliveryTest, WhatWasClosedAndCouldNotBeWrittenIsNotShownByTheNextDaemon) {
    auto& kept = add("kept", 1010);
    auto& closed = add("closed", 1010);
    auto& before = add("closed, and recorded as shown", 1005);
    auto& withdrawn = add("withdrawn", 1006);
    clock.set({1006});
    showAll();
    clock.set({1010});
    ASSERT_THAT(delivery().takeDue(), SizeIs(2));
    const base::Uuid ids[] = {withdrawn.id()};
    agent->scheduler.removePending(ids);
    store.context.remove(withdrawn);
    store.context.save();
    ASSERT_THAT(delivery().takeWithdrawals(), ElementsAre(ShownNotification{2, kDaemon}));
    store.log.expectError("could not be recorded; code ");
    const std::string another = "bus :1.9";
    {
        const tests::NothingCanGrow disk;
        delivery().recordPosted(request(kept), {3, kDaemon});
        delivery().recordPosted(request(closed), {4, kDaemon});
        delivery().recordClosed({4, kDaemon});
        delivery().recordClosed({1, kDaemon});
        EXPECT_EQ(delivery().entryOf({1, kDaemon}), std::nullopt) << before.content();
        delivery().recordClosed({2, kDaemon});
        EXPECT_THAT(delivery().takeWithdrawals(), IsEmpty()) << "it is closed";
        // What is not recorded as shown by the former one can be shown by the next all the same.
        delivery().setDaemon(another);
        EXPECT_THAT(delivery().takeDue(), ElementsAre(request(kept)));
        delivery().recordPosted(request(kept), {1, another});
        EXPECT_THAT(delivery().takeDue(), IsEmpty());
        EXPECT_EQ(delivery().entryOf({1, another}), kept.id());
    }
    EXPECT_THAT(delivery().takeDue(), IsEmpty());
    EXPECT_THAT(delivery().takeWithdrawals(), IsEmpty());
    EXPECT_THAT(agent->table.withdrawals(), IsEmpty());
    EXPECT_EQ(agent->table.entryOf({1, another}), kept.id());
}

TEST_F(ReminderDeliveryTest, ADaemonThatCannotBeWrittenDownIsShownEachReminderOnce) {
    auto& first = add("first", 1010);
    auto& second = add("second", 1020);
    clock.set({1010});
    showAll();
    clock.set({1020});
    store.log.expectError("could not be recorded; code ");
    for (const auto isAnotherAgent : {false, true}) {
        if (isAnotherAgent) {
            start();
        }
        const auto another = isAnotherAgent ? "bus :1.8" : "bus :1.9";
        {
            const tests::NothingCanGrow disk;
            delivery().setDaemon(another);
            for (const auto& due : delivery().takeDue()) {
                EXPECT_EQ(due, request(second));
                delivery().recordPosted(due, {1, another});
            }
            EXPECT_THAT(delivery().takeDue(), IsEmpty());
        }
        EXPECT_THAT(delivery().takeDue(), Contains(request(first)))
            << "the former one has shown it";
        delivery().recordPosted(request(first), {2, another});
        EXPECT_THAT(agent->table.posted(), SizeIs(testing::Ge(1U)));
    }
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
