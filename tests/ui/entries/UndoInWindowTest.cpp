#include "ui/entries/BoardPage.h"

#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/boards/BoardPicker.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/overview/TodoListView.h"
#include "ui/windows/MainWindow.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QLineEdit>

#include <gmock/gmock.h>

#include <functional>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class UndoInWindowTest : public tests::WindowFixture {
protected:
    UndoInWindowTest() {
        list().setStyle(&still);
        window.resize(800, 500);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    EntryListView& list() { return page.list(); }
    TodoTextEdit& field() { return page.findChild<TodoEditor*>()->field(); }
    bool isEditing() { return list().editedRow() >= 0; }
    void select(int row) {
        list().setCurrentRow(row);
        list().setFocus();
    }
    static void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(which), modifiers);
    }
    static void type(const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    }
    static void undo() { key(Qt::Key_Z, Qt::ControlModifier); }
    static void redo() { key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }
    static QAbstractButton* offerOf(Page& shown) {
        for (auto* const button : shown.banner().findChildren<QAbstractButton*>()) {
            if (button->isVisible() && !button->text().isEmpty()) {
                return button;
            }
        }
        return nullptr;
    }
    QAbstractButton* offer() { return offerOf(page); }
    model::Entry& addText(const char* text) {
        return own.entries.createText({.rich = richtext::RichTextSerializer::plainRichText(text),
                                       .board = *inbox,
                                       .now = clock.now()});
    }

    tests::StillStyle still;
    MainWindow window{workspace, theme};
    Navigation& navigation = *window.findChild<Navigation*>();
    BoardPage& page = *window.findChild<BoardPage*>();
};

TEST_F(UndoInWindowTest, DeletesAtOnceAndOffersToTakeItBack) {
    add({"a", "b", "c"});
    select(1);
    key(Qt::Key_Delete);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "c"));
    ASSERT_TRUE(offer());
    EXPECT_EQ(page.banner().message(), QStringLiteral("“b” was deleted."));
    offer()->click();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c"));
    EXPECT_EQ(list().currentRow(), 1) << "what came back is what is selected";
    EXPECT_FALSE(page.banner().isVisible());
}

TEST_F(UndoInWindowTest, KeysGoBackAndForwardThroughAllThatWasDone) {
    add({"a", "b", "c"});
    select(0);
    key(Qt::Key_Return);
    QTest::keyClicks(&field(), QStringLiteral("!"));
    key(Qt::Key_Escape);
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_Return, Qt::ControlModifier);
    select(0);
    key(Qt::Key_Delete);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("c"));
    for (int i = 0; i < 4; ++i) {
        undo();
    }
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c"));
    for (int i = 0; i < 5; ++i) {
        redo();
    }
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("c"));
}

TEST_F(UndoInWindowTest, AnEditorUndoesItsOwnWordsFirst) {
    add({"a", "b"});
    select(0);
    key(Qt::Key_Delete);
    key(Qt::Key_Return);
    ASSERT_TRUE(isEditing());
    QTest::keyClicks(&field(), QStringLiteral("x"));
    undo();
    undo();
    EXPECT_TRUE(isEditing()) << "one too many takes nothing else back";
    EXPECT_EQ(field().toPlainText(), QStringLiteral("b"));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    key(Qt::Key_Escape);
    key(Qt::Key_Return);
    undo();
    EXPECT_FALSE(isEditing()) << "nothing was typed: the window's";
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b"));
}

TEST_F(UndoInWindowTest, AnUndoThatIsRefusedSaysWhyAndTheRestGoesOn) {
    auto& todo = *add({"a"}).front();
    own.entries.updateTodo(todo, "b", clock.now());
    own.entries.updateTodo(todo, "c", clock.now());
    elsewhere([&](auto& program) {
        program.entries.updateTodo(theirs(program, todo), "theirs", clock.now());
    });
    log.expectError("Edit Todo undo failed");
    list().setFocus();
    undo();
    EXPECT_TRUE(page.banner().isVisible());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("theirs"));
    EXPECT_TRUE(own.undo.canUndo());
}

TEST_F(UndoInWindowTest, WhatCannotBeTakenBackOfAStepIsSaid) {
    const auto todos = add({"a", "b"});
    own.entries.completeTodos(*inbox, clock.now());
    elsewhere([&](auto& program) { program.entries.deleteEntry(theirs(program, *todos[1])); });
    list().setFocus();
    undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a"));
    EXPECT_EQ(page.banner().message(), QStringLiteral("“Complete Todos” was undone, except for 1 "
                                                      "entry deleted meanwhile."));
}

TEST_F(UndoInWindowTest, MovesToABoardByItsName) {
    auto& work = own.boards.createBoard("Work", clock.now());
    add({"a", "b"});
    select(0);
    key(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
    auto* const picker = window.findChild<BoardPicker*>();
    ASSERT_TRUE(picker);
    auto* const search = picker->findChild<QLineEdit*>();
    QTest::keyClicks(search, QStringLiteral("wo"));
    QTest::keyClick(search, Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_THAT(storedTexts(work), ElementsAre("a"));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    ASSERT_TRUE(offer());
    offer()->click();
    EXPECT_THAT(storedTexts(work), IsEmpty());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b"));
}

TEST_F(UndoInWindowTest, ATickTakenBackByKeyWhileItIsSeenStays) {
    add({"a", "b"});
    select(0);
    key(Qt::Key_Space);
    undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b"));
    runLoop.advance(2 * kTickShown);
    ASSERT_EQ(page.entries().rowCount(), 3);
    EXPECT_EQ(page.entries().text(0), QStringLiteral("a"));
    EXPECT_FALSE(page.entries().isLingering(*page.entries().entry(0)));
}

TEST_F(UndoInWindowTest, WhatOneActionCreatedGoesInOneStepAndComesBack) {
    add({"one two", "z"});
    auto& text = addText("before after");
    const auto before = storedTexts(*inbox);
    using Action = std::function<void()>;
    const auto paste = [](const char* lines) {
        QApplication::clipboard()->setText(QString::fromUtf8(lines));
        key(Qt::Key_V, Qt::ControlModifier);
    };
    struct Case {
        const char* name;
        /// On which row one is after the undo, and after the redo.
        const char* undone;
        const char* redone;
        Action act;
    };
    const std::vector<Case> actions{
        {"Return", "one two", "new",
         [&] {
             select(0);
             key(Qt::Key_Return);
             key(Qt::Key_Return);
             type("new");
             key(Qt::Key_Return);
         }},
        {"Ctrl+N", "before after", "new",
         [&] {
             key(Qt::Key_N, Qt::ControlModifier);
             type("new");
             key(Qt::Key_Escape);
         }},
        {"a text", "before after", "new",
         [&] {
             key(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
             type("new");
             key(Qt::Key_Escape);
         }},
        {"lines in a draft", "before after", "c",
         [&] {
             key(Qt::Key_N, Qt::ControlModifier);
             paste("a\nb\nc");
         }},
        {"lines in a todo", "one two", "Z two",
         [&] {
             select(0);
             key(Qt::Key_Return);
             field().setCaret(3);
             paste("X\nY\nZ");
         }},
        {"lines in the list", "one two", "b",
         [&] {
             select(0);
             paste("a\nb");
         }},
        {"a split", "before after", "before",
         [&] {
             select(2);
             key(Qt::Key_Return);
             page.findChild<TextEditor*>()->setCaret(6);
             key(Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
         }},
    };
    const auto current = [&] { return page.entries().text(list().currentRow()).toStdString(); };
    for (const auto& [name, undone, redone, act] : actions) {
        SCOPED_TRACE(name);
        act();
        const auto after = storedTexts(*inbox);
        EXPECT_NE(after, before);
        undo();
        EXPECT_EQ(storedTexts(*inbox), before);
        EXPECT_FALSE(own.undo.canUndo()) << "one step";
        EXPECT_TRUE(list().hasFocus());
        EXPECT_FALSE(isEditing());
        EXPECT_EQ(current(), undone);
        redo();
        EXPECT_EQ(storedTexts(*inbox), after);
        EXPECT_TRUE(list().hasFocus());
        EXPECT_EQ(current(), redone);
        undo();
    }
    EXPECT_EQ(text.content(), "before after");
}

TEST_F(UndoInWindowTest, LinesThatAreTakenBackLeaveWhatWasTypedBefore) {
    add({"alpha"});
    const auto typeAndPaste = [](const char* typed) {
        type(typed);
        key(Qt::Key_Home, Qt::ShiftModifier);
        QApplication::clipboard()->setText(QStringLiteral("S1\nS2"));
        key(Qt::Key_V, Qt::ControlModifier);
    };
    select(0);
    key(Qt::Key_Return);
    typeAndPaste(" precious");
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("S1", "S2"));
    undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("alpha precious"));

    key(Qt::Key_N, Qt::ControlModifier);
    typeAndPaste("typed with care");
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("alpha precious", "S1", "S2"));
    undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("alpha precious", "typed with care"));
    undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("alpha precious"));
}

TEST_F(UndoInWindowTest, ASplitThatIsTakenBackKeepsWhatWasTypedBefore) {
    addText("one");
    select(0);
    key(Qt::Key_Return);
    type(" two");
    page.findChild<TextEditor*>()->setCaret(3);
    key(Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one", " two"));
    undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one two"));
}

TEST_F(UndoInWindowTest, LinesPastedIntoATextAreOneStepOfItsEditor) {
    addText("one");
    select(0);
    key(Qt::Key_Return);
    QApplication::clipboard()->setText(QStringLiteral("a\nb\nc\n"));
    key(Qt::Key_V, Qt::ControlModifier);
    undo();
    EXPECT_TRUE(isEditing());
    EXPECT_EQ(page.findChild<TextEditor*>()->field().toPlainText(), QStringLiteral("one"));
    EXPECT_FALSE(page.findChild<TextEditor*>()->field().document()->isUndoAvailable());
}

TEST_F(UndoInWindowTest, WhatAnotherHasWrittenIntoAnEntryIsNotTakenBack) {
    key(Qt::Key_N, Qt::ControlModifier);
    type("mine");
    key(Qt::Key_Escape);
    elsewhere([&](auto& program) {
        program.entries.updateTodo(theirs(program, *page.entries().entry(0)), "theirs",
                                   clock.now());
    });
    log.expectError("New Todo undo failed");
    undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("theirs"));
    EXPECT_TRUE(page.banner().isVisible());
}

TEST_F(UndoInWindowTest, GoesToTheBoardThatItIsAboutAndSaysSo) {
    auto& work = own.boards.createBoard("Work", clock.now());
    auto* const todo = add({"a", "b"}).front();
    own.entries.deleteEntry(*todo);
    navigation.openBoard(work);
    undo();
    EXPECT_EQ(page.board(), inbox);
    EXPECT_EQ(page.banner().message(), QStringLiteral("“Delete Entry” was undone on Inbox."));
    EXPECT_EQ(list().currentRow(), 0);
    EXPECT_TRUE(list().hasFocus());
    navigation.openBoard(work);
    redo();
    EXPECT_EQ(page.board(), inbox) << "also where nothing is left of it";
    EXPECT_EQ(page.banner().message(), QStringLiteral("“Delete Entry” was done again on Inbox."));
    page.endAnswer();
    undo();
    EXPECT_EQ(page.banner().message(), QString()) << "here it is seen";
}

TEST_F(UndoInWindowTest, OnAPageOverAllBoardsWhatCameBackIsShownThere) {
    const auto todos = add({"due", "open"});
    own.entries.updateSchedule(*todos[0], model::TodoSchedule::dueOn(base::DayNumber{20250311}),
                               clock.now());
    own.entries.completeTodo(*todos[1], clock.now());
    own.entries.deleteEntry(*todos[0]);
    navigation.showPage(PageKind::upcoming);
    navigation.takeKeyboard();
    undo();
    auto& upcoming = navigation.page();
    auto& shown = *upcoming.findChild<TodoListView*>();
    EXPECT_TRUE(shown.hasFocus());
    EXPECT_EQ(shown.currentIndex().data().toString(), QStringLiteral("due"));
    undo();
    EXPECT_EQ(navigation.currentPage(), PageKind::upcoming);
    EXPECT_EQ(upcoming.banner().message(), QStringLiteral("“Complete Todo” was undone on Inbox."));
    ASSERT_TRUE(offerOf(upcoming));
    offerOf(upcoming)->click();
    EXPECT_EQ(navigation.currentPage(), PageKind::board);
    EXPECT_EQ(page.entries().text(list().currentRow()), QStringLiteral("open"));
}

TEST_F(UndoInWindowTest, AnOfferIsForWhatItSaysAndGoesWhenThatIsTakenBack) {
    const auto todos = add({"a", "b", "c"});
    own.entries.updateSchedule(*todos[2], model::TodoSchedule::dueOn(base::DayNumber{20250311}),
                               clock.now());
    select(1);
    key(Qt::Key_Delete);
    ASSERT_TRUE(offer());
    select(0);
    key(Qt::Key_Return);
    type("!");
    offer()->click();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a!", "b", "c")) << "what was typed since stays";
    EXPECT_EQ(page.entries().text(list().currentRow()), QStringLiteral("b"));
    EXPECT_FALSE(offer());

    navigation.showPage(PageKind::upcoming);
    navigation.takeKeyboard();
    key(Qt::Key_Delete);
    ASSERT_TRUE(offerOf(navigation.page()));
    undo();
    EXPECT_FALSE(offerOf(navigation.page()));
    EXPECT_FALSE(navigation.page().banner().isVisible());
    EXPECT_EQ(storedTexts(*inbox).size(), 3U);
}

} // namespace
} // namespace korvex::ui
