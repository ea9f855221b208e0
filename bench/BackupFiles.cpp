// A store of 100,000 formatted texts, 100 MB: `korvex backup export` and `korvex backup import` as
// whole processes, and the repair that finds nothing to do. "memory" is the most that the process
// had resident; the file has 150 MB.

#include "backup/BackupFileIO.h"
#include "storage/BackupService.h"
#include "storage/DataIntegrityService.h"
#include "support/BenchStore.h"
#include "support/ChildProcess.h"
#include "support/LargeBackup.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace korvex;

constexpr const char* kColumns = "id, typeRawValue, content, richTextData, createdAt, updatedAt, "
                                 "sortOrder, isCompleted, completedAt, dueDay, dueDate, "
                                 "dueStartDate, reminderDate, board";

/// A store and its backup, in a folder. Nothing of them is kept in memory: what a program has at
/// its start would count as the child's.
struct Subject {
    bench::Scratch scratch;
    std::filesystem::path data = scratch / "data";
    std::filesystem::path file = scratch / "mine.korvexbackup";
    std::filesystem::path store = data / "Primary.store";

    Subject() {
        storage::Work work;
        storage::writeBackup(bench::largeBackup(), file, work);
        runKorvex({"import", file.string(), "--yes"});
    }

    base::Bytes bytes() const { return backup::BackupFileIO::readFile(file); }

    bench::ChildProcess::Result runKorvex(std::vector<std::string> arguments) const {
        std::vector<std::string> command{KORVEX_PROGRAM, "--data-dir", data.string(), "backup"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return bench::runToEnd(command);
    }

    static const Subject& get() {
        static const Subject subject;
        return subject;
    }
};

void require(bool holds) {
    if (!holds) {
        throw std::runtime_error("the disk");
    }
}

void writeAndSync(const std::filesystem::path& file, std::span<const std::uint8_t> bytes) {
    const auto descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    require(::write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    require(::fsync(descriptor) == 0);
    ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED);
    ::close(descriptor);
}

void readRows(const bench::PlainDatabase& database) {
    require(bench::readEntries(database).size() == bench::kBackupEntries);
}

struct Ignoring : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Ignoring> {};

void readJson(const base::Bytes& bytes) {
    rapidjson::MemoryStream stream(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    rapidjson::Reader reader;
    Ignoring handler;
    require(!reader
                 .Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(
                     stream, handler)
                 .IsError());
}

void replaceRows(const bench::PlainDatabase& database, const backup::BackupDocument& document) {
    database.run("BEGIN IMMEDIATE");
    database.run("DELETE FROM Entry");
    bench::PlainStatement insert(database, std::string("INSERT INTO Entry(version, checksum, ") +
                                               kColumns +
                                               ") VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    for (const auto& entry : document.entries) {
        insert.bind(1, std::int64_t{1});
        insert.bind(2, std::int64_t{0x1234567890abcdef});
        insert.bind(3, entry.id);
        insert.bind(4, std::string_view(entry.type));
        insert.bind(5, std::string_view(entry.content));
        insert.bind(6, std::string_view(reinterpret_cast<const char*>(entry.richTextData->data()),
                                        entry.richTextData->size()));
        insert.bind(7, entry.createdAt.seconds);
        insert.bind(8, entry.updatedAt.seconds);
        insert.bind(9, entry.sortOrder);
        insert.bind(10, std::int64_t{entry.isCompleted ? 1 : 0});
        insert.bind(16, entry.boardID);
        insert.run();
    }
    database.run("COMMIT");
}

void exporting(benchmark::State& state) {
    const auto& subject = Subject::get();
    std::int64_t memory = 0;
    for (auto _ : state) {
        bench::timed(state, [&] {
            const auto file = (subject.scratch / "exported").string();
            memory = subject.runKorvex({"export", file, "--force"}).peakMemory;
        });
    }
    state.counters["memory"] = static_cast<double>(memory);
}

void exportLimit(benchmark::State& state) {
    const auto& subject = Subject::get();
    const auto file = subject.scratch / "plain";
    const auto bytes = subject.bytes();
    for (auto _ : state) {
        bench::timed(state, [&] {
            const bench::PlainDatabase database(subject.store);
            readRows(database);
            writeAndSync(file, bytes);
            require(backup::BackupFileIO::readFile(file) == bytes);
        });
    }
}

void importing(benchmark::State& state) {
    const auto& subject = Subject::get();
    std::int64_t memory = 0;
    for (auto _ : state) {
        bench::timed(state, [&] {
            memory = subject.runKorvex({"import", subject.file.string(), "--yes"}).peakMemory;
        });
    }
    state.counters["memory"] = static_cast<double>(memory);
}

void importLimit(benchmark::State& state) {
    const auto& subject = Subject::get();
    const auto store = subject.scratch / "Plain.store";
    std::filesystem::remove(store);
    const bench::PlainEntries plain(store, subject.store);
    const auto bytes = subject.bytes();
    const auto document = backup::BackupFileIO::decode(bytes);
    replaceRows(plain.database(), document);
    for (auto _ : state) {
        bench::timed(state, [&] {
            readJson(backup::BackupFileIO::readFile(subject.file));
            writeAndSync(subject.scratch / "plain", bytes);
            readJson(backup::BackupFileIO::readFile(subject.scratch / "plain"));
            replaceRows(plain.database(), document);
        });
    }
}

void repairing(benchmark::State& state) {
    bench::OpenStore store(Subject::get().store);
    base::StandardErrorLog log(base::LogLevel::error);
    for (auto _ : state) {
        bench::timed(state, [&] {
            const auto report =
                storage::DataIntegrityService(store.context(), log).repair({.now = bench::kNow});
            require(report.isEmpty());
        });
    }
}

void repairLimit(benchmark::State& state) {
    const bench::PlainDatabase database(Subject::get().store);
    for (auto _ : state) {
        bench::timed(state, [&] { readRows(database); });
    }
}

BENCHMARK(exporting)->Name("export")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(exportLimit)->Name("limit_export")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(importing)->Name("import")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(importLimit)->Name("limit_import")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(repairing)->Name("repair")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(repairLimit)->Name("limit_repair")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
