#pragma once

#include "richtext/rtf/RtfBudget.h"
#include "richtext/rtf/RtfDialect.h"
#include "richtext/rtf/RtfKeywords.h"
#include "richtext/rtf/RtfReaderHeader.h"
#include "richtext/rtf/RtfRowDefinition.h"
#include "richtext/text/ParagraphStyle.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace korvex::richtext::rtf {

/// Tables as they are read: gives each paragraph its cells, and the cells their places and looks
/// when their row ends.
class TableBuilder {
public:
    TableBuilder(Budget& budget, const ColorTable& colors);

    void setDialect(RtfDialect dialect) { m_dialect = dialect; }

    /// Takes a control word of a row's definition. Here and below `depth` counts from 1, which is
    /// the outermost table.
    void definitionWord(std::size_t depth, const Keyword& keyword, std::int32_t parameter);
    void setLastRow(std::size_t depth) { level(depth).isLastRow = true; }

    /// The cells of a paragraph so deep in tables, which it opens where they are not; tables that
    /// are deeper end. Fewer when the budget is used up. Valid until the next call.
    const std::vector<TextTableCellRef>& cells(std::size_t depth);
    bool isCellOpen(std::size_t depth) const;
    /// Whether the next cell is a place without text.
    bool isPlaceholderNext(std::size_t depth) const;
    /// The row is as wide as can be: what ends its last cell is not taken for an end.
    bool isRowFull(std::size_t depth) const;

    void endCell(std::size_t depth);
    void endRow(std::size_t depth);
    /// Ends all tables deeper than `depth`.
    void endTables(std::size_t depth);

private:
    /// A place in a row. One without a cell is a placeholder.
    using Slot = std::shared_ptr<TextTableCell>;
    /// A cell that can reach into the next row. Two places lie below each other when `key` gives
    /// the same for both.
    struct Reaching {
        std::int64_t key;
        std::shared_ptr<TextTableCell> cell;
    };
    /// A cell that has its place. Office documents say where its edges are, too.
    struct Placed {
        std::shared_ptr<TextTableCell> cell;
        Twips left = 0;
        Twips right = 0;
    };
    struct Level {
        RowDefinition definition;
        bool isLastRow = false;
        std::shared_ptr<TextTable> table;
        std::shared_ptr<TextTableCell> cell;
        std::int32_t row = 0;
        std::vector<Slot> slots;
        std::vector<Reaching> reaching;
        std::vector<Placed> cells;
        bool hasRowSpans = false;
        /// The rows of an office document need not have the same columns: then the edges of the
        /// cells tell which columns there are.
        std::optional<std::size_t> slotsPerRow;
        bool haveRowsEqualSlots = true;
        bool hasAllEdges = true;
    };

    Level& level(std::size_t depth);
    bool openCell(Level& level);
    void place(Level& level);
    CellGeometry geometry(const Level& level, std::size_t slot,
                          const CellDefinition& definition) const;
    std::int64_t key(const Level& level, std::size_t slot) const;
    /// Where a place begins on the left.
    static Twips left(const Level& level, std::size_t slot);
    void noteCells(Level& level) const;
    static void placeByEdges(Level& level);
    static bool areRowsInOrder(const Level& level);
    static void separateRows(Level& level);
    static void endTable(Level& level);

    Budget& m_budget;
    const ColorTable& m_colors;
    RtfDialect m_dialect = RtfDialect::office;
    std::vector<Level> m_levels;
    /// How deep the innermost open table is.
    std::size_t m_openDepth = 0;
    std::vector<TextTableCellRef> m_cells;
};

} // namespace korvex::richtext::rtf
