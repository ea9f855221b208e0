#pragma once

#include "richtext/text/Attributes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace korvex::richtext {

enum class HeadingLevel : std::uint8_t { level1 = 1, level2 = 2, level3 = 3 };
inline constexpr std::array kHeadingLevels{HeadingLevel::level1, HeadingLevel::level2,
                                           HeadingLevel::level3};

/// "Heading 1", in English: the views translate it.
std::string titleOf(HeadingLevel level);
/// Bold, at the level's size.
Font fontOf(HeadingLevel level);
Twips spacingBeforeOf(HeadingLevel level);

/// A heading is known by its font alone: bold, in one of the levels' sizes. Size 22 counts as
/// level 1 as well, since texts were once written with it; it is never produced.
std::optional<HeadingLevel> headingLevel(const Font& font);

} // namespace korvex::richtext
