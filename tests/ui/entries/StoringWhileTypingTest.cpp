#include "ui/entries/TypingFixture.h"

#include <QApplication>
#include <QClipboard>

#include <gmock/gmock.h>

#include <functional>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using tests::kLongest;
using tests::kPause;

class StoringWhileTypingTest : public tests::TypingFixture {};

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

TEST_F(StoringWhileTypingTest, LinesArePastedIntoWhatAnotherHasWrittenToo) {
    auto& entry = *add({"Buy milk"}).front();
    edit(entry);
    field().moveCursor(QTextCursor::End);
    type(" today");
    writeElsewhere(entry, "Buy oat milk", Known::no);
    QApplication::clipboard()->setText(QStringLiteral(" and X\nY"));
    key(Qt::Key_V, Qt::ControlModifier);
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("Buy oat milk todayand X", "Y"));
}

TEST_F(StoringWhileTypingTest, WhatIsToldOfAMergeEndsWithTheNextEntryOrBoard) {
    auto& board = own.boards.createBoard("Work", clock.now());
    auto& next = *add({"next"}).front();
    const std::vector<std::pair<const char*, std::function<void()>>> ways{
        {"an entry",
         [&] {
             key(Qt::Key_Return);
             EXPECT_THAT(page.banner().message().toStdString(), HasSubstr("“Buy milkshake”"))
                 << "it is about this one";
             key(Qt::Key_Escape);
             edit(next);
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
        QApplication::processEvents();
        goOn();
        EXPECT_EQ(page.banner().message(), QString());
        EXPECT_TRUE(page.leave());
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
