#pragma once

#include <array>
#include <cstdint>

namespace korvex::richtext::rtf {

/// What two bytes of the code page 1361 come to, which no converter here knows: it spells Korean
/// syllables by their letters, and has all else where KS X 1001 has it, moved.
struct Korean {
    /// A syllable or a letter; 0 for all else, and U+FFFD for what is nothing.
    char16_t unit = 0;
    /// The place in KS X 1001, as the code page 949 has it.
    std::array<char, 2> standard{};
};

Korean koreanOfJohab(std::uint8_t lead, std::uint8_t trail);

} // namespace korvex::richtext::rtf
