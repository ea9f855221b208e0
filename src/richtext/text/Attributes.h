#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::richtext {

/// Twentieths of a point. All lengths of paragraphs and tables are integers, so that what is read
/// equals what was written.
using Twips = std::int32_t;
inline constexpr Twips kTwipsPerPoint = 20;
/// Thousandths of a point, in which sizes of fonts are told.
using MilliPoints = std::int32_t;

/// Colours that follow the appearance; what they look like is the view's business.
enum class SystemColor : std::uint8_t {
    none,
    label,
    secondaryLabel,
    quaternaryLabel,
    separator,
    /// The quiet fill of a table's header row.
    headerFill,
    purple,
    green,
    orange,
    blue,
    pink,
    red,
};

/// A colour by name or, where `name` is `none`, by its components.
struct Color {
    SystemColor name = SystemColor::none;
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    static constexpr Color named(SystemColor name) { return {.name = name}; }
    bool operator==(const Color&) const = default;
};

/// The two families a text is set in; concrete faces are the view's business.
enum class FontFamily : std::uint8_t { system, monospaced };

/// The size of everything that is not a heading. Views scale it by the user's preference.
inline constexpr MilliPoints kBaseFontSize = 13'000;

struct Font {
    FontFamily family = FontFamily::system;
    bool isBold = false;
    bool isItalic = false;
    MilliPoints size = kBaseFontSize;

    bool operator==(const Font&) const = default;
};

enum class LineStyle : std::uint8_t {
    none,
    single,
    thick,
    doubled,
    dotted,
    dashed,
    dashDotted,
    dashDotDotted,
};

/// What a run of characters has in common.
struct CharacterAttributes {
    Font font;
    LineStyle underline = LineStyle::none;
    LineStyle strikethrough = LineStyle::none;
    /// Where a link leads, as it was given; empty for what is no link.
    std::string link;
    /// The language of a code run, an identifier of `CodeSyntax::languages`; empty for what is no
    /// code.
    std::string korvexCodeLanguage;
    /// Whether code is a block rather than inline; never set without a language.
    bool korvexCodeBlock = false;
    std::optional<Color> foreground;
    std::optional<Color> background;
    /// Embedded objects are not kept, only marked, so that `normalized` can delete them.
    bool isAttachment = false;

    bool isCode() const { return !korvexCodeLanguage.empty(); }
    bool operator==(const CharacterAttributes&) const = default;
};

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
struct std::hash<korvex::richtext::CharacterAttributes> {
    std::size_t operator()(const korvex::richtext::CharacterAttributes& attributes) const noexcept;
};
template <>
struct std::hash<korvex::richtext::ParagraphStyle> {
    std::size_t operator()(const korvex::richtext::ParagraphStyle& style) const noexcept;
};
