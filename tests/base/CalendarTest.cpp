#include "base/Calendar.h"

#include "base/DayArithmetic.h"
#include "support/Moments.h"
#include "support/ScopedEnvironment.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace korvex::base {
namespace {

using tests::moment;
using tests::ScopedEnvironment;
using tests::zone;

std::string textOf(const std::optional<Instant>& instant) {
    return instant ? isoText(*instant) : "absent";
}

TEST(Calendar, GivesNoonOfADayInTheZone) {
    struct Case {
        const char* zone;
        DayNumber day;
        const char* noon;
    };
    for (const auto& each : {
             Case{"UTC", 20250115, "2025-01-15T12:00:00.000Z"},
             Case{"Europe/Berlin", 20250329, "2025-03-29T11:00:00.000Z"},
             Case{"Europe/Berlin", 20250330, "2025-03-30T10:00:00.000Z"}, // clocks go forward
             Case{"Europe/Berlin", 20251026, "2025-10-26T11:00:00.000Z"}, // and back
             Case{"America/Sao_Paulo", 20181103, "2018-11-03T15:00:00.000Z"},
             Case{"America/Sao_Paulo", 20181104, "2018-11-04T14:00:00.000Z"},
             Case{"Pacific/Apia", 20111229, "2011-12-29T22:00:00.000Z"},
             Case{"Pacific/Apia", 20111230, "absent"}, // the zone skipped this day
             Case{"Pacific/Apia", 20111231, "2011-12-30T22:00:00.000Z"},
             Case{"Asia/Kolkata", 20250115, "2025-01-15T06:30:00.000Z"},
             Case{"UTC", 10101, "0001-01-01T12:00:00.000Z"},
             Case{"UTC", 15821004, "1582-10-04T12:00:00.000Z"},
             Case{"UTC", 15821010, "absent"}, // no such day between the two calendars
             Case{"UTC", 40001231, "4000-12-31T12:00:00.000Z"},
             Case{"UTC", 40010101, "absent"}, // after the distant future
             Case{"UTC", 20250229, "absent"},
             Case{"UTC", 10100, "absent"},
             Case{"UTC", 100000000, "absent"},
             Case{"UTC", -20250115, "absent"},
         }) {
        const Calendar calendar(zone(each.zone));
        EXPECT_EQ(textOf(calendar.noon(each.day)), each.noon) << each.zone << " " << each.day;
    }
}

TEST(Calendar, FindsTheDayOfNoonAgain) {
    std::mt19937 random(20250115);
    std::uniform_int_distribution<std::int64_t> someDay(-719'000, 741'000);
    for (const char* name : {"UTC", "Europe/Berlin", "America/Sao_Paulo", "Asia/Kolkata",
                             "Pacific/Kiritimati", "America/St_Johns"}) {
        const Calendar calendar(zone(name));
        for (int i = 0; i < 2000; ++i) {
            const auto number = dayNumber(civilDay(someDay(random)));
            const auto noon = calendar.noon(number);
            ASSERT_TRUE(noon) << name << " " << number;
            ASSERT_EQ(calendar.day(*noon), number) << name;
            ASSERT_EQ(calendar.components(*noon)->hour, 12) << name << " " << number;
            ASSERT_EQ(calendar.day(*calendar.startOfDay(*noon)), number) << name;
        }
    }
}

TEST(Calendar, ReadsOnlyInstantsBetweenTheDistantPastAndTheDistantFuture) {
    const Calendar utc(TimeZone::utc());
    EXPECT_EQ(utc.day(Instant::distantPast()), 10101);
    EXPECT_EQ(utc.day(Instant::distantFuture()), 40010101);
    for (const double seconds : {
             std::nextafter(Instant::distantPast().seconds, -1e300),
             std::nextafter(Instant::distantFuture().seconds, 1e300),
             std::numeric_limits<double>::infinity(),
             -std::numeric_limits<double>::infinity(),
             std::numeric_limits<double>::quiet_NaN(),
         }) {
        EXPECT_FALSE(utc.day({seconds})) << seconds;
        EXPECT_FALSE(utc.components({seconds})) << seconds;
        EXPECT_FALSE(utc.startOfDay({seconds})) << seconds;
        EXPECT_FALSE(utc.adding({seconds}, CalendarUnit::day, 0)) << seconds;
    }
    EXPECT_FALSE(utc.adding(Instant::distantFuture(), CalendarUnit::minute, 1));
    EXPECT_FALSE(utc.adding(Instant::distantPast(), CalendarUnit::day, -1));
    // West of Greenwich the distant past still lies in the year before 1.
    EXPECT_FALSE(Calendar(zone("America/New_York")).day(Instant::distantPast()));
}

TEST(Calendar, TakesTheNextExistingTimeAndTheFirstOfTwo) {
    struct Case {
        const char* zone;
        DateComponents wallClock;
        const char* instant;
    };
    for (const auto& each : {
             Case{"Europe/Berlin", {2025, 3, 30, 2, 30, 0}, "2025-03-30T01:00:00.000Z"},
             Case{"Europe/Berlin", {2025, 10, 26, 2, 30, 0}, "2025-10-26T00:30:00.000Z"},
             Case{"America/Sao_Paulo", {2018, 11, 4, 0, 0, 0}, "2018-11-04T03:00:00.000Z"},
             Case{"America/Sao_Paulo", {2018, 2, 17, 23, 30, 0}, "2018-02-18T01:30:00.000Z"},
             Case{"Pacific/Apia", {2011, 12, 30, 8, 0, 0}, "2011-12-30T10:00:00.000Z"},
             Case{"UTC", {2024, 2, 29, 23, 59, 59}, "2024-02-29T23:59:59.000Z"},
             Case{"UTC", {2025, 2, 29, 0, 0, 0}, "absent"},
             Case{"UTC", {2025, 2, 30, 0, 0, 0}, "absent"},
             Case{"UTC", {2025, 13, 1, 0, 0, 0}, "absent"},
             Case{"UTC", {2025, 0, 1, 0, 0, 0}, "absent"},
             Case{"UTC", {2025, 1, 0, 0, 0, 0}, "absent"},
             Case{"UTC", {2025, 1, 1, 24, 0, 0}, "absent"},
             Case{"UTC", {2025, 1, 1, 0, 60, 0}, "absent"},
             Case{"UTC", {2025, 1, 1, 0, 0, 60}, "absent"},
             Case{"UTC", {2025, 1, 1, -1, 0, 0}, "absent"},
             Case{"UTC", {0, 12, 31, 0, 0, 0}, "absent"},
             Case{"UTC", {1582, 10, 14, 0, 0, 0}, "absent"},
             Case{"UTC", {5000, 1, 1, 0, 0, 0}, "absent"},
         }) {
        const Calendar calendar(zone(each.zone));
        EXPECT_EQ(textOf(calendar.instant(each.wallClock)), each.instant)
            << each.zone << " expected " << each.instant;
    }
}

TEST(Calendar, MakesPeriodsOfWholeDays) {
    struct Case {
        const char* zone;
        const char* locale;
        CalendarPeriod period;
        const char* during;
        const char* start;
        const char* end;
    };
    using enum CalendarPeriod;
    for (const auto& each : {
             Case{"Europe/Berlin", "", day, "2025-03-30T15:00", "2025-03-30T00:00",
                  "2025-03-31T00:00"},
             // Midnight does not exist: the day starts at one o'clock, the next where it always
             // does.
             Case{"America/Sao_Paulo", "", day, "2018-11-04T15:00", "2018-11-04T01:00",
                  "2018-11-05T00:00"},
             Case{"Pacific/Apia", "", day, "2011-12-29T15:00", "2011-12-29T00:00",
                  "2011-12-31T00:00"},
             Case{"UTC", "", day, "1582-10-04T15:00", "1582-10-04T00:00", "1582-10-15T00:00"},
             Case{"Europe/Berlin", "de_DE", week, "2025-03-30T23:59", "2025-03-24T00:00",
                  "2025-03-31T00:00"},
             Case{"Europe/Berlin", "en-US", week, "2025-03-30T00:00", "2025-03-30T00:00",
                  "2025-04-06T00:00"},
             Case{"Europe/Berlin", "fa_IR", week, "2025-01-01T12:00", "2024-12-28T00:00",
                  "2025-01-04T00:00"},
             Case{"America/Sao_Paulo", "en_US", week, "2018-11-07T12:00", "2018-11-04T01:00",
                  "2018-11-11T00:00"},
             // A week that has no Friday.
             Case{"Pacific/Apia", "en_GB", week, "2011-12-31T00:00", "2011-12-26T00:00",
                  "2012-01-02T00:00"},
             Case{"UTC", "en_GB", week, "1582-10-15T12:00", "1582-10-01T00:00", "1582-10-18T00:00"},
             Case{"UTC", "en_US", week, "1969-12-31T12:00", "1969-12-28T00:00", "1970-01-04T00:00"},
             Case{"Asia/Kolkata", "", month, "2024-02-29T23:59", "2024-02-01T00:00",
                  "2024-03-01T00:00"},
             Case{"Europe/Berlin", "", month, "2025-12-31T23:59", "2025-12-01T00:00",
                  "2026-01-01T00:00"},
             Case{"UTC", "", month, "1582-10-20T12:00", "1582-10-01T00:00", "1582-11-01T00:00"},
         }) {
        const Calendar calendar(zone(each.zone), each.locale);
        const auto interval = calendar.interval(each.period, moment(each.during, each.zone));
        ASSERT_TRUE(interval) << each.zone << " " << each.during;
        EXPECT_EQ(textOf(interval->start), textOf(moment(each.start, each.zone))) << each.during;
        EXPECT_EQ(textOf(interval->end), textOf(moment(each.end, each.zone))) << each.during;
        if (each.period == day) {
            EXPECT_EQ(calendar.startOfDay(moment(each.during, each.zone)), interval->start);
        }
    }
    const Calendar utc(TimeZone::utc());
    EXPECT_FALSE(utc.interval(day, Instant::distantFuture())) << "its end is no date";
    EXPECT_FALSE(utc.interval(month, {std::numeric_limits<double>::quiet_NaN()}));
}

TEST(Calendar, AddsDaysOnTheWallClockAndHoursOnTheStopwatch) {
    struct Case {
        const char* zone;
        const char* from;
        CalendarUnit unit;
        int amount;
        const char* to;
    };
    using enum CalendarUnit;
    for (const auto& each : {
             Case{"Europe/Berlin", "2025-03-29T09:00", day, 1, "2025-03-30T07:00:00.000Z"},
             Case{"Europe/Berlin", "2025-03-31T09:00", day, -7, "2025-03-24T08:00:00.000Z"},
             Case{"Europe/Berlin", "2025-03-29T02:30", day, 1, "2025-03-30T01:00:00.000Z"},
             Case{"Europe/Berlin", "2025-03-30T03:30", hour, -1, "2025-03-30T00:30:00.000Z"},
             Case{"Europe/Berlin", "2025-03-30T03:10", minute, -15, "2025-03-30T00:55:00.000Z"},
             Case{"Pacific/Apia", "2011-12-29T12:00", day, 1, "2011-12-30T22:00:00.000Z"},
             Case{"UTC", "1582-10-04T12:00", day, 1, "1582-10-15T12:00:00.000Z"},
             Case{"UTC", "2025-01-31T12:00:00.250", day, 29, "2025-03-01T12:00:00.250Z"},
         }) {
        const Calendar calendar(zone(each.zone));
        EXPECT_EQ(textOf(calendar.adding(moment(each.from, each.zone), each.unit, each.amount)),
                  each.to)
            << each.zone << " " << each.from;
    }
    const Instant instant{763'000'000.123'456'7};
    EXPECT_EQ(Calendar(zone("Europe/Berlin")).adding(instant, day, 0), instant) << "all of it";
}

TEST(TimeZone, ReadsTheMachinesZoneAnewEachTime) {
    for (const auto& [variable, name] :
         {std::pair{"Europe/Berlin", "Europe/Berlin"}, std::pair{":Asia/Kolkata", "Asia/Kolkata"},
          std::pair{"", "UTC"}}) {
        const ScopedEnvironment environment("TZ", variable);
        EXPECT_EQ(TimeZone::system().name(), name);
    }
}

} // namespace
} // namespace korvex::base
