#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "model/SchemaVersions.h"
#include "storage/BackupService.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/SharedStoreMigration.h"
#include "storage/StoreRepair.h"
#include "storage/StoreStart.h"
#include "store/StoreError.h"
#include "support/CaseOf.h"
#include "support/FileSizeLimit.h"
#include "support/FolderNames.h"
#include "support/OldStore.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>

namespace korvex::tests {

namespace fs = std::filesystem;
using model::Board;
using model::Entry;
using storage::SharedStoreErrorCase;

/// A folder for the shared store, and a store of older programs elsewhere.
class SharedStoreFixture : public ::testing::Test {
protected:
    fs::path folder() const { return m_folder / "korvex"; }
    fs::path store() const { return folder() / "Primary.store"; }
    fs::path marker() const { return folder() / "migration-v1-complete"; }
    fs::path legacy() const { return m_folder / "legacy.store"; }

    void prepare() { storage::SharedStoreMigration(m_log).prepare(legacy(), folder()); }
    storage::StartedStore start() {
        return storage::StoreStart::open(
            {.storeFile = store(), .legacyFile = legacy(), .now = {8e8}}, m_log);
    }

    storage::StoreRepairReport repairStore(storage::Work& work) {
        return storage::repairStore({.storeFile = store(), .legacyFile = legacy(), .now = {8e8}},
                                    m_log, work);
    }

    /// A store of some older version with a todo and a text.
    static void writeOld(const fs::path& file, const char* version, std::int64_t isSystem = 1) {
        fs::create_directories(file.parent_path());
        OldStore old(file, OldStore::version(version));
        const auto board = OldStore::board(
            "Today", {{"isSystem", isSystem}, {"systemIdentifier", std::string("today")}});
        old.addBoard(board);
        for (const auto* type : {"todo", "text"}) {
            old.addEntry(OldStore::entry(board, type, std::string("a ") + type,
                                         {{"sortOrder", std::int64_t{5}}}));
        }
    }
    /// 200 todos on a board named Home.
    static void writeMany(const fs::path& file) {
        fs::create_directories(file.parent_path());
        OldStore old(file, OldStore::version("V16"));
        const auto board = OldStore::board("Home", {{"isSystem", std::int64_t{0}}});
        old.addBoard(board);
        for (std::int64_t i = 0; i < 200; ++i) {
            old.addEntry(OldStore::entry(board, "todo", std::string(300, 'x'), {{"sortOrder", i}}));
        }
    }
    static void run(const fs::path& file, const std::string& sql) {
        SQLite::Database(file.string(), SQLite::OPEN_READWRITE).exec(sql);
    }
    static std::size_t missingOf(const store::SalvageReport& salvage) {
        std::size_t missing = 0;
        for (const auto& loss : salvage.losses) {
            missing += loss.missing;
        }
        return missing;
    }
    /// A leaf of the table of entries becomes unreadable.
    static void zeroPage(const fs::path& file) {
        SQLite::Database database(file.string(), SQLite::OPEN_READWRITE);
        database.exec("PRAGMA wal_checkpoint(TRUNCATE)");
        const int page = database.execAndGet("SELECT pageno FROM dbstat WHERE name = 'Entry' AND "
                                             "pagetype = 'leaf' ORDER BY pageno LIMIT 1 OFFSET 3");
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp((page - 1) * 4096);
        stream << std::string(4096, '\0');
    }
    static void write(const fs::path& file, const std::string& contents) {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << contents;
    }
    static std::string bytes(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::set<std::string> names() const { return namesIn(folder()); }
    /// What the store holds: "todo a todo", in no order.
    std::multiset<std::string> contents() {
        const auto container =
            store::ModelContainer::open(model::currentSchema(), {.file = store()}, m_log);
        store::ModelContext context(*container);
        std::multiset<std::string> result;
        for (const auto* entry : context.fetch<Entry>()) {
            result.insert(entry->typeRawValue() + " " + entry->content());
        }
        return result;
    }
    template <typename Work>
    static std::optional<SharedStoreErrorCase> refusalOf(Work&& work) {
        return caseOf<storage::SharedStoreError>(work);
    }

    const std::multiset<std::string> kOldContents{"todo a todo", "text a text"};
    TemporaryFolder m_folder;
    RecordingLog m_log;
};

} // namespace korvex::tests
