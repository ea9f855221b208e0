#pragma once

#include "richtext/text/Attributes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// What the RTF reader and writer must agree on. See docs/formats/rich-text.md.
namespace korvex::richtext::rtf {

/// Either way from zero: far beyond any page, and small enough that sums of a row do not overflow.
inline constexpr Twips kMaximumLength = 1'000'000;
inline constexpr MilliPoints kMaximumFontSize = 10'000'000;
inline constexpr std::int32_t kMaximumColumns = 256;
inline constexpr std::size_t kMaximumTableDepth = 16;
inline constexpr std::size_t kMaximumListDepth = 9;
inline constexpr std::size_t kMaximumTabStops = 64;
/// UTF-16 units of a list's marker.
inline constexpr std::size_t kMaximumMarker = 64;
inline constexpr std::uint32_t kMaximumColors = 65'536;
/// What a column without a width is drawn with.
inline constexpr Twips kDefaultColumnWidth = 120 * kTwipsPerPoint;
/// Full intensity of a component in the table of extended colours.
inline constexpr std::int32_t kFullComponent = 100'000;

/// The other platform's name of a colour; empty for `none`.
std::string_view catalogName(SystemColor name);
/// `none` for names that mean nothing here.
SystemColor systemColor(std::string_view catalogName);
/// What a named colour looks like where names are not known: on white paper.
Color concrete(SystemColor name);

} // namespace korvex::richtext::rtf
