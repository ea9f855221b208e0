// One todo more at the end of a board of 1,000, on the disk when it is done; against one row
// inserted into the same table and committed as durably.

#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 1'000;

void korvexStore(benchmark::State& state) {
    const bench::Scratch scratch;
    const auto file = scratch / "Primary.store";
    bench::makeStore(file, bench::bodies(kEntries));
    bench::OpenStore store(file);
    auto& inbox = store.inbox();
    // In memory, as a window has the board that it shows.
    benchmark::DoNotOptimize(inbox.entries().size());
    const auto body = bench::bodies(1);
    for (auto _ : state) {
        std::vector<model::Entry*> created;
        bench::timed(state, [&] {
            created =
                store.entries().createTodos({.contents = body, .board = inbox, .now = bench::kNow});
        });
        store.context().remove(*created.front());
        store.context().save();
    }
}

void plainSqlite(benchmark::State& state) {
    const bench::Scratch scratch;
    bench::makeStore(scratch / "Primary.store");
    bench::PlainEntries entries(scratch / "plain.sqlite", scratch / "Primary.store");
    const auto board = base::Uuid::random();
    const auto bodies = bench::bodies(kEntries + 1);
    entries.database().run("BEGIN");
    for (std::size_t i = 0; i < kEntries; ++i) {
        entries.insert(bench::PlainEntries::todo(bodies[i], static_cast<std::int64_t>(i), board));
    }
    entries.database().run("COMMIT");
    const auto fields = bench::PlainEntries::todo(bodies.back(), kEntries, board);
    for (auto _ : state) {
        bench::timed(state, [&] { entries.insert(fields); });
        entries.database().run("DELETE FROM Entry WHERE rowid = " + std::to_string(kEntries + 1));
    }
}

BENCHMARK(korvexStore)->Name("korvex")->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(plainSqlite)->Name("limit")->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace
