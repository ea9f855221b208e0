#include "richtext/stored/EntryText.h"
#include "ui/TextDump.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/BoardPageFixture.h"
#include "ui/entries/ShownRefusal.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QTextEdit>

#include <gmock/gmock.h>

#include <functional>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr double kPause = TypingTimer::kPause.count();
constexpr double kLongest = TypingTimer::kLongest.count();

class StoringWhileTypingTest : public tests::BoardPageFixture {
protected:
    StoringWhileTypingTest() {
        QObject::connect(&page, &BoardPage::resumeRequested, &page,
                         [this](const app::Draft& draft) { page.resume(draft, kWhy); });
    }

    bool isEditing() { return qobject_cast<QTextEdit*>(page.focusWidget()) != nullptr; }
    QTextEdit& field() { return *qobject_cast<QTextEdit*>(page.focusWidget()); }
    QString shown() { return field().toPlainText(); }
    void type(const char* text) { QTest::keyClicks(page.focusWidget(), QString::fromUtf8(text)); }
    void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(page.focusWidget(), static_cast<Qt::Key>(which), modifiers);
    }
    void setCaret(int position) {
        auto cursor = field().textCursor();
        cursor.setPosition(position);
        field().setTextCursor(cursor);
    }
    void press(const char* action) {
        for (auto* const button : page.findChildren<QAbstractButton*>()) {
            if (button->isVisible() && button->text() == QString::fromUtf8(action)) {
                button->click();
                return;
            }
        }
        ADD_FAILURE() << "nothing offers: " << action;
    }
    void discard() { press("Discard"); }
    void empty() {
        field().selectAll();
        key(Qt::Key_Delete);
    }
    /// What another program makes of an entry; `known` says whether anybody has told of it here.
    enum class Known { yes, no };
    void writeElsewhere(const model::Entry& entry, const char* text, Known known = Known::yes) {
        const auto write = [&](tests::StoreClient& client) {
            auto& their = theirs(client, entry);
            if (their.isTodo()) {
                client.entries.updateTodo(their, text, clock.now());
            } else {
                client.entries.updateText(their, plain(text), clock.now());
            }
        };
        if (known == Known::yes) {
            elsewhere(write);
        } else {
            tests::StoreClient hidden(folder / "Primary.store", log);
            write(hidden);
        }
    }
    const QString kWhy = QStringLiteral("This was typed before.");
    std::vector<app::Draft> drafts() { return workspace.drafts.find().drafts; }
};

TEST_F(StoringWhileTypingTest, WhatIsTypedIsStoredAtAPauseAndNowAndThenWithoutOne) {
    edit(*add({"a"}).front());
    type("b");
    runLoop.advance(kPause * 0.9);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a"));
    runLoop.advance(kPause * 0.2);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("ab"));
    for (double typed = 0; typed < kLongest; typed += kPause / 2) {
        type("c");
        runLoop.advance(kPause / 2);
    }
    EXPECT_THAT(storedTexts(*inbox).front(), ::testing::StartsWith("abc")) << "without a pause";
    const auto revision = own.container->revision();
    runLoop.advance(10 * kLongest);
    const auto last = own.container->revision();
    runLoop.advance(10 * kLongest);
    EXPECT_EQ(own.container->revision(), last) << "what is stored is not stored again";
    EXPECT_LE(last, revision + 1);
}

TEST_F(StoringWhileTypingTest, TheEditorGoesOnAsItWas) {
    for (const auto isTodo : {true, false}) {
        SCOPED_TRACE(isTodo);
        auto& entry = isTodo ? *add({"one two"}).front() : addText("one two");
        edit(entry);
        setCaret(3);
        type("X");
        type("Y");
        auto cursor = field().textCursor();
        cursor.setPosition(2);
        cursor.setPosition(6, QTextCursor::KeepAnchor);
        field().setTextCursor(cursor);
        runLoop.advance(kLongest);
        EXPECT_EQ(entry.content(), "oneXY two");
        EXPECT_EQ(field().textCursor().anchor(), 2);
        EXPECT_EQ(field().textCursor().position(), 6);
        setCaret(5);
        type("Z");
        key(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(shown(), QStringLiteral("one two")) << "a save parts no step of the editor";
        runLoop.advance(kLongest);
        EXPECT_EQ(entry.content(), "one two");
        key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        key(Qt::Key_Escape);
        EXPECT_EQ(entry.content(), "oneXYZ two");
    }
}

TEST_F(StoringWhileTypingTest, ANewEntryIsStoredInItsPlaceAndEmptiedIsNoneAnyMore) {
    add({"above"});
    struct Case {
        const char* what;
        int key;
        bool goesUp;
    };
    for (const auto& [what, leaving, goesUp] :
         {Case{"Backspace", Qt::Key_Backspace, true}, Case{"Escape", Qt::Key_Escape, false},
          Case{"Return", Qt::Key_Return, false}, Case{"Up", Qt::Key_Up, true}}) {
        SCOPED_TRACE(what);
        page.startTodo();
        type("typed");
        runLoop.advance(kPause);
        EXPECT_THAT(storedTexts(*inbox), ElementsAre("above", "typed"));
        EXPECT_FALSE(page.entries().hasDraft());
        type("!");
        empty();
        runLoop.advance(kLongest);
        EXPECT_THAT(storedTexts(*inbox), ElementsAre("above", "typed")) << "empty for now";
        EXPECT_EQ(page.list().editedRow(), 1);
        key(leaving);
        EXPECT_THAT(storedTexts(*inbox), ElementsAre("above"));
        EXPECT_EQ(page.list().editedRow(), goesUp ? 0 : -1);
        key(Qt::Key_Escape);
    }
    page.startText();
    type("note");
    runLoop.advance(kPause);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("above", "note"));
    empty();
    runLoop.advance(kLongest);
    EXPECT_THAT(storedTexts(*inbox), SizeIs(2));
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("above"));
}

TEST_F(StoringWhileTypingTest, ALongNewTextStaysWhereItIsOnTheScreen) {
    add(std::vector<std::string>(8, "above"));
    page.startText();
    for (int line = 0; line < 60; ++line) {
        type("x");
        key(Qt::Key_Return);
    }
    setCaret(60);
    QApplication::processEvents();
    auto* const bar = page.list().verticalScrollBar();
    const int scrolled = bar->value();
    ASSERT_GT(scrolled, 0);
    const auto caret = field().mapToGlobal(field().cursorRect().topLeft());
    runLoop.advance(kPause);
    ASSERT_EQ(storedTexts(*inbox).size(), 9U);
    QApplication::processEvents();
    EXPECT_EQ(bar->value(), scrolled);
    EXPECT_EQ(field().mapToGlobal(field().cursorRect().topLeft()), caret);
}

TEST_F(StoringWhileTypingTest, AnEmptiedTodoOfBeforeGetsBackWhatItSaid) {
    for (const int leaving : {Qt::Key_Escape, Qt::Key_Backspace}) {
        SCOPED_TRACE(leaving);
        edit(*add({"Buy milk"}).front());
        for (int left = 7; left > 0; --left) {
            key(Qt::Key_Backspace);
        }
        runLoop.advance(kPause);
        EXPECT_THAT(storedTexts(*inbox), ElementsAre("B"));
        key(Qt::Key_Backspace);
        runLoop.advance(kLongest);
        EXPECT_THAT(storedTexts(*inbox), ElementsAre("B")) << "empty for now";
        key(leaving);
        if (leaving == Qt::Key_Backspace) {
            EXPECT_THAT(storedTexts(*inbox), IsEmpty());
            own.undo.undo();
        }
        EXPECT_THAT(storedTexts(*inbox), ElementsAre("Buy milk"));
        own.entries.deleteEntries(*inbox);
    }
}

TEST_F(StoringWhileTypingTest, WordsOutliveTheirEntry) {
    using Work = std::function<void(tests::StoreClient&, model::Entry&)>;
    auto& elsewhereBoard = own.boards.createBoard("Work", clock.now());
    const Work remove = [](auto& client, auto& entry) { client.entries.deleteEntry(entry); };
    const Work complete = [&](auto& client, auto& entry) {
        client.entries.completeTodo(entry, clock.now());
    };
    const Work move = [&](auto& client, auto& entry) {
        client.entries.moveEntry(entry, *client.boards.board(elsewhereBoard.id()), clock.now());
    };
    const Work makeText = [&](auto& client, auto& entry) {
        client.entries.changeType(entry, model::EntryType::text, clock.now());
    };
    struct Case {
        const char* what;
        bool isStored;
        Known known;
        const Work& work;
        const char* says;
    };
    for (const auto& [what, isStored, known, work, says] :
         {Case{"stored while it was typed", true, Known::yes, remove, "deleted this todo"},
          Case{"not stored yet", false, Known::yes, remove, "deleted this todo"},
          Case{"found out by our own store", false, Known::no, remove, "deleted this todo"},
          Case{"completed", false, Known::yes, complete, "completed this todo"},
          Case{"moved", false, Known::yes, move, "moved this todo to another board"},
          Case{"made a text", false, Known::yes, makeText, "made a text of this todo"}}) {
        SCOPED_TRACE(what);
        auto& entry = *add({"above", "word"}).back();
        edit(entry);
        type("s");
        if (isStored) {
            runLoop.advance(kPause);
        }
        const auto change = [&](tests::StoreClient& client) {
            work(client, theirs(client, entry));
        };
        if (known == Known::yes) {
            elsewhere(change);
        } else {
            tests::StoreClient hidden(folder / "Primary.store", log);
            change(hidden);
            runLoop.advance(kPause);
        }
        ASSERT_TRUE(isEditing());
        EXPECT_EQ(shown(), QStringLiteral("words"));
        EXPECT_THAT(drafts(), SizeIs(1));
        runLoop.advance(10 * kLongest);
        EXPECT_THAT(drafts(), SizeIs(1)) << "it is told, not stored unasked";
        const auto said = tests::shownRefusal(page).toStdString();
        EXPECT_THAT(said, HasSubstr(says));
        EXPECT_THAT(said, HasSubstr("becomes a new todo")) << "what happens, not what to try";
        EXPECT_TRUE(page.leave());
        EXPECT_THAT(storedTexts(*inbox), ::testing::Contains("words"));
        EXPECT_THAT(drafts(), IsEmpty());
        own.entries.deleteEntries(*inbox);
    }
}

TEST_F(StoringWhileTypingTest, WhatCannotBeStoredIsKeptUntilItIsStoredOrDiscarded) {
    auto& board = own.boards.createBoard("Work", clock.now());
    page.showBoard(board);
    page.startText();
    type("words");
    // Deleted by a program of whose change nothing is known here yet.
    tests::StoreClient hidden(folder / "Primary.store", log);
    hidden.boards.deleteBoard(*hidden.boards.board(board.id()));
    EXPECT_THAT(drafts(), IsEmpty());
    runLoop.advance(kLongest);
    ASSERT_THAT(drafts(), SizeIs(1));
    EXPECT_EQ(drafts().front().content, "words");
    EXPECT_EQ(drafts().front().board, board.id());
    EXPECT_THAT(tests::shownRefusal(page).toStdString(), HasSubstr("kept"));
    EXPECT_EQ(page.banner().message(), QString()) << "one place says it";
    EXPECT_TRUE(isEditing());
    type(" more");
    EXPECT_THAT(tests::shownRefusal(page).toStdString(), HasSubstr("kept"))
        << "it stands as long as it is so";
    runLoop.advance(kLongest);
    ASSERT_THAT(drafts(), SizeIs(1));
    EXPECT_EQ(drafts().front().content, "words more");
    EXPECT_FALSE(page.leave());
    discard();
    EXPECT_THAT(drafts(), IsEmpty());
    EXPECT_FALSE(isEditing());
}

TEST_F(StoringWhileTypingTest, DiscardingTakesBackWhatWasStoredMeanwhile) {
    auto& entry = addText("before");
    const auto refuseAndDiscard = [this] {
        field().selectAll();
        type("and more");
        page.findChild<TextEditor*>()->showError(QStringLiteral("refused"));
        discard();
        EXPECT_FALSE(isEditing());
        press("Undo");
        EXPECT_EQ(shown(), QStringLiteral("and more"));
        EXPECT_THAT(drafts(), SizeIs(1));
        discard();
        EXPECT_FALSE(isEditing());
    };
    edit(entry);
    setCaret(0);
    type("typed ");
    runLoop.advance(kPause);
    EXPECT_EQ(entry.content(), "typed before");
    refuseAndDiscard();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("before"));
    edit(entry);
    setCaret(0);
    type("typed ");
    runLoop.advance(kPause);
    writeElsewhere(entry, "typed before\ntheirs");
    refuseAndDiscard();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("before\ntheirs")) << "but not what others wrote";
    own.entries.updateText(entry, plain("before"), clock.now());
    page.startText();
    type("new");
    runLoop.advance(kPause);
    refuseAndDiscard();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("before"));
}

TEST_F(StoringWhileTypingTest, WhatWasDiscardedComesBackInItsPlace) {
    const auto todos = add({"above", "abc", "below"});
    const auto discardAndUndo = [this] {
        clock.advance(1);
        page.findChild<TodoEditor*>()->showError(QStringLiteral("refused"));
        discard();
        const auto left = storedTexts(*inbox);
        press("Undo");
        EXPECT_TRUE(page.leave());
        return left;
    };
    edit(*todos[1]);
    type("x");
    runLoop.advance(kPause);
    EXPECT_THAT(discardAndUndo(), ElementsAre("above", "abc", "below"));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("above", "abcx", "below")) << "not doubled";

    edit(*todos[0]);
    key(Qt::Key_Return);
    type("new");
    runLoop.advance(kPause);
    EXPECT_THAT(discardAndUndo(), ElementsAre("above", "abcx", "below"));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("above", "new", "abcx", "below"));

    edit(*todos[1]);
    type(" and more");
    runLoop.advance(kPause);
    writeElsewhere(*todos[1], "their abcx and more", Known::no);
    EXPECT_THAT(discardAndUndo(), ElementsAre("above", "new", "their abcx", "below"));
    EXPECT_THAT(storedTexts(*inbox),
                ElementsAre("above", "new", "their abcx", "abcx and more", "below"))
        << "not over another's words";
}

TEST_F(StoringWhileTypingTest, LinesArePastedIntoWordsThatOutlivedTheirEntry) {
    auto& entry = *add({"above", "word"}).back();
    edit(entry);
    type("s");
    elsewhere(
        [&](tests::StoreClient& client) { client.entries.deleteEntry(theirs(client, entry)); });
    QApplication::clipboard()->setText(QStringLiteral("X\nY"));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_TRUE(page.leave());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("above", "wordsX", "Y"));
}

TEST_F(StoringWhileTypingTest, AnEditorsMenuGoesWithTheEditing) {
    auto& entry = *add({"word"}).front();
    edit(entry);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5),
                            field().mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&field(), &event);
    const auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    elsewhere(
        [&](tests::StoreClient& client) { client.entries.deleteEntry(theirs(client, entry)); });
    EXPECT_TRUE(menu->isHidden());
    menu->actions().back()->trigger(); // the press may be under way
    EXPECT_EQ(page.banner().message(), QString());
    EXPECT_THAT(storedTexts(*inbox), IsEmpty());
}

TEST_F(StoringWhileTypingTest, ADraftIsGoneOnWithInItsPlace) {
    const auto todos = add({"a", "b", "c"});
    own.entries.completeTodo(*todos[2], clock.now());
    const app::Draft draft{.id = base::Uuid::random(),
                           .board = inbox->id(),
                           .after = todos[0]->id(),
                           .typedAt = clock.now(),
                           .content = "kept"};
    const auto of = [&](const model::Entry& entry, base::Instant updatedAt) {
        auto edited = draft;
        edited.edited = {entry.id(), updatedAt};
        edited.after.reset();
        return edited;
    };
    auto first = draft;
    first.after.reset();
    auto lost = draft;
    lost.after = base::Uuid::random();
    struct Case {
        const char* what;
        app::Draft draft;
        std::vector<std::string> texts;
    };
    const std::vector<Case> cases{
        {"a new one", draft, {"a", "kept", "b"}},
        {"before all others", first, {"kept", "a", "b"}},
        {"behind one that is gone", lost, {"kept", "a", "b"}},
        {"one that is as it was", of(*todos[1], todos[1]->updatedAt()), {"a", "kept"}},
        {"one that has changed", of(*todos[0], todos[0]->updatedAt() - 1), {"a", "kept", "b"}},
        {"one that is completed", of(*todos[2], todos[2]->updatedAt()), {"kept", "a", "b"}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const auto before = storedTexts(*inbox);
        ASSERT_FALSE(workspace.drafts.write(each.draft));
        ASSERT_TRUE(page.resume(each.draft, kWhy));
        EXPECT_EQ(shown(), QStringLiteral("kept"));
        EXPECT_EQ(tests::shownRefusal(page), kWhy);
        runLoop.advance(10 * kLongest);
        EXPECT_EQ(storedTexts(*inbox), before) << "it is offered, not stored unasked";
        EXPECT_THAT(drafts(), SizeIs(1));
        page.list().setFocus();
        EXPECT_EQ(storedTexts(*inbox), each.texts);
        EXPECT_THAT(drafts(), IsEmpty());
        for (auto* const entry : services::activeEntries(*inbox)) {
            if (entry == todos[1]) {
                own.entries.updateTodo(*entry, "b", todos[1]->updatedAt());
            } else if (entry->content() == "kept") {
                own.entries.deleteEntry(*entry);
            }
        }
    }
}

TEST_F(StoringWhileTypingTest, AFormattedDraftKeepsItsFormats) {
    page.startText();
    page.findChild<RichTextEdit*>()->perform({{richtext::RichTextAction::Kind::bold}});
    type("bold");
    const auto text = page.findChild<TextEditor*>()->text();
    key(Qt::Key_Escape);
    app::Draft draft{.id = base::Uuid::random(),
                     .type = model::EntryType::text,
                     .board = inbox->id(),
                     .typedAt = clock.now(),
                     .content = "bold",
                     .richTextData = services::activeEntries(*inbox).front()->richTextData()};
    ASSERT_TRUE(page.resume(draft, kWhy));
    EXPECT_EQ(tests::dump(page.findChild<TextEditor*>()->text()), "*bold*");
}

TEST_F(StoringWhileTypingTest, WordsOfTwoProgramsAreMerged) {
    struct Case {
        const char* what;
        bool isTodo;
        const char* typedAtEnd;
        const char* theirs;
        std::vector<std::string> result;
        const char* notice;
    };
    const std::vector<Case> cases{
        {"apart in a todo", true, " today", "Buy oat milk", {"Buy oat milk today"}, ""},
        {"at one place in a todo",
         true,
         "shake",
         "Buy milkweed",
         {"Buy milkshake", "Buy milkweed"},
         "below"},
        {"apart in a text", false, "\nmine", "theirs\nBuy milk", {"theirs\nBuy milk\nmine"}, ""},
        {"at one place in a text",
         false,
         "shake",
         "Buy milkweed",
         {"Buy milkshake\nBuy milkweed"},
         "Both"},
    };
    for (const auto known : {Known::yes, Known::no}) {
        for (const auto& each : cases) {
            SCOPED_TRACE(std::string(each.what) + (known == Known::yes ? "" : ", untold"));
            auto& entry = each.isTodo ? *add({"Buy milk"}).front() : addText("Buy milk");
            edit(entry);
            field().moveCursor(QTextCursor::End);
            for (const char* typed = each.typedAtEnd; *typed != 0; ++typed) {
                *typed == '\n' ? key(Qt::Key_Return) : type(std::string(1, *typed).c_str());
            }
            writeElsewhere(entry, each.theirs, known);
            EXPECT_TRUE(field()
                            .textCursor()
                            .block()
                            .text()
                            .left(field().textCursor().positionInBlock())
                            .endsWith(QString::fromUtf8(each.typedAtEnd).trimmed()))
                << "the caret stays behind what was typed";
            runLoop.advance(kLongest);
            EXPECT_EQ(storedTexts(*inbox), each.result);
            EXPECT_THAT(page.banner().message().toStdString(), HasSubstr(each.notice));
            EXPECT_TRUE(isEditing());
            if (each.result.size() == 1) {
                key(Qt::Key_Z, Qt::ControlModifier);
                runLoop.advance(kLongest);
                EXPECT_EQ(storedTexts(*inbox), each.result) << "not theirs to take back";
            }
            key(Qt::Key_Escape);
            EXPECT_EQ(storedTexts(*inbox), each.result);
            if (each.result.size() > 1) {
                own.undo.undo();
                EXPECT_THAT(storedTexts(*inbox), ElementsAre(each.theirs)) << "and not twice";
                own.undo.redo();
                EXPECT_EQ(storedTexts(*inbox), each.result);
            }
            own.entries.deleteEntries(*inbox);
        }
    }
}

TEST_F(StoringWhileTypingTest, WhatIsToldOfAMergeEndsWithTheNextEntryOrBoard) {
    auto& board = own.boards.createBoard("Work", clock.now());
    auto& next = *add({"next"}).front();
    const std::vector<std::pair<const char*, std::function<void()>>> ways{
        {"an entry",
         [&] {
             edit(next);
             EXPECT_THAT(page.banner().message().toStdString(), HasSubstr("Both"))
                 << "it was told only just now";
             key(Qt::Key_Escape);
         }},
        {"a board", [&] { page.showBoard(board); }},
    };
    for (const auto& [what, goOn] : ways) {
        SCOPED_TRACE(what);
        page.showBoard(*inbox);
        auto& entry = addText("Buy milk");
        edit(entry);
        field().moveCursor(QTextCursor::End);
        type("shake");
        writeElsewhere(entry, "Buy milkweed", Known::no);
        key(Qt::Key_Escape);
        ASSERT_THAT(page.banner().message().toStdString(), HasSubstr("Both"));
        goOn();
        EXPECT_EQ(page.banner().message(), QString());
    }
}

TEST_F(StoringWhileTypingTest, OneEditingIsOneStepOfUndo) {
    auto& entry = *add({"a"}).front();
    const auto typeInPieces = [&] {
        edit(entry);
        for (const auto* const piece : {"b", "c", "d"}) {
            type(piece);
            runLoop.advance(kPause);
        }
        key(Qt::Key_Escape);
    };
    typeInPieces();
    EXPECT_EQ(entry.content(), "abcd");
    own.undo.undo();
    EXPECT_EQ(entry.content(), "a");
    own.undo.redo();
    EXPECT_EQ(entry.content(), "abcd");
    typeInPieces();
    own.undo.undo();
    EXPECT_EQ(entry.content(), "abcd") << "each editing by itself";

    edit(entry);
    type("!");
    runLoop.advance(kPause);
    writeElsewhere(entry, "their abcd!");
    type("?");
    runLoop.advance(kPause);
    EXPECT_EQ(entry.content(), "their abcd!?");
    key(Qt::Key_Escape);
    own.undo.undo();
    EXPECT_EQ(entry.content(), "their abcd!") << "what another wrote in between is not taken back";

    const auto latest = own.undo.nextUndo()->id;
    edit(entry);
    type("!");
    runLoop.advance(kPause);
    key(Qt::Key_Backspace);
    runLoop.advance(kPause);
    key(Qt::Key_Escape);
    EXPECT_EQ(own.undo.nextUndo()->id, latest) << "nothing is left of it to take back";

    page.startTodo();
    type("ne");
    runLoop.advance(kPause);
    type("w");
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("their abcd!", "new"));
    own.undo.undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("their abcd!"))
        << "a creation and what it grew to";
    own.undo.redo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("their abcd!", "new"));
}

TEST_F(StoringWhileTypingTest, OneUndoTooManyInAnEditorChangesNothing) {
    auto& second = *add({"a", "second"}).back();
    own.entries.updateTodo(second, "changed", clock.now());
    edit(*services::activeEntries(*inbox).front());
    type("b");
    key(Qt::Key_Z, Qt::ControlModifier);
    key(Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(isEditing());
    EXPECT_EQ(shown(), QStringLiteral("a"));
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(shown(), QStringLiteral("ab"));
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(isEditing());
    EXPECT_EQ(second.content(), "changed");
}

} // namespace
} // namespace korvex::ui
