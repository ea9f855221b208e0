#include "model/ServiceErrors.h"
#include "ui/entries/BoardPageFixture.h"
#include "ui/entries/ShownRefusal.h"
#include "ui/kit/overlays/ErrorBanner.h"

#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QToolButton>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;

class BoardPageTest : public tests::BoardPageFixture {
protected:
    TodoEditor& editor() { return *page.findChild<TodoEditor*>(); }
    bool isEditing() { return !editor().isHidden(); }
    void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(isEditing() ? static_cast<QWidget*>(&editor().field()) : &list(),
                        static_cast<Qt::Key>(which), modifiers);
    }
    void type(const char* text) { QTest::keyClicks(&editor().field(), QString::fromUtf8(text)); }
    void paste(const QString& text) {
        QApplication::clipboard()->setText(text);
        editor().field().paste();
    }
    void edit(int row) {
        list().setCurrentRow(row);
        list().setFocus();
        key(Qt::Key_Return);
    }
    QString editorError() { return tests::shownRefusal(page); }
};

TEST_F(BoardPageTest, ReturnStoresAndMakesTheNextTodo) {
    page.startTodo();
    type("Buy milk");
    key(Qt::Key_Return);
    type("Water plants");
    key(Qt::Key_Return);
    EXPECT_TRUE(isEditing());
    key(Qt::Key_Return);
    EXPECT_FALSE(isEditing()) << "Return on an empty line ends the writing";
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("Buy milk", "Water plants"));
}

TEST_F(BoardPageTest, ReturnInAStoredTodoMakesTheNextBelowIt) {
    add({"a", "c"});
    edit(0);
    key(Qt::Key_Return);
    type("b");
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c"));
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(list().currentRow(), 1) << "the new todo is the current one";
}

TEST_F(BoardPageTest, BackspaceInAnEmptyDraftRemovesItAndGoesUp) {
    add({"a"});
    page.startTodo();
    key(Qt::Key_Backspace);
    ASSERT_TRUE(isEditing());
    EXPECT_EQ(list().editedRow(), 0);
    EXPECT_FALSE(page.entries().hasDraft());
    key(Qt::Key_Backspace);
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a"))
        << "an emptied todo gets its text back on Escape";
}

TEST_F(BoardPageTest, UpAndDownWalkThroughTodosAndStoreOnTheWay) {
    add({"a", "b", "c"});
    edit(1);
    type("!");
    key(Qt::Key_Up);
    EXPECT_EQ(list().editedRow(), 0);
    type("?");
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    EXPECT_EQ(list().editedRow(), 2);
    key(Qt::Key_Down);
    EXPECT_FALSE(isEditing()) << "below the last todo stands no text";
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a?", "b!", "c"));
}

TEST_F(BoardPageTest, AltWithArrowsMovesTheTodoInAndOutOfItsEditor) {
    add({"a", "b", "c"});
    list().setCurrentRow(0);
    list().setFocus();
    key(Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b", "a", "c"));
    key(Qt::Key_Return);
    type("!");
    key(Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b", "c", "a!"));
    EXPECT_EQ(list().editedRow(), 2);
    key(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(page.banner().message(), QString()) << "past the end nothing happens";
}

TEST_F(BoardPageTest, PastedLinesBecomeTodosInOrder) {
    add({"last"});
    list().setCurrentRow(0);
    page.startTodo();
    paste(QStringLiteral("one\n\n   two \r\nthree\n"));
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("last", "one", "two", "three"));
    edit(1);
    editor().field().setCaret(1);
    paste(QStringLiteral("X\nY"));
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("last", "oX", "Yne", "two", "three"))
        << "in the middle of a text the ends of it go with the first and the last line";
    for (const auto* const lineBreak : {u"\u2028", u"\u2029", u"\u0085", u"\v", u"\f", u"\r"}) {
        page.startTodo();
        paste(QStringLiteral("a%1b").arg(QString::fromUtf16(lineBreak)));
        EXPECT_EQ(editor().typed(), QStringLiteral("b")) << toUtf8(QString::fromUtf16(lineBreak));
        key(Qt::Key_Escape);
    }
}

TEST_F(BoardPageTest, APasteThatIsRefusedChangesNothing) {
    page.startTodo();
    type("kept");
    paste(QStringLiteral("short\n") + QString(10'001, QLatin1Char('x')));
    EXPECT_EQ(editor().typed(), QStringLiteral("kept"));
    EXPECT_EQ(editorError(),
              toQString(model::descriptionOf(model::EntryServiceErrorCase::contentTooLong)));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("kept")) << "as it was typed before";
    const auto& discard = *page.findChild<RowRefusal*>()->findChild<QPushButton*>();
    EXPECT_TRUE(discard.isVisible());
    editor().field().selectAll();
    key(Qt::Key_Backspace);
    paste(QString(10'001, QLatin1Char('x')));
    EXPECT_NE(editorError(), QString());
    EXPECT_FALSE(discard.isVisible()) << "there is nothing to discard";
}

TEST_F(BoardPageTest, NothingCanBeTypedOrPastedBeyondTheLimit) {
    add({std::string(9'999, 'x')});
    edit(0);
    type("y");
    EXPECT_EQ(editor().typed().size(), 10'000);
    EXPECT_EQ(editorError(), QString());
    type("z");
    EXPECT_EQ(editor().typed().size(), 10'000);
    EXPECT_NE(editorError(), QString());
    paste(QStringLiteral("zz"));
    EXPECT_EQ(editor().typed().size(), 10'000);
    key(Qt::Key_Backspace);
    EXPECT_EQ(editor().typed().size(), 9'999);
    EXPECT_EQ(editorError(), QString()) << "an edit takes the message away";
}

TEST_F(BoardPageTest, AnEmptiedTodoIsRefusedInPlaceAndTheEditorStays) {
    add({"a", "b"});
    edit(0);
    editor().field().selectAll();
    key(Qt::Key_Backspace);
    key(Qt::Key_Down);
    EXPECT_EQ(list().editedRow(), 0);
    EXPECT_EQ(editorError(), QStringLiteral("Entry content cannot be empty."));
    key(Qt::Key_Escape);
    EXPECT_FALSE(isEditing());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b"));
}

TEST_F(BoardPageTest, AnEmptiedTodoGoesByBackspaceAndByReturn) {
    add({"a", "b", "c"});
    const auto empty = [this](int row) {
        edit(row);
        editor().field().selectAll();
        key(Qt::Key_Backspace);
    };
    empty(1);
    key(Qt::Key_Backspace);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "c"));
    EXPECT_EQ(page.banner().message(), QStringLiteral("“b” was deleted."));
    EXPECT_EQ(list().editedRow(), 0) << "goes up";
    key(Qt::Key_Escape);
    empty(1);
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a"));
    EXPECT_FALSE(isEditing());
    EXPECT_TRUE(list().hasFocus());
    own.undo.undo();
    own.undo.undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c"));
}

TEST_F(BoardPageTest, TypingInTheListStartsATodoAndSpaceIsPartOfIt) {
    const auto* const todo = add({"a"}).front();
    list().setFocus();
    list().setCurrentRow(0);
    for (const auto letter : QStringLiteral("Buy milk")) {
        QTest::keyClick(QApplication::focusWidget(), letter.toLatin1());
    }
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "Buy milk"));
    EXPECT_FALSE(todo->isCompleted());

    QInputMethodEvent composing(QStringLiteral("n"), {});
    QApplication::sendEvent(&list(), &composing);
    EXPECT_FALSE(isEditing()) << "an editor would end the composition";
    QInputMethodEvent committing;
    committing.setCommitString(QStringLiteral("日本"));
    EXPECT_TRUE(list().testAttribute(Qt::WA_InputMethodEnabled));
    QApplication::sendEvent(&list(), &committing);
    EXPECT_EQ(editor().typed(), QStringLiteral("日本"));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(editor().typed(), QString()) << "what was typed is what the editor undoes";
}

TEST_F(BoardPageTest, WhatIsPastedIntoTheListStandsBelowTheCurrentEntry) {
    add({"a", "z"});
    list().setFocus();
    list().setCurrentRow(0);
    QApplication::clipboard()->setText(QStringLiteral(" one\n\ntwo\r\n"));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "one", "two", "z"));
    EXPECT_EQ(list().currentRow(), 2);
    auto* const formatted = new QMimeData;
    formatted->setHtml(QStringLiteral("<p>see <b>this</b></p><p>and that</p>"));
    QApplication::clipboard()->setMimeData(formatted);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "one", "two", "see this\nand that", "z"));
    EXPECT_FALSE(page.entries().entry(3)->isTodo());
    auto* const unformatted = new QMimeData;
    unformatted->setHtml(QStringLiteral("<p style='color:red'>three<br>four</p>"));
    QApplication::clipboard()->setMimeData(unformatted);
    list().setCurrentRow(0);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_THAT(storedTexts(*inbox),
                ElementsAre("a", "three", "four", "one", "two", "see this\nand that", "z"));
    for (int i = 0; i < 3; ++i) {
        own.undo.undo();
    }
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "z")) << "each paste is one step";
    QApplication::clipboard()->setText(QStringLiteral("ok\n") + QString(10'001, QLatin1Char('x')));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "z"));
    EXPECT_EQ(page.banner().message(),
              toQString(model::descriptionOf(model::EntryServiceErrorCase::contentTooLong)));
}

TEST_F(BoardPageTest, TextLetGoOverTheListBecomesEntriesThere) {
    const auto drop = [this](const char* html, const QPoint& place, Qt::DropActions possible) {
        QMimeData data;
        data.setHtml(QString::fromUtf8(html));
        data.setText(QTextDocumentFragment::fromHtml(data.html()).toPlainText());
        auto* const viewport = list().viewport();
        QDragEnterEvent enter(place, possible, &data, Qt::LeftButton, {});
        QApplication::sendEvent(viewport, &enter);
        QDragMoveEvent move(place, possible, &data, Qt::LeftButton, {});
        QApplication::sendEvent(viewport, &move);
        QDropEvent event(place, possible, &data, Qt::LeftButton, {});
        QApplication::sendEvent(viewport, &event);
        return move.isAccepted() && event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    };
    const auto edge = [this](int row, int fromTop) {
        return list().visualRect(page.entries().index(row, 0)).topLeft() + QPoint(200, fromTop);
    };
    const auto copyOrMove = Qt::CopyAction | Qt::MoveAction;
    EXPECT_EQ(drop("<p>one</p><p>two</p>", {200, 300}, copyOrMove), Qt::CopyAction)
        << "onto a board without entries; what is taken stays where it was";
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one", "two"));
    drop("<p>first</p>", edge(0, 2), copyOrMove);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("first", "one", "two"));
    EXPECT_EQ(list().currentRow(), 0);
    drop("<p>a <b>bold</b> word</p>", edge(1, 30), copyOrMove);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("first", "one", "a bold word", "two"));
    EXPECT_FALSE(page.entries().entry(2)->isTodo());
    EXPECT_EQ(drop("<p>moved</p>", edge(1, 2), Qt::MoveAction), Qt::IgnoreAction)
        << "nothing is taken away from elsewhere";
    edit(0);
    type("!");
    drop("<p>meanwhile</p>", edge(3, 2), copyOrMove);
    EXPECT_TRUE(isEditing());
    EXPECT_EQ(list().editedRow(), 0) << "who is typing goes on";
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox),
                ElementsAre("first!", "one", "a bold word", "meanwhile", "two"));

    const auto tick = [this](int row) {
        list().setCurrentRow(row);
        list().setFocus();
        key(Qt::Key_Space);
    };
    tick(0);
    drop("<p>top</p>", edge(0, 30), copyOrMove);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("top", "one", "a bold word", "meanwhile", "two"))
        << "beside a todo that was just ticked";
    tick(page.entries().rowOf(EntryRowKind::newTodo) - 1);
    drop("<p>last</p>", {200, 390}, copyOrMove);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("top", "one", "a bold word", "meanwhile", "last"))
        << "below one";
    const auto ticked = page.entries().rowOf(EntryRowKind::newTodo) - 2;
    ASSERT_TRUE(page.entries().entry(ticked)->isCompleted());
    Q_EMIT list().dropped(services::activeEntries(*inbox).front()->id(),
                          {ticked, model::EntryPlacement::before});
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one", "a bold word", "meanwhile", "top", "last"));
    EXPECT_EQ(page.banner().message(), QString());
}

TEST_F(BoardPageTest, TextOfATodoDeletedElsewhereLivesOnAsADraft) {
    const auto todos = add({"a", "b"});
    edit(1);
    type(" typed");
    elsewhere([&](tests::StoreClient& client) {
        client.context.remove(theirs(client, *todos[1]));
        client.context.save();
    });
    ASSERT_TRUE(isEditing());
    EXPECT_EQ(editor().typed(), QStringLiteral("b typed"));
    EXPECT_NE(editorError(), QString());
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b typed"));
}

TEST_F(BoardPageTest, AnEditorThatNobodyTypedInFollowsTheStore) {
    const auto todos = add({"short", "b"});
    edit(0);
    editor().field().setCaret(2);
    elsewhere([&](tests::StoreClient& client) {
        client.entries.updateTodo(theirs(client, *todos[0]), "changed there", kNow);
    });
    EXPECT_EQ(editor().typed(), QStringLiteral("changed there"));
    EXPECT_EQ(editor().field().caret(), 2);
    type("X");
    elsewhere([&](tests::StoreClient& client) {
        client.entries.updateTodo(theirs(client, *todos[0]), "again", kNow);
    });
    EXPECT_EQ(editor().typed(), QStringLiteral("chXanged there")) << "typed text stays";
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("chXanged there", "again", "b"))
        << "and so does what the other has written";
}

TEST_F(BoardPageTest, ABoardThatIsGoneRefusesTheTextAndKeepsIt) {
    auto& board = own.boards.createBoard("Work", kNow);
    page.showBoard(board);
    page.startTodo();
    type("kept");
    // Deleted by a program of whose change nothing is known here yet.
    tests::StoreClient hidden(folder / "Primary.store", log);
    hidden.boards.deleteBoard(*hidden.boards.board(board.id()));
    key(Qt::Key_Return);
    EXPECT_EQ(editor().typed(), QStringLiteral("kept"));
    EXPECT_TRUE(isEditing());
    EXPECT_NE(editorError(), QString());
    EXPECT_FALSE(page.leave());
    page.findChild<RowRefusal*>()->findChild<QPushButton*>()->click();
    EXPECT_FALSE(isEditing()) << "the user can give it up";
}

TEST_F(BoardPageTest, ATickIsStoredAtOnceAndItsRowLeavesAfterwards) {
    const auto todos = add({"a", "b"});
    list().setCurrentRow(0);
    list().setFocus();
    key(Qt::Key_Space);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    EXPECT_EQ(page.entries().rowOf(*todos[0]), 0) << "still to be seen";
    runLoop.advance(kTickShown);
    EXPECT_LT(page.entries().rowOf(*todos[0]), 0);
    EXPECT_EQ(list().currentRow(), 0);
    EXPECT_EQ(page.entries().entry(0), todos[1]);
}

TEST_F(BoardPageTest, ATickTakenBackInTimeChangesNothing) {
    const auto todos = add({"a", "b", "c"});
    list().setCurrentRow(1);
    list().setFocus();
    key(Qt::Key_Space);
    key(Qt::Key_Space);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c"));
    runLoop.advance(2 * kTickShown);
    EXPECT_EQ(page.entries().rowOf(*todos[1]), 1);
}

TEST_F(BoardPageTest, ATickTakenBackAndMadeAgainIsSeenForItsOwnTime) {
    const auto todos = add({"a", "b"});
    list().setCurrentRow(0);
    list().setFocus();
    key(Qt::Key_Space);
    key(Qt::Key_Space);
    runLoop.advance(0.8 * kTickShown);
    key(Qt::Key_Space);
    runLoop.advance(0.8 * kTickShown);
    EXPECT_EQ(page.entries().rowOf(*todos[0]), 0) << "the first tick's time does not count";
    runLoop.advance(0.3 * kTickShown);
    EXPECT_LT(page.entries().rowOf(*todos[0]), 0);
}

TEST_F(BoardPageTest, TwoQuickClicksOnACircleAreOneTickAndOnTwoCirclesAreTwo) {
    const auto todos = add({"a", "b", "c", "d"});
    auto* const viewport = list().viewport();
    const auto circle = [&](int row) {
        return list().visualRect(page.entries().index(row, 0)).topLeft() + QPoint(26, 16);
    };
    const auto clickTwice = [&](QPoint first, QPoint second) {
        QTest::mouseClick(viewport, Qt::LeftButton, {}, first);
        QTest::mouseDClick(viewport, Qt::LeftButton, {}, second); // as a quick second press arrives
        QTest::mouseRelease(viewport, Qt::LeftButton, {}, second);
    };
    clickTwice(circle(0), circle(0));
    EXPECT_TRUE(todos[0]->isCompleted());
    clickTwice(circle(1), circle(2));
    EXPECT_TRUE(todos[1]->isCompleted());
    EXPECT_TRUE(todos[2]->isCompleted());
    EXPECT_FALSE(isEditing());
    // One who looks at it before the next press means it.
    QTest::mouseClick(viewport, Qt::LeftButton, {}, circle(0));
    EXPECT_FALSE(todos[0]->isCompleted());
    runLoop.advance(2 * kTickShown);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "d"));
}

TEST_F(BoardPageTest, TheLabelOfAnEditedTodoFollowsTheClock) {
    auto& todo = *add({"a"}).front();
    own.entries.updateSchedule(todo, model::TodoSchedule::dueAt(kNow + 60), kNow);
    edit(0);
    const auto& label = *editor().findChild<QToolButton*>();
    EXPECT_TRUE(label.text().startsWith(QStringLiteral("Today")));
    clock.advance(120);
    workspace.scheduleClock.refresh();
    EXPECT_TRUE(label.text().startsWith(QStringLiteral("Overdue")));
}

TEST_F(BoardPageTest, ControlReturnInAnEditorStoresAndCompletes) {
    const auto todos = add({"a"});
    edit(0);
    type("b");
    key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(todos[0]->content(), "ab");
    EXPECT_TRUE(todos[0]->isCompleted());
    EXPECT_FALSE(isEditing());
}

} // namespace
} // namespace korvex::ui
