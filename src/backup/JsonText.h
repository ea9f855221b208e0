#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace korvex::backup {

/// How many bytes at the start of `text` stand in a JSON string as they are: up to the first quote,
/// backslash or control character. Eight at a time: most of a backup is such bytes.
inline std::size_t plainJsonLength(std::string_view text) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    constexpr std::uint64_t kHighBits = kOnes * 0x80;
    // The high bit of some byte is set where one is zero, and nowhere else.
    const auto findsZero = [](std::uint64_t word) { return (word - kOnes) & ~word & kHighBits; };
    std::size_t length = 0;
    for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        const auto controls = (word - kOnes * ' ') & ~word & kHighBits;
        if ((controls | findsZero(word ^ kOnes * '"') | findsZero(word ^ kOnes * '\\')) != 0) {
            break;
        }
    }
    const auto isPlain = [](char byte) {
        return static_cast<unsigned char>(byte) >= ' ' && byte != '"' && byte != '\\';
    };
    while (length < text.size() && isPlain(text[length])) {
        ++length;
    }
    return length;
}

} // namespace korvex::backup
