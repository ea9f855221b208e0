#include "store/faults/Operations.h"

#include "model/EntryAttachment.h"
#include "store/JournalRemains.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"
#include "support/OldStore.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <array>
#include <chrono>
#include <fstream>

namespace korvex::faults {

namespace {

namespace fs = std::filesystem;

/// A store of an older version, for an upgrade to start from.
void writeOld(const fs::path& file, const char* version) {
    fs::create_directories(file.parent_path());
    tests::OldStore old(file, tests::OldStore::version(version));
    const auto board = tests::OldStore::board("Inbox");
    old.addBoard(board);
    const std::array attached{model::EntryAttachment{
        .id = base::Uuid::random(), .filename = "old", .data = base::Bytes(20'000, 'x')}};
    for (std::int64_t i = 0; i < kPreparedTodos; ++i) {
        old.addEntry(tests::OldStore::entry(board, i % 2 == 0 ? "todo" : "text",
                                            "old " + std::to_string(i) + std::string(500, 'x'),
                                            {{"sortOrder", i}}));
        if (i % 4 == 0) {
            old.attach(*model::EntryAttachment::encode(attached));
        }
    }
}

void zero(const fs::path& file, int page) {
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(std::streamoff{4096} * (page - 1));
    stream << std::string(4096, '\0');
}

/// The last page of entries is gone.
void damage(const fs::path& file) {
    // To write, so that it leaves nothing beside the file.
    zero(file, SQLite::Database(file, SQLite::OPEN_READWRITE)
                   .execAndGet("SELECT max(pageno) FROM dbstat WHERE name = 'Entry' AND "
                               "pagetype = 'leaf'"));
}

void prepareV10(const fs::path& file, Steps&) {
    writeOld(file, "V10");
}

void prepareV13(const fs::path& file, Steps&) {
    writeOld(file, "V13");
}

/// Where older programs kept it; the folder of the store is there and empty.
void prepareLegacy(const fs::path& file, Steps&) {
    writeOld(file.parent_path() / "legacy" / "default.store", "V13");
}

void prepareDamagedV13(const fs::path& file, Steps& steps) {
    prepareV13(file, steps);
    damage(file);
}

void prepareDamagedLegacy(const fs::path& file, Steps& steps) {
    prepareLegacy(file, steps);
    damage(file.parent_path() / "legacy" / "default.store");
}

void fill(Program& program, const fs::path& file) {
    program.open(file, store::ModelConfiguration::Missing::create);
    entryOperations().at("prepare")(program);
}

/// Words that are to stay, under metadata that no service writes.
void prepareUnsound(const fs::path& file, Steps& steps) {
    Program program(steps);
    fill(program, file);
    auto& context = *program.context;
    auto& second = context.insert(
        std::make_unique<model::Board>(model::BoardFields{.id = base::Uuid::random(),
                                                          .name = "Inbox",
                                                          .createdAt = kLater,
                                                          .updatedAt = kLater,
                                                          .sortOrder = 5,
                                                          .isSystem = true,
                                                          .icon = "no icon",
                                                          .systemIdentifier = "inbox"}));
    const auto todos = program.todos();
    todos.at(0)->setBoard(nullptr);
    todos.at(1)->setBoard(&second);
    todos.at(2)->setIsCompleted(true);
    todos.at(3)->setCompletedAt(kNow);
    todos.at(4)->setSortOrder(4'000);
    todos.at(5)->setSortOrder(todos.at(6)->sortOrder());
    context.save();
}

/// SQLite does not open it any more, but all rows are there.
void prepareWithoutFirstPage(const fs::path& file, Steps& steps) {
    {
        Program program(steps);
        fill(program, file);
        program.container->checkpoint();
    }
    zero(file, 1);
}

/// All that it holds stands in its journal.
void prepareEmptied(const fs::path& file, Steps& steps) {
    {
        Program program(steps);
        fill(program, file);
    }
    fs::resize_file(file, 0);
}

/// The newest changes go with the end of the journal.
void cutJournal(const fs::path& file, Steps&) {
    const auto journal = store::StoreFile(file).journal();
    fs::resize_file(journal, fs::file_size(journal) / 2);
    fs::remove(file.native() + "-shm");
}

/// An older version has saved three times since, the last time more than before: its one change
/// goes with the cut, so that whatever counts one too few finds none missing.
void prepareCutV13(const fs::path& file, Steps& steps) {
    prepareV13(file, steps);
    {
        SQLite::Database old(file, SQLite::OPEN_READWRITE);
        sqlite3_db_config(old.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        for (const std::string changes : {"NULL", "NULL", "zeroblob(9000)"}) {
            old.exec("INSERT INTO ChangeLog(changes) VALUES(" + changes + ")");
        }
        store::StoreLock lock(store::StoreFile(file).lockFile(), std::chrono::seconds(1));
        const store::StoreLock::Guard guard(&lock);
        lock.setRecord(store::newestOf(old.getHandle()));
    }
    cutJournal(file, steps);
}

/// A page of entries is gone.
void prepareDamaged(const fs::path& file, Steps& steps) {
    Program program(steps);
    fill(program, file);
    std::vector<std::string> contents;
    for (int i = 0; i < kPreparedTodos; ++i) {
        contents.push_back(std::to_string(i) + std::string(900, 'y'));
    }
    program.entries().createTodos({.contents = contents, .board = program.inbox(), .now = kNow});
    program.container->checkpoint();
    damage(file);
}

} // namespace

const FileOperations& preparations() {
    static const FileOperations all{
        {"prepare-v10", prepareV10},
        {"prepare-v13", prepareV13},
        {"prepare-legacy", prepareLegacy},
        {"prepare-unsound", prepareUnsound},
        {"prepare-damaged", prepareDamaged},
        {"prepare-damaged-v13", prepareDamagedV13},
        {"prepare-damaged-legacy", prepareDamagedLegacy},
        {"prepare-without-first-page", prepareWithoutFirstPage},
        {"prepare-emptied", prepareEmptied},
        {"prepare-cut-v13", prepareCutV13},
        {"cut-journal", cutJournal},
    };
    return all;
}

} // namespace korvex::faults
