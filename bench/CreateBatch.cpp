// 100,000 todos in one batch into an empty store, on the disk when it is done; against SQLite that
// inserts those rows into the same table in one transaction as durable.

#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 100'000;

void korvexStore(benchmark::State& state) {
    const auto contents = bench::bodies(kEntries);
    for (auto _ : state) {
        const bench::Scratch scratch;
        bench::OpenStore store(scratch / "Primary.store");
        auto& inbox = store.inbox();
        const services::NewTodos todos{.contents = contents, .board = inbox, .now = bench::kNow};
        bench::timed(state, [&] { store.entries().createTodos(todos); });
    }
}

void plainSqlite(benchmark::State& state) {
    const auto contents = bench::bodies(kEntries);
    const auto board = base::Uuid::random();
    std::vector<model::EntryFields> rows;
    for (std::size_t i = 0; i < kEntries; ++i) {
        rows.push_back(bench::PlainEntries::todo(contents[i], static_cast<std::int64_t>(i), board));
    }
    for (auto _ : state) {
        const bench::Scratch scratch;
        bench::makeStore(scratch / "Primary.store");
        bench::PlainEntries entries(scratch / "plain.sqlite", scratch / "Primary.store");
        bench::timed(state, [&] {
            entries.database().run("BEGIN IMMEDIATE");
            for (const auto& row : rows) {
                entries.insert(row);
            }
            entries.database().run("COMMIT");
        });
    }
}

BENCHMARK(korvexStore)->Name("korvex")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(plainSqlite)->Name("limit")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
