#include "richtext/table/TableLayout.h"

#include "richtext/table/RichTextTable.h"

#include <algorithm>
#include <unordered_map>

namespace korvex::richtext {

namespace {

constexpr Twips kPadding = 8 * kTwipsPerPoint;
constexpr Twips kBorderWidth = kTwipsPerPoint / 2;

/// Whether every place is taken once, by a cell or by the span of one. No span leads out.
bool isCovered(const TableLayout& layout, std::size_t depth) {
    std::vector<bool> isTaken(layout.places.size());
    for (std::size_t place = 0; place < layout.places.size(); ++place) {
        if (layout.places[place].empty()) {
            continue;
        }
        const auto& cell = **layout.places[place].front().cell(depth);
        for (auto row = cell.row; row < cell.row + cell.rowSpan; ++row) {
            for (auto column = cell.column; column < cell.column + cell.columnSpan; ++column) {
                const auto covered = static_cast<std::size_t>(row * layout.columns + column);
                if (isTaken[covered]) {
                    return false;
                }
                isTaken[covered] = true;
            }
        }
    }
    return std::find(isTaken.begin(), isTaken.end(), false) == isTaken.end();
}

} // namespace

bool Line::isBeside(const Line& other, std::size_t depth) const {
    const auto& mine = style->cells;
    const auto& others = other.style->cells;
    return mine.size() >= depth && others.size() >= depth &&
           std::equal(mine.begin(), mine.begin() + static_cast<std::ptrdiff_t>(depth),
                      others.begin());
}

bool containsTable(const AttributedString& text) {
    bool isFound = false;
    text.forEachStyleRun([&](const AttributedString::ParagraphRun& run) {
        isFound = isFound || !run.style.cells.empty();
    });
    return isFound;
}

std::vector<Line> linesOf(const AttributedString& text) {
    std::vector<Line> lines;
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        lines.push_back({paragraph.range, &paragraph.style});
    });
    return lines;
}

std::optional<TableLayout> layoutOf(std::span<const Line> lines, std::size_t depth) {
    const auto cellOf = [depth](const Line& line) -> const TextTableCell& {
        return **line.cell(depth);
    };
    TableLayout layout;
    const auto saidColumns = cellOf(lines.front()).table->columns;
    layout.columns = saidColumns > RichTextTable::kMaximumColumns ? 0 : saidColumns;
    for (const auto& line : lines) {
        const auto& cell = cellOf(line);
        if (cell.row < 0 || cell.row >= RichTextTable::kMaximumRows || cell.column < 0 ||
            cell.column >= RichTextTable::kMaximumColumns) {
            return std::nullopt;
        }
        layout.rows = std::max(layout.rows, cell.row + 1);
        layout.columns = std::max(layout.columns, cell.column + 1);
    }
    layout.isDamaged = layout.columns != saidColumns;
    layout.places.resize(static_cast<std::size_t>(layout.rows * layout.columns));
    layout.widths.resize(static_cast<std::size_t>(layout.columns));
    std::size_t last = 0;
    for (const auto& line : lines) {
        const auto& cell = cellOf(line);
        const auto place = static_cast<std::size_t>(cell.row * layout.columns + cell.column);
        auto& there = layout.places[place];
        if (place < last || (!there.empty() && &cellOf(there.back()) != &cell)) {
            layout.isDamaged = true;
        }
        last = place;
        layout.isDamaged = layout.isDamaged || cell.rowSpan < 1 || cell.columnSpan < 1 ||
                           cell.rowSpan > layout.rows - cell.row ||
                           cell.columnSpan > layout.columns - cell.column;
        there.push_back(line);
        RichTextTable::noteWidth(layout.widths, cell);
    }
    layout.isDamaged = layout.isDamaged || !isCovered(layout, depth);
    return layout;
}

CellGeometry TableLayout::geometryBeside(std::int32_t row, std::size_t depth) const {
    const auto hasCell = [](const std::vector<Line>& place) { return !place.empty(); };
    const auto first = places.begin() + row * columns;
    auto model = std::find_if(first, first + columns, hasCell);
    if (model == first + columns) {
        model = std::find_if(places.begin(), places.end(), hasCell);
    }
    auto geometry = (*model->front().cell(depth))->geometry;
    if (row > 0) {
        geometry.background.reset();
    }
    return geometry;
}

TableLayout::Span TableLayout::freeSpan(std::size_t place, const TextTableCell& cell,
                                        std::vector<bool>& isCovered) const {
    const auto width = static_cast<std::size_t>(columns);
    const auto isFree = [&](std::size_t other) {
        return !isCovered[other] && (other == place || places[other].empty());
    };
    // Along its row as far as it goes, then down for as long as all of that is free.
    Span span;
    while (span.columns < cell.columnSpan &&
           place % width + static_cast<std::size_t>(span.columns) < width &&
           isFree(place + static_cast<std::size_t>(span.columns))) {
        ++span.columns;
    }
    const auto isRowFree = [&](std::size_t first) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(span.columns); ++i) {
            if (!isFree(first + i)) {
                return false;
            }
        }
        return true;
    };
    const auto rowBelow = [&] { return place + static_cast<std::size_t>(span.rows) * width; };
    while (span.rows < cell.rowSpan && rowBelow() < places.size() && isRowFree(rowBelow())) {
        ++span.rows;
    }
    for (auto first = place; first < rowBelow(); first += width) {
        std::fill_n(isCovered.begin() + static_cast<std::ptrdiff_t>(first), span.columns, true);
    }
    return span;
}

CellGeometry newCellGeometry(std::int32_t row) {
    CellGeometry geometry;
    geometry.padding.fill(kPadding);
    geometry.borders.fill({kBorderWidth, Color::named(SystemColor::separator)});
    if (row == 0) {
        geometry.background = Color::named(SystemColor::headerFill);
    }
    return geometry;
}

CharacterAttributes newCellAttributes(std::int32_t row) {
    return {.font = {.isBold = row == 0}};
}

AttributedString withTablesOfItsOwn(AttributedString text, std::size_t depth) {
    std::unordered_map<const TextTable*, TextTableRef> tables;
    std::unordered_map<const TextTableCell*, TextTableCellRef> cells;
    text.editStyles({0, text.length()}, [&](ParagraphStyle& style) {
        for (auto i = depth; i < style.cells.size(); ++i) {
            auto& ref = style.cells[i];
            auto& copy = cells[ref.get()];
            if (!copy) {
                auto cell = *ref;
                auto& table = tables[cell.table.get()];
                if (!table) {
                    table = std::make_shared<TextTable>(*cell.table);
                }
                cell.table = table;
                copy = std::make_shared<TextTableCell>(std::move(cell));
            }
            ref = copy;
        }
    });
    return text;
}

} // namespace korvex::richtext
