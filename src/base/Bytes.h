#pragma once

#include <cstdint>
#include <vector>

namespace korvex::base {

using Bytes = std::vector<std::uint8_t>;

} // namespace korvex::base
