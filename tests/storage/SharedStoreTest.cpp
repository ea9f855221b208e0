#include "backup/BackupFileIO.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "model/SchemaVersions.h"
#include "storage/BackupService.h"
#include "storage/CloudStorePreparation.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/SharedStoreMigration.h"
#include "storage/StoreRepair.h"
#include "storage/StoreStart.h"
#include "store/StoreError.h"
#include "support/CaseOf.h"
#include "support/FolderNames.h"
#include "support/OldStore.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>

namespace korvex::tests {

namespace fs = std::filesystem;

using model::Board;
using model::Entry;
using storage::SharedStoreErrorCase;

/// A folder for the shared store, and a store of older programs elsewhere.
class SharedStoreTest : public ::testing::Test {
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
    static void run(const fs::path& file, const std::string& sql) {
        SQLite::Database(file.string(), SQLite::OPEN_READWRITE).exec(sql);
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

TEST_F(SharedStoreTest, ALegacyStoreIsCarriedOverOnceAndStaysAsItIs) {
    writeOld(legacy(), "V10");
    const auto before = bytes(legacy());
    prepare();
    EXPECT_EQ(bytes(legacy()), before);
    EXPECT_THAT(namesIn(m_folder.path()), testing::ElementsAre("korvex", "legacy.store"));
    EXPECT_EQ(m_log.count("original retained"), 1U);
    EXPECT_EQ(m_log.count("Published the shared store"), 1U);
    EXPECT_EQ(fs::status(folder()).permissions() & fs::perms::all, fs::perms::owner_all);
    EXPECT_EQ(contents(), kOldContents);
    fs::remove(legacy());
    writeOld(legacy(), "V16");
    prepare();
    EXPECT_EQ(contents(), kOldContents);
    EXPECT_EQ(m_log.count("Published"), 1U);
    EXPECT_THAT(names(), testing::Not(testing::Contains(testing::StartsWith(".migration-"))));
}

TEST_F(SharedStoreTest, WhatCannotBeCarriedOverLeavesNothing) {
    write(legacy(), std::string(5000, 'x'));
    EXPECT_THROW(prepare(), store::StoreError);
    EXPECT_THAT(names(), testing::ElementsAre("Primary.store.lock"));
    EXPECT_EQ(m_log.count("Migration failed; original untouched: "), 1U);
    EXPECT_EQ(bytes(legacy()), std::string(5000, 'x'));
    fs::remove(legacy());
    writeOld(legacy(), "V10");
    write(folder() / "Primary.store-wal", "the journal of a store that is gone");
    EXPECT_EQ(refusalOf([&] { prepare(); }), SharedStoreErrorCase::incompleteStore);
    EXPECT_EQ(m_log.count("Migration failed; original untouched: "), 2U);
    EXPECT_THAT(names(), testing::ElementsAre("Primary.store-wal", "Primary.store.lock"));
    write(folder() / "Primary.store-wal", "");
    prepare();
    EXPECT_EQ(contents(), kOldContents);
}

TEST_F(SharedStoreTest, AnOldStoreNeverTakesThePlaceOfANewerOneThatIsGone) {
    {
        const auto started = start();
        started.context->insert(
            std::make_unique<Board>(model::BoardFields{.id = base::Uuid::random(), .name = "B"}));
        started.context->save();
        started.container->checkpoint();
    }
    for (const auto* name : {"Primary.store", "Primary.store-wal", "Primary.store-shm"}) {
        fs::remove(folder() / name);
    }
    fs::remove(marker());
    writeOld(legacy(), "V10");
    EXPECT_EQ(refusalOf([&] { prepare(); }), SharedStoreErrorCase::incompleteStore);
    EXPECT_THAT(names(), testing::ElementsAre("Primary.store.lock"));
}

TEST_F(SharedStoreTest, ADamagedLegacyStoreIsCarriedOverAsFarAsItCanBeRead) {
    for (const bool isOld : {true, false}) {
        fs::remove_all(folder());
        fs::remove(legacy());
        {
            OldStore old(legacy(), OldStore::version("V16"));
            const auto board = OldStore::board("Home", {{"isSystem", std::int64_t{0}}});
            old.addBoard(board);
            for (std::int64_t i = 0; i < 200; ++i) {
                old.addEntry(
                    OldStore::entry(board, "todo", std::string(300, 'x'), {{"sortOrder", i}}));
            }
        }
        if (!isOld) {
            storage::SharedModelContainer::make({.storeURL = legacy()}, m_log)->checkpoint();
        }
        zeroPage(legacy());
        const auto before = bytes(legacy());
        {
            const auto started = start();
            ASSERT_EQ(started.notices.size(), 1U);
            EXPECT_THAT(started.notices[0], testing::HasSubstr(" are missing"));
            EXPECT_THAT(started.notices[0], testing::HasSubstr(legacy().string()));
            const auto count = started.context->count<Entry>();
            EXPECT_GT(count, 150U);
            EXPECT_LT(count, 200U);
            EXPECT_FALSE(started.container->check().isDamaged);
        }
        EXPECT_TRUE(start().notices.empty());
        EXPECT_EQ(bytes(legacy()), before);
        EXPECT_EQ(m_log.count("Verified"), 0U);
    }
}

TEST_F(SharedStoreTest, SeveralFirstStartsAtOnceAgree) {
    writeOld(legacy(), "V10");
    for (int round = 0; round < 8; ++round) {
        fs::remove_all(folder());
        std::vector<::pid_t> programs;
        for (int i = 0; i < 6; ++i) {
            const auto child = ::fork();
            if (child == 0) {
                int status = 0;
                try {
                    start();
                } catch (const base::Error&) {
                    status = 1;
                }
                ::_exit(status);
            }
            programs.push_back(child);
        }
        for (const auto program : programs) {
            int status = -1;
            ::waitpid(program, &status, 0);
            EXPECT_EQ(status, 0);
        }
        EXPECT_EQ(contents(), kOldContents);
        EXPECT_THAT(names(), testing::Not(testing::Contains(testing::StartsWith(".migration-"))));
    }
}

TEST_F(SharedStoreTest, TheMarkerNeverStandsWithoutAStore) {
    prepare();
    EXPECT_TRUE(fs::exists(store()));
    EXPECT_TRUE(fs::exists(marker()));
    for (const auto& name : names()) {
        if (name != marker().filename()) {
            fs::remove(folder() / name);
        }
    }
    writeOld(legacy(), "V10");
    EXPECT_EQ(refusalOf([&] { prepare(); }), SharedStoreErrorCase::incompleteStore);
    EXPECT_THAT(names(), testing::ElementsAre(marker().filename().string()));
    storage::Work work;
    EXPECT_EQ(refusalOf([&] { storage::repairStore(store(), {8e8}, m_log, work); }),
              SharedStoreErrorCase::incompleteStore);
    EXPECT_EQ(refusalOf([&] {
                  storage::SharedModelContainer::openExisting(
                      store(), store::ModelConfiguration::Older::refuse, m_log);
              }),
              SharedStoreErrorCase::incompleteStore);
    EXPECT_THAT(names(), testing::ElementsAre(marker().filename().string()));
}

TEST_F(SharedStoreTest, RefusalsSayWhatIsToBeDone) {
    const std::pair<SharedStoreErrorCase, const char*> texts[]{
        {SharedStoreErrorCase::appGroupUnavailable,
         "The Korvex App Group is unavailable. Check signing and App Group entitlements."},
        {SharedStoreErrorCase::notPrepared, "Open Korvex once to prepare the shared store."},
        {SharedStoreErrorCase::incompleteStore,
         "The shared store is incomplete. Existing local data has been preserved."},
        {SharedStoreErrorCase::cloudMigrationRequired,
         "Open Korvex to upgrade the shared store safely before using the widget."}};
    for (const auto& [which, text] : texts) {
        EXPECT_EQ(storage::descriptionOf(which), text);
    }
    EXPECT_EQ(
        refusalOf([&] { storage::SharedModelContainer::make({.storeURL = "relative"}, m_log); }),
        SharedStoreErrorCase::appGroupUnavailable);
    write(store(), std::string(5000, 'x'));
    EXPECT_THROW(storage::SharedModelContainer::make(
                     {.storeURL = store(), .cloudKitIdentifier = "cloud"}, m_log),
                 store::StoreError);
    EXPECT_EQ(m_log.count("Cloud store setup failed; attempting the same local store"), 1U);
}

TEST_F(SharedStoreTest, AStoreThatIsThereIsOnlyMarked) {
    fs::create_directories(folder());
    writeOld(store(), "V12");
    writeOld(legacy(), "V10");
    const auto before = bytes(store());
    write(folder() / ".migration-killed" / "Primary.store", "half");
    prepare();
    EXPECT_EQ(bytes(store()), before);
    const auto after = names();
    EXPECT_TRUE(after.contains(marker().filename()));
    EXPECT_FALSE(after.contains(".migration-killed"));
}

TEST_F(SharedStoreTest, WhoOpensExistingStoresOnlyPreparesNothing) {
    const auto open = [&] {
        return storage::SharedModelContainer::make({.storeURL = store(), .existingStoreOnly = true},
                                                   m_log);
    };
    EXPECT_EQ(refusalOf(open), SharedStoreErrorCase::notPrepared);
    EXPECT_FALSE(fs::exists(folder()));
    fs::create_directories(folder());
    writeOld(store(), "V16");
    prepare();
    EXPECT_EQ(refusalOf(open), SharedStoreErrorCase::cloudMigrationRequired);
    start();
    EXPECT_EQ(refusalOf(open), std::nullopt);
    EXPECT_EQ(refusalOf([&] {
                  storage::SharedModelContainer::make({.storeURL = store(),
                                                       .existingStoreOnly = true,
                                                       .cloudKitIdentifier = "cloud"},
                                                      m_log);
              }),
              SharedStoreErrorCase::cloudMigrationRequired);
    fs::remove(store());
    EXPECT_EQ(refusalOf(open), SharedStoreErrorCase::incompleteStore);
    EXPECT_TRUE(storage::SharedModelContainer::make({.isStoredInMemoryOnly = true}, m_log)
                    ->configuration()
                    .isInMemory());
}

TEST_F(SharedStoreTest, AStoreIsPreparedForTheCloudOnce) {
    const storage::CloudStorePreparation preparation(m_log);
    EXPECT_EQ(refusalOf([&] { preparation.prepare(store(), {8e8}); }),
              SharedStoreErrorCase::incompleteStore);
    writeOld(store(), "V11");
    EXPECT_EQ(refusalOf([&] { preparation.prepare(store(), {8e8}); }),
              SharedStoreErrorCase::notPrepared);
    prepare();
    const auto copies = [&] {
        const auto all = names();
        return std::count_if(all.begin(), all.end(), [](const std::string& name) {
            return name.find(".BeforeCloudV11-") != name.npos;
        });
    };
    // What stands in the way of the backup.
    fs::create_directories(folder() / "Migrated.korvexbackup" / "taken");
    for (int i = 0; i < 4; ++i) {
        EXPECT_THROW(preparation.prepare(store(), {8e8}), base::Error);
        EXPECT_LE(copies(), 2);
    }
    fs::remove_all(folder());
    writeOld(store(), "V11");
    {
        const auto started = storage::StoreStart::open(
            {.storeFile = store(), .cloudKitIdentifier = "cloud", .now = {8e8}}, m_log);
        EXPECT_TRUE(storage::BackupService::isCloudBacked(*started.container));
    }
    const auto after = names();
    EXPECT_THAT(after, testing::Contains(testing::HasSubstr(".BeforeV17-")));
    EXPECT_THAT(after, testing::Contains("cloud-v11-prepared"));
    const auto copy = std::find_if(after.begin(), after.end(), [](const std::string& name) {
        return name.find(".BeforeCloudV11-") != name.npos;
    });
    ASSERT_NE(copy, after.end());
    const auto document = backup::BackupFileIO::decode(
        backup::BackupFileIO::readFile(folder() / "Migrated.korvexbackup"));
    EXPECT_EQ(document.entries.size(), 2U);
    preparation.prepare(store(), {9e8});
    EXPECT_EQ(copies(), 1);
    EXPECT_EQ(SQLite::Database((folder() / *copy).string(), SQLite::OPEN_READONLY)
                  .execAndGet("PRAGMA user_version")
                  .getInt(),
              110);
}

TEST_F(SharedStoreTest, AStartUpgradesAndRepairsOnceAndKeepsTheFormerStoreUntilTheNext) {
    writeOld(legacy(), "V10", 0);
    fs::create_directories(folder());
    fs::copy_file(legacy(), store());
    std::int64_t revision = 0;
    {
        const auto started = start();
        EXPECT_TRUE(started.container->wasUpgraded());
        // No Inbox, both entries at one place.
        const auto entries = started.context->fetch<Entry>();
        EXPECT_EQ(entries[0]->sortOrder() + entries[1]->sortOrder(), 1);
        EXPECT_THAT(names(), testing::Contains(testing::HasSubstr(".BeforeV17-")));
        revision = started.container->revision();
    }
    run(store(), "UPDATE Entry SET checksum = checksum + 1");
    start();
    EXPECT_THAT(names(), testing::Contains(testing::HasSubstr(".BeforeV17-")));
    run(store(), "UPDATE Entry SET checksum = checksum - 1");
    EXPECT_EQ(start().container->revision(), revision);
    EXPECT_THAT(names(), testing::Not(testing::Contains(testing::HasSubstr(".BeforeV17-"))));
}

TEST_F(SharedStoreTest, AStoreFromElsewhereIsRepairedWhoeverOpensItFirst) {
    const auto isRepaired = [&] {
        return SQLite::Database(store().string(), SQLite::OPEN_READONLY)
                   .execAndGet("SELECT count(*) FROM Entry WHERE sortOrder > 1")
                   .getInt() == 0;
    };
    writeOld(legacy(), "V10");
    start();
    EXPECT_TRUE(isRepaired());
    run(store(), "UPDATE Entry SET sortOrder = sortOrder + 7");
    start();
    EXPECT_FALSE(isRepaired()) << "a start that has no reason reads nothing";
    fs::remove(store().string() + ".lock");
    // Others come first: one that looks, and one that cannot save what it repairs.
    contents();
    run(store(), "CREATE TRIGGER fault BEFORE UPDATE ON Entry "
                 "BEGIN SELECT RAISE(ABORT, 'the disk'); END");
    m_log.expectError("Integrity repair could not be saved");
    {
        const auto started = start();
        started.context->insert(
            std::make_unique<Board>(model::BoardFields{.id = base::Uuid::random(), .name = "B"}));
        started.context->save();
    }
    EXPECT_FALSE(isRepaired());
    run(store(), "DROP TRIGGER fault");
    EXPECT_FALSE(isRepaired());
    start();
    EXPECT_TRUE(isRepaired());
    // What only a salvage can repair is said at every start until there was one.
    run(store(), "UPDATE Entry SET id = 'none' WHERE rowid = 1");
    fs::remove(store().string() + ".lock");
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(start().notices, testing::Contains(testing::HasSubstr("korvex store repair")));
    }
    storage::Work work;
    storage::repairStore(store(), {8e8}, m_log, work);
    EXPECT_TRUE(start().notices.empty());
    EXPECT_EQ(contents(), kOldContents);
}

TEST_F(SharedStoreTest, ARepairSaysWhatIsMissingByBoard) {
    {
        const auto started = start();
        auto board = std::make_unique<Board>(model::BoardFields{
            .id = base::Uuid::random(), .name = "Home", .createdAt = {1}, .updatedAt = {1}});
        auto& home = started.context->insert(std::move(board));
        for (int i = 0; i < 100; ++i) {
            auto entry =
                std::make_unique<Entry>(model::EntryFields{.id = base::Uuid::random(),
                                                           .typeRawValue = "todo",
                                                           .content = std::string(300, 'x'),
                                                           .createdAt = {1},
                                                           .updatedAt = {1},
                                                           .sortOrder = i / 2});
            entry->setBoard(&home);
            started.context->insert(std::move(entry));
        }
        started.context->save();
        started.container->checkpoint();
    }
    zeroPage(store());
    storage::Work work;
    const auto report = storage::repairStore(store(), {8e8}, m_log, work);
    ASSERT_TRUE(report.salvage);
    ASSERT_EQ(report.salvage->losses.size(), 1U);
    EXPECT_EQ(report.boardNames, std::vector<std::string>{"Home"});
    EXPECT_EQ(contents().size() + report.salvage->losses[0].missing, 100U);
    EXPECT_GT(report.metadata.count(), 0U);
    EXPECT_TRUE(storage::repairStore(store(), {8e8}, m_log, work).wasSound());
}

} // namespace korvex::tests
