#include "TextFixture.h"

#include "services/StoreRules.h"
#include "support/FakeClock.h"

#include <gmock/gmock.h>

#include <functional>

namespace korvex::tests {

using backup::BackupDocument;
using model::Entry;
using model::EntryServiceErrorCase;
using model::TodoSchedule;
using testing::IsEmpty;

namespace {

class UndoTest : public TextFixture {
public:
    // For the tables of cases.
    using TextFixture::add;
    using TextFixture::board;
    using TextFixture::entries;
    using TextFixture::note;

protected:
    void SetUp() override {
        TextFixture::SetUp();
        entries =
            std::make_unique<services::EntryService>(*context, reminders, widgets, log, &undo);
        office = &boards->createBoard("Office", kNow);
        boards->initializeDefaultBoards(kNow);
        inbox = boards->inboxBoard();
    }

    Entry& found(const base::Uuid& id) { return *context->find<Entry>(id); }

    BackupDocument exported() { return tests::exported(*container); }

    /// What a second program does meanwhile.
    template <typename Work>
    void elsewhere(Work&& work) {
        const auto otherContainer = openContainer();
        store::ModelContext theirs(*otherContainer);
        services::EntryService others(theirs, reminders, widgets, log);
        work(others, theirs);
    }

    FakeClock clock{{9000}};
    services::UndoManager undo{clock};
    model::Board* office = nullptr;
    model::Board* inbox = nullptr;
};

/// What the fixture's store holds of a board and what it is like: "a [b] | done", texts in
/// brackets.
std::string listed(const BackupDocument& document, const base::Uuid& board) {
    std::string text;
    auto isActive = true;
    for (const auto& entry : document.entries) {
        if (entry.boardID != board) {
            continue;
        }
        if (isActive && entry.isCompleted) {
            text += "| ";
            isActive = false;
        }
        text += entry.type == "text" ? "[" + entry.content + "] " : entry.content + " ";
    }
    return text;
}

} // namespace

TEST_F(UndoTest, ActionsCarryTheNamesThatTheMenuShows) {
    const auto todos = add({"a", "b", "c"});
    auto& text = note("note");
    auto& whole = note("one two");
    EXPECT_FALSE(undo.canUndo()) << "a creation without a name cannot be undone";
    const std::vector<std::pair<std::string, std::function<void()>>> cases{
        {"Complete Todo", [&] { entries->completeTodo(*todos[0], kLater); }},
        {"Restore Todo", [&] { entries->restoreTodo(*todos[0], kLater); }},
        {"Move to Board", [&] { entries->moveEntry(*todos[1], *office, kLater); }},
        {"Move Entry", [&] { entries->moveEntry(todos[2]->id(), 1, *board); }},
        {"Edit Todo", [&] { entries->updateTodo(*todos[0], "new", kLater); }},
        {"Edit Text", [&] { entries->updateText(text, plain("new"), kLater); }},
        {"Change Schedule",
         [&] { entries->updateSchedule(*todos[0], TodoSchedule::dueOn(20250310), kLater); }},
        {"Change to Text", [&] { entries->changeType(*todos[2], model::EntryType::text, kLater); }},
        {"Complete Todos", [&] { entries->completeTodos(*board, kLater); }},
        {"Delete Entry", [&] { entries->updateText(text, plain(" \n"), kLater); }},
        {"New Todos",
         [&] {
             entries->createTodos(
                 {.contents = {"x", "y"}, .board = *board, .now = kLater, .undoName = "New Todos"});
         }},
        {"Split Text",
         [&] { entries->splitText(whole, plain("one"), plain("two"), kLater, "Split Text"); }},
    };
    for (const auto& [name, perform] : cases) {
        perform();
        EXPECT_EQ(undo.undoActionName(), name);
        EXPECT_FALSE(undo.nextUndo()->entries.empty()) << name;
        undo.undo();
        EXPECT_EQ(undo.redoActionName(), name);
        undo.redo();
        EXPECT_EQ(undo.undoActionName(), name);
        EXPECT_FALSE(undo.canRedo());
    }
    const auto before = undo.undoActionName();
    entries->moveEntry(todos[2]->id(), 0, *board);
    entries->deleteEntries(*office);
    EXPECT_EQ(undo.undoActionName(), before) << "nothing was moved, and emptying is for good";
}

TEST_F(UndoTest, AnUndoIsAChangeOfItsOwnMomentWhereTheChangeWasOne) {
    const auto id = add({"a", "b"}).front()->id();
    enum class Sets { now, nothing };
    const struct {
        const char* name;
        std::function<void(Entry&)> change;
        Sets sets;
    } cases[] = {
        {"completed", [&](Entry& todo) { entries->completeTodo(todo, kLater); }, Sets::now},
        {"edited", [&](Entry& todo) { entries->updateTodo(todo, "new", kLater); }, Sets::now},
        {"moved to a board", [&](Entry& todo) { entries->moveEntry(todo, *office, kLater); },
         Sets::now},
        {"moved to a place", [&](Entry& todo) { entries->moveEntry(todo, *board, kLater, 1); },
         Sets::now},
        {"dragged", [&](Entry& todo) { entries->moveEntry(todo.id(), 1, *board); }, Sets::nothing},
        {"deleted", [&](Entry& todo) { entries->deleteEntry(todo); }, Sets::nothing},
    };
    for (const auto& each : cases) {
        const auto before = found(id).updatedAt();
        each.change(found(id));
        clock.advance(10);
        undo.undo();
        EXPECT_EQ(found(id).updatedAt(), each.sets == Sets::now ? clock.now() : before)
            << each.name;
        clock.advance(10);
        undo.redo();
        if (each.sets == Sets::now) {
            EXPECT_EQ(found(id).updatedAt(), clock.now()) << each.name;
        }
        undo.undo();
    }
}

TEST_F(UndoTest, WhatChangesNothingIsNoStep) {
    auto& todo = *add({"a"}).front();
    auto& text = note("note");
    entries->updateTodo(todo, "a", kLater);
    entries->updateText(text, plain("note"), kLater);
    entries->updateSchedule(todo, {}, kLater);
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(todo.updatedAt(), kLater);

    services::EditingSession session;
    entries->updateTodo(todo, "ab", kLater, &session);
    EXPECT_TRUE(undo.canUndo());
    entries->updateTodo(todo, "a", kLater, &session);
    EXPECT_FALSE(undo.canUndo()) << "typed and taken away again";
    entries->updateTodo(todo, "abc", kLater, &session);
    undo.undo();
    EXPECT_EQ(todo.content(), "a");
}

TEST_F(UndoTest, WhatAnotherHasDeletedIsLeftOutOfAStep) {
    const struct {
        const char* name;
        std::function<std::vector<Entry*>(UndoTest&)> make;
        /// Of the entries, deleted by another.
        std::size_t gone;
        const char* undone;
        const char* redone;
    } cases[] = {
        {"completed",
         [](auto& test) {
             const auto todos = test.add({"a", "b", "c"});
             test.entries->completeTodos(*test.board, kLater);
             return todos;
         },
         1, "a c ", "| a c "},
        {"created",
         [](auto& test) {
             return test.entries->createTodos({.contents = {"a", "b", "c"},
                                               .board = *test.board,
                                               .now = kLater,
                                               .undoName = "New Todos"});
         },
         0, "", "b c "},
        {"split",
         [](auto& test) -> std::vector<Entry*> {
             auto& whole = test.note("one two");
             return {&test.entries->splitText(whole, plain("one"), plain(" two"), kLater, "Split")};
         },
         0, "[one two] ", "[one] "},
    };
    for (const auto& each : cases) {
        const auto made = each.make(*this);
        elsewhere([&](services::EntryService& others, store::ModelContext& theirs) {
            others.deleteEntry(*theirs.find<Entry>(made[each.gone]->id()));
        });
        undo.undo();
        EXPECT_EQ(undo.leftOut(), 1U) << each.name;
        EXPECT_EQ(listed(exported(), board->id()), each.undone) << each.name;
        undo.redo();
        EXPECT_EQ(undo.leftOut(), 0U) << each.name;
        EXPECT_EQ(listed(exported(), board->id()), each.redone) << each.name;
        entries->deleteEntries(*board);
    }
}

TEST_F(UndoTest, AnEntryGoesBackToItsPlaceAmongWhatCameMeanwhile) {
    const struct {
        const char* name;
        std::vector<std::string> todos;
        /// Of these, completed before, the first one first.
        std::vector<std::size_t> completed;
        std::function<void(UndoTest&, const std::vector<Entry*>&)> change;
        std::function<void(UndoTest&, const std::vector<Entry*>&)> meanwhile;
        const char* expected;
    } cases[] = {
        {"completed in the middle, one came before it",
         {"a", "b", "c", "d"},
         {},
         [](auto& test, const auto& todos) { test.entries->completeTodo(*todos[1], kLater); },
         [](auto& test, const auto& todos) {
             test.entries->createTodos({.contents = {"new"},
                                        .board = *test.board,
                                        .before = todos[0]->id(),
                                        .now = kLater});
         },
         "new b a c d "},
        {"the last one completed keeps its number",
         {"a", "b"},
         {},
         [](auto& test, const auto& todos) { test.entries->completeTodo(*todos[1], kLater); },
         [](auto& test, const auto&) { test.add({"new"}); },
         "a b new "},
        {"the first completed one restored to the end keeps its number",
         {"a", "b", "c"},
         {1, 2},
         [](auto& test, const auto& todos) { test.entries->restoreTodo(*todos[2], kLater); },
         [](auto& test, const auto&) { test.add({"new"}); },
         "a new | c b "},
        {"restored from between the completed ones",
         {"a", "b", "c", "d"},
         {1, 2, 3},
         [](auto& test, const auto& todos) { test.entries->restoreTodo(*todos[2], kLater); },
         [](auto& test, const auto&) {
             test.add({"new", "newer"});
         },
         "a new newer | d c b "},
        {"deleted from between the completed ones",
         {"a", "b", "c", "d"},
         {1, 2, 3},
         [](auto& test, const auto& todos) { test.entries->deleteEntry(*todos[2]); },
         [](auto& test, const auto&) {
             test.add({"new", "newer"});
         },
         "a new newer | d c b "},
        {"all completed, one of them deleted meanwhile on the other board",
         {"a", "b", "c"},
         {},
         [](auto& test, const auto&) { test.entries->completeTodos(*test.board, kLater); },
         [](auto& test, const auto&) { test.add({"new"}); },
         "a b c new "},
    };
    for (const auto& each : cases) {
        entries->deleteEntries(*board);
        const auto todos = add(each.todos);
        for (const auto index : each.completed) {
            entries->completeTodo(*todos[index], kNow);
        }
        each.change(*this, todos);
        each.meanwhile(*this, todos);
        undo.undo();
        EXPECT_EQ(listed(exported(), board->id()), each.expected) << each.name;
        EXPECT_THAT(brokenRules(*container, inbox->id()), IsEmpty()) << each.name;
        undo.redo();
        EXPECT_THAT(brokenRules(*container, inbox->id()), IsEmpty()) << each.name;
    }
}

TEST_F(UndoTest, WhatAnotherHasSetSinceStaysTheirsWithAllThatBelongsToIt) {
    const TodoSchedule day = TodoSchedule::dueOn(20250310);
    const TodoSchedule time{.dueDate = kLater + 60};
    const TodoSchedule laterTime{.dueDate = kLater + 90, .dueStartDate = kLater};
    using Theirs = std::function<void(services::EntryService&, Entry&, store::ModelContext&)>;
    const struct {
        const char* name;
        std::function<void(services::EntryService&, Entry&)> before;
        std::function<void(services::EntryService&, Entry&)> change;
        Theirs theirs;
        const char* home;
        const char* office;
        TodoSchedule schedule = {};
        std::optional<base::Instant> completedAt = std::nullopt;
    } cases[] = {
        {"a day would join their time",
         [&](auto& own, auto& todo) { own.updateSchedule(todo, day, kNow); },
         [&](auto& own, auto& todo) { own.updateSchedule(todo, time, kLater); },
         [&](auto& others, auto& todo, auto&) { others.updateSchedule(todo, laterTime, kLater); },
         "a x b ", "", laterTime},
        {"an open todo would keep the moment of their completion",
         [](auto&, auto&) {},
         [](auto& own, auto& todo) { own.completeTodo(todo, kLater); },
         [](auto& others, auto& todo, auto&) {
             others.restoreTodo(todo, kLater, 0);
             others.completeTodo(todo, kLater + 5);
         },
         "a b | x ",
         "",
         {},
         kLater + 5},
        {"a text would be completed", [](auto& own, auto& todo) { own.completeTodo(todo, kNow); },
         [](auto& own, auto& todo) { own.restoreTodo(todo, kLater, 1); },
         [](auto& others, auto& todo, auto&) {
             others.changeType(todo, model::EntryType::text, kLater);
         },
         "a [x] b ", ""},
        {"where they have restored it to", [](auto&, auto&) {},
         [](auto& own, auto& todo) { own.completeTodo(todo, kLater); },
         [](auto& others, auto& todo, auto&) { others.restoreTodo(todo, kLater, 0); }, "x a b ",
         ""},
        {"the board that they have moved it to, where it is open again", [](auto&, auto&) {},
         [](auto& own, auto& todo) { own.completeTodo(todo, kLater); },
         [&](auto& others, auto& todo, auto& theirs) {
             others.moveEntry(todo, *theirs.template find<model::Board>(office->id()), kLater);
         },
         "a b ", "o x "},
        {"the order that they have given the others", [](auto&, auto&) {},
         [](auto& own, auto& todo) { own.completeTodo(todo, kLater); },
         [](auto& others, auto& todo, auto&) {
             auto& home = *todo.board();
             others.moveEntry(services::activeEntries(home)[0]->id(), 1, home);
         },
         "b x a ", ""},
    };
    entries->createTodos({.contents = {"o"}, .board = *office, .now = kNow});
    for (const auto& each : cases) {
        entries->deleteEntries(*board);
        auto& todo = *add({"a", "x", "b"})[1];
        each.before(*entries, todo);
        each.change(*entries, todo);
        elsewhere([&](auto& others, auto& theirs) {
            each.theirs(others, *theirs.template find<Entry>(todo.id()), theirs);
        });
        undo.undo();
        const auto stored = exported();
        EXPECT_EQ(listed(stored, board->id()), each.home) << each.name;
        if (*each.office) {
            EXPECT_EQ(listed(stored, office->id()), each.office) << each.name;
        }
        EXPECT_EQ(todo.schedule(), each.schedule) << each.name;
        EXPECT_EQ(todo.completedAt(), each.completedAt) << each.name;
        EXPECT_THAT(brokenRules(*container, inbox->id()), IsEmpty()) << each.name;
    }
}

TEST_F(UndoTest, WordsThatAnotherHasWrittenSinceAreNotWrittenOver) {
    auto& todo = *add({"mine"}).front();
    entries->updateTodo(todo, "mine, changed", kLater);
    {
        store::ModelContext theirs(*container);
        services::EntryService others(theirs, reminders, widgets, log);
        others.updateTodo(*theirs.find<Entry>(todo.id()), "theirs", kLater);
    }
    log.expectError("Edit Todo undo failed");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(storedOrder(*board), (std::vector<std::string>{"theirs"}));
    EXPECT_FALSE(undo.canUndo()) << "the stack moves on";
}

TEST_F(UndoTest, WhatNoOperationMayLeaveIsRefusedWholly) {
    const auto todos = add({"a", "b"});
    // As a store from elsewhere may hold it: a day and a time.
    const TodoSchedule both{.dueDay = 20250310, .dueDate = kLater};
    todos[0]->setSchedule(both);
    context->save();
    entries->updateSchedule(*todos[0], {}, kLater);
    undo.undo();
    EXPECT_EQ(todos[0]->schedule(), both) << "exactly what the store held";
    undo.redo();
    elsewhere([&](auto& others, auto& theirs) {
        others.updateTodo(*theirs.template find<Entry>(todos[0]->id()), "theirs", kLater + 1);
    });
    log.expectError("Change Schedule undo failed: Choose a valid todo schedule.");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::invalidSchedule);
    EXPECT_TRUE(todos[0]->schedule().isEmpty());
    EXPECT_FALSE(undo.canUndo()) << "it would be refused again";
}

TEST_F(UndoTest, ACreationIsTakenBackUnlessAnotherHasWrittenIntoIt) {
    const auto theirs = [&](const base::Uuid& id, auto&& work) {
        store::ModelContext apart(*container);
        services::EntryService others(apart, reminders, widgets, log);
        work(others, *apart.find<Entry>(id));
    };
    const auto create = [&](std::vector<std::string> contents) {
        return entries
            ->createTodos(
                {.contents = std::move(contents), .board = *board, .now = kNow, .undoName = "New"})
            .front()
            ->id();
    };
    const auto ticked = create({"a", "b"});
    theirs(ticked, [](auto& others, Entry& entry) { others.completeTodo(entry, kLater); });
    undo.undo();
    EXPECT_TRUE(exported().entries.empty()) << "a tick is not lost, it comes back with the todo";
    undo.redo();
    EXPECT_TRUE(found(ticked).isCompleted());

    for (const bool isRedone : {false, true}) {
        const auto written = create({"mine", "too"});
        if (isRedone) {
            undo.undo();
            undo.redo();
        }
        theirs(written,
               [](auto& others, Entry& entry) { others.updateTodo(entry, "theirs", kLater); });
        const auto before = exported();
        log.expectError("New undo failed");
        EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
        EXPECT_EQ(exported(), before) << "none of them goes";
    }
}

TEST_F(UndoTest, AnEditingGoesOnInItsStepWhileThatIsTheLatest) {
    for (const bool isNew : {true, false}) {
        entries->deleteEntries(*board);
        auto& other = *add({"other"}).front();
        services::EditingSession session;
        auto& todo = *entries
                          ->createTodos({.contents = {"a"},
                                         .board = *board,
                                         .now = kNow,
                                         .undoName = isNew ? "New" : "",
                                         .session = &session})
                          .front();
        const auto type = [&](const char* text) {
            entries->updateTodo(todo, text, kLater, &session);
        };
        type("ab");
        const auto first = undo.nextUndo()->id;
        type("abc");
        EXPECT_EQ(undo.nextUndo()->id, first);
        entries->updateTodo(other, "changed", kLater);
        undo.undo();
        EXPECT_TRUE(undo.canRedo());
        type("abcd");
        EXPECT_FALSE(undo.canRedo()) << "what was undone came before this";
        entries->updateTodo(other, "changed", kLater);
        type("abcde");
        undo.undo();
        EXPECT_EQ(todo.content(), "abcd") << "the latest change is the first to go";
        undo.undo();
        EXPECT_EQ(other.content(), "other");
        undo.undo();
        EXPECT_EQ(todo.content(), "abc");
        undo.undo();
        EXPECT_EQ(listed(exported(), board->id()), isNew ? "other " : "other a ");
    }
}

TEST_F(UndoTest, WordsOfAnotherInANewTodoDoNotBecomeItsOwn) {
    services::EditingSession session;
    auto& todo = *entries
                      ->createTodos({.contents = {"mine"},
                                     .board = *board,
                                     .now = kNow,
                                     .undoName = "New Todo",
                                     .session = &session})
                      .front();
    elsewhere([&](auto& others, auto& theirs) {
        others.updateTodo(*theirs.template find<Entry>(todo.id()), "theirs", kLater);
    });
    entries->updateTodo(todo, "theirs and mine", kLater + 1, &session);
    undo.undo();
    EXPECT_EQ(todo.content(), "theirs");
    log.expectError("New Todo undo failed");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(storedOrder(*board), (std::vector<std::string>{"theirs"}));
}

TEST_F(UndoTest, ASplitIsTakenBackWholeOrNotAtAll) {
    auto& text = note("one two");
    const auto& second = entries->splitText(text, plain("one"), plain("two"), kLater, "Split");
    {
        store::ModelContext theirs(*container);
        services::EntryService others(theirs, reminders, widgets, log);
        others.updateText(*theirs.find<Entry>(text.id()), plain("theirs"), kLater);
    }
    log.expectError("Split undo failed");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(storedOrder(*board), (std::vector<std::string>{"theirs", "two"}));
    EXPECT_TRUE(context->find<Entry>(second.id()));
    EXPECT_FALSE(undo.canRedo());
}

TEST_F(UndoTest, ARestoredEntryIsTheOneThatWasDeleted) {
    add({"a"});
    auto& text = entries->createText({.rich = formatted(), .board = *board, .now = kNow});
    add({"z"});
    const auto id = text.id();
    const auto before = exported();
    entries->deleteEntry(text);
    EXPECT_FALSE(context->find<Entry>(id));
    undo.undo();
    EXPECT_EQ(exported(), before);
    EXPECT_EQ(log.count("Restored deleted entry with identifier"), 1U);
    undo.redo();
    EXPECT_FALSE(context->find<Entry>(id));
    undo.undo();
    EXPECT_EQ(exported(), before);
}

TEST_F(UndoTest, NothingIsRestoredOntoABoardThatIsGone) {
    auto& todo = *add({"a"}).front();
    const auto record = backup::recordOf(todo, board->id());
    EXPECT_EQ(entryRefusal([&] { entries->restoreDeletedEntry(record); }),
              EntryServiceErrorCase::entryUnavailable)
        << "it is still there";
    entries->deleteEntry(todo);
    boards->deleteBoard(*board);
    log.expectError("Delete Entry undo failed");
    EXPECT_EQ(entryRefusal([&] { undo.undo(); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_TRUE(exported().entries.empty());
}

TEST_F(UndoTest, AnUndoThatCannotBeStoredLeavesEverythingAsItIs) {
    auto& todo = *add({"a", "b"}).front();
    entries->deleteEntry(todo);
    const auto before = exported();
    breakSaves();
    log.expectError("Delete Entry undo failed");
    log.expectError("rolled back");
    EXPECT_THROW(undo.undo(), base::Error);
    mendSaves();
    EXPECT_EQ(exported(), before);
    EXPECT_FALSE(context->hasChanges());
    EXPECT_EQ(undo.undoActionName(), "Delete Entry") << "what is below builds on it";
    undo.undo();
    EXPECT_EQ(texts(services::activeEntries(*board)), (std::vector<std::string>{"a", "b"}));
}

TEST_F(UndoTest, WithdrawsRemindersThatAreNoLongerRightAndNoOthers) {
    const auto todos = entries->createTodos({.contents = {"a", "b"},
                                             .board = *board,
                                             .now = kNow,
                                             .schedule = {.reminderDate = kLater + 60}});
    auto& todo = *todos[0];
    auto& text = note("note");
    const struct {
        const char* name;
        std::function<void()> change;
        std::vector<base::Uuid> removed;
        int reconciles = 1;
    } cases[] = {
        {"rescheduled",
         [&] { entries->updateSchedule(todo, {.reminderDate = kLater + 90}, kNow); },
         {todo.id()}},
        {"restored",
         [&] {
             entries->completeTodo(todo, kLater);
             entries->restoreTodo(todo, kLater);
         },
         {todo.id()}},
        {"due at another time",
         [&] {
             entries->updateSchedule(todo, {.dueDate = kLater, .reminderDate = kLater + 90}, kNow);
         },
         {}},
        {"renamed", [&] { entries->updateTodo(todo, "c", kLater); }, {}},
        {"moved", [&] { entries->moveEntry(todo, *office, kLater); }, {}},
        {"completed", [&] { entries->completeTodo(*todos[1], kLater); }, {}},
        {"a text", [&] { entries->updateText(text, plain("new"), kLater); }, {}, 0},
    };
    entries->updateSchedule(todo, {.reminderDate = kLater + 90}, kNow);
    for (const auto& each : cases) {
        entries->updateSchedule(todo, {.reminderDate = kLater + 80}, kNow);
        each.change();
        reminders.removed.clear();
        const auto reconciles = reminders.reconciles;
        const auto reloads = widgets.reloads;
        undo.undo();
        EXPECT_EQ(reminders.removed, each.removed) << each.name;
        EXPECT_EQ(reminders.reconciles, reconciles + each.reconciles) << each.name;
        EXPECT_EQ(widgets.reloads, reloads + each.reconciles) << each.name;
    }
}

} // namespace korvex::tests
