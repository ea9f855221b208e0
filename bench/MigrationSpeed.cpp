// A store of 100,000 entries as the oldest version has written it, upgraded to the current one as a
// start does; against SQLite writing the same store anew. The upgrade ends with the disk, SQLite's
// does not wait for it.

#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

#include "model/SchemaVersions.h"
#include "tests/support/OldStore.h"

#include <unistd.h>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 100'000;

std::filesystem::path scratch() {
    static const bench::Scratch folder;
    return folder.path();
}

/// As the version of before the bridge has left it, without a journal.
std::filesystem::path oldStore() {
    static const auto file = [] {
        auto path = scratch() / "old.store";
        tests::OldStore old(path, tests::OldStore::version("V10"));
        const auto board = tests::OldStore::board("Inbox");
        old.addBoard(board);
        std::int64_t order = 0;
        for (auto& body : bench::bodies(kEntries)) {
            old.addEntry(tests::OldStore::entry(board, order % 2 == 0 ? "todo" : "text",
                                                std::move(body), {{"sortOrder", order}}));
            ++order;
        }
        return path;
    }();
    return file;
}

void korvexStore(benchmark::State& state) {
    base::StandardErrorLog log(base::LogLevel::error);
    for (auto _ : state) {
        const auto folder = scratch() / base::Uuid::random().text();
        std::filesystem::create_directory(folder);
        std::filesystem::copy_file(oldStore(), folder / "Primary.store");
        ::sync();
        std::unique_ptr<store::ModelContainer> container;
        bench::timed(state, [&] {
            container = store::ModelContainer::open(
                model::currentSchema(),
                {.file = folder / "Primary.store",
                 .whenOlder = store::ModelConfiguration::Older::upgrade},
                log);
        });
        if (!container->wasUpgraded() ||
            store::ModelContext(*container).count<model::Entry>() != kEntries) {
            state.SkipWithError("the store was not upgraded");
        }
        container.reset();
        std::filesystem::remove_all(folder);
    }
}

void plainSqlite(benchmark::State& state) {
    for (auto _ : state) {
        const auto copy = scratch() / (base::Uuid::random().text() + ".copy");
        const bench::PlainDatabase database(oldStore());
        ::sync();
        bench::timed(state, [&] { database.run("VACUUM INTO '" + copy.string() + "'"); });
        std::filesystem::remove(copy);
    }
}

BENCHMARK(korvexStore)->Name("korvex")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(plainSqlite)->Name("limit")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
