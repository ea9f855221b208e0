#pragma once

#include "richtext/text/AttributedString.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korvex::richtext {

/// A paragraph of a text, or one still to be written where the range is empty. The style belongs to
/// the text, or to whoever writes anew.
struct Line {
    TextRange range;
    const ParagraphStyle* style;

    /// The cell of the table that is `depth` tables deep; null outside of such a table.
    const TextTableCellRef* cell(std::size_t depth) const {
        const auto& cells = style->cells;
        const auto isInside = depth < cells.size() && cells[depth] && cells[depth]->table;
        return isInside ? &cells[depth] : nullptr;
    }
    /// Whether both stand in the same cell of the tables around `depth`.
    bool isBeside(const Line& other, std::size_t depth) const;
};

/// Whether any paragraph of the text stands in a cell.
bool containsTable(const AttributedString& text);
/// The paragraphs of a text, in order.
std::vector<Line> linesOf(const AttributedString& text);

/// The places of one table and what of a text belongs there.
struct TableLayout {
    std::int32_t rows = 0;
    std::int32_t columns = 0;
    /// The paragraphs of each place, row by row; none where no cell stands.
    std::vector<std::vector<Line>> places;
    /// The width of each column, within the limits; absent for the default width.
    std::vector<std::optional<Twips>> widths;
    /// Whether a place has no cell or two, cells are out of order, spans lead out of the table, or
    /// there are more columns than the table says.
    bool isDamaged = false;

    /// What a cell looks like that is added to a row: like another one there, or else anywhere, but
    /// only the first row, the header, passes its fill on.
    CellGeometry geometryBeside(std::int32_t row, std::size_t depth) const;

    /// The spans of the cell in a place, as far as they cover only places of the table that have no
    /// cell and that `isCovered`, which has an element for each place, leaves free; they are noted
    /// there.
    struct Span {
        std::int32_t rows = 1;
        std::int32_t columns = 1;
    };
    Span freeSpan(std::size_t place, const TextTableCell& cell, std::vector<bool>& isCovered) const;

    const std::vector<Line>& at(std::int32_t row, std::int32_t column) const {
        return places[static_cast<std::size_t>(row * columns + column)];
    }
};

/// The layout of a table that is `depth` tables deep. `lines` are all that the text has of it, at
/// least one. Absent for sizes beyond the limits.
std::optional<TableLayout> layoutOf(std::span<const Line> lines, std::size_t depth);

/// What a new cell of a row looks like; the first row is the header.
CellGeometry newCellGeometry(std::int32_t row);
CharacterAttributes newCellAttributes(std::int32_t row);

/// The same text, with tables and cells of its own from `depth` on.
AttributedString withTablesOfItsOwn(AttributedString text, std::size_t depth);

} // namespace korvex::richtext
