#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex::base {

/// UTF-8 as UTF-16. Bytes that are not UTF-8 become U+FFFD.
std::u16string utf16(std::string_view text);
/// UTF-16 as UTF-8. Surrogates that stand alone become U+FFFD.
std::string utf8(std::u16string_view text);
/// How many bytes `utf8` gives.
std::size_t utf8Length(std::u16string_view text);

} // namespace korvex::base
