#include "schedule/UpcomingGroup.h"

#include "TodoStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <tuple>

namespace korvex::schedule {
namespace {

using base::Instant;
using model::Entry;
using model::TodoSchedule;
using tests::moment;
using tests::TodoStore;
using tests::zone;

std::string placeOf(const Entry& entry, Instant now, const base::TimeZone& zone) {
    Entry* const one[] = {const_cast<Entry*>(&entry)};
    const auto groups = UpcomingGroup::groups(one, now, zone);
    return groups.empty() ? "nowhere" : std::string(name(groups.front().section));
}

TEST(UpcomingGroup, PutsATodoUnderItsDays) {
    struct Case {
        const char* zone;
        const char* now;
        TodoSchedule schedule;
        const char* section;
    };
    const auto berlin = [](std::string_view text) { return moment(text, "Europe/Berlin"); };
    const auto day = [](base::DayNumber number) { return TodoSchedule::dueOn(number); };
    const auto at = [](Instant instant) { return TodoSchedule::dueAt(instant); };
    const auto remind = [](Instant instant) { return TodoSchedule{.reminderDate = instant}; };
    constexpr Instant kInfinity{std::numeric_limits<double>::infinity()};
    const Case cases[] = {
        // A timed todo from its very moment, an all-day todo from the midnight after.
        {"Europe/Berlin", "2025-01-15T09:00", at(berlin("2025-01-15T09:00")), "overdue"},
        {"Europe/Berlin", "2025-01-15T09:00", at(berlin("2025-01-15T09:00:00.001")), "today"},
        {"Europe/Berlin", "2025-01-15T00:00", day(20250115), "today"},
        {"Europe/Berlin", "2025-01-15T23:59:59.999", day(20250115), "today"},
        {"Europe/Berlin", "2025-01-16T00:00", day(20250115), "overdue"},
        {"Europe/Berlin",
         "2025-01-15T09:30",
         {.dueDate = berlin("2025-01-15T10:00"), .dueStartDate = berlin("2025-01-15T09:00")},
         "today"},
        // Days count, not hours.
        {"Europe/Berlin", "2025-01-15T23:59", at(berlin("2025-01-16T00:00")), "next3Days"},
        {"Europe/Berlin", "2025-01-15T09:00", day(20250116), "next3Days"},
        {"Europe/Berlin", "2025-01-15T09:00", day(20250118), "next3Days"},
        {"Europe/Berlin", "2025-01-15T09:00", at(berlin("2025-01-18T23:59:59.999")), "next3Days"},
        {"Europe/Berlin", "2025-01-15T09:00", at(berlin("2025-01-19T00:00")), "next7Days"},
        {"Europe/Berlin", "2025-01-15T23:59", day(20250119), "next7Days"},
        {"Europe/Berlin", "2025-01-15T09:00", day(20250122), "next7Days"},
        {"Europe/Berlin", "2025-01-15T09:00", day(20250123), "next2Weeks"},
        {"Europe/Berlin", "2025-01-15T09:00", day(20250129), "next2Weeks"},
        {"Europe/Berlin", "2025-01-15T09:00", at(berlin("2025-01-29T23:59")), "next2Weeks"},
        {"Europe/Berlin", "2025-01-15T09:00", day(20250130), "later"},
        {"Europe/Berlin", "2025-01-15T09:00", day(40001231), "later"},
        // A reminder alone.
        {"Europe/Berlin", "2025-01-15T09:00", remind(berlin("2025-01-15T08:00")), "reminderOnly"},
        {"Europe/Berlin", "2025-01-15T09:00", remind(berlin("2025-01-15T09:00")), "today"},
        {"Europe/Berlin", "2025-01-15T09:00", remind(berlin("2025-01-15T20:00")), "today"},
        {"Europe/Berlin", "2025-01-15T09:00", remind(berlin("2025-01-20T08:00")), "next7Days"},
        // Beside a due day a reminder places nothing.
        {"Europe/Berlin",
         "2025-01-15T09:00",
         {.dueDay = 20250120, .reminderDate = berlin("2025-01-10T08:00")},
         "next7Days"},
        // December 30 was skipped: the third day after the 29th is January 2.
        {"Pacific/Apia", "2011-12-29T12:00", day(20111231), "next3Days"},
        {"Pacific/Apia", "2011-12-29T12:00", day(20120102), "next3Days"},
        {"Pacific/Apia", "2011-12-29T12:00", day(20120103), "next7Days"},
        {"Pacific/Apia", "2011-12-29T12:00", day(20111230), "next3Days"},
        {"Pacific/Apia", "2011-12-31T00:00", day(20111230), "overdue"},
        // Half an hour beside the others.
        {"Asia/Kolkata", "2025-01-15T00:00", day(20250115), "today"},
        {"Asia/Kolkata", "2025-01-14T23:59", at(moment("2025-01-14T18:30Z")), "next3Days"},
        // What is no date counts as not there.
        {"Europe/Berlin", "2025-01-15T09:00", {}, "nowhere"},
        {"Europe/Berlin", "2025-01-15T09:00", day(20250231), "nowhere"},
        {"Europe/Berlin", "2025-01-15T09:00", day(0), "nowhere"},
        {"Europe/Berlin", "2025-01-15T09:00", day(-20250115), "nowhere"},
        {"Europe/Berlin", "2025-01-15T09:00", day(std::numeric_limits<std::int64_t>::min()),
         "nowhere"},
        {"Europe/Berlin", "2025-01-15T09:00", at(kInfinity), "nowhere"},
        {"Europe/Berlin",
         "2025-01-15T09:00",
         {.dueStartDate = berlin("2025-01-15T10:00")},
         "nowhere"},
        {"Europe/Berlin",
         "2025-01-15T09:00",
         {.dueDate = kInfinity, .reminderDate = berlin("2025-01-15T10:00")},
         "today"},
    };
    TodoStore store;
    auto& board = store.addBoard();
    for (const auto& each : cases) {
        auto& entry = store.add(TodoStore::fields(each.schedule), &board);
        EXPECT_EQ(placeOf(entry, moment(each.now, each.zone), zone(each.zone)), each.section)
            << each.zone << " " << each.now << " case " << &each - cases;
    }
}

TEST(UpcomingGroup, ShowsOpenScheduledTodosOfActiveBoards) {
    TodoStore store;
    auto& board = store.addBoard();
    auto& archive = store.addBoard(1, true);
    const auto now = moment("2025-01-15T09:00");
    const auto due = TodoStore::fields(TodoSchedule::dueOn(20250115));
    auto text = due;
    text.typeRawValue.clear();
    auto completed = due;
    completed.isCompleted = true;
    std::vector<Entry*> entries{&store.add(text, &board), &store.add(due, &archive),
                                &store.add(due, nullptr), &store.add({}, &board)};
    auto& ticked = store.add(completed, &board);
    entries.push_back(&ticked);
    const auto shown = [&](const std::unordered_set<base::Uuid>& including) {
        return UpcomingGroup::groups(entries, now, base::TimeZone::utc(), including);
    };
    EXPECT_TRUE(shown({}).empty());
    EXPECT_TRUE(shown({entries[0]->id(), entries[1]->id()}).empty());
    EXPECT_EQ(shown({ticked.id()}),
              (std::vector<UpcomingGroup>{{UpcomingSection::today, {&ticked}}}));
    archive.setIsArchived(false);
    EXPECT_EQ(shown({}), (std::vector<UpcomingGroup>{{UpcomingSection::today, {entries[1]}}}));
}

/// Sections day by day, as they are defined, and order by comparing everything.
class ByTheBook {
public:
    ByTheBook(Instant now, const base::TimeZone& zone) : m_now(now), m_calendar(zone) {}

    std::optional<UpcomingSection> section(const Entry& entry) const {
        const auto schedule = entry.schedule();
        const auto date = schedule.effectiveDate(m_calendar);
        if (!entry.isTodo() || entry.isCompleted() || !entry.board() ||
            entry.board()->isArchived() || !date) {
            return std::nullopt;
        }
        const auto today = *m_calendar.day(m_now);
        if (schedule.dueDay ? *schedule.dueDay < today
                            : schedule.dueDate && *schedule.dueDate <= m_now) {
            return UpcomingSection::overdue;
        }
        if (!schedule.hasDue() && *schedule.reminderDate < m_now) {
            return UpcomingSection::reminderOnly;
        }
        if (schedule.dueDay.value_or(*m_calendar.day(*date)) == today) {
            return UpcomingSection::today;
        }
        const auto distance = daysUntil(*date);
        return distance > 14  ? UpcomingSection::later
               : distance > 7 ? UpcomingSection::next2Weeks
               : distance > 3 ? UpcomingSection::next7Days
                              : UpcomingSection::next3Days;
    }

    std::vector<UpcomingGroup> groups(const std::vector<Entry*>& entries) const {
        using Row =
            std::tuple<UpcomingSection, Instant, std::int64_t, std::int64_t, std::string, Entry*>;
        std::vector<Row> rows;
        for (auto* entry : entries) {
            if (const auto place = section(*entry)) {
                rows.emplace_back(*place, *entry->schedule().effectiveDate(m_calendar),
                                  entry->board()->sortOrder(), entry->sortOrder(),
                                  entry->id().text(), entry);
            }
        }
        std::sort(rows.begin(), rows.end());
        std::vector<UpcomingGroup> groups;
        for (const auto& row : rows) {
            if (groups.empty() || groups.back().section != std::get<0>(row)) {
                groups.push_back({std::get<0>(row), {}});
            }
            groups.back().entries.push_back(std::get<Entry*>(row));
        }
        return groups;
    }

private:
    int daysUntil(Instant date) const {
        int days = 0;
        for (auto at = m_now; days < 16; ++days) {
            const auto day = m_calendar.interval(base::CalendarPeriod::day, at);
            if (day->contains(date)) {
                return days;
            }
            at = day->end;
        }
        return days;
    }

    Instant m_now;
    base::Calendar m_calendar;
};

TEST(UpcomingGroup, EqualsItsDefinitionForAnyTodos) {
    std::mt19937 random(20250115);
    const auto pick = [&](std::int64_t from, std::int64_t to) {
        return std::uniform_int_distribution<std::int64_t>(from, to)(random);
    };
    for (const auto& [zoneName, nowText] :
         {std::pair{"Europe/Berlin", "2025-03-29T09:00"},
          std::pair{"America/Sao_Paulo", "2018-11-02T09:00"},
          std::pair{"Europe/Berlin", "2025-10-23T12:00"},
          std::pair{"Pacific/Apia", "2011-12-28T09:00"}, std::pair{"UTC", "1999-12-24T09:00"},
          std::pair{"Asia/Kolkata", "2025-01-01T00:15"}}) {
        TodoStore store;
        std::vector<model::Board*> boards{nullptr, &store.addBoard(0, true)};
        for (const std::int64_t order : {3L, 3L, -1L, 0L, 1'000'000'000'000L}) {
            boards.push_back(&store.addBoard(order));
        }
        const auto now = moment(nowText, zoneName);
        const base::Calendar calendar(zone(zoneName));
        // Enough for the sort without comparisons; few dates and numbers, so that many are equal.
        std::vector<Entry*> entries;
        for (int i = 0; i < 3000; ++i) {
            const auto date = now + static_cast<double>(pick(-40, 900)) * 3600 / 2;
            TodoSchedule schedule;
            if (pick(0, 2) == 0) {
                schedule.dueDay = *calendar.day(date);
            } else if (pick(0, 2) > 0) {
                schedule.dueDate = date + static_cast<double>(pick(0, 1)) / 3;
            }
            if (pick(0, 1) == 0) {
                schedule.reminderDate = now + static_cast<double>(pick(-40, 900)) * 1800;
            }
            auto fields = TodoStore::fields(schedule);
            fields.sortOrder = pick(0, 9) == 0 ? pick(-5, 5) * 1'000'000'000'000 : pick(0, 20);
            fields.isCompleted = pick(0, 9) == 0;
            fields.typeRawValue = pick(0, 9) == 0 ? "" : "todo";
            entries.push_back(
                &store.add(fields, boards[static_cast<std::size_t>(
                                       pick(0, static_cast<std::int64_t>(boards.size()) - 1))]));
        }
        const auto expected = ByTheBook(now, zone(zoneName)).groups(entries);
        EXPECT_EQ(expected.size(), 7U);
        EXPECT_TRUE(UpcomingGroup::groups(entries, now, zone(zoneName)) == expected) << zoneName;
        entries.resize(40);
        EXPECT_TRUE(UpcomingGroup::groups(entries, now, zone(zoneName)) ==
                    ByTheBook(now, zone(zoneName)).groups(entries))
            << zoneName;
    }
}

} // namespace
} // namespace korvex::schedule
