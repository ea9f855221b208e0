#include "richtext/stored/EntryText.h"
#include "ui/TextDump.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/ShownRefusal.h"
#include "ui/entries/TypingFixture.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>

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

class UnstoredWordsTest : public tests::TypingFixture {};

TEST_F(UnstoredWordsTest, WordsOutliveTheirEntry) {
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

TEST_F(UnstoredWordsTest, WhatCannotBeStoredIsKeptUntilItIsStoredOrDiscarded) {
    auto& board = own.boards.createBoard("Work", clock.now());
    page.showBoard(board);
    const auto timers = runLoop.delays().size();
    page.startText();
    type("words");
    // Deleted by a program of whose change nothing is known here yet.
    tests::StoreClient hidden(folder / "Primary.store", log);
    hidden.boards.deleteBoard(*hidden.boards.board(board.id()));
    EXPECT_THAT(drafts(), IsEmpty());
    runLoop.advance(kLongest);
    ASSERT_THAT(drafts(), SizeIs(1));
    EXPECT_THAT(runLoop.delays(), SizeIs(timers)) << "no waiting brings the board back";
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

TEST_F(UnstoredWordsTest, WhatABusyStoreRefusesIsKeptAtOnceAndTriedAgainByItself) {
    const std::vector<std::pair<const char*, std::function<void()>>> ways{
        {"after a while", [&] { runLoop.advance(TypingTimer::kAgain.count()); }},
        {"when the store changes",
         [&] {
             elsewhere([&](auto& client) { client.boards.createBoard("New", clock.now()); });
             runLoop.advance(0);
         }},
    };
    for (const auto& [what, goOn] : ways) {
        SCOPED_TRACE(what);
        const auto timers = runLoop.delays().size();
        page.startTodo();
        type("words");
        auto busy = keepBusy();
        runLoop.advance(kPause);
        ASSERT_THAT(drafts(), SizeIs(1));
        EXPECT_THAT(tests::shownRefusal(page).toStdString(), HasSubstr("busy"));
        const auto first = drafts().front();
        clock.advance(1);
        runLoop.advance(TypingTimer::kAgain.count());
        EXPECT_THAT(drafts(), ElementsAre(first)) << "the same words are not written again";
        type("!");
        key(Qt::Key_Escape);
        ASSERT_TRUE(isEditing());
        EXPECT_EQ(drafts().front().content, "words!");
        busy.reset();
        goOn();
        EXPECT_THAT(storedTexts(*inbox), ElementsAre("words!"));
        EXPECT_THAT(drafts(), IsEmpty());
        EXPECT_EQ(tests::shownRefusal(page), QString());
        EXPECT_TRUE(isEditing());
        EXPECT_THAT(runLoop.delays(), SizeIs(timers)) << "and then no more";
        key(Qt::Key_Escape);
        own.entries.deleteEntries(*inbox);
    }
}

TEST_F(UnstoredWordsTest, NothingNewIsBegunOverWordsThatAreRefused) {
    const auto todos = add(std::vector<std::string>(40, "todo"));
    edit(*todos.front());
    type("!");
    const auto busy = keepBusy();
    key(Qt::Key_Escape);
    const std::vector<std::pair<const char*, std::function<bool()>>> ways{
        {"a todo", [&] { return page.startTodo(), true; }},
        {"a text", [&] { return page.startText(), true; }},
        {"another page", [&] { return page.leave(), false; }},
    };
    for (const auto& [what, ask] : ways) {
        SCOPED_TRACE(what);
        list().setFocus();
        list().scrollToBottom();
        const auto isTold = ask();
        EXPECT_TRUE(isEditing());
        EXPECT_EQ(shown(), QStringLiteral("todo!"));
        EXPECT_TRUE(list().viewport()->rect().contains(
            list().visualRect(page.entries().index(0, 0)).center()));
        EXPECT_EQ(page.banner().message().contains(QStringLiteral("not stored yet")), isTold);
        page.endAnswer();
    }
}

TEST_F(UnstoredWordsTest, DiscardingTakesBackWhatWasStoredMeanwhile) {
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

TEST_F(UnstoredWordsTest, WhatWasDiscardedComesBackInItsPlace) {
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

TEST_F(UnstoredWordsTest, LinesArePastedIntoWordsThatOutlivedTheirEntry) {
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

TEST_F(UnstoredWordsTest, AnEditorsMenuGoesWithTheEditing) {
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

TEST_F(UnstoredWordsTest, ADraftIsGoneOnWithInItsPlace) {
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

TEST_F(UnstoredWordsTest, AFormattedDraftKeepsItsFormats) {
    page.startText();
    page.findChild<RichTextEdit*>()->perform({{richtext::RichTextAction::Kind::bold}});
    type("bold");
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

} // namespace
} // namespace korvex::ui
