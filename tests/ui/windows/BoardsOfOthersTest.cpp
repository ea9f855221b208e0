#include "ui/windows/NavigationFixture.h"

#include "ui/boards/BoardHeader.h"

#include <QLineEdit>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class BoardsOfOthersTest : public tests::NavigationFixture {};

TEST_F(BoardsOfOthersTest, ABoardThatIsDeletedElsewhereGivesWayToTheInbox) {
    own.boards.setArchived(true, *work, kNow);
    open();
    navigation().showBoard(*work);
    elsewhere([&](tests::StoreClient& client) {
        client.boards.deleteBoard(*client.boards.board(work->id()));
    });
    EXPECT_TRUE(QTest::qWaitFor([this] { return page().board() == inbox; }));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Inbox – Korvex"));
}

TEST_F(BoardsOfOthersTest, ABoardThatIsRestoredElsewhereStaysInSight) {
    own.entries.createTodos({.contents = {"kept"}, .board = *work, .now = kNow});
    open();
    navigation().showBoard(*work);
    elsewhere([](tests::StoreClient& client) { tests::restoreEverything(client.context); });
    EXPECT_TRUE(QTest::qWaitFor([this] { return page().board()->isLive(); }));
    EXPECT_EQ(page().board()->id(), work->id());
    ASSERT_TRUE(page().entries().entry(0));
    EXPECT_EQ(page().entries().entry(0)->content(), "kept");
}

TEST_F(BoardsOfOthersTest, WordsOutliveTheirBoard) {
    enum class Fate { restored, deleted };
    struct Case {
        const char* what;
        bool isNew;
        bool isStored;
        Fate fate;
        std::vector<std::string> texts;
    };
    const std::vector<std::string> changed{"first", "Buy milk today", "last", "more"};
    const std::vector<std::string> withNew{"first", "new", "Buy milk", "last", "more"};
    const std::vector<Case> cases{
        {"changed", false, false, Fate::restored, changed},
        {"changed and stored", false, true, Fate::restored, changed},
        {"new", true, false, Fate::restored, withNew},
        {"new and stored", true, true, Fate::restored, withNew},
        {"changed and gone", false, false, Fate::deleted, {"Buy milk today"}},
        {"changed, stored and gone", false, true, Fate::deleted, {"Buy milk today"}},
        {"new and gone", true, false, Fate::deleted, {"new"}},
    };
    open();
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        auto& board = own.boards.createBoard(each.what, kNow);
        const auto id = board.id();
        own.entries.createTodos(
            {.contents = {"first", "Buy milk", "last", "more"}, .board = board, .now = kNow});
        navigation().showBoard(board);
        list().setCurrentRow(each.isNew ? 0 : 1);
        list().setFocus();
        key(Qt::Key_Return);
        if (each.isNew) {
            key(Qt::Key_Return);
        }
        type(each.isNew ? "new" : " today");
        if (each.isStored) {
            runLoop.advance(TypingTimer::kPause.count());
        }
        elsewhere([&](tests::StoreClient& client) {
            if (each.fate == Fate::restored) {
                tests::restoreEverything(client.context);
            } else {
                client.boards.deleteBoard(*client.boards.board(id));
            }
        });
        ASSERT_TRUE(QTest::qWaitFor([this] { return page().board()->isLive(); }));
        EXPECT_EQ(page().board()->id(), each.fate == Fate::restored ? id : inbox->id());
        EXPECT_NE(tests::shownRefusal(page()), QString()) << "it is offered";
        ASSERT_TRUE(page().leave());
        EXPECT_EQ(storedTexts(*page().board()), each.texts);
        own.entries.deleteEntries(*page().board());
    }
    EXPECT_THAT(workspace.drafts.find().drafts, IsEmpty());
}

TEST_F(BoardsOfOthersTest, WhatIsReplacedIsNotToldAsDeletedNorTheOtherWayRound) {
    add({"kept"});
    storage::Work whole;
    const auto document = storage::createBackup(*container, kNow, whole).document;
    own.boards.createBoard("Late", kNow);
    add({"typed on"});
    open();
    const auto isTold = [&](const char* why) {
        const auto said = tests::shownRefusal(page());
        EXPECT_TRUE(said.contains(QString::fromUtf8(why))) << toUtf8(said);
    };
    const auto deleteElsewhere = [&](const char* text) {
        elsewhere([&](tests::StoreClient& client) {
            for (auto* const each : client.boards.inboxBoard()->entries()) {
                if (each->content() == text) {
                    client.entries.deleteEntry(*each);
                    return;
                }
            }
            ADD_FAILURE() << text;
        });
        QApplication::processEvents();
    };
    const auto replaceElsewhere = [&] {
        elsewhere([&](tests::StoreClient& client) {
            storage::BackupService(client.context, client.reminders, client.widgets, log)
                .restore(document, folder / "Recovery" / "BeforeRestore.korvexbackup", kNow, whole);
        });
        QApplication::processEvents();
    };
    list().setCurrentRow(1);
    list().setFocus();
    key(Qt::Key_Return);
    type(" more");
    replaceElsewhere();
    isTold("Another program has replaced this todo meanwhile.");
    EXPECT_EQ(page().findChild<TodoEditor*>()->typed(), QStringLiteral("typed on more"));
    EXPECT_TRUE(page().leave());
    navigation().openBoard(own.boards.createBoard("Later", kNow));
    replaceElsewhere();
    EXPECT_EQ(page().banner().message(),
              QStringLiteral("“Later” is gone: another program has replaced all boards."));

    page().startTodo();
    type("new");
    runLoop.advance(TypingTimer::kPause.count());
    type("er");
    deleteElsewhere("new");
    isTold("Another program deleted this todo meanwhile.");
    EXPECT_TRUE(page().leave());
    list().setCurrentRow(0);
    list().setFocus();
    key(Qt::Key_Return);
    type("!");
    replaceElsewhere();
    deleteElsewhere("kept");
    isTold("Another program deleted this todo meanwhile.");
}

TEST_F(BoardsOfOthersTest, WordsOnABoardThatAnotherDeletesComeAlongToTheInbox) {
    struct Case {
        const char* what;
        bool isStored;
    };
    for (const auto& [what, isStored] : {Case{"a new todo", false}, Case{"a stored one", true}}) {
        SCOPED_TRACE(what);
        auto& board = own.boards.createBoard("Garden", kNow);
        own.entries.createTodos({.contents = {"sow"}, .board = board, .now = kNow});
        open();
        navigation().openBoard(board);
        if (isStored) {
            key(Qt::Key_Return);
        } else {
            page().startTodo();
        }
        type(" peas");
        key(Qt::Key_Left);
        elsewhere([&](tests::StoreClient& client) {
            client.boards.deleteBoard(*client.boards.board(board.id()));
        });
        QApplication::processEvents();
        EXPECT_EQ(page().board(), inbox);
        EXPECT_EQ(window->windowTitle(), QStringLiteral("Inbox – Korvex"));
        EXPECT_EQ(boards().currentIndex().data().toString(), QStringLiteral("Inbox"));
        ASSERT_GE(list().editedRow(), 0);
        type("l");
        EXPECT_EQ(page().findChild<TodoEditor*>()->typed(),
                  isStored ? QStringLiteral("sow peals") : QStringLiteral(" peals"))
            << "typed on where one was";
        EXPECT_TRUE(tests::shownRefusal(page()).contains(QStringLiteral("“Garden”")));
        EXPECT_EQ(workspace.drafts.find().drafts.size(), 1U);
        key(Qt::Key_Escape);
        EXPECT_THAT(storedTexts(*inbox), ElementsAre(isStored ? "sow peals" : "peals"));
        EXPECT_THAT(workspace.drafts.find().drafts, IsEmpty());
        own.entries.deleteEntries(*inbox);
        window.reset();
    }
}

TEST_F(BoardsOfOthersTest, WhatIsTypedOnABoardThatAnotherArchivesStaysInOnePiece) {
    for (const bool isStored : {false, true}) {
        SCOPED_TRACE(isStored);
        auto& board = own.boards.createBoard("Garden", kNow);
        open();
        navigation().openBoard(board);
        page().startTodo();
        type("sow");
        if (isStored) {
            runLoop.advance(TypingTimer::kPause.count());
        }
        elsewhere([&](tests::StoreClient& client) {
            client.boards.setArchived(true, *client.boards.board(board.id()), kNow);
        });
        QApplication::processEvents();
        EXPECT_EQ(page().banner().message(), QStringLiteral("Another program archived “Garden”."));
        type(" peas");
        key(Qt::Key_Return);
        QApplication::processEvents();
        EXPECT_EQ(page().board(), inbox);
        EXPECT_EQ(list().editedRow(), -1);
        EXPECT_THAT(storedTexts(board), ElementsAre("sow peas"));
        EXPECT_THAT(storedTexts(*inbox), IsEmpty());
        EXPECT_EQ(page().banner().message(), QStringLiteral("Another program archived “Garden”."));
        window.reset();
    }
}

TEST_F(BoardsOfOthersTest, ANameThatIsTypedOverThePageOutlivesWhatOthersDo) {
    open();
    navigation().openBoard(*work);
    const auto name = [this] { return window->findChild<BoardHeader*>()->findChild<QLineEdit*>(); };
    const auto theyRename = [this](const char* to) {
        elsewhere([&](tests::StoreClient& client) {
            client.boards.renameBoard(*client.boards.board(work->id()), to, kNow);
        });
        QApplication::processEvents();
    };
    page().header().rename(*work);
    theyRename("Desk");
    EXPECT_EQ(name()->selectedText(), QStringLiteral("Desk")) << "nobody has touched it";
    list().setFocus();
    EXPECT_EQ(work->name(), "Desk") << "nor typed the old one";
    page().header().rename(*work);
    QTest::keyClicks(name(), QStringLiteral("Offi"));
    theyRename("Lab");
    QTest::keyClicks(name(), QStringLiteral("ce"));
    key(Qt::Key_Return);
    EXPECT_EQ(work->name(), "Office");

    page().header().rename(*work);
    type("Shop");
    elsewhere([this](tests::StoreClient& client) {
        client.boards.deleteBoard(*client.boards.board(work->id()));
    });
    QApplication::processEvents();
    EXPECT_EQ(page().board(), inbox) << "there is no board for the name";
}

TEST_F(BoardsOfOthersTest, ABoardThatAnotherTakesAwayIsTold) {
    open();
    for (const bool isDeleted : {false, true}) {
        navigation().openBoard(*work);
        elsewhere([&](tests::StoreClient& client) {
            auto& theirs = *client.boards.board(work->id());
            isDeleted ? client.boards.deleteBoard(theirs)
                      : client.boards.setArchived(true, theirs, kNow);
        });
        QApplication::processEvents();
        EXPECT_EQ(page().board(), inbox);
        EXPECT_EQ(page().banner().message(),
                  isDeleted ? QStringLiteral("Another program deleted “Work”.")
                            : QStringLiteral("Another program archived “Work”."));
        if (!isDeleted) {
            elsewhere([&](tests::StoreClient& client) {
                client.boards.setArchived(false, *client.boards.board(work->id()), kNow);
            });
            EXPECT_EQ(page().banner().message(), QString()) << "it is not so any more";
        }
    }
}

} // namespace
} // namespace korvex::ui
