#include "base/DayArithmetic.h"

namespace korvex::base {

namespace {

/// 1582-10-15, the first Gregorian day; the day before is the Julian 1582-10-04.
constexpr std::int64_t kFirstGregorianDay = -141'427;

// Both count years from March, so that the leap day is a year's last. An era is the time after
// which the calendar repeats.
constexpr std::int64_t kGregorianEraDays = 146'097; // 400 years
constexpr std::int64_t kJulianEraDays = 1461;       // 4 years
// From March 1 of the year 0 to 1970-01-01, in each calendar.
constexpr std::int64_t kGregorianOffset = 719'468;
constexpr std::int64_t kJulianOffset = 719'470;

constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
    return (value >= 0 ? value : value - (divisor - 1)) / divisor;
}

constexpr std::int64_t dayOfMarchYear(const CivilDay& day) {
    const auto monthsSinceMarch = day.month > 2 ? day.month - 3 : day.month + 9;
    return (153 * monthsSinceMarch + 2) / 5 + day.day - 1;
}

constexpr std::int64_t gregorianDays(const CivilDay& day) {
    const std::int64_t year = day.year - (day.month <= 2 ? 1 : 0);
    const auto era = floorDivide(year, 400);
    const auto yearOfEra = year - era * 400;
    return era * kGregorianEraDays + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 +
           dayOfMarchYear(day) - kGregorianOffset;
}

constexpr std::int64_t julianDays(const CivilDay& day) {
    const std::int64_t year = day.year - (day.month <= 2 ? 1 : 0);
    const auto era = floorDivide(year, 4);
    return era * kJulianEraDays + (year - era * 4) * 365 + dayOfMarchYear(day) - kJulianOffset;
}

constexpr CivilDay civilDayOf(std::int64_t marchYear, std::int64_t dayOfYear) {
    const auto monthsSinceMarch = (5 * dayOfYear + 2) / 153;
    const auto day = dayOfYear - (153 * monthsSinceMarch + 2) / 5 + 1;
    const auto month = monthsSinceMarch < 10 ? monthsSinceMarch + 3 : monthsSinceMarch - 9;
    return {.year = static_cast<int>(marchYear + (month <= 2 ? 1 : 0)),
            .month = static_cast<int>(month),
            .day = static_cast<int>(day)};
}

} // namespace

std::optional<std::int64_t> daysSince1970(const CivilDay& day) {
    if (day.year < 1 || day.year > 9999 || day.month < 1 || day.month > 12 || day.day < 1 ||
        day.day > 31) {
        return std::nullopt;
    }
    const auto gregorian = gregorianDays(day);
    const auto days = gregorian >= kFirstGregorianDay ? gregorian : julianDays(day);
    // February 30 comes back as March 1, the ten days that 1582 skipped as days after them.
    if (civilDay(days) != day) {
        return std::nullopt;
    }
    return days;
}

CivilDay civilDay(std::int64_t daysSince1970) {
    if (daysSince1970 < kFirstGregorianDay) {
        const auto days = daysSince1970 + kJulianOffset;
        const auto era = floorDivide(days, kJulianEraDays);
        const auto dayOfEra = days - era * kJulianEraDays;
        const auto yearOfEra = (dayOfEra - dayOfEra / 1460) / 365;
        return civilDayOf(era * 4 + yearOfEra, dayOfEra - yearOfEra * 365);
    }
    const auto days = daysSince1970 + kGregorianOffset;
    const auto era = floorDivide(days, kGregorianEraDays);
    const auto dayOfEra = days - era * kGregorianEraDays;
    const auto yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    return civilDayOf(era * 400 + yearOfEra,
                      dayOfEra - (yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100));
}

int daysSinceWeekday(std::int64_t daysSince1970, int weekday) {
    constexpr int kWeekdayOf1970 = 4; // a Thursday
    const auto days = daysSince1970 + kWeekdayOf1970 - weekday;
    return static_cast<int>(days - floorDivide(days, kDaysOfWeek) * kDaysOfWeek);
}

std::optional<CivilDay> civilDayOfNumber(DayNumber number) {
    if (number < 1'01'01 || number > 9999'12'31) {
        return std::nullopt;
    }
    const CivilDay day{.year = static_cast<int>(number / 10'000),
                       .month = static_cast<int>(number / 100 % 100),
                       .day = static_cast<int>(number % 100)};
    if (!daysSince1970(day)) {
        return std::nullopt;
    }
    return day;
}

std::optional<Instant> noonInUtc(DayNumber number) {
    const auto day = civilDayOfNumber(number);
    if (!day) {
        return std::nullopt;
    }
    constexpr std::int64_t kSecondsPerDay = 86'400;
    const auto seconds = *daysSince1970(*day) * kSecondsPerDay + kSecondsPerDay / 2;
    const auto noon = Instant::fromUnixSeconds(static_cast<double>(seconds));
    return noon.isValid() ? std::optional(noon) : std::nullopt;
}

} // namespace korvex::base
