#include "base/Base64.h"

#include <array>
#include <cstring>

namespace korvex::base {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';

/// Two characters for each value of twelve bits.
constexpr auto kPairs = [] {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
        pairs[bits] = {kAlphabet[bits >> 6U], kAlphabet[bits & 63U]};
    }
    return pairs;
}();

/// This bit lies above the 24 that four characters can fill.
constexpr std::uint32_t kInvalid = 0x80000000;

/// What each character stands for at each of its four places in a group, shifted there.
constexpr auto kValues = [] {
    std::array<std::array<std::uint32_t, 256>, 4> values{};
    for (std::size_t place = 0; place < values.size(); ++place) {
        values[place].fill(kInvalid);
        for (std::uint32_t bits = 0; bits < kAlphabet.size(); ++bits) {
            values[place][static_cast<unsigned char>(kAlphabet[bits])] = bits << (18 - 6 * place);
        }
    }
    return values;
}();

std::uint32_t groupValue(const char* group) {
    return kValues[0][static_cast<unsigned char>(group[0])] |
           kValues[1][static_cast<unsigned char>(group[1])] |
           kValues[2][static_cast<unsigned char>(group[2])] |
           kValues[3][static_cast<unsigned char>(group[3])];
}

void writeGroup(std::uint32_t value, char* to) {
    std::memcpy(to, kPairs[value >> 12U].data(), 2);
    std::memcpy(to + 2, kPairs[value & 4095U].data(), 2);
}

void writeBytes(std::uint32_t value, std::size_t count, std::uint8_t* to) {
    for (std::size_t byte = 0; byte < count; ++byte) {
        to[byte] = static_cast<std::uint8_t>(value >> (16 - 8 * byte));
    }
}

} // namespace

void writeBase64(std::span<const std::uint8_t> bytes, char* to) {
    std::size_t at = 0;
    for (; at + 3 <= bytes.size(); at += 3, to += 4) {
        writeGroup(std::uint32_t{bytes[at]} << 16U | std::uint32_t{bytes[at + 1]} << 8U |
                       bytes[at + 2],
                   to);
    }
    if (const auto left = bytes.size() - at; left > 0) {
        const std::uint32_t second = left == 2 ? bytes[at + 1] : 0;
        writeGroup(std::uint32_t{bytes[at]} << 16U | second << 8U, to);
        std::memset(to + left + 1, kPadding, 3 - left);
    }
}

std::string base64(std::span<const std::uint8_t> bytes) {
    std::string text(base64Length(bytes.size()), kPadding);
    writeBase64(bytes, text.data());
    return text;
}

std::optional<Bytes> bytesOfBase64(std::string_view text) {
    if (text.empty()) {
        return Bytes();
    }
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    // The last group may be padded: "A" stands for its padding, and what that adds is cut off.
    std::array<char, 4> last{};
    std::memcpy(last.data(), text.data() + text.size() - 4, last.size());
    std::size_t padding = 0;
    while (padding < 2 && last[3 - padding] == kPadding) {
        last[3 - padding] = kAlphabet.front();
        ++padding;
    }
    const auto lastValue = groupValue(last.data());
    // Bits that no byte holds must be zero, or two texts would stand for the same bytes.
    if ((lastValue & ((1U << 8U * padding) - 1)) != 0) {
        return std::nullopt;
    }
    Bytes bytes(text.size() / 4 * 3 - padding);
    auto* to = bytes.data();
    auto seen = lastValue;
    for (std::size_t at = 0; at + 4 < text.size(); at += 4, to += 3) {
        const auto value = groupValue(text.data() + at);
        seen |= value;
        writeBytes(value, 3, to);
    }
    if ((seen & kInvalid) != 0) {
        return std::nullopt;
    }
    writeBytes(lastValue, 3 - padding, to);
    return bytes;
}

} // namespace korvex::base
