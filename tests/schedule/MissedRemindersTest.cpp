#include "schedule/MissedReminders.h"

#include "TodoStore.h"
#include "services/EntryService.h"
#include "support/FakeClock.h"
#include "support/FakeReminderCenter.h"
#include "support/FakeRunLoop.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <random>

namespace korvex::schedule {
namespace {

using base::Instant;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::moment;

constexpr double kMinute = 60;
constexpr auto kDenied = AuthorizationStatus::denied;
constexpr auto kAllowed = AuthorizationStatus::authorized;

class MissedRemindersTest : public ::testing::Test {
protected:
    MissedRemindersTest() {
        m_scheduleClock.start(*m_store.container);
        m_center.set(kDenied);
    }

    /// A program's run.
    void start() {
        m_missed.emplace(
            m_store.context, m_center, m_scheduleClock,
            MissedReminders::Seen{m_seen, [this](Instant until) { m_seen = until; }, m_listed,
                                  [this](std::optional<Instant> until) { m_listed = until; }});
        m_changes = m_missed->didChange().connect([this] { ++m_told; });
    }
    void restart() {
        m_missed.reset();
        start();
    }
    model::Entry& add(const char* content, Instant reminder) {
        auto& entry = m_store.add({.content = content, .reminderDate = reminder}, &m_board);
        m_store.context.save();
        return entry;
    }
    void wait(double seconds) {
        m_clock.advance(seconds);
        m_scheduleClock.refresh();
    }
    std::vector<std::string> listed() const {
        std::vector<std::string> result;
        for (const auto* const each : m_missed->entries()) {
            result.push_back(each->content());
        }
        return result;
    }

    Instant m_now = moment("2025-03-10T09:00Z");
    tests::TodoStore m_store;
    model::Board& m_board = m_store.addBoard();
    tests::FakeClock m_clock{m_now};
    tests::FakeRunLoop m_runLoop;
    tests::FakeReminderCenter m_center;
    ScheduleClock m_scheduleClock{m_clock, m_runLoop, base::TimeZone::utc, m_store.log};
    std::optional<Instant> m_seen = m_now;
    std::optional<Instant> m_listed;
    std::optional<MissedReminders> m_missed;
    base::Subscription m_changes;
    int m_told = 0;
};

TEST_F(MissedRemindersTest, WhatComesDueIsListedWhereNoNotificationCanBeShownAndOnlyThere) {
    add("late", m_now + 2 * kMinute);
    add("early", m_now + kMinute);
    m_center.set(AuthorizationStatus::unavailable); // nobody has said yet
    start();
    wait(1.5 * kMinute);
    EXPECT_THAT(listed(), IsEmpty());
    m_center.set(AuthorizationStatus::unavailable, "There is no bus.");
    EXPECT_THAT(listed(), ElementsAre("early"));
    wait(kMinute);
    EXPECT_THAT(listed(), ElementsAre("early", "late"));
    restart();
    EXPECT_THAT(listed(), ElementsAre("early", "late")) << "nobody has seen them";

    m_center.set(kAllowed);
    EXPECT_THAT(listed(), ElementsAre("early", "late")) << "no notification was shown of these";
    add("shown", m_clock.now() + kMinute);
    wait(2 * kMinute);
    EXPECT_THAT(listed(), ElementsAre("early", "late"));
    m_missed->markSeen();
    EXPECT_THAT(listed(), IsEmpty());
    wait(kMinute);
    m_center.set(kDenied);
    EXPECT_THAT(listed(), IsEmpty());
    restart();
    EXPECT_THAT(listed(), IsEmpty()) << "what was shown is seen";
    EXPECT_EQ(m_told, 3);
}

TEST_F(MissedRemindersTest, OnlyWhoHadTheTimeToReadThemAndDidSomethingHasSeenThem) {
    struct {
        const char* what;
        double readFor;
        bool acts;
        bool isSeen;
    } const cases[] = {
        {"nobody sits there", 3600, false, false},
        {"in passing", 0.4, true, false},
        {"read", 5, true, true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        start();
        auto& todo = add("a", m_clock.now() + 1);
        m_missed->beginShowing(m_clock.now());
        wait(1);
        ASSERT_THAT(listed(), ElementsAre("a"));
        wait(each.readFor);
        if (each.acts) {
            m_missed->userActs(m_clock.now());
        }
        EXPECT_THAT(listed(), ElementsAre("a")) << "they stay while they are looked at";
        m_missed->endShowing();
        EXPECT_EQ(m_missed->count(), each.isSeen ? 0U : 1U);
        restart();
        EXPECT_EQ(m_missed->count(), each.isSeen ? 0U : 1U);
        m_store.context.remove(todo);
        m_store.context.save();
        EXPECT_THAT(listed(), IsEmpty());
    }
}

TEST_F(MissedRemindersTest, ATodoThatIsDoneMovedOrGoneIsNotListedAnyMore) {
    start();
    auto& done = add("done", m_now + 1);
    auto& put = add("put off", m_now + 2);
    auto& gone = add("gone", m_now + 3);
    auto& kept = add("kept", m_now + 4);
    wait(kMinute);
    ASSERT_EQ(m_missed->count(), 4U);

    m_missed->linger(done.id());
    done.setIsCompleted(true);
    put.setSchedule({.reminderDate = m_clock.now() + kMinute});
    m_store.context.remove(gone);
    kept.setContent("still kept");
    m_store.context.save();
    EXPECT_THAT(listed(), ElementsAre("done", "still kept"));
    EXPECT_EQ(m_missed->count(), 1U) << "the tick is still seen";
    m_missed->release(done.id());
    EXPECT_THAT(listed(), ElementsAre("still kept"));
    done.setIsCompleted(false);
    m_store.context.save();
    EXPECT_THAT(listed(), ElementsAre("done", "still kept"));
    wait(kMinute);
    EXPECT_THAT(listed(), ElementsAre("done", "still kept", "put off")) << "its new moment came";
    m_board.setIsArchived(true);
    m_store.context.save();
    EXPECT_THAT(listed(), IsEmpty());
    m_missed->markSeen();
    m_board.setIsArchived(false);
    m_store.context.save();
    EXPECT_EQ(m_missed->count(), 3U) << "nobody has seen them";
}

/// Whatever happens, what is listed is what one made anew lists.
TEST_F(MissedRemindersTest, AfterAnyChangesTheListIsAsOneMadeAnew) {
    start();
    auto& other = m_store.addBoard();
    std::mt19937 random(7); // NOLINT: the same every time
    const auto pick = [&](std::size_t count) { return random() % count; };
    std::vector<model::Entry*> todos;
    for (int step = 0; step < 300; ++step) {
        const auto moment = m_clock.now() + (static_cast<double>(pick(20)) - 8) * kMinute;
        auto* const todo = todos.empty() ? nullptr : todos[pick(todos.size())];
        switch (todo && todo->isLive() ? pick(9) : 0) {
        case 0:
        case 1:
            todos.push_back(&add("new", moment));
            break;
        case 2:
            todo->setIsCompleted(!todo->isCompleted());
            break;
        case 3:
            todo->setSchedule(
                {.reminderDate = pick(3) == 0 ? std::nullopt : std::optional(moment)});
            break;
        case 4:
            m_store.context.remove(*todo);
            break;
        case 5:
            todo->setBoard(pick(2) == 0 ? &m_board : &other);
            break;
        case 6:
            other.setIsArchived(!other.isArchived());
            break;
        case 7:
            wait(static_cast<double>(pick(5)) * kMinute);
            break;
        case 8:
            pick(4) == 0 ? m_missed->markSeen() : wait(kMinute);
            break;
        }
        m_store.context.save();
        const MissedReminders anew(m_store.context, m_center, m_scheduleClock,
                                   MissedReminders::Seen{m_seen, [](Instant) {}});
        ASSERT_EQ(m_missed->entries(), anew.entries()) << step;
    }
}

TEST_F(MissedRemindersTest, AClockThatIsSetBackRemindsOnceMore) {
    start();
    add("a", m_now + kMinute);
    wait(2 * kMinute);
    m_missed->markSeen();
    wait(-100 * kMinute);
    EXPECT_THAT(listed(), IsEmpty());
    m_missed.reset();
    wait(200 * kMinute);
    start();
    EXPECT_THAT(listed(), IsEmpty()) << "nothing was seen anew, and what was kept holds";
    wait(-200 * kMinute);
    wait(200 * kMinute);
    EXPECT_THAT(listed(), ElementsAre("a"));
}

TEST_F(MissedRemindersTest, WhatWasTakenToBeShownAndWasNotIsListedUntilItIsSeen) {
    const auto fail = [&](Instant waitingSince) {
        m_center.set({.authorization = AuthorizationStatus::unavailable,
                      .reason = "It cannot be started.",
                      .waitingSince = waitingSince});
    };
    m_center.set(kAllowed);
    start();
    add("shown", m_now + kMinute);
    add("not shown", m_now + 2 * kMinute);
    wait(2 * kMinute);
    wait(10);
    EXPECT_THAT(listed(), IsEmpty());
    fail(m_now + 2 * kMinute);
    EXPECT_THAT(listed(), ElementsAre("not shown"));
    add("later", m_clock.now() + 1);
    wait(kMinute);
    EXPECT_THAT(listed(), ElementsAre("not shown", "later"));
    restart();
    EXPECT_THAT(listed(), ElementsAre("not shown", "later"));
    m_center.set(kAllowed);
    fail(m_now + 2 * kMinute);
    EXPECT_THAT(listed(), ElementsAre("not shown", "later"));
    m_missed->markSeen();
    m_center.set(kAllowed);
    wait(1);
    fail(m_now + 2 * kMinute);
    EXPECT_THAT(listed(), IsEmpty()) << "they wait still, and the user has seen them";
    m_center.set(kAllowed);
    add("only now", m_clock.now() + 1);
    wait(2);
    m_center.set({.authorization = AuthorizationStatus::unavailable});
    add("while nobody knows", m_clock.now() + 1);
    wait(2);
    m_center.set(AuthorizationStatus::unavailable, "It is gone.");
    EXPECT_THAT(listed(), ElementsAre("while nobody knows"));
}

TEST_F(MissedRemindersTest, WhatWasShownWhileItDidNotRunIsNotListed) {
    start();
    m_missed.reset();
    add("shown meanwhile", m_now + kMinute);
    add("waits", m_now + 2 * kMinute);
    wait(3 * kMinute);
    const auto listedWith = [&](std::optional<Instant> waitingSince) {
        m_center.set({.authorization = AuthorizationStatus::unavailable,
                      .reason = "Nobody is there.",
                      .waitingSince = waitingSince});
        m_listed.reset();
        restart();
        m_board.setIsArchived(true);
        m_store.context.save();
        m_board.setIsArchived(false);
        m_store.context.save();
        return listed();
    };
    EXPECT_THAT(listedWith(std::nullopt), ElementsAre("shown meanwhile", "waits"));
    EXPECT_THAT(listedWith(m_now + 2 * kMinute), ElementsAre("waits"));
    EXPECT_THAT(listedWith(Instant::distantFuture()), IsEmpty());
    add("new", m_clock.now() + 1);
    wait(2);
    EXPECT_THAT(listed(), ElementsAre("new"));
}

TEST_F(MissedRemindersTest, AFirstStartListsNothingThatCameDueBefore) {
    m_seen.reset();
    add("long ago", m_now + -kMinute);
    start();
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(m_seen, m_now);
    m_missed.reset();
    add("since then", m_now + kMinute);
    wait(2 * kMinute);
    start();
    EXPECT_THAT(listed(), ElementsAre("since then"));

    m_missed.reset();
    m_seen.reset();
    m_center.set({.authorization = AuthorizationStatus::unavailable,
                  .reason = "Nobody is there.",
                  .waitingSince = m_now + kMinute});
    start();
    EXPECT_THAT(listed(), ElementsAre("since then")) << "an agent holds it, and could not show it";
}

TEST_F(MissedRemindersTest, WhatIsShownWhereNobodyCanAnswerOrIsDisturbedIsListedAndItIsSaidWhy) {
    using Cause = MissedReminders::Cause;
    m_center.set(kAllowed);
    start();
    EXPECT_EQ(m_missed->cause(), std::nullopt);
    struct {
        const char* content;
        ReminderCenter::Status status;
        Cause cause;
    } const cases[] = {
        {"quieted", {.authorization = kAllowed, .isQuieted = true}, Cause::quieted},
        {"without buttons", {.authorization = kAllowed, .canAct = false}, Cause::unanswerable},
        {"both", {.authorization = kAllowed, .canAct = false, .isQuieted = true}, Cause::quieted},
        {"off", {.authorization = kDenied, .isQuieted = true}, Cause::notShown},
    };
    for (const auto& each : cases) {
        m_center.set(each.status);
        auto& entry = add(each.content, m_clock.now() + kMinute);
        wait(2 * kMinute);
        EXPECT_THAT(listed(), ElementsAre(each.content));
        EXPECT_EQ(m_missed->cause(), each.cause) << each.content;
        m_center.set(kAllowed);
        entry.setContent(std::string(each.content) + "!");
        m_store.context.save();
        EXPECT_EQ(m_missed->cause(), each.cause) << "why it was missed stays as it was";
        m_missed->markSeen();
    }
    m_center.set(cases[0].status);
    add("a", m_clock.now() + kMinute);
    wait(2 * kMinute);
    m_center.set(kDenied);
    add("b", m_clock.now() + kMinute);
    wait(2 * kMinute);
    EXPECT_THAT(listed(), ElementsAre("a", "b"));
    EXPECT_EQ(m_missed->cause(), std::nullopt) << "there are two reasons";
}

TEST_F(MissedRemindersTest, WhatIsListedStaysOverStartsUntilItIsSeenWhoeverShowsTheNext) {
    using Cause = MissedReminders::Cause;
    const ReminderCenter::Status quieted{.authorization = kAllowed, .isQuieted = true};
    m_center.set(kAllowed);
    add("shown before", m_now + kMinute);
    start();
    wait(2 * kMinute);
    m_center.set(quieted);
    add("quieted", m_clock.now() + kMinute);
    wait(2 * kMinute);
    EXPECT_EQ(m_missed->cause(), Cause::quieted);
    m_missed.reset();
    add("shown meanwhile", m_clock.now() + kMinute);
    wait(2 * kMinute);
    for (const auto& status :
         {ReminderCenter::Status{}, {.authorization = kAllowed}, ReminderCenter::Status{}}) {
        m_center.set(status);
        restart();
        EXPECT_THAT(listed(), ElementsAre("quieted"));
        EXPECT_EQ(m_missed->cause(), std::nullopt) << "nobody knows any more";
    }
    m_center.set({.authorization = AuthorizationStatus::unavailable,
                  .reason = "It is gone.",
                  .waitingSince = Instant::distantFuture()});
    EXPECT_THAT(listed(), ElementsAre("quieted")) << "no other waits";
    m_center.set(kAllowed);
    m_missed->markSeen();
    restart();
    EXPECT_THAT(listed(), IsEmpty());
    EXPECT_EQ(m_listed, std::nullopt);
}

TEST_F(MissedRemindersTest, WhyOneWasMissedIsSaidOnlyOfWhatCameDueMeanwhileAndStaysSoWhenReadAnew) {
    using Cause = MissedReminders::Cause;
    add("maybe shown", m_now + kMinute);
    wait(2 * kMinute);
    m_center.set({.authorization = kAllowed, .isQuieted = true});
    start();
    EXPECT_THAT(listed(), ElementsAre("maybe shown"));
    EXPECT_EQ(m_missed->cause(), std::nullopt)
        << "nobody was quieted at that time, for all it knows";
    m_missed->markSeen();
    add("quieted", m_clock.now() + kMinute);
    wait(2 * kMinute);
    EXPECT_EQ(m_missed->cause(), Cause::quieted);

    m_center.set(kAllowed);
    for (int i = 0; i < 600; ++i) { // more than are looked up one by one
        m_store.add({.content = "many"}, &m_board);
    }
    m_store.context.save();
    EXPECT_THAT(listed(), ElementsAre("quieted"));
    EXPECT_EQ(m_missed->cause(), Cause::quieted);
}

TEST_F(MissedRemindersTest, AStoreOfWhichNothingCanBeKeptListsNothing) {
    MissedReminders missed(m_store.context, m_center, m_scheduleClock, std::nullopt);
    add("a", m_now + 1);
    wait(kMinute);
    missed.markSeen();
    EXPECT_THAT(missed.entries(), IsEmpty());
}

} // namespace
} // namespace korvex::schedule
