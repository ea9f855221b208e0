#include "base/Base64.h"

#include <sodium.h>

namespace korvex::base {

namespace {

constexpr auto kVariant = sodium_base64_VARIANT_ORIGINAL;

} // namespace

// libsodium takes no null pointer, which is what an empty vector may have.

std::string base64(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) {
        return {};
    }
    // The length counts the closing zero.
    std::string text(sodium_base64_encoded_len(bytes.size(), kVariant), '\0');
    sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(), kVariant);
    text.pop_back();
    return text;
}

std::optional<Bytes> bytesOfBase64(std::string_view text) {
    if (text.empty()) {
        return Bytes();
    }
    Bytes bytes(text.size());
    std::size_t length = 0;
    if (sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &length,
                          nullptr, kVariant) != 0) {
        return std::nullopt;
    }
    bytes.resize(length);
    return bytes;
}

} // namespace korvex::base
