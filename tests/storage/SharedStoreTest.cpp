#include "storage/SharedStoreFixture.h"

#include "backup/BackupFileIO.h"
#include "base/FileDescriptor.h"
#include "storage/CloudStorePreparation.h"
#include "store/JournalRemains.h"
#include "store/StoreLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>

namespace korvex::tests {
namespace {

using SharedStoreTest = SharedStoreFixture;

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
    try {
        prepare();
        ADD_FAILURE() << "it was taken over";
    } catch (const storage::LegacyStoreError& error) {
        EXPECT_EQ(error.file(), legacy());
        EXPECT_THAT(
            error.errorDescription(),
            testing::AllOf(testing::HasSubstr(" It is the store of an older Korvex, " +
                                              legacy().string() + ". Move it away to start anew."),
                           testing::EndsWith("store repair")));
        EXPECT_THAT(error.reason(), testing::EndsWith("store repair"));
    }
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

/// An ordinary start leaves it alone: somebody may have its journal, or another copy of it.
TEST_F(SharedStoreTest, OfADamagedLegacyStoreWhatCanBeReadIsTakenOverOnlyWhenThatIsAskedFor) {
    const struct {
        const char* name;
        bool mayMissMore;
        std::function<void()> damage;
    } damages[]{
        {"a page of an older one", false, [&] { zeroPage(legacy()); }},
        {"a page", false,
         [&] {
             storage::SharedModelContainer::make({.storeURL = legacy()}, m_log)->checkpoint();
             zeroPage(legacy());
         }},
        {"half of it", true, [&] { fs::resize_file(legacy(), fs::file_size(legacy()) / 2); }},
        {"its mark", false,
         [&] {
             std::fstream(legacy(), std::ios::in | std::ios::out | std::ios::binary)
                 .seekp(68)
                 .put('X');
         }},
    };
    for (const auto& [name, mayMissMore, damage] : damages) {
        SCOPED_TRACE(name);
        fs::remove_all(folder());
        for (const auto* suffix : {"", "-wal", "-shm", ".lock"}) {
            fs::remove(legacy().string() + suffix);
        }
        writeMany(legacy());
        damage();
        const auto before = bytes(legacy());
        EXPECT_THROW(start(), storage::LegacyStoreError);
        EXPECT_THAT(names(), testing::ElementsAre("Primary.store.lock"));
        storage::Work work;
        const auto report = repairStore(work);
        ASSERT_TRUE(report.salvage);
        EXPECT_EQ(report.salvage->kept, legacy());
        EXPECT_THAT(report.notices, testing::ElementsAre(testing::EndsWith(legacy().string())));
        const auto started = start();
        EXPECT_THAT(started.notices, testing::IsEmpty());
        const auto count = started.context->count<Entry>();
        EXPECT_GT(count, 50U);
        EXPECT_EQ(report.salvage->saved, count + 1);
        EXPECT_EQ(report.salvage->mayMissMore, mayMissMore);
        const auto missing = missingOf(*report.salvage);
        if (mayMissMore) {
            EXPECT_LT(count + missing, 200U);
        } else {
            EXPECT_EQ(count + missing, 200U);
        }
        EXPECT_FALSE(started.container->check().isDamaged);
        EXPECT_EQ(bytes(legacy()), before);
        EXPECT_EQ(m_log.count("Verified"), 0U);
    }
}

TEST_F(SharedStoreTest, ARepairTakesOverASoundLegacyStoreAsAnyStartDoes) {
    writeOld(legacy(), "V10");
    storage::Work work;
    const auto report = repairStore(work);
    EXPECT_FALSE(report.salvage);
    EXPECT_THAT(report.notices, testing::ElementsAre(testing::EndsWith(legacy().string())));
    EXPECT_EQ(contents(), kOldContents);
    EXPECT_TRUE(repairStore(work).wasSound());
}

/// Which only a disk that is not there now, or somebody's hand, has made look empty.
TEST_F(SharedStoreTest, ALegacyStoreThatIsGoneIsNotTakenForNone) {
    const auto elsewhere = m_folder / "elsewhere";
    const auto refuses = [&](const std::string& help) {
        try {
            prepare();
            ADD_FAILURE() << "it was taken for none";
        } catch (const storage::LegacyStoreError& error) {
            EXPECT_THAT(error.errorDescription(), testing::HasSubstr(help));
        }
        EXPECT_THAT(names(), testing::ElementsAre("Primary.store.lock"));
    };
    fs::create_symlink(elsewhere / "none", legacy());
    refuses("legacy.store. Move it away");
    fs::remove(legacy());
    write(legacy().string() + "-wal", "a journal");
    refuses("there: legacy.store-wal. Nothing");
    fs::remove(legacy().string() + "-wal");
    fs::create_directories(elsewhere);
    {
        const auto container =
            store::ModelContainer::open(model::currentSchema(), {.file = legacy()}, m_log);
        store::ModelContext context(*container);
        context.insert(
            std::make_unique<Board>(model::BoardFields{.id = base::Uuid::random(), .name = "B"}));
        context.save();
    }
    for (const auto* suffix : {"", "-wal", "-shm"}) {
        fs::remove(legacy().string() + suffix);
    }
    refuses("there: legacy.store.lock. Nothing");
    fs::remove(legacy().string() + ".lock");
    fs::create_symlink(elsewhere / "none", m_folder / "link");
    EXPECT_THROW(
        storage::SharedStoreMigration(m_log).prepare(m_folder / "link" / "default.store", folder()),
        storage::LegacyStoreError);
    prepare();
    EXPECT_TRUE(fs::exists(store()));
}

TEST_F(SharedStoreTest, ALegacyStoreWhoseWordsStandInItsJournalIsTakenOverWhenThatIsAskedFor) {
    {
        const auto made = storage::SharedModelContainer::make({.storeURL = legacy()}, m_log);
        store::ModelContext context(*made);
        context.insert(
            std::make_unique<Board>(model::BoardFields{.id = base::Uuid::random(), .name = "B"}));
        context.save();
    }
    fs::resize_file(legacy(), 0);
    const auto journal = bytes(legacy().string() + "-wal");
    EXPECT_THROW(start(), storage::LegacyStoreError);
    EXPECT_EQ(bytes(legacy().string() + "-wal"), journal);
    storage::Work work;
    EXPECT_TRUE(repairStore(work).salvage);
    EXPECT_EQ(start().context->count<Board>(), 1U);
    EXPECT_EQ(bytes(legacy()), "");
    EXPECT_EQ(bytes(legacy().string() + "-wal"), journal);
}

TEST_F(SharedStoreTest, WhatACutJournalOfALegacyStoreHasLostIsSaidWhereItIsSalvagedToo) {
    {
        const auto made = storage::SharedModelContainer::make({.storeURL = legacy()}, m_log);
        store::ModelContext context(*made);
        for (const int boards : {100, 1}) {
            for (int i = 0; i < boards; ++i) {
                context.insert(std::make_unique<Board>(
                    model::BoardFields{.id = base::Uuid::random(), .name = "B"}));
            }
            context.save();
        }
    }
    const auto journal = legacy().string() + "-wal";
    fs::resize_file(legacy(), 0);
    fs::resize_file(journal, fs::file_size(journal) - 100);
    storage::Work work;
    const auto report = repairStore(work);
    ASSERT_TRUE(report.salvage);
    EXPECT_THAT(report.notices,
                testing::ElementsAre(testing::HasSubstr("was taken over"),
                                     testing::HasSubstr("The newest changes in the store of an "
                                                        "older Korvex are missing")));
    EXPECT_EQ(start().context->count<Board>(), 100U);
}

/// More than half of the largest one there is, which twice is no whole number of SQLite.
TEST_F(SharedStoreTest, AnUpgradeFindsRowsOfTheLargestNumbers) {
    for (const auto* rows :
         {"4611686018427387905", "9223372036854775807", "-9223372036854775808"}) {
        SCOPED_TRACE(rows);
        fs::remove_all(folder());
        fs::remove(legacy());
        writeOld(legacy(), "V10");
        run(legacy(), std::string("UPDATE Entry SET rowid = ") + rows +
                          " WHERE rowid = (SELECT max(rowid) FROM Entry)");
        prepare();
        EXPECT_EQ(contents(), kOldContents);
    }
}

TEST_F(SharedStoreTest, ALegacyStoreWithoutItsNewestChangesIsTakenOverAndThatIsSaid) {
    writeOld(legacy(), "V16");
    {
        const SQLite::Database database(legacy().string(), SQLite::OPEN_READONLY);
        auto record = store::newestOf(database.getHandle());
        ++record.revision; // no more than the upgrade adds
        store::StoreLock lock(legacy().string() + ".lock", std::chrono::seconds(1));
        const store::StoreLock::Guard guard(&lock);
        lock.setRecord(record);
    }
    EXPECT_THAT(start().notices,
                testing::ElementsAre(testing::HasSubstr("The newest changes in the store of an "
                                                        "older Korvex are missing")));
    EXPECT_EQ(contents(), kOldContents);
}

TEST_F(SharedStoreTest, ANewFolderThatFailsSaysNothingOfTheLegacyStore) {
    writeMany(legacy());
    {
        const FileSizeLimit limit(8192);
        EXPECT_EQ(caseOf<store::StoreError>([&] { prepare(); }),
                  store::StoreErrorCase::inputOutput);
    }
    EXPECT_THAT(names(), testing::ElementsAre("Primary.store.lock"));
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
                    const auto lines = m_log.lines();
                    status = std::any_of(lines.begin(), lines.end(), [](const auto& line) {
                        return line.level > base::LogLevel::info;
                    });
                } catch (const base::Error&) {
                    status = 2;
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
        EXPECT_EQ(bytes(marker()), "repaired by rules 2\n");
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
    EXPECT_EQ(refusalOf([&] { repairStore(work); }), SharedStoreErrorCase::incompleteStore);
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
    const auto killed = ".migration-" + base::Uuid::random().text();
    const std::string written = ".migration-v1-complete.new-abcdef";
    for (const bool isMarked : {false, true}) {
        write(folder() / killed / "Primary.store", "half");
        // Another program is about to give the marker its place.
        write(folder() / written, "");
        const base::FileDescriptor other(::open((folder() / written).c_str(), O_RDONLY));
        ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
        prepare();
        EXPECT_EQ(bytes(store()), before);
        const auto after = names();
        EXPECT_TRUE(after.contains(marker().filename())) << isMarked;
        EXPECT_FALSE(after.contains(killed));
        EXPECT_TRUE(after.contains(written));
    }
    prepare();
    EXPECT_FALSE(names().contains(written));
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
    // A store that is none for this build, and one that cannot be read, are not copied.
    const auto before = copies();
    writeMany(folder() / "many");
    fs::rename(folder() / "many", store());
    zeroPage(store());
    EXPECT_THROW(preparation.prepare(store(), {8e8}), store::StoreError);
    run(store(), "PRAGMA user_version = 9999");
    EXPECT_THROW(preparation.prepare(store(), {8e8}), store::StoreError);
    EXPECT_EQ(copies(), before);
    fs::remove_all(folder());
    writeOld(store(), "V11");
    prepare();
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
    EXPECT_THAT(start().notices, testing::ElementsAre(testing::HasSubstr("store repair")));
    EXPECT_THAT(names(), testing::Contains(testing::HasSubstr(".BeforeV17-")));
    run(store(), "UPDATE Entry SET checksum = checksum - 1");
    EXPECT_EQ(start().container->revision(), revision);
    EXPECT_THAT(names(), testing::Not(testing::Contains(testing::HasSubstr(".BeforeV17-"))));
}

/// A repair would judge what is altered as if it were meant, and vouch for it.
TEST_F(SharedStoreTest, WhatWasDamagedBeforeAnUpgradeIsNotRepairedAndSaidUntilItIsSaved) {
    writeOld(store(), "V16", 0);
    run(store(), "UPDATE Entry SET typeRawValue = 'uodo' WHERE typeRawValue = 'todo'");
    for (int i = 0; i < 3; ++i) {
        const auto started = start();
        EXPECT_THAT(started.notices, testing::ElementsAre(testing::HasSubstr("store repair")));
        EXPECT_THAT(names(), testing::Contains(testing::HasSubstr(".BeforeV17-")));
        EXPECT_EQ(started.context->fetch<Entry>().at(0)->typeRawValue(), "uodo");
        // What is saved otherwise does not vouch for it either.
        started.context->fetch<Entry>().at(0)->setContent("edited " + std::to_string(i));
        started.context->save();
        started.context->fetch<Entry>().at(0)->setSortOrder(100 + i);
        started.context->save();
        EXPECT_TRUE(started.container->check().isDamaged);
    }
    storage::Work work;
    const auto report = repairStore(work);
    ASSERT_TRUE(report.salvage);
    ASSERT_EQ(report.salvage->losses.size(), 1U);
    EXPECT_EQ(report.salvage->losses[0].altered, 1U);
    EXPECT_EQ(report.salvage->formerStores.size(), 1U);
    EXPECT_THAT(start().notices, testing::IsEmpty());
}

TEST_F(SharedStoreTest, TheFormerStoreStaysWhereTheUpgradedOneHasLostSomething) {
    writeMany(store());
    start();
    zeroPage(store());
    start();
    storage::Work work;
    const auto report = repairStore(work);
    ASSERT_TRUE(report.salvage);
    ASSERT_EQ(report.salvage->formerStores.size(), 1U);
    start();
    EXPECT_EQ(SQLite::Database(report.salvage->formerStores[0].string(), SQLite::OPEN_READONLY)
                  .execAndGet("SELECT count(*) FROM Entry")
                  .getInt(),
              200);
}

} // namespace
} // namespace korvex::tests
