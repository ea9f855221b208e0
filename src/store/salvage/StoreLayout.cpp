#include "store/salvage/StoreLayout.h"

#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreUpgrade.h"
#include "store/TableSql.h"
#include "store/salvage/DamagedPages.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace korvex::store {

namespace {

constexpr std::string_view kUnique = " UNIQUE";
/// In the header: in which of its modes the file is written and read, and which change is the last.
constexpr std::size_t kModes = 18;
constexpr std::uint8_t kWithJournal = 2;
constexpr std::size_t kLastChange = 24;
constexpr std::size_t kPageCount = 28;
constexpr std::size_t kLastChangeOfCount = 92;

SQLite::Database inMemory() {
    return SQLite::Database(":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
}

/// As a version that is not the current one made it.
std::vector<std::string> createStatements(const OlderTable& table) {
    auto sql = "CREATE TABLE " + tableSql::quoted(table.type->name) +
               "(rowid INTEGER PRIMARY KEY, version INTEGER NOT NULL, checksum INTEGER NOT NULL";
    for (const auto& field : table.rowFields()) {
        sql += ", " + tableSql::columnDefinition(field.name, field.kind);
    }
    std::vector<std::string> all{sql + ")"};
    for (const auto& field : table.type->fields) {
        if (field.kind == FieldKind::externalBytes && table.has(field.name)) {
            all.push_back(tableSql::createExternal(*table.type, field));
        }
    }
    return all;
}

StoreLayout layoutOf(sqlite3* database, std::int32_t version) {
    StoreLayout layout{.version = version, .tables = {}};
    Statement tables(database,
                     "SELECT name, sql, rootpage FROM sqlite_schema WHERE type = 'table'");
    while (tables.step()) {
        std::string sql(tables.text(1));
        // What is unique has an index of its own.
        if (const auto at = sql.find(kUnique); at != sql.npos) {
            sql.erase(at, kUnique.size());
        }
        const std::string name(tables.text(0));
        layout.tables[name] = sql;
        layout.roots[name] = static_cast<std::uint32_t>(tables.integer(2));
    }
    return layout;
}

StoreLayout ofNewStore(const Schema& schema) {
    const auto database = inMemory();
    for (const auto& sql : tableSql::createAllStatements(schema.types)) {
        Statement(database.getHandle(), sql).run();
    }
    return layoutOf(database.getHandle(), schema.version.number);
}

void setNumber(base::Bytes& page, std::size_t offset, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        page[offset + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
    }
}

} // namespace

std::vector<StoreLayout> storeLayouts(const Schema& schema) {
    std::vector<StoreLayout> layouts{ofNewStore(schema)};
    std::vector<StoreLayout> asMade;
    for (auto at = schema.history.rbegin(); at != schema.history.rend(); ++at) {
        const auto isCurrent = at->number == schema.version.number;
        if (isCurrent || !schema.migrations || at->number < schema.migrations->oldest) {
            continue;
        }
        const auto tables = olderTables(schema, at->number);
        const auto older = inMemory();
        const auto upgraded = inMemory();
        auto statements = tableSql::createAllStatements({});
        for (const auto& table : tables) {
            auto ofTable = createStatements(table);
            std::move(ofTable.begin(), ofTable.end(), std::back_inserter(statements));
        }
        for (const auto& sql : statements) {
            Statement(older.getHandle(), sql).run();
            Statement(upgraded.getHandle(), sql).run();
        }
        upgradeTables(older.getHandle(), upgraded.getHandle(), tables);
        layouts.push_back(layoutOf(upgraded.getHandle(), schema.version.number));
        asMade.push_back(layoutOf(older.getHandle(), at->number));
        layouts.back().roots.clear();
        asMade.back().roots.clear();
    }
    std::move(asMade.begin(), asMade.end(), std::back_inserter(layouts));
    return layouts;
}

base::Bytes firstPage(const StoreLayout& layout, std::size_t pageSize, std::uint32_t pages,
                      std::uint32_t root) {
    const auto database = inMemory();
    auto* const handle = database.getHandle();
    Statement(handle, "PRAGMA page_size = " + std::to_string(pageSize)).run();
    Statement(handle, "PRAGMA application_id = " + std::to_string(StoreFile::kApplicationID)).run();
    Statement(handle, "PRAGMA user_version = " + std::to_string(layout.version)).run();
    for (const auto& [name, sql] : layout.tables) {
        Statement(handle, sql).run();
    }
    Statement(handle, "PRAGMA writable_schema = ON").run();
    Statement(handle, "UPDATE sqlite_schema SET rootpage = " + std::to_string(root)).run();
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> file(
        sqlite3_serialize(handle, "main", &size, 0), sqlite3_free);
    if (!file || size < static_cast<sqlite3_int64>(pageSize) ||
        file.get()[StoreFile::kHeaderBytes] != kTableLeaf) {
        throw StoreError(StoreErrorCase::notAStore);
    }
    base::Bytes page(file.get(), file.get() + pageSize);
    page[kModes] = page[kModes + 1] = kWithJournal;
    setPageCount(page, pages);
    return page;
}

void setPageCount(base::Bytes& header, std::uint32_t pages) {
    // It holds only where the last change confirms it.
    setNumber(header, kPageCount, pages);
    setNumber(header, kLastChangeOfCount, numberAt(header, kLastChange, 4));
}

std::uint32_t pageCount(const base::Bytes& header) {
    const auto isConfirmed =
        numberAt(header, kLastChangeOfCount, 4) == numberAt(header, kLastChange, 4);
    return isConfirmed ? numberAt(header, kPageCount, 4) : 0;
}

} // namespace korvex::store
