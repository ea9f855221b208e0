#include "base/UserLocale.h"

#include <cstdlib>
#include <string_view>

namespace korvex::base {

namespace {

std::string localeOfEnvironment(const char* category) {
    for (const auto* variable : {"LC_ALL", category, "LANG"}) {
        if (const auto* value = std::getenv(variable); value && *value != '\0') {
            return value;
        }
    }
    return {};
}

/// "C", "C.UTF-8" and "POSIX" name no language.
bool namesLanguage(std::string_view name) {
    const auto language = name.substr(0, name.find_first_of("._@"));
    return !language.empty() && language != "C" && language != "POSIX";
}

} // namespace

icu::Locale userLocale(const std::string& name, const char* category) {
    const auto chosen = name.empty() ? localeOfEnvironment(category) : name;
    if (!namesLanguage(chosen)) {
        return icu::Locale::getUS();
    }
    if (chosen.find('-') != std::string::npos && chosen.find('.') == std::string::npos) {
        UErrorCode status = U_ZERO_ERROR;
        const auto locale = icu::Locale::forLanguageTag(chosen, status);
        return U_SUCCESS(status) && !locale.isBogus() ? locale : icu::Locale::getUS();
    }
    const auto locale = icu::Locale::createCanonical(chosen.c_str());
    return locale.isBogus() ? icu::Locale::getUS() : locale;
}

} // namespace korvex::base
