#include "base/DateFormats.h"

#include "base/IcuText.h"
#include "base/TimeZoneData.h"
#include "base/UserLocale.h"

#include <unicode/datefmt.h>
#include <unicode/reldatefmt.h>

#include <utility>

namespace korvex::base {

/// Each format is made when it is first asked for: few commands need more than one.
struct DateFormats::Formats {
    icu::Locale locale;
    Calendar calendar;
    std::unique_ptr<icu::DateFormat> dayWithWeekday;
    std::unique_ptr<icu::DateFormat> dayWithFullMonth;
    std::unique_ptr<icu::DateFormat> shortTime;
    std::unique_ptr<icu::DateFormat> dayAndShortTime;
    std::unique_ptr<icu::RelativeDateTimeFormatter> words;
    std::unique_ptr<TypedDates> typed;
    std::unique_ptr<MonthWords> monthWords;

    /// `skeleton` names the fields; order and punctuation are the locale's.
    std::string text(std::unique_ptr<icu::DateFormat>& format, const char16_t* skeleton,
                     Instant instant) {
        if (!format) {
            UErrorCode status = U_ZERO_ERROR;
            format.reset(icu::DateFormat::createInstanceForSkeleton(skeleton, locale, status));
            require(status, "date format");
            format->setTimeZone(*calendar.timeZone().data().zone);
        }
        icu::UnicodeString text;
        format->format(instant.unixSeconds() * 1000, text);
        return utf8(text);
    }
};

DateFormats::DateFormats(std::string locale, TimeZone zone)
    : m_formats(new Formats{.locale = dateLocale(locale),
                            .calendar = Calendar(std::move(zone), locale)}) {}

DateFormats::~DateFormats() = default;
DateFormats::DateFormats(DateFormats&&) noexcept = default;
DateFormats& DateFormats::operator=(DateFormats&&) noexcept = default;

const Calendar& DateFormats::calendar() const {
    return m_formats->calendar;
}

std::string DateFormats::dayWithWeekday(Instant instant) const {
    return m_formats->text(m_formats->dayWithWeekday, u"yMMMEd", instant);
}

std::string DateFormats::dayWithFullMonth(Instant instant) const {
    return m_formats->text(m_formats->dayWithFullMonth, u"yMMMMd", instant);
}

std::string DateFormats::shortTime(Instant instant) const {
    return m_formats->text(m_formats->shortTime, u"jm", instant);
}

std::string DateFormats::dayAndShortTime(Instant instant) const {
    return m_formats->text(m_formats->dayAndShortTime, u"yMMMdjm", instant);
}

std::string DateFormats::relativeDayWord(int offset) const {
    UErrorCode status = U_ZERO_ERROR;
    auto& words = m_formats->words;
    if (!words) {
        words = std::make_unique<icu::RelativeDateTimeFormatter>(
            m_formats->locale, nullptr, UDAT_STYLE_LONG,
            UDISPCTX_CAPITALIZATION_FOR_BEGINNING_OF_SENTENCE, status);
    }
    icu::UnicodeString text;
    words->format(offset, UDAT_REL_UNIT_DAY, text, status);
    require(status, "word for a day");
    return utf8(text);
}

const TypedDates& DateFormats::typed() const {
    auto& typed = m_formats->typed;
    if (!typed) {
        typed = std::make_unique<TypedDates>(m_formats->locale.getName());
    }
    return *typed;
}

const MonthWords& DateFormats::monthWords() const {
    auto& words = m_formats->monthWords;
    if (!words) {
        words = std::make_unique<MonthWords>(m_formats->locale.getName());
    }
    return *words;
}

} // namespace korvex::base
