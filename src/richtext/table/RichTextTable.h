#pragma once

#include "richtext/text/AttributedString.h"

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace korvex::richtext {

/// Tables live in the text: each cell is one or more paragraphs that share a TextTableCell, and a
/// normal paragraph always follows the last row, so that the caret can leave the table. These
/// operations make such paragraphs, read them into a grid, edit it and write it back.
struct RichTextTable {
    RichTextTable() = delete;

    static constexpr std::int32_t kMaximumRows = 100;
    static constexpr std::int32_t kMaximumColumns = 20;
    static constexpr std::int32_t kDefaultRows = 3;
    static constexpr std::int32_t kDefaultColumns = 4;
    static constexpr Twips kDefaultWidth = 120 * kTwipsPerPoint;
    static constexpr Twips kMinimumWidth = 80 * kTwipsPerPoint;
    static constexpr Twips kMaximumWidth = 600 * kTwipsPerPoint;

    class Grid;
    struct Cell {
        TextTableCellRef cell;
        TextRange range;
    };
    struct Repaired {
        AttributedString text;
        TextRange selection;
    };

    /// An empty table and the paragraph after it. Sizes outside the limits are a mistake of the
    /// caller and end the program.
    static AttributedString make(std::int32_t rows, std::int32_t columns);
    /// The table's own cells in text order, with the tables inside them: one element for each
    /// stretch of paragraphs.
    static std::vector<Cell> cells(const AttributedString& text, const TextTableRef& table);
    /// Every cell in its place, once and in order, and a paragraph after every table, those inside
    /// others included. What stood between a table's cells goes after it; no text is lost. Tables
    /// beyond the limits stay as they are, but for that paragraph. The selection moves with its
    /// paragraphs.
    static Repaired repairingIncompleteTables(AttributedString text, TextRange selection = {});
    /// Notes the width of a cell's content, within the limits, as that of its column. `widths` has
    /// an element for each column, absent for the default width. Of the cells, which come in text
    /// order, the first that says a width decides; one that spans several columns says nothing.
    static void noteWidth(std::span<std::optional<Twips>> widths, const TextTableCell& cell);
};

/// A table as rows of contents. A cell's content ends with its line feed. What is written anew has
/// no spans: a place that was covered by one becomes an empty cell.
class RichTextTable::Grid {
public:
    struct Edit {
        enum class Kind {
            insertRow,
            duplicateRow,
            deleteRow,
            moveRow,
            insertColumn,
            duplicateColumn,
            deleteColumn,
            moveColumn,
            resizeColumn,
        };
        /// On which side of `index` an insertion goes.
        enum class Where { before, after };

        Kind kind;
        std::int32_t index = 0;
        Where where = Where::after;
        /// The index that a moved row or column has afterwards.
        std::int32_t target = 0;
        /// The new width for `resizeColumn`, which is clamped to 80 to 600 points; absent for the
        /// default width again.
        std::optional<Twips> width = std::nullopt;
    };

    /// Absent when the text has no cells of the table, or more than the limits allow.
    static std::optional<Grid> read(const AttributedString& text, const TextTableRef& table);

    /// What `attributedString` is to replace in the text that was read: the table with all that
    /// stands between its cells, and the paragraph after it when that is empty.
    TextRange range() const { return m_range; }
    /// Whether cells are missing, out of order or torn apart, or no paragraph follows the table.
    bool needsRepair() const { return m_needsRepair; }
    std::int32_t rowCount() const { return static_cast<std::int32_t>(m_rows.size()); }
    std::int32_t columnCount() const { return static_cast<std::int32_t>(m_columnWidths.size()); }
    const std::vector<std::vector<AttributedString>>& rows() const { return m_rows; }
    /// The width of each column; absent for the default width.
    std::span<const std::optional<Twips>> columnWidths() const { return m_columnWidths; }

    /// Whether the edit changed the grid. One that leads out of the limits, to an index that is not
    /// there, or takes away the last row or column changes nothing. Whatever becomes the first row
    /// looks like a header, and what was it no longer does. A copy stands after its original.
    bool apply(const Edit& edit);
    /// The table anew, what stood between its cells, and a paragraph without a cell, unless the
    /// text that was read goes on with one.
    AttributedString attributedString() const;

private:
    using Row = std::vector<AttributedString>;

    bool insertRow(const Edit& edit);
    bool duplicateRow(const Edit& edit);
    bool deleteRow(const Edit& edit);
    bool moveRow(const Edit& edit);
    bool insertColumn(const Edit& edit);
    bool duplicateColumn(const Edit& edit);
    bool deleteColumn(const Edit& edit);
    bool moveColumn(const Edit& edit);
    bool resizeColumn(const Edit& edit);
    bool hasRow(std::int32_t row) const { return row >= 0 && row < rowCount(); }
    bool hasColumn(std::int32_t column) const { return column >= 0 && column < columnCount(); }

    const TextTableCell& cellOf(const AttributedString& content) const;
    AttributedString emptyLike(const AttributedString& neighbour,
                               const CharacterAttributes& attributes) const;
    void setBackground(AttributedString& content, std::optional<Color> background) const;
    void giveHeaderLook(const Row& from, Row& to) const;
    void takeHeaderLook(Row& row) const;

    TextRange m_range;
    /// How many tables are around this one.
    std::size_t m_depth = 0;
    bool m_needsRepair = false;
    std::vector<Row> m_rows;
    std::vector<std::optional<Twips>> m_columnWidths;
    /// What of the range follows the last cell once the cells are in order.
    AttributedString m_after;
};

} // namespace korvex::richtext
