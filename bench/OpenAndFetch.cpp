// A store of 100,000 entries, opened and all of them fetched; against SQLite that reads the same
// rows of the same file into structs.

#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

#include "model/SchemaVersions.h"

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 100'000;

std::filesystem::path storeFile() {
    static const bench::Scratch scratch;
    static const auto file = [] {
        auto path = scratch / "Primary.store";
        bench::makeStore(path, bench::bodies(kEntries));
        return path;
    }();
    return file;
}

void korvexStore(benchmark::State& state) {
    const auto file = storeFile();
    base::StandardErrorLog log(base::LogLevel::error);
    for (auto _ : state) {
        std::unique_ptr<store::ModelContainer> container;
        std::optional<store::ModelContext> context;
        std::vector<model::Entry*> entries;
        bench::timed(state, [&] {
            container = store::ModelContainer::open(model::currentSchema(), {.file = file}, log);
            context.emplace(*container);
            entries = context->fetch<model::Entry>();
        });
        if (entries.size() != kEntries) {
            state.SkipWithError("not all entries were fetched");
        }
    }
}

void plainSqlite(benchmark::State& state) {
    const auto file = storeFile();
    for (auto _ : state) {
        std::vector<model::EntryFields> entries;
        bench::timed(state, [&] {
            const bench::PlainDatabase database(file);
            entries = bench::readEntries(database);
        });
        if (entries.size() != kEntries) {
            state.SkipWithError("not all rows were read");
        }
    }
}

BENCHMARK(korvexStore)->Name("korvex")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(plainSqlite)->Name("limit")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
