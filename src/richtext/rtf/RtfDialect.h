#pragma once

#include "richtext/text/Attributes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// What the RTF reader and writer must agree on. See docs/formats/rich-text.md.
namespace korvex::richtext::rtf {

/// Whose habits a document follows in what RTF leaves open, or means otherwise than many write it.
enum class RtfDialect : std::uint8_t {
    /// Those of office suites and word processors.
    office,
    /// Those of the text system in which the oldest of the stored texts were written, and which is
    /// written here. A document says \cocoartf at its beginning when it follows them.
    native,
};

/// Lengths go so far either way from zero: beyond any page, and not so far that the sum of a row
/// overflows.
inline constexpr Twips kMaximumLength = 1'000'000;
inline constexpr MilliPoints kMaximumFontSize = 10'000'000;
inline constexpr std::int32_t kMaximumColumns = 256;
inline constexpr std::size_t kMaximumTableDepth = 16;
inline constexpr std::size_t kMaximumTabStops = 64;
/// A list's marker has at most so many UTF-16 units.
inline constexpr std::size_t kMaximumMarker = 64;
inline constexpr std::uint32_t kMaximumColors = 65'536;
/// The width of a column's content where no cell says one.
inline constexpr Twips kDefaultColumnWidth = 120 * kTwipsPerPoint;
/// The full intensity of a component in the table of extended colours.
inline constexpr std::int32_t kFullComponent = 100'000;

/// The name of a colour in the native dialect; empty for `none`.
std::string_view catalogName(SystemColor name);
/// The colour that has the name; `none` for names that mean nothing here.
SystemColor systemColor(std::string_view catalogName);
/// What a named colour looks like where names are not known: on white paper.
Color concrete(SystemColor name);

} // namespace korvex::richtext::rtf
