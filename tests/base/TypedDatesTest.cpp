#include "base/TypedDates.h"

#include "base/MonthWords.h"
#include "base/Utf16.h"

#include <gtest/gtest.h>

namespace korvex::base {
namespace {

using Towards = TypedDates::Around::Towards;

/// A Monday.
constexpr CivilDay kToday{2025, 3, 10};

std::string written(const std::optional<CivilDay>& day) {
    return day ? std::to_string(dayNumber(*day)) : "none";
}

TEST(TypedDates, ReadsDaysAsPeopleOfTheLocaleTypeThem) {
    struct Case {
        const char* locale;
        const char* typed;
        const char* day;
    };
    for (const auto& each : {
             Case{"en_US", "3/4/2025", "20250304"},
             Case{"en_US", "3/4/25", "20250304"},
             Case{"en_US", " 3-4 ", "20260304"},
             Case{"en_US", "12.24", "20251224"},
             Case{"en_US", "24/12", "20251224"},
             Case{"en_US", "2025-04-03", "20250403"},
             Case{"en_US", "Mar 12", "20250312"},
             Case{"en_US", "10th of march", "none"},
             Case{"en_US", "March 10th, 2026", "20260310"},
             Case{"en_US", "2026 Dec 1", "20261201"},
             Case{"en_US", "Wed, Jan 15, 2025", "20250115"},
             Case{"en_US", "ma 10", "none"},
             Case{"en_US", "15", "20250315"},
             Case{"en_US", "9", "20250409"},
             Case{"en_US", "friday", "20250314"},
             Case{"en_US", "mon", "20250317"},
             Case{"en_US", "TODAY", "20250310"},
             Case{"en_US", "tomorrow", "20250311"},
             Case{"en_US", "in 3 days", "20250313"},
             Case{"en_US", "2/30/2025", "none"},
             Case{"en_US", "13/13", "none"},
             Case{"en_US", "3/4/5/6", "none"},
             Case{"en_US", "2025-03", "none"},
             Case{"en_US", "99999999999/1/1", "none"},
             Case{"en_US", "soon", "none"},
             Case{"en_US", "", "none"},
             Case{"en_DE", "4/3/2025", "20250304"},
             Case{"de_DE", "4.3.", "20260304"},
             Case{"de_DE", "24.12.25", "20251224"},
             Case{"de_DE", "4. März 2026", "20260304"},
             Case{"de_DE", "4 marz", "20260304"},
             Case{"de_DE", "übermorgen", "20250312"},
             Case{"de_DE", "Mi", "20250312"},
             Case{"fr_FR", "12 mar 2026", "20260312"},
             Case{"fr_FR", "mar.", "20250311"},
             Case{"fr_FR", "1 jui", "none"},
             Case{"ru_RU", "ян 10", "none"},
             Case{"ru_RU", "янв 10", "20260110"},
             Case{"ja_JP", "2025年4月3日", "20250403"},
             Case{"ja_JP", "２０２５／４／３", "20250403"},
             Case{"vi_VN", "3 tháng 4, 2025", "20250403"},
             Case{"ar_EG", "٣/٤/٢٠٢٥", "20250403"},
         }) {
        const TypedDates dates(each.locale);
        EXPECT_EQ(written(dates.day(utf16(each.typed), {.today = kToday, .shown = kToday})),
                  each.day)
            << each.locale << ": " << each.typed;
    }
}

/// What is left out is that of the day that was shown, but never on the wrong side of today.
TEST(TypedDates, WhatIsNotTypedIsNearTheDayThatWasShown) {
    struct Case {
        CivilDay shown;
        Towards towards;
        const char* typed;
        const char* day;
    };
    for (const auto& each : {
             Case{{2025, 12, 20}, Towards::future, "1/5", "20260105"},
             Case{{2027, 3, 20}, Towards::future, "3/1", "20270301"},
             Case{{2024, 6, 1}, Towards::future, "3/1", "20240301"},
             Case{{2025, 3, 10}, Towards::past, "12/28", "20241228"},
             Case{{2025, 3, 10}, Towards::past, "31", "none"},
             Case{{2025, 3, 10}, Towards::past, "28", "20250228"},
             Case{{2025, 3, 10}, Towards::past, "Monday", "20250303"},
             Case{{2025, 3, 10}, Towards::past, "Sunday", "20250309"},
             Case{{2025, 3, 10}, Towards::past, "yesterday", "20250309"},
         }) {
        const TypedDates dates("en_US");
        EXPECT_EQ(written(dates.day(
                      utf16(each.typed),
                      {.today = {2025, 3, 10}, .shown = each.shown, .towards = each.towards})),
                  each.day)
            << each.typed;
    }
}

TEST(TypedDates, ReadsTimesByEveryClock) {
    struct Case {
        const char* locale;
        const char* typed;
        std::optional<ClockTime> time;
    };
    constexpr std::nullopt_t kNone = std::nullopt;
    for (const auto& each : {
             Case{"en_US", "9", ClockTime{9, 0}},
             Case{"en_US", "930", ClockTime{9, 30}},
             Case{"en_US", "0930", ClockTime{9, 30}},
             Case{"en_US", "9:30 pm", ClockTime{21, 30}},
             Case{"en_US", "9:30\u202fPM", ClockTime{21, 30}},
             Case{"en_US", "9p", ClockTime{21, 0}},
             Case{"en_US", "930 p.m.", ClockTime{21, 30}},
             Case{"en_US", "12 am", ClockTime{0, 0}},
             Case{"en_US", "12:15 pm", ClockTime{12, 15}},
             Case{"en_US", "21.30", ClockTime{21, 30}},
             Case{"en_US", "21:30 pm", ClockTime{21, 30}},
             Case{"en_US", "9:30:15", ClockTime{9, 30}},
             Case{"en_US", "13 am", kNone},
             Case{"en_US", "24", kNone},
             Case{"en_US", "9:60", kNone},
             Case{"en_US", "9:30:99", kNone},
             Case{"en_US", "12345", kNone},
             Case{"en_US", "1:2:3:4", kNone},
             Case{"en_US", "noonish", kNone},
             Case{"en_US", "pm", kNone},
             Case{"en_US", "", kNone},
             Case{"de_DE", "9 Uhr", ClockTime{9, 0}},
             Case{"de_DE", "9 Uhr 30", ClockTime{9, 30}},
             Case{"fr_FR", "9h30", ClockTime{9, 30}},
             Case{"es_MX", "9:30 p. m.", ClockTime{21, 30}},
             Case{"ko_KR", "오후 9:30", ClockTime{21, 30}},
             Case{"ar_EG", "٩:٣٠ م", ClockTime{21, 30}},
         }) {
        EXPECT_EQ(TypedDates(each.locale).time(utf16(each.typed)), each.time)
            << each.locale << ": " << each.typed;
    }
}

/// Whatever a field shows, it reads again, in all languages that there are words for.
TEST(TypedDates, ReadsWhatItShows) {
    for (const auto* const locale :
         {"en_US", "en_DE", "de_DE", "fr_CA", "fi_FI", "bg_BG", "hr_HR", "hu_HU", "ko_KR", "zh_TW",
          "th_TH", "fa_IR", "ar_EG", "he_IL", "hi_IN", "pt_BR", "el_GR", "sv_SE", "vi_VN"}) {
        const TypedDates dates(locale);
        for (const CivilDay day : {CivilDay{2025, 3, 10}, CivilDay{1600, 1, 1}, {4000, 12, 31}}) {
            const auto shown = dates.shown(day);
            EXPECT_EQ(shown.places.size(), 3U) << locale;
            EXPECT_EQ(written(dates.day(shown.text, {.today = kToday, .shown = kToday})),
                      written(day))
                << locale << ": " << utf8(shown.text);
        }
        for (const ClockTime time : {ClockTime{0, 5}, ClockTime{9, 30}, {12, 0}, {23, 59}}) {
            EXPECT_EQ(dates.time(dates.shown(time).text), time)
                << locale << ": " << utf8(dates.shown(time).text);
        }
    }
}

TEST(MonthWords, KnowTheWeekOfTheRegionAndTheWordsOfTheLanguage) {
    struct Case {
        const char* locale;
        const char* title;
        const char* wholeDay;
        const char* first;
        const char* week;
        int column;
    };
    for (const auto& each : {
             Case{"en_US", "March 2025", "Monday, March 10, 2025", "Sunday", "+-----+", 1},
             Case{"en_DE", "March 2025", "Monday, 10 March 2025", "Monday", "-----++", 0},
             Case{"en-001-u-rg-dezzzz", "March 2025", "Monday, 10 March 2025", "Monday", "-----++",
                  0},
             Case{"de_DE", "März 2025", "Montag, 10. März 2025", "Montag", "-----++", 0},
             Case{"en_IL", "March 2025", "Monday, 10 March 2025", "Sunday", "-----++", 1},
         }) {
        const MonthWords words(each.locale);
        EXPECT_EQ(words.title(kToday), each.title) << each.locale;
        EXPECT_LT(words.shortTitle({2025, 9, 1}).size(), words.title({2025, 9, 1}).size());
        EXPECT_EQ(words.wholeDay(kToday), each.wholeDay) << each.locale;
        EXPECT_EQ(words.week().front().name, each.first) << each.locale;
        EXPECT_EQ(words.week().front().shortName.substr(0, 2), std::string(each.first, 2))
            << each.locale;
        EXPECT_EQ(words.column(kToday), each.column) << each.locale;
        std::string week;
        for (const auto& weekday : words.week()) {
            week += weekday.isWeekend ? '+' : '-';
        }
        EXPECT_EQ(week, each.week) << each.locale;
    }
    EXPECT_EQ(MonthWords("ar_EG").dayOfMonth(kToday), "١٠");
    EXPECT_EQ(MonthWords("ja_JP").dayOfMonth(kToday), "10");
    EXPECT_EQ(MonthWords("en_US").column({1600, 1, 1}), 6);
    EXPECT_THROW(static_cast<void>(MonthWords("en_US").column({2025, 2, 30})), std::out_of_range);
}

} // namespace
} // namespace korvex::base
