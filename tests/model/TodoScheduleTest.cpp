#include "model/TodoSchedule.h"

#include "support/Moments.h"

#include <gtest/gtest.h>

#include <limits>

namespace korvex::model {
namespace {

using base::Instant;
using tests::moment;
using tests::zone;

const Instant kNine = moment("2025-01-15T09:00");
const Instant kTen = moment("2025-01-15T10:00");
const Instant kNever{std::numeric_limits<double>::quiet_NaN()};
const Instant kTooLate = Instant::distantFuture() + 1;
const Instant kTooEarly = Instant::distantPast() - 1;

/// American English has U+202F before AM and PM; the tables here have a plain space.
std::string withPlainSpaces(std::string text) {
    constexpr std::string_view kNarrowSpace = "\u202f";
    for (auto found = text.find(kNarrowSpace); found != std::string::npos;
         found = text.find(kNarrowSpace)) {
        text.replace(found, kNarrowSpace.size(), " ");
    }
    return text;
}

TEST(TodoSchedule, IsValidWhenEachPresentFieldMakesSense) {
    struct Case {
        const char* what;
        TodoSchedule schedule;
        bool isValid;
    };
    for (const auto& each : {
             Case{"empty", {}, true},
             Case{"leap day", {.dueDay = 20240229}, true},
             Case{"no leap day", {.dueDay = 20250229}, false},
             Case{"first day", {.dueDay = 10101}, true},
             Case{"before the first day", {.dueDay = 10100}, false},
             Case{"last day before the distant future", {.dueDay = 40001231}, true},
             Case{"noon in the distant future", {.dueDay = 40010101}, false},
             Case{"no number of a day", {.dueDay = 100000000}, false},
             Case{"dropped by the reform", {.dueDay = 15821010}, false},
             Case{"negative", {.dueDay = -20250115}, false},
             Case{"due time", {.dueDate = kTen}, true},
             Case{"first moment", {.dueDate = Instant::distantPast()}, true},
             Case{"last moment", {.dueDate = Instant::distantFuture()}, true},
             Case{"due before time", {.dueDate = kTooEarly}, false},
             Case{"due after time", {.dueDate = kTooLate}, false},
             Case{"due at no time", {.dueDate = kNever}, false},
             Case{"day and time", {.dueDay = 20250115, .dueDate = kTen}, false},
             Case{"window", {.dueDate = kTen, .dueStartDate = kNine}, true},
             Case{"window of days", {.dueDate = kTen, .dueStartDate = kNine - 864'000}, true},
             Case{"empty window", {.dueDate = kTen, .dueStartDate = kTen}, false},
             Case{"backward window", {.dueDate = kNine, .dueStartDate = kTen}, false},
             Case{"window from no time", {.dueDate = kTen, .dueStartDate = kNever}, false},
             Case{"window from before time", {.dueDate = kTen, .dueStartDate = kTooEarly}, false},
             Case{"start without end", {.dueStartDate = kNine}, false},
             Case{"start of a day", {.dueDay = 20250115, .dueStartDate = kNine}, false},
             Case{"reminder alone", {.reminderDate = kNine}, true},
             Case{"day and reminder", {.dueDay = 20250115, .reminderDate = kNine}, true},
             Case{"reminder at no time", {.dueDate = kTen, .reminderDate = kNever}, false},
             Case{"reminder after time", {.reminderDate = kTooLate}, false},
         }) {
        EXPECT_EQ(each.schedule.isValid(), each.isValid) << each.what;
    }
}

TEST(TodoSchedule, TakesEffectAtNoonOrTheDueTimeOrTheReminder) {
    struct Case {
        const char* what;
        const char* zone;
        TodoSchedule schedule;
        std::optional<Instant> expected;
    };
    for (const auto& each : {
             Case{"nothing", "UTC", {}, std::nullopt},
             Case{"day", "UTC", {.dueDay = 20250115}, moment("2025-01-15T12:00Z")},
             Case{"day in a zone",
                  "Asia/Kolkata",
                  {.dueDay = 20250115},
                  moment("2025-01-15T06:30Z")},
             Case{"day before its reminder",
                  "UTC",
                  {.dueDay = 20250115, .reminderDate = kNine},
                  moment("2025-01-15T12:00Z")},
             Case{"day that the zone skipped",
                  "Pacific/Apia",
                  {.dueDay = 20111230},
                  moment("2011-12-30T12:00Z")},
             Case{"no day", "UTC", {.dueDay = 20250229, .reminderDate = kNine}, std::nullopt},
             Case{"time", "UTC", {.dueDate = kTen, .reminderDate = kNine}, kTen},
             Case{"no time", "UTC", {.dueDate = kNever, .reminderDate = kNine}, kNine},
             Case{"time out of range", "UTC", {.dueDate = kTooLate, .reminderDate = kNine}, kNine},
             Case{"nothing usable",
                  "UTC",
                  {.dueDate = kNever, .reminderDate = kTooEarly},
                  std::nullopt},
         }) {
        EXPECT_EQ(each.schedule.effectiveDate(base::Calendar(zone(each.zone))), each.expected)
            << each.what;
    }
}

TEST(TodoSchedule, LabelsTheDueMomentInTheLocale) {
    struct Case {
        const char* what;
        TodoSchedule schedule;
        std::optional<std::string> american;
        std::optional<std::string> german;
    };
    const auto at = [](const char* text) { return moment(text, "Europe/Berlin"); };
    const auto now = at("2025-01-15T08:00");
    const base::DateFormats american("en_US", zone("Europe/Berlin"));
    const base::DateFormats german("de_DE", zone("Europe/Berlin"));
    for (const auto& each : {
             Case{"nothing", {}, std::nullopt, std::nullopt},
             Case{"no day", {.dueDay = 20250229}, std::nullopt, std::nullopt},
             Case{"today", {.dueDay = 20250115}, "Today", "Heute"},
             Case{"tomorrow", {.dueDay = 20250116}, "Tomorrow", "Morgen"},
             Case{"yesterday", {.dueDay = 20250114}, "Yesterday", "Gestern"},
             Case{"another day", {.dueDay = 20250117}, "Fri, Jan 17, 2025", "Fr., 17. Jan. 2025"},
             Case{"reminder alone", {.reminderDate = at("2025-01-16T00:00")}, "Tomorrow", "Morgen"},
             Case{"time", {.dueDate = at("2025-01-15T09:00")}, "Today · 9:00 AM", "Heute · 09:00"},
             Case{"time, however late",
                  {.dueDate = at("2025-01-15T23:59:59")},
                  "Today · 11:59 PM",
                  "Heute · 23:59"},
             Case{"window",
                  {.dueDate = at("2025-01-15T10:00"), .dueStartDate = at("2025-01-15T09:00")},
                  "Today · 9:00 AM–10:00 AM",
                  "Heute · 09:00–10:00"},
             Case{"window from another day",
                  {.dueDate = at("2025-01-15T10:00"), .dueStartDate = at("2025-01-14T21:30")},
                  "Jan 14, 2025, 9:30 PM – Today · 10:00 AM",
                  "14. Jan. 2025, 21:30 – Heute · 10:00"},
             Case{"window that starts at its end",
                  {.dueDate = at("2025-01-15T10:00"), .dueStartDate = at("2025-01-15T10:00")},
                  "Today · 10:00 AM",
                  "Heute · 10:00"},
             Case{"window from no time",
                  {.dueDate = at("2025-01-15T10:00"), .dueStartDate = kNever},
                  "Today · 10:00 AM",
                  "Heute · 10:00"},
             Case{"no due time, but a reminder",
                  {.dueDate = kNever, .reminderDate = at("2025-01-15T10:00")},
                  "Today",
                  "Heute"},
         }) {
        const auto label = each.schedule.dueLabel(now, american);
        EXPECT_EQ(label ? std::optional(withPlainSpaces(*label)) : label, each.american)
            << each.what;
        EXPECT_EQ(each.schedule.dueLabel(now, german), each.german) << each.what;
    }
}

TEST(TodoSchedule, NeighbouringDaysAreThoseOfTheCalendar) {
    struct Case {
        const char* what;
        const char* zone;
        const char* now;
        base::DayNumber day;
        const char* label;
    };
    for (const auto& each : {
             // 23 hours before the end of the day that has only 23.
             Case{"into summer", "Europe/Berlin", "2025-03-29T23:30", 20250330, "Tomorrow"},
             Case{"into winter", "Europe/Berlin", "2025-10-26T00:30", 20251027, "Tomorrow"},
             Case{"midnight that does not exist", "America/Sao_Paulo", "2018-11-03T23:59", 20181104,
                  "Tomorrow"},
             Case{"over the skipped day", "Pacific/Apia", "2011-12-29T20:00", 20111231, "Tomorrow"},
             Case{"over the new year", "UTC", "2025-01-01T00:00", 20241231, "Yesterday"},
             Case{"over the reform", "UTC", "1582-10-04T12:00", 15821015, "Tomorrow"},
         }) {
        const base::DateFormats formats("en_US", zone(each.zone));
        EXPECT_EQ(TodoSchedule::dueOn(each.day).dueLabel(moment(each.now, each.zone), formats),
                  each.label)
            << each.what;
    }
}

TEST(TodoSchedule, IsOverdueFromTheDueTimeOrAfterTheDayItself) {
    struct Case {
        const char* what;
        TodoSchedule schedule;
        const char* now;
        bool isOverdue;
    };
    const auto at = [](const char* text) { return moment(text, "Asia/Kolkata"); };
    const base::Calendar calendar(zone("Asia/Kolkata"));
    for (const auto& each : {
             Case{
                 "time to come", {.dueDate = at("2025-01-15T09:00")}, "2025-01-15T08:59:59", false},
             Case{"the time itself", {.dueDate = at("2025-01-15T09:00")}, "2025-01-15T09:00", true},
             Case{"day not over", {.dueDay = 20250115}, "2025-01-15T23:59:59", false},
             Case{"day over", {.dueDay = 20250115}, "2025-01-16T00:00", true},
             Case{"no day", {.dueDay = 20240230}, "2025-01-16T00:00", false},
             Case{"reminder past",
                  {.reminderDate = at("2025-01-15T09:00")},
                  "2025-01-16T00:00",
                  false},
             Case{"no time", {.dueDate = kNever}, "2025-01-16T00:00", false},
             Case{"nothing", {}, "2025-01-16T00:00", false},
         }) {
        EXPECT_EQ(each.schedule.isOverdue(at(each.now), calendar), each.isOverdue) << each.what;
    }
}

TEST(TodoSchedule, IsSpokenWithItsParts) {
    struct Case {
        TodoSchedule schedule;
        bool isCompleted;
        const char* label;
    };
    const auto now = moment("2025-01-15T12:00");
    const base::DateFormats formats("en_US", zone("UTC"));
    for (const auto& each : {
             Case{{}, false, ""},
             Case{{.dueDate = kTen}, false, "Due: Today · 10:00 AM, Overdue"},
             Case{{.dueDate = kTen}, true, "Due: Today · 10:00 AM"},
             Case{{.dueDay = 20250115, .reminderDate = kNine},
                  false,
                  "Due: Today, Reminder: Jan 15, 2025, 9:00 AM"},
             Case{{.dueDay = 20250114, .reminderDate = kNine},
                  false,
                  "Due: Yesterday, Overdue, Reminder: Jan 15, 2025, 9:00 AM"},
             Case{{.reminderDate = kNine}, false, "Reminder: Jan 15, 2025, 9:00 AM"},
             Case{{.dueDate = kNever, .reminderDate = kTooLate}, false, ""},
         }) {
        EXPECT_EQ(withPlainSpaces(each.schedule.accessibilityLabel(each.isCompleted, now, formats)),
                  each.label);
    }
}

} // namespace
} // namespace korvex::model
