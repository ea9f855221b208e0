#include "ServiceFixture.h"
#include "StoreRules.h"
#include "store/StoreError.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>

namespace korvex::tests {

using model::Board;
using model::BoardFields;
using model::BoardServiceErrorCase;
using model::EntryPlacement;
using model::EntryServiceErrorCase;
using services::BoardService;
using testing::ElementsAre;

class BoardServiceTest : public ServiceFixture {
protected:
    Board& put(BoardFields fields) {
        fields.id = base::Uuid::random();
        Board& added = context->insert(std::make_unique<Board>(std::move(fields)));
        context->save();
        return added;
    }
    static std::vector<std::string> names(const std::vector<Board*>& list) {
        std::vector<std::string> result;
        for (const Board* each : list) {
            result.push_back(each->name());
        }
        return result;
    }

    /// One of each operation, at a moment of its own.
    struct Operation {
        const char* name;
        /// Whether it is told by the board itself which one it is about.
        bool isAboutOne;
        std::function<void(BoardService&, Board&)> run;
    };
    static constexpr base::Instant kLater{2000};
    static std::vector<Operation> operations() {
        static const base::NameOrder order("en_US");
        return {
            {"create", false, [](auto& service, auto&) { service.createBoard("New", kLater); }},
            {"rename", true,
             [](auto& service, auto& of) { service.renameBoard(of, " Work\n", kLater); }},
            {"icon", true,
             [](auto& service, auto& of) { service.setIcon("folder.fill", of, kLater); }},
            {"color", true,
             [](auto& service, auto& of) { service.setIconColor("navy", of, kLater); }},
            {"archive", true,
             [](auto& service, auto& of) { service.setArchived(true, of, kLater); }},
            {"reorder", true,
             [](auto& service, auto& of) {
                 auto all = service.boards();
                 std::erase(all, &of);
                 all.push_back(&of);
                 service.reorderBoards(all, kLater);
             }},
            {"move", false,
             [](auto& service, auto&) {
                 const auto all = service.boards();
                 service.moveBoard(all.back()->id(), all.front()->id(), EntryPlacement::before,
                                   kLater);
             }},
            {"sort", false,
             [](auto& service, auto&) {
                 service.sortBoardsByName(BoardService::Direction::descending, order, kLater);
             }},
            {"delete", true, [](auto& service, auto& of) { service.deleteBoard(of); }},
        };
    }
};

TEST_F(BoardServiceTest, TheInboxIsMadeOnceAndALegacyTodayBecomesIt) {
    boards->initializeDefaultBoards(kNow);
    Board* inbox = boards->inboxBoard();
    ASSERT_TRUE(inbox);
    EXPECT_EQ(inbox->name(), "Inbox");
    EXPECT_EQ(inbox->systemIdentifier(), "inbox");
    EXPECT_TRUE(inbox->isSystem());
    EXPECT_GT(log.count("Initialized default boards"), 0U);
    const auto revision = container->revision();
    boards->initializeDefaultBoards(kNow);
    EXPECT_EQ(container->revision(), revision);
}

TEST_F(BoardServiceTest, LegacySystemBoardsAreRepaired) {
    const struct {
        const char* name;
        bool isSystem;
        std::optional<std::string> identifier;
        bool becomesInbox;
    } cases[] = {
        {"Today", true, std::nullopt, true},   {"Inbox", true, std::nullopt, true},
        {"Heute", false, "today", true},       {"today", true, std::nullopt, false},
        {"Today", false, std::nullopt, false},
    };
    for (const auto& legacyCase : cases) {
        Board& legacy = put({.name = legacyCase.name,
                             .isSystem = legacyCase.isSystem,
                             .systemIdentifier = legacyCase.identifier});
        const auto todos =
            entries->createTodos({.contents = {"kept"}, .board = legacy, .now = kNow});
        boards->initializeDefaultBoards(kNow);
        EXPECT_EQ(boards->inboxBoard() == &legacy, legacyCase.becomesInbox) << legacyCase.name;
        if (legacyCase.becomesInbox) {
            EXPECT_EQ(legacy.name(), "Inbox");
            EXPECT_TRUE(legacy.isSystem());
            EXPECT_EQ(legacy.entries().size(), 1U);
        }
        EXPECT_EQ(context->count<Board>(store::FieldReference{Board::systemIdentifierField} ==
                                        store::Value(std::string("inbox"))),
                  1U);
        for (Board* each : context->fetch<Board>()) {
            context->remove(*each);
        }
        context->save();
    }
    // Beside an Inbox it is a second one.
    boards->initializeDefaultBoards(kNow);
    const auto& second = put({.name = "Today", .sortOrder = 5, .isSystem = true});
    boards->initializeDefaultBoards(kNow);
    EXPECT_EQ(second.systemIdentifier(), "inbox");
    EXPECT_EQ(boards->boards(), std::vector{boards->inboxBoard()});
}

TEST_F(BoardServiceTest, DuplicatesOfTheInboxAndMergedBoardsAreNotVisible) {
    put({.name = "Second", .sortOrder = 2, .isSystem = true, .systemIdentifier = "inbox"});
    put({.name = "First", .sortOrder = 1, .isSystem = true, .systemIdentifier = "today"});
    put({.name = "Merged", .sortOrder = 3, .isArchived = true, .mergedIntoBoardID = board->id()});
    Board& archived = put({.name = "Old", .sortOrder = 4, .isArchived = true});
    EXPECT_THAT(names(boards->boards()), ElementsAre("Home", "First", "Old"));
    EXPECT_THAT(names(BoardService::activeBoards(context->fetch<Board>())),
                ElementsAre("Home", "First"));
    EXPECT_EQ(boards->inboxBoard()->name(), "First");
    EXPECT_EQ(boards->board(archived.id()), &archived);
    EXPECT_EQ(boards->launchBoard(archived.id()), boards->inboxBoard());
    EXPECT_EQ(boards->launchBoard(std::nullopt), boards->inboxBoard());
    EXPECT_EQ(boards->launchBoard(board->id()), board);
}

TEST_F(BoardServiceTest, NamesAreTrimmedAndNewBoardsGoLast) {
    board->setSortOrder(5);
    context->save();
    Board& created = boards->createBoard("\t Work\n", kNow);
    EXPECT_EQ(created.name(), "Work");
    EXPECT_EQ(created.sortOrder(), 6);
    EXPECT_EQ(created.createdAt(), kNow);
    EXPECT_EQ(created.updatedAt(), kNow);
    created.setSortOrder(-7);
    board->setSortOrder(-5);
    context->save();
    EXPECT_EQ(boards->createBoard("Play", kNow).sortOrder(), -4);
    for (const auto* const name : {"as the last of all", "last again"}) {
        board->setSortOrder(std::numeric_limits<std::int64_t>::max());
        context->save();
        boards->createBoard(name, kNow);
        EXPECT_EQ(boards->boards().back()->name(), name);
        EXPECT_EQ(boards->boards().back()->sortOrder(),
                  static_cast<std::int64_t>(boards->boards().size()) - 1);
    }
    EXPECT_EQ(boardRefusal([&] { boards->createBoard("  ", kNow); }),
              BoardServiceErrorCase::emptyName);
    EXPECT_EQ(boardRefusal([&] { boards->renameBoard(created, " \n", kNow); }),
              BoardServiceErrorCase::emptyName);
    EXPECT_EQ(created.name(), "Work");
}

TEST_F(BoardServiceTest, TheInboxMayBeRenamedButNotArchivedOrDeleted) {
    Board& inbox = put({.name = "Inbox", .isSystem = true});
    boards->renameBoard(inbox, "Eingang", kNow);
    EXPECT_EQ(boards->inboxBoard(), &inbox);
    EXPECT_EQ(boardRefusal([&] { boards->setArchived(true, inbox, kNow); }),
              BoardServiceErrorCase::protectedBoard);
    EXPECT_EQ(boardRefusal([&] { boards->deleteBoard(inbox); }),
              BoardServiceErrorCase::protectedBoard);
    EXPECT_TRUE(inbox.isLive());
}

TEST_F(BoardServiceTest, IconsAndColoursAreRawValuesOrNone) {
    EXPECT_EQ(boardRefusal([&] { boards->setIcon("folder", *board, kNow); }),
              BoardServiceErrorCase::invalidIcon);
    EXPECT_EQ(boardRefusal([&] { boards->setIconColor("Blue", *board, kNow); }),
              BoardServiceErrorCase::invalidIconColor);
    const auto revision = container->revision();
    EXPECT_EQ(boardRefusal([&] { boards->createBoard("Work", kNow, {.icon = "folder"}); }),
              BoardServiceErrorCase::invalidIcon);
    EXPECT_EQ(boardRefusal([&] { boards->createBoard("Work", kNow, {.color = "Blue"}); }),
              BoardServiceErrorCase::invalidIconColor);
    EXPECT_EQ(container->revision(), revision);
    const auto& work = boards->createBoard("Work", kNow, {.icon = "flag.fill", .color = "sand"});
    EXPECT_EQ(container->revision(), revision + 1);
    EXPECT_EQ(work.icon(), "flag.fill");
    EXPECT_EQ(work.iconColor(), "sand");
    boards->setIcon("folder.fill", *board, {2000});
    boards->setIconColor("lavender", *board, {2000});
    EXPECT_EQ(board->iconSystemName(), "folder.fill");
    EXPECT_EQ(board->iconColor(), "lavender");
    EXPECT_EQ(board->updatedAt(), base::Instant{2000});
    boards->setIcon(std::nullopt, *board, kNow);
    EXPECT_EQ(board->iconSystemName(), "square.grid.2x2.fill");
}

TEST_F(BoardServiceTest, DeletingTakesEntriesAndTheirReminders) {
    const auto todos = entries->createTodos({.contents = {"a", "b"},
                                             .board = *board,
                                             .now = kNow,
                                             .schedule = {.reminderDate = base::Instant{5000}}});
    const auto ids = std::vector{todos[0]->id(), todos[1]->id()};
    EXPECT_THAT(board->deletionMessage(), testing::HasSubstr("to delete: 0."));
    entries->completeTodo(*todos[0], kNow);
    EXPECT_THAT(board->deletionMessage(), testing::StartsWith("Deleting Home permanently"));
    EXPECT_THAT(board->deletionMessage(), testing::HasSubstr("to delete: 1."));
    reminders.removed.clear();
    const auto reloads = widgets.reloads;
    boards->setArchived(true, *board, kNow);
    EXPECT_THAT(reminders.removed, testing::IsEmpty());
    EXPECT_EQ(widgets.reloads, reloads + 1);
    boards->deleteBoard(*board);
    EXPECT_THAT(reminders.removed, testing::UnorderedElementsAreArray(ids));
    EXPECT_EQ(widgets.reloads, reloads + 2);
    EXPECT_EQ(context->count<model::Entry>(), 0U);
    EXPECT_EQ(entryRefusal([&] { boards->renameBoard(*board, "x", kNow); }),
              EntryServiceErrorCase::entryUnavailable);
}

TEST_F(BoardServiceTest, MovingKeepsArchivedBoardsInTheirPlaces) {
    Board& b = boards->createBoard("b", kNow);
    Board& old = boards->createBoard("old", kNow);
    Board& c = boards->createBoard("c", kNow);
    boards->setArchived(true, old, kNow);
    boards->moveBoard(c.id(), board->id(), EntryPlacement::before, kNow);
    EXPECT_THAT(names(boards->boards()), ElementsAre("c", "Home", "old", "b"));
    boards->moveBoard(c.id(), b.id(), EntryPlacement::after, kNow);
    EXPECT_THAT(names(boards->boards()), ElementsAre("Home", "b", "old", "c"));
    boards->moveBoard(c.id(), c.id(), EntryPlacement::after, kNow);
    for (const auto& [moved, target] :
         {std::pair(base::Uuid::random(), b.id()), std::pair(b.id(), old.id())}) {
        EXPECT_EQ(entryRefusal([&, moved = moved, target = target] {
                      boards->moveBoard(moved, target, EntryPlacement::before, kNow);
                  }),
                  EntryServiceErrorCase::entryUnavailable);
    }
    std::vector<Board*> missing = boards->boards();
    missing.pop_back();
    EXPECT_EQ(entryRefusal([&] { boards->reorderBoards(missing, kNow); }),
              EntryServiceErrorCase::entryUnavailable);
    missing.push_back(missing.front());
    EXPECT_EQ(entryRefusal([&] { boards->reorderBoards(missing, kNow); }),
              EntryServiceErrorCase::entryUnavailable);
    auto twice = boards->boards();
    twice.push_back(twice.front());
    EXPECT_EQ(entryRefusal([&] { boards->reorderBoards(twice, kNow); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_THAT(names(boards->boards()), ElementsAre("Home", "b", "old", "c"));
}

TEST_F(BoardServiceTest, WhatCannotBeStoredIsTakenBackWhole) {
    boards->createBoard("Work", kNow);
    add({"a", "b"});
    const auto before = exported(*container);
    const auto told = std::pair(reminders.reconciles, widgets.reloads);
    log.expectError("Board persistence failed; rolled back");
    for (const auto& operation : operations()) {
        SCOPED_TRACE(operation.name);
        breakSaves();
        EXPECT_THROW(operation.run(*boards, *board), store::StoreError);
        mendSaves();
        EXPECT_FALSE(context->hasChanges());
        EXPECT_EQ(exported(*container), before);
        EXPECT_EQ(names(boards->boards()), (std::vector<std::string>{"Home", "Work"}));
    }
    EXPECT_EQ(std::pair(reminders.reconciles, widgets.reloads), told);
    const auto readOnly = openContainer(false);
    store::ModelContext reading(*readOnly);
    BoardService service(reading, reminders, widgets, log);
    for (const auto& operation : operations()) {
        EXPECT_EQ(entryRefusal([&] { operation.run(service, *reading.find<Board>(board->id())); }),
                  EntryServiceErrorCase::readOnlyStore)
            << operation.name;
    }
}

TEST_F(BoardServiceTest, ABoardThatAnotherProgramHasDeletedIsRefused) {
    boards->createBoard("Work", kNow);
    const auto other = openContainer();
    store::ModelContext theirs(*other);
    BoardService(theirs, reminders, widgets, log).deleteBoard(*theirs.find<Board>(board->id()));
    for (const auto& operation : operations()) {
        if (operation.isAboutOne) {
            EXPECT_EQ(entryRefusal([&] { operation.run(*boards, *board); }),
                      EntryServiceErrorCase::entryUnavailable)
                << operation.name;
        }
    }
    EXPECT_THAT(names(boards->boards()), ElementsAre("Work"));
}

TEST_F(BoardServiceTest, EveryChangeIsStoredWithItsMomentAndToldOfWhereTodosAreConcerned) {
    for (const auto& operation : operations()) {
        SCOPED_TRACE(operation.name);
        auto& of = boards->createBoard("Attic", kNow);
        auto& beside = boards->createBoard("Beside", kNow);
        const auto told = std::pair(reminders.reconciles, widgets.reloads);
        operation.run(*boards, of);
        const auto isTold =
            operation.name == std::string("archive") || operation.name == std::string("delete");
        EXPECT_EQ(std::pair(reminders.reconciles, widgets.reloads),
                  std::pair(told.first + (isTold ? 1 : 0), told.second + (isTold ? 1 : 0)));
        store::ModelContext fresh(*container);
        const auto* const stored = fresh.find<Board>(of.id());
        EXPECT_EQ(stored == nullptr, operation.name == std::string("delete"));
        if (operation.isAboutOne && stored) {
            EXPECT_EQ(stored->updatedAt(), kLater);
            EXPECT_EQ(stored->createdAt(), kNow);
        }
        EXPECT_EQ(stored && stored->name() == "Work", operation.name == std::string("rename"));
        for (auto* const each : {&of, &beside}) {
            if (each->isLive()) {
                boards->deleteBoard(*each);
            }
        }
    }
    // The log tells what happens, but not to which board.
    for (const auto* const what : {"Created board", "Renamed board", "Deleted board"}) {
        EXPECT_GT(log.count(std::string(what) + " with identifier "), 0U) << what;
    }
    EXPECT_EQ(log.count(board->id().text()), 0U);
}

TEST_F(BoardServiceTest, AHiddenBoardNeverComesBeforeTheVisibleOnes) {
    auto& inbox = put({.name = "Inbox", .isSystem = true, .systemIdentifier = "inbox"});
    put({.name = "Inbox of a phone",
         .sortOrder = 1,
         .isSystem = true,
         .systemIdentifier = "inbox"});
    auto& merged = put({.name = "Merged", .sortOrder = -5, .mergedIntoBoardID = board->id()});
    auto& last = boards->createBoard("Last", kNow);
    const base::NameOrder order("en_US");
    const std::function<void()> changes[]{
        [&] { boards->moveBoard(inbox.id(), last.id(), EntryPlacement::after, kNow); },
        [&] {
            boards->reorderBoards(std::vector{&last, board, &inbox}, kNow);
        },
        [&] { boards->sortBoardsByName(BoardService::Direction::descending, order, kNow); },
    };
    for (const auto& change : changes) {
        change();
        EXPECT_EQ(boards->inboxBoard(), &inbox);
        EXPECT_EQ(boards->boards().size(), 3U);
        EXPECT_EQ(boards->boards().back()->sortOrder(), 2);
        EXPECT_EQ(merged.sortOrder(), 3);
    }
}

TEST_F(BoardServiceTest, SortingTakesNumbersByValueAndKeepsTheInboxFirst) {
    boards->renameBoard(*board, "Board 10", kNow);
    boards->createBoard("Board 9", kNow);
    boards->createBoard("board 2", kNow);
    boards->createBoard("Äpfel", kNow);
    boards->initializeDefaultBoards(kNow);
    const base::NameOrder order("en_US");
    boards->sortBoardsByName(BoardService::Direction::ascending, order, kNow);
    EXPECT_THAT(names(boards->boards()),
                ElementsAre("Inbox", "Äpfel", "board 2", "Board 9", "Board 10"));
    boards->sortBoardsByName(BoardService::Direction::descending, order, kNow);
    EXPECT_THAT(names(boards->boards()),
                ElementsAre("Inbox", "Board 10", "Board 9", "board 2", "Äpfel"));
    // Names that differ only in case are one name, in one order both ways.
    std::vector<std::string> twins{"TWIN", "twin"};
    if (boards->createBoard("twin", kNow).id() < boards->createBoard("TWIN", kNow).id()) {
        std::swap(twins[0], twins[1]);
    }
    for (const auto direction :
         {BoardService::Direction::ascending, BoardService::Direction::descending}) {
        boards->sortBoardsByName(direction, order, kNow);
        auto sorted = names(boards->boards());
        std::erase_if(sorted, [](const std::string& name) { return name.size() != 4; });
        EXPECT_EQ(sorted, twins);
    }
}

} // namespace korvex::tests
