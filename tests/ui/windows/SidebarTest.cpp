#include "ui/windows/Sidebar.h"

#include "ui/WindowFixture.h"
#include "ui/boards/BoardActions.h"
#include "ui/boards/SidebarRow.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/kit/overlays/ErrorBanner.h"

#include <QLineEdit>
#include <QMenu>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;

class SidebarTest : public tests::WindowFixture {
protected:
    SidebarTest() {
        work = &own.boards.createBoard("Work", kNow);
        home = &own.boards.createBoard("Home", kNow);
        changes = own.context.didChange().connect([this](const auto&) { sidebar.refresh(); });
        sidebar.resize(220, 400);
        sidebar.show();
        sidebar.refresh();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&sidebar));
    }

    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto* const board : services::BoardService::activeBoards(own.boards.boards())) {
            result.push_back(board->name());
        }
        return result;
    }
    QLineEdit* nameField() { return list().findChild<QLineEdit*>(); }
    BoardListView& list() { return *sidebar.findChild<BoardListView*>(); }
    QString message() { return sidebar.findChild<ErrorBanner*>()->message(); }
    void typeName(const char* name) {
        nameField()->setText(QString::fromUtf8(name));
        QTest::keyClick(nameField(), Qt::Key_Return);
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    Sidebar sidebar{own.boards, own.context, clock, theme};
    BoardActions actions{own.boards, clock, theme, sidebar};
    base::Subscription changes;
    model::Board* work = nullptr;
    model::Board* home = nullptr;
};

TEST_F(SidebarTest, ABoardIsRenamedInPlace) {
    sidebar.rename(*work);
    typeName("  Office ");
    EXPECT_EQ(work->name(), "Office");
    EXPECT_EQ(nameField(), nullptr);
}

TEST_F(SidebarTest, ANameThatIsBeingTypedOutlivesWhatOthersDo) {
    sidebar.rename(*work);
    elsewhere([&](auto& client) {
        client.boards.renameBoard(*client.boards.board(work->id()), "Desk", kNow);
    });
    EXPECT_EQ(nameField()->selectedText(), QStringLiteral("Desk")) << "nobody has touched it";
    QTest::keyClicks(nameField(), QStringLiteral("Offi"));
    elsewhere([&](auto& client) {
        client.boards.createBoard("Another", kNow);
        client.boards.renameBoard(*client.boards.board(work->id()), "Lab", kNow);
    });
    QTest::keyClicks(nameField(), QStringLiteral("ce"));
    QTest::keyClick(nameField(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(work->name(), "Office");
}

TEST_F(SidebarTest, ARefusedNameStaysToBeCorrected) {
    sidebar.rename(*work);
    typeName("   ");
    EXPECT_EQ(message(), QStringLiteral("Board names cannot be empty."));
    ASSERT_TRUE(QTest::qWaitFor([this] { return nameField() != nullptr; }));
    EXPECT_EQ(nameField()->text(), QStringLiteral("   "));
    EXPECT_EQ(work->name(), "Work");
    typeName("Shop");
    EXPECT_EQ(work->name(), "Shop");
    EXPECT_EQ(message(), QString());
}

TEST_F(SidebarTest, ANewBoardStandsAtTheEndWithItsNameToBeTyped) {
    sidebar.createBoard();
    ASSERT_NE(nameField(), nullptr);
    typeName("Garden");
    EXPECT_THAT(names(), ElementsAre("Inbox", "Work", "Home", "Garden"));
    sidebar.createBoard();
    const auto boards = own.boards.boards();
    EXPECT_TRUE(boards[3]->iconColor());
    EXPECT_NE(boards[4]->iconColor(), boards[3]->iconColor()) << "each in a colour of its own";
}

TEST_F(SidebarTest, DroppingABoardReordersTheSidebar) {
    Q_EMIT list().dropped(home->id(), inbox->id(), model::EntryPlacement::before);
    EXPECT_THAT(names(), ElementsAre("Home", "Inbox", "Work"));
    EXPECT_EQ(sidebar.boards().board(0), home);
}

TEST_F(SidebarTest, WhatIsNotAllowedForTheInboxIsDisabled) {
    const auto disabled = [this](model::Board& board) {
        QMenu menu;
        actions.addTo(menu, board, sidebar);
        std::vector<std::string> result;
        for (const auto* const action : menu.actions()) {
            if (!action->isEnabled()) {
                result.push_back(toUtf8(action->text()));
            }
        }
        return result;
    };
    EXPECT_THAT(disabled(*inbox), ElementsAre("Archive", "Delete…", "Move up"));
    EXPECT_THAT(disabled(*work), ::testing::IsEmpty());
}

TEST_F(SidebarTest, DeletionAsksFirstInTheBoardsOwnWordsAndCountsTheOpenEntries) {
    add({"elsewhere"});
    const auto todos =
        own.entries.createTodos({.contents = {"a", "b", "c"}, .board = *work, .now = kNow});
    own.entries.completeTodo(*todos.front(), kNow);
    actions.confirmDeletion(*work);
    auto* const sheet = sidebar.findChild<ConfirmationSheet*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->accessibleName(),
              QStringLiteral("Open entries to delete: 2.\n") + toQString(work->deletionMessage()));
    EXPECT_THAT(names(), ElementsAre("Inbox", "Work", "Home"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); // on the button that cancels
    EXPECT_THAT(names(), ElementsAre("Inbox", "Work", "Home"));
    Q_EMIT sheet->confirmed();
    EXPECT_THAT(names(), ElementsAre("Inbox", "Home"));
}

TEST_F(SidebarTest, CountsFollowChangesFromAnywhere) {
    const auto count = [this] { return sidebar.boards().openTodoCount(0); };
    add({"a", "b"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return count() == 2; }));
    elsewhere([](tests::StoreClient& client) {
        auto& board = *client.boards.inboxBoard();
        client.entries.completeTodo(*services::activeTodos(board).front(), kNow);
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return count() == 1; }));
}

TEST_F(SidebarTest, ArchivedBoardsCanBeReached) {
    const auto rows = sidebar.findChildren<SidebarRow*>();
    const auto found = std::find_if(rows.begin(), rows.end(), [](const SidebarRow* row) {
        return row->text() == QStringLiteral("Archived boards");
    });
    auto* const archived = found == rows.end() ? nullptr : *found;
    ASSERT_NE(archived, nullptr);
    EXPECT_TRUE(archived->isHidden());
    actions.archive(*work);
    EXPECT_FALSE(archived->isHidden());
    EXPECT_THAT(sidebar.boards().archivedBoards(), ElementsAre(work));
    actions.unarchive(*work);
    EXPECT_TRUE(archived->isHidden());
    EXPECT_THAT(names(), ElementsAre("Inbox", "Work", "Home"));
}

} // namespace
} // namespace korvex::ui
