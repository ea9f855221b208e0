// The views over 100,000 scheduled and 100,000 completed todos of 20 boards: Upcoming from nothing,
// one changed todo, and the Completed filter with every criterion; against a plain scan of the same
// entries with std::sort of as many keys.

#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/StandingStill.h"
#include "support/Stopwatch.h"

#include "base/TextFolding.h"
#include "schedule/CompletedTodos.h"
#include "schedule/MissedReminders.h"
#include "schedule/UpcomingTodos.h"

#include <algorithm>
#include <cstdlib>
#include <random>

namespace {

using namespace korvex;

constexpr std::size_t kTodos = 100'000;
constexpr int kBoards = 20;
constexpr double kHour = 3600;
constexpr double kDay = 24 * kHour;

base::TimeZone berlin() {
    ::setenv("TZ", "Europe/Berlin", 1);
    return base::TimeZone::system();
}

/// Half of the todos scheduled from a month ago to a year ahead, as people do: days, times,
/// windows, reminders; the other half completed within two years.
class Todos {
public:
    Todos() : m_store(m_scratch / "Primary.store") {
        std::vector<model::Board*> boards;
        for (int i = 0; i < kBoards; ++i) {
            boards.push_back(
                &m_store.boards().createBoard("Board " + std::to_string(i), bench::kNow));
        }
        const auto titles = bench::titles(2 * kTodos);
        for (std::size_t i = 0; i < titles.size(); ++i) {
            auto fields = todo(i >= kTodos);
            fields.content = titles[i];
            fields.sortOrder = static_cast<std::int64_t>(i / kBoards);
            auto& entry = m_store.context().insert(std::make_unique<model::Entry>(fields));
            entry.setBoard(boards[pick(0, kBoards - 1)]);
            (i < kTodos ? scheduled : completed).push_back(&entry);
        }
        m_store.context().save();
    }

    store::ModelContext& context() { return m_store.context(); }

    std::vector<model::Entry*> scheduled;
    std::vector<model::Entry*> completed;

private:
    std::size_t pick(std::size_t from, std::size_t to) {
        return std::uniform_int_distribution<std::size_t>(from, to)(m_random);
    }

    model::EntryFields todo(bool isCompleted) {
        model::EntryFields fields{.id = base::Uuid::random(),
                                  .typeRawValue = "todo",
                                  .createdAt = bench::kNow,
                                  .updatedAt = bench::kNow,
                                  .isCompleted = isCompleted};
        const auto due = bench::kNow +
                         (static_cast<double>(pick(0, 395)) - (isCompleted ? 395 : 30)) * kDay +
                         static_cast<double>(pick(0, 96)) * kHour / 4;
        if (isCompleted) {
            // On time or not, at any moment.
            fields.completedAt =
                due + static_cast<double>(pick(0, 1'000'000'000)) / 1e9 * 40 * kDay - 20 * kDay;
        }
        const auto kind = pick(0, 9);
        if (kind < 4) {
            fields.dueDay = m_calendar.day(due);
        } else if (kind < 8) {
            fields.dueDate = due;
        }
        if (kind > 6) {
            fields.reminderDate = due - kHour;
        }
        return fields;
    }

    bench::Scratch m_scratch;
    bench::OpenStore m_store;
    std::mt19937 m_random{1};
    base::Calendar m_calendar{berlin()};
};

Todos& todos() {
    static Todos all;
    return all;
}

/// The least that any answer must do: look at each entry and sort what it says.
std::size_t scanAndSort(const std::vector<model::Entry*>& entries,
                        std::optional<base::Instant> (model::Entry::*date)() const) {
    struct Key {
        double date;
        model::Entry* entry;
    };
    std::vector<Key> keys;
    keys.reserve(entries.size());
    for (auto* entry : entries) {
        if (entry->isTodo()) {
            keys.push_back({(entry->*date)().value_or(entry->createdAt()).seconds, entry});
        }
    }
    std::sort(keys.begin(), keys.end(),
              [](const Key& left, const Key& right) { return left.date < right.date; });
    return keys.size();
}

void upcoming(benchmark::State& state) {
    auto& entries = todos().scheduled;
    for (auto _ : state) {
        const auto groups = schedule::UpcomingGroup::groups(entries, bench::kNow, berlin());
        if (groups.size() != 7) {
            state.SkipWithError("not all sections are there");
        }
    }
}

void upcomingLimit(benchmark::State& state) {
    auto& entries = todos().scheduled;
    for (auto _ : state) {
        benchmark::DoNotOptimize(scanAndSort(entries, &model::Entry::dueDate));
    }
}

/// A todo is put off again and again; what is measured is what its announced change costs, also
/// to the list of reminders that were missed: there are thousands.
void oneChange(benchmark::State& state) {
    auto& context = todos().context();
    schedule::UpcomingTodos view(context, bench::kNow, berlin());
    const bench::StandingClock standing;
    bench::NoRunLoop runLoop;
    base::StandardErrorLog log(base::LogLevel::warning);
    schedule::ScheduleClock clock(standing, runLoop, berlin, log);
    schedule::NoReminderCenter denied({.authorization = schedule::AuthorizationStatus::denied});
    const schedule::MissedReminders missed(
        context, denied, clock,
        schedule::MissedReminders::Seen{base::Instant::distantPast(), [](auto) {}});
    if (missed.count() < 1'000) {
        state.SkipWithError("no reminders were missed");
    }
    std::mt19937 random(2);
    for (auto _ : state) {
        auto* entry = todos().scheduled[random() % kTodos];
        entry->setSchedule(model::TodoSchedule::dueAt(
            bench::kNow + static_cast<double>(random() % 10'000) * kHour));
        const auto isNow = view.count();
        // Announces what is pending, to these observers.
        bench::timed(state, [&] { context.processPendingChanges(); });
        if (isNow == 0) {
            state.SkipWithError("nothing is upcoming");
        }
        state.PauseTiming();
        context.rollback();
        state.ResumeTiming();
    }
}

schedule::CompletedFilter everyCriterion() {
    return {.query = "order week",
            .period = schedule::CompletedFilter::Period::custom,
            .schedule = schedule::CompletedFilter::Schedule::late,
            .boardStatus = schedule::CompletedFilter::BoardStatus::active,
            .startDate = bench::kNow - 600 * kDay,
            .endDate = bench::kNow};
}

/// The criteria let through what they can: what is hidden early costs little.
void completed(benchmark::State& state) {
    auto& entries = todos().completed;
    const base::TextFolding folding("en_US");
    services::FoldedTexts texts(todos().context(), folding);
    const base::Calendar calendar(berlin(), "en_US");
    const auto filter = everyCriterion();
    const auto shown = filter.apply(entries, bench::kNow, calendar, texts).size();
    for (auto _ : state) {
        if (filter.apply(entries, bench::kNow, calendar, texts).size() != shown || shown == 0) {
            state.SkipWithError("nothing is shown");
        }
    }
    state.counters["shown"] = static_cast<double>(shown);
}

void completedLimit(benchmark::State& state) {
    auto& entries = todos().completed;
    for (auto _ : state) {
        benchmark::DoNotOptimize(scanAndSort(entries, &model::Entry::completedAt));
    }
}

void days(benchmark::State& state) {
    const base::TextFolding folding("en_US");
    services::FoldedTexts texts(todos().context(), folding);
    const base::Calendar calendar(berlin(), "en_US");
    const auto all =
        schedule::CompletedFilter{}.apply(todos().completed, bench::kNow, calendar, texts);
    for (auto _ : state) {
        if (schedule::CompletedTodoGroup::groups(all, calendar).empty()) {
            state.SkipWithError("nothing is shown");
        }
    }
}

/// A key typed into the search field of the view.
void completedView(benchmark::State& state) {
    const base::TextFolding folding("en_US");
    services::FoldedTexts texts(todos().context(), folding);
    schedule::CompletedTodos view(todos().context(), texts, bench::kNow, berlin(), "en_US");
    auto filter = everyCriterion();
    view.setFilter(filter);
    for (auto _ : state) {
        filter.query = filter.query == "order" ? "orders" : "order";
        view.setFilter(filter);
    }
}

/// Midnight: nothing is where it was.
void nextDay(benchmark::State& state) {
    schedule::UpcomingTodos view(todos().context(), bench::kNow, berlin());
    auto now = bench::kNow;
    for (auto _ : state) {
        now = now + kDay;
        view.setNow(now, berlin());
    }
}

BENCHMARK(upcoming)->Name("upcoming")->Unit(benchmark::kMillisecond);
BENCHMARK(upcomingLimit)->Name("limit/upcoming")->Unit(benchmark::kMillisecond);
BENCHMARK(oneChange)->Name("change")->UseManualTime()->Iterations(200)->Unit(
    benchmark::kMillisecond);
BENCHMARK(nextDay)->Name("midnight")->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(completed)->Name("completed")->Unit(benchmark::kMillisecond);
BENCHMARK(completedLimit)->Name("limit/completed")->Unit(benchmark::kMillisecond);
BENCHMARK(days)->Name("days")->Unit(benchmark::kMillisecond);
BENCHMARK(completedView)->Name("typing")->Iterations(20)->Unit(benchmark::kMillisecond);

} // namespace
