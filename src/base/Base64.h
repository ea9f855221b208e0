#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvex::base {

/// The standard alphabet, with padding, in one line.
std::string base64(std::span<const std::uint8_t> bytes);
/// Absent for anything that `base64` does not write.
std::optional<Bytes> bytesOfBase64(std::string_view text);

} // namespace korvex::base
