#include "schedule/CompleteTodoIntent.h"

#include "FakeNotificationCenter.h"
#include "TodoStore.h"
#include "schedule/ReminderScheduler.h"
#include "schedule/WidgetRefreshService.h"
#include "support/FakeClock.h"
#include "support/FakeRunLoop.h"
#include "support/SilentLog.h"
#include "support/TemporaryFolder.h"

#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

namespace korvex::schedule {
namespace {

using base::Instant;
using model::Entry;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::TodoStore;

constexpr Instant kNow{1000};

class CompleteTodoIntentTest : public ::testing::Test {
protected:
    CompleteTodoIntentTest() { scheduler.start(*store.container); }

    Entry& add(model::EntryFields fields, model::Board* on = nullptr) {
        fields.content = "todo";
        auto& entry = store.add(std::move(fields), on ? on : &board);
        store.context.save();
        return entry;
    }
    bool complete(std::string_view todoID) {
        const auto isCompletedNow = intent.complete(todoID, store.context, kNow, &center);
        runLoop.runPosted();
        return isCompletedNow;
    }

    tests::TemporaryFolder folder;
    std::filesystem::path file = folder / "Primary.store";
    TodoStore store{file};
    model::Board& board = store.addBoard();
    tests::FakeNotificationCenter center;
    tests::FakeClock clock{kNow};
    tests::FakeRunLoop runLoop;
    ReminderScheduler scheduler{center, clock, runLoop, store.log};
    std::vector<std::string> reloaded;
    WidgetRefreshService widgets{[this](std::string_view kind) { reloaded.emplace_back(kind); },
                                 store.log};
    CompleteTodoIntent intent{scheduler, widgets, store.log};
    int announced = 0;
    CompleteTodoIntent::SharedStore shared{
        .openExisting =
            [this] {
                return store::ModelContainer::open(
                    model::currentSchema(),
                    {.file = file, .whenMissing = store::ModelConfiguration::Missing::refuse},
                    store.log);
            },
        .announceChange = [this] { ++announced; },
    };
};

TEST_F(CompleteTodoIntentTest, ATodoIsCompletedOnceAndItsReminderGoes) {
    auto& todo = add({.typeRawValue = "todo", .reminderDate = kNow + 60});
    scheduler.reconcileStartedStore();
    runLoop.runPosted();
    ASSERT_THAT(center.requests, testing::SizeIs(1));

    EXPECT_TRUE(complete(todo.id().text()));
    EXPECT_EQ(todo.completedAt(), kNow);
    EXPECT_THAT(center.requests, IsEmpty());
    EXPECT_THAT(reloaded, ElementsAre("Korvex.BoardTodos"));
    EXPECT_EQ(store.log.count("Requested todo widget timeline reloads"), 1U);

    // A notification that shows it all the same is stale.
    center.forgetCalls();
    todo.setCompletedAt(kNow - 5);
    store.context.save();
    EXPECT_FALSE(complete(todo.id().text()));
    EXPECT_EQ(todo.completedAt(), kNow - 5);
    EXPECT_THAT(center.cancelled,
                ElementsAre(ElementsAre(ReminderNotification::identifier(todo.id()))));
    EXPECT_FALSE(intent.complete(todo.id().text(), store.context, kNow, nullptr));
    EXPECT_THAT(reloaded, testing::SizeIs(1));
}

TEST_F(CompleteTodoIntentTest, WhatIsRefusedChangesNothing) {
    auto& text = add({.typeRawValue = ""});
    auto& archived = add({.typeRawValue = "todo"}, &store.addBoard(1, true));
    auto& completed = add({.typeRawValue = "todo", .isCompleted = true}, &store.addBoard(2, true));
    struct Case {
        std::string id;
        std::string line;
    };
    for (const auto& [id, line] :
         {Case{"", "Invalid todo UUID"}, Case{"todo-reminder-1", "Invalid todo UUID"},
          Case{base::Uuid::random().text(), "Todo not found"},
          Case{text.id().text(), "Rejected completion of a text entry"},
          Case{archived.id().text(), ""}, Case{completed.id().text(), ""}}) {
        const auto revision = store.container->revision();
        const auto lines = store.log.lines().size();
        EXPECT_FALSE(complete(id)) << id;
        EXPECT_EQ(store.container->revision(), revision);
        ASSERT_EQ(store.log.lines().size(), lines + (line.empty() ? 0 : 1)) << id;
        if (!line.empty()) {
            EXPECT_EQ(store.log.lines().back().message, line);
        }
    }
    EXPECT_THAT(center.cancelled, IsEmpty());
    EXPECT_THAT(reloaded, IsEmpty());
    EXPECT_FALSE(intent.perform(archived.id().text(), shared, kNow, center));
    store.context.refresh();
    EXPECT_FALSE(archived.isCompleted());
}

TEST_F(CompleteTodoIntentTest, AProgramWithoutTheStoreOpenCompletesInIt) {
    auto& todo = add({.typeRawValue = "todo"});
    EXPECT_TRUE(intent.perform(todo.id().text(), shared, kNow, center));
    store.context.refresh();
    EXPECT_TRUE(todo.isCompleted());
    EXPECT_EQ(announced, 1);
    EXPECT_THAT(reloaded, testing::SizeIs(1));

    reloaded.clear();
    EXPECT_FALSE(intent.perform(todo.id().text(), shared, kNow, center));
    EXPECT_EQ(announced, 1) << "nothing was changed";
    EXPECT_THAT(reloaded, testing::SizeIs(1)) << "the widget shows what is no longer stored";
    center.failing = "cancel";
    store.log.expectError("Widget completion failed: ");
    EXPECT_ANY_THROW(intent.perform(todo.id().text(), shared, kNow, center));
    EXPECT_THAT(reloaded, testing::SizeIs(2));
}

TEST_F(CompleteTodoIntentTest, AFailureIsLoggedAndThrown) {
    auto& todo = add({.typeRawValue = "todo"});
    const auto fails = [&](store::StoreErrorCase expected) {
        try {
            intent.perform(todo.id().text(), shared, kNow, center);
        } catch (const store::StoreError& error) {
            store.log.expectError(std::string("Widget completion failed: ") + error.what() + " (" +
                                  std::to_string(error.code()) + ")");
            return error.which() == expected;
        }
        return false;
    };
    SQLite::Database(file.string(), SQLite::OPEN_READWRITE)
        .exec("CREATE TRIGGER fault BEFORE INSERT ON ChangeLog "
              "BEGIN SELECT RAISE(ABORT, 'the disk'); END");
    store.log.expectError("Entry persistence failed; rolled back: ");
    EXPECT_TRUE(fails(store::StoreErrorCase::invalidRecord));
    store.context.refresh();
    EXPECT_FALSE(todo.isCompleted());

    file = folder / "none" / "Primary.store";
    EXPECT_TRUE(fails(store::StoreErrorCase::missing));
    EXPECT_FALSE(std::filesystem::exists(file.parent_path()));
    shared.openExisting = []() -> std::unique_ptr<store::ModelContainer> {
        throw std::runtime_error("no memory");
    };
    store.log.expectError("Widget completion failed: no memory (0)");
    EXPECT_ANY_THROW(intent.perform(todo.id().text(), shared, kNow, center));
    EXPECT_EQ(announced, 0);
}

/// Completes these todos as a program of its own, once nobody can write to `start` any more, and
/// writes for each whether it was the one. Returns the program's exit status.
int completeAll(const std::filesystem::path& file, const std::vector<std::string>& ids, Instant now,
                int start, int answers) {
    try {
        tests::SilentLog log;
        tests::FakeNotificationCenter center;
        services::NoReminders reminders;
        services::NoWidgets widgets;
        const CompleteTodoIntent intent(reminders, widgets, log);
        const auto container =
            store::ModelContainer::open(model::currentSchema(), {.file = file}, log);
        store::ModelContext context(*container);
        char byte = 0;
        if (::read(start, &byte, 1) != 0) {
            return 1;
        }
        for (const auto& id : ids) {
            const auto isFirst = intent.complete(id, context, now, &center);
            byte = isFirst ? '1' : '0';
            if (::write(answers, &byte, 1) != 1 || center.cancelled.empty() != isFirst) {
                return 1;
            }
            center.forgetCalls();
        }
    } catch (const std::exception&) {
        return 1;
    }
    return 0;
}

TEST(CompleteTodoIntentRace, OfTwoProgramsOneCompletesATodo) {
    const tests::TemporaryFolder folder;
    const auto file = folder / "Primary.store";
    constexpr int kTodos = 150;
    std::vector<std::string> ids;
    {
        TodoStore store(file);
        auto& board = store.addBoard();
        for (int i = 0; i < kTodos; ++i) {
            ids.push_back(store.add({.typeRawValue = "todo", .sortOrder = i}, &board).id().text());
        }
        store.context.save();
    }
    constexpr Instant kMoments[] = {{100}, {200}};
    int start[2];
    ASSERT_EQ(::pipe(start), 0);
    int answers[2][2];
    pid_t children[2];
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(::pipe(answers[i]), 0);
        children[i] = ::fork();
        if (children[i] == 0) {
            ::close(start[1]);
            ::_exit(completeAll(file, ids, kMoments[i], start[0], answers[i][1]));
        }
        ::close(answers[i][1]);
    }
    ::close(start[0]);
    ::close(start[1]);
    std::string said[2];
    for (int i = 0; i < 2; ++i) {
        char answer = 0;
        while (::read(answers[i][0], &answer, 1) == 1) {
            said[i] += answer;
        }
        ::close(answers[i][0]);
        int status = 1;
        ::waitpid(children[i], &status, 0);
        EXPECT_EQ(status, 0);
    }
    ASSERT_EQ(said[0].size(), ids.size());
    ASSERT_EQ(said[1].size(), ids.size());
    TodoStore store(file);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_NE(said[0][i], said[1][i]) << "todo " << i;
        const auto* const todo = store.context.find<Entry>(*base::Uuid::parse(ids[i]));
        ASSERT_TRUE(todo && todo->isCompleted());
        EXPECT_EQ(todo->completedAt(), kMoments[said[0][i] == '1' ? 0 : 1]);
    }
    EXPECT_THAT(store.container->check().problems, IsEmpty());
}

} // namespace
} // namespace korvex::schedule
