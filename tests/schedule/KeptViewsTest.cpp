#include "TodoStore.h"
#include "schedule/CompletedTodos.h"
#include "schedule/UpcomingTodos.h"
#include "services/EntryService.h"
#include "services/OrderKey.h"
#include "support/TemporaryFolder.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace korvex::schedule {
namespace {

using base::Instant;
using model::Board;
using model::Entry;
using tests::moment;
using tests::TodoStore;
using tests::zone;
using Ids = std::vector<base::Uuid>;

Ids idsOf(const std::vector<Entry*>& entries) {
    Ids ids;
    std::transform(entries.begin(), entries.end(), std::back_inserter(ids),
                   [](const Entry* entry) { return entry->id(); });
    return ids;
}

/// What a view shows, by identifiers: so contexts can be compared.
template <typename Key>
using Shown = std::vector<std::pair<Key, Ids>>;

Shown<UpcomingSection> shown(const std::vector<UpcomingGroup>& groups) {
    Shown<UpcomingSection> result;
    for (const auto& group : groups) {
        result.emplace_back(group.section, idsOf(group.entries));
    }
    return result;
}

Shown<Instant> shown(const std::vector<CompletedTodoGroup>& groups) {
    Shown<Instant> result;
    for (const auto& group : groups) {
        result.emplace_back(group.date, idsOf(group.entries));
    }
    return result;
}

constexpr const char* kZones[] = {"Europe/Berlin", "America/Sao_Paulo", "Pacific/Apia",
                                  "Asia/Kolkata"};

/// Two programs on one store: one has the views, the other only changes things.
class TwoPrograms {
public:
    explicit TwoPrograms(std::uint32_t seed) : m_random(seed) {
        for (int i = 0; i < 5; ++i) {
            m_mine.addBoard(i, i == 3);
        }
        for (int i = 0; i < 60; ++i) {
            create(m_mine);
        }
        m_mine.context.save();
        m_upcoming.emplace(m_mine.context, m_now, zone(m_zone));
        m_completed.emplace(m_mine.context, m_mine.texts, m_now, zone(m_zone), "en_GB");
        m_signals.push_back(m_upcoming->didChange().connect([this] { m_upcomingChanged = true; }));
        m_signals.push_back(
            m_completed->didChange().connect([this] { m_completedChanged = true; }));
    }

    /// Whatever may happen, once; what the views show must be what their definitions say.
    void step() {
        const auto upcoming = shown(m_upcoming->groups());
        const auto completed = shown(m_completed->groups());
        m_upcomingChanged = false;
        m_completedChanged = false;
        const auto isPending = happen();
        compare(isPending);
        EXPECT_TRUE(m_upcomingChanged || shown(m_upcoming->groups()) == upcoming);
        EXPECT_TRUE(m_completedChanged || shown(m_completed->groups()) == completed);
        if (isPending) {
            m_mine.context.rollback();
            compare(false);
        }
    }

private:
    std::int64_t pick(std::int64_t from, std::int64_t to) {
        return std::uniform_int_distribution<std::int64_t>(from, to)(m_random);
    }
    bool oneIn(std::int64_t count) { return pick(1, count) == 1; }
    template <typename T>
    T* any(TodoStore& store) {
        auto all = store.context.fetch<T>();
        std::sort(all.begin(), all.end(),
                  [](const T* left, const T* right) { return left->id() < right->id(); });
        return all.empty() ? nullptr : all[static_cast<std::size_t>(pick(0, std::ssize(all) - 1))];
    }
    /// Near now, often exactly at it.
    Instant someTime() {
        return oneIn(8) ? m_now : m_now + static_cast<double>(pick(-60, 700)) * 1800;
    }

    /// True when the change is made but not saved.
    bool happen() {
        const auto what = pick(1, 20);
        if (what == 1) {
            m_zone = kZones[pick(0, 3)];
            tellTime();
        } else if (what <= 5) {
            m_now =
                m_now + static_cast<double>(pick(oneIn(6) ? -40 : 0, oneIn(4) ? 200 : 3) * 1800);
            tellTime();
        } else if (what <= 7) {
            chooseFilter();
        } else if (what <= 9) {
            linger();
        } else if (what == 10) {
            change(m_mine, pick(1, 4));
            m_mine.context.processPendingChanges();
            return m_mine.context.hasChanges();
        } else if (what <= 14) {
            change(m_others, oneIn(4) ? 100 : pick(1, 4));
            m_others.context.save();
            m_mine.context.refresh();
        } else {
            change(m_mine, oneIn(6) ? 100 : pick(1, 4));
            m_mine.context.save();
            m_others.context.refresh();
        }
        return false;
    }

    void tellTime() {
        m_upcoming->setNow(m_now, zone(m_zone));
        m_completed->setNow(m_now, zone(m_zone));
    }

    void chooseFilter() {
        m_filter = {};
        if (oneIn(3)) {
            m_filter.query = oneIn(2) ? "milk" : "bread milk";
        }
        if (const auto* board = any<Board>(m_mine); board && oneIn(4)) {
            m_filter.boardID = board->id();
        }
        m_filter.period = static_cast<CompletedFilter::Period>(pick(0, 4));
        m_filter.startDate = m_now - 86'400.0 * 20;
        m_filter.endDate = m_now;
        if (oneIn(2)) {
            m_filter.schedule = static_cast<CompletedFilter::Schedule>(pick(0, 3));
        }
        if (oneIn(3)) {
            m_filter.boardStatus = static_cast<CompletedFilter::BoardStatus>(pick(0, 2));
        }
        m_completed->setFilter(m_filter);
    }

    void linger() {
        if (const auto* entry = any<Entry>(m_mine)) {
            m_lingering.insert(entry->id());
            m_upcoming->linger(entry->id());
            m_completed->linger(entry->id());
        }
        while (m_lingering.size() > 6) {
            const auto id = *m_lingering.begin();
            m_lingering.erase(id);
            m_upcoming->release(id);
            m_completed->release(id);
        }
    }

    void create(TodoStore& store) {
        auto& entry = store.add({.content = oneIn(2) ? "Bread and milk" : "Mïlk",
                                 .createdAt = someTime(),
                                 .updatedAt = someTime(),
                                 .sortOrder = pick(0, 5)},
                                any<Board>(store));
        reschedule(entry);
        if (oneIn(3)) {
            complete(entry);
        }
    }

    void reschedule(Entry& entry) {
        const base::Calendar calendar{zone(m_zone)};
        model::TodoSchedule schedule;
        if (oneIn(3)) {
            schedule.dueDay = *calendar.day(someTime());
        } else if (oneIn(2)) {
            schedule.dueDate = someTime();
        }
        if (oneIn(3)) {
            schedule.reminderDate = someTime();
        }
        entry.setSchedule(schedule);
    }

    void complete(Entry& entry) {
        entry.setIsCompleted(!entry.isCompleted());
        const auto isKnown = entry.isCompleted() && !oneIn(6);
        entry.setCompletedAt(isKnown ? std::optional(someTime() - 86'400.0 * 14) : std::nullopt);
    }

    void change(TodoStore& store, std::int64_t times) {
        for (; times > 0; --times) {
            if (oneIn(4)) {
                create(store);
            }
            if (oneIn(12)) {
                changeBoard(store);
            }
            auto* entry = any<Entry>(store);
            if (entry) {
                change(store, *entry);
            }
        }
    }

    void change(TodoStore& store, Entry& entry) {
        switch (pick(1, 9)) {
        case 1:
        case 2:
            reschedule(entry);
            break;
        case 3:
        case 4:
            complete(entry);
            break;
        case 5:
            entry.setSortOrder(pick(0, 5));
            break;
        case 6:
            entry.setBoard(oneIn(6) ? nullptr : any<Board>(store));
            break;
        case 7:
            store.context.remove(entry);
            break;
        case 8:
            entry.setType(oneIn(2) ? model::EntryType::todo : model::EntryType::text);
            break;
        default:
            entry.setContent("Milk");
            entry.setUpdatedAt(someTime());
        }
    }

    void changeBoard(TodoStore& store) {
        auto* board = any<Board>(store);
        if (!board || oneIn(4)) {
            store.addBoard(pick(0, 4), oneIn(3));
        } else if (oneIn(4)) {
            store.context.remove(*board);
        } else if (oneIn(2)) {
            board->setIsArchived(!board->isArchived());
        } else {
            board->setSortOrder(pick(0, 4));
            board->setName("Work");
        }
    }

    void compare(bool isPending) {
        // A context of its own, so that nothing is loaded that the views did not load; what is not
        // saved only theirs has.
        store::ModelContext fresh(*m_mine.container);
        auto& context = isPending ? m_mine.context : fresh;
        services::FoldedTexts texts(context, m_mine.folding);
        const auto all = context.fetch<Entry>();

        const auto groups = UpcomingGroup::groups(all, m_now, zone(m_zone), m_lingering);
        ASSERT_EQ(shown(m_upcoming->groups()), shown(groups));
        std::size_t open = 0;
        for (const auto& group : groups) {
            open += static_cast<std::size_t>(
                std::count_if(group.entries.begin(), group.entries.end(),
                              [](const Entry* entry) { return !entry->isCompleted(); }));
        }
        ASSERT_EQ(m_upcoming->count(), open);

        const base::Calendar calendar(zone(m_zone), "en_GB");
        const auto filtered = m_filter.apply(all, m_now, calendar, texts);
        // What was restored and lingers has a test of its own.
        auto kept = m_completed->groups();
        for (auto& group : kept) {
            std::erase_if(group.entries, [](const Entry* entry) { return !entry->isCompleted(); });
        }
        std::erase_if(kept, [](const auto& group) { return group.entries.empty(); });
        ASSERT_EQ(shown(kept), shown(CompletedTodoGroup::groups(filtered, calendar)));
        const auto isCompleted = [](const Entry* entry) {
            return entry->isTodo() && entry->isCompleted();
        };
        ASSERT_GE(m_completed->hasAny(), std::any_of(all.begin(), all.end(), isCompleted));
    }

    std::mt19937 m_random;
    tests::TemporaryFolder m_folder;
    TodoStore m_mine{m_folder / "Primary.store"};
    TodoStore m_others{m_folder / "Primary.store"};
    Instant m_now = moment("2018-11-03T12:00Z");
    std::string m_zone = "America/Sao_Paulo";
    CompletedFilter m_filter;
    std::unordered_set<base::Uuid> m_lingering;
    std::optional<UpcomingTodos> m_upcoming;
    std::optional<CompletedTodos> m_completed;
    bool m_upcomingChanged = false;
    bool m_completedChanged = false;
    std::vector<base::Subscription> m_signals;
};

TEST(KeptViews, EqualTheirDefinitionsWhateverHappens) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
        TwoPrograms programs(seed);
        for (int step = 0; step < 150; ++step) {
            programs.step();
            ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed << " step " << step;
        }
    }
}

class KeptViewsTest : public ::testing::Test {
protected:
    static constexpr double kDay = 86'400;

    Entry& add(const model::TodoSchedule& schedule, std::optional<Instant> completedAt = {}) {
        auto fields = TodoStore::fields(schedule);
        fields.createdAt =
            Instant{--m_lastCreated}; // the later it is made, the older it says it is
        fields.isCompleted = completedAt.has_value();
        fields.completedAt = completedAt;
        auto& entry = m_store.add(fields, m_board);
        m_store.context.save();
        return entry;
    }

    TodoStore m_store;
    Board* m_board = &m_store.addBoard();
    Instant m_now = moment("2025-01-15T09:00");
    double m_lastCreated = 0;
};

TEST_F(KeptViewsTest, SayNothingOfWhatTheyDoNotShow) {
    auto& due = add(model::TodoSchedule::dueAt(m_now + 60));
    auto& plain = add({});
    auto& hidden = add(model::TodoSchedule::dueAt(m_now + 60));
    hidden.setBoard(&m_store.addBoard(1, true));
    m_store.context.save();
    UpcomingTodos upcoming(m_store.context, m_now, base::TimeZone::utc());
    CompletedTodos completed(m_store.context, m_store.texts, m_now, base::TimeZone::utc());
    int upcomingChanges = 0;
    int completedChanges = 0;
    const auto first = upcoming.didChange().connect([&] { ++upcomingChanges; });
    const auto second = completed.didChange().connect([&] { ++completedChanges; });

    plain.setContent("Something else");
    hidden.setContent("On an archived board");
    m_store.context.save();
    hidden.setSchedule({});
    m_store.context.save();
    upcoming.setNow(m_now + 59, base::TimeZone::utc());
    completed.setNow(m_now + 59, base::TimeZone::utc());
    EXPECT_EQ(upcomingChanges, 0);
    upcoming.setNow(m_now + 60, base::TimeZone::utc());
    EXPECT_EQ(upcomingChanges, 1) << "it is due";
    due.setContent("A shown text");
    m_store.context.save();
    EXPECT_EQ(upcomingChanges, 2);
    m_board->setName("Another name");
    m_store.context.save();
    EXPECT_EQ(upcomingChanges, 3) << "rows name their boards";
    EXPECT_EQ(completedChanges, 0);
    EXPECT_FALSE(completed.hasAny());

    completed.setFilter({.query = "nothing has this"});
    plain.setIsCompleted(true);
    plain.setCompletedAt(m_now);
    m_store.context.save();
    EXPECT_TRUE(completed.hasAny());
    EXPECT_TRUE(completed.groups().empty());
    EXPECT_EQ(completedChanges, 1) << "nothing is completed no more, but the filter hides it";
    EXPECT_EQ(upcomingChanges, 3);
}

TEST_F(KeptViewsTest, ATickedTodoStaysInItsPlaceUntilItIsReleased) {
    auto& first = add(model::TodoSchedule::dueAt(m_now + 60));
    auto& second = add(model::TodoSchedule::dueAt(m_now + 120));
    UpcomingTodos upcoming(m_store.context, m_now, base::TimeZone::utc());
    upcoming.linger(first.id());
    first.setIsCompleted(true);
    m_store.context.save();
    EXPECT_EQ(upcoming.groups(),
              (std::vector<UpcomingGroup>{{UpcomingSection::today, {&first, &second}}}));
    EXPECT_EQ(upcoming.count(), 1U);
    upcoming.release(first.id());
    EXPECT_EQ(upcoming.groups(), (std::vector<UpcomingGroup>{{UpcomingSection::today, {&second}}}));
}

TEST_F(KeptViewsTest, ARestoredTodoStaysInItsPlaceUntilItIsReleased) {
    auto& late = add({}, m_now);
    auto& alone = add({}, m_now - kDay);
    auto& early = add({}, m_now);
    early.setSortOrder(1);
    m_store.context.save();
    CompletedTodos completed(m_store.context, m_store.texts, m_now, base::TimeZone::utc());
    const auto before = completed.groups();
    ASSERT_EQ(before.size(), 2U);
    for (auto* entry : {&late, &alone}) {
        completed.linger(entry->id());
        entry->setIsCompleted(false);
        entry->setCompletedAt(std::nullopt);
        entry->setSortOrder(7);
        m_store.context.save();
        EXPECT_EQ(completed.groups(), before);
    }
    completed.release(late.id());
    EXPECT_EQ(completed.groups().front().entries, std::vector{&early});
    m_store.context.remove(alone);
    m_store.context.save();
    EXPECT_EQ(completed.groups().size(), 1U) << "deleted meanwhile";
    completed.release(alone.id());
    EXPECT_EQ(completed.groups().size(), 1U);
    early.setIsCompleted(false);
    m_store.context.save();
    EXPECT_FALSE(completed.hasAny());
}

TEST_F(KeptViewsTest, TodosCompletedAtOneMomentAreRenumberedTogether) {
    std::vector<Entry*> todos;
    for (int i = 0; i < 6; ++i) {
        todos.push_back(&add({}, m_now));
    }
    CompletedTodos completed(m_store.context, m_store.texts, m_now, base::TimeZone::utc());
    std::mt19937 random(1);
    for (int round = 0; round < 20; ++round) {
        for (auto* todo : todos) {
            todo->setSortOrder(static_cast<std::int64_t>(random() % 3));
        }
        m_store.context.save();
        std::sort(todos.begin(), todos.end(), [](const Entry* left, const Entry* right) {
            return services::ordered(*left, *right);
        });
        ASSERT_EQ(completed.groups(),
                  (std::vector<CompletedTodoGroup>{{moment("2025-01-15T00:00"), todos}}));
    }
}

TEST_F(KeptViewsTest, ManyTodosOfAnotherProgramArriveAtOnce) {
    const tests::TemporaryFolder folder;
    TodoStore mine(folder / "Primary.store");
    auto& board = mine.addBoard();
    mine.context.save();
    UpcomingTodos upcoming(mine.context, m_now, base::TimeZone::utc());
    TodoStore others(folder / "Primary.store");
    auto* theirs = others.context.find<Board>(board.id());
    for (int i = 0; i < 2000; ++i) {
        others.add(TodoStore::fields(model::TodoSchedule::dueAt(m_now + i + 1)), theirs);
    }
    others.context.save();
    mine.context.refresh();
    EXPECT_EQ(upcoming.count(), 2000U);
    EXPECT_EQ(shown(upcoming.groups()), shown(UpcomingGroup::groups(mine.context.fetch<Entry>(),
                                                                    m_now, base::TimeZone::utc())));
}

TEST_F(KeptViewsTest, ABoardThatCameBackInAnotherRowIsComparedWithWhatItWas) {
    const tests::TemporaryFolder folder;
    TodoStore mine(folder / "Primary.store");
    auto& board = mine.addBoard();
    mine.add(TodoStore::fields(model::TodoSchedule::dueAt(m_now + 60)), &board);
    mine.context.save();
    UpcomingTodos upcoming(mine.context, m_now, base::TimeZone::utc());
    ASSERT_EQ(upcoming.count(), 1U);
    TodoStore others(folder / "Primary.store");
    others.context.find<Board>(board.id())->setIsArchived(true);
    others.context.save();
    // As after a restore: no log leads here, and no todo's own row is another.
    SQLite::Database((folder / "Primary.store").string(), SQLite::OPEN_READWRITE)
        .exec("UPDATE Board SET rowid = rowid + 100; DELETE FROM ChangeLog");
    mine.context.refresh();
    EXPECT_EQ(upcoming.count(), 0U);
}

TEST_F(KeptViewsTest, WhatCouldNotBeReadIsMadeUpFor) {
    const tests::TemporaryFolder folder;
    TodoStore others(folder / "Primary.store");
    auto& board = others.addBoard();
    others.context.save();
    TodoStore mine(folder / "Primary.store");
    const auto arrive = [&] {
        others.add(TodoStore::fields(model::TodoSchedule::dueAt(m_now + 60)), &board);
        others.context.save();
        mine.context.refresh();
    };
    const auto underneath = [&](const char* sql) {
        SQLite::Database((folder / "Primary.store").string(), SQLite::OPEN_READWRITE).exec(sql);
    };
    // Just before the view hears of the change.
    auto breaking = mine.context.didChange().connect(
        [&](const auto&) { underneath("ALTER TABLE Entry RENAME TO Gone"); });
    UpcomingTodos upcoming(mine.context, m_now, base::TimeZone::utc());
    arrive();
    EXPECT_EQ(upcoming.count(), 0U);
    breaking = {};
    underneath("ALTER TABLE Gone RENAME TO Entry");
    arrive();
    EXPECT_EQ(upcoming.count(), 2U);
}

} // namespace
} // namespace korvex::schedule
