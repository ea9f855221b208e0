#include "base/Calendar.h"

#include "support/Moments.h"

#include <gtest/gtest.h>

#include <random>

namespace korvex::base {
namespace {

TEST(IsoText, ReadsDays) {
    EXPECT_EQ(dayFromIsoText("2025-03-10"), 20250310);
    EXPECT_EQ(dayFromIsoText("0001-01-01"), 10101);
    EXPECT_EQ(dayFromIsoText("9999-12-31"), 99991231);
    for (const char* text :
         {"", "2025-02-29", "2025-3-10", "20250310", "2025-03-10 ", " 2025-03-10", "2025-03-1O",
          "0000-01-01", "1582-10-10", "2025-03-10T09:00", "-025-03-10", "2025/03/10"}) {
        EXPECT_FALSE(dayFromIsoText(text)) << text;
    }
}

TEST(IsoText, ReadsInstantsAndWallClockTimes) {
    const Calendar berlin(tests::zone("Europe/Berlin"));
    for (const auto& [text, instant] : {
             std::pair{"2025-03-10T14:30", "2025-03-10T13:30:00.000Z"},
             std::pair{"2025-03-10T14:30:05", "2025-03-10T13:30:05.000Z"},
             std::pair{"2025-03-10T14:30:05.250", "2025-03-10T13:30:05.250Z"},
             std::pair{"2025-07-10T14:30", "2025-07-10T12:30:00.000Z"},
             std::pair{"2025-03-30T02:30", "2025-03-30T01:00:00.000Z"},
             std::pair{"2025-03-10T14:30Z", "2025-03-10T14:30:00.000Z"},
             std::pair{"2025-03-10T14:30:05.250Z", "2025-03-10T14:30:05.250Z"},
             std::pair{"2025-03-10T14:30+05:30", "2025-03-10T09:00:00.000Z"},
             std::pair{"2025-03-10T23:30:00-02:00", "2025-03-11T01:30:00.000Z"},
         }) {
        const auto read = instantFromIsoText(text, berlin);
        ASSERT_TRUE(read) << text;
        EXPECT_EQ(isoText(*read), instant) << text;
    }
    for (const char* text :
         {"", "2025-03-10", "2025-03-10T", "2025-03-10T14", "2025-03-10 14:30", "2025-03-10T24:00",
          "2025-03-10T14:60", "2025-03-10T14:30:60Z", "2025-03-10T14:30z", "2025-03-10T14:30+2",
          "2025-03-10T14:30+02:60", "2025-03-10T14:30+24:00", "2025-03-10T14:30Z ",
          "2025-03-10T14:30:05.", "2025-03-10T14:30:05.25", "2025-02-29T12:00Z",
          "9999-01-01T00:00Z", "2025-03-10T14:30+02:00Z"}) {
        EXPECT_FALSE(instantFromIsoText(text, berlin)) << text;
    }
}

TEST(IsoText, WritesWhatItReads) {
    const Calendar utc(TimeZone::utc());
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::int64_t> milliseconds(-63'114'076'800'000,
                                                             63'113'904'000'000);
    for (int i = 0; i < 20'000; ++i) {
        const Instant instant{static_cast<double>(milliseconds(random)) / 1000};
        const auto text = isoText(instant);
        const auto read = instantFromIsoText(text, utc);
        ASSERT_TRUE(read) << text;
        // At the ends of time a double holds no more than microseconds.
        ASSERT_NEAR(read->seconds, instant.seconds, 0.000'1) << text;
    }
    EXPECT_EQ(isoText(Instant::distantPast()), "0001-01-01T00:00:00.000Z");
    EXPECT_EQ(isoText(Instant::distantFuture()), "4001-01-01T00:00:00.000Z");
}

} // namespace
} // namespace korvex::base
