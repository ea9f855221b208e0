#pragma once

#include "base/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvex::base {

// These functions are quick and so not in constant time: they are not for keys and passwords.

/// The bytes in the standard alphabet, with padding, in one line.
std::string base64(std::span<const std::uint8_t> bytes);
/// How many characters `base64` writes for so many bytes.
constexpr std::size_t base64Length(std::size_t byteCount) {
    return (byteCount / 3 + (byteCount % 3 == 0 ? 0 : 1)) * 4;
}
/// Writes what `base64` gives to `to`, where there must be room for `base64Length` characters.
void writeBase64(std::span<const std::uint8_t> bytes, char* to);
/// Absent for anything that `base64` does not write.
std::optional<Bytes> bytesOfBase64(std::string_view text);

} // namespace korvex::base
