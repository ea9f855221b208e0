#include "base/DateFormats.h"

#include "support/Moments.h"
#include "support/ScopedEnvironment.h"

#include <gtest/gtest.h>

namespace korvex::base {
namespace {

using tests::moment;
using tests::ScopedEnvironment;
using tests::zone;

TEST(DateFormats, SpeaksTheLocale) {
    struct Case {
        const char* locale;
        const char* dayWithWeekday;
        const char* dayWithFullMonth;
        const char* time;
        const char* dayAndTime;
        const char* words[3];
    };
    // American English has a narrow space, U+202F, before AM and PM.
    for (const auto& each : {
             Case{"en_US",
                  "Wed, Jan 15, 2025",
                  "January 15, 2025",
                  "9:05\u202fAM",
                  "Jan 15, 2025, 9:05\u202fAM",
                  {"Yesterday", "Today", "Tomorrow"}},
             Case{"en-GB",
                  "Wed, 15 Jan 2025",
                  "15 January 2025",
                  "09:05",
                  "15 Jan 2025, 09:05",
                  {"Yesterday", "Today", "Tomorrow"}},
             Case{"de_DE.UTF-8",
                  "Mi., 15. Jan. 2025",
                  "15. Januar 2025",
                  "09:05",
                  "15. Jan. 2025, 09:05",
                  {"Gestern", "Heute", "Morgen"}},
         }) {
        const DateFormats formats(each.locale, zone("Europe/Berlin"));
        const auto instant = moment("2025-01-15T09:05", "Europe/Berlin");
        EXPECT_EQ(formats.dayWithWeekday(instant), each.dayWithWeekday);
        EXPECT_EQ(formats.dayWithFullMonth(instant), each.dayWithFullMonth);
        EXPECT_EQ(formats.shortTime(instant), each.time);
        EXPECT_EQ(formats.dayAndShortTime(instant), each.dayAndTime);
        for (const int offset : {-1, 0, 1}) {
            EXPECT_EQ(formats.relativeDayWord(offset), each.words[offset + 1]);
        }
    }
}

TEST(DateFormats, CountsYearsAsTheGregorianCalendarDoesAndTheJulianBeforeIt) {
    const DateFormats thai("th_TH", TimeZone::utc());
    EXPECT_NE(thai.dayWithFullMonth(moment("2025-01-15T09:00")).find("2025"), std::string::npos);
    const DateFormats english("en_US", TimeZone::utc());
    EXPECT_EQ(english.dayWithFullMonth(Instant::distantPast()), "January 1, 1");
}

TEST(DateFormats, TakesTheUsersLocaleAsTheCLibraryDoes) {
    struct Case {
        const char* all;
        const char* time;
        const char* lang;
        const char* day;
    };
    for (const auto& each : {
             Case{"de_DE.UTF-8", "en_US.UTF-8", "en_US.UTF-8", "15. Januar 2025"},
             Case{"", "de_DE@euro", "en_US.UTF-8", "15. Januar 2025"},
             Case{"", "", "de_DE.utf8", "15. Januar 2025"},
             Case{"C.UTF-8", "de_DE", "de_DE", "January 15, 2025"},
             Case{"POSIX", "de_DE", "de_DE", "January 15, 2025"},
             Case{"", "", "", "January 15, 2025"},
         }) {
        const ScopedEnvironment all("LC_ALL", each.all);
        const ScopedEnvironment time("LC_TIME", each.time);
        const ScopedEnvironment lang("LANG", each.lang);
        EXPECT_EQ(DateFormats("", TimeZone::utc()).dayWithFullMonth(moment("2025-01-15T09:00")),
                  each.day)
            << each.all << " " << each.time << " " << each.lang;
    }
}

} // namespace
} // namespace korvex::base
