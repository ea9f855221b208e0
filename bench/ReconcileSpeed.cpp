// A reconcile of 10,000 reminders of which one has changed, with the agent's own table as the place
// where notifications wait; against plain SQLite reading the same rows of the store into structs.

#include "support/BenchStore.h"
#include "support/PlainSqlite.h"
#include "support/Scratch.h"
#include "support/StandingStill.h"
#include "support/Stopwatch.h"

#include "agent/TableNotificationClient.h"
#include "schedule/ReminderScheduler.h"

#include <random>

namespace {

using namespace korvex;

constexpr std::size_t kReminders = 10'000;

/// Counts the requests that are added.
class CountingLog final : public base::LogSink {
public:
    void write(base::LogLevel, std::string_view, std::string_view message) override {
        added += message.starts_with("Scheduled reminder") ? 1U : 0U;
    }
    std::size_t added = 0;
};

/// Also counts what is cancelled.
class CountingClient final : public schedule::NotificationScheduling {
public:
    explicit CountingClient(agent::ReminderTable& table) : m_client(table) {}

    void registerCategory() override { m_client.registerCategory(); }
    schedule::AuthorizationStatus authorization() override { return m_client.authorization(); }
    std::vector<schedule::PendingReminder> pending(base::Instant now) override {
        return m_client.pending(now);
    }
    void add(const schedule::ReminderRequest& request) override { m_client.add(request); }
    void cancel(std::span<const std::string> identifiers) override {
        cancelled += identifiers.size();
        m_client.cancel(identifiers);
    }
    void requestAuthorization() override { m_client.requestAuthorization(); }
    void applyReconcile(const std::function<void()>& changes) override {
        m_client.applyReconcile(changes);
    }
    std::size_t cancelled = 0;

private:
    agent::TableNotificationClient m_client;
};

std::filesystem::path storeFile(const bench::Scratch& scratch) {
    return scratch / "Primary.store";
}

/// Open todos with reminders, among as many without and as many that are completed.
void fill(bench::OpenStore& store) {
    auto& inbox = store.inbox();
    const auto titles = bench::titles(3 * kReminders);
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const auto kind = i % 3;
        auto& entry = store.context().insert(std::make_unique<model::Entry>(model::EntryFields{
            .id = base::Uuid::random(),
            .typeRawValue = "todo",
            .content = titles[i],
            .createdAt = bench::kNow,
            .updatedAt = bench::kNow,
            .sortOrder = static_cast<std::int64_t>(i),
            .isCompleted = kind == 2,
            .reminderDate =
                kind == 1 ? std::nullopt : std::optional(bench::kNow + 60.0 * double(i + 1))}));
        entry.setBoard(&inbox);
    }
    store.context().save();
}

void reconcile(benchmark::State& state) {
    const bench::Scratch scratch;
    bench::makeStore(storeFile(scratch));
    bench::OpenStore store(storeFile(scratch));
    fill(store);
    CountingLog log;
    const bench::StandingClock clock;
    bench::NoRunLoop runLoop;
    agent::ReminderTable table(scratch / "reminders.sqlite", log);
    CountingClient client(table);
    schedule::ReminderScheduler scheduler(client, clock, runLoop, log);
    scheduler.reconcile(store.context(), bench::kNow);
    if (log.added != kReminders) {
        state.SkipWithError("not all are planned");
    }
    const auto todos = store.context().fetch<model::Entry>(
        {.condition = store::Condition::isPresent(model::Entry::reminderDateField) &&
                      model::Entry::openTodos()});
    std::mt19937 random(1);
    for (auto _ : state) {
        auto& todo = *todos[random() % todos.size()];
        todo.setSchedule({.reminderDate = *todo.reminderDate() + 1});
        store.context().save();
        log.added = 0;
        client.cancelled = 0;
        bench::timed(state, [&] { scheduler.reconcile(store.context(), bench::kNow); });
        if (log.added != 1 || client.cancelled != 1) {
            state.SkipWithError("not just the one that has changed is planned anew");
        }
    }
}

void limit(benchmark::State& state) {
    const bench::Scratch scratch;
    bench::makeStore(storeFile(scratch));
    {
        bench::OpenStore store(storeFile(scratch));
        fill(store);
    }
    const bench::PlainDatabase database(storeFile(scratch));
    bench::PlainStatement rows(database,
                               "SELECT id, reminderDate, content FROM Entry WHERE reminderDate > ? "
                               "AND isCompleted = 0 AND typeRawValue = 'todo'");
    rows.bind(1, bench::kNow.seconds);
    for (auto _ : state) {
        bench::timed(state, [&] {
            std::vector<schedule::ReminderRequest> requests;
            while (rows.step()) {
                requests.push_back({rows.uuid(0), {rows.real(1)}, std::string(rows.text(2))});
            }
            if (requests.size() != kReminders) {
                state.SkipWithError("not all are read");
            }
        });
    }
}

BENCHMARK(reconcile)->Name("korvex")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(limit)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
