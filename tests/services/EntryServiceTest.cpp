#include "services/EntryNumbering.h"

#include "ServiceFixture.h"

#include "backup/BackupDocument.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>

namespace korvex::tests {

using model::Entry;
using model::EntryPlacement;
using model::EntryServiceErrorCase;
using model::TodoSchedule;
using services::EntryService;
using testing::ElementsAre;

class EntryServiceTest : public ServiceFixture {};

TEST_F(EntryServiceTest, CreationPlacesABatchAndCompletedTodosFollow) {
    auto five = add({"a", "b", "c", "d", "e", "done"});
    entries->completeTodo(*five[5], kNow);
    const auto created = entries->createTodos(
        {.contents = {"  x ", "y", "z\r\n"}, .board = *board, .after = five[1]->id(), .now = kNow});
    EXPECT_THAT(texts(created), ElementsAre("x", "y", "z"));
    EXPECT_EQ(created[0]->sortOrder(), 2);
    EXPECT_EQ(created[2]->sortOrder(), 4);
    EXPECT_THAT(storedOrder(*board), ElementsAre("a", "b", "x", "y", "z", "c", "d", "e", "done"));
    // `before` decides when both are given.
    entries->createTodos({.contents = {"first"},
                          .board = *board,
                          .after = five[4]->id(),
                          .before = five[0]->id(),
                          .now = kNow});
    EXPECT_THAT(storedOrder(*board),
                ElementsAre("first", "a", "b", "x", "y", "z", "c", "d", "e", "done"));
}

TEST_F(EntryServiceTest, AppendingWithoutReadingTheBoardKeepsItsOrderAndMendsABrokenOne) {
    const auto appendElsewhere = [&](std::vector<std::string> contents) {
        const auto elsewhere = openContainer();
        store::ModelContext theirs(*elsewhere);
        EntryService service(theirs, reminders, widgets, log);
        model::Board& same = *theirs.find<model::Board>(board->id());
        service.createTodos({.contents = std::move(contents), .board = same, .now = kNow});
        return same.entriesAreLoaded();
    };
    EXPECT_FALSE(appendElsewhere({"first"}));
    auto three = add({"a", "done early", "done late"});
    entries->completeTodo(*three[2], kNow);
    entries->completeTodo(*three[1], kNow);
    EXPECT_FALSE(appendElsewhere({"x", "y"}));
    EXPECT_THAT(storedOrder(*board),
                ElementsAre("first", "a", "x", "y", "done early", "done late"));
    context->refresh();
    for (const std::int64_t broken : {std::int64_t{0}, std::int64_t{9}, std::int64_t{-1}}) {
        three[0]->setSortOrder(broken);
        context->save();
        EXPECT_TRUE(appendElsewhere({"z"})) << broken;
        storedOrder(*board);
        context->refresh();
    }
}

TEST_F(EntryServiceTest, ARefusedCreationLeavesNothingBehind) {
    auto todos = add({"new", "done"});
    entries->completeTodo(*todos[1], kNow);
    entries->updateTodo(*todos[0], " a\n", {2000});
    EXPECT_EQ(todos[0]->updatedAt(), base::Instant{2000});
    services::BoardService other(*context, reminders, widgets, log);
    model::Board& work = other.createBoard("Work", kNow);
    const auto elsewhere = entries->createTodos({.contents = {"w"}, .board = work, .now = kNow});
    const auto before = container->revision();
    const std::string long10000(10'000, 'x');
    std::string emoji;
    for (int i = 0; i < 10'000; ++i) {
        emoji += "\U0001F468\u200D\U0001F469\u200D\U0001F467";
    }
    const TodoSchedule remindedNow{.reminderDate = kNow};
    const struct {
        const char* name;
        std::vector<std::string> contents;
        TodoSchedule schedule;
        std::optional<base::Uuid> after;
        EntryServiceErrorCase expected;
    } cases[] = {
        {"no content", {}, {}, {}, EntryServiceErrorCase::emptyContent},
        {"a blank line among three", {"a", "  ", "c"}, {}, {}, EntryServiceErrorCase::emptyContent},
        {"10,003 characters with the spaces",
         {long10000 + "   "},
         {},
         {},
         EntryServiceErrorCase::contentTooLong},
        {"10,001 characters", {long10000 + "y"}, {}, {}, EntryServiceErrorCase::contentTooLong},
        {"10,001 emoji", {emoji + "\U0001F600"}, {}, {}, EntryServiceErrorCase::contentTooLong},
        {"over a mebibyte",
         {std::string(1'048'577, ' ')},
         {},
         {},
         EntryServiceErrorCase::contentTooLong},
        {"no such day",
         {"a"},
         TodoSchedule::dueOn(20250229),
         {},
         EntryServiceErrorCase::invalidSchedule},
        {"window the wrong way",
         {"a"},
         {.dueDate = base::Instant{5000}, .dueStartDate = base::Instant{5000}},
         {},
         EntryServiceErrorCase::invalidSchedule},
        {"reminder now", {"a"}, remindedNow, {}, EntryServiceErrorCase::pastReminder},
        {"the schedule is judged first", {}, remindedNow, {}, EntryServiceErrorCase::pastReminder},
        {"after a completed todo",
         {"a"},
         {},
         todos[1]->id(),
         EntryServiceErrorCase::invalidReorder},
        {"after another board's",
         {"a"},
         {},
         elsewhere[0]->id(),
         EntryServiceErrorCase::invalidReorder},
        {"after nothing known",
         {"a"},
         {},
         base::Uuid::random(),
         EntryServiceErrorCase::invalidReorder},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(entryRefusal([&] {
                      entries->createTodos({.contents = each.contents,
                                            .board = *board,
                                            .after = each.after,
                                            .now = kNow,
                                            .schedule = each.schedule});
                  }),
                  each.expected)
            << each.name;
    }
    for (const auto* const blank : {"", " \t\n"}) {
        EXPECT_EQ(entryRefusal([&] { entries->updateTodo(*todos[0], blank, kNow); }),
                  EntryServiceErrorCase::emptyContent);
    }
    EXPECT_EQ(container->revision(), before);
    EXPECT_THAT(storedOrder(*board), ElementsAre("a", "done"));
    EXPECT_EQ(add({emoji}).size(), 1U);
}

TEST_F(EntryServiceTest, ABoardOrEntryThatIsGoneIsRefused) {
    auto todos = add({"a"});
    Entry& todo = *todos[0];
    {
        const auto elsewhere = openContainer();
        store::ModelContext theirs(*elsewhere);
        services::BoardService(theirs, reminders, widgets, log)
            .deleteBoard(*theirs.find<model::Board>(board->id()));
    }
    const auto unavailable = EntryServiceErrorCase::entryUnavailable;
    EXPECT_EQ(entryRefusal([&] { add({"b"}); }), unavailable);
    EXPECT_EQ(entryRefusal([&] { entries->completeTodo(todo, kNow); }), unavailable);
    EXPECT_EQ(entryRefusal([&] { entries->restoreTodo(todo, kNow); }), unavailable);
    EXPECT_EQ(entryRefusal([&] { entries->updateTodo(todo, "b", kNow); }), unavailable);
    EXPECT_EQ(entryRefusal([&] { entries->updateSchedule(todo, {}, kNow); }), unavailable);
    EXPECT_EQ(entryRefusal([&] { entries->moveEntry(todo.id(), 1, *board); }), unavailable);
    EXPECT_EQ(store::ModelContext(*container).count<Entry>(), 0U);
}

TEST_F(EntryServiceTest, ARecordIsReadAgainByItsIdentifierAndMustBeOfTheSameContext) {
    auto& todo = *add({"a"}).front();
    store::ModelContext theirs(*container);
    auto& same = *theirs.find<Entry>(todo.id());
    auto& sameBoard = *theirs.find<model::Board>(board->id());
    Entry unsaved(model::EntryFields{.id = base::Uuid::random(), .typeRawValue = "todo"});
    const std::function<void()> strangers[]{
        [&] { entries->updateTodo(same, "b", kNow); },
        [&] { entries->deleteEntry(same); },
        [&] { entries->updateTodo(unsaved, "b", kNow); },
        [&] { entries->moveEntry(todo, sameBoard, kNow); },
        [&] { entries->createTodos({.contents = {"b"}, .board = sameBoard, .now = kNow}); },
        [&] { boards->renameBoard(sameBoard, "b", kNow); },
        [&] { boards->deleteBoard(sameBoard); },
    };
    for (const auto& operation : strangers) {
        EXPECT_EQ(entryRefusal(operation), EntryServiceErrorCase::entryUnavailable);
    }
    EXPECT_FALSE(theirs.hasChanges());
    // What was deleted and came back is another object; who holds the first means the same todo.
    const auto record = backup::recordOf(todo, board->id());
    entries->deleteEntry(todo);
    auto& restored = entries->restoreDeletedEntry(record);
    ASSERT_NE(&restored, &todo);
    entries->updateTodo(todo, "edited", kNow);
    EXPECT_EQ(restored.content(), "edited");
    entries->completeTodos(std::vector{&todo}, kNow);
    EXPECT_TRUE(restored.isCompleted());
}

TEST_F(EntryServiceTest, RemindersAndWidgetsAreToldOnceAStepWhenTheStoreIsFreeAndItsObserversKnow) {
    const auto todos = add({"a", "b"});
    // Another program that does not wait.
    const auto hasty = store::ModelContainer::open(
        model::currentSchema(),
        {.file = folder.path() / "Primary.store", .lockTimeout = std::chrono::milliseconds(0)},
        log);
    store::ModelContext elsewhere(*hasty);
    std::vector<std::string> told;
    reminders.asked = [&](std::string what) {
        told.push_back(std::move(what));
        EXPECT_NO_THROW(store::LockedStep step(elsewhere)) << "the lock is held";
    };
    const auto observing =
        context->didChange().connect([&](const auto&) { told.push_back("change"); });
    const auto reloads = widgets.reloads;
    {
        const store::LockedStep step(*context);
        entries->completeTodo(*todos[0], kNow);
        entries->completeTodo(*todos[1], kNow);
        EXPECT_TRUE(told.empty());
    }
    EXPECT_THAT(told, ElementsAre("change", "change", "remove", "reconcile"));
    EXPECT_EQ(reminders.removed.size(), 2U);
    EXPECT_EQ(widgets.reloads, reloads + 1);
    told.clear();
    boards->deleteBoard(*board);
    EXPECT_THAT(told, ElementsAre("change", "remove", "reconcile"));
}

TEST_F(EntryServiceTest, ATodoOperationRefusesATextEntry) {
    auto text = std::make_unique<Entry>(
        model::EntryFields{.id = base::Uuid::random(), .typeRawValue = "Todo"});
    text->setBoard(board);
    Entry& entry = context->insert(std::move(text));
    context->save();
    EXPECT_EQ(entryRefusal([&] { entries->completeTodo(entry, kNow); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(entryRefusal([&] { entries->updateSchedule(entry, {}, kNow); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_THAT(services::activeEntries(*board), ElementsAre(&entry));
    EXPECT_TRUE(services::activeTodos(*board).empty());
}

TEST_F(EntryServiceTest, AReadOnlyStoreRefusesBeforeAnythingIsMade) {
    add({"a"});
    const auto readOnly = openContainer(false);
    store::ModelContext reading(*readOnly);
    EntryService service(reading, reminders, widgets, log);
    model::Board& same = *reading.find<model::Board>(board->id());
    Entry& entry = *same.entries().front();
    const auto refused = EntryServiceErrorCase::readOnlyStore;
    EXPECT_EQ(
        entryRefusal([&] { service.createTodos({.contents = {"b"}, .board = same, .now = kNow}); }),
        refused);
    EXPECT_EQ(entryRefusal([&] { service.updateSchedule(entry, {}, kNow); }), refused);
    EXPECT_EQ(entryRefusal([&] { service.completeTodo(entry, kNow); }), refused);
    EXPECT_FALSE(reading.hasChanges());
    EXPECT_TRUE(reading.insertedRecords().empty());
}

TEST_F(EntryServiceTest, CompletingClosesTheGapAndRestoringClampsThePosition) {
    auto four = add({"a", "b", "c", "d"});
    entries->completeTodo(*four[1], kNow, base::Instant{5});
    EXPECT_THAT(storedOrder(*board), ElementsAre("a", "c", "d", "b"));
    EXPECT_EQ(four[1]->completedAt(), base::Instant{5});
    EXPECT_EQ(four[1]->updatedAt(), kNow);
    EXPECT_THAT(reminders.removed, ElementsAre(four[1]->id()));
    const auto revision = container->revision();
    entries->completeTodo(*four[1], {2000});
    EXPECT_EQ(container->revision(), revision) << "completing twice is one completion";

    entries->restoreTodo(*four[1], kNow, 99);
    EXPECT_THAT(storedOrder(*board), ElementsAre("a", "c", "d", "b"));
    EXPECT_FALSE(four[1]->completedAt());
    entries->completeTodo(*four[2], kNow);
    entries->restoreTodo(*four[2], kNow, -1);
    EXPECT_THAT(storedOrder(*board), ElementsAre("c", "a", "d", "b"));
    entries->completeTodo(*four[0], {30});
    entries->restoreTodo(*four[0], kNow);
    EXPECT_THAT(storedOrder(*board), ElementsAre("c", "d", "b", "a"));
    for (const auto& [todo, at] : {std::pair(0, 10), {3, 30}, {1, 20}}) {
        entries->completeTodo(*four[static_cast<std::size_t>(todo)], {double(at)});
    }
    EXPECT_THAT(texts(services::completedTodos(*board)), ElementsAre("d", "b", "a"))
        << "most recently completed first";
}

TEST_F(EntryServiceTest, AnUnchangedPastReminderMayStay) {
    const TodoSchedule reminded{.reminderDate = base::Instant{1500}};
    Entry& entry = *entries->createTodos(
        {.contents = {"a"}, .board = *board, .now = kNow, .schedule = reminded})[0];
    TodoSchedule later = reminded;
    later.dueDay = 20250310;
    entries->updateSchedule(entry, later, {2000});
    EXPECT_EQ(entry.schedule(), later);
    EXPECT_THAT(reminders.removed, testing::IsEmpty()) << "it may be about to be shown";
    later.reminderDate = base::Instant{1600};
    EXPECT_EQ(entryRefusal([&] { entries->updateSchedule(entry, later, {2000}); }),
              EntryServiceErrorCase::pastReminder);
    entries->updateSchedule(entry, {}, {2000});
    EXPECT_TRUE(entry.schedule().isEmpty());
    EXPECT_THAT(reminders.removed, ElementsAre(entry.id()));
}

TEST_F(EntryServiceTest, MovesFollowTheTargetAndRefuseStrangers) {
    auto four = add({"a", "b", "c", "d"});
    const auto id = [&](int i) { return four[static_cast<std::size_t>(i)]->id(); };
    entries->moveEntry(id(0), id(2), EntryPlacement::after, *board);
    EXPECT_THAT(storedOrder(*board), ElementsAre("b", "c", "a", "d"));
    entries->moveEntry(id(3), id(1), EntryPlacement::before, *board);
    EXPECT_THAT(storedOrder(*board), ElementsAre("d", "b", "c", "a"));
    entries->moveEntry(id(1), 2, *board);
    EXPECT_THAT(storedOrder(*board), ElementsAre("d", "c", "a", "b"));
    entries->moveEntry(id(1), -3, *board);
    EXPECT_THAT(storedOrder(*board), ElementsAre("b", "d", "c", "a"));
    for (const std::int64_t off :
         {std::int64_t{-1}, std::int64_t{0}, std::int64_t{4}, INT64_MAX, INT64_MIN}) {
        entries->moveEntry(id(1), off, *board);
    }
    EXPECT_THAT(storedOrder(*board), ElementsAre("b", "d", "c", "a"));

    entries->completeTodo(*four[2], kNow);
    const base::Uuid unknown = base::Uuid::random();
    for (const auto& [moved, target] :
         {std::pair(id(0), id(0)), std::pair(id(0), id(2)), std::pair(id(2), id(0)),
          std::pair(id(0), unknown), std::pair(unknown, id(0))}) {
        EXPECT_EQ(entryRefusal([&, moved = moved, target = target] {
                      entries->moveEntry(moved, target, EntryPlacement::before, *board);
                  }),
                  EntryServiceErrorCase::invalidReorder);
    }
    EXPECT_GT(log.count("Rejected reorder with missing, identical, completed, or "
                        "cross-board entries"),
              0U);
    EXPECT_THAT(storedOrder(*board), ElementsAre("b", "d", "a", "c"));
}

TEST_F(EntryServiceTest, EntriesWithOneOrderAreTakenByTimeThenIdentifier) {
    const auto make = [&](double createdAt, std::uint8_t last) {
        model::EntryFields fields{.typeRawValue = "todo", .createdAt = {createdAt}, .sortOrder = 3};
        fields.id.bytes[15] = last;
        auto entry = std::make_unique<Entry>(std::move(fields));
        entry->setBoard(board);
        return &context->insert(std::move(entry));
    };
    Entry* third = make(2, 1);
    Entry* second = make(1, 9);
    Entry* first = make(1, 8);
    EXPECT_THAT(services::activeEntries(*board), ElementsAre(first, second, third));
    EXPECT_FALSE(services::ordered(*first, *first));
    services::normalizeSortOrder(*board);
    context->save();
    storedOrder(*board);
}

TEST_F(EntryServiceTest, IdentifiersNeverReachTheLog) {
    Entry& entry = *add({"secret"})[0];
    entries->completeTodo(entry, kNow);
    EXPECT_GT(log.count("Created todo with identifier "), 0U);
    EXPECT_GT(log.count("Completed todo with identifier "), 0U);
    EXPECT_EQ(log.count(entry.id().text()), 0U);
    EXPECT_EQ(log.count("secret"), 0U);
}

} // namespace korvex::tests
