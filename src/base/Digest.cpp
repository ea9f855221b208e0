#include "base/Digest.h"

#include <sodium.h>

#include <array>

namespace korvex::base {

std::uint64_t checksum(std::span<const std::uint8_t> bytes) {
    // Part of the file format, like the algorithm.
    static constexpr std::array<std::uint8_t, crypto_shorthash_KEYBYTES> kKey{
        'k', 'o', 'r', 'v', 'e', 'x', '.', 'c', 'h', 'e', 'c', 'k', 's', 'u', 'm', '1'};
    std::array<std::uint8_t, crypto_shorthash_BYTES> hash{};
    crypto_shorthash(hash.data(), bytes.data(), bytes.size(), kKey.data());
    std::uint64_t value = 0;
    for (const auto byte : hash) {
        value = value << 8U | byte;
    }
    return value;
}

std::array<std::uint8_t, 32> sha256(std::string_view text) {
    std::array<std::uint8_t, crypto_hash_sha256_BYTES> hash{};
    crypto_hash_sha256(hash.data(), reinterpret_cast<const unsigned char*>(text.data()),
                       text.size());
    return hash;
}

std::string maskHash(std::string_view text) {
    std::array<std::uint8_t, crypto_generichash_BYTES_MIN> hash{};
    crypto_generichash(hash.data(), hash.size(),
                       reinterpret_cast<const unsigned char*>(text.data()), text.size(), nullptr,
                       0);
    constexpr std::size_t kShownBytes = 8;
    std::array<char, kShownBytes * 2 + 1> digits{};
    sodium_bin2hex(digits.data(), digits.size(), hash.data(), kShownBytes);
    return digits.data();
}

} // namespace korvex::base
