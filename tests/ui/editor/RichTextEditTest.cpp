#include "ui/editor/RichTextEdit.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/stored/RichTextSerializer.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/ListIndents.h"
#include "ui/editor/RichTextFixture.h"
#include "ui/text/TextPainting.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextLayout>
#include <QTextTable>

#include <set>

namespace korvex::ui {
namespace {

using richtext::RichTextAction;
using Kind = RichTextAction::Kind;

using RichTextEditTest = tests::RichTextFixture;

struct Typing {
    const char* what;
    const char* keys;
    const char* expected;
};

void PrintTo(const Typing& typing, std::ostream* out) {
    *out << typing.what;
}

class RichTextTyping : public RichTextEditTest, public ::testing::WithParamInterface<Typing> {};

TEST_P(RichTextTyping, GivesText) {
    EXPECT_EQ(typed(GetParam().keys), GetParam().expected) << GetParam().keys;
    const auto shown = edit.content();
    edit.setContent(shown);
    EXPECT_EQ(content(), GetParam().expected) << "shown anew";
}

INSTANTIATE_TEST_SUITE_P(
    Characters, RichTextTyping,
    ::testing::Values(
        Typing{"for what is typed next", "a<Ctrl+B>b<Ctrl+I>c<Ctrl+B>d<Ctrl+I>e", "a*b*/*c*//d/e"},
        Typing{"for the selection", "ab<Shift+Left><Ctrl+U><Right><Ctrl+Shift+X>c", "a_b_~_c_~"},
        Typing{"only where not all has it, off", "a<Ctrl+B>b<Ctrl+A><Ctrl+B>", "*ab*"},
        Typing{"all has it, so off", "<Ctrl+B>ab<Ctrl+A><Ctrl+B>", "ab"},
        Typing{"in code, too", "<Ctrl+E>f<Ctrl+B>g<Ctrl+I>h", "`f`*`g`*/*`h`*/"},
        Typing{"inline code and out of it", "<Ctrl+E>f(x)<Ctrl+E> is", "`f(x)` is"},
        Typing{"code is left by moving", "<Ctrl+E>x<Right>y", "`x`y"},
        Typing{"code is not typed into from outside", "<Ctrl+E>xy<Home>a<Right>b", "a`xby`"},
        Typing{"a link is not longer than it was", "ab<Shift+Left><link><End>c",
               "a[b](https://e.org)c"},
        Typing{"nor at the front", "ab<Ctrl+A><link><Home>c", "c[ab](https://e.org)"},
        Typing{"inside it is", "ab<Ctrl+A><link><Home><Right>c", "[acb](https://e.org)"},
        Typing{"a link without a selection", "a<link>b", "a[https://e.org](https://e.org)b"},
        Typing{"Return leaves link and code", "<Ctrl+E>x<Return>y", "`x`\ny"},
        Typing{"also in the middle of a link", "ab<Ctrl+A><link><Home><Right><Return>c",
               "[a](https://e.org)\nc[b](https://e.org)"},
        Typing{"which leaves nothing of it behind", "ab<Ctrl+A><link><Home><Right><Return><Del>c",
               "[a](https://e.org)\nc"},
        Typing{"bold goes on", "<Ctrl+B>x<Return>y", "*x*\n*y*"}));

INSTANTIATE_TEST_SUITE_P(
    Paragraphs, RichTextTyping,
    ::testing::Values(
        Typing{"heading, then body", "<Ctrl+Alt+1>Title<Return>text", "# Title\ntext"},
        Typing{"level of a written line", "Title<Ctrl+Alt+2>!", "## Title!"},
        Typing{"all levels", "<Ctrl+Alt+3>a<Return>b<Up><Ctrl+Alt+0>", "a\nb"},
        Typing{"Return inside parts it", "<Ctrl+Alt+1>ab<Left><Return>", "# a\n# b"},
        Typing{"Return at its front moves it down", "<Ctrl+Alt+1>ab<Home><Return>", "\n# ab"},
        Typing{"Return in an empty heading ends it", "<Ctrl+Alt+1><Return>a", "a"},
        Typing{"Backspace at its front ends it", "<Ctrl+Alt+1>ab<Home><Backspace>", "ab"},
        Typing{"bold is what a heading is", "<Ctrl+Alt+1>a<Ctrl+B>b", "# ab"},
        Typing{"and stays", "<Ctrl+Alt+1>ab<Ctrl+A><Ctrl+B>", "# ab"},
        Typing{"several paragraphs", "a<Return>b<Return>c<Shift+Up><Ctrl+Alt+1>", "a\n# b\n# c"},
        Typing{"a line break inside", "a<Shift+Return>b", "a\u2028b"},
        Typing{"Tab in plain text", "a<Tab>b", "a\tb"}));

INSTANTIATE_TEST_SUITE_P(
    Lists, RichTextTyping,
    ::testing::Values(
        Typing{"items", "<Ctrl+Shift+8>a<Return>b", "- a\n- b"},
        Typing{"numbered", "a<Return>b<Ctrl+A><Ctrl+Shift+7>", "1. a\n1. b"},
        Typing{"toggled off", "<Ctrl+Shift+7>a<Ctrl+Shift+7>", "a"},
        Typing{"from one kind to the other", "<Ctrl+Shift+7>a<Ctrl+Shift+8>", "- a"},
        Typing{"nested and back", "<Ctrl+Shift+8>a<Return><Tab>b<Return><Shift+Tab>c",
               "- a\n  {circle} b\n- c"},
        Typing{"Return in an empty item goes out one level",
               "<Ctrl+Shift+8>a<Return><Tab>b<Return><Return>c<Return><Return>d",
               "- a\n  {circle} b\n- c\nd"},
        Typing{"Backspace at an item's front takes it out",
               "<Ctrl+Shift+8>a<Return><Tab>b<Home><Backspace>", "- a\nb"},
        Typing{"no deeper than nine",
               "<Ctrl+Shift+7>a<Tab><Tab><Tab><Tab><Tab><Tab><Tab><Tab><Tab><Tab><Tab>",
               "                {lower-roman}. a"},
        Typing{"selected items together", "<Ctrl+Shift+8>a<Return>b<Return>c<Shift+Up><Tab>",
               "- a\n  {circle} b\n  {circle} c"},
        Typing{"a heading in a list", "<Ctrl+Shift+8><Ctrl+Alt+2>a<Return>b", "- ## a\n- b"}));

INSTANTIATE_TEST_SUITE_P(
    Code, RichTextTyping,
    ::testing::Values(
        Typing{"lines", "<code>a<Return>b", "auto> a\nauto> b"},
        Typing{"Return twice at its end leaves it", "<code>a<Return><Return>b", "auto> a\nb"},
        Typing{"an empty line inside stays", "<code>a<Return>c<Up><End><Return><Return>b",
               "auto> a\nauto> \nauto> b\nauto> c"},
        Typing{"Ctrl+Return leaves it from anywhere", "<code>a<Return>b<Up><Ctrl+Return>c",
               "auto> a\nauto> b\nc"},
        Typing{"Tab and back", "<code><Tab>a<Return><Tab><Tab>b<Shift+Tab>",
               "auto>     a\nauto>     b"},
        Typing{"Tab for several lines", "<code>a<Return>b<Ctrl+A><Tab>",
               "auto>     a\nauto>     b"},
        Typing{"whole paragraphs", "ab<Return>c<Up><End><Shift+Left><code>", "auto> ab\nc"},
        Typing{"and back to text", "<code>a<Return>b<code>", "a\nb"},
        Typing{"takes formats away", "<Ctrl+Alt+1>a<Return><Ctrl+B>b<Ctrl+A><code>",
               "auto> a\nauto> b"},
        Typing{"links stay", "ab<Ctrl+A><link><code>", "auto> [ab](https://e.org)"},
        Typing{"code in a line is not bold", "<Ctrl+B>a<Ctrl+A><Ctrl+E>", "`a`"},
        Typing{"a heading ends it", "<code>a<Ctrl+Alt+1>", "# a"},
        Typing{"is no code in a line", "a<Return><code>b<Ctrl+A><Ctrl+E>", "`a`\nauto> b"},
        Typing{"nor can be", "<code>ab<Ctrl+A><Ctrl+E>", "auto> ab"},
        Typing{"nor an item", "a<Return><code>b<Ctrl+A><Ctrl+Shift+8>", "- a\nauto> b"},
        Typing{"code in a line outlives a heading", "<Ctrl+E>a<Ctrl+E> b<Ctrl+Alt+1><Ctrl+Alt+0>",
               "`a` b"},
        Typing{"Backspace at its front ends its first line",
               "<code>a<Return>b<Up><Home><Backspace>", "a\nauto> b"}));

INSTANTIATE_TEST_SUITE_P(
    Tables, RichTextTyping,
    ::testing::Values(
        Typing{"from cell to cell", "<table>a<Tab>b<Tab>c<Shift+Tab>B",
               "|0,0 *a*\n|0,1 *B*\n|1,0 c\n|1,1 \n\n"},
        Typing{"after a text", "x<table>a", "x\n|0,0 *a*\n|0,1 \n|1,0 \n|1,1 \n\n"},
        Typing{"Tab in the last cell adds a row", "<table><Tab><Tab><Tab><Tab>x",
               "|0,0 \n|0,1 \n|1,0 \n|1,1 \n|2,0 x\n|2,1 \n\n"},
        Typing{"the caret leaves it", "<table><Down><Down>after<Up><Up>a",
               "|0,0 \n|0,1 *a*\n|1,0 \n|1,1 \n\nafter"},
        Typing{"Backspace behind it goes into it", "<table><Down><Down>x<Home><Backspace>y",
               "|0,0 \n|0,1 \n|1,0 \n|1,1 y\n\nx"},
        Typing{"no table in a table", "<table><table>", "|0,0 \n|0,1 \n|1,0 \n|1,1 \n\n"},
        Typing{"several paragraphs in a cell", "<table>a<Return>b",
               "|0,0 *a*\n|0,0 *b*\n|0,1 \n|1,0 \n|1,1 \n\n"}));

TEST_F(RichTextEditTest, EveryCommandIsOneStepOfUndo) {
    struct Step {
        const char* what;
        std::function<void()> run;
    };
    const std::vector<Step> steps{
        {"heading",
         [&] { edit.perform({RichTextAction::heading(richtext::HeadingLevel::level1)}); }},
        {"list", [&] { edit.toggleList(QStringLiteral("{disc}")); }},
        {"code block", [&] { edit.perform({{Kind::codeBlock}}); }},
        {"language", [&] { edit.perform({RichTextAction::codeLanguage("python")}); }},
        {"bold", [&] { edit.perform({{Kind::bold}}); }},
        {"inline code", [&] { edit.perform({{Kind::code}}); }},
        {"link", [&] { edit.setLink(QStringLiteral("https://e.org")); }},
        {"plain", [&] { edit.perform({{Kind::normalText}}); }},
    };
    for (const auto& step : steps) {
        typed("one<Return><Ctrl+I>two<Return>three<Ctrl+I>");
        const auto before = content();
        edit.selectAll();
        step.run();
        if (std::string_view(step.what) != "plain") {
            EXPECT_NE(content(), before) << step.what;
        }
        const auto after = content();
        edit.undo();
        EXPECT_EQ(content(), before) << step.what;
        edit.redo();
        EXPECT_EQ(content(), after) << step.what;
    }
    typed("a<table>");
    edit.undo();
    EXPECT_EQ(content(), "a");
}

TEST_F(RichTextEditTest, NoStepOfUndoIsEmpty) {
    for (const char* const keys :
         {"ab<Backspace><Backspace>c<Ctrl+Z><Ctrl+Z>d", "a<Ctrl+Alt+0><Home><Backspace>",
          "<Ctrl+Alt+1>a<Ctrl+Alt+1><Return>b<Ctrl+A><Ctrl+B><Ctrl+B>",
          "<Ctrl+Shift+8>a<Return><Return>b<Ctrl+Shift+7><Shift+Tab><Shift+Tab>",
          "x<Return><code>a<Return><Return><Shift+Tab>b<Ctrl+E>", "ab<Ctrl+A><link><link>",
          "x<table>a<Tab><Ctrl+Alt+0><Shift+Tab><Tab><Ctrl+B>b"}) {
        typed(keys);
        // What an empty last paragraph looks like is not in the text.
        const auto lastBlock = [&] { return edit.document()->lastBlock(); };
        while (edit.document()->isUndoAvailable()) {
            const auto text = edit.content();
            const auto block = lastBlock().blockFormat();
            const auto typedNext = lastBlock().charFormat();
            edit.undo();
            EXPECT_FALSE(edit.content().isEquivalentTo(text) &&
                         lastBlock().blockFormat() == block &&
                         lastBlock().charFormat() == typedNext)
                << keys << ": " << tests::dump(text);
        }
    }
}

TEST_F(RichTextEditTest, TheLanguageIsThatOfAllThePiece) {
    typed("x<Return><code>a<Return>b<Return><Return>y<Up>");
    edit.perform({RichTextAction::codeLanguage("python")});
    EXPECT_EQ(content(), "x\npython> a\npython> b\ny");
    EXPECT_EQ(edit.formatState().codeLanguage, QStringLiteral("python"));
    typed("a <Ctrl+E>bb<Ctrl+E> c<Left><Left><Left>");
    edit.perform({RichTextAction::codeLanguage("go")});
    EXPECT_EQ(content(), "a `bb` c");
    EXPECT_EQ(edit.content().attributesAt(2).korvexCodeLanguage, "go");
}

TEST_F(RichTextEditTest, OnlyAHeadingLosesASpaceBeforeIt) {
    using namespace richtext;
    const ParagraphStyle spaced{.spacingBefore = spacingBeforeOf(HeadingLevel::level1)};
    AttributedString text(u"heading\n", {.font = fontOf(HeadingLevel::level1)}, spaced);
    text.append(u"spaced", {}, spaced);
    edit.setContent(text);
    edit.selectAll();
    edit.perform({RichTextAction::heading(std::nullopt)});
    EXPECT_EQ(edit.content().styleAt(0).spacingBefore, 0);
    EXPECT_EQ(edit.content().styleAt(8), spaced);
}

TEST_F(RichTextEditTest, BoldAndItalicStayInCodeOfAnotherLanguage) {
    using namespace richtext;
    AttributedString text(u"int", CodeSyntax::attributes("c", CodeKind::block));
    text.editAttributes({0, 2}, [](CharacterAttributes& each) { each.font.isBold = true; });
    text = RichTextSerializer::normalized(text);
    edit.setContent(text);
    edit.selectAll();
    EXPECT_FALSE(edit.formatState().isBold) << "not all of it is";
    edit.perform({RichTextAction::codeLanguage("cpp")});
    text.editAttributes({0, 3}, [](CharacterAttributes& each) { each.korvexCodeLanguage = "cpp"; });
    EXPECT_TRUE(RichTextSerializer::normalized(edit.content()).isEquivalentTo(text));
}

TEST_F(RichTextEditTest, ItemsThatMoveInGoOnWithTheListOfTheItemAboveThem) {
    typed("<Ctrl+Shift+7>a<Return>b<Return>c<Return>d");
    type(QStringLiteral("<Up><Up><Home><Shift+Down><Shift+End><Tab>"));
    EXPECT_EQ(content(), "1. a\n  {lower-alpha}. b\n  {lower-alpha}. c\n1. d");
    const auto text = edit.content();
    EXPECT_EQ(text.styleAt(2).lists, text.styleAt(4).lists);
    type(QStringLiteral("<End><Down><Tab><Tab>"));
    EXPECT_EQ(content(), "1. a\n  {lower-alpha}. b\n  {lower-alpha}. c\n    {lower-roman}. d");
}

TEST_F(RichTextEditTest, NumbersGoOnInTheListThatAnItemComesTo) {
    typed("<Ctrl+Shift+7>a<Return><Tab>b");
    EXPECT_EQ(markers(), "1.a.");
    type(QStringLiteral("<Shift+Tab>"));
    EXPECT_EQ(markers(), "1.2.");
    typed("<Ctrl+Shift+7>a<Return><Tab>b<Return><Return><Return>c<Ctrl+Shift+7>");
    EXPECT_EQ(markers(), "1.a.2.") << "the outermost list above goes on";
    edit.undo();
    EXPECT_EQ(markers(), "1.a.-");
}

TEST_F(RichTextEditTest, EveryItemHasANumberOfItsOwn) {
    const auto marker = [this](int line) {
        const auto block = edit.document()->findBlockByNumber(line);
        const auto rect = edit.document()->documentLayout()->blockBoundingRect(block).toRect();
        const auto left = static_cast<int>(block.layout()->lineAt(0).x());
        return edit.viewport()->grab({0, rect.top(), left, rect.height()}).toImage();
    };
    typed("<Ctrl+Shift+7>a<Return>a<Return>b");
    EXPECT_NE(marker(0), marker(1));
    type(QStringLiteral("<Up><Home><Backspace>"));
    EXPECT_EQ(markers(), "1.-2.");
    typed("<Ctrl+Shift+8>a<Return>a<Return>b");
    EXPECT_EQ(marker(0), marker(1));
}

TEST_F(RichTextEditTest, ListsOfOneCellHaveNothingToDoWithThoseOfTheNext) {
    using namespace richtext;
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{decimal}."});
    auto text = RichTextTable::make(1, 4);
    text.editStyles({0, 3}, [&](ParagraphStyle& style) { style.lists = {list}; });
    edit.setContent(text);
    const auto cell = [&](int column) {
        const auto* const table =
            qobject_cast<QTextTable*>(edit.document()->rootFrame()->childFrames().front());
        return table->cellAt(0, column).firstCursorPosition();
    };
    const auto listIn = [&](int column) {
        const auto lists = listsOf(cell(column).block());
        return lists.empty() ? nullptr : lists.back();
    };
    auto both = cell(0);
    both.setPosition(cell(2).position(), QTextCursor::KeepAnchor); // which is not touched
    nestLists(both, Nesting::deeper, edit.look());
    EXPECT_NE(listIn(0), list);
    EXPECT_NE(listIn(1), list);
    EXPECT_NE(listIn(0), listIn(1));
    nestLists(cell(2), Nesting::deeper, edit.look());
    EXPECT_NE(listIn(1), listIn(2));
    toggleList(cell(3), QStringLiteral("{decimal}."), edit.look());
    EXPECT_TRUE(listIn(3));
    EXPECT_NE(listIn(3), list);
}

TEST_F(RichTextEditTest, BetweenTwoLinksOrTwoPiecesOfCodeIsNeither) {
    using namespace richtext;
    struct Case {
        CharacterAttributes left;
        CharacterAttributes right;
        const char* expected;
    };
    for (const auto& [left, right, expected] :
         {Case{{.link = "a:"}, {.link = "b:"}, "[l](a:)x[r](b:)"},
          Case{CodeSyntax::attributes("c", CodeKind::inlineCode),
               CodeSyntax::attributes("go", CodeKind::inlineCode), "`l`x`r`"}}) {
        auto text = AttributedString(u"l", left);
        text.append(AttributedString(u"r", right));
        edit.setContent(RichTextSerializer::normalized(text));
        type(QStringLiteral("<Right>x"));
        EXPECT_EQ(content(), expected);
    }
}

TEST_F(RichTextEditTest, ShiftTabTakesATabAsWellAsBlanks) {
    using namespace richtext;
    edit.setContent(RichTextSerializer::normalized(
        AttributedString(u"\ta\n      b\n c", CodeSyntax::attributes("c", CodeKind::block))));
    type(QStringLiteral("<Ctrl+A><Shift+Tab>"));
    EXPECT_EQ(content(), "c> a\nc>   b\nc> c");
}

TEST_F(RichTextEditTest, TabIndentsNothingBesideTheSelectedCode) {
    typed("a<table>");
    type(QStringLiteral("<Ctrl+End>b<code>"));
    const auto before = content();
    const auto* const table = edit.document()->rootFrame()->childFrames().front();
    auto selection = edit.textCursor();
    selection.setPosition(table->firstPosition());
    selection.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    edit.setTextCursor(selection);
    type(QStringLiteral("<Tab>"));
    auto expected = before;
    expected.insert(expected.find("> b") + 2, "    ");
    EXPECT_EQ(content(), expected) << "of a selection that leaves a table Qt says it begins above";
    type(QStringLiteral("<Shift+Tab>"));
    EXPECT_EQ(content(), before);
}

TEST_F(RichTextEditTest, AWholeListMovesAndIsRenamedAtOnce) {
    typed("<Ctrl+Shift+7>a<Return>b<Return><Tab>c<Ctrl+A>");
    struct Step {
        std::function<void()> run;
        const char* expected;
    };
    std::vector<std::string> before;
    for (const auto& step : std::vector<Step>{
             {[&] { type(QStringLiteral("<Tab>")); },
              "  {lower-alpha}. a\n  {lower-alpha}. b\n    {lower-roman}. c"},
             {[&] { type(QStringLiteral("<Shift+Tab>")); }, "1. a\n1. b\n  {lower-alpha}. c"},
             {[&] { edit.toggleList(QStringLiteral("{square}")); },
              "{square} a\n{square} b\n  {square} c"},
             {[&] { type(QStringLiteral("<Shift+Tab>")); }, "a\nb\n1. c"},
             {[&] { edit.toggleList(QStringLiteral("{square}")); },
              "{square} a\n{square} b\n{square} c"}}) {
        before.push_back(content());
        step.run();
        EXPECT_EQ(content(), step.expected);
    }
    const auto text = edit.content();
    EXPECT_EQ(text.styleAt(0).lists, text.styleAt(2).lists);
    for (; !before.empty(); before.pop_back()) {
        edit.undo();
        EXPECT_EQ(content(), before.back());
    }
}

TEST_F(RichTextEditTest, ItemsAreDrawnAsDeepAsTheyAreWhateverIndentsAreStored) {
    using namespace richtext;
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{decimal}."});
    ParagraphStyle style{.lists = {list, list}};
    setListIndents(style);
    style.lists.pop_back(); // moved in like an item of the depth that it gets next
    edit.setContent(AttributedString(u"a\nb", {}, style));
    const auto lefts = [&] {
        std::vector<double> result;
        for (auto block = edit.document()->begin(); block.isValid(); block = block.next()) {
            const auto rect = edit.document()->documentLayout()->blockBoundingRect(block);
            result.push_back(rect.left() + block.layout()->lineAt(0).x());
        }
        return result;
    };
    const auto first = lefts();
    type(QStringLiteral("<Ctrl+A><Tab>"));
    const auto deeper = lefts();
    EXPECT_DOUBLE_EQ(deeper[0], 2 * first[0]);
    EXPECT_DOUBLE_EQ(deeper[1], 2 * first[1]);
    edit.undo();
    EXPECT_EQ(lefts(), first);
    edit.redo();
    EXPECT_EQ(lefts(), deeper);
}

TEST_F(RichTextEditTest, TheStateIsWhatTheCaretOrAllOfTheSelectionHas) {
    QSignalSpy changes(&edit, &RichTextEdit::formatStateChanged);
    typed("<Ctrl+B>a<Ctrl+B>b<Return><Ctrl+Shift+7>c<Return><Return><Ctrl+Alt+2>d<Return><code>e");
    EXPECT_FALSE(changes.isEmpty());
    EXPECT_TRUE(edit.formatState().isCodeBlock);
    EXPECT_EQ(edit.formatState().codeLanguage, QStringLiteral("auto"));
    type(QStringLiteral("<Up>"));
    EXPECT_EQ(edit.formatState().heading, richtext::HeadingLevel::level2);
    type(QStringLiteral("<Up>"));
    EXPECT_EQ(edit.formatState().list, ListKind::numbered);
    EXPECT_FALSE(edit.formatState().heading);
    type(QStringLiteral("<Up><Home><Shift+Right>"));
    EXPECT_TRUE(edit.formatState().isBold);
    type(QStringLiteral("<Shift+Right>"));
    EXPECT_FALSE(edit.formatState().isBold) << "not all of it is";
}

TEST_F(RichTextEditTest, ALinkIsChangedAndTakenAwayAsAWhole) {
    typed("ab cd<Ctrl+A><link><Home><Right>");
    EXPECT_EQ(edit.formatState().link, QStringLiteral("https://e.org"));
    edit.setLink(QStringLiteral("mailto:a@e.org"));
    EXPECT_EQ(content(), "[ab cd](mailto:a@e.org)");
    edit.setLink({});
    EXPECT_EQ(content(), "ab cd");
    edit.setLink({});
    EXPECT_EQ(content(), "ab cd") << "where there is none, nothing happens";
    typed("ab<Return>c<Up><Home><Shift+End><link><Home><Right><Return>");
    EXPECT_EQ(content(), "[a](https://e.org)\n[b](https://e.org)\nc");
    EXPECT_EQ(edit.content().attributesAt(3).link, "") << "the end of a paragraph is no part of it";
}

TEST_F(RichTextEditTest, NothingGoesBeyondTheLimit) {
    QSignalSpy refusals(&edit, &RichTextEdit::limitReached);
    // 9,998 characters in far more units, so that units decide nothing.
    std::u16string text;
    for (int i = 0; i < 9'998; ++i) {
        text += u"👍🏽";
    }
    edit.setContent(richtext::AttributedString(text));
    edit.moveCursor(QTextCursor::End);
    type(QStringLiteral("a<Return>"));
    EXPECT_EQ(refusals.count(), 0);
    const auto full = edit.content().length();
    type(QStringLiteral("b"));
    type(QStringLiteral("<Return>"));
    type(QStringLiteral("<table>"));
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("字"));
    QApplication::sendEvent(&edit, &composed);
    QApplication::clipboard()->setText(QStringLiteral("c"));
    edit.paste();
    type(QStringLiteral("<Ctrl+Shift+V>"));
    EXPECT_EQ(refusals.count(), 6);
    EXPECT_EQ(edit.content().length(), full);
    type(QStringLiteral("<Shift+Left>c"));
    EXPECT_EQ(refusals.count(), 6) << "in the place of another there is room";
    QTest::keyClick(&edit, Qt::Key_Backspace);
    type(QStringLiteral("d"));
    EXPECT_EQ(refusals.count(), 6);
    EXPECT_EQ(edit.content().length(), full);
}

TEST_F(RichTextEditTest, TheLineBreakAboveAReplacedTableCountsForTheLimit) {
    edit.setContent(richtext::AttributedString(std::u16string(9'990, u'a')));
    edit.moveCursor(QTextCursor::End);
    type(QStringLiteral("<Return><table>"));
    for (const auto isAllowed : {false, true}) {
        auto selection = edit.textCursor();
        selection.setPosition(edit.document()->rootFrame()->childFrames().front()->firstPosition());
        selection.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
        edit.setTextCursor(selection);
        QApplication::clipboard()->setText(QString(isAllowed ? 9 : 10, QLatin1Char('b')));
        edit.paste();
        EXPECT_EQ(edit.document()->rootFrame()->childFrames().isEmpty(), isAllowed);
    }
    EXPECT_EQ(edit.content().length(), 10'000U);
}

TEST_F(RichTextEditTest, WhatIsPaintedInPartsLooksAsIfPaintedAtOnce) {
    typed("<Ctrl+Alt+1>heading<Return>a <Ctrl+E>code<Ctrl+E> b<Return><Ctrl+Shift+8>item<Return>"
          "item<Return><Return><code>c<Return>d<Return><Return>below");
    edit.setCursorWidth(0);
    edit.selectAll();
    auto& viewport = *edit.viewport();
    const auto whole = viewport.grab().toImage();
    constexpr int kPart = 3;
    for (int y = 0; y + kPart <= viewport.height(); y += kPart) {
        const QRect part(0, y, viewport.width(), kPart);
        ASSERT_EQ(viewport.grab(part).toImage(), whole.copy(part)) << y;
    }
}

TEST_F(RichTextEditTest, WhatIsScrolledAsideIsFoundWhereItIsSeen) {
    typed("a<table>");
    edit.resize(120, 400);
    std::set<double> places;
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        edit.setLayoutDirection(direction);
        auto& across = *edit.horizontalScrollBar();
        ASSERT_GT(across.maximum(), 0);
        for (const auto value : {0, across.maximum()}) {
            across.setValue(value);
            const auto start = edit.cursorRect(QTextCursor(edit.document()));
            places.insert(start.left() + edit.scrolled().x());
        }
    }
    EXPECT_EQ(places.size(), 1U);
}

TEST_F(RichTextEditTest, ASelectionThatLeavesATableMarksNothingAboveIt) {
    typed("a<Return><Return><table>");
    auto selection = edit.textCursor();
    selection.setPosition(edit.document()->rootFrame()->childFrames().front()->firstPosition());
    const auto table = edit.cursorRect(selection);
    selection.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    QImage image(edit.viewport()->size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    const auto blank = image.copy(0, 0, image.width(), table.top() - edit.look().cellPadding());
    QPainter painter(&image);
    paintSelection(painter, selection, edit.look(), image.rect());
    painter.end();
    EXPECT_EQ(image.copy(blank.rect()), blank);
    EXPECT_NE(image.pixel(table.center()), blank.pixel(0, 0));
}

TEST_F(RichTextEditTest, TheMouseIsFollowedBeyondTheLinesAndRightPressesAreLeftToOthers) {
    typed("one<Return>two<Return>three");
    const auto middle = edit.document()->findBlockByNumber(1).position() + 1;
    QTextCursor place(edit.document());
    place.setPosition(middle);
    const auto pressed = edit.cursorRect(place).center();
    for (const auto& [to, expected] : {std::pair(-10, 0), std::pair(300, 13)}) {
        edit.moveCursor(QTextCursor::End); // a press on what is selected would drag that
        QTest::mousePress(edit.viewport(), Qt::LeftButton, {}, pressed);
        QTest::mouseMove(edit.viewport(), {pressed.x(), to});
        QTest::mouseRelease(edit.viewport(), Qt::LeftButton, {}, {pressed.x(), to});
        EXPECT_EQ(edit.textCursor().anchor(), middle);
        EXPECT_EQ(edit.textCursor().position(), expected);
    }
    QMouseEvent press(QEvent::MouseButtonPress, pressed, edit.mapToGlobal(pressed), Qt::RightButton,
                      Qt::RightButton, {});
    EXPECT_FALSE(QApplication::sendEvent(edit.viewport(), &press));
}

TEST_F(RichTextEditTest, KeysThatLeadOutAreAnnounced) {
    QSignalSpy walks(&edit, &RichTextEdit::walked);
    typed("a<Return>b<Up><Up>");
    ASSERT_EQ(walks.count(), 1);
    EXPECT_EQ(walks.takeFirst().at(0).toInt(), -1);
    type(QStringLiteral("<Down><Down>"));
    ASSERT_EQ(walks.count(), 1);
    EXPECT_EQ(walks.takeFirst().at(0).toInt(), 1);
    typed("<table>");
    type(QStringLiteral("<Down><Down><Down>"));
    EXPECT_EQ(walks.count(), 1) << "past the paragraph after the table";
    QSignalSpy escapes(&edit, &RichTextEdit::escaped);
    QSignalSpy splits(&edit, &RichTextEdit::splitRequested);
    type(QStringLiteral("<Esc><Ctrl+Shift+Return>"));
    EXPECT_EQ(escapes.count(), 1);
    EXPECT_EQ(splits.count(), 1);
}

TEST_F(RichTextEditTest, CopyAndPasteKeepTheFormattingAndOfferPlainText) {
    typed("<Ctrl+Alt+1>T<Return><Ctrl+B>b<Ctrl+B> <Ctrl+E>c<Ctrl+A><Ctrl+C>");
    const auto* const copied = QApplication::clipboard()->mimeData();
    EXPECT_EQ(copied->text(), QStringLiteral("T\nb c"));
    EXPECT_TRUE(copied->hasHtml());
    EXPECT_TRUE(copied->hasFormat(QStringLiteral("text/rtf")));
    const auto before = content();
    edit.setContent({});
    type(QStringLiteral("<Ctrl+V>"));
    EXPECT_EQ(content(), before);
    edit.setContent({});
    type(QStringLiteral("<Ctrl+Shift+V>"));
    EXPECT_EQ(content(), "T\nb c");
}

} // namespace
} // namespace korvex::ui
