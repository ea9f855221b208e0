#pragma once

#include <cstddef>
#include <string>

namespace korvex::base {

/// "512 bytes", "3 KB", "1.2 MB": in steps of 1,024, as the limits count, and cut, not rounded, so
/// that what fits is never shown as what does not. The same wherever a person reads a size.
std::string sizeText(std::size_t bytes);

} // namespace korvex::base
