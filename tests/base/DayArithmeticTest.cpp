#include "base/DayArithmetic.h"

#include "support/Moments.h"

#include <gtest/gtest.h>

#include <limits>

namespace korvex::base {
namespace {

TEST(DayArithmetic, CountsEachDayOfTheHybridCalendarOnce) {
    const auto first = *daysSince1970({1, 1, 1});
    const auto last = *daysSince1970({9999, 12, 31});
    EXPECT_EQ(civilDay(first - 1), (CivilDay{0, 12, 31}));
    EXPECT_EQ(civilDay(last + 1), (CivilDay{10000, 1, 1}));

    DayNumber previous = 0;
    for (auto day = first; day <= last; ++day) {
        const auto civil = civilDay(day);
        const auto number = dayNumber(civil);
        ASSERT_GT(number, previous);
        ASSERT_EQ(daysSince1970(civil), day) << number;
        ASSERT_EQ(civilDayOfNumber(number), civil);
        previous = number;
    }
    // 9999 years with a leap day each fourth, less the ten days that the reform dropped and the
    // leap days of the centuries after it that 400 does not divide.
    EXPECT_EQ(last - first + 1, 9999 * 365 + 9999 / 4 - 10 - (99 - 16 - (99 / 4 - 16 / 4)));
}

TEST(DayArithmetic, AgreesWithTheCalendarInUtc) {
    const Calendar calendar(TimeZone::utc());
    // A step that is prime to the months and years, so that all of their days come up.
    for (auto day = *daysSince1970({1, 1, 1}); day < *daysSince1970({4001, 1, 1}); day += 37) {
        const auto number = dayNumber(civilDay(day));
        const auto noon = noonInUtc(number);
        ASSERT_EQ(calendar.noon(number), noon) << number;
        ASSERT_EQ(noon, Instant::fromUnixSeconds(static_cast<double>(day) * 86'400 + 43'200));
    }
}

TEST(DayArithmetic, RefusesWhatIsNoDay) {
    using Limits = std::numeric_limits<DayNumber>;
    for (const auto number : std::initializer_list<DayNumber>{
             0, 10100, 100000000, 99991232, 20250229, 19000229, 20250431, 20251301, 20250015,
             20250100, 15821005, 15821014, -10101, Limits::max(), Limits::min()}) {
        EXPECT_FALSE(civilDayOfNumber(number)) << number;
        EXPECT_FALSE(noonInUtc(number)) << number;
    }
    // A leap day in the Julian calendar only.
    EXPECT_TRUE(civilDayOfNumber(15000229));
    // A day, but after all instants.
    EXPECT_TRUE(civilDayOfNumber(99991231));
    EXPECT_FALSE(noonInUtc(99991231));
}

} // namespace
} // namespace korvex::base
