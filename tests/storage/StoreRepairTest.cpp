#include "storage/SharedStoreFixture.h"

#include <sqlite3.h>

#include <sys/stat.h>

namespace korvex::tests {
namespace {

using StoreRepairTest = SharedStoreFixture;

/// The disk fails at every read of the beginning of the store's file that stands there now.
class BadSector {
public:
    explicit BadSector(const std::filesystem::path& file) {
        system() = sqlite3_vfs_find(nullptr);
        m_system = *system();
        m_system.zName = "bad-sector";
        m_system.xOpen = open;
        sqlite3_vfs_register(&m_system, 1);
        bad() = inode(file);
    }
    ~BadSector() { sqlite3_vfs_unregister(&m_system); }

private:
    static sqlite3_vfs*& system() {
        static sqlite3_vfs* vfs = nullptr;
        return vfs;
    }
    static const sqlite3_io_methods*& methods() {
        static const sqlite3_io_methods* all = nullptr;
        return all;
    }
    static ino_t& bad() {
        static ino_t number = 0;
        return number;
    }
    static ino_t inode(const std::filesystem::path& file) {
        struct stat status {};
        return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
    }
    static int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* given) {
        const auto code = system()->xOpen(system(), name, file, flags, given);
        if (code == SQLITE_OK && (flags & SQLITE_OPEN_MAIN_DB) != 0 && inode(name) == bad()) {
            static sqlite3_io_methods failing;
            methods() = file->pMethods;
            failing = *methods();
            failing.xRead = [](sqlite3_file* of, void* to, int amount, sqlite3_int64 at) {
                return at == 0 ? SQLITE_IOERR_READ : methods()->xRead(of, to, amount, at);
            };
            file->pMethods = &failing;
        }
        return code;
    }

    sqlite3_vfs m_system{};
};

TEST_F(StoreRepairTest, AStoreThatTheDiskDoesNotReadIsSaved) {
    writeMany(store());
    start();
    storage::Work work;
    const BadSector disk(store());
    const auto report = repairStore(work);
    ASSERT_TRUE(report.salvage);
    EXPECT_EQ(report.salvage->saved, 201U);
}

/// As the table of what replaced the contents does, which is made by the first import.
TEST_F(StoreRepairTest, AStoreThatWasCutIsReadAlthoughATableBeganBehindThat) {
    writeMany(store());
    start();
    run(store(), "CREATE TABLE Replacement(revision INTEGER NOT NULL, note TEXT NOT NULL); "
                 "PRAGMA wal_checkpoint(TRUNCATE)");
    const auto pages = static_cast<std::size_t>(fs::file_size(store()) / 4096);
    fs::resize_file(store(), (pages - 6) * 4096);
    storage::Work work;
    const auto report = repairStore(work);
    ASSERT_TRUE(report.salvage);
    const auto missing = missingOf(*report.salvage);
    EXPECT_GT(missing, 0U);
    EXPECT_EQ(report.salvage->saved + missing, 201U);
    EXPECT_FALSE(report.salvage->mayMissMore) << "the index still names every row";
}

TEST_F(StoreRepairTest, ACancelledRepairSaysThatTheStoreWasUpgraded) {
    writeOld(store(), "V16");
    for (const auto* const said : {"Cancelled. The store was brought to the current version of "
                                   "Korvex; nothing else was changed.",
                                   "Cancelled. Nothing was changed."}) {
        int looks = 0;
        storage::Work work({}, [&] { return ++looks > 1; });
        try {
            repairStore(work);
            ADD_FAILURE() << "not cancelled";
        } catch (const storage::Cancelled& error) {
            EXPECT_EQ(error.errorDescription(), said);
        }
    }
}

TEST_F(StoreRepairTest, AStoreFromElsewhereIsRepairedWhoeverOpensItFirst) {
    const auto isRepaired = [&] {
        return SQLite::Database(store().string(), SQLite::OPEN_READONLY)
                   .execAndGet("SELECT count(*) FROM Entry WHERE sortOrder > 1")
                   .getInt() == 0;
    };
    // As something else than this build's services might.
    const auto move = [&] {
        const auto container =
            store::ModelContainer::open(model::currentSchema(), {.file = store()}, m_log);
        store::ModelContext context(*container);
        for (auto* entry : context.fetch<Entry>()) {
            entry->setSortOrder(entry->sortOrder() + 7);
        }
        context.save();
    };
    writeOld(legacy(), "V10");
    start();
    EXPECT_TRUE(isRepaired());
    move();
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
        EXPECT_THAT(start().notices, testing::Contains(testing::HasSubstr("store repair")));
    }
    storage::Work work;
    repairStore(work);
    EXPECT_TRUE(start().notices.empty());
    EXPECT_EQ(contents(), kOldContents);
}

TEST_F(StoreRepairTest, ARepairSaysWhatIsMissingByBoard) {
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
    const auto report = repairStore(work);
    ASSERT_TRUE(report.salvage);
    ASSERT_EQ(report.salvage->losses.size(), 1U);
    EXPECT_EQ(report.boardNames, std::vector<std::string>{"Home"});
    EXPECT_EQ(contents().size() + report.salvage->losses[0].missing, 100U);
    EXPECT_GT(report.metadata.count(), 0U);
    EXPECT_TRUE(repairStore(work).wasSound());
}

} // namespace
} // namespace korvex::tests
