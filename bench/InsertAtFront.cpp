// One todo in front of a board of 10,000, which renumbers all of them, on the disk when it is done;
// against SQLite that updates those rows one by one in one transaction as durable.

#include "support/BenchStore.h"
#include "support/PlainRenumbering.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

namespace {

using namespace korvex;

constexpr std::int64_t kEntries = 10'000;
/// The board grows by one with each: few enough to stay a board of 10,000.
constexpr int kIterations = 10;

void korvexStore(benchmark::State& state) {
    const bench::Scratch scratch;
    const auto file = scratch / "Primary.store";
    bench::makeStore(file, bench::bodies(kEntries));
    bench::OpenStore store(file);
    auto& inbox = store.inbox();
    const auto body = bench::bodies(1);
    auto first = services::activeEntries(inbox).front()->id();
    for (auto _ : state) {
        bench::timed(state, [&] {
            first = store.entries()
                        .createTodos(
                            {.contents = body, .board = inbox, .before = first, .now = bench::kNow})
                        .front()
                        ->id();
        });
    }
}

void plainSqlite(benchmark::State& state) {
    const bench::Scratch scratch;
    const auto file = scratch / "Primary.store";
    bench::makeStore(file, bench::bodies(kEntries));
    const bench::PlainDatabase database(file);
    database.makeDurable();
    bench::PlainRenumbering renumbering(database);
    std::int64_t shift = 0;
    for (auto _ : state) {
        ++shift;
        bench::timed(state, [&] {
            database.run("BEGIN IMMEDIATE");
            renumbering.run(1, kEntries, shift);
            database.run("COMMIT");
        });
    }
}

BENCHMARK(korvexStore)
    ->Name("korvex")
    ->UseManualTime()
    ->Iterations(kIterations)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(plainSqlite)
    ->Name("limit")
    ->UseManualTime()
    ->Iterations(kIterations)
    ->Unit(benchmark::kMillisecond);

} // namespace
