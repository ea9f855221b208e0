#pragma once

#include <cstddef>

namespace korvex::richtext {

/// A part of a string, in UTF-16 units.
struct TextRange {
    std::size_t location = 0;
    std::size_t length = 0;

    std::size_t end() const { return location + length; }
    bool operator==(const TextRange&) const = default;
};

} // namespace korvex::richtext
