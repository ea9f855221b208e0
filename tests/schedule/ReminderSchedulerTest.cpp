#include "schedule/ReminderScheduler.h"

#include "FakeNotificationCenter.h"
#include "TodoStore.h"
#include "model/EntryContentLimit.h"
#include "support/FakeClock.h"
#include "support/FakeRunLoop.h"

#include <gmock/gmock.h>

#include <limits>
#include <random>
#include <set>

namespace korvex::schedule {
namespace {

using base::Instant;
using model::Entry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

constexpr Instant kNow{1000};

class ReminderSchedulerTest : public ::testing::Test {
protected:
    Entry& add(const std::string& content, std::optional<Instant> reminder,
               const std::string& type = "todo") {
        auto& entry =
            store.add({.typeRawValue = type, .content = content, .reminderDate = reminder}, &board);
        store.context.save();
        return entry;
    }
    static std::string identifier(const Entry& entry) {
        return ReminderNotification::identifier(entry.id());
    }
    void reconcile() { scheduler->reconcile(store.context, clock.now()); }
    /// The code of what a reconcile throws.
    std::optional<int> refusal() {
        try {
            reconcile();
        } catch (const base::Error& error) {
            return error.code();
        }
        return std::nullopt;
    }

    tests::TodoStore store;
    model::Board& board = store.addBoard();
    tests::FakeNotificationCenter center;
    tests::FakeClock clock{kNow};
    tests::FakeRunLoop runLoop;
    std::optional<ReminderScheduler> scheduler{std::in_place, center, clock, runLoop, store.log};
};

/// Whatever the store and the notification centre hold: afterwards the centre has what the store
/// asks for, by what its records say one by one, and nothing else was touched.
TEST_F(ReminderSchedulerTest, AnyStoreAndAnyPendingSetBecomeEqual) {
    std::mt19937 random(12);
    const auto pick = [&](int below) { return static_cast<int>(random() % unsigned(below)); };
    const std::string tooLong(model::EntryContentLimit::kMaximumCharacters + 1, 'a');
    const Instant dates[] = {kNow,
                             kNow - 1,
                             kNow + 1,
                             {kNow.seconds + 0.25},
                             Instant::distantFuture(),
                             Instant::distantFuture() + 1,
                             {std::numeric_limits<double>::infinity()},
                             Instant::distantPast()};
    const std::string contents[] = {"", "Buy milk", "Пора 🕐", tooLong};
    for (int round = 0; round < 60; ++round) {
        for (int i = pick(12); i > 0; --i) {
            auto& entry =
                add(contents[pick(4)], pick(5) == 0 ? std::nullopt : std::optional(dates[pick(8)]),
                    pick(6) == 0 ? "" : "todo");
            entry.setIsCompleted(pick(5) == 0);
        }
        auto entries = store.context.fetch<Entry>();
        for (auto* const entry : entries) {
            if (pick(8) == 0) {
                entry->setSchedule({.reminderDate = dates[pick(8)]});
            }
        }
        store.context.save();
        std::map<std::string, ReminderRequest> wanted;
        for (const auto* const entry : store.context.fetch<Entry>()) {
            const auto date = entry->reminderDate();
            if (entry->isOpenTodo() && date && date->isValid() && *date > kNow) {
                wanted[identifier(*entry)] = {
                    entry->id(), *date,
                    std::string(model::EntryContentLimit::preview(entry->content()))};
            }
        }
        // Half of what is pending is changed, lost, or never was asked for.
        for (auto& [name, request] : center.requests) {
            if (pick(4) == 0) {
                request.body += "!";
            } else if (pick(4) == 0) {
                request.date = request.date + 1;
            }
        }
        std::erase_if(center.requests, [&](const auto&) { return pick(5) == 0; });
        for (int i = pick(4); i > 0; --i) {
            const auto stray = base::Uuid::random();
            center.requests[ReminderNotification::identifier(stray)] = {stray, kNow + 5, "stray"};
        }
        std::set<std::string> stale;
        std::set<std::string> missing;
        for (const auto& [name, request] : center.requests) {
            if (!wanted.contains(name) || wanted[name] != request) {
                stale.insert(name);
            }
        }
        for (const auto& [name, request] : wanted) {
            if (!center.requests.contains(name) || stale.contains(name)) {
                missing.insert(name);
            }
        }

        center.forgetCalls();
        const auto lines = store.log.count("Scheduled reminder for entry ");
        reconcile();
        EXPECT_EQ(store.log.count("Scheduled reminder for entry "), lines + missing.size());
        ASSERT_EQ(center.requests, wanted) << "round " << round;
        ASSERT_EQ(center.cancelled.size(), stale.empty() ? 0U : 1U);
        if (!stale.empty()) {
            EXPECT_THAT(center.cancelled[0], testing::UnorderedElementsAreArray(stale));
        }
        std::vector<std::string> added;
        for (const auto& request : center.added) {
            added.push_back(ReminderNotification::identifier(request.entryID));
        }
        EXPECT_THAT(added, testing::UnorderedElementsAreArray(missing));

        center.forgetCalls();
        reconcile();
        EXPECT_THAT(center.added, IsEmpty());
        EXPECT_THAT(center.cancelled, IsEmpty());
    }
    for (const auto* const entry : store.context.fetch<Entry>()) {
        ASSERT_EQ(store.log.count(entry->id().text()), 0U) << "nobody's identifier is logged";
    }
}

TEST_F(ReminderSchedulerTest, WordsThatAreNoTextBecomeOne) {
    add(std::string("a\xff\0b", 4), kNow + 10);
    reconcile();
    ASSERT_THAT(center.added, SizeIs(1));
    EXPECT_EQ(center.added[0].body, "a\uFFFDb");
    reconcile();
    EXPECT_THAT(center.added, SizeIs(1));
}

TEST_F(ReminderSchedulerTest, AFailureIsSaidAndTheNextReconcileRepairsIt) {
    for (const std::string failing : {"pending", "add", "cancel"}) {
        SCOPED_TRACE(failing);
        auto& first = add("first", kNow + 10);
        add("second", kNow + 20);
        reconcile();
        first.setSchedule({.reminderDate = kNow + 11});
        add("third", kNow + 30);
        store.context.save();
        const auto before = scheduler->schedulingErrorMessage();
        const auto lines = store.log.count("Scheduled reminder for entry ");
        int changes = 0;
        const auto changed = scheduler->didChange().connect([&] { ++changes; });

        store.log.expectError("Reminder reconciliation failed; code " +
                              std::to_string(int(store::StoreErrorCase::full)));
        center.failing = failing;
        center.succeeding = failing == "add" ? 1 : 0;
        EXPECT_EQ(refusal(), int(store::StoreErrorCase::full));
        EXPECT_EQ(before, std::nullopt);
        EXPECT_EQ(store.log.count("Scheduled reminder for entry "), lines)
            << "a client may take all of them back";
        EXPECT_EQ(
            scheduler->schedulingErrorMessage(),
            "Reminders could not be updated on this computer. Try again by reopening Korvex.");
        // What succeeds alone does not make up for it.
        center.failing.clear();
        const base::Uuid nobody[] = {base::Uuid::random()};
        scheduler->removePending(nobody);
        EXPECT_TRUE(scheduler->schedulingErrorMessage());

        reconcile();
        EXPECT_EQ(scheduler->schedulingErrorMessage(), std::nullopt);
        EXPECT_EQ(changes, 2);
        EXPECT_EQ(center.requests[identifier(first)].date, kNow + 11);
        EXPECT_EQ(center.requests.size(), store.context.count<Entry>());
    }
}

TEST_F(ReminderSchedulerTest, WhatNeedsNoReminderIsWithdrawnAtOnce) {
    auto& todo = add("todo", kNow + 10);
    auto& other = add("other", kNow + 10);
    reconcile();
    const base::Uuid ids[] = {todo.id()};
    scheduler->removePending(ids);
    EXPECT_THAT(center.cancelled, ElementsAre(ElementsAre(identifier(todo))));
    EXPECT_THAT(center.requests, ElementsAre(testing::Key(identifier(other))));

    center.failing = "cancel";
    store.log.expectError("Reminder reconciliation failed; code ");
    scheduler->removePending(ids);
    EXPECT_TRUE(scheduler->schedulingErrorMessage());
}

TEST_F(ReminderSchedulerTest, OnlyTheNewestRequestIsCarriedOut) {
    scheduler->requestReconcile();
    EXPECT_EQ(runLoop.postedCount(), 0U) << "before the start there is no store";
    scheduler->start(*store.container);
    EXPECT_EQ(center.categories, 1);
    EXPECT_EQ(scheduler->authorizationStatus(), AuthorizationStatus::authorized);
    add("asked for after the request", kNow + 10);
    tests::TodoStore other;
    other.add({.typeRawValue = "todo", .content = "other", .reminderDate = kNow + 10},
              &other.addBoard());
    other.context.save();
    scheduler->requestReconcile(*other.container);
    scheduler->requestReconcile();
    scheduler->reconcileStartedStore();
    EXPECT_THAT(center.added, IsEmpty());
    runLoop.runPosted();
    ASSERT_THAT(center.added, SizeIs(1));
    EXPECT_EQ(center.added[0].body, "asked for after the request");

    scheduler->requestReconcile(*other.container);
    runLoop.runPosted();
    ASSERT_THAT(center.requests, SizeIs(1));
    EXPECT_EQ(center.requests.begin()->second.body, "other");

    center.failing = "pending";
    store.log.expectError("Reminder reconciliation failed; code ");
    scheduler->requestReconcile();
    runLoop.runPosted();
    EXPECT_TRUE(scheduler->schedulingErrorMessage());

    center.failing.clear();
    scheduler->requestReconcile();
    scheduler->stop();
    scheduler->requestReconcile();
    runLoop.advance(1000);
    EXPECT_EQ(center.requests.begin()->second.body, "other") << "its store may be gone";
    scheduler->start(*store.container);
    scheduler.reset();
    runLoop.runPosted();
    EXPECT_EQ(center.requests.begin()->second.body, "other");
}

TEST_F(ReminderSchedulerTest, AFailedRequestIsTriedAgainLaterAndLater) {
    scheduler->start(*store.container);
    runLoop.runPosted();
    add("todo", kNow + 10);
    store.log.expectError("Reminder reconciliation failed; code ");
    const auto fail = [&] {
        center.failing = "pending";
        center.succeeding = 0;
    };
    fail();
    scheduler->requestReconcile();
    runLoop.runPosted();
    double last = 0;
    for (int i = 0; i < 20; ++i) {
        ASSERT_THAT(runLoop.delays(), SizeIs(1));
        const auto delay = runLoop.delays()[0];
        EXPECT_TRUE(delay > last || delay == 300) << delay;
        last = delay;
        fail();
        runLoop.advanceToNextTimer();
    }
    EXPECT_EQ(last, 300);
    EXPECT_THAT(center.added, IsEmpty());

    fail();
    scheduler->requestReconcile();
    EXPECT_THAT(runLoop.delays(), IsEmpty()) << "the newer request takes its place";
    runLoop.runPosted();
    ASSERT_THAT(runLoop.delays(), SizeIs(1));
    runLoop.advanceToNextTimer();
    EXPECT_THAT(center.added, SizeIs(1));
    EXPECT_THAT(runLoop.delays(), IsEmpty());
    EXPECT_EQ(scheduler->schedulingErrorMessage(), std::nullopt);
    fail();
    scheduler->requestReconcile();
    runLoop.runPosted();
    ASSERT_THAT(runLoop.delays(), SizeIs(1));
    EXPECT_LT(runLoop.delays()[0], 10) << "it had succeeded";
}

TEST_F(ReminderSchedulerTest, PermissionIsAskedForWhereItIsNotDetermined) {
    using enum AuthorizationStatus;
    using Request = ReminderScheduler::RequestIfNeeded;
    center.status = notDetermined;
    scheduler->refreshAuthorization(Request::no);
    EXPECT_EQ(scheduler->statusLabel(), "Not Requested");
    EXPECT_EQ(center.asked, 0);

    center.failing = "requestAuthorization";
    store.log.expectError("Notification permission request failed; code " +
                          std::to_string(int(store::StoreErrorCase::full)));
    scheduler->refreshAuthorization(Request::yes);
    EXPECT_EQ(scheduler->permissionErrorMessage(),
              "Notification permission could not be requested. Your reminder can still be saved.");
    center.failing.clear();
    scheduler->refreshAuthorization(Request::yes);
    EXPECT_EQ(scheduler->permissionErrorMessage(), std::nullopt);
    EXPECT_EQ(scheduler->authorizationStatus(), denied);
    scheduler->refreshAuthorization(Request::yes);
    EXPECT_EQ(center.asked, 2) << "a refusal is an answer";

    for (const auto& [status, label] :
         std::vector<std::pair<AuthorizationStatus, std::string>>{{denied, "Disabled"},
                                                                  {authorized, "Allowed"},
                                                                  {provisional, "Allowed"},
                                                                  {ephemeral, "Allowed"},
                                                                  {unavailable, "Unavailable"}}) {
        EXPECT_EQ(statusLabel(status), label);
    }
}

} // namespace
} // namespace korvex::schedule
