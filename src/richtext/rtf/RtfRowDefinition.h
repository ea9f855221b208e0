#pragma once

#include "richtext/rtf/RtfDialect.h"
#include "richtext/rtf/RtfKeywords.h"
#include "richtext/text/ParagraphStyle.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
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
    /// A width in any other unit, such as percent, is not used.
    bool isWidthInTwips = true;
    std::uint32_t fill = 0;
    VerticalAlignment alignment = VerticalAlignment::top;
    bool startsColumns = false;
    bool isMerged = false;
    bool startsRows = false;
    bool isVerticallyMerged = false;
    bool isAbsent = false;
    /// Where the cell ends on the right.
    Twips edge = 0;

    /// Whether the place is covered by another cell or stands for none.
    bool isPlaceholder() const { return isMerged || isVerticallyMerged || isAbsent; }
};

/// The description of rows that begins with \trowd. It holds for all rows until the next one.
class RowDefinition {
public:
    void word(const Keyword& keyword, std::int32_t parameter, RtfDialect dialect);

    /// Null for a cell that was not described.
    const CellDefinition* cell(std::size_t slot) const {
        return slot < m_cells.size() ? &m_cells[slot] : nullptr;
    }
    std::size_t size() const { return m_cells.size(); }
    Twips left() const { return m_left; }
    /// The padding of cells that say none of their own.
    Twips padding(std::size_t side) const { return m_padding[side]; }

private:
    std::vector<CellDefinition> m_cells;
    CellDefinition m_next;
    std::array<Twips, 4> m_padding{};
    Twips m_left = 0;
    /// The side of `m_next` that words of borders speak of.
    std::optional<std::size_t> m_border;
};

} // namespace korvex::richtext::rtf
