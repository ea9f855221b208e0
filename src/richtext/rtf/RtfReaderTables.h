#pragma once

#include "richtext/rtf/RtfBudget.h"
#include "richtext/rtf/RtfDialect.h"
#include "richtext/rtf/RtfKeywords.h"
#include "richtext/rtf/RtfReaderHeader.h"
#include "richtext/text/Attributes.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace korvex::richtext::rtf {

/// What a row definition says of one cell.
struct CellDefinition {
    struct Border {
        bool hasLine = false;
        std::optional<Twips> width;
        std::uint32_t color = 0;
    };

    std::array<Border, 4> borders;
    std::array<std::optional<Twips>, 4> padding;
    std::optional<Twips> width;
    /// Only twips can be used.
    bool isWidthInTwips = true;
    std::uint32_t fill = 0;
    VerticalAlignment alignment = VerticalAlignment::top;
    bool startsColumns = false;
    bool isMerged = false;
    bool startsRows = false;
    bool isVerticallyMerged = false;
    bool isAbsent = false;
    /// The right edge.
    Twips edge = 0;

    /// Whether the place is covered by another cell or stands for none.
    bool isPlaceholder() const { return isMerged || isVerticallyMerged || isAbsent; }
};

/// The row that is described, from \trowd on; it holds for all rows until the next.
class RowDefinition {
public:
    void word(const Keyword& keyword, std::int32_t parameter, bool isPlatformText);

    /// Null for a cell that was not described.
    const CellDefinition* cell(std::size_t slot) const {
        return slot < m_cells.size() ? &m_cells[slot] : nullptr;
    }
    std::size_t size() const { return m_cells.size(); }
    Twips left() const { return m_left; }
    /// What a cell without paddings of its own has.
    Twips padding(std::size_t side) const { return m_padding[side]; }

private:
    std::vector<CellDefinition> m_cells;
    CellDefinition m_next;
    std::array<Twips, 4> m_padding{};
    Twips m_left = 0;
    /// The side of `m_next` that words of borders speak of.
    std::optional<std::size_t> m_border;
};

/// Tables as they are read: gives each paragraph its cells, and the cells their places and looks
/// when their row ends.
class TableBuilder {
public:
    TableBuilder(Budget& budget, const ColorTable& colors);

    void setPlatformText() { m_isPlatformText = true; }

    /// `depth` counts from 1, the outermost table. A control word of a row's definition.
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
    /// A place of a row; without a cell it is a placeholder.
    using Slot = std::shared_ptr<TextTableCell>;
    /// A cell that can reach into the next row, by what places of rows are compared by.
    struct Reaching {
        std::int64_t key;
        std::shared_ptr<TextTableCell> cell;
    };
    /// A cell that has its place, and its edges where other platforms' rows tell them.
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
        /// Elsewhere rows need not agree on their columns: then the edges tell them.
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
    /// The left edge of a slot.
    static Twips left(const Level& level, std::size_t slot);
    void noteCells(Level& level) const;
    static void placeByEdges(Level& level);
    static bool isConsistent(const Level& level);
    static void endTable(Level& level);

    Budget& m_budget;
    const ColorTable& m_colors;
    bool m_isPlatformText = false;
    std::vector<Level> m_levels;
    /// No table is deeper.
    std::size_t m_openDepth = 0;
    std::vector<TextTableCellRef> m_cells;
};

} // namespace korvex::richtext::rtf
