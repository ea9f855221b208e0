#pragma once

#include <cstddef>
#include <string>

namespace korvex::cli {

/// What standard input may hold; more is refused before memory runs out.
inline constexpr std::size_t kMaximumInputBytes = 64 * 1024 * 1024;

/// Everything up to the end. Throws CommandLineError (`refused`) when it cannot be read or is
/// longer than `kMaximumInputBytes`.
std::string readAll(int descriptor);

} // namespace korvex::cli
