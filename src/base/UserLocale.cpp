#include "base/UserLocale.h"

#include "base/EnvironmentVariable.h"

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/localebuilder.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>

namespace korvex::base {

namespace {

std::string localeOfEnvironment(const char* category) {
    for (const auto* variable : {"LC_ALL", category, "LANG"}) {
        if (auto value = environmentVariable(variable)) {
            return *std::move(value);
        }
    }
    return {};
}

/// "C", "C.UTF-8" and "POSIX" name no language.
bool namesLanguage(std::string_view name) {
    const auto language = name.substr(0, name.find_first_of("._@"));
    return !language.empty() && language != "C" && language != "POSIX";
}

bool isKnown(const std::string& language, const std::string& region) {
    std::int32_t count = 0;
    const auto* const known = icu::Locale::getAvailableLocales(count);
    return std::any_of(known, known + count, [&](const icu::Locale& each) {
        return language == each.getLanguage() && region == each.getCountry();
    });
}

/// The clock of a locale, as the value of the key "hc".
const char* hourCycle(const icu::Locale& locale) {
    static constexpr std::array kCycles{"h11", "h12", "h23", "h24"};
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    const auto cycle = patterns ? patterns->getDefaultHourCycle(status) : UDAT_HOUR_CYCLE_23;
    return U_SUCCESS(status) ? kCycles[static_cast<std::size_t>(cycle)] : "h23";
}

} // namespace

icu::Locale dateLocale(const std::string& name) {
    auto locale = userLocale(name, "LC_TIME");
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("calendar", "gregorian", status);
    return locale;
}

int firstWeekday(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::GregorianCalendar calendar(locale, status);
    const auto first = U_SUCCESS(status) ? calendar.getFirstDayOfWeek(status) : UCAL_SUNDAY;
    return U_SUCCESS(status) ? first - UCAL_SUNDAY : 0;
}

std::string localeSpeaking(const std::string& language, const char* category) {
    const auto own = userLocale({}, category);
    icu::LocaleBuilder builder;
    if (language == own.getLanguage()) {
        builder.setLocale(own);
    } else {
        const std::string region = own.getCountry();
        const auto hasRegion = isKnown(language, region);
        builder.setLanguage(language).setRegion(hasRegion ? region : std::string("001"));
        builder.setUnicodeLocaleKeyword("hc", hourCycle(own));
        if (!hasRegion && region.size() == 2) {
            builder.setUnicodeLocaleKeyword("rg", region + "zzzz"); // the first day of the week
        }
    }
    UErrorCode status = U_ZERO_ERROR;
    const auto locale = builder.build(status);
    auto tag = locale.toLanguageTag<std::string>(status);
    return U_SUCCESS(status) ? tag : language;
}

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
