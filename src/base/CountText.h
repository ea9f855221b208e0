#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex::base {

/// "60,000": as people read it. Whoever says it speaks English.
std::string numberText(std::size_t number);
/// "1 entry", "60,000 entries".
std::string countText(std::size_t count, std::string_view one, std::string_view several);

} // namespace korvex::base
