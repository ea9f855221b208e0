#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

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

} // namespace korvex::richtext

template <>
struct std::hash<korvex::richtext::CharacterAttributes> {
    std::size_t operator()(const korvex::richtext::CharacterAttributes& attributes) const noexcept;
};
