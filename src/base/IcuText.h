#pragma once

#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include <stdexcept>
#include <string>

namespace korvex::base {

/// ICU's UTF-16 as the UTF-8 that the rest of the system holds. For this floor's own sources.
inline std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

/// Throws std::runtime_error when ICU could not make `what`, which happens without its data.
inline void require(UErrorCode status, const char* what) {
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("ICU has no ") + what + ": " + u_errorName(status));
    }
}

} // namespace korvex::base
