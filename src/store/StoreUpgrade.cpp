#include "store/StoreUpgrade.h"

#include "base/FileReplacement.h"
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
#include <iterator>
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

/// Under which the stores of before an upgrade stay.
constexpr std::string_view kFormer = "former";

/// The checksums ahead, as a function of SQL.
class Checksums {
public:
    /// Until the function is offered anew, this must live.
    Checksums(ChecksumsAhead& ahead, sqlite3* database) : m_ahead(ahead) {
        const auto code = sqlite3_create_function_v2(database, kNextChecksum, 1, SQLITE_UTF8, this,
                                                     next, nullptr, nullptr, nullptr);
        if (code != SQLITE_OK) {
            throwSqliteError(database, code);
        }
    }
    Checksums(const Checksums&) = delete;
    Checksums& operator=(const Checksums&) = delete;

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

    ChecksumsAhead& m_ahead;
    std::exception_ptr m_failure;
};

/// The upgrade of one table, in the transaction of all of them. Rows stay where they are: to write
/// them anew would cost more than twice the time, for the sake of the columns' order.
class TableUpgrade {
public:
    /// `checksums`: of what the database is a copy of, up to this table.
    TableUpgrade(ChecksumsAhead& checksums, sqlite3* database, const OlderTable& table)
        : m_checksums(checksums),
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
        const auto before = m_checksums.alteredCount();
        const Checksums checksums(m_checksums, m_database);
        try {
            Statement update(m_database, sql + "checksum = " + kNextChecksum + "(rowid)");
            update.run();
            return {update.changes(), m_checksums.alteredCount() - before};
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

    ChecksumsAhead& m_checksums;
    sqlite3* m_database;
    const OlderTable& m_table;
    std::string m_name;
    /// In which column each stored field stands by now.
    std::map<std::string_view, std::string> m_columns;
    /// New fields that have a column by now, but not their value yet.
    std::set<std::string_view> m_present;
};

std::vector<RowCount> upgradeAll(ChecksumsAhead& checksums, sqlite3* copy,
                                 const std::vector<OlderTable>& tables) {
    std::vector<RowCount> counts;
    counts.reserve(tables.size());
    for (const auto& table : tables) {
        counts.push_back(TableUpgrade(checksums, copy, table).run());
    }
    return counts;
}

/// In a file that nobody else knows and that is thrown away when anything fails: no journal.
std::vector<RowCount> upgradeCopy(ChecksumsAhead& checksums, const std::filesystem::path& copy,
                                  const Schema& schema, const std::vector<OlderTable>& tables) {
    const SQLite::Database database(copy.string(), SQLite::OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
    auto* const handle = database.getHandle();
    for (const auto* sql : {"PRAGMA locking_mode = EXCLUSIVE", "PRAGMA journal_mode = OFF",
                            "PRAGMA synchronous = OFF", "PRAGMA cache_size = -65536", "BEGIN"}) {
        run(handle, sql);
    }
    auto counts = upgradeAll(checksums, handle, tables);
    // To whoever knew the store before, everything has changed.
    run(handle, "INSERT INTO ChangeLog(revision, changes) "
                "SELECT ifnull(max(revision), 0) + 1, NULL FROM ChangeLog");
    run(handle, "PRAGMA user_version = " + std::to_string(schema.version.number));
    run(handle, "COMMIT");
    run(handle, "PRAGMA locking_mode = NORMAL");
    run(handle, "PRAGMA journal_mode = WAL");
    return counts;
}

/// Of a store that nobody writes any more, by two threads.
class ReadingBack {
public:
    /// Begins. The files are opened here, so that all runs call the system in the same order.
    ReadingBack(const std::filesystem::path& file, const Schema& schema) : m_schema(schema) {
        for (std::int64_t index = 0; index < kParts; ++index) {
            m_copies.emplace_back(StoreFile(file).readingUri() + "&immutable=1",
                                  SQLite::OPEN_READONLY | SQLite::OPEN_URI | SQLITE_OPEN_NOMUTEX);
        }
        for (std::int64_t index = 0; index < kParts; ++index) {
            auto* const copy = m_copies[static_cast<std::size_t>(index)].getHandle();
            m_parts.push_back(
                std::async(std::launch::async | std::launch::deferred, [copy, index, &schema] {
                    return countRows(copy, schema, {index, kParts});
                }));
        }
    }

    /// Once. In the parts a row that stands out of order, its number being damaged, may be left
    /// out or counted twice: where they differ, one whole count decides. Throws StoreError.
    bool finds(const std::vector<RowCount>& counts) {
        return countsOfParts() == counts ||
               countRows(m_copies.front().getHandle(), m_schema) == counts;
    }

private:
    std::vector<RowCount> countsOfParts() {
        auto all = m_parts.front().get();
        for (auto part = std::next(m_parts.begin()); part != m_parts.end(); ++part) {
            const auto more = part->get();
            for (std::size_t i = 0; i < all.size(); ++i) {
                all[i].rows += more[i].rows;
                all[i].altered += more[i].altered;
            }
        }
        return all;
    }

    static constexpr std::int64_t kParts = 2;

    const Schema& m_schema;
    std::vector<SQLite::Database> m_copies;
    /// Gone before what they read.
    std::vector<std::future<std::vector<RowCount>>> m_parts;
};

} // namespace

std::string formerStoreName(const Schema& schema) {
    const auto name = schema.version.name;
    const auto at = name.rfind('V');
    return "Before" + std::string(at == name.npos ? name : name.substr(at));
}

void upgradeStore(const StoreFile& file, const Schema& schema, std::chrono::milliseconds patience,
                  const base::Logger& log) {
    SoleHold store(file, patience);
    const auto version = StoreFile::version(store.handle(), schema);
    const auto tables = olderTables(schema, version);
    if (!hasTables(store.handle(), tables)) {
        throw StoreError(StoreErrorCase::damaged);
    }
    const auto kept = file.keptName(formerStoreName(schema));
    file.replaceBy(
        [&](const std::filesystem::path& staging) {
            // They are taken while the file is copied, too.
            ChecksumsAhead checksums(store.handle(), tables);
            store.copyTo(staging);
            const auto counts = upgradeCopy(checksums, staging, schema, tables);
            ReadingBack reading(staging, schema);
            // All take time by the size of the file, these the processors', this one the disk's.
            StoreFile(staging).sync();
            if (!reading.finds(counts)) {
                throw StoreError(StoreErrorCase::damaged, "the upgraded copy differs");
            }
        },
        kept);
    log.info("Upgraded the store from version " + std::to_string(version) + " to " +
             std::to_string(schema.version.number) + "; the former one is kept as " +
             kept.filename().string());
}

std::vector<std::filesystem::path> keepFormerStores(const std::filesystem::path& store,
                                                    const Schema& schema) {
    const StoreFile file(store);
    for (const auto& each : file.kept(formerStoreName(schema))) {
        std::error_code ignored;
        // An upgrade that was killed: it is this very store.
        if (!std::filesystem::equivalent(each, store, ignored)) {
            if (const auto failure = base::moveFile(each, file.keptName(kFormer))) {
                throwSystemError(failure.value());
            }
        }
    }
    return file.kept(kFormer);
}

void upgradeTables(sqlite3* store, sqlite3* copy, const std::vector<OlderTable>& tables) {
    ChecksumsAhead checksums(store, tables);
    upgradeAll(checksums, copy, tables);
}

bool hasFormerStores(const std::filesystem::path& store, const Schema& schema) {
    return !StoreFile(store).kept(formerStoreName(schema)).empty();
}

void removeFormerStores(const std::filesystem::path& store, const Schema& schema) noexcept {
    for (const auto& each : StoreFile(store).kept(formerStoreName(schema))) {
        std::error_code nextTime;
        std::filesystem::remove(each, nextTime);
    }
}

} // namespace korvex::store
