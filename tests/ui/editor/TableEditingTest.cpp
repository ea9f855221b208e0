#include "ui/editor/TableEditing.h"

#include "base/Utf16.h"
#include "richtext/TableNotation.h"
#include "ui/WindowFixture.h"
#include "ui/editor/ColumnResizer.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextLook.h"

#include <QAbstractTextDocumentLayout>
#include <QImage>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextBlock>
#include <QTextTable>

#include <map>
#include <random>
#include <sstream>

namespace korvex::ui {
namespace {

using namespace richtext;
using Edit = RichTextTable::Grid::Edit;
using Kind = Edit::Kind;

/// Every cell says where it stood first; some have a second paragraph, some are formatted.
AttributedString filledTable(int rows, int columns) {
    auto text = RichTextTable::make(rows, columns);
    const auto cells = RichTextTable::cells(text, tests::outerTables(text).front());
    for (auto cell = cells.rbegin(); cell != cells.rend(); ++cell) {
        const int row = cell->cell->row;
        const int column = cell->cell->column;
        auto attributes = text.attributesAt(cell->range.location);
        attributes.font.isItalic = column == 1;
        auto content = base::utf16(std::to_string(row) + "," + std::to_string(column));
        if (row == 1 && column == 0) {
            content += u"\nmore";
        }
        text.replace({cell->range.location, 0},
                     AttributedString(content, attributes, text.styleAt(cell->range.location)));
    }
    text.remove({text.length() - 1, 1}); // the paragraph after it
    return text;
}

/// What may stand around a table.
std::map<std::string, AttributedString> documents() {
    ParagraphStyle item;
    item.lists = {std::make_shared<TextList>(TextList{.marker = u"{decimal}."})};
    CharacterAttributes bold;
    bold.font.isBold = true;
    const auto between = [](AttributedString text, const AttributedString& after) {
        text.append(filledTable(3, 3));
        text.append(after);
        return text;
    };
    std::map<std::string, AttributedString> result;
    result["between paragraphs"] =
        between(AttributedString(u"before\n", bold), AttributedString(u"after"));
    result["between list items"] =
        between(AttributedString(u"one\n", {}, item), AttributedString(u"two\n", {}, item));
    result["alone"] = between({}, AttributedString(u"\n"));
    result["before an empty paragraph"] =
        between(AttributedString(u"\n"), AttributedString(u"\nx"));
    result["after an empty list item"] =
        between(AttributedString(u"one\n\n", {}, item), AttributedString(u"\n", {}, item));
    auto nested = result["between paragraphs"];
    const auto place = nested.text().find(u"more");
    auto inner = filledTable(2, 2);
    inner.editStyles({0, inner.length()}, [&](ParagraphStyle& style) {
        style.cells.insert(style.cells.begin(), nested.styleAt(place).cells.front());
    });
    nested.replace({place, 0}, inner);
    result["around another table"] = nested;
    auto two = between(AttributedString(u"\n"), AttributedString(u"\n"));
    two.append(filledTable(2, 2));
    two.append(AttributedString(u"end\n"));
    result["before another table"] = two;
    // Without its last column it can be drawn as tables with one frame are.
    auto framed = result["between paragraphs"];
    std::map<TextTableCellRef, TextTableCellRef> changed;
    framed.editStyles({0, framed.length()}, [&](ParagraphStyle& style) {
        for (auto& cell : style.cells) {
            auto& copy = changed[cell];
            if (!copy) {
                auto made = std::make_shared<TextTableCell>(*cell);
                made->geometry.borders.back().width *= made->column == 2 ? 4 : 1;
                copy = std::move(made);
            }
            cell = copy;
        }
    });
    result["with a wide border"] = framed;
    return result;
}

class TableEditingTest : public tests::WindowFixture {
protected:
    TableEditingTest() {
        edit.setLook(TextLook(theme));
        edit.resize(900, 600);
    }

    void show(const AttributedString& text) {
        edit.setContent(text);
        ASSERT_TRUE(edit.content().isEquivalentTo(text));
    }
    QTextTable& table() {
        for (auto* const frame : edit.document()->rootFrame()->childFrames()) {
            if (auto* const found = qobject_cast<QTextTable*>(frame)) {
                return *found;
            }
        }
        throw std::logic_error("no table");
    }
    void placeCaret(int row, int column, int offset = 0) {
        auto cursor = edit.textCursor();
        cursor.setPosition(table().cellAt(row, column).firstPosition() + offset);
        edit.setTextCursor(cursor);
    }
    /// "row,column" of the caret and how far it stands in the cell.
    std::string caret() {
        const auto cursor = edit.textCursor();
        if (!cursor.currentTable()) {
            return "outside";
        }
        const auto cell = cursor.currentTable()->cellAt(cursor);
        return std::to_string(cell.row()) + "," + std::to_string(cell.column()) + "+" +
               std::to_string(cursor.position() - cell.firstPosition());
    }
    /// How the first table of an editor is drawn, as far as its formats say.
    static std::string drawn(const RichTextEdit& shown) {
        std::ostringstream result;
        for (const auto* const frame : shown.document()->rootFrame()->childFrames()) {
            const auto* const found = qobject_cast<const QTextTable*>(frame);
            if (!found) {
                continue;
            }
            for (const auto& width : found->format().columnWidthConstraints()) {
                result << width.rawValue() << ' ';
            }
            for (int place = 0; place < found->rows() * found->columns(); ++place) {
                const auto cell = found->cellAt(place / found->columns(), place % found->columns());
                const auto format = cell.format().toTableCellFormat();
                result << format.background().color().name().toStdString() << '/'
                       << format.fontWeight();
                for (const double border : {format.topBorder(), format.leftBorder(),
                                            format.bottomBorder(), format.rightBorder()}) {
                    result << '/' << border;
                }
                result << ' ';
            }
        }
        return result.str();
    }
    /// What the grid makes of the first table; absent when it refuses.
    static std::optional<AttributedString> edited(AttributedString text, const Edit& what) {
        auto grid = RichTextTable::Grid::read(text, tests::outerTables(text).front());
        if (!grid->apply(what)) {
            return std::nullopt;
        }
        text.replace(grid->range(), grid->attributedString());
        return text;
    }

    RichTextEdit edit;
    TableEditing tables{edit};
};

struct Command {
    TableAction action;
    Edit edit;
    /// Of a caret that stood in row 1, column 1, after its second unit.
    const char* caret;
};

/// What each command is to do in row `row` and column `column`.
std::vector<Command> commandsAt(int row, int column) {
    using Where = Edit::Where;
    return {
        {TableAction::insertRowAbove,
         {.kind = Kind::insertRow, .index = row, .where = Where::before},
         "1,1+0"},
        {TableAction::insertRowBelow,
         {.kind = Kind::insertRow, .index = row, .where = Where::after},
         "2,1+0"},
        {TableAction::insertColumnLeft,
         {.kind = Kind::insertColumn, .index = column, .where = Where::before},
         "1,1+0"},
        {TableAction::insertColumnRight,
         {.kind = Kind::insertColumn, .index = column, .where = Where::after},
         "1,2+0"},
        {TableAction::duplicateRow, {.kind = Kind::duplicateRow, .index = row}, "2,1+2"},
        {TableAction::duplicateColumn, {.kind = Kind::duplicateColumn, .index = column}, "1,2+2"},
        {TableAction::moveRowUp, {.kind = Kind::moveRow, .index = row, .target = row - 1}, "0,1+2"},
        {TableAction::moveRowDown,
         {.kind = Kind::moveRow, .index = row, .target = row + 1},
         "2,1+2"},
        {TableAction::moveColumnLeft,
         {.kind = Kind::moveColumn, .index = column, .target = column - 1},
         "1,0+2"},
        {TableAction::moveColumnRight,
         {.kind = Kind::moveColumn, .index = column, .target = column + 1},
         "1,2+2"},
        {TableAction::resetColumnWidth, {.kind = Kind::resizeColumn, .index = column}, "1,1+2"},
        {TableAction::deleteRow, {.kind = Kind::deleteRow, .index = row}, "1,1+2"},
        {TableAction::deleteColumn, {.kind = Kind::deleteColumn, .index = column}, "1,1+2"},
    };
}

TEST_F(TableEditingTest, EveryCommandGivesWhatTheGridGivesAndUndoTakesItBack) {
    for (const auto& [name, plain] : documents()) {
        const auto text =
            *edited(plain, {.kind = Kind::resizeColumn, .index = 1, .width = 200 * kTwipsPerPoint});
        for (int place = 0; place < 9; ++place) {
            const int row = place / 3;
            const int column = place % 3;
            for (const auto& command : commandsAt(row, column)) {
                SCOPED_TRACE(name + ", command " +
                             std::to_string(static_cast<int>(command.action)) + " at " +
                             std::to_string(row) + "," + std::to_string(column));
                show(text);
                placeCaret(row, column, 2);
                const auto before = drawn(edit);
                const auto stood = caret();
                const auto expected = edited(text, command.edit);
                EXPECT_EQ(tables.isAvailable(command.action), expected.has_value());
                EXPECT_EQ(tables.perform(command.action), expected.has_value());
                ASSERT_TRUE(edit.content().isEquivalentTo(expected.value_or(text)));
                if (!expected) {
                    continue;
                }
                RichTextEdit fresh;
                fresh.setLook(TextLook(theme));
                fresh.setContent(*expected);
                EXPECT_EQ(drawn(edit), drawn(fresh));
                if (row == 1 && column == 1) {
                    EXPECT_EQ(caret(), command.caret);
                }
                edit.undo();
                ASSERT_TRUE(edit.content().isEquivalentTo(text));
                EXPECT_EQ(drawn(edit), before);
                EXPECT_EQ(caret(), stood);
                EXPECT_FALSE(edit.document()->isUndoAvailable()) << "one step";
                edit.redo();
                ASSERT_TRUE(edit.content().isEquivalentTo(*expected));
            }
        }
    }
}

TEST_F(TableEditingTest, EveryLineIsSeenOnceAndOnePixelWide) {
    const auto expectLines = [&] {
        QImage seen(edit.viewport()->size(), QImage::Format_RGB32);
        seen.fill(Qt::white);
        edit.viewport()->render(&seen, {}, {}, QWidget::DrawChildren);
        const auto color = edit.look().fill(Color::named(SystemColor::separator)).rgb();
        // Through the padding beside the text of the cell in the middle.
        const auto text = edit.document()->documentLayout()->blockBoundingRect(
            table().cellAt(1, 1).firstCursorPosition().block());
        const QPoint through = text.topLeft().toPoint() - QPoint(3, 3);
        int across = 0;
        for (int x = 0; x < seen.width(); ++x) {
            across += seen.pixel(x, through.y()) == color ? 1 : 0;
        }
        int down = 0;
        for (int y = 0; y < seen.height(); ++y) {
            down += seen.pixel(through.x(), y) == color ? 1 : 0;
        }
        EXPECT_EQ(across, table().columns() + 1);
        EXPECT_EQ(down, table().rows() + 1);
    };
    auto bare = documents().at("alone");
    bare.editStyles({0, bare.length()}, [](ParagraphStyle& style) {
        for (auto& ref : style.cells) {
            auto cell = *ref;
            cell.geometry.borders = {};
            cell.geometry.padding = {0, 108, 0, 108};
            ref = std::make_shared<TextTableCell>(cell);
        }
    });
    edit.setContent(bare); // each paragraph has a cell of its own, as there are no longer ones
    expectLines();
    show(documents().at("alone"));
    expectLines();
    for (const auto action :
         {TableAction::insertRowAbove, TableAction::insertColumnLeft, TableAction::moveColumnRight,
          TableAction::deleteColumn, TableAction::moveRowDown, TableAction::deleteRow}) {
        SCOPED_TRACE(static_cast<int>(action));
        placeCaret(0, 0);
        EXPECT_TRUE(tables.perform(action));
        expectLines();
        edit.undo();
        expectLines();
        edit.redo();
        expectLines();
    }
}

TEST_F(TableEditingTest, WhereTheLastRowOrColumnGoesTheCaretGoesBack) {
    show(documents().at("alone"));
    placeCaret(2, 2, 1);
    EXPECT_TRUE(tables.perform(TableAction::deleteRow));
    EXPECT_EQ(caret(), "1,2+1");
    EXPECT_TRUE(tables.perform(TableAction::deleteColumn));
    EXPECT_EQ(caret(), "1,1+1");
}

TEST_F(TableEditingTest, DeletingTheTableOrItsOnlyRowOrColumnLeavesTheTextAroundIt) {
    for (const auto& [name, text] : documents()) {
        SCOPED_TRACE(name);
        auto expected = text;
        const auto cells = RichTextTable::cells(text, tests::outerTables(text).front());
        const auto start = cells.front().range.location;
        expected.remove({start, cells.back().range.end() - start});

        show(text);
        placeCaret(1, 1);
        EXPECT_TRUE(tables.perform(TableAction::deleteTable));
        EXPECT_TRUE(edit.content().isEquivalentTo(expected));
        EXPECT_EQ(offsetOf(*edit.document(), edit.textCursor().position()), start);
        edit.undo();
        EXPECT_TRUE(edit.content().isEquivalentTo(text));
        EXPECT_EQ(caret(), "1,1+0");

        for (const auto action : {TableAction::deleteRow, TableAction::deleteColumn}) {
            show(text);
            placeCaret(0, 0);
            for (int i = 0; i < 3; ++i) {
                EXPECT_TRUE(tables.perform(action));
            }
            EXPECT_TRUE(edit.content().isEquivalentTo(expected));
            EXPECT_FALSE(tables.isAvailable(action) && name != "before another table");
        }
    }
}

TEST_F(TableEditingTest, RandomCommandsAndUndosKeepStepWithTheGrid) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](int limit) {
            return std::uniform_int_distribution<>(0, limit - 1)(random);
        };
        const auto all = documents();
        auto chosen = all.begin();
        std::advance(chosen, below(static_cast<int>(all.size())));
        SCOPED_TRACE(chosen->first + ", seed " + std::to_string(seed));
        std::vector<AttributedString> states{chosen->second};
        show(states.back());
        for (int step = 0; step < 60; ++step) {
            if (below(4) == 0 && states.size() > 1) {
                edit.undo();
                states.pop_back();
            } else if (below(5) == 0) {
                const int column = below(table().columns());
                const Edit resize{.kind = Kind::resizeColumn,
                                  .index = column,
                                  .width = below(1000) * kTwipsPerPoint};
                const auto expected = edited(states.back(), resize);
                ASSERT_EQ(tables.resizeColumn(table(), column, resize.width), expected.has_value());
                if (expected) {
                    states.push_back(*expected);
                }
            } else {
                const int row = below(table().rows());
                const int column = below(table().columns());
                const auto commands = commandsAt(row, column);
                const auto& command =
                    commands[static_cast<std::size_t>(below(static_cast<int>(commands.size())))];
                const auto expected = edited(states.back(), command.edit);
                if (!expected) {
                    continue; // among them the deletion of the last row or column
                }
                placeCaret(row, column);
                ASSERT_TRUE(tables.perform(command.action));
                states.push_back(*expected);
            }
            ASSERT_TRUE(edit.content().isEquivalentTo(states.back())) << "step " << step;
        }
        while (states.size() > 1) {
            edit.undo();
            states.pop_back();
            ASSERT_TRUE(edit.content().isEquivalentTo(states.back()));
        }
    }
}

TEST_F(TableEditingTest, TheLimitsOfTablesAndEntriesHold) {
    auto text = RichTextTable::make(RichTextTable::kMaximumRows, 1);
    show(text);
    placeCaret(5, 0);
    for (const auto action :
         {TableAction::insertRowAbove, TableAction::insertRowBelow, TableAction::duplicateRow}) {
        EXPECT_FALSE(tables.isAvailable(action));
        EXPECT_FALSE(tables.perform(action));
    }
    EXPECT_TRUE(edit.content().isEquivalentTo(text));
    text = RichTextTable::make(2, RichTextTable::kMaximumColumns);
    show(text);
    placeCaret(0, 0);
    for (const auto action : {TableAction::insertColumnLeft, TableAction::insertColumnRight,
                              TableAction::duplicateColumn}) {
        EXPECT_FALSE(tables.isAvailable(action));
        EXPECT_FALSE(tables.perform(action));
    }
    EXPECT_TRUE(edit.content().isEquivalentTo(text));

    text.append(AttributedString(std::u16string(10'000 - text.length() - 5, u'x')));
    show(text);
    placeCaret(1, 3);
    QSignalSpy refusals(&edit, &RichTextEdit::limitReached);
    EXPECT_FALSE(tables.perform(TableAction::insertRowBelow)) << "20 characters into the room of 5";
    EXPECT_EQ(refusals.count(), 1);
    EXPECT_TRUE(edit.content().isEquivalentTo(text));
    EXPECT_EQ(caret(), "1,3+0");
}

TEST_F(TableEditingTest, OutsideOfATableNothingIsAvailable) {
    show(documents().at("between paragraphs"));
    for (const auto action : kTableActions) {
        EXPECT_FALSE(tables.isAvailable(action));
        EXPECT_FALSE(tables.perform(action));
    }
    EXPECT_FALSE(tables.nextCell());
    EXPECT_FALSE(edit.document()->isUndoAvailable());
}

TEST_F(TableEditingTest, TheNextCellIsSelectedRowByRow) {
    show(documents().at("between paragraphs"));
    placeCaret(0, 1);
    EXPECT_TRUE(tables.nextCell());
    EXPECT_EQ(edit.textCursor().selectedText(), QStringLiteral("0,2"));
    EXPECT_TRUE(tables.nextCell());
    EXPECT_EQ(edit.textCursor().selectedText(), QStringLiteral("1,0\u2029more"));
    EXPECT_TRUE(tables.previousCell());
    EXPECT_EQ(edit.textCursor().selectedText(), QStringLiteral("0,2"));
    placeCaret(0, 0);
    EXPECT_FALSE(tables.previousCell());
    placeCaret(2, 2);
    EXPECT_FALSE(tables.nextCell());
}

class ColumnResizerTest : public TableEditingTest {
protected:
    ColumnResizerTest() {
        edit.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&edit));
        text = documents().at("between paragraphs");
        show(text);
    }

    /// On the border at the right of a column, in the viewport.
    QPoint border(int column) {
        const auto content = edit.document()->documentLayout()->blockBoundingRect(
            table().cellAt(0, column).firstCursorPosition().block());
        const double beside = edit.look().cellPadding() + 0.5;
        return QPointF(content.right() + beside, content.center().y()).toPoint();
    }
    void send(QEvent::Type type, const QPoint& position, Qt::MouseButtons buttons) {
        QMouseEvent event(type, position, edit.viewport()->mapToGlobal(position),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(edit.viewport(), &event);
    }
    void press(const QPoint& position) { send(QEvent::MouseButtonPress, position, Qt::LeftButton); }
    void move(const QPoint& position) { send(QEvent::MouseMove, position, Qt::LeftButton); }
    void release(const QPoint& position) {
        send(QEvent::MouseButtonRelease, position, Qt::NoButton);
    }
    /// Two pixels wide, give or take one for what was rounded.
    bool hasGuideAt(int x) {
        const auto picture = edit.viewport()->grab().toImage();
        const auto color = edit.look().link.rgb();
        const int y = border(0).y();
        return picture.pixel(x - 1, y) == color || picture.pixel(x + 1, y) == color;
    }
    /// In points; 0 is the default.
    std::vector<int> widths() {
        const auto now = edit.content();
        const auto grid = RichTextTable::Grid::read(now, tests::outerTables(now).front());
        std::vector<int> result;
        for (const auto& width : grid->columnWidths()) {
            result.push_back(qRound(width.value_or(0) / double{kTwipsPerPoint}));
        }
        return result;
    }
    int pixels(int points) const { return qRound(edit.look().pixels(points * kTwipsPerPoint)); }

    ColumnResizer* resizer = new ColumnResizer(edit, &edit);
    AttributedString text;
};

TEST_F(ColumnResizerTest, ABorderIsDraggedAsOneStepWithinTheLimits) {
    // The line stops where the limits stop the border.
    for (const auto& [column, by, guide, expected] :
         {std::tuple(0, 60, 60, std::vector{180, 0, 0}),
          std::tuple(1, -20, -20, std::vector{0, 100, 0}),
          std::tuple(2, 30, 30, std::vector{0, 0, 150}),
          std::tuple(1, -110, -40, std::vector{0, 80, 0}),
          std::tuple(0, 700, 480, std::vector{600, 0, 0})}) {
        show(text);
        const auto from = border(column);
        const auto to = from + QPoint(pixels(by), 0);
        send(QEvent::MouseMove, from, Qt::NoButton);
        EXPECT_EQ(edit.viewport()->cursor().shape(), Qt::SplitHCursor);
        press(from);
        move((from + to) / 2);
        move(to);
        EXPECT_TRUE(edit.content().isEquivalentTo(text)) << "only a line follows the pointer";
        EXPECT_TRUE(hasGuideAt(from.x() + pixels(guide)));
        release(to);
        const auto now = widths();
        for (std::size_t i = 0; i < now.size(); ++i) {
            EXPECT_NEAR(now[i], expected[i], 2) << "dragged " << column << " by " << by;
        }
        edit.undo();
        EXPECT_TRUE(edit.content().isEquivalentTo(text));
        EXPECT_FALSE(edit.document()->isUndoAvailable());
    }
    send(QEvent::MouseMove, border(0) + QPoint(40, 0), Qt::NoButton);
    EXPECT_NE(edit.viewport()->cursor().shape(), Qt::SplitHCursor);
}

TEST_F(ColumnResizerTest, EscapeGivesUpAClickDoesNothingAndADoubleClickResets) {
    const auto from = border(0);
    press(from);
    move(from + QPoint(50, 0));
    QTest::keyClick(&edit, Qt::Key_Escape);
    release(from + QPoint(50, 0));
    EXPECT_TRUE(edit.content().isEquivalentTo(text));
    press(from);
    release(from);
    EXPECT_TRUE(edit.content().isEquivalentTo(text));

    EXPECT_TRUE(tables.resizeColumn(table(), 0, 300 * kTwipsPerPoint));
    send(QEvent::MouseButtonDblClick, border(0), Qt::LeftButton);
    EXPECT_EQ(widths(), (std::vector{0, 0, 0}));
}

TEST_F(ColumnResizerTest, WhereTheTextIsScrolledTheBorderIsWhereItIsSeen) {
    auto longText = AttributedString(std::u16string(200, u'\n'));
    longText.append(text);
    show(longText);
    placeCaret(2, 0);
    edit.setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    edit.ensureCursorVisible();
    const int scrolled = edit.verticalScrollBar()->value();
    ASSERT_GT(scrolled, 0);
    const auto from = border(0) - QPoint(0, scrolled);
    press(from);
    move(from + QPoint(pixels(60), 0));
    release(from + QPoint(pixels(60), 0));
    EXPECT_NEAR(widths()[0], 180, 2);
}

} // namespace
} // namespace korvex::ui
