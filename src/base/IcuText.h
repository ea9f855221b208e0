#pragma once

#include <unicode/unistr.h>

#include <string>

namespace korvex::base {

/// ICU's UTF-16 as the UTF-8 that the rest of the system holds. For this floor's own sources.
inline std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

} // namespace korvex::base
