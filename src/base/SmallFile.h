#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace korvex::base {

/// All that a file holds, in bytes; absent for one that cannot be read to its end, holds more than
/// `atMost`, or is none, such as a folder. Throws nothing but want of memory. Any thread.
std::optional<std::string> readSmallFile(const std::filesystem::path& file, std::size_t atMost);

} // namespace korvex::base
