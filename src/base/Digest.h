#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace korvex::base {

/// A 64-bit checksum that finds damage, not malice (SipHash-2-4 under a fixed key). The value is
/// stored in files: it never changes.
std::uint64_t checksum(std::span<const std::uint8_t> bytes);

/// SHA-256: tells texts apart even where somebody means harm.
std::array<std::uint8_t, 32> sha256(std::string_view text);

/// What a log line shows instead of an identifier of the user's data: the same text always gives
/// the same mask, and the mask does not give back the text.
std::string maskHash(std::string_view text);

} // namespace korvex::base
