#include "richtext/table/RichTextTable.h"

#include "richtext/table/TableLayout.h"

#include <algorithm>
#include <cstdlib>

namespace korvex::richtext {

namespace {

void appendRow(AttributedString& text, const TextTableRef& table, std::int32_t row) {
    for (std::int32_t column = 0; column < table->columns; ++column) {
        const auto cell = std::make_shared<TextTableCell>(TextTableCell{
            .table = table, .row = row, .column = column, .geometry = newCellGeometry(row)});
        text.append(u"\n", newCellAttributes(row), {.cells = {cell}});
    }
}

} // namespace

AttributedString RichTextTable::make(std::int32_t rows, std::int32_t columns) {
    if (rows < 1 || rows > kMaximumRows || columns < 1 || columns > kMaximumColumns) {
        std::abort();
    }
    const auto table = std::make_shared<TextTable>(TextTable{.columns = columns});
    AttributedString text;
    for (std::int32_t row = 0; row < rows; ++row) {
        appendRow(text, table, row);
    }
    text.append(u"\n", {}, {});
    return text;
}

std::vector<RichTextTable::Cell> RichTextTable::cells(const AttributedString& text,
                                                      const TextTableRef& table) {
    std::vector<Cell> result;
    text.forEachStyleRun([&](const AttributedString::ParagraphRun& run) {
        for (const auto& cell : run.style.cells) {
            if (cell->table != table) {
                continue;
            }
            const auto isContinued = !result.empty() && result.back().cell == cell &&
                                     result.back().range.end() == run.range.location;
            if (isContinued) {
                result.back().range.length += run.range.length;
            } else {
                result.push_back({cell, run.range});
            }
            break;
        }
    });
    return result;
}

void RichTextTable::noteWidth(std::span<std::optional<Twips>> widths, const TextTableCell& cell) {
    const auto isInside = cell.column >= 0 && static_cast<std::size_t>(cell.column) < widths.size();
    if (!isInside || cell.columnSpan > 1) {
        return;
    }
    auto& width = widths[static_cast<std::size_t>(cell.column)];
    if (!width && cell.geometry.width && *cell.geometry.width > 0) {
        width = std::clamp(*cell.geometry.width, kMinimumWidth, kMaximumWidth);
    }
}

} // namespace korvex::richtext
