#include "richtext/table/RichTextTable.h"

#include "base/Utf16.h"
#include "richtext/TableNotation.h"
#include "richtext/stored/RichTextSerializer.h"
#include "richtext/text/HeadingLevel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace korvex::tests {

namespace {

using namespace richtext;
using Grid = RichTextTable::Grid;
using Edit = Grid::Edit;
using Kind = Edit::Kind;
using Lines = std::vector<std::string>;
using Contents = std::vector<std::vector<std::string>>;

constexpr Twips points(Twips count) {
    return count * kTwipsPerPoint;
}

/// A table with these contents, as a new one looks, between two paragraphs.
AttributedString textWith(const Contents& contents) {
    AttributedString text(u"before\n");
    const auto columns = contents.front().size();
    const auto empty = RichTextTable::make(static_cast<std::int32_t>(contents.size()),
                                           static_cast<std::int32_t>(columns));
    for (std::size_t row = 0; row < contents.size(); ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            const auto cell = row * columns + column;
            text.append(base::utf16(contents[row][column]) + u"\n", empty.attributesAt(cell),
                        empty.styleAt(cell));
        }
    }
    text.append(u"after", {}, {});
    return text;
}

Grid gridOf(const AttributedString& text) {
    const auto tables = outerTables(text);
    EXPECT_EQ(tables.size(), 1U);
    auto grid = Grid::read(text, tables.front());
    EXPECT_TRUE(grid);
    return *grid;
}

Contents contentsOf(const Grid& grid) {
    Contents result;
    for (const auto& row : grid.rows()) {
        auto& contents = result.emplace_back();
        for (const auto& content : row) {
            contents.push_back(base::utf8(content.text()));
            EXPECT_TRUE(contents.back().ends_with('\n'));
            contents.back().pop_back();
        }
    }
    return result;
}

/// As an editor does it: the grid's range is replaced by what the grid writes.
bool edit(AttributedString& text, const Edit& edit) {
    auto grid = gridOf(text);
    const bool hasChanged = grid.apply(edit);
    text.replace(grid.range(), grid.attributedString());
    return hasChanged;
}

void expectHeaderLook(const AttributedString& text) {
    for (const auto& [cell, range] : RichTextTable::cells(text, outerTables(text)[0])) {
        const bool isHeader = cell->row == 0;
        EXPECT_EQ(cell->geometry.background.has_value(), isHeader) << cell->row;
        text.forEachRun(range, [&](const AttributedString::CharacterRun& run) {
            EXPECT_EQ(run.attributes.font.isBold, isHeader) << cell->row;
        });
    }
}

} // namespace

TEST(RichTextTable, ANewTableIsCellsAndAParagraphToLeaveIt) {
    const auto text = RichTextTable::make(3, 4);
    EXPECT_EQ(text.text(), std::u16string(13, u'\n'));
    const auto tables = outerTables(text);
    ASSERT_EQ(tables.size(), 1U);
    EXPECT_EQ(tables[0]->columns, 4);
    const auto cells = RichTextTable::cells(text, tables[0]);
    ASSERT_EQ(cells.size(), 12U);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        EXPECT_EQ(cells[i].range, (TextRange{i, 1}));
        EXPECT_EQ(cells[i].cell->row * 4 + cells[i].cell->column, static_cast<int>(i));
        EXPECT_THAT(cells[i].cell->geometry.padding, testing::Each(160));
        EXPECT_THAT(cells[i].cell->geometry.borders,
                    testing::Each(CellBorder{10, Color::named(SystemColor::separator)}));
    }
    expectHeaderLook(text);
    EXPECT_EQ(text.styleAt(12), ParagraphStyle());
    EXPECT_EQ(text.attributesAt(12), CharacterAttributes());
    EXPECT_FALSE(gridOf(text).needsRepair());
    EXPECT_TRUE(gridOf(text).attributedString().isEquivalentTo(text));
    EXPECT_DEATH(RichTextTable::make(101, 1), "");
    EXPECT_DEATH(RichTextTable::make(1, 0), "");
}

TEST(RichTextGrid, EditsMoveContents) {
    const Contents before{{"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}};
    struct Case {
        const char* name;
        Edit edit;
        Contents after;
    };
    const std::vector<Case> cases{
        {"row above",
         {.kind = Kind::insertRow, .index = 0, .where = Edit::Where::before},
         {{"", "", ""}, {"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}}},
        {"row below",
         {.kind = Kind::insertRow, .index = 0},
         {{"a", "b", "c"}, {"", "", ""}, {"d", "e", "f"}, {"g", "h", "i"}}},
        {"row at the end",
         {.kind = Kind::insertRow, .index = 2},
         {{"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}, {"", "", ""}}},
        {"copy of the header",
         {.kind = Kind::duplicateRow, .index = 0},
         {{"a", "b", "c"}, {"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}}},
        {"without the header",
         {.kind = Kind::deleteRow, .index = 0},
         {{"d", "e", "f"}, {"g", "h", "i"}}},
        {"without the last",
         {.kind = Kind::deleteRow, .index = 2},
         {{"a", "b", "c"}, {"d", "e", "f"}}},
        {"header down",
         {.kind = Kind::moveRow, .index = 0, .target = 2},
         {{"d", "e", "f"}, {"g", "h", "i"}, {"a", "b", "c"}}},
        {"a row to the top",
         {.kind = Kind::moveRow, .index = 2, .target = 0},
         {{"g", "h", "i"}, {"a", "b", "c"}, {"d", "e", "f"}}},
        {"column left",
         {.kind = Kind::insertColumn, .index = 0, .where = Edit::Where::before},
         {{"", "a", "b", "c"}, {"", "d", "e", "f"}, {"", "g", "h", "i"}}},
        {"column right",
         {.kind = Kind::insertColumn, .index = 2},
         {{"a", "b", "c", ""}, {"d", "e", "f", ""}, {"g", "h", "i", ""}}},
        {"copy of a column",
         {.kind = Kind::duplicateColumn, .index = 1},
         {{"a", "b", "b", "c"}, {"d", "e", "e", "f"}, {"g", "h", "h", "i"}}},
        {"without a column",
         {.kind = Kind::deleteColumn, .index = 1},
         {{"a", "c"}, {"d", "f"}, {"g", "i"}}},
        {"column to the right",
         {.kind = Kind::moveColumn, .index = 0, .target = 1},
         {{"b", "a", "c"}, {"e", "d", "f"}, {"h", "g", "i"}}},
        {"nothing to move", {.kind = Kind::moveColumn, .index = 1, .target = 1}, before},
        {"no such row", {.kind = Kind::deleteRow, .index = 3}, before},
        {"no such place", {.kind = Kind::moveRow, .index = 0, .target = 3}, before},
        {"before the first", {.kind = Kind::moveColumn, .index = 0, .target = -1}, before},
        {"no such column", {.kind = Kind::insertColumn, .index = -1}, before},
        {"no column to resize", {.kind = Kind::resizeColumn, .index = 3, .width = 2000}, before},
    };
    for (const auto& [name, change, after] : cases) {
        SCOPED_TRACE(name);
        auto text = textWith(before);
        EXPECT_EQ(edit(text, change), after != before);
        const auto grid = gridOf(text);
        EXPECT_EQ(contentsOf(grid), after);
        EXPECT_FALSE(grid.needsRepair());
        EXPECT_TRUE(text.text().starts_with(u"before\n"));
        EXPECT_TRUE(text.text().ends_with(u"\nafter"));
        expectHeaderLook(text);
    }
}

TEST(RichTextGrid, LimitsHoldAndTheLastRowAndColumnStay) {
    auto full = gridOf(RichTextTable::make(100, 20));
    for (const auto kind :
         {Kind::insertRow, Kind::duplicateRow, Kind::insertColumn, Kind::duplicateColumn}) {
        EXPECT_FALSE(full.apply({.kind = kind, .index = 5}));
    }
    EXPECT_EQ(full.rowCount(), 100);
    EXPECT_EQ(full.columnCount(), 20);
    auto single = gridOf(RichTextTable::make(1, 1));
    EXPECT_FALSE(single.apply({.kind = Kind::deleteRow}));
    EXPECT_FALSE(single.apply({.kind = Kind::deleteColumn}));
    EXPECT_TRUE(single.attributedString().isEquivalentTo(RichTextTable::make(1, 1)));
}

TEST(RichTextGrid, WidthsGoWithTheirColumnsWithinTheirLimits) {
    auto text = textWith({{"a", "b", "c"}});
    const auto widths = [&] {
        std::vector<std::optional<Twips>> result;
        const auto grid = gridOf(text);
        result.assign(grid.columnWidths().begin(), grid.columnWidths().end());
        return result;
    };
    using Widths = std::vector<std::optional<Twips>>;
    const auto resize = [&](std::int32_t column, std::optional<Twips> width) {
        return edit(text, {.kind = Kind::resizeColumn, .index = column, .width = width});
    };
    EXPECT_TRUE(resize(0, points(40)));
    EXPECT_TRUE(resize(1, points(900)));
    EXPECT_EQ(widths(), (Widths{points(80), points(600), std::nullopt}));
    EXPECT_FALSE(resize(1, points(601)));
    edit(text, {.kind = Kind::duplicateColumn, .index = 0});
    EXPECT_EQ(widths(), (Widths{points(80), points(80), points(600), std::nullopt}));
    edit(text, {.kind = Kind::moveColumn, .index = 2, .target = 0});
    edit(text, {.kind = Kind::insertColumn, .index = 0});
    EXPECT_EQ(widths(), (Widths{points(600), std::nullopt, points(80), points(80), std::nullopt}));
    EXPECT_TRUE(resize(0, std::nullopt));
    edit(text, {.kind = Kind::deleteColumn, .index = 1});
    edit(text, {.kind = Kind::insertRow, .index = 0});
    EXPECT_EQ(widths(), (Widths{std::nullopt, points(80), points(80), std::nullopt}));
}

TEST(RichTextGrid, HeadingsAndCodeOfCellsOutliveTheHeadersLook) {
    auto text = textWith({{"a", "b"}, {"c", "d"}});
    const auto attributesOf = [&](char16_t unit) {
        return text.attributesAt(text.text().find(unit));
    };
    const auto format = [&](char16_t unit, const CharacterAttributes& attributes) {
        text.editAttributes({text.text().find(unit), 1},
                            [&](CharacterAttributes& each) { each = attributes; });
    };
    const CharacterAttributes code{.font = {.family = FontFamily::monospaced},
                                   .korvexCodeLanguage = "c"};
    format(u'a', {.font = fontOf(HeadingLevel::level2)});
    format(u'c', code);
    edit(text, {.kind = Kind::moveRow, .index = 0, .target = 1});
    EXPECT_EQ(attributesOf(u'a').font, fontOf(HeadingLevel::level2));
    EXPECT_EQ(attributesOf(u'c'), code);
    EXPECT_FALSE(attributesOf(u'b').font.isBold);
    EXPECT_TRUE(attributesOf(u'd').font.isBold);
}

TEST(RichTextGrid, ForeignLooksStayAndNewCellsLikeTheirNeighbours) {
    auto text = textWith({{"a", "b"}, {"c", "d"}});
    text.editStyles({0, text.length()}, [](ParagraphStyle& style) {
        if (!style.cells.empty()) {
            auto cell = *style.cells[0];
            cell.geometry.padding = {1, 2, 3, 4};
            cell.geometry.verticalAlignment = VerticalAlignment::bottom;
            style.cells[0] = std::make_shared<TextTableCell>(cell);
        }
    });
    edit(text, {.kind = Kind::insertRow, .index = 1});
    edit(text, {.kind = Kind::insertColumn, .index = 0});
    for (const auto& [cell, range] : RichTextTable::cells(text, outerTables(text)[0])) {
        EXPECT_THAT(cell->geometry.padding, testing::ElementsAre(1, 2, 3, 4));
        EXPECT_EQ(cell->geometry.verticalAlignment, VerticalAlignment::bottom);
    }
}

TEST(RichTextGrid, RandomEditsAgreeWithAListOfLists) {
    for (unsigned seed = 1; seed <= 25; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](std::size_t limit) {
            return static_cast<std::int32_t>(random() % limit);
        };
        Contents model{{"a", "b\nb"}, {"c", ""}};
        auto text = textWith(model);
        for (int step = 0; step < 60; ++step) {
            const auto rows = model.size();
            const auto columns = model[0].size();
            Edit change{.kind = static_cast<Kind>(below(9))};
            change.where = below(2) == 0 ? Edit::Where::before : Edit::Where::after;
            const auto side = change.where == Edit::Where::after ? 1 : 0;
            const auto item = [&](auto& items, const auto& inserted, auto copied) {
                const auto at = items.begin() + change.index;
                switch (copied) {
                case 0:
                    items.insert(at + side, inserted);
                    break;
                case 1:
                    items.insert(at + 1, typename std::decay_t<decltype(items)>::value_type(*at));
                    break;
                case 2:
                    items.erase(at);
                    break;
                default: {
                    auto moved = *at;
                    items.erase(at);
                    items.insert(items.begin() + change.target, moved);
                }
                }
            };
            const auto kind = static_cast<int>(change.kind);
            if (kind < 4) {
                change.index = below(rows);
                change.target = below(rows);
                if (kind != 2 || rows > 1) {
                    item(model, std::vector<std::string>(columns), kind);
                }
            } else {
                change.index = below(columns);
                change.target = below(columns);
                for (auto& row : model) {
                    if (kind != 8 && (kind != 6 || columns > 1) && (kind > 5 || columns < 20)) {
                        item(row, std::string(), kind - 4);
                    }
                }
            }
            edit(text, change);
            const auto grid = gridOf(text);
            ASSERT_EQ(contentsOf(grid), model) << "step " << step;
            ASSERT_FALSE(grid.needsRepair());
            ASSERT_TRUE(text.text().starts_with(u"before\n"));
            ASSERT_TRUE(text.text().ends_with(u"\nafter"));
        }
        expectHeaderLook(text);
    }
}

TEST(RichTextGrid, OfATableInACellLeavesTheOtherCellsAlone) {
    TableNotation notation;
    auto text = notation.text({"A00:a", "A00.B00:x", "A00.B01:y", "A00:c", "A01:d", ":after"});
    const auto inner = text.styleAt(3).cells[1]->table;
    auto grid = Grid::read(text, inner);
    ASSERT_TRUE(grid);
    EXPECT_TRUE(grid->apply({.kind = Kind::insertRow, .index = 0}));
    text.replace(grid->range(), grid->attributedString());
    EXPECT_EQ(TableNotation::lines(text), (Lines{"A00:a", "A00.B00:x", "A00.B01:y", "A00.B10:",
                                                 "A00.B11:", "A00:c", "A01:d", ":after"}));
    // A copy of the outer row has an inner table of its own.
    EXPECT_TRUE(edit(text, {.kind = Kind::duplicateRow, .index = 0}));
    EXPECT_EQ(
        TableNotation::lines(text),
        (Lines{"A00:a", "A00.B00:x", "A00.B01:y", "A00.B10:", "A00.B11:", "A00:c", "A01:d", "A10:a",
               "A10.C00:x", "A10.C01:y", "A10.C10:", "A10.C11:", "A10:c", "A11:d", ":after"}));
}

TEST(RichTextGrid, IsAbsentWithoutCellsAndBeyondTheLimits) {
    auto text = TableNotation().text({"A00:a", "A01:b", ":after"});
    text.editStyles({2, 1}, [](ParagraphStyle& style) {
        auto cell = *style.cells[0];
        cell.column = RichTextTable::kMaximumColumns;
        style.cells[0] = std::make_shared<TextTableCell>(cell);
    });
    EXPECT_FALSE(Grid::read(text, outerTables(text)[0]));
    EXPECT_FALSE(Grid::read(text, std::make_shared<TextTable>()));
    EXPECT_FALSE(Grid::read({}, std::make_shared<TextTable>()));
}

TEST(RichTextTableRepair, MakesTablesWholeWithoutLosingAWord) {
    struct Case {
        const char* name;
        Lines before;
        Lines after;
    };
    const std::vector<Case> cases{
        {"whole", {"A00:a", "A01:b", ":"}, {"A00:a", "A01:b", ":"}},
        {"the last cell is missing",
         {"A00:a", "A01:b", "A10:c", ":x"},
         {"A00:a", "A01:b", "A10:c", "A11:", ":x"}},
        {"the first cell is missing", {"A01:b", ":x"}, {"A00:", "A01:b", ":x"}},
        {"a row is missing",
         {"A00:a", "A01:b", "A20:c", "A21:d", ":x"},
         {"A00:a", "A01:b", "A10:", "A11:", "A20:c", "A21:d", ":x"}},
        {"cells out of order",
         {"A01:b", "A10:c", "A00:a", "A11:d", ":x"},
         {"A00:a", "A01:b", "A10:c", "A11:d", ":x"}},
        {"words between cells",
         {":w", "A00:a", ":x", "A01:b", ":y"},
         {":w", "A00:a", "A01:b", ":x", ":y"}},
        {"words inside a cell",
         {"A00:a", "A00:b", ":x", "A00:c", "A01:d"},
         {"A00:a", "A00:b", "A00:c", "A01:d", ":x"}},
        {"no paragraph at the end", {"A00:a", "A01:b"}, {"A00:a", "A01:b", ":"}},
        {"no paragraph between",
         {"A00:a", "A01:b", "B00:c", "B01:d", ":x"},
         {"A00:a", "A01:b", ":", "B00:c", "B01:d", ":x"}},
        {"tables mixed up",
         {"A00:a", "B00:c", "A01:b", "B01:d", ":x"},
         {"A00:a", "A01:b", ":", "B00:c", "B01:d", ":x"}},
        {"two cells in one place",
         {"A00:a", "A00':b", "A01:c", ":x"},
         {"A00:a", "A00:b", "A01:c", ":x"}},
        {"more columns than said",
         {"A00:a", "A01:b", "A02:c", ":x"},
         {"A00:a", "A01:b", "A02:c", ":x"}},
        {"a table at a cell's end",
         {"A00.B00:a", "A00.B01:b", "A01:c", ":x"},
         {"A00.B00:a", "A00.B01:b", "A00:", "A01:c", ":x"}},
        {"both tables broken",
         {"A01.B01:b", "A01:c", ":x"},
         {"A00:", "A01.B00:", "A01.B01:b", "A01:c", ":x"}},
        {"one table in two cells",
         {"A00.B00:a", "A00.B01:b", "A00:", "A01.B00:c", "A01:", ":x"},
         {"A00.B00:a", "A00.B01:b", "A00:", "A01.C00:c", "A01.C01:", "A01:", ":x"}},
    };
    for (const auto& [name, before, after] : cases) {
        SCOPED_TRACE(name);
        const auto text = TableNotation().text(before);
        const auto repaired = RichTextTable::repairingIncompleteTables(text).text;
        EXPECT_EQ(TableNotation::lines(repaired), after);
        const auto tables = outerTables(repaired);
        for (const auto& table : tables) {
            EXPECT_FALSE(Grid::read(repaired, table)->needsRepair());
        }
        const bool isNested = before.front().find('.') != std::string::npos;
        const bool isDamaged = std::string_view(name) != "whole";
        EXPECT_TRUE(isNested || isDamaged == Grid::read(text, outerTables(text)[0])->needsRepair());
    }
}

TEST(RichTextTableRepair, LeavesTablesBeyondTheLimitsAsTheyAre) {
    auto text = TableNotation().text({"A05:a", "A02:b", "A10:c"});
    text.editStyles({0, 1}, [](ParagraphStyle& style) {
        auto cell = *style.cells[0];
        cell.row = RichTextTable::kMaximumRows;
        style.cells[0] = std::make_shared<TextTableCell>(cell);
    });
    const auto repaired = RichTextTable::repairingIncompleteTables(text).text;
    EXPECT_EQ(TableNotation::lines(repaired), (Lines{"A1005:a", "A02:b", "A10:c", ":"}));
}

TEST(RichTextTableRepair, ATextThatEndsInACellGetsTheEndOfThatParagraphToo) {
    auto text = TableNotation().text({"A00:a", "A01:b"});
    text.remove({text.length() - 1, 1});
    const auto [repaired, selection] =
        RichTextTable::repairingIncompleteTables(text, {text.length(), 0});
    EXPECT_EQ(repaired.text(), u"a\nb\n\n");
    EXPECT_EQ(selection, (TextRange{3, 0}));
}

TEST(RichTextTableRepair, TheSelectionStaysWithItsWords) {
    const Lines before{":w", "A01:one", ":x", "A00:two", ":three", "B00:four"};
    const auto text = TableNotation().text(before);
    for (const std::u16string word : {u"w", u"one", u"x", u"two", u"three", u"four"}) {
        const TextRange old{text.text().find(word), word.size()};
        const auto [repaired, selection] = RichTextTable::repairingIncompleteTables(text, old);
        EXPECT_EQ(repaired.text().substr(selection.location, selection.length), word);
    }
    // The caret behind everything does not get into what was added there.
    const auto atEnd = RichTextTable::repairingIncompleteTables(text, {text.length(), 0});
    EXPECT_EQ(atEnd.selection.location, atEnd.text.length() - 1);
}

TEST(RichTextTableRepair, SpansAreKeptUnlessTheyOverlap) {
    const auto withSpan = [](const Lines& lines, std::int32_t rows, std::int32_t columns) {
        auto text = TableNotation().text(lines);
        const auto* const first = text.styleAt(0).cells[0].get();
        auto cell = std::make_shared<TextTableCell>(*first);
        cell->rowSpan = rows;
        cell->columnSpan = columns;
        text.editStyles({0, text.length()}, [&](ParagraphStyle& style) {
            if (!style.cells.empty() && style.cells[0].get() == first) {
                style.cells[0] = cell;
            }
        });
        return text;
    };
    const auto wide = withSpan({"A00:a", "A10:b", "A11:c", ":x"}, 1, 2);
    EXPECT_TRUE(RichTextTable::repairingIncompleteTables(wide).text.isEquivalentTo(wide));
    EXPECT_EQ(contentsOf(gridOf(wide)), (Contents{{"a", ""}, {"b", "c"}}));
    const auto tall = withSpan({"A00:a", "A01:b", "A11:c", ":x"}, 2, 1);
    EXPECT_TRUE(RichTextTable::repairingIncompleteTables(tall).text.isEquivalentTo(tall));
    const auto overlapping =
        RichTextTable::repairingIncompleteTables(withSpan({"A00:a", "A01:b", ":x"}, 1, 2)).text;
    EXPECT_EQ(TableNotation::lines(overlapping), (Lines{"A00:a", "A01:b", ":x"}));
    EXPECT_EQ(overlapping.styleAt(0).cells[0]->columnSpan, 1);

    // A new cell looks like those beside it.
    auto framed = TableNotation().text({"A00:a", "A01:b", "A10:c", ":x"});
    framed.editStyles({0, 5}, [](ParagraphStyle& style) {
        auto cell = *style.cells[0];
        cell.geometry = {.padding = {1, 2, 3, 4}, .background = Color{.red = 9}};
        style.cells[0] = std::make_shared<TextTableCell>(cell);
    });
    const auto filled = RichTextTable::repairingIncompleteTables(framed).text;
    EXPECT_EQ(filled.styleAt(6).cells[0]->geometry, (CellGeometry{.padding = {1, 2, 3, 4}}));

    // A place without a cell is filled, and the spans around it stay as long as they fit.
    struct Case {
        Lines lines;
        std::int32_t rows;
        std::int32_t columns;
        Lines repaired;
        std::pair<std::int32_t, std::int32_t> span;
    };
    const std::vector<Case> cases{
        {{"A00:a", "A01:b", "A20:c", ":x"},
         2,
         1,
         {"A00:a", "A01:b", "A11:", "A20:c", "A21:", ":x"},
         {2, 1}},
        {{"A00:a", "A10:b", ":x"}, 1, 2, {"A00:a", "A10:b", "A11:", ":x"}, {1, 2}},
        {{"A00:a", "A01:b", ":x"}, 2, 1, {"A00:a", "A01:b", ":x"}, {1, 1}},
        {{"A00:a", "A11:b", ":x"}, 2, 2, {"A00:a", "A10:", "A11:b", ":x"}, {1, 2}},
        {{"A00:a", "A10:b", ":x"}, 9, 9, {"A00:a", "A10:b", "A11:", ":x"}, {1, 2}},
    };
    for (const auto& each : cases) {
        const auto repaired =
            RichTextTable::repairingIncompleteTables(withSpan(each.lines, each.rows, each.columns))
                .text;
        EXPECT_EQ(TableNotation::lines(repaired), each.repaired);
        const auto& first = *repaired.styleAt(0).cells[0];
        EXPECT_EQ(std::pair(first.rowSpan, first.columnSpan), each.span);
        EXPECT_TRUE(
            RichTextTable::repairingIncompleteTables(repaired).text.isEquivalentTo(repaired));
    }
}

TEST(RichTextTableRepair, RandomMixturesBecomeWholeOnceAndKeepTheirWords) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto digit = [&](std::size_t limit) { return std::to_string(random() % limit); };
        Lines lines;
        std::vector<std::string> words;
        for (std::size_t count = random() % 14; count > 0; --count) {
            std::string path;
            for (char table = 'A'; random() % 3 != 0 && table < 'D'; ++table) {
                const auto name = static_cast<char>(random() % 4 == 0 ? table + 10 : table);
                path += (path.empty() ? "" : ".") + std::string(1, name) + digit(3) + digit(3);
            }
            words.push_back(std::string(1, static_cast<char>('a' + count)));
            lines.push_back(path + ":" + words.back());
        }
        const auto text = TableNotation().text(lines);
        const auto repaired = RichTextTable::repairingIncompleteTables(text).text;
        std::vector<std::string> kept;
        for (const auto& line : TableNotation::lines(repaired)) {
            if (!line.ends_with(':')) {
                kept.push_back(line.substr(line.size() - 1));
            }
        }
        ASSERT_THAT(kept, testing::UnorderedElementsAreArray(words));
        for (const auto& table : outerTables(repaired)) {
            ASSERT_FALSE(Grid::read(repaired, table)->needsRepair());
        }
        const auto again = RichTextTable::repairingIncompleteTables(repaired).text;
        ASSERT_TRUE(again.isEquivalentTo(repaired));
    }
}

TEST(RichTextTable, TheFirstCellOfAColumnThatSaysAWidthDecidesWithinTheLimits) {
    std::vector<std::optional<Twips>> widths(4);
    const auto note = [&](std::int32_t column, std::optional<Twips> width, std::int32_t span) {
        RichTextTable::noteWidth(
            widths, {.column = column, .columnSpan = span, .geometry = {.width = width}});
    };
    note(0, std::nullopt, 1);
    note(0, points(10), 1);
    note(0, points(200), 1);
    note(1, points(300), 2);
    note(1, -5, 1);
    note(2, points(2'000), 1);
    note(3, points(150), 1);
    note(4, points(150), 1);
    note(-1, points(150), 1);
    EXPECT_THAT(widths, testing::ElementsAre(points(80), std::nullopt, points(600), points(150)));
}

} // namespace korvex::tests
