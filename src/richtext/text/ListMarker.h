#pragma once

#include "richtext/text/ParagraphStyle.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace korvex::richtext {

enum class MarkerFormat : std::uint8_t {
    none,
    disc,
    circle,
    square,
    hyphen,
    check,
    decimal,
    lowerAlpha,
    upperAlpha,
    lowerRoman,
    upperRoman,
};

/// What a TextList's marker is made of.
struct MarkerParts {
    std::u16string_view before;
    MarkerFormat format = MarkerFormat::none;
    std::u16string_view after;
};

/// A marker without a format in braces is all `before`. The parts live as long as `marker`.
MarkerParts partsOf(std::u16string_view marker);
/// "{decimal}" and its kind.
std::u16string_view bracedName(MarkerFormat format);

/// Whether items of the format show their number.
constexpr bool isCounting(MarkerFormat format) {
    return format >= MarkerFormat::decimal;
}
/// What the format shows for an item: "3", "iii", "•". Numbers that letters or Roman numerals
/// cannot say are shown as digits.
std::u16string symbolOf(MarkerFormat format, std::int64_t number);
/// The whole marker of an item: its symbol with what stands before and after it.
std::u16string markerText(const TextList& list, std::int64_t number);

} // namespace korvex::richtext
