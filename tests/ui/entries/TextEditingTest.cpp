#include "model/ServiceErrors.h"
#include "richtext/code/CodeSyntax.h"
#include "richtext/stored/EntryText.h"
#include "richtext/text/Formatting.h"
#include "ui/TextDump.h"
#include "ui/editor/FormatBar.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/BoardPageFixture.h"
#include "ui/entries/ShownRefusal.h"

#include <QLineEdit>
#include <QMenu>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using richtext::AttributedString;
using richtext::RichTextAction;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TextEditingTest : public tests::BoardPageFixture {
protected:
    TextEditor* editor() { return page.findChild<TextEditor*>(); }
    RichTextEdit& field() { return editor()->field(); }
    bool isEditing() { return editor() && !editor()->isHidden(); }
    void type(const char* text) { QTest::keyClicks(&field(), QString::fromUtf8(text)); }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&field(), which, modifiers);
    }
    std::string shown() { return tests::dump(field().content()); }
    std::string stored(const model::Entry& entry) {
        return tests::dump(richtext::richText(entry, workspace.serializer));
    }
    QString error() { return tests::shownRefusal(page); }
    /// Chooses a command of the menu that a right click in the editor opens.
    void choose(const QString& command) {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5),
                                field().mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(&field(), &event);
        for (const auto* const menu : page.findChildren<QMenu*>()) {
            for (auto* const action : menu->actions()) {
                if (action->text() == command) {
                    action->trigger();
                    return;
                }
            }
        }
        FAIL() << command.toStdString();
    }
    static QString textOf(model::EntryServiceErrorCase which) {
        return toQString(model::descriptionOf(which));
    }
};

TEST_F(TextEditingTest, WhatIsTypedIsStoredOnLeavingAndFoundAgain) {
    auto& entry = addText("Lisbon");
    edit(entry);
    field().selectAll();
    field().perform({RichTextAction::heading(richtext::HeadingLevel::level2)});
    key(Qt::Key_End);
    key(Qt::Key_Return);
    field().toggleList(QStringLiteral("{disc}"));
    type("see ");
    field().perform({{RichTextAction::Kind::bold}});
    type("everything");
    key(Qt::Key_Escape);
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(entry.content(), "Lisbon\nsee everything");
    EXPECT_EQ(stored(entry), "## Lisbon\n- see *everything*");
    edit(entry);
    EXPECT_EQ(shown(), "## Lisbon\n- see *everything*");
}

TEST_F(TextEditingTest, LookingAtATextDoesNotStoreIt) {
    auto& entry = addText("a");
    const auto before = entry.updatedAt();
    clock.advance(60);
    edit(entry);
    type("b");
    key(Qt::Key_Backspace);
    key(Qt::Key_Escape);
    EXPECT_EQ(entry.updatedAt(), before) << "typed and taken back";
    edit(entry);
    field().selectAll();
    field().perform({{RichTextAction::Kind::bold}});
    key(Qt::Key_Escape);
    EXPECT_NE(entry.updatedAt(), before) << "a change of formatting alone is one";
}

TEST_F(TextEditingTest, ANewTextStandsAfterTheCurrentEntry) {
    const auto todos = add({"a", "b"});
    page.list().setCurrentRow(0);
    page.startText();
    type("note");
    key(Qt::Key_Return);
    type("more");
    key(Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "note\nmore", "b"));
    page.startText();
    key(Qt::Key_Return);
    key(Qt::Key_Escape);
    EXPECT_EQ(storedTexts(*inbox).size(), 3U) << "nothing was written";
    EXPECT_FALSE(page.entries().hasDraft());
}

TEST_F(TextEditingTest, StoringGoesOnInTheSameEditor) {
    page.startText();
    type("one");
    key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one"));
    EXPECT_FALSE(page.entries().hasDraft());
    ASSERT_TRUE(isEditing());
    type(" two");
    key(Qt::Key_Z, Qt::ControlModifier);
    type(" three");
    key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(storedTexts(*inbox).size(), 1U);
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(TextEditingTest, UpAndDownWalkBetweenTodosAndTexts) {
    add({"todo"});
    addText("text");
    const auto below = add({"below"});
    page.list().setCurrentRow(0);
    page.list().setFocus();
    QTest::keyClick(&page.list(), Qt::Key_Return);
    QTest::keyClick(page.focusWidget(), Qt::Key_Down);
    ASSERT_TRUE(isEditing());
    type("my ");
    key(Qt::Key_Down);
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(page.list().editedRow(), 2);
    QTest::keyClick(page.focusWidget(), Qt::Key_Up);
    EXPECT_EQ(shown(), "my text");
}

TEST_F(TextEditingTest, ARefusedTextStaysWithTheReason) {
    auto& entry = addText("a");
    edit(entry);
    type("b");
    // Deleted by a program of whose change nothing is known here yet.
    tests::StoreClient hidden(folder / "Primary.store", log);
    hidden.entries.deleteEntry(theirs(hidden, entry));
    key(Qt::Key_Escape);
    ASSERT_TRUE(isEditing());
    EXPECT_EQ(shown(), "ab");
    EXPECT_THAT(toUtf8(error()), HasSubstr("deleted this text"));
    EXPECT_FALSE(page.leave() && isEditing());
}

TEST_F(TextEditingTest, TheLimitIsSaidUnderTheTextUntilTheNextEdit) {
    auto& entry = addText(std::string(10'000, 'x'));
    edit(entry);
    type("y");
    EXPECT_EQ(field().content().length(), 10'000U);
    EXPECT_EQ(error(), textOf(model::EntryServiceErrorCase::contentTooLong));
    key(Qt::Key_Backspace);
    EXPECT_EQ(error(), QString());
}

TEST_F(TextEditingTest, AnEmptiedTextIsDeleted) {
    auto& entry = addText("a");
    add({"b"});
    edit(entry);
    field().selectAll();
    key(Qt::Key_Backspace);
    key(Qt::Key_Down);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    EXPECT_FALSE(isEditing());
}

TEST_F(TextEditingTest, SplittingMakesTwoAndGoesOnInTheSecond) {
    auto& entry = addText("one\ntwo");
    edit(entry);
    editor()->setCaret(4);
    key(Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one", "two"));
    ASSERT_TRUE(isEditing());
    EXPECT_EQ(page.list().editedRow(), 1);
    EXPECT_EQ(editor()->caret(), 0);
    type("not ");
    key(Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one", "not ", "two"));
    key(Qt::Key_Home);
    key(Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(storedTexts(*inbox).size(), 3U) << "nothing stands before the caret";
}

TEST_F(TextEditingTest, ADraftIsSplitToo) {
    page.startText();
    type("one two");
    editor()->setCaret(3);
    choose(QStringLiteral("Split here"));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one", " two"));
    EXPECT_EQ(page.list().editedRow(), 1);
    EXPECT_FALSE(page.entries().hasDraft());
}

TEST_F(TextEditingTest, TheTypeChangesWithWhatIsTyped) {
    auto& entry = addText("buy");
    edit(entry);
    editor()->setCaret(-1);
    type(" milk");
    choose(QStringLiteral("Change to todo"));
    EXPECT_TRUE(entry.isTodo());
    EXPECT_EQ(entry.content(), "buy milk");
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(page.list().editedRow(), 0) << "goes on as a todo";
}

TEST_F(TextEditingTest, DeletingWhatIsEditedStoresWhatWasTypedSoThatItCanComeBack) {
    auto& entry = addText("a");
    edit(entry);
    type("typed");
    choose(QStringLiteral("Delete text"));
    EXPECT_FALSE(isEditing());
    EXPECT_THAT(storedTexts(*inbox), IsEmpty());
    own.undo.undo();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre(HasSubstr("typed")));
}

TEST_F(TextEditingTest, TextOfAnEntryThatIsGoneLivesOnAsADraft) {
    struct Case {
        const char* what;
        std::function<void(services::EntryService&, model::Entry&)> happens;
    };
    const std::vector<Case> cases{
        {"deleted", [](auto& entries, auto& entry) { entries.deleteEntry(entry); }},
        {"made a todo",
         [](auto& entries, auto& entry) {
             entries.changeType(entry, model::EntryType::todo, kNow);
         }},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        auto& entry = addText("a");
        edit(entry);
        editor()->setCaret(-1);
        field().perform({{RichTextAction::Kind::bold}});
        type("b");
        elsewhere([&](tests::StoreClient& client) {
            each.happens(client.entries, theirs(client, entry));
        });
        ASSERT_TRUE(isEditing());
        EXPECT_EQ(shown(), "a*b*");
        EXPECT_THAT(toUtf8(error()), HasSubstr(each.what));
        EXPECT_TRUE(page.entries().hasDraft());
        key(Qt::Key_Escape);
        EXPECT_EQ(storedTexts(*inbox).back(), "ab");
    }
}

TEST_F(TextEditingTest, AnEditorThatNobodyTypedInFollowsTheStore) {
    auto& entry = addText("first");
    edit(entry);
    editor()->setCaret(2);
    const auto change = [&](std::string_view text) {
        elsewhere([&](tests::StoreClient& client) {
            client.entries.updateText(theirs(client, entry), plain(text), kNow);
        });
    };
    change("second");
    EXPECT_EQ(shown(), "second");
    EXPECT_EQ(editor()->caret(), 2);
    type("X");
    change("third");
    EXPECT_EQ(shown(), "seXcond\nthird") << "typed text stays";
    key(Qt::Key_Escape);
    EXPECT_EQ(entry.content(), "seXcond\nthird");
    edit(entry);
    elsewhere(
        [&](tests::StoreClient& client) { client.entries.deleteEntry(theirs(client, entry)); });
    EXPECT_FALSE(isEditing());
}

TEST_F(TextEditingTest, TheControlsDoNotTakeTheEditorAway) {
    auto& entry = addText("word");
    edit(entry);
    field().selectAll();
    key(Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(isEditing());
    auto* const target = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(target, nullptr);
    QTest::keyClicks(target, QStringLiteral("https://e.org"));
    QTest::keyClick(target, Qt::Key_Return);
    ASSERT_TRUE(isEditing());
    EXPECT_TRUE(field().hasFocus());
    EXPECT_EQ(shown(), "[word](https://e.org)");
    page.list().setFocus();
    EXPECT_FALSE(isEditing());
    EXPECT_EQ(stored(entry), "[word](https://e.org)");
}

TEST_F(TextEditingTest, NoClickInTheEditorEndsIt) {
    auto& entry = addText("one\ntwo");
    edit(entry);
    editor()->setCaret(2);
    type("X");
    auto& viewport = *page.list().viewport();
    const auto& bar = *page.findChild<FormatBar*>();
    ASSERT_TRUE(bar.isVisible());
    const auto besideButtons = QPoint(bar.geometry().right() - 2, bar.geometry().center().y());
    const auto inEditor = [&](int x, int y) { return editor()->pos() + QPoint(x, y); };
    for (const auto& place : {besideButtons, inEditor(2, editor()->height() / 2),
                              inEditor(editor()->width() / 2, editor()->height() - 3)}) {
        auto* const target = viewport.childAt(place);
        ASSERT_TRUE(target);
        const auto there = target->mapFrom(&viewport, place);
        QTest::mouseClick(target, Qt::LeftButton, {}, there);
        QTest::mouseDClick(target, Qt::LeftButton, {}, there);
        ASSERT_TRUE(isEditing());
        EXPECT_TRUE(field().hasFocus());
        EXPECT_EQ(editor()->caret(), 3);
    }
    EXPECT_TRUE(field().document()->isUndoAvailable());
}

TEST_F(TextEditingTest, WhatATextIsSpacedByIsStoredAsItCame) {
    using namespace richtext;
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{disc}"});
    const ParagraphStyle odd{.leftIndent = 333,
                             .firstLineIndent = -77,
                             .rightIndent = 55,
                             .spacingBefore = 41,
                             .spacingAfter = 1'313,
                             .lineSpacing = 17,
                             .lineHeightMultiple = 276,
                             .tabStops = {500, 900}};
    auto item = odd;
    item.lists = {list};
    AttributedString text;
    text.append(u"body\n", {}, odd);
    text.append(u"Heading\n", {.font = fontOf(HeadingLevel::level2)}, odd);
    text.append(u"item\n", {}, item);
    text.append(u"code\n", CodeSyntax::attributes("cpp", CodeKind::block),
                {.spacingAfter = 12, .lineSpacing = kCodeBlockLineSpacing});
    text.append(u"end", {}, {.lineHeight = -300});
    auto& entry = own.entries.createText({.rich = text, .board = *inbox, .now = clock.now()});
    page.refresh();
    edit(entry);
    editor()->setCaret(-1);
    type("!");
    key(Qt::Key_Escape);
    text.append(u"!", {}, {.lineHeight = -300});
    const auto& expected =
        own.entries.createText({.rich = text, .board = *inbox, .now = clock.now()});
    EXPECT_EQ(entry.richTextData(), expected.richTextData());
}

TEST_F(TextEditingTest, AnotherFontSizeChangesTheLookAndNothingElse) {
    auto& entry = addText("a");
    edit(entry);
    field().perform({{RichTextAction::Kind::bold}});
    type("b");
    const auto height = field().document()->size().height();
    preferences.setFontSize(preferences.kFontSizes.back());
    EXPECT_GT(field().document()->size().height(), height);
    EXPECT_EQ(editor()->caret(), 2);
    EXPECT_TRUE(editor()->isChanged());
    key(Qt::Key_Escape);
    EXPECT_EQ(stored(entry), "a*b*");
}

TEST_F(TextEditingTest, ATextOverTheLimitIsShownAndNotEdited) {
    auto& entry = addText("x");
    elsewhere([&](tests::StoreClient& client) {
        auto& record = theirs(client, entry);
        record.setContent(std::string(10'001, 'x'));
        record.setRichTextData(std::nullopt);
        client.context.save();
    });
    page.list().setCurrentRow(0);
    page.list().setFocus();
    QTest::keyClick(&page.list(), Qt::Key_Return);
    EXPECT_FALSE(isEditing());
}

} // namespace
} // namespace korvex::ui
