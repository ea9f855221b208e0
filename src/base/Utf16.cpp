#include "base/Utf16.h"

#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <limits>
#include <stdexcept>

namespace korvex::base {

namespace {

constexpr UChar32 kReplacement = 0xFFFD;

std::int32_t checkedLength(std::size_t length, std::size_t growth) {
    if (length > std::numeric_limits<std::int32_t>::max() / growth) {
        throw std::length_error("a text of more than 700 million units");
    }
    return static_cast<std::int32_t>(length);
}

} // namespace

std::u16string utf16(std::string_view text) {
    const auto length = checkedLength(text.size(), 1);
    std::u16string result(text.size(), u'\0');
    std::int32_t written = 0;
    auto status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(result.data(), length, &written, text.data(), length, kReplacement,
                         nullptr, &status);
    result.resize(static_cast<std::size_t>(written));
    return result;
}

std::string utf8(std::u16string_view text) {
    constexpr std::size_t kGrowth = 3;
    const auto length = checkedLength(text.size(), kGrowth);
    std::string result(text.size() * kGrowth, '\0');
    std::int32_t written = 0;
    auto status = U_ZERO_ERROR;
    u_strToUTF8WithSub(result.data(), static_cast<std::int32_t>(result.size()), &written,
                       text.data(), length, kReplacement, nullptr, &status);
    result.resize(static_cast<std::size_t>(written));
    return result;
}

std::size_t utf8Length(std::u16string_view text) {
    std::size_t length = 0;
    for (std::size_t offset = 0; offset < text.size();) {
        UChar32 codePoint = 0;
        U16_NEXT_OR_FFFD(text.data(), offset, text.size(), codePoint);
        length += U8_LENGTH(codePoint);
    }
    return length;
}

} // namespace korvex::base
