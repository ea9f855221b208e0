#include "richtext/rtf/RtfWriterOutput.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace korvex::richtext::rtf {

namespace {

/// What stands for itself: printable ASCII but for RTF's own three, and the tab.
constexpr auto kPlain = [] {
    std::array<bool, 128> plain{};
    for (std::size_t unit = 0x20; unit < 0x7F; ++unit) {
        plain[unit] = unit != '\\' && unit != '{' && unit != '}';
    }
    plain['\t'] = true;
    return plain;
}();

constexpr bool isPlain(char16_t unit) {
    return unit < kPlain.size() && kPlain[unit];
}

} // namespace

void Output::word(std::string_view word, std::int64_t parameter) {
    std::array<char, 20> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), parameter).ptr;
    m_bytes += word;
    m_bytes.append(digits.data(), end);
}

void Output::text(std::u16string_view text) {
    std::array<char, 256> narrow;
    const auto* unit = text.data();
    const auto* const end = unit + text.size();
    while (unit != end) {
        const auto* const limit = unit + std::min<std::ptrdiff_t>(end - unit, narrow.size());
        const auto* const start = unit;
        auto* into = narrow.data();
        for (; unit != limit && isPlain(*unit); ++unit) {
            *into++ = static_cast<char>(*unit);
        }
        m_bytes.append(narrow.data(), static_cast<std::size_t>(unit - start));
        if (unit != limit) {
            escaped(*unit++);
        }
    }
}

void Output::escaped(char16_t unit) {
    constexpr std::string_view kHex = "0123456789abcdef";
    // From here to U+00FF the code page and Unicode agree.
    constexpr char16_t kFirstShared = 0xA0;
    constexpr char16_t kLastShared = 0xFF;
    if (unit == u'\\' || unit == u'{' || unit == u'}') {
        raw('\\');
        raw(static_cast<char>(unit));
    } else if (unit >= kFirstShared && unit <= kLastShared) {
        raw("\\'");
        raw(kHex[unit >> 4U]);
        raw(kHex[unit & 0xFU]);
    } else {
        if (!m_isWithoutFallbacks) {
            raw("\\uc0");
            m_isWithoutFallbacks = true;
        }
        word("\\u", unit);
        raw(' ');
    }
}

} // namespace korvex::richtext::rtf
