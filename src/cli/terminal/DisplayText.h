#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::cli {

/// `text` as one line that a terminal may show: line breaks and tabs become spaces, other control
/// characters (escape sequences!) visible symbols, bytes that are not UTF-8 the replacement
/// character.
std::string onOneLine(std::string_view text);

/// The same, but line breaks stay.
std::string inLines(std::string_view text);

/// How many columns a terminal gives to a line: two for wide characters, none for combining ones.
std::size_t displayWidth(std::string_view line);

/// Splits a line into pieces of at most `width` columns (at least 1), at spaces where there are
/// any.
std::vector<std::string_view> wrapped(std::string_view line, std::size_t width);

} // namespace korvex::cli
