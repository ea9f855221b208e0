#include "store/StoreUpgrade.h"

#include "store/ChecksumsAhead.h"
#include "store/OlderTable.h"
#include "store/SoleHold.h"
#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <exception>
#include <future>
#include <map>
#include <set>
#include <vector>

namespace korvex::store {

namespace {

/// The function that gives a row the checksum that was made ahead.
constexpr const char* kNextChecksum = "nextChecksum";

void run(sqlite3* database, const std::string& sql) {
    Statement(database, sql).run();
}

/// "BeforeV17" for `KorvexSchemaV17`.
std::string formerName(const Schema& schema) {
    const auto name = schema.version.name;
    const auto at = name.rfind('V');
    return "Before" + std::string(at == name.npos ? name : name.substr(at));
}

/// The checksums ahead, as a function of SQL.
class Checksums {
public:
    Checksums(sqlite3* store, const OlderTable& table) : m_ahead(store, table) {}

    /// Until the function is offered anew, this must live.
    void offer(sqlite3* database) {
        const auto code = sqlite3_create_function_v2(database, kNextChecksum, 1, SQLITE_UTF8, this,
                                                     next, nullptr, nullptr, nullptr);
        if (code != SQLITE_OK) {
            throwSqliteError(database, code);
        }
    }
    std::size_t alteredCount() { return m_ahead.alteredCount(); }
    void rethrow() const {
        if (m_failure) {
            std::rethrow_exception(m_failure);
        }
    }

private:
    static void next(sqlite3_context* context, int, sqlite3_value** values) {
        auto& self = *static_cast<Checksums*>(sqlite3_user_data(context));
        try {
            sqlite3_result_int64(context, self.m_ahead.next(sqlite3_value_int64(values[0])));
        } catch (...) {
            self.m_failure = std::current_exception();
            sqlite3_result_error_code(context, SQLITE_ABORT);
        }
    }

    ChecksumsAhead m_ahead;
    std::exception_ptr m_failure;
};

/// What a table holds.
struct RowCount {
    std::int64_t rows = 0;
    /// Those that are not what was saved last.
    std::int64_t altered = 0;

    bool operator==(const RowCount&) const = default;
};

/// The upgrade of one table, in the transaction of all of them. Rows stay where they are: to write
/// them anew would cost more than twice the time, for the sake of the columns' order.
class TableUpgrade {
public:
    /// `store` is what the database is a copy of.
    TableUpgrade(sqlite3* store, sqlite3* database, const OlderTable& table)
        : m_store(store),
          m_database(database),
          m_table(table),
          m_name(tableSql::quoted(table.type->name)) {
        for (const auto& field : table.rowFields()) {
            m_columns[field.name] = std::string(field.name);
        }
    }

    RowCount run() {
        reuseColumns();
        addColumns();
        const auto count = rewriteRows();
        dropColumns();
        for (const auto& sql : tableSql::createStatements(*m_table.type)) {
            store::run(m_database, sql);
        }
        return count;
    }

private:
    const Field& field(std::size_t index) const { return m_table.type->fields[index]; }

    /// Which fields the value of one is made of.
    std::set<std::string> sourcesOf(std::size_t index) const {
        std::set<std::string> names;
        static_cast<void>(resolved(m_table.values[index], [&](std::string_view name) {
            names.insert(std::string(name));
            return std::string();
        }));
        return names;
    }

    bool isStillAField(std::string_view name) const {
        const auto fields = m_table.type->fields;
        return std::any_of(fields.begin(), fields.end(),
                           [&](const Field& each) { return each.name == name; });
    }

    /// A new field that is made of one that goes takes over its column: to drop a column costs a
    /// pass over all rows.
    void reuseColumns() {
        for (const auto index : tableSql::rowFields(*m_table.type)) {
            const auto sources = sourcesOf(index);
            if (m_table.has(field(index).name) || sources.size() != 1) {
                continue;
            }
            const auto stored = m_table.rowFields();
            const auto source = std::find_if(stored.begin(), stored.end(), [&](const auto& each) {
                return each.name == *sources.begin() && each.kind == field(index).kind;
            });
            if (source == stored.end() || isStillAField(source->name) ||
                m_columns[source->name] != source->name) {
                continue;
            }
            store::run(m_database, "ALTER TABLE " + m_name + " RENAME COLUMN " +
                                       tableSql::quoted(source->name) + " TO " +
                                       tableSql::quoted(field(index).name));
            m_columns[source->name] = field(index).name;
            m_present.insert(field(index).name);
        }
    }

    void addColumns() {
        for (const auto index : tableSql::rowFields(*m_table.type)) {
            const auto& added = field(index);
            if (m_table.has(added.name) || m_present.contains(added.name)) {
                continue;
            }
            const auto isConstant = sourcesOf(index).empty();
            // The rows that are there get it without being touched.
            const auto first =
                isConstant ? m_table.values[index] : tableSql::emptyValue(added.kind);
            store::run(m_database, "ALTER TABLE " + m_name + " ADD COLUMN " +
                                       tableSql::columnDefinition(added.name, added.kind) +
                                       " DEFAULT " + first);
            if (!isConstant) {
                m_present.insert(added.name);
            }
        }
    }

    std::string value(std::size_t index) const {
        return resolved(m_table.values[index], [&](std::string_view name) {
            return tableSql::quoted(m_columns.at(name));
        });
    }

    /// One pass over the rows.
    RowCount rewriteRows() {
        std::string sql = "UPDATE " + m_name + " NOT INDEXED SET ";
        for (const auto index : tableSql::rowFields(*m_table.type)) {
            if (value(index) != tableSql::quoted(field(index).name) &&
                (m_table.has(field(index).name) || m_present.contains(field(index).name))) {
                sql += tableSql::quoted(field(index).name) + " = " + value(index) + ", ";
            }
        }
        Checksums checksums(m_store, m_table);
        checksums.offer(m_database);
        try {
            Statement update(m_database, sql + "checksum = " + kNextChecksum + "(rowid)");
            update.run();
            return {update.changes(), static_cast<std::int64_t>(checksums.alteredCount())};
        } catch (const StoreError&) {
            checksums.rethrow(); // what SQLite says of a function that fails is less
            throw;
        }
    }

    void dropColumns() {
        for (const auto& [name, column] : m_columns) {
            if (!isStillAField(column)) {
                store::run(m_database,
                           "ALTER TABLE " + m_name + " DROP COLUMN " + tableSql::quoted(column));
            }
        }
    }

    sqlite3* m_store;
    sqlite3* m_database;
    const OlderTable& m_table;
    std::string m_name;
    /// In which column each stored field stands by now.
    std::map<std::string_view, std::string> m_columns;
    /// New fields that have a column by now, but not their value yet.
    std::set<std::string_view> m_present;
};

/// In a file that nobody else knows and that is thrown away when anything fails: no journal.
std::vector<RowCount> upgradeCopy(sqlite3* store, const std::filesystem::path& copy,
                                  const Schema& schema, const std::vector<OlderTable>& tables) {
    const SQLite::Database database(copy.string(), SQLite::OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
    auto* const handle = database.getHandle();
    for (const auto* sql : {"PRAGMA locking_mode = EXCLUSIVE", "PRAGMA journal_mode = OFF",
                            "PRAGMA synchronous = OFF", "PRAGMA cache_size = -65536", "BEGIN"}) {
        run(handle, sql);
    }
    std::vector<RowCount> counts;
    counts.reserve(tables.size());
    for (const auto& table : tables) {
        counts.push_back(TableUpgrade(store, handle, table).run());
    }
    // To whoever knew the store before, everything has changed.
    run(handle, "INSERT INTO ChangeLog(revision, changes) "
                "SELECT ifnull(max(revision), 0) + 1, NULL FROM ChangeLog");
    run(handle, "PRAGMA user_version = " + std::to_string(schema.version.number));
    run(handle, "COMMIT");
    run(handle, "PRAGMA locking_mode = NORMAL");
    run(handle, "PRAGMA journal_mode = WAL");
    return counts;
}

/// Reads every row as programs of the current version will, and compares it with its checksum.
void readBack(sqlite3* copy, const Schema& schema, const std::vector<RowCount>& expected) {
    std::vector<RowCount> found;
    for (const auto& table : olderTables(schema, StoreFile::version(copy, schema))) {
        const RowReading reading(copy, table);
        Statement count(copy, "SELECT count(*), count(*) FILTER (WHERE NOT " + reading.isSound +
                                  ") FROM " + tableSql::quoted(table.type->name) + " NOT INDEXED");
        while (count.step()) {
            found.push_back({count.integer(0), count.integer(1)});
        }
    }
    if (found != expected) {
        throw StoreError(StoreErrorCase::damaged, "the upgraded copy differs");
    }
}

} // namespace

void upgradeStore(const StoreFile& file, const Schema& schema, std::chrono::milliseconds patience,
                  const base::Logger& log) {
    SoleHold store(file, patience);
    const auto version = StoreFile::version(store.handle(), schema);
    const auto tables = olderTables(schema, version);
    const auto kept = file.keptName(formerName(schema));
    file.replaceBy(
        [&](const std::filesystem::path& staging) {
            store.copyTo(staging);
            const auto counts = upgradeCopy(store.handle(), staging, schema, tables);
            const SQLite::Database copy(StoreFile(staging).readingUri() + "&immutable=1",
                                        SQLite::OPEN_READONLY | SQLite::OPEN_URI);
            // Both take time by the size of the file, one the processor's, one the disk's.
            auto reading = std::async(std::launch::async | std::launch::deferred,
                                      [&] { readBack(copy.getHandle(), schema, counts); });
            StoreFile(staging).sync();
            reading.get();
        },
        kept);
    log.info("Upgraded the store from version " + std::to_string(version) + " to " +
             std::to_string(schema.version.number) + "; the former one is kept as " +
             kept.filename().string());
}

bool hasFormerStores(const std::filesystem::path& store, const Schema& schema) {
    return !StoreFile(store).kept(formerName(schema)).empty();
}

void removeFormerStores(const std::filesystem::path& store, const Schema& schema) noexcept {
    for (const auto& each : StoreFile(store).kept(formerName(schema))) {
        std::error_code nextTime;
        std::filesystem::remove(each, nextTime);
    }
}

} // namespace korvex::store
