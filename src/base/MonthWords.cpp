#include "base/MonthWords.h"

#include "base/IcuText.h"
#include "base/UserLocale.h"

#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <stdexcept>

namespace korvex::base {

namespace {

constexpr const char* kWhat = "words for months";

std::string textOf(icu::DateFormat& format, const CivilDay& day) {
    const auto noon = noonInUtc(dayNumber(day));
    if (!noon) {
        return {};
    }
    icu::UnicodeString text;
    return utf8(format.format(noon->unixSeconds() * 1000, text));
}

} // namespace

struct MonthWords::Formats {
    std::array<Weekday, kDaysOfWeek> week;
    /// Days from Sunday to the first of the week.
    int firstWeekday = 0;
    std::unique_ptr<icu::DateFormat> title;
    std::unique_ptr<icu::DateFormat> shortTitle;
    std::unique_ptr<icu::DateFormat> wholeDay;
    std::unique_ptr<icu::DateFormat> dayOfMonth;
};

MonthWords::MonthWords(const std::string& name) : m_formats(std::make_unique<Formats>()) {
    UErrorCode status = U_ZERO_ERROR;
    const auto locale = dateLocale(name);
    const icu::GregorianCalendar calendar(locale, status);
    const icu::DateFormatSymbols symbols(locale, status);
    require(status, kWhat);
    m_formats->firstWeekday = firstWeekday(locale);
    using Symbols = icu::DateFormatSymbols;
    std::int32_t count = 0;
    const auto* const names = symbols.getWeekdays(count, Symbols::STANDALONE, Symbols::WIDE);
    const auto* const shortNames = symbols.getWeekdays(count, Symbols::STANDALONE, Symbols::SHORT);
    for (int i = 0; i < kDaysOfWeek; ++i) {
        const auto weekday = (m_formats->firstWeekday + i) % kDaysOfWeek + UCAL_SUNDAY;
        const auto kind =
            calendar.getDayOfWeekType(static_cast<UCalendarDaysOfWeek>(weekday), status);
        m_formats->week[static_cast<std::size_t>(i)] = {.shortName = utf8(shortNames[weekday]),
                                                        .name = utf8(names[weekday]),
                                                        .isWeekend = kind != UCAL_WEEKDAY};
    }
    const auto prepared = [&](icu::DateFormat* made) {
        std::unique_ptr<icu::DateFormat> format(made);
        require(status, kWhat);
        format->setTimeZone(*icu::TimeZone::getGMT());
        format->setContext(UDISPCTX_CAPITALIZATION_FOR_STANDALONE, status);
        return format;
    };
    const auto bySkeleton = [&](const char16_t* skeleton) {
        return prepared(icu::DateFormat::createInstanceForSkeleton(skeleton, locale, status));
    };
    m_formats->title = bySkeleton(u"yMMMM");
    m_formats->shortTitle = bySkeleton(u"yMMM");
    m_formats->wholeDay = bySkeleton(u"yMMMMEEEEd");
    // The number alone: by a skeleton it would be "10日" in Japanese.
    m_formats->dayOfMonth = prepared(new icu::SimpleDateFormat(u"d", locale, status));
    require(status, kWhat);
}

MonthWords::~MonthWords() = default;
MonthWords::MonthWords(MonthWords&&) noexcept = default;
MonthWords& MonthWords::operator=(MonthWords&&) noexcept = default;

const std::array<MonthWords::Weekday, kDaysOfWeek>& MonthWords::week() const {
    return m_formats->week;
}

int MonthWords::column(const CivilDay& day) const {
    const auto days = daysSince1970(day);
    if (!days) {
        throw std::out_of_range("no day");
    }
    return daysSinceWeekday(*days, m_formats->firstWeekday);
}

std::string MonthWords::title(const CivilDay& day) const {
    return textOf(*m_formats->title, day);
}

std::string MonthWords::shortTitle(const CivilDay& day) const {
    return textOf(*m_formats->shortTitle, day);
}

std::string MonthWords::wholeDay(const CivilDay& day) const {
    return textOf(*m_formats->wholeDay, day);
}

std::string MonthWords::dayOfMonth(const CivilDay& day) const {
    return textOf(*m_formats->dayOfMonth, day);
}

} // namespace korvex::base
