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
            bench::PlainStatement rows(
                database, "SELECT id, typeRawValue, content, richTextData, createdAt, updatedAt, "
                          "sortOrder, isCompleted, completedAt, dueDay, dueDate, dueStartDate, "
                          "reminderDate, board FROM Entry");
            const auto optionalDate = [&](int column) {
                return rows.isAbsent(column) ? std::nullopt
                                             : std::optional(base::Instant{rows.real(column)});
            };
            while (rows.step()) {
                auto& entry = entries.emplace_back();
                entry.id = rows.uuid(0);
                entry.typeRawValue = rows.text(1);
                entry.content = rows.text(2);
                if (!rows.isAbsent(3)) {
                    const auto bytes = rows.text(3);
                    entry.richTextData.emplace(bytes.begin(), bytes.end());
                }
                entry.createdAt = {rows.real(4)};
                entry.updatedAt = {rows.real(5)};
                entry.sortOrder = rows.integer(6);
                entry.isCompleted = rows.integer(7) != 0;
                entry.completedAt = optionalDate(8);
                if (!rows.isAbsent(9)) {
                    entry.dueDay = rows.integer(9);
                }
                entry.dueDate = optionalDate(10);
                entry.dueStartDate = optionalDate(11);
                entry.reminderDate = optionalDate(12);
                entry.boardID = rows.uuid(13);
            }
        });
        if (entries.size() != kEntries) {
            state.SkipWithError("not all rows were read");
        }
    }
}

BENCHMARK(korvexStore)->Name("korvex")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(plainSqlite)->Name("limit")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
