#include "ui/windows/NavigationFixture.h"

#include "ui/boards/BoardHeader.h"
#include "ui/kit/controls/RefusalLabel.h"
#include "ui/todos/RowFrame.h"

#include <QCheckBox>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NavigationTest : public tests::NavigationFixture {};

TEST_F(NavigationTest, TheSearchComesAndGoesWithoutATrace) {
    addMany(100);
    open();
    list().setFocus();
    list().setCurrentRow(60);
    const int scrolled = list().verticalScrollBar()->value();
    ASSERT_GT(scrolled, 0);
    const auto expectReturned = [&] {
        EXPECT_EQ(navigation().currentPage(), PageKind::board);
        EXPECT_EQ(list().currentRow(), 60);
        EXPECT_EQ(list().verticalScrollBar()->value(), scrolled);
        EXPECT_EQ(field().text(), QString());
    };
    search("todo 9");
    EXPECT_EQ(navigation().currentPage(), PageKind::search);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Search – Korvex"));
    EXPECT_EQ(results().model()->rowCount(), 19) << "both words, in any place";
    key(Qt::Key_Escape);
    expectReturned();
    EXPECT_TRUE(list().hasFocus());

    search("x");
    key(Qt::Key_Backspace);
    expectReturned();
    EXPECT_TRUE(field().hasFocus()) << "another search may follow";
    type("  ");
    EXPECT_EQ(navigation().currentPage(), PageKind::board) << "spaces search for nothing";
}

TEST_F(NavigationTest, TheArrowsWalkAndReturnOpensTheEntryInTheMiddle) {
    const auto todos = addMany(100);
    open();
    search("todo 5");
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Up);
    EXPECT_EQ(results().currentRow(), 1);
    EXPECT_TRUE(field().hasFocus());
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    EXPECT_EQ(navigation().currentPage(), PageKind::board);
    EXPECT_EQ(field().text(), QString());
    EXPECT_EQ(currentText(), "todo 35");
    EXPECT_TRUE(list().hasFocus());
    const auto rect = list().visualRect(list().currentIndex());
    EXPECT_NEAR(rect.center().y(), list().viewport()->height() / 2, rect.height());
}

TEST_F(NavigationTest, WhatIsCompletedOrArchivedIsOpenedWhereItIs) {
    const auto todos = addMany(3);
    own.entries.completeTodo(*todos[1], kNow);
    auto* const old =
        own.entries.createTodos({.contents = {"old thing"}, .board = *work, .now = kNow}).front();
    own.boards.setArchived(true, *work, kNow);
    open();
    search("todo 1");
    key(Qt::Key_Return);
    EXPECT_EQ(currentText(), "todo 1");
    EXPECT_TRUE(page().entries().isCompletedExpanded());

    search("old");
    key(Qt::Key_Return);
    EXPECT_EQ(page().board(), work);
    EXPECT_EQ(page().entries().entry(list().currentRow()), old);
    EXPECT_TRUE(page().isReadOnly());
    search("inb");
    key(Qt::Key_Return);
    EXPECT_EQ(page().board(), inbox) << "a board opens too";
}

TEST_F(NavigationTest, AnEditorThatCannotBeLeftKeepsItsPage) {
    open();
    navigation().showBoard(*work);
    page().startTodo();
    type("kept");
    const auto file = folder / "Primary.store";
    log.expectError("Entry persistence failed");
    std::filesystem::rename(file, folder / "away");
    search("x");
    EXPECT_EQ(navigation().currentPage(), PageKind::board);
    QApplication::processEvents();
    row("Upcoming").click();
    EXPECT_EQ(navigation().currentPage(), PageKind::board);
    EXPECT_EQ(page().findChild<TodoEditor*>()->typed(), QStringLiteral("kept"));
    EXPECT_FALSE(page().findChild<TodoEditor*>()->isHidden());
    EXPECT_EQ(page().board(), work);
    std::filesystem::rename(folder / "away", file);
    row("Upcoming").click();
    EXPECT_EQ(navigation().currentPage(), PageKind::upcoming);
    EXPECT_THAT(storedTexts(*work), ElementsAre("kept"));
}

TEST_F(NavigationTest, AnArchivedBoardIsOnlyLookedAt) {
    auto* const todo =
        own.entries.createTodos({.contents = {"old"}, .board = *work, .now = kNow}).front();
    own.boards.setArchived(true, *work, kNow);
    open();
    row("Archived boards").click();
    EXPECT_EQ(navigation().currentPage(), PageKind::archived);
    key(Qt::Key_Return); // the keyboard is on its first board
    ASSERT_EQ(page().board(), work);
    EXPECT_NE(preferences.mainBoardSelectedBoardID(), work->id()) << "the next start shows no such";
    EXPECT_EQ(page().entries().rowOf(EntryListModel::RowKind::newTodo), -1);
    list().setCurrentRow(0);
    for (const auto& [which, modifiers] :
         std::vector<std::pair<int, Qt::KeyboardModifiers>>{{Qt::Key_Space, {}},
                                                            {Qt::Key_Return, {}},
                                                            {Qt::Key_F2, {}},
                                                            {Qt::Key_Delete, {}},
                                                            {Qt::Key_Return, Qt::ControlModifier},
                                                            {Qt::Key_D, Qt::ControlModifier},
                                                            {Qt::Key_Down, Qt::AltModifier}}) {
        key(which, modifiers);
        EXPECT_TRUE(list().hasFocus()) << which;
        EXPECT_FALSE(todo->isCompleted()) << which;
        EXPECT_THAT(storedTexts(*work), ElementsAre("old")) << which;
    }
    key(Qt::Key_Escape);
    EXPECT_EQ(navigation().currentPage(), PageKind::archived) << "back to the list of them";
    key(Qt::Key_Escape);
    EXPECT_EQ(page().board(), inbox);

    navigation().showBoard(*work);
    page().findChild<NoticeLine*>()->findChild<QPushButton*>()->click();
    EXPECT_FALSE(work->isArchived());
    EXPECT_FALSE(page().isReadOnly());
    EXPECT_EQ(boards().currentIndex().data().toString(), QStringLiteral("Work"));
    EXPECT_GE(page().entries().rowOf(EntryListModel::RowKind::newTodo), 0);
}

TEST_F(NavigationTest, PagesOverAllBoardsComeAndGoByKeysAlone) {
    open();
    navigation().showBoard(*work);
    key(Qt::Key_F, Qt::ControlModifier);
    key(Qt::Key_Tab);
    EXPECT_TRUE(row("Upcoming").hasFocus());
    key(Qt::Key_Space);
    EXPECT_EQ(navigation().currentPage(), PageKind::upcoming);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Upcoming – Korvex"));
    EXPECT_TRUE(row("Upcoming").isChecked());
    EXPECT_FALSE(boards().currentIndex().isValid());
    search("wor");
    EXPECT_EQ(navigation().currentPage(), PageKind::search);
    key(Qt::Key_Escape);
    EXPECT_EQ(navigation().currentPage(), PageKind::upcoming) << "where one was";
    key(Qt::Key_Escape);
    EXPECT_EQ(navigation().currentPage(), PageKind::board);
    EXPECT_EQ(page().board(), work);

    row("Completed").click();
    EXPECT_EQ(navigation().currentPage(), PageKind::completed);
    key(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(navigation().currentPage(), PageKind::board);
    EXPECT_TRUE(page().entries().hasDraft()) << "a new todo goes to the last board";
    type("made");
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*work), ElementsAre("made"));

    row("Upcoming").click();
    key(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(page().board(), inbox);
    EXPECT_EQ(navigation().currentPage(), PageKind::board);
}

TEST_F(NavigationTest, ANewBoardIsTakenBackByEscape) {
    open();
    for (const auto from : {PageKind::upcoming, PageKind::board}) {
        if (from == PageKind::board) {
            navigation().openBoard(*work);
        } else {
            navigation().showPage(from);
        }
        key(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(sidebar().boards().rowCount(), 3);
        type("Ga");
        key(Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([this] { return sidebar().boards().rowCount() == 2; }));
        EXPECT_EQ(navigation().currentPage(), from);
        EXPECT_TRUE(from != PageKind::board || page().board() == work);
        EXPECT_TRUE(navigation().page().isAncestorOf(QApplication::focusWidget()));
        QApplication::processEvents();
        EXPECT_EQ(navigation().currentPage(), from) << "no Inbox comes later";
    }
    key(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    type("Garden");
    key(Qt::Key_Return);
    QApplication::processEvents();
    sidebar().rename(*page().board());
    key(Qt::Key_Escape);
    QApplication::processEvents();
    EXPECT_EQ(page().board()->name(), "Garden") << "Escape from a later renaming keeps the board";
}

TEST_F(NavigationTest, ABoardIsRenamedOverItsPage) {
    open();
    navigation().openBoard(*work);
    const auto rename = [this](const char* name) {
        page().header().rename(*work);
        type(name);
    };
    rename("Office");
    key(Qt::Key_Return);
    EXPECT_EQ(work->name(), "Office");
    EXPECT_TRUE(list().hasFocus());
    rename("Shop");
    key(Qt::Key_Escape);
    EXPECT_EQ(work->name(), "Office");
    rename("Shop");
    navigation().showBoard(*inbox);
    EXPECT_EQ(work->name(), "Shop") << "taken as it is";
    navigation().showBoard(*work);
    const auto isSaid = [this] {
        const auto& header = *page().findChild<BoardHeader*>();
        const auto* const said = header.findChild<RefusalLabel*>();
        return said->isVisible() && said->text() == QStringLiteral("Board names cannot be empty.");
    };
    for (const auto* const blank : {"  ", ""}) {
        rename("x");
        key(Qt::Key_Backspace);
        type(blank);
        key(Qt::Key_Return);
        ASSERT_TRUE(QTest::qWaitFor([blank] {
            const auto* const field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
            return field && field->text() == QString::fromUtf8(blank);
        }));
        EXPECT_TRUE(isSaid());
        type("x");
        EXPECT_FALSE(isSaid());
        key(Qt::Key_Backspace);
        key(Qt::Key_F, Qt::ControlModifier);
        EXPECT_FALSE(isSaid());
        EXPECT_EQ(page().banner().message(), QString());
        EXPECT_EQ(work->name(), "Shop") << "who goes away has not given another";
        EXPECT_TRUE(field().hasFocus());
    }
    rename(" ");
    navigation().showBoard(*inbox);
    EXPECT_EQ(page().board(), inbox);
}

TEST_F(NavigationTest, ArchivingIsToldAndTakenBack) {
    open();
    navigation().openBoard(*work);
    Q_EMIT sidebar().boardMenuRequested(work, {});
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (auto* const action : menu->actions()) {
        if (action->text() == QStringLiteral("Archive")) {
            action->trigger();
        }
    }
    menu->close();
    ASSERT_TRUE(QTest::qWaitFor([this] { return page().board() == inbox; }));
    EXPECT_EQ(page().banner().message(), QStringLiteral("“Work” was archived."));
    for (auto* const button : page().banner().findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("Undo")) {
            button->click();
        }
    }
    EXPECT_FALSE(work->isArchived());
    EXPECT_EQ(page().board(), work) << "it is in sight again";
}

TEST_F(NavigationTest, APanelKeepsClearOfItsRowAndEndsWhenWhatItIsAboutGoes) {
    auto& todo = *add({"a"}).front();
    open();
    const auto openPanel = [&] {
        navigation().openBoard(*inbox);
        list().setCurrentRow(0);
        key(Qt::Key_D, Qt::ControlModifier);
        auto* const panel = window->findChild<SchedulePopover*>();
        EXPECT_TRUE(panel && panel->isVisible());
        const auto row = list().globalRect(list().visualRect(list().currentIndex()));
        const auto box = RowFrame::of(theme).box(row.size()).translated(row.topLeft());
        const QRect place(panel->mapToGlobal(QPoint()), panel->size());
        EXPECT_FALSE(place.intersects(box)) << "its ring is whole";
        return panel;
    };
    const std::pair<int, Qt::KeyboardModifiers> keys[] = {{Qt::Key_F9, {}},
                                                          {Qt::Key_2, Qt::ControlModifier},
                                                          {Qt::Key_1, Qt::ControlModifier},
                                                          {Qt::Key_N, Qt::ControlModifier},
                                                          {Qt::Key_F, Qt::ControlModifier},
                                                          {Qt::Key_K, Qt::ControlModifier}};
    for (const auto& [which, modifiers] : keys) {
        auto* const panel = openPanel();
        panel->findChild<QCheckBox*>()->click();
        key(which, modifiers);
        EXPECT_FALSE(panel->isVisible()) << which;
        EXPECT_TRUE(which != Qt::Key_F9 || sidebar().isHidden());
        EXPECT_FALSE(panel->isAncestorOf(QApplication::focusWidget())) << which;
        EXPECT_EQ(todo.dueDay(), 20250310) << "kept, as by a press outside: " << which;
        own.undo.undo();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    window->findChild<BoardPicker*>()->closeNow();

    auto* const panel = openPanel();
    navigation().showBoard(*work);
    EXPECT_FALSE(panel->isVisible());
    navigation().openBoard(*inbox);
    page().header().rename(*inbox);
    key(Qt::Key_Escape);
    Q_EMIT sidebar().boardMenuRequested(work, {});
    EXPECT_TRUE(QApplication::activePopupWidget());
    navigation().showBoard(*work);
    EXPECT_FALSE(QApplication::activePopupWidget()) << "a menu too";
}

TEST_F(NavigationTest, TheArrowsLeadThroughTheSidebarAsOneList) {
    own.boards.setArchived(true, own.boards.createBoard("Old", kNow), kNow);
    open();
    row("Upcoming").setFocus();
    key(Qt::Key_Down);
    EXPECT_TRUE(row("Completed").hasFocus());
    key(Qt::Key_Down);
    EXPECT_TRUE(boards().hasFocus());
    EXPECT_EQ(page().board(), inbox);
    key(Qt::Key_Down);
    EXPECT_EQ(page().board(), work);
    key(Qt::Key_Down);
    EXPECT_TRUE(row("Archived boards").hasFocus());
    key(Qt::Key_Up);
    key(Qt::Key_Up);
    key(Qt::Key_Up);
    EXPECT_TRUE(row("Completed").hasFocus());
    key(Qt::Key_Up);
    key(Qt::Key_Up);
    EXPECT_TRUE(field().hasFocus());
    row("Upcoming").setFocus();
    key(Qt::Key_End);
    EXPECT_TRUE(row("Archived boards").hasFocus());
    key(Qt::Key_PageUp);
    EXPECT_TRUE(row("Upcoming").hasFocus());
    row("Archived boards").click();
    auto& older = own.boards.createBoard("Outdated", kNow);
    own.boards.setArchived(true, older, kNow);
    QApplication::processEvents();
    key(Qt::Key_PageDown);
    key(Qt::Key_Return); // the last one
    EXPECT_EQ(page().board(), &older);
}

TEST_F(NavigationTest, ControlKGoesToABoardFromAnywhere) {
    open();
    for (auto* const from : std::vector<QWidget*>{&field(), &list(), &row("Upcoming")}) {
        navigation().showBoard(*inbox);
        from->setFocus();
        key(Qt::Key_K, Qt::ControlModifier);
        ASSERT_NE(window->findChild<BoardPicker*>(), nullptr);
        type("wk");
        key(Qt::Key_Return);
        EXPECT_EQ(page().board(), work);
        EXPECT_TRUE(list().hasFocus());
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(NavigationTest, AnEntryDroppedOnAnotherBoardMovesThere) {
    const auto todos = add({"a", "b"});
    auto& old = own.boards.createBoard("Old", kNow);
    own.boards.setArchived(true, old, kNow);
    open();
    EXPECT_FALSE(drop(*todos[0], *inbox)) << "it stands there already";
    EXPECT_TRUE(drop(*todos[0], *work));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    EXPECT_THAT(storedTexts(*work), ElementsAre("a"));

    // Archived while the entry is on its way, and not heard of yet.
    tests::StoreClient another(folder / "Primary.store", log);
    another.boards.setArchived(true, *another.boards.board(work->id()), kNow);
    drop(*todos[1], *work);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    EXPECT_THAT(toUtf8(page().banner().message()), ::testing::HasSubstr("is archived"));
}

TEST_F(NavigationTest, UndoWorksOnEveryPageUnderItsName) {
    const auto todos = add({"a"});
    open();
    const auto undo = [this] {
        for (auto* const action : window->actions()) {
            if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Z)) {
                return action;
            }
        }
        return static_cast<QAction*>(nullptr);
    }();
    ASSERT_NE(undo, nullptr);
    EXPECT_EQ(undo->text(), QStringLiteral("Undo"));
    EXPECT_FALSE(undo->isEnabled());
    own.entries.completeTodo(*todos[0], kNow);
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Complete Todo"));
    row("Completed").click();
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(todos[0]->isCompleted());
    EXPECT_FALSE(undo->isEnabled());
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(todos[0]->isCompleted());
    own.boards.setArchived(true, *work, kNow);
    navigation().showBoard(*work);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(todos[0]->isCompleted()) << "also from a board that is only looked at";
}

TEST_F(NavigationTest, TheCountOfUpcomingTodosFollowsTheStore) {
    const auto todos = add({"a", "b"});
    own.entries.updateSchedule(*todos[0], model::TodoSchedule::dueOn(base::DayNumber{20250311}),
                               kNow);
    open();
    EXPECT_TRUE(QTest::qWaitFor([this] { return row("Upcoming").note() == QStringLiteral("1"); }));
    own.entries.completeTodo(*todos[0], kNow);
    EXPECT_EQ(row("Upcoming").note(), QString());

    // A reminder that nobody shows is to be found from every page.
    reminders.set(schedule::AuthorizationStatus::denied);
    own.entries.updateSchedule(*todos[1], {.reminderDate = kNow + -60.0}, kNow + -120.0);
    EXPECT_EQ(row("Upcoming").accessibleDescription(),
              QStringLiteral("1 open todo, 1 reminder came due"));
    row("Upcoming").click();
    for (auto* const button : window->findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("Mark as Seen")) {
            button->click();
        }
    }
    EXPECT_EQ(row("Upcoming").accessibleDescription(), QStringLiteral("1 open todo"));
}

} // namespace
} // namespace korvex::ui
