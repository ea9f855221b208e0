#pragma once

#include "base/Calendar.h"

#include <cstdint>
#include <optional>

namespace korvex::base {

/// The calendar of `Calendar` (Gregorian, Julian before 1582-10-15) without zones and without ICU:
/// what must be cheap, and what means UTC.

struct CivilDay {
    int year;
    int month;
    int day;

    bool operator==(const CivilDay&) const = default;
};

/// Days since 1970-01-01; absent for what is no day of the years 1 to 9999.
std::optional<std::int64_t> daysSince1970(const CivilDay& day);
/// The day that lies so many days after 1970-01-01; the year before 1 is 0.
CivilDay civilDay(std::int64_t daysSince1970);

inline constexpr int kDaysOfWeek = 7;
/// How long ago the last such weekday was, from 0 for Sunday on: 0 to 6 days.
int daysSinceWeekday(std::int64_t daysSince1970, int weekday);

constexpr DayNumber dayNumber(const CivilDay& day) {
    return DayNumber{day.year} * 10'000 + day.month * 100 + day.day;
}
/// The day of a number; absent for a number that is no day of the years 1 to 9999.
std::optional<CivilDay> civilDayOfNumber(DayNumber number);

/// Noon of the day in UTC; absent for a number that is no day, or whose noon is no valid instant.
std::optional<Instant> noonInUtc(DayNumber number);

} // namespace korvex::base
