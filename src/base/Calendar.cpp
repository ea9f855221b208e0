#include "base/Calendar.h"

#include "base/DayArithmetic.h"
#include "base/IcuText.h"
#include "base/TimeZoneData.h"
#include "base/UserLocale.h"

#include <unicode/gregocal.h>
#include <unicode/simpletz.h>
#include <unicode/timezone.h>

#include <cmath>
#include <cstdlib>
#include <utility>

namespace korvex::base {

namespace {

std::shared_ptr<const TimeZone::Data> makeData(std::string name,
                                               std::unique_ptr<icu::TimeZone> zone) {
    return std::make_shared<const TimeZone::Data>(
        TimeZone::Data{.name = std::move(name), .zone = std::move(zone)});
}

} // namespace

TimeZone TimeZone::system() {
    // To POSIX an empty TZ means UTC; ICU takes it for a zone that it does not know.
    if (const auto* name = std::getenv("TZ"); name && *name == '\0') {
        return utc();
    }
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString name;
    zone->getID(name);
    return TimeZone(makeData(utf8(name), std::move(zone)));
}

TimeZone TimeZone::utc() {
    return TimeZone(
        makeData("UTC", std::make_unique<icu::SimpleTimeZone>(0, icu::UnicodeString(u"UTC"))));
}

std::string TimeZone::name() const {
    return m_data->name;
}

bool TimeZone::operator==(const TimeZone& other) const {
    return name() == other.name();
}

/// ICU's calendar, made at the first question: programs that show no date need none.
struct Calendar::Engine {
    std::unique_ptr<icu::GregorianCalendar> gregorian;
    /// Days from Sunday to the first day of a week.
    std::optional<int> firstDay;

    icu::GregorianCalendar& at(const TimeZone& zone) {
        if (!gregorian) {
            UErrorCode status = U_ZERO_ERROR;
            gregorian = std::make_unique<icu::GregorianCalendar>(*zone.data().zone,
                                                                 icu::Locale::getRoot(), status);
            require(status, "calendar");
            gregorian->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
            gregorian->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
        }
        return *gregorian;
    }

    icu::GregorianCalendar& at(const TimeZone& zone, double unixSeconds) {
        auto& calendar = at(zone);
        UErrorCode status = U_ZERO_ERROR;
        calendar.setTime(unixSeconds * 1000, status);
        return calendar;
    }

    int firstWeekdayOf(const std::string& locale) {
        if (!firstDay) {
            firstDay = firstWeekday(dateLocale(locale));
        }
        return *firstDay;
    }

    /// The moment that the calendar is set to.
    std::optional<Instant> instant() const {
        UErrorCode status = U_ZERO_ERROR;
        const auto instant = Instant::fromUnixSeconds(gregorian->getTime(status) / 1000);
        return U_SUCCESS(status) && instant.isValid() ? std::optional(instant) : std::nullopt;
    }
};

Calendar::Calendar(TimeZone zone, std::string locale)
    : m_zone(std::move(zone)), m_locale(std::move(locale)), m_engine(std::make_unique<Engine>()) {}

Calendar::~Calendar() = default;
Calendar::Calendar(Calendar&&) noexcept = default;
Calendar& Calendar::operator=(Calendar&&) noexcept = default;

std::optional<DayNumber> Calendar::day(Instant instant) const {
    const auto fields = components(instant);
    if (!fields) {
        return std::nullopt;
    }
    return dayNumber({.year = fields->year, .month = fields->month, .day = fields->day});
}

std::optional<Instant> Calendar::noon(DayNumber number) const {
    const auto civil = civilDayOfNumber(number);
    if (!civil) {
        return std::nullopt;
    }
    const auto noon =
        instant({.year = civil->year, .month = civil->month, .day = civil->day, .hour = 12});
    // A zone that changed its side of the date line has days that nobody lived through.
    return noon && day(*noon) == number ? noon : std::nullopt;
}

std::optional<Instant> Calendar::startOfDay(Instant instant) const {
    const auto fields = components(instant);
    if (!fields) {
        return std::nullopt;
    }
    return this->instant({.year = fields->year, .month = fields->month, .day = fields->day});
}

std::optional<DateInterval> Calendar::interval(CalendarPeriod period, Instant instant) const {
    const auto fields = components(instant);
    const auto today = fields ? daysSince1970({fields->year, fields->month, fields->day})
                              : std::optional<std::int64_t>();
    if (!today) {
        return std::nullopt;
    }
    auto first = *today;
    auto next = first + 1;
    switch (period) {
    case CalendarPeriod::day:
        break;
    case CalendarPeriod::week:
        first -= daysSinceWeekday(first, m_engine->firstWeekdayOf(m_locale));
        next = first + kDaysOfWeek;
        break;
    case CalendarPeriod::month:
        first = *daysSince1970({fields->year, fields->month, 1});
        next = *daysSince1970(
            {fields->month == 12 ? fields->year + 1 : fields->year, fields->month % 12 + 1, 1});
        break;
    }
    // By the calendar's days and not by adding to a moment: a day that begins at one o'clock, or
    // that a zone skipped altogether, moves no other day's start.
    const auto startOf = [&](std::int64_t day) {
        const auto civil = civilDay(day);
        return this->instant({.year = civil.year, .month = civil.month, .day = civil.day});
    };
    const auto start = startOf(first);
    const auto end = startOf(next);
    return start && end ? std::optional(DateInterval{*start, *end}) : std::nullopt;
}

std::optional<DateComponents> Calendar::components(Instant instant) const {
    if (!instant.isValid()) {
        return std::nullopt;
    }
    auto& calendar = m_engine->at(m_zone, std::floor(instant.unixSeconds()));
    UErrorCode status = U_ZERO_ERROR;
    const auto isBeforeYearOne =
        calendar.get(UCAL_ERA, status) == icu::GregorianCalendar::EEras::BC;
    const DateComponents fields{.year = calendar.get(UCAL_YEAR, status),
                                .month = calendar.get(UCAL_MONTH, status) + 1,
                                .day = calendar.get(UCAL_DATE, status),
                                .hour = calendar.get(UCAL_HOUR_OF_DAY, status),
                                .minute = calendar.get(UCAL_MINUTE, status),
                                .second = calendar.get(UCAL_SECOND, status)};
    return U_SUCCESS(status) && !isBeforeYearOne ? std::optional(fields) : std::nullopt;
}

std::optional<Instant> Calendar::instant(const DateComponents& fields) const {
    const auto isTime = fields.hour >= 0 && fields.hour < 24 && fields.minute >= 0 &&
                        fields.minute < 60 && fields.second >= 0 && fields.second < 60;
    // Checked here and not by ICU's strict mode, which would refuse skipped wall times too.
    if (!isTime || !daysSince1970({fields.year, fields.month, fields.day})) {
        return std::nullopt;
    }
    auto& calendar = m_engine->at(m_zone);
    calendar.clear();
    calendar.set(fields.year, fields.month - 1, fields.day, fields.hour, fields.minute,
                 fields.second);
    return m_engine->instant();
}

std::optional<Instant> Calendar::adding(Instant instant, CalendarUnit unit, int amount) const {
    if (!instant.isValid()) {
        return std::nullopt;
    }
    // ICU counts whole milliseconds; the rest is carried along, so that nothing is lost.
    const auto wholeSeconds = std::floor(instant.unixSeconds());
    auto& calendar = m_engine->at(m_zone, wholeSeconds);
    UErrorCode status = U_ZERO_ERROR;
    switch (unit) {
    case CalendarUnit::minute:
        calendar.add(UCAL_MINUTE, amount, status);
        break;
    case CalendarUnit::hour:
        calendar.add(UCAL_HOUR_OF_DAY, amount, status);
        break;
    case CalendarUnit::day:
        calendar.add(UCAL_DATE, amount, status);
        break;
    }
    const auto shifted = calendar.getTime(status) / 1000;
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    const auto result = instant + (shifted - wholeSeconds);
    return result.isValid() ? std::optional(result) : std::nullopt;
}

} // namespace korvex::base
