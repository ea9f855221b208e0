#pragma once

#include "richtext/rtf/RtfWriterHeader.h"
#include "richtext/rtf/RtfWriterOutput.h"
#include "richtext/text/ParagraphStyle.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korvex::richtext::rtf {

/// Rows begin to the left of the margin, by the gap between text and border, so that the text in
/// the cells lines up with the text around the table.
inline constexpr Twips kRowLeft = -108;

/// Neighbouring paragraphs of one cell, as indices of the text's paragraphs.
struct CellStretch {
    const TextTableCell* cell;
    std::size_t first;
    std::size_t end;
};

/// A table as RTF says it: rows of slots from the left, each a cell or a place that another cell
/// covers or that none has. Stretches whose places do not make a table in the order of the text get
/// new places, row by row, without spans, so that a reader finds the same plan.
class TablePlan {
public:
    struct Slot {
        enum class Kind : std::uint8_t {
            cell,
            /// Covered by the cell on the left.
            merged,
            /// Covered by a cell of a row above: its left column, and the others.
            continued,
            continuedMerged,
            absent,
        };

        Kind kind = Kind::absent;
        bool startsRows = false;
        bool startsColumns = false;
        /// The index of the stretch that a cell is.
        std::size_t stretch = 0;
    };
    using Row = std::vector<Slot>;

    /// `stretches`, which must outlive the plan, are the whole table in the order of the text, at
    /// least one.
    explicit TablePlan(std::span<const CellStretch> stretches);

    const std::vector<Row>& rows() const { return m_rows; }
    void writeDefinition(Output& output, ColorNumbers& colors, const Row& row) const;

private:
    struct Place {
        std::int64_t row = 0;
        std::int64_t column = 0;
        std::int64_t rowSpan = 1;
        std::int64_t columnSpan = 1;
    };

    std::vector<Place> placesAsGiven() const;
    std::vector<Place> newPlaces() const;
    void fill(const std::vector<Place>& places);
    void measure(const std::vector<Place>& places, std::size_t columns);

    std::span<const CellStretch> m_stretches;
    std::vector<Row> m_rows;
    /// The right edge of each column, for readers that place cells by edges.
    std::vector<std::int64_t> m_edges;
};

} // namespace korvex::richtext::rtf
