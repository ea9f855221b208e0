#pragma once

#include "richtext/text/Attributes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::richtext {

/// A list is an identity: paragraphs belong to the same list when they share the object.
struct TextList {
    /// "{disc}", "{circle}", "{square}", "{hyphen}", "{check}", "{decimal}.", "{lower-alpha})", …:
    /// one format in braces, with what stands before and after it. At most 64 characters.
    std::u16string marker;
    /// The number of the first item.
    std::int32_t start = 1;

    /// Compares the values, not the identities.
    bool operator==(const TextList&) const = default;
};
using TextListRef = std::shared_ptr<const TextList>;

/// A table is an identity: two equal tables side by side stay two.
struct TextTable {
    std::int32_t columns = 1;

    bool operator==(const TextTable&) const = default;
};
using TextTableRef = std::shared_ptr<const TextTable>;

enum class VerticalAlignment : std::uint8_t { top, middle, bottom };

/// The sides of a cell, in the order that they have in arrays.
enum class Side : std::uint8_t { top, left, bottom, right };

struct CellBorder {
    /// Without a width there is no border.
    Twips width = 0;
    std::optional<Color> color;

    bool operator==(const CellBorder&) const = default;
};

/// What a cell looks like.
struct CellGeometry {
    /// The width of the content; absent where the column has the default width.
    std::optional<Twips> width;
    std::array<Twips, 4> padding{};
    std::array<CellBorder, 4> borders{};
    std::optional<Color> background;
    VerticalAlignment verticalAlignment = VerticalAlignment::top;

    bool operator==(const CellGeometry&) const = default;
};

/// A cell is an identity: its paragraphs share the object.
struct TextTableCell {
    TextTableRef table;
    std::int32_t row = 0;
    std::int32_t column = 0;
    std::int32_t rowSpan = 1;
    std::int32_t columnSpan = 1;
    CellGeometry geometry;
};
using TextTableCellRef = std::shared_ptr<const TextTableCell>;

enum class TextAlignment : std::uint8_t { natural, left, center, right, justified };
enum class WritingDirection : std::uint8_t { natural, leftToRight, rightToLeft };

/// What a paragraph looks like and what it belongs to. Plain member equality compares lists and
/// cells by identity.
struct ParagraphStyle {
    TextAlignment alignment = TextAlignment::natural;
    WritingDirection direction = WritingDirection::natural;
    Twips leftIndent = 0;
    /// This counts from `leftIndent`; it is negative where the first line hangs out.
    Twips firstLineIndent = 0;
    Twips rightIndent = 0;
    Twips spacingBefore = 0;
    Twips spacingAfter = 0;
    /// The distance between two lines.
    Twips lineSpacing = 0;
    /// The height of a line in 240ths of the natural one; 0 for the natural one.
    std::int32_t lineHeightMultiple = 0;
    /// A line is at least so high or, where this is negative, exactly; 0 for the natural height.
    Twips lineHeight = 0;
    /// Distances from the left edge, ascending; at most 64.
    std::vector<Twips> tabStops;
    /// The lists that the paragraph stands in, from the outermost to the one that it is an item of;
    /// at most 9.
    std::vector<TextListRef> lists;
    /// From the outermost table's cell to the innermost's; at most 16.
    std::vector<TextTableCellRef> cells;

    bool operator==(const ParagraphStyle&) const = default;
};

} // namespace korvex::richtext

template <>
struct std::hash<korvex::richtext::ParagraphStyle> {
    std::size_t operator()(const korvex::richtext::ParagraphStyle& style) const noexcept;
};
