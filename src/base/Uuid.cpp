#include "base/Uuid.h"

#include "base/HexDigit.h"

#include <sodium.h>

namespace korvex::base {

namespace {

constexpr std::size_t kTextLength = 36;

/// Whether a hyphen stands before this byte's digits.
constexpr bool startsGroup(std::size_t byte) {
    return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

} // namespace

Uuid Uuid::random() {
    Uuid id;
    randombytes_buf(id.bytes.data(), id.bytes.size());
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0FU) | 0x40U); // version 4
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3FU) | 0x80U); // variant of RFC 4122
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != kTextLength) {
        return std::nullopt;
    }
    Uuid id;
    std::size_t position = 0;
    for (std::size_t byte = 0; byte < id.bytes.size(); ++byte) {
        if (startsGroup(byte) && text[position++] != '-') {
            return std::nullopt;
        }
        const auto high = hexDigit(text[position++]);
        const auto low = hexDigit(text[position++]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        id.bytes[byte] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return id;
}

std::string Uuid::text() const {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(kTextLength);
    for (std::size_t byte = 0; byte < bytes.size(); ++byte) {
        if (startsGroup(byte)) {
            text += '-';
        }
        text += kDigits[bytes[byte] >> 4U];
        text += kDigits[bytes[byte] & 0x0FU];
    }
    return text;
}

} // namespace korvex::base
