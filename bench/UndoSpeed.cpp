// The first of 10,000 open todos completed, undone and redone, which renumbers all of them, each on
// the disk when it is done; against SQLite that updates those rows in one transaction as durable.

#include "support/BenchStore.h"
#include "support/PlainRenumbering.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

namespace {

using namespace korvex;

constexpr std::int64_t kEntries = 10'000;
constexpr int kIterations = 20;

enum class Measured { complete, undo, redo };

void korvexStore(benchmark::State& state, Measured measured) {
    const bench::Scratch scratch;
    const auto file = scratch / "Primary.store";
    bench::makeStore(file, bench::bodies(kEntries));
    bench::OpenStore store(file);
    const base::SystemClock clock{};
    services::UndoManager undo(clock);
    auto service = store.entries(&undo);
    auto& todo = *services::activeEntries(store.inbox()).front();
    const auto step = [&](Measured which, auto&& work) {
        if (which == measured) {
            bench::timed(state, work);
        } else {
            work();
        }
    };
    for (auto _ : state) {
        step(Measured::complete, [&] { service.completeTodo(todo, bench::kNow); });
        step(Measured::undo, [&] { undo.undo(); });
        step(Measured::redo, [&] { undo.redo(); });
        undo.undo();
    }
}

void plainSqlite(benchmark::State& state) {
    const bench::Scratch scratch;
    const auto file = scratch / "Primary.store";
    bench::makeStore(file, bench::bodies(kEntries));
    const bench::PlainDatabase database(file);
    database.makeDurable();
    bench::PlainStatement complete(database, "UPDATE Entry SET sortOrder = ?, isCompleted = 1, "
                                             "completedAt = ?, updatedAt = ? WHERE rowid = 1");
    bench::PlainRenumbering renumbering(database);
    std::int64_t shift = 0;
    for (auto _ : state) {
        ++shift;
        bench::timed(state, [&] {
            database.run("BEGIN IMMEDIATE");
            complete.bind(1, kEntries + shift);
            complete.bind(2, bench::kNow.seconds + static_cast<double>(shift));
            complete.bind(3, bench::kNow.seconds + static_cast<double>(shift));
            complete.run();
            renumbering.run(2, kEntries, shift);
            database.run("COMMIT");
        });
    }
}

void inMilliseconds(benchmark::internal::Benchmark* each) {
    each->UseManualTime()->Iterations(kIterations)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(korvexStore, complete, Measured::complete)
    ->Name("complete")
    ->Apply(inMilliseconds);
BENCHMARK_CAPTURE(korvexStore, undo, Measured::undo)->Name("undo")->Apply(inMilliseconds);
BENCHMARK_CAPTURE(korvexStore, redo, Measured::redo)->Name("redo")->Apply(inMilliseconds);
BENCHMARK(plainSqlite)->Name("limit")->Apply(inMilliseconds);

} // namespace
