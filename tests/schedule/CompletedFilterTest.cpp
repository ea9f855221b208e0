#include "schedule/CompletedFilter.h"

#include "TodoStore.h"
#include "services/EntryOrder.h"
#include "services/EntryService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace korvex::schedule {
namespace {

using base::Instant;
using model::Entry;
using model::TodoSchedule;
using ::testing::ElementsAre;
using tests::moment;
using tests::TodoStore;
using tests::zone;
using Period = CompletedFilter::Period;
using Schedule = CompletedFilter::Schedule;
using BoardStatus = CompletedFilter::BoardStatus;

model::EntryFields completed(std::optional<Instant> at, const TodoSchedule& schedule = {}) {
    auto fields = TodoStore::fields(schedule);
    fields.isCompleted = true;
    fields.completedAt = at;
    return fields;
}

class CompletedFilterTest : public ::testing::Test {
protected:
    bool passes(const CompletedFilter& filter, const Entry& entry, Instant now,
                const base::Calendar& calendar) {
        Entry* const one[] = {const_cast<Entry*>(&entry)};
        // What the store is asked for must hold all that passes.
        const auto isFound = filter.condition(now, calendar).matches(entry);
        const auto passes = !filter.apply(one, now, calendar, m_store.texts).empty();
        EXPECT_TRUE(isFound || !passes);
        return passes;
    }
    bool passes(const CompletedFilter& filter, const Entry& entry) {
        return passes(filter, entry, moment("2025-03-10T12:00"),
                      base::Calendar(base::TimeZone::utc(), "en_US"));
    }

    TodoStore m_store;
};

TEST_F(CompletedFilterTest, IsActiveWhenAnythingCanHideATodo) {
    EXPECT_FALSE(CompletedFilter{}.isActive());
    EXPECT_FALSE((CompletedFilter{.startDate = {1}, .endDate = {2}}.isActive()));
    for (const auto& filter : {
             CompletedFilter{.query = " "},
             CompletedFilter{.boardID = base::Uuid::random()},
             CompletedFilter{.period = Period::month},
             CompletedFilter{.schedule = Schedule::noDueDate},
             CompletedFilter{.boardStatus = BoardStatus::active},
         }) {
        EXPECT_TRUE(filter.isActive());
    }
}

TEST_F(CompletedFilterTest, PeriodsAreWholeDaysOfTheZone) {
    struct Case {
        const char* zone;
        const char* locale;
        Period period;
        const char* now;
        /// The first and the last moment that the period holds, on the clocks of the zone.
        const char* first;
        const char* last;
    };
    auto& board = m_store.addBoard();
    for (const auto& each : {
             Case{"America/Sao_Paulo", "pt_BR", Period::today, "2018-11-04T12:00",
                  "2018-11-04T01:00", "2018-11-04T23:59:59.999"},
             // A Sunday ends a week in Germany and begins one in America.
             Case{"Europe/Berlin", "de_DE", Period::week, "2025-03-30T12:00", "2025-03-24T00:00",
                  "2025-03-30T23:59:59.999"},
             Case{"Europe/Berlin", "en_US", Period::week, "2025-03-30T12:00", "2025-03-30T00:00",
                  "2025-04-05T23:59:59.999"},
             Case{"Europe/Berlin", "de_DE", Period::month, "2025-12-31T23:59", "2025-12-01T00:00",
                  "2025-12-31T23:59:59.999"},
             Case{"Pacific/Apia", "en_WS", Period::month, "2011-12-31T12:00", "2011-12-01T00:00",
                  "2011-12-31T23:59:59.999"},
         }) {
        const base::Calendar calendar(zone(each.zone), each.locale);
        const auto now = moment(each.now, each.zone);
        const CompletedFilter filter{.period = each.period};
        const auto isIn = [&](Instant at) {
            return passes(filter, m_store.add(completed(at), &board), now, calendar);
        };
        const auto what = std::string(each.zone) + " " + each.locale + " " + each.now;
        EXPECT_TRUE(isIn(moment(each.first, each.zone))) << what;
        EXPECT_FALSE(isIn(moment(each.first, each.zone) - 0.001)) << what;
        EXPECT_TRUE(isIn(moment(each.last, each.zone))) << what;
        EXPECT_FALSE(isIn(moment(each.last, each.zone) + 0.001)) << what;
    }
}

TEST_F(CompletedFilterTest, ACustomPeriodHoldsBothItsDays) {
    struct Case {
        const char* zone;
        const char* start;
        const char* end;
        const char* first;
        const char* next;
    };
    for (const auto& each : {
             Case{"Europe/Berlin", "2025-03-10T15:00", "2025-03-10T09:00", "2025-03-10T00:00",
                  "2025-03-11T00:00"},
             Case{"Europe/Berlin", "2025-03-29T15:00", "2025-03-30T09:00", "2025-03-29T00:00",
                  "2025-03-31T00:00"},
             Case{"Europe/Berlin", "2025-03-10T15:00", "2025-02-01T09:00", "2025-03-10T00:00",
                  "2025-03-11T00:00"}, // the wrong way round: the day of the first
             Case{"America/Sao_Paulo", "2018-11-04T15:00", "2018-11-04T15:00", "2018-11-04T01:00",
                  "2018-11-05T00:00"},
             Case{"Pacific/Apia", "2011-12-28T15:00", "2011-12-29T15:00", "2011-12-28T00:00",
                  "2011-12-31T00:00"},
         }) {
        const CompletedFilter filter{.period = Period::custom,
                                     .startDate = moment(each.start, each.zone),
                                     .endDate = moment(each.end, each.zone)};
        EXPECT_EQ(filter.interval({}, base::Calendar(zone(each.zone))),
                  (base::DateInterval{moment(each.first, each.zone), moment(each.next, each.zone)}))
            << each.zone << " " << each.start;
    }
    // Where no day follows, the end of the period is its last date.
    const auto end = Instant::distantFuture();
    const CompletedFilter filter{.period = Period::custom, .startDate = end - 1, .endDate = end};
    EXPECT_EQ(filter.interval({}, base::Calendar(base::TimeZone::utc()))->end, end);
}

TEST_F(CompletedFilterTest, ComparesWithTheDueDate) {
    struct Case {
        TodoSchedule schedule;
        Instant completedAt;
        bool hadDueDate;
        bool isLate;
    };
    const auto at = [](std::string_view text) { return moment(text, "Europe/Berlin"); };
    const auto sharp = at("2025-03-10T14:00");
    auto& board = m_store.addBoard();
    const base::Calendar calendar(zone("Europe/Berlin"));
    for (const auto& each : {
             Case{{.dueDay = 20250310}, at("2025-03-10T23:59"), true, false},
             Case{{.dueDay = 20250310}, at("2025-03-11T00:01"), true, true},
             Case{{.dueDay = 20250310}, at("2025-03-11T00:00"), true, true},
             Case{{.dueDay = 20250310}, at("2025-02-11T00:01"), true, false},
             Case{{.dueDay = 20250329}, at("2025-03-29T23:59:59.999"), true, false},
             Case{{.dueDay = 20250330}, at("2025-03-30T23:59:59.999"), true, false},
             Case{{.dueDay = 20241231}, at("2025-01-01T00:00"), true, true},
             Case{{.dueDay = 20250231}, at("2025-03-01T12:00"), true, true}, // no day, but a number
             Case{{.dueDay = 20250231}, at("2025-02-28T12:00"), true, false},
             Case{{.dueDay = 0}, at("2025-02-28T12:00"), true, true},
             Case{{.dueDate = sharp}, sharp, true, false},
             Case{{.dueDate = sharp}, sharp + 0.001, true, true},
             Case{{.dueDate = sharp, .dueStartDate = sharp - 60}, sharp - 30, true, false},
             Case{{.reminderDate = sharp}, sharp + 60, false, false},
             Case{{}, sharp, false, false},
         }) {
        auto& entry = m_store.add(completed(each.completedAt, each.schedule), &board);
        const auto isIn = [&](Schedule schedule) {
            return passes({.schedule = schedule}, entry, sharp, calendar);
        };
        const auto what = base::isoText(each.completedAt);
        EXPECT_TRUE(isIn(Schedule::any)) << what;
        EXPECT_EQ(isIn(Schedule::hadDueDate), each.hadDueDate) << what;
        EXPECT_EQ(isIn(Schedule::noDueDate), !each.hadDueDate) << what;
        EXPECT_EQ(isIn(Schedule::late), each.isLate) << what;
    }
}

TEST_F(CompletedFilterTest, AsksForTheBoardAndItsStatus) {
    auto& home = m_store.addBoard(0);
    auto& attic = m_store.addBoard(1, true);
    const auto done = completed(moment("2025-03-10T09:00"));
    const auto& onHome = m_store.add(done, &home);
    const auto& onAttic = m_store.add(done, &attic);
    const auto& onNone = m_store.add(done, nullptr);
    struct Case {
        CompletedFilter filter;
        bool home;
        bool attic;
        bool none;
    };
    for (const auto& each : {
             Case{{}, true, true, true},
             Case{{.boardStatus = BoardStatus::active}, true, false, false},
             Case{{.boardStatus = BoardStatus::archived}, false, true, false},
             Case{{.boardID = home.id()}, true, false, false},
             Case{{.boardID = attic.id(), .boardStatus = BoardStatus::active}, false, false, false},
         }) {
        EXPECT_EQ(passes(each.filter, onHome), each.home);
        EXPECT_EQ(passes(each.filter, onAttic), each.attic);
        EXPECT_EQ(passes(each.filter, onNone), each.none);
    }
}

TEST_F(CompletedFilterTest, FindsEveryWordOfTheQuery) {
    auto& board = m_store.addBoard();
    auto fields = completed(moment("2025-03-10T09:00"));
    fields.content = "Milk: buy 2 at the Café";
    auto& entry = m_store.add(fields, &board);
    for (const auto& [query, isFound] : {std::pair{"", true},
                                         {" ", true},
                                         {"buy milk", true},
                                         {"CAFE  uy", true},
                                         {"MILCH", false},
                                         {"milk bread", false}}) {
        EXPECT_EQ(passes({.query = query}, entry), isFound) << query;
    }
    entry.setContent("Bread");
    EXPECT_TRUE(passes({.query = "bread"}, entry)) << "also before the change is announced";
}

TEST_F(CompletedFilterTest, ShowsOnlyCompletedTodosTheLatestFirst) {
    auto& second = m_store.addBoard(2);
    auto& first = m_store.addBoard(1);
    const auto at = moment("2025-03-10T09:00");
    std::vector<Entry*> entries;
    const auto add = [&](const char* name, std::optional<Instant> completedAt, model::Board* board,
                         std::int64_t sortOrder = 0) -> Entry& {
        auto fields = completed(completedAt);
        fields.content = name;
        fields.sortOrder = sortOrder;
        fields.updatedAt = at + 500;
        entries.push_back(&m_store.add(fields, board));
        return *entries.back();
    };
    add("unknown", std::nullopt, &first);
    add("early", at - 10, &second);
    add("late", at + 10, &second);
    add("d", at, &second, 0);
    add("c", at, &first, 2);
    add("b", at, &first, 1);
    add("a", at, nullptr);
    add("open", at, &first).setIsCompleted(false);
    add("text", at, &first).setType(model::EntryType::text);
    const base::Calendar calendar(base::TimeZone::utc());
    const auto texts = [](const std::vector<Entry*>& list) {
        std::vector<std::string> result;
        std::transform(list.begin(), list.end(), std::back_inserter(result),
                       [](const Entry* entry) { return entry->content(); });
        return result;
    };
    EXPECT_THAT(texts(CompletedFilter{}.apply(entries, at, calendar, m_store.texts)),
                ElementsAre("late", "a", "b", "c", "d", "early", "unknown"));
    // As the list of one board has it.
    CompletedFilter ofBoard{.boardID = first.id()};
    EXPECT_EQ(ofBoard.apply(entries, at, calendar, m_store.texts), services::completedTodos(first));
}

TEST_F(CompletedFilterTest, AnUnknownCompletionIsInNoPeriodAndNotLate) {
    auto& board = m_store.addBoard();
    auto fields = completed(std::nullopt, {.dueDay = 20250309});
    fields.updatedAt = moment("2025-03-10T09:00");
    auto& entry = m_store.add(fields, &board);
    for (const auto& completedAt : {std::optional<Instant>(), std::optional(Instant{1e300}),
                                    std::optional(Instant{-1e300})}) {
        entry.setCompletedAt(completedAt);
        EXPECT_TRUE(passes({.schedule = Schedule::hadDueDate}, entry));
        EXPECT_FALSE(passes({.schedule = Schedule::late}, entry));
        for (const auto period : {Period::today, Period::week, Period::month}) {
            EXPECT_FALSE(passes({.period = period}, entry));
        }
        EXPECT_FALSE(passes({.period = Period::custom,
                             .startDate = Instant::distantPast(),
                             .endDate = moment("2025-03-11T00:00")},
                            entry));
    }
}

TEST(CompletedTodoGroup, MakesAGroupOfEachDay) {
    struct Case {
        const char* zone;
        std::vector<const char*> completed;
        /// How many todos each day has, by its start in UTC.
        std::vector<std::pair<const char*, std::size_t>> days;
    };
    TodoStore store;
    auto& board = store.addBoard();
    for (const auto& each : {
             Case{"Europe/Berlin",
                  {"2025-03-31T00:00", "2025-03-30T23:59", "2025-03-30T00:00", "2025-03-29T23:59"},
                  {{"2025-03-30T22:00Z", 1}, {"2025-03-29T23:00Z", 2}, {"2025-03-28T23:00Z", 1}}},
             // In any order, the groups are in theirs.
             Case{"Asia/Kolkata",
                  {"2025-01-14T23:59", "2025-01-15T00:00", "2025-01-13T12:00", "2025-01-14T00:00"},
                  {{"2025-01-14T18:30Z", 1}, {"2025-01-13T18:30Z", 2}, {"2025-01-12T18:30Z", 1}}},
             Case{"America/Sao_Paulo",
                  {"2018-11-05T00:30", "2018-11-04T01:00", "2018-11-03T23:59"},
                  {{"2018-11-05T02:00Z", 1}, {"2018-11-04T03:00Z", 1}, {"2018-11-03T03:00Z", 1}}},
             Case{"Pacific/Apia",
                  {"2011-12-31T00:00", "2011-12-29T23:59"},
                  {{"2011-12-30T10:00Z", 1}, {"2011-12-29T10:00Z", 1}}},
             // One minute into the new day the clocks went back by an hour: that hour, with the
             // date of the day that had ended, belongs to the day that has begun.
             Case{"America/St_Johns",
                  {"2006-10-28T23:30-03:30", "2006-10-29T12:00", "2006-10-29T00:00:30-02:30",
                   "2006-10-28T23:30-02:30"},
                  {{"2006-10-29T02:30Z", 3}, {"2006-10-28T02:30Z", 1}}},
             Case{"UTC", {}, {}},
         }) {
        std::vector<Entry*> entries;
        for (const auto* at : each.completed) {
            entries.push_back(&store.add(completed(moment(at, each.zone)), &board));
        }
        const auto groups = CompletedTodoGroup::groups(entries, base::Calendar(zone(each.zone)));
        ASSERT_EQ(groups.size(), each.days.size()) << each.zone;
        for (std::size_t i = 0; i < groups.size(); ++i) {
            EXPECT_EQ(base::isoText(groups[i].date), base::isoText(moment(each.days[i].first)));
            EXPECT_EQ(groups[i].entries.size(), each.days[i].second) << each.zone << " " << i;
        }
    }
}

TEST(CompletedTodoGroup, KeepsTheOrderOfADayAndPlacesWhatHasNoDate) {
    TodoStore store;
    auto& board = store.addBoard();
    auto fields = completed(std::nullopt);
    fields.updatedAt = moment("2025-03-10T09:00");
    auto& unknown = store.add(fields, &board);
    auto& nowhere = store.add(completed(std::nullopt), &board);
    nowhere.setUpdatedAt(Instant{-1e300});
    auto& late = store.add(completed(moment("2025-03-10T20:00")), &board);
    auto& early = store.add(completed(moment("2025-03-10T08:00")), &board);
    auto& after = store.add(completed(moment("2025-03-11T08:00")), &board);
    Entry* const entries[] = {&nowhere, &early, &unknown, &after, &late};
    for (const char* name : {"UTC", "America/New_York"}) {
        const auto groups = CompletedTodoGroup::groups(entries, base::Calendar(zone(name)));
        ASSERT_EQ(groups.size(), 3U);
        EXPECT_THAT(groups[0].entries, ElementsAre(&after));
        EXPECT_THAT(groups[1].entries, ElementsAre(&early, &unknown, &late));
        EXPECT_THAT(groups[2].entries, ElementsAre(&nowhere));
    }
}

TEST(CompletedTodoGroup, HasATitleInTheLocalesWords) {
    struct Case {
        const char* zone;
        const char* locale;
        const char* now;
        const char* day;
        const char* title;
    };
    for (const auto& each : {
             Case{"Europe/Berlin", "en_US", "2025-03-31T00:10", "2025-03-31T23:00", "Today"},
             Case{"Europe/Berlin", "en_US", "2025-03-31T00:10", "2025-03-30T00:00", "Yesterday"},
             Case{"Europe/Berlin", "en_US", "2025-03-31T00:10", "2025-03-29T23:59",
                  "March 29, 2025"},
             Case{"Europe/Berlin", "de_DE", "2025-03-31T00:10", "2025-03-29T12:00",
                  "29. März 2025"},
             Case{"Europe/Berlin", "de_DE", "2025-03-31T00:10", "2025-03-30T12:00", "Gestern"},
             Case{"Pacific/Apia", "en_US", "2011-12-31T12:00", "2011-12-29T12:00", "Yesterday"},
         }) {
        TodoStore store;
        Entry* const one[] = {
            &store.add(completed(moment(each.day, each.zone)), &store.addBoard())};
        const base::DateFormats formats(each.locale, zone(each.zone));
        const auto groups = CompletedTodoGroup::groups(one, formats.calendar());
        EXPECT_EQ(groups.front().title(moment(each.now, each.zone), formats), each.title);
    }
}

} // namespace
} // namespace korvex::schedule
