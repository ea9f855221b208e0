#include "backup/BackupFileIO.h"
#include "base/FileDescriptor.h"
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
#include "support/OldStore.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>

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

    static void writeOld(const fs::path& file, const char* version, std::int64_t isSystem = 1) {
        OldStore old(file, OldStore::version(version));
        const auto board = base::Uuid::random();
        old.addBoard({{"id", board},
                      {"name", std::string("Today")},
                      {"createdAt", 1.0},
                      {"updatedAt", 1.0},
                      {"sortOrder", std::int64_t{0}},
                      {"isSystem", isSystem},
                      {"systemIdentifier", std::string("today")},
                      {"isArchived", std::int64_t{0}}});
        for (const auto* type : {"todo", "text"}) {
            old.addEntry({{"id", base::Uuid::random()},
                          {"type", std::string(type)},
                          {"typeRawValue", std::string(type)},
                          {"content", std::string("a ") + type},
                          {"createdAt", 1.0},
                          {"updatedAt", 1.0},
                          {"sortOrder", std::int64_t{5}},
                          {"isCompleted", std::int64_t{0}},
                          {"board", board}});
        }
    }
    static void write(const fs::path& file, const std::string& contents) {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << contents;
    }
    static std::string bytes(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::set<std::string> names() const {
        std::set<std::string> result;
        for (const auto& each : fs::directory_iterator(folder())) {
            result.insert(each.path().filename().string());
        }
        return result;
    }
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
        try {
            work();
        } catch (const storage::SharedStoreError& error) {
            return error.which();
        }
        return std::nullopt;
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
    EXPECT_EQ(m_log.count("original retained"), 1U);
    EXPECT_EQ(m_log.count("Published the shared store"), 1U);
    EXPECT_EQ(contents(), kOldContents);
    fs::remove(legacy());
    writeOld(legacy(), "V16");
    prepare();
    EXPECT_EQ(contents(), kOldContents);
    EXPECT_EQ(m_log.count("Published"), 1U);
    EXPECT_THAT(names(), testing::Not(testing::Contains(testing::StartsWith(".migration-"))));
}

TEST_F(SharedStoreTest, WhatCannotBeCarriedOverLeavesNothing) {
    m_log.expectError("Migration failed; original untouched: ");
    write(legacy(), std::string(5000, 'x'));
    EXPECT_THROW(prepare(), store::StoreError);
    EXPECT_THAT(names(), testing::IsEmpty());
    EXPECT_EQ(bytes(legacy()), std::string(5000, 'x'));
    write(folder() / "Primary.store-wal", "the journal of a store that is gone");
    fs::remove(legacy());
    writeOld(legacy(), "V10");
    EXPECT_EQ(refusalOf([&] { prepare(); }), SharedStoreErrorCase::incompleteStore);
    EXPECT_THAT(names(), testing::ElementsAre("Primary.store-wal"));
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
    EXPECT_EQ(storage::descriptionOf(SharedStoreErrorCase::incompleteStore),
              "The shared store is incomplete. Existing local data has been preserved.");
}

TEST_F(SharedStoreTest, AStoreThatIsThereIsOnlyMarked) {
    fs::create_directories(folder());
    writeOld(store(), "V12");
    writeOld(legacy(), "V10");
    const auto before = bytes(store());
    write(folder() / ".migration-killed" / "Primary.store", "half");
    write(folder() / ".migration-running" / "Primary.store", "half");
    const base::FileDescriptor running(
        ::open((folder() / ".migration-running").c_str(), O_RDONLY | O_DIRECTORY));
    ASSERT_EQ(::flock(running.get(), LOCK_EX), 0);
    prepare();
    EXPECT_EQ(bytes(store()), before);
    const auto after = names();
    EXPECT_TRUE(after.contains(marker().filename()));
    EXPECT_TRUE(after.contains(".migration-running"));
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
    fs::create_directories(folder());
    writeOld(store(), "V11");
    preparation.prepare(store(), {8e8});
    const auto after = names();
    EXPECT_THAT(after, testing::Contains(testing::HasSubstr(".BeforeCloudV11-")));
    EXPECT_THAT(after, testing::Contains("cloud-v11-prepared"));
    const auto document = backup::BackupFileIO::decode(
        backup::BackupFileIO::readFile(folder() / "Migrated.korvexbackup"));
    EXPECT_EQ(document.entries.size(), 2U);
    preparation.prepare(store(), {9e8});
    EXPECT_EQ(names(), after);
    EXPECT_TRUE(storage::BackupService::isCloudBacked(*storage::SharedModelContainer::make(
        {.storeURL = store(), .cloudKitIdentifier = "cloud"}, m_log)));
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
    const auto started = start();
    EXPECT_EQ(started.container->revision(), revision);
    EXPECT_THAT(names(), testing::Not(testing::Contains(testing::HasSubstr(".BeforeV17-"))));
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
    {
        SQLite::Database database(store().string(), SQLite::OPEN_READONLY);
        const int page = database.execAndGet("SELECT pageno FROM dbstat WHERE name = 'Entry' AND "
                                             "pagetype = 'leaf' ORDER BY pageno LIMIT 1 OFFSET 3");
        std::fstream file(store(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp((page - 1) * 4096);
        file << std::string(4096, '\0');
    }
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
