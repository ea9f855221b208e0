#pragma once

namespace korvex::base {

/// -1 for what is no hexadecimal digit, of either case.
constexpr int hexDigit(char digit) {
    constexpr int kTen = 10;
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + kTen;
    }
    return digit >= 'A' && digit <= 'F' ? digit - 'A' + kTen : -1;
}

} // namespace korvex::base
