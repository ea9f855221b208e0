#include "ui/editor/RichTextFixture.h"
#include "ui/text/TextDocumentConversion.h"

#include <QClipboard>
#include <QMimeData>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

struct Pasting {
    const char* what;
    const char* keys;
    /// HTML if it begins with a tag.
    const char* offered;
    const char* expected;
};

void PrintTo(const Pasting& pasting, std::ostream* out) {
    *out << pasting.what;
}

class PastingTest : public tests::RichTextFixture {
protected:
    void paste(const char* offered) {
        auto* const data = new QMimeData;
        const auto text = QString::fromUtf8(offered);
        if (text.startsWith(QLatin1Char('<'))) {
            data->setHtml(text);
        } else {
            data->setText(text);
        }
        QApplication::clipboard()->setMimeData(data);
        type(QStringLiteral("<Ctrl+V>"));
    }
};

class Pastings : public PastingTest, public ::testing::WithParamInterface<Pasting> {};

TEST_P(Pastings, FitWhereTheyGoInOneStep) {
    const auto before = typed(GetParam().keys);
    paste(GetParam().offered);
    EXPECT_EQ(content(), GetParam().expected);
    edit.undo();
    EXPECT_EQ(content(), before);
    edit.redo();
    EXPECT_EQ(content(), GetParam().expected);
    edit.setContent(edit.content());
    EXPECT_EQ(content(), GetParam().expected) << "shown anew";
}

INSTANTIATE_TEST_SUITE_P(
    Lists, Pastings,
    ::testing::Values(
        Pasting{"lines behind an item", "<Ctrl+Shift+8>a<Return>b<Up><End>", "x\ny",
                "- ax\n- y\n- b"},
        Pasting{"before one", "<Ctrl+Shift+7>a<Home>", "x\ny", "1. x\n1. ya"},
        Pasting{"into one", "<Ctrl+Shift+8>ab<Left>", "x\ny\nz", "- ax\n- y\n- zb"},
        Pasting{"whole lines into one", "<Ctrl+Shift+8>ab<Left>", "x\ny\n", "- ax\n- y\n- b"},
        Pasting{"into an empty one", "<Ctrl+Shift+7>a<Return>", "x\ny", "1. a\n1. x\n1. y"},
        Pasting{"in the place of one", "<Ctrl+Shift+7>a<Return>b<Shift+Home>", "x\ny",
                "1. a\n1. x\n1. y"},
        Pasting{"in the place of all", "<Ctrl+Shift+7>a<Return>b<Ctrl+A>", "x\ny", "1. x\n1. y"},
        Pasting{"into an inner list", "<Ctrl+Shift+8>a<Return><Tab>b<Return><Shift+Tab>c<Up><End>",
                "x\ny", "- a\n  {circle} bx\n  {circle} y\n- c"},
        Pasting{"formatted paragraphs join", "<Ctrl+Shift+8>a<Return>",
                "<p align=center><b>x</b></p><h2>y</h2><p>z</p>", "- a\n- *x*\n- ## y\n- z"},
        Pasting{"another list stays another", "<Ctrl+Shift+8>a<Return>b<Home>",
                "<ol><li>x</li><li>y</li></ol><p></p>", "- a\n1. x\n1. y\n- b"},
        Pasting{"one that is the same goes on", "<Ctrl+Shift+8>a<Return><Tab>b",
                "<ul style='list-style-type: circle'><li>x</li><li>y<ul><li>z</li></ul></li></ul>",
                "- a\n  {circle} bx\n  {circle} y\n    {circle} z"},
        Pasting{"but lists go no deeper than nine",
                "<Ctrl+Shift+7>a<Tab><Tab><Tab><Tab><Tab><Tab><Tab><Tab>",
                "<ol type=i><li>x<ol><li>y</li></ol></li></ol>",
                "                {lower-roman}. ax\n  1. y"},
        Pasting{"a code block stays outside", "<Ctrl+Shift+8>a<Return>", "<pre>x\ny</pre><p>z</p>",
                "- a\nauto> x\nauto> y\n- z"},
        Pasting{"a table, too", "<Ctrl+Shift+8>a<Return>b",
                "<p>x</p><table><tr><td>y</td></tr></table><p>z</p>", "- a\n- bx\n|0,0 y\n- z"}));

INSTANTIATE_TEST_SUITE_P(
    Lines, Pastings,
    ::testing::Values(
        Pasting{"words look like those around them", "<Ctrl+B>ab<Left>", "x", "*axb*"},
        Pasting{"and like those they replace", "a<Ctrl+B>b<Shift+Left>", "x", "a*x*"},
        Pasting{"formats are kept", "<Ctrl+B>ab<Left>", "<i>x</i>", "*a*/x/*b*"},
        Pasting{"a link goes on inside only", "ab<Ctrl+A><link><Home><Right>", "x",
                "[axb](https://e.org)"},
        Pasting{"words in a heading", "<Ctrl+Alt+1>ab<Left>", "x", "# axb"},
        Pasting{"formatted ones", "<Ctrl+Alt+1>ab<Left>", "<h3>x</h3>", "# axb"},
        Pasting{"lines in a heading", "<Ctrl+Alt+1>ab<Left>", "x\ny\nz", "# ax\ny\n# zb"},
        Pasting{"lines that end in one",
                "ab<Return><Ctrl+Alt+1>cd<Left><Shift+Up><Shift+Home><Shift+Right>", "x\ny",
                "ax\n# yd"},
        Pasting{"lines before one", "<Ctrl+Alt+1>ab<Home>", "x\ny\n", "x\ny\n# ab"},
        Pasting{"lines behind one", "<Ctrl+Alt+1>ab", "x\ny", "# abx\ny"},
        Pasting{"lines in an empty one", "<Ctrl+Alt+2>", "x\ny", "## x\ny"},
        Pasting{"code in an empty one", "<Ctrl+Alt+2>", "<pre>x</pre>", "auto> x"},
        Pasting{"part of a heading in a line", "ab<Left>", "<h1>x</h1>", "axb"},
        Pasting{"a heading in an empty line", "ab<Return>", "<h1>x</h1><p>y</p>", "ab\n# x\ny"},
        Pasting{"part of a code block in a line", "ab<Left>", "<pre>x</pre>", "a`x`b"},
        Pasting{"lines in a code block", "<code>ab<Left>", "<p><b>x</b></p><h1>y</h1>",
                "auto> ax\nauto> yb"},
        Pasting{"in the place of code", "<code>ab<Return>c<Shift+Home>", "x\ny",
                "auto> ab\nauto> x\nauto> y"},
        Pasting{"lines in code in a line", "<Ctrl+E>ab<Left>", "x\ny", "`ax yb`"},
        Pasting{"in the place of code in a line", "<Ctrl+E>ab<Ctrl+A>", "x\ny", "`x y`"},
        Pasting{"in the place of more than it", "<Ctrl+E>ab<Ctrl+E>c<Ctrl+A>",
                "<p><b>x</b></p><p>y</p>", "*x*\ny"},
        Pasting{"plainly", "<Ctrl+E>ab<Ctrl+E>c<Return><Ctrl+E>d<Ctrl+A>", "x\n\ny", "x\n\ny"},
        Pasting{"a table there", "<Ctrl+E>ab<Return>c<Ctrl+A>",
                "<table><tr><td>x</td><td>y</td></tr></table>", "|0,0 x\n|0,1 y\n\n"},
        Pasting{"in the place of a code block", "<code>ab<Return>c<Ctrl+A>", "x\ny",
                "auto> x\nauto> y"},
        Pasting{"in the place of more than a code block", "<code>ab<Return><Ctrl+Return>c<Ctrl+A>",
                "x\ny\nz", "x\ny\nz"},
        Pasting{"formatted, from within it to within a line",
                "<code>ab<Return><Ctrl+Return>cd<Left><Ctrl+Shift+Home><Shift+Right>",
                "<p>x</p><p><b>y</b></p>", "auto> ax\n*y*d"},
        Pasting{"from within a line to within a code block",
                "ab<Return><code>cd<Left><Ctrl+Shift+Home><Shift+Right>", "x\ny", "ax\nauto> yd"},
        Pasting{"in the place of a heading", "<Ctrl+Alt+1>ab<Shift+Home>", "<p>x</p><p>y</p>",
                "# x\ny"},
        Pasting{"in the place of more than a heading", "<Ctrl+Alt+1>ab<Return>c<Ctrl+A>",
                "<p>x</p><p>y</p>", "x\ny"},
        Pasting{"lines in a header cell", "<table>a", "x\ny",
                "|0,0 *ax*\n|0,0 *y*\n|0,1 \n|1,0 \n|1,1 \n\n"},
        Pasting{"formatted paragraphs in a cell", "<table><Tab><Tab>", "<p>x</p><h1>y</h1>",
                "|0,0 \n|0,1 \n|1,0 x\n|1,0 # y\n|1,1 \n\n"},
        Pasting{"a table in a cell", "<table><Tab><Tab>a",
                "<table><tr><td>x</td><td>y</td></tr></table>",
                "|0,0 \n|0,1 \n|1,0 ax\n|1,0 y\n|1,1 \n\n"}));

TEST_F(PastingTest, NumbersGoOnThroughWhatIsPasted) {
    typed("<Ctrl+Shift+7>a<Return><Tab>b<Return>c<Return><Shift+Tab>d<Up><End>");
    ASSERT_EQ(markers(), "1.a.b.2.");
    paste("x\ny");
    EXPECT_EQ(markers(), "1.a.b.c.2.");
    paste("<ol><li>x</li><li>y</li></ol><p>z</p>");
    EXPECT_EQ(markers(), "1.a.b.c.2.d.3.") << "what looks like the outer list is the outer list";
    edit.undo();
    edit.undo();
    EXPECT_EQ(markers(), "1.a.b.2.");
}

TEST_F(PastingTest, CellsThatAreReplacedSayNothingOfTheLinesInTheirPlace) {
    for (const auto& [keys, expected] :
         {std::pair{"<table>ab<Tab><Ctrl+Alt+1>cd<Home><Shift+Left>", "|0,0 *x*\n|0,0 *y*\n|0,1 "},
          std::pair{"<table><Ctrl+Alt+1>ab<Tab>cd<Home><Shift+Left>", "|0,0 x\n|0,0 y\n|0,1 "}}) {
        typed(keys);
        ASSERT_TRUE(edit.textCursor().hasComplexSelection());
        paste("x\ny");
        EXPECT_THAT(content(), ::testing::StartsWith(expected));
    }
}

/// A table of which a part is selected with what stands below it is selected as a whole.
struct TableReplacing {
    const char* above;
    const char* expected;
};

void PrintTo(const TableReplacing& replacing, std::ostream* out) {
    *out << replacing.above;
}

class TableReplacings : public PastingTest, public ::testing::WithParamInterface<TableReplacing> {};

TEST_P(TableReplacings, AreAboutNothingAboveTheTable) {
    for (const auto cell : {0, 1, 2}) {
        const auto before = typed((std::string(GetParam().above) + "<table>").c_str());
        const auto frames = edit.document()->rootFrame()->childFrames();
        ASSERT_EQ(frames.size(), 1) << before;
        const auto* const table = qobject_cast<QTextTable*>(frames.front());
        auto selection = table->cellAt(cell / 2, cell % 2).firstCursorPosition();
        selection.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
        edit.setTextCursor(selection);
        EXPECT_THAT(tests::dump(textOf(selection)), ::testing::StartsWith("|0,0 "));
        paste("x\ny");
        EXPECT_EQ(content(), GetParam().expected) << cell;
        edit.undo();
        EXPECT_EQ(content(), before) << cell;
    }
}

INSTANTIATE_TEST_SUITE_P(Places, TableReplacings,
                         ::testing::Values(TableReplacing{"a", "a\nx\ny"},
                                           TableReplacing{"<Ctrl+Alt+1>a", "# a\nx\ny"},
                                           TableReplacing{"<Ctrl+Shift+8>a", "- a\nx\ny"},
                                           TableReplacing{"<code>a<Ctrl+Return>", "auto> a\nx\ny"},
                                           TableReplacing{"", "x\ny"}));

TEST_F(PastingTest, WhatJoinsAListIsMovedInLikeItsItems) {
    typed("<Ctrl+Shift+8>a<Return>");
    paste("<h2>x</h2><p align=center>y</p><p>z</p>");
    const auto text = edit.content();
    EXPECT_EQ(text.text(), u"a\nx\ny\nz");
    const auto& item = text.styleAt(0);
    text.forEachParagraph([&](const richtext::AttributedString::ParagraphRun& paragraph) {
        EXPECT_EQ(paragraph.style.lists, item.lists);
        EXPECT_EQ(paragraph.style.leftIndent, item.leftIndent);
        EXPECT_EQ(paragraph.style.tabStops, item.tabStops);
    });
    EXPECT_EQ(text.styleAt(4).alignment, richtext::TextAlignment::center);
}

} // namespace
} // namespace korvex::ui
