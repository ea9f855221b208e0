#pragma once

#include <unicode/locid.h>

#include <string>

namespace korvex::base {

/// The locale of a BCP 47 tag or an ICU name. Empty means the user's, as the C library would choose
/// it: from LC_ALL, the variable of the category ("LC_TIME"), or LANG; without a language it is US
/// English, in which the program's own texts are.
icu::Locale userLocale(const std::string& name, const char* category);

/// The same for dates (LC_TIME): they are of the Gregorian calendar, whatever the locale prefers.
icu::Locale dateLocale(const std::string& name);

/// Days from Sunday to the first of the week there; 0 where ICU does not know.
int firstWeekday(const icu::Locale& locale);

/// The user's locale with the words of `language` ("en"), as a BCP 47 tag: who reads English texts
/// in Germany has English days and months, in the order and by the clock that is used there. Where
/// the language knows nothing of the region, it is that language as it is written in the world.
std::string localeSpeaking(const std::string& language, const char* category);

} // namespace korvex::base
