#include "schedule/TodoReminderPreset.h"

#include "support/Moments.h"

#include <gtest/gtest.h>

#include <set>

namespace korvex::schedule {
namespace {

using tests::moment;
using tests::zone;
using enum TodoReminderPreset;

TEST(TodoReminderPreset, CountsBackOnTheCalendar) {
    struct Case {
        const char* zone;
        const char* anchor;
        TodoReminderPreset preset;
        const char* reminder;
    };
    for (const auto& each : {
             Case{"UTC", "2025-03-10T09:00", atDueTime, "2025-03-10T09:00Z"},
             Case{"UTC", "2025-03-10T00:10", fifteenMinutes, "2025-03-09T23:55Z"},
             Case{"UTC", "2025-03-10T09:00", oneHour, "2025-03-10T08:00Z"},
             Case{"UTC", "2025-03-01T09:00", oneDay, "2025-02-28T09:00Z"},
             Case{"UTC", "2025-03-01T09:00", twoDays, "2025-02-27T09:00Z"},
             Case{"UTC", "2025-03-01T09:00", oneWeek, "2025-02-22T09:00Z"},
             // The clocks go forward in the night to the 30th: nine o'clock stays nine o'clock, but
             // an hour is an hour.
             Case{"Europe/Berlin", "2025-03-30T09:00", oneDay, "2025-03-29T09:00+01:00"},
             Case{"Europe/Berlin", "2025-03-31T09:00", twoDays, "2025-03-29T09:00+01:00"},
             Case{"Europe/Berlin", "2025-04-05T09:00", oneWeek, "2025-03-29T09:00+01:00"},
             Case{"Europe/Berlin", "2025-03-30T03:30", oneHour, "2025-03-30T01:30+01:00"},
             Case{"Europe/Berlin", "2025-03-30T03:10", fifteenMinutes, "2025-03-30T01:55+01:00"},
             Case{"Europe/Berlin", "2025-10-27T09:00", oneDay, "2025-10-26T09:00+01:00"},
             Case{"Europe/Berlin", "2025-10-26T09:00", oneDay, "2025-10-25T09:00+02:00"},
             // Half past two does not exist on the day before.
             Case{"Europe/Berlin", "2025-03-31T02:30", oneDay, "2025-03-30T03:00+02:00"},
         }) {
        EXPECT_EQ(reminderDate(each.preset, moment(each.anchor, each.zone),
                               base::Calendar(zone(each.zone))),
                  moment(each.reminder))
            << each.zone << " " << each.anchor << " " << name(each.preset);
    }
    EXPECT_FALSE(
        reminderDate(oneDay, base::Instant::distantPast(), base::Calendar(base::TimeZone::utc())));
}

TEST(TodoReminderPreset, AllDayTodosCountBackFromATimeOnTheirDay) {
    struct Case {
        const char* zone;
        base::DayNumber day;
        int minutes;
        const char* anchor;
    };
    for (const auto& each : {
             Case{"UTC", 20250310, 540, "2025-03-10T09:00Z"},
             Case{"UTC", 20250310, 0, "2025-03-10T00:00Z"},
             Case{"UTC", 20250310, 1439, "2025-03-10T23:59Z"},
             Case{"America/New_York", 20250310, 540, "2025-03-10T09:00-04:00"},
             Case{"Europe/Berlin", 20250330, 150, "2025-03-30T03:00+02:00"},
             Case{"Europe/Berlin", 20251026, 150, "2025-10-26T02:30+02:00"},
             Case{"America/Sao_Paulo", 20181104, 0, "2018-11-04T01:00-02:00"},
         }) {
        EXPECT_EQ(allDayAnchor(each.day, each.minutes, base::Calendar(zone(each.zone))),
                  moment(each.anchor))
            << each.zone << " " << each.day << " " << each.minutes;
    }
    const base::Calendar utc(base::TimeZone::utc());
    EXPECT_FALSE(allDayAnchor(20250229, 540, utc));
    EXPECT_FALSE(allDayAnchor(20250310, 1440, utc));
    EXPECT_FALSE(allDayAnchor(20250310, -5, utc));
}

TEST(TodoReminderPreset, IsFoundByItsName) {
    std::set<std::string_view> titles;
    for (const auto preset : kAllReminderPresets) {
        EXPECT_EQ(reminderPreset(name(preset)), preset);
        titles.insert(title(preset));
    }
    EXPECT_EQ(titles.size(), kAllReminderPresets.size());
    EXPECT_FALSE(reminderPreset("OneHour"));
    EXPECT_FALSE(reminderPreset("1 hour before"));
    EXPECT_FALSE(reminderPreset(""));
}

} // namespace
} // namespace korvex::schedule
