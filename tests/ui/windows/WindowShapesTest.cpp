#include "ui/windows/SidebarPlace.h"

#include "model/ServiceErrors.h"
#include "ui/WindowFixture.h"
#include "ui/entries/BoardPage.h"
#include "ui/entries/RowRefusal.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/pages/NoticeLine.h"
#include "ui/kit/pages/PageHeader.h"
#include "ui/kit/pages/ScrollEdge.h"
#include "ui/kit/theme/Direction.h"
#include "ui/overview/TodoListView.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/PageStack.h"
#include "ui/windows/Sidebar.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSplitter>
#include <QTextEdit>
#include <QToolButton>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;

/// The window in the widths, directions and states that it must do its work in.
class WindowShapesTest : public tests::WindowFixture {
protected:
    WindowShapesTest() { work = &own.boards.createBoard("Work", kNow); }

    void open(int width, const ui::Workspace& shown) {
        window = std::make_unique<MainWindow>(shown, theme);
        window->resize(width, 500);
        // The style of these tests would take room for it.
        list().setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QApplication::processEvents();
    }
    void open(int width) { open(width, workspace); }
    Sidebar& sidebar() { return *window->findChild<Sidebar*>(); }
    BoardPage& page() { return *window->findChild<BoardPage*>(); }
    EntryListView& list() { return page().list(); }
    QRect placeOf(int row) {
        return list().globalRect(list().visualRect(page().entries().index(row, 0)));
    }
    Navigation& navigation() { return *window->findChild<Navigation*>(); }
    void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        auto* const focused = QApplication::focusWidget();
        QTest::keyClick(focused ? focused : window.get(), static_cast<Qt::Key>(which), modifiers);
        QApplication::processEvents();
    }

    model::Board* work = nullptr;
    std::unique_ptr<MainWindow> window;
};

TEST_F(WindowShapesTest, ANarrowWindowFoldsTheSidebarAndLaysItOverThePage) {
    add({"a"});
    open(360);
    EXPECT_LE(window->minimumWidth(), 360);
    EXPECT_EQ(window->width(), 360);
    EXPECT_FALSE(sidebar().isVisible());
    EXPECT_EQ(list().width(), 360) << "the page has all of the window";

    key(Qt::Key_F9);
    EXPECT_TRUE(sidebar().isVisible());
    EXPECT_TRUE(sidebar().isAncestorOf(QApplication::focusWidget()));
    EXPECT_EQ(list().width(), 360) << "over the page, which stays as it is";
    key(Qt::Key_Down);
    EXPECT_EQ(page().board(), work);
    EXPECT_TRUE(sidebar().isVisible()) << "while the arrows walk";
    key(Qt::Key_Home);
    EXPECT_EQ(page().board(), inbox);
    key(Qt::Key_End);
    EXPECT_EQ(page().board(), work);
    key(Qt::Key_Return);
    EXPECT_FALSE(sidebar().isVisible());
    EXPECT_TRUE(list().hasFocus());
    key(Qt::Key_F9);
    key(Qt::Key_Escape);
    EXPECT_FALSE(sidebar().isVisible());
    key(Qt::Key_F9);
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, QPoint(350, 300));
    EXPECT_FALSE(sidebar().isVisible()) << "a press beside it";

    key(Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(sidebar().searchField().hasFocus());
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("a"));
    EXPECT_LT(sidebar().mask().boundingRect().height(), 100) << "what was found is to be seen";
    key(Qt::Key_Return);
    EXPECT_FALSE(sidebar().isVisible());
    EXPECT_EQ(page().board(), inbox);

    window->resize(800, 500);
    EXPECT_TRUE(sidebar().isVisible());
    EXPECT_LE(list().width(), 800 - sidebar().width());
    key(Qt::Key_F9);
    EXPECT_FALSE(sidebar().isVisible());
    window->resize(360, 500);
    window->resize(800, 500);
    EXPECT_FALSE(sidebar().isVisible()) << "as the user wants it";

    key(Qt::Key_F9);
    auto& handle = *window->findChild<QSplitter*>()->handle(1);
    const auto first = sidebar().width();
    QTest::mousePress(&handle, Qt::LeftButton, {}, QPoint());
    QMouseEvent drag(QEvent::MouseMove, QPointF(37, 0), handle.mapToGlobal(QPointF(37, 0)),
                     Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(&handle, &drag);
    QTest::mouseRelease(&handle, Qt::LeftButton);
    const auto moved = sidebar().width();
    ASSERT_GT(moved, first);
    for (const int width : {1'380, 360, 960, 545, 960}) {
        window->resize(width, 500);
        QApplication::processEvents();
    }
    EXPECT_EQ(sidebar().width(), moved) << "as wide as the user has made it";
}

TEST_F(WindowShapesTest, TheSidebarHasTheRoomThatItsFontNeeds) {
    open(640);
    EXPECT_TRUE(sidebar().isVisible());
    preferences.setFontSize(24);
    QApplication::processEvents();
    EXPECT_FALSE(sidebar().isVisible()) << "there is no room for both any more";
    window->resize(360, 500);
    window->resize(1000, 500);
    QApplication::processEvents();
    EXPECT_TRUE(sidebar().isVisible());
    EXPECT_GE(sidebar().width(), theme.scaled(180));
    EXPECT_LE(sidebar().width(), 500);
}

TEST_F(WindowShapesTest, TheHeaderOfALongNameStandsInItsFirstLineAndItsMenuWithinTheWindow) {
    own.boards.renameBoard(*inbox, "All that is to be done before we leave, and then some more",
                           kNow);
    add({"a"});
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        open(400);
        const auto button = [this](const char* name) {
            for (auto* const each : page().findChildren<QToolButton*>()) {
                if (each->accessibleName() == QString::fromUtf8(name)) {
                    return each;
                }
            }
            return static_cast<QToolButton*>(nullptr);
        };
        auto* const menu = button("Menu of the board");
        const auto* const header = menu->parentWidget();
        EXPECT_GT(header->height(), 3 * menu->height()) << "the name wraps";
        EXPECT_EQ(button("Icon of the board")->y(), menu->y());
        EXPECT_LT(menu->geometry().bottom(), header->height() / 2);
        page().header().rename(*inbox);
        EXPECT_GE(header->findChild<QLineEdit*>()->geometry().bottom(),
                  header->findChild<QLabel*>()->geometry().bottom())
            << "the field leaves no hole under itself";
        key(Qt::Key_Escape);
        menu->click();
        auto* const opened = QApplication::activePopupWidget();
        ASSERT_NE(opened, nullptr);
        EXPECT_TRUE(window->geometry().contains(opened->geometry()));
        const QRect anchor(menu->mapToGlobal(QPoint()), menu->size());
        EXPECT_TRUE(opened->geometry().right() == anchor.right() ||
                    opened->geometry().left() == anchor.left());
        opened->close();
        preferences.setFontSize(24);
        window->resize(360, 500);
        QApplication::processEvents();
        const auto labels = header->findChildren<QLabel*>();
        const auto name = labels[0]->geometry();
        const auto count = labels[1]->geometry();
        EXPECT_GT(count.top(), name.bottom());
        EXPECT_TRUE(direction == Qt::LeftToRight ? count.left() == name.left()
                                                 : count.right() == name.right())
            << "where the name begins";
        preferences.setFontSize(13);
        window.reset();
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(WindowShapesTest, NothingMovesWhenMessagesComeAndGo) {
    add({"a", "b"});
    open(700);
    const auto before = placeOf(1);
    window->showError(QStringLiteral("It is broken."));
    QApplication::processEvents();
    EXPECT_TRUE(page().banner().isVisible());
    EXPECT_EQ(placeOf(1), before);
    EXPECT_FALSE(page().banner().geometry().isEmpty());
    page().endAnswer();
    QApplication::processEvents();
    EXPECT_EQ(placeOf(1), before);

    page().startTodo();
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("typed"));
    const auto edited = placeOf(list().editedRow());
    page().findChild<TodoEditor*>()->showError(QStringLiteral("It is broken."));
    QApplication::processEvents();
    EXPECT_EQ(placeOf(list().editedRow()).top(), edited.top());
    key(Qt::Key_Escape);

    own.entries.deleteEntry(*services::activeEntries(*inbox).back());
    navigation().showBoard(*work);
    const auto newTodo = placeOf(0);
    page().startTodo();
    QApplication::processEvents();
    EXPECT_EQ(placeOf(0).top(), newTodo.top()) << "where the hint was";
}

TEST_F(WindowShapesTest, AllOfAPageStandsInOneColumn) {
    for (int i = 0; i < 60; ++i) {
        add({"a todo"});
    }
    auto& todo = *add({"due"}).back();
    own.entries.updateSchedule(todo, model::TodoSchedule::dueOn(base::DayNumber{20250310}), kNow);
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        for (const int width : {360, 960, 1'600}) {
            SCOPED_TRACE(std::to_string(direction) + " at " + std::to_string(width));
            open(width);
            auto& upcoming = [this]() -> Page& {
                navigation().showPage(PageKind::upcoming);
                QApplication::processEvents();
                return window->findChild<PageStack*>()->current();
            }();
            const auto& rows = *upcoming.findChild<TodoListView*>();
            const auto row = rows.globalRect(rows.visualRect(rows.model()->index(1, 0)));
            EXPECT_EQ(row.width(), Column::of(rows.width(), theme).width);
            EXPECT_LE(row.width(), theme.scaled(800)) << "longer lines are hard to follow";
            const auto beside = row.left() - rows.mapToGlobal(QPoint()).x();
            EXPECT_NEAR(beside, rows.mapToGlobal(QPoint(rows.width(), 0)).x() - row.right() - 1, 1);
            const auto isRightToLeft = direction == Qt::RightToLeft;
            const auto inner =
                row.adjusted(theme.space(Space::wide), 0, -theme.space(Space::wide), 0);
            for (const auto* const label :
                 upcoming.findChild<PageHeader*>()->findChildren<QLabel*>()) {
                const QRect place(label->mapToGlobal(QPoint()), label->size());
                const auto isTitle = label->text() == QStringLiteral("Upcoming");
                EXPECT_EQ(isTitle != isRightToLeft ? place.left() - inner.left()
                                                   : place.right() - inner.right(),
                          0)
                    << label->text().toStdString();
            }
            navigation().showBoard(*inbox);
            QApplication::processEvents();
            const auto due = list().scheduleAnchor(page().entries().rowOf(todo));
            EXPECT_EQ(isRightToLeft ? due.left() - inner.left() : due.right() - inner.right(), 0);

            const auto& edge = *page().findChild<ScrollEdge*>();
            list().scrollToTop();
            EXPECT_FALSE(edge.isVisible());
            list().verticalScrollBar()->setValue(1);
            EXPECT_TRUE(edge.isVisible()) << "rows have gone under the header";
            EXPECT_EQ(edge.width(), list().width());
        }
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

/// Whatever is said under the text that is edited, it hides nothing, and what is above stays.
TEST_F(WindowShapesTest, AMessageUnderTheTextHasRoomOfItsOwn) {
    const auto message =
        toQString(model::descriptionOf(model::EntryServiceErrorCase::entryUnavailable));
    add({"above", "edited", "below"});
    for (const auto size : {preferences.fontSize(), app::AppPreferences::kFontSizes.back()}) {
        preferences.setFontSize(size);
        for (const int width : {700, 360}) {
            SCOPED_TRACE(std::to_string(size) + " at " + std::to_string(width));
            open(width);
            list().setCurrentRow(1);
            list().setFocus();
            key(Qt::Key_Return);
            QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("!"));
            const auto above = placeOf(0);
            const auto edited = placeOf(1);
            auto& editor = *page().findChild<TodoEditor*>();
            editor.showError(message);
            QApplication::processEvents();
            EXPECT_EQ(placeOf(0), above);
            EXPECT_EQ(placeOf(1).top(), edited.top());
            EXPECT_GE(placeOf(2).top(), placeOf(1).bottom());
            auto& shown = *editor.findChild<RowRefusal*>();
            const QRect place(shown.mapToGlobal(QPoint()), shown.size());
            EXPECT_TRUE(placeOf(1).contains(place));
            EXPECT_GE(place.top(), edited.bottom() - 2 * theme.rowDistance());
            for (auto* const part : shown.findChildren<QWidget*>()) {
                EXPECT_TRUE(shown.rect().contains(part->geometry()));
            }
            const auto& words = *shown.findChild<QLabel*>();
            EXPECT_GE(words.height(), words.heightForWidth(words.width()));
            key(Qt::Key_Escape);
            EXPECT_EQ(placeOf(0), above);
            EXPECT_EQ(placeOf(1).height(), edited.height());
        }
    }
}

TEST_F(WindowShapesTest, AMessageUnderALongTextIsInSightAndNotOverTheCaret) {
    open(700);
    page().startText();
    auto& field = *qobject_cast<QTextEdit*>(QApplication::focusWidget());
    field.setPlainText(QStringLiteral("line\n").repeated(80));
    for (const auto where : {QTextCursor::Start, QTextCursor::End}) {
        field.moveCursor(where);
        auto& editor = *page().findChild<TextEditor*>();
        editor.showError(QStringLiteral("The disk is full."));
        QApplication::processEvents();
        const auto& shown = *editor.findChild<RowRefusal*>();
        const QRect place(shown.mapToGlobal(QPoint()), shown.size());
        const QRect seen(list().viewport()->mapToGlobal(QPoint()), list().viewport()->size());
        EXPECT_TRUE(seen.contains(place));
        const QRect caret(field.viewport()->mapToGlobal(field.cursorRect().topLeft()),
                          field.cursorRect().size());
        EXPECT_TRUE(seen.contains(caret));
        EXPECT_FALSE(place.intersects(caret));
    }
}

TEST_F(WindowShapesTest, WhoeverSearchesGoesOnWhenTheWindowGetsAnotherWidth) {
    add({"a"});
    open(360);
    key(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("a"));
    for (const int width : {800, 360, 800}) {
        window->resize(width, 500);
        QApplication::processEvents();
        EXPECT_TRUE(sidebar().searchField().hasFocus()) << width;
        EXPECT_TRUE(sidebar().searchField().isVisible()) << width;
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("b"));
    }
    EXPECT_EQ(sidebar().searchField().text(), QStringLiteral("abbb"));
    EXPECT_EQ(navigation().currentPage(), PageKind::search);
}

TEST_F(WindowShapesTest, ExpandedCompletedTodosComeIntoSight) {
    for (int i = 0; i < 40; ++i) {
        add({"open"});
    }
    own.entries.completeTodos(*inbox, kNow);
    for (int i = 0; i < 12; ++i) {
        add({"open"});
    }
    open(700);
    list().setFocus();
    list().setCurrentRow(page().entries().rowOf(EntryRowKind::completedHeading));
    key(Qt::Key_Right);
    ASSERT_TRUE(page().entries().isCompletedExpanded());
    const int heading = page().entries().rowOf(EntryRowKind::completedHeading);
    EXPECT_EQ(list().visibleRows().first, heading);
    EXPECT_GT(list().visibleRows().second, heading + 3);
}

TEST_F(WindowShapesTest, FromRightToLeftEverythingIsTurned) {
    auto& todo = *add({"Buy milk", "\u05e9\u05dc\u05d5\u05dd"}).front();
    own.entries.updateSchedule(todo, model::TodoSchedule::dueOn(base::DayNumber{20250310}), kNow);
    const auto circle = [this](int row) {
        // A press there ticks, so that is where it is.
        const auto place = list().visualRect(page().entries().index(row, 0));
        const bool isMirrored = QGuiApplication::isRightToLeft();
        for (int step = 0; step < place.width(); ++step) {
            const int x = isMirrored ? place.right() - step : step;
            QMouseEvent move(QEvent::MouseMove, QPointF(x, place.center().y()),
                             list().viewport()->mapToGlobal(QPointF(x, place.center().y())),
                             Qt::NoButton, Qt::NoButton, {});
            QApplication::sendEvent(list().viewport(), &move);
            if (list().viewport()->cursor().shape() == Qt::PointingHandCursor) {
                return x;
            }
        }
        return -1;
    };
    open(700);
    const auto fromLeft = circle(1);
    const auto dueMargin = placeOf(0).right() - list().scheduleAnchor(0).right();
    EXPECT_LT(fromLeft, 60);
    EXPECT_LT(sidebar().mapTo(window.get(), QPoint()).x(), 10);
    window.reset();

    QApplication::setLayoutDirection(Qt::RightToLeft);
    open(700);
    EXPECT_GT(sidebar().mapTo(window.get(), QPoint(sidebar().width(), 0)).x(), 690);
    const auto dueFromRight = list().scheduleAnchor(0);
    EXPECT_EQ(dueFromRight.left() - placeOf(0).left(), dueMargin) << "at the other end of the row";
    EXPECT_EQ(placeOf(0).width() - 1 - circle(1), fromLeft)
        << "the circle is at the right, of every row";
    EXPECT_EQ(isolated(QStringLiteral("שלום")), QStringLiteral("שלום"));
    EXPECT_EQ(isolated(QStringLiteral("Buy milk")).size(), 10);
    QApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_EQ(isolated(QStringLiteral("Buy milk")), QStringLiteral("Buy milk"));
    EXPECT_EQ(isolated(QStringLiteral("Buy שלום")).size(), 10) << "it moves nothing around it";
}

TEST_F(WindowShapesTest, AStoreThatCannotBeWrittenSaysSoAndOffersNothingElse) {
    auto& todo = *add({"a"}).front();
    own.entries.updateSchedule(todo, model::TodoSchedule::dueOn(base::DayNumber{20250310}), kNow);
    const auto readOnly = store::ModelContainer::open(
        model::currentSchema(), {.file = folder / "Primary.store", .allowsSave = false}, log);
    const ui::WorkspaceOwner reader(around(*readOnly));
    open(700, reader.workspace());
    const auto notices = window->findChildren<NoticeLine*>();
    EXPECT_TRUE(std::any_of(notices.begin(), notices.end(),
                            [](const NoticeLine* line) { return line->isVisible(); }));
    EXPECT_TRUE(page().isReadOnly());
    EXPECT_LT(page().entries().rowOf(EntryRowKind::newTodo), 0);
    for (auto* const button : window->findChildren<QToolButton*>()) {
        if (button->accessibleName() == QStringLiteral("New board") ||
            button->accessibleName() == QStringLiteral("Icon of the board")) {
            EXPECT_FALSE(button->isEnabled()) << button->accessibleName().toStdString();
        }
    }
    Q_EMIT sidebar().boardMenuRequested(page().board(), {});
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (const auto* const action : menu->actions()) {
        EXPECT_TRUE(action->isSeparator() || !action->isEnabled()) << action->text().toStdString();
    }
    menu->close();
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    list().setFocus();
    const auto said = [this] {
        return window->findChild<PageStack*>()->current().banner().message();
    };
    key(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(said(), QStringLiteral("The local store is read-only."));
    EXPECT_FALSE(list().editedRow() >= 0);
    navigation().showPage(PageKind::upcoming);
    navigation().takeKeyboard();
    auto* const todos = window->findChild<TodoListView*>();
    ASSERT_NE(todos, nullptr);
    EXPECT_EQ(todos->currentIndex().data().toString(), QStringLiteral("a"));
    QTest::keyClick(todos, Qt::Key_Space);
    EXPECT_EQ(said(), QStringLiteral("The local store is read-only."));
    key(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(window->findChild<Popover*>(), nullptr);
    EXPECT_FALSE(todo.isCompleted());
}

TEST_F(WindowShapesTest, BoardsMoveByKeyboardAndKeepIt) {
    auto& home = own.boards.createBoard("Home", kNow);
    open(700);
    navigation().showBoard(home);
    auto& boards = *window->findChild<BoardListView*>();
    boards.setFocus();
    const auto names = [this] {
        std::vector<std::string> result;
        for (const auto* const board : sidebar().boards().activeBoards()) {
            result.push_back(board->name());
        }
        return result;
    };
    key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_THAT(names(), ElementsAre("Inbox", "Home", "Work"));
    EXPECT_TRUE(boards.hasFocus());
    EXPECT_EQ(boards.currentIndex().data().toString(), QStringLiteral("Home"));
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(names(), ElementsAre("Inbox", "Work", "Home")) << "not beyond the end";
    EXPECT_EQ(page().board(), &home);
}

} // namespace
} // namespace korvex::ui
