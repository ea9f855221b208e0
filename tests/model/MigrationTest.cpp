#include "model/Board.h"
#include "model/Entry.h"
#include "model/SchemaVersions.h"
#include "store/JournalRemains.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "store/StoreError.h"
#include "store/StoreUpgrade.h"
#include "store/salvage/StoreSalvage.h"
#include "support/OldStore.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <limits>

namespace korvex::tests {

using model::Board;
using model::Entry;
using store::ModelConfiguration;
using Row = OldStore::Row;

/// Stores of every version that there was, each with the same boards and entries as far as the
/// version can hold them.
class MigrationTest : public ::testing::Test {
protected:
    std::filesystem::path file() const { return m_folder.path() / "Primary.store"; }

    std::unique_ptr<store::ModelContainer>
    open(ModelConfiguration::Older whenOlder = ModelConfiguration::Older::upgrade) {
        return store::ModelContainer::open(model::currentSchema(),
                                           {.file = file(),
                                            .whenMissing = ModelConfiguration::Missing::refuse,
                                            .whenOlder = whenOlder,
                                            .lockTimeout = std::chrono::milliseconds(50)},
                                           m_log);
    }

    void write(const OldStore::Version& version) {
        for (const auto& each : std::filesystem::directory_iterator(m_folder.path())) {
            std::filesystem::remove(each.path());
        }
        OldStore store(file(), version);
        for (const auto& row : boards()) {
            store.addBoard(row);
        }
        for (const auto& row : entries()) {
            store.addEntry(row);
            if (std::get<std::string>(row.at("content")).size() % 2 == 1) {
                store.attach(kAttachment);
            }
        }
    }

    static const std::vector<Row>& boards() {
        static const std::vector<Row> rows{
            board("Today", 1),
            board("Inbox", 1),
            board("Other system", 1),
            board("Today", 0),
            board("Work \"quoted\" {name}", 0),
        };
        return rows;
    }
    static const std::vector<Row>& entries() {
        static const std::vector<Row> rows = makeEntries();
        return rows;
    }

    /// The names that stand beside the store.
    std::vector<std::string> kept() const {
        std::vector<std::string> names;
        for (const auto& each : std::filesystem::directory_iterator(m_folder.path())) {
            const auto name = each.path().filename().string();
            if (!name.starts_with("Primary.store-") && name != "Primary.store" &&
                name != "Primary.store.lock") {
                names.push_back(name);
            }
        }
        return names;
    }

    const base::Bytes kAttachment = base::Bytes(20'000, std::uint8_t{'a'});
    TemporaryFolder m_folder;
    RecordingLog m_log;

private:
    static Row board(const std::string& name, std::int64_t isSystem) {
        return OldStore::board(name, {{"createdAt", -63114076800.0},
                                      {"updatedAt", 8e8},
                                      {"sortOrder", std::int64_t{-5}},
                                      {"isSystem", isSystem},
                                      {"isArchived", std::int64_t{1}},
                                      {"icon", std::string("no such icon")},
                                      {"iconColor", std::string("")},
                                      {"systemIdentifier", std::string("of its own")},
                                      {"mergedIntoBoardID", base::Uuid::random()}});
    }

    static std::vector<Row> makeEntries() {
        const std::string contents[] = {"a todo",
                                        "",
                                        "a text",
                                        std::string("zero \0 byte", 11),
                                        "no UTF-8 \xff\xfe",
                                        "'quotes' \"and\" {braces}",
                                        std::string(9'999, 'x'),
                                        "\xf0\x9f\x8d\x8f"};
        const std::string types[] = {"todo", "text", "Todo", ""};
        const double dates[] = {0.0, -63114076800.0, 1e300,
                                std::numeric_limits<double>::infinity()};
        std::vector<Row> rows;
        for (std::size_t i = 0; i < 64; ++i) {
            Row row{{"id", base::Uuid::random()},
                    {"type", types[i % 4]},
                    {"typeRawValue", types[i % 4]},
                    {"content", contents[i % 8]},
                    {"createdAt", dates[i % 4]},
                    {"updatedAt", dates[i / 4 % 4]},
                    {"sortOrder", i % 3 == 0 ? std::numeric_limits<std::int64_t>::max()
                                             : static_cast<std::int64_t>(i)},
                    {"isCompleted", static_cast<std::int64_t>(i % 2)}};
            const auto sometimes = [&](std::size_t bit, const char* column, store::Value value) {
                if (i & bit) {
                    row[column] = std::move(value);
                }
            };
            sometimes(1, "completedAt", 5.0);
            sometimes(2, "richTextData", base::Bytes(i, 0));
            sometimes(4, "board", boards()[i % boards().size()].at("id"));
            sometimes(8, "dueDay", std::int64_t{i == 8 ? -1 : 20250310});
            sometimes(16, "dueDate", dates[i % 4]);
            sometimes(32, "reminderDate", 7e8);
            rows.push_back(std::move(row));
        }
        rows.back()["board"] = base::Uuid::random();
        return rows;
    }
};

/// What a field of the current version must hold, made of the row that was written.
store::Value expected(const OldStore::Version& version, bool isEntry, std::string_view field,
                      const Row& row) {
    const auto& columns = isEntry ? version.entryColumns : version.boardColumns;
    const auto has = [&](std::string_view name) {
        return std::find(columns.begin(), columns.end(), name) != columns.end();
    };
    const auto found = row.find(std::string(field));
    if (has(field)) {
        return found == row.end() ? store::Value() : found->second;
    }
    if (field == "typeRawValue") {
        return row.at("type") == store::Value(std::string("todo")) ? std::string("todo")
                                                                   : std::string("text");
    }
    if (field == "systemIdentifier" && row.at("isSystem") == store::Value(std::int64_t{1})) {
        return row.at("name") == store::Value(std::string("Today")) ? std::string("today")
                                                                    : std::string("inbox");
    }
    return field == "isArchived" ? store::Value(std::int64_t{0}) : store::Value();
}

TEST_F(MigrationTest, EveryVersionArrivesWithTheSameWords) {
    for (const auto& version : OldStore::versions()) {
        SCOPED_TRACE(version.name);
        write(version);
        {
            const auto container = open();
            EXPECT_TRUE(container->wasUpgraded());
            store::ModelContext context(*container);
            const auto compare = [&](const store::Record* record, bool isEntry, const Row& row) {
                ASSERT_TRUE(record);
                const auto fields = record->storedType().fields;
                for (std::size_t i = 0; i < fields.size(); ++i) {
                    if (fields[i].kind != store::FieldKind::externalBytes) {
                        EXPECT_EQ(record->value(i), expected(version, isEntry, fields[i].name, row))
                            << fields[i].name;
                    }
                }
            };
            for (const auto& row : boards()) {
                compare(context.find<Board>(std::get<base::Uuid>(row.at("id"))), false, row);
            }
            for (const auto& row : entries()) {
                const auto* entry = context.find<Entry>(std::get<base::Uuid>(row.at("id")));
                compare(entry, true, row);
                EXPECT_EQ(entry->attachmentData().has_value(),
                          version.hasAttachments && entry->content().size() % 2 == 1);
            }
            EXPECT_THAT(container->check().problems,
                        testing::Each(testing::HasSubstr(" belongs to ")));
            EXPECT_EQ(container->revision(), 8);
            context.find<Entry>(std::get<base::Uuid>(entries()[0].at("id")))->setSortOrder(77);
            context.save();
        }
        EXPECT_THAT(kept(), testing::ElementsAre(testing::StartsWith("Primary.store.BeforeV17-")));
        store::removeFormerStores(file(), model::currentSchema());
        EXPECT_THAT(kept(), testing::IsEmpty());
        EXPECT_FALSE(open()->wasUpgraded());
    }
}

TEST_F(MigrationTest, AStoreIsUpgradedOnlyWhereItMayBe) {
    write(OldStore::version("V16"));
    const auto refusal = [&](ModelConfiguration configuration) {
        configuration.file = file();
        try {
            store::ModelContainer::open(model::currentSchema(), configuration, m_log);
        } catch (const store::StoreError& error) {
            return error.which();
        }
        return store::StoreErrorCase::other;
    };
    using Older = ModelConfiguration::Older;
    EXPECT_EQ(refusal({.whenOlder = Older::refuse}), store::StoreErrorCase::needsUpgrade);
    EXPECT_EQ(refusal({.allowsSave = false, .whenOlder = Older::upgrade}),
              store::StoreErrorCase::needsUpgrade);
    {
        // A program of that version, still running.
        SQLite::Database other(file().string(), SQLite::OPEN_READWRITE);
        EXPECT_EQ(other.execAndGet("SELECT count(*) FROM Board").getInt(), 5);
        EXPECT_EQ(
            refusal({.whenOlder = Older::upgrade, .lockTimeout = std::chrono::milliseconds(5)}),
            store::StoreErrorCase::busy);
    }
    EXPECT_THAT(kept(), testing::IsEmpty());
    EXPECT_TRUE(open()->wasUpgraded());
}

/// An upgrade and a salvage leave no journal, and are revisions themselves.
TEST_F(MigrationTest, WhatIsMissingFromTheJournalIsNoticedBefore) {
    for (const bool isUpgrade : {true, false}) {
        write(OldStore::version("V16"));
        const auto journal = file().string() + "-wal";
        {
            SQLite::Database other(file().string(), SQLite::OPEN_READWRITE);
            sqlite3_db_config(other.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
            other.exec("INSERT INTO ChangeLog VALUES(8, NULL)");
            other.exec("INSERT INTO ChangeLog VALUES(9, NULL)");
            store::StoreLock lock(file().string() + ".lock", std::chrono::milliseconds(50));
            const store::StoreLock::Guard guard(&lock);
            lock.setRecord(store::newestOf(other.getHandle()));
        }
        const auto size = std::filesystem::file_size(journal);
        std::fstream(journal, std::ios::in | std::ios::out | std::ios::binary)
                .seekp(static_cast<std::streamoff>(size) - 1)
            << '\x55';
        std::filesystem::remove(file().string() + "-shm");
        const auto notices = isUpgrade ? open()->notices()
                                       : store::salvageStore(file(), model::currentSchema(),
                                                             std::chrono::milliseconds(50), m_log)
                                             .notices;
        EXPECT_THAT(notices, testing::ElementsAre(
                                 "The newest saved change is missing: the store's journal was cut "
                                 "or removed outside Korvex. What is left of the journal was kept "
                                 "as Primary.store.journal-before-9."));
        const auto remains = file().string() + ".journal-before-9";
        ASSERT_TRUE(std::filesystem::exists(remains));
        EXPECT_EQ(std::filesystem::file_size(remains), size);
        EXPECT_EQ(open()->notices().size(), isUpgrade ? 1U : 0U);
    }
}

TEST_F(MigrationTest, WhatWasDamagedIsStillKnownToBe) {
    write(OldStore::version("V10"));
    SQLite::Database(file().string(), SQLite::OPEN_READWRITE)
        .exec("UPDATE Entry SET content = 'altered' WHERE rowid = 3");
    EXPECT_THAT(open()->check().problems,
                testing::Contains(testing::HasSubstr(" differs from its checksum")).Times(1));
}

} // namespace korvex::tests
