#include "richtext/table/RichTextTable.h"

#include "richtext/table/TableLayout.h"

#include <cstdlib>
#include <unordered_map>
#include <unordered_set>

namespace korvex::richtext {

namespace {

/// What a column needs around its content.
constexpr Twips kAroundContent = 17 * kTwipsPerPoint;

void appendRow(AttributedString& text, const TextTableRef& table, std::int32_t row) {
    for (std::int32_t column = 0; column < table->columns; ++column) {
        const auto cell = std::make_shared<TextTableCell>(TextTableCell{
            .table = table, .row = row, .column = column, .geometry = newCellGeometry(row)});
        text.append(u"\n", newCellAttributes(row), {.cells = {cell}});
    }
}

/// The columns of one table, as far as their widths have been seen.
struct Columns {
    std::int32_t count = 0;
    std::array<std::optional<Twips>, RichTextTable::kMaximumColumns> widths;

    void add(const TextTableCell& cell) {
        const auto last = std::min(cell.column, RichTextTable::kMaximumColumns - 1);
        count = std::clamp(cell.table->columns, std::max(count, last + 1),
                           RichTextTable::kMaximumColumns);
        if (cell.column >= 0 && cell.column < count && cell.columnSpan <= 1) {
            auto& width = widths[static_cast<std::size_t>(cell.column)];
            if (!width && cell.geometry.width && *cell.geometry.width > 0) {
                width = cell.geometry.width;
            }
        }
    }
    Twips minimumWidth() const {
        Twips sum = 0;
        for (std::int32_t column = 0; column < count; ++column) {
            // Clamped before the addition too, which must not overflow.
            const auto width = std::min(
                widths[static_cast<std::size_t>(column)].value_or(RichTextTable::kDefaultWidth),
                RichTextTable::kMaximumWidth);
            sum += std::clamp(width + kAroundContent, RichTextTable::kMinimumWidth,
                              RichTextTable::kMaximumWidth);
        }
        return sum;
    }
};

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

AttributedString RichTextTable::row(const TextTableRef& table, std::int32_t index) {
    AttributedString text;
    appendRow(text, table, index);
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
            const bool isContinued = !result.empty() && result.back().cell == cell &&
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

std::vector<TextTableRef> RichTextTable::tables(const AttributedString& text) {
    std::vector<TextTableRef> result;
    std::unordered_set<const TextTable*> known;
    text.forEachStyleRun([&](const AttributedString::ParagraphRun& run) {
        if (!run.style.cells.empty() && known.insert(run.style.cells.front()->table.get()).second) {
            result.push_back(run.style.cells.front()->table);
        }
    });
    return result;
}

AttributedString RichTextTable::copyForLayout(const AttributedString& text) {
    return withTablesOfItsOwn(text, 0);
}

void RichTextTable::copyGeometry(const TextTableCell& from, TextTableCell& to) {
    to.geometry = from.geometry;
}

Twips RichTextTable::minimumWidth(const AttributedString& text) {
    std::unordered_map<const TextTable*, Columns> tables;
    text.forEachStyleRun([&](const AttributedString::ParagraphRun& run) {
        for (const auto& cell : run.style.cells) {
            tables[cell->table.get()].add(*cell);
        }
    });
    Twips result = 0;
    for (const auto& [table, columns] : tables) {
        result = std::max(result, columns.minimumWidth());
    }
    return result;
}

} // namespace korvex::richtext
