#pragma once

#include <unicode/locid.h>

#include <string>

namespace korvex::base {

/// The locale of a BCP 47 tag or an ICU name. Empty means the user's, as the C library would choose
/// it: from LC_ALL, the variable of the category ("LC_TIME"), or LANG; without a language it is US
/// English, in which the program's own texts are.
icu::Locale userLocale(const std::string& name, const char* category);

} // namespace korvex::base
