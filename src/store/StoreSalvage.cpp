#include "store/StoreSalvage.h"

#include "base/Digest.h"
#include "store/ChangeLog.h"
#include "store/ChecksumFunction.h"
#include "store/OlderTable.h"
#include "store/SoleHold.h"
#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"
#include "store/TableSql.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <string>

namespace korvex::store {

namespace {

/// Of two rows that can be read with nothing readable between them, how far apart they may stand
/// for every row between to be asked for.
constexpr std::int64_t kWidestGap = 1'000'000;

constexpr const char* kStoredChecksum = "storedChecksum";
constexpr const char* kNewChecksum = "newChecksum";

bool isDamage(const StoreError& error) {
    return error.which() == StoreErrorCase::damaged || error.which() == StoreErrorCase::notAStore ||
           error.which() == StoreErrorCase::inputOutput || error.which() == StoreErrorCase::other;
}

/// False when damage is in the way; what was met before has been told.
bool readAll(sqlite3* database, const std::string& sql,
             const std::function<void(const Statement&)>& sink) {
    try {
        Statement rows(database, sql);
        while (rows.step()) {
            sink(rows);
        }
        return true;
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
        return false;
    }
}

/// Whether an altered row can go on as a record: with an identifier, and with text where it should
/// have some. Any other value reads as something, which the repair of metadata then judges.
bool isReadable(const Statement& row, int column, FieldKind kind) {
    const auto stored = row.storageClass(column);
    return kind == FieldKind::uuid
               ? stored == SQLITE_BLOB && row.bytes(column).size() == sizeof(base::Uuid::bytes)
               : kind != FieldKind::text || stored == SQLITE_TEXT;
}

/// The rows of one record type, out of the damaged store into the new one.
class TableSalvage {
public:
    TableSalvage(sqlite3* source, sqlite3* target, const OlderTable& table, SalvageReport& report)
        : m_source(source),
          m_target(target),
          m_table(table),
          m_type(*table.type),
          m_name(tableSql::quoted(table.type->name)),
          m_report(report) {}

    void run() {
        findRows();
        prepareReading();
        std::vector<std::int64_t> altered;
        for (const auto& [rowid, known] : m_known) {
            if (read(rowid, Wanted::sound) == Outcome::altered) {
                altered.push_back(rowid);
            }
        }
        // After all sound ones, none of which may lose its identifier to one of these.
        for (const auto rowid : altered) {
            read(rowid, Wanted::altered);
        }
        for (const auto& field : m_type.fields) {
            if (field.kind == FieldKind::externalBytes && m_table.has(field.name)) {
                copyExternal(field);
            }
        }
        report();
    }

private:
    enum class Wanted { sound, altered };
    enum class Outcome { saved, altered, missing, none };

    struct Known {
        /// An index says that there is such a row.
        bool isListed = false;
        Outcome outcome = Outcome::none;
        bool lacksBytes = false;
        std::optional<base::Uuid> owner;
    };

    /// Every row that the table or one of its indexes knows.
    void findRows() {
        const auto select = "SELECT rowid FROM " + m_name + " NOT INDEXED ORDER BY rowid";
        auto first = std::int64_t{0};
        const auto isComplete = readAll(m_source, select, [&](const Statement& row) {
            first = row.integer(0);
            m_known[first];
        });
        if (!isComplete) {
            auto last = first;
            readAll(m_source, select + " DESC", [&](const Statement& row) {
                last = row.integer(0);
                m_known[last];
            });
            if (last > first && last - first <= kWidestGap) {
                for (auto rowid = first + 1; rowid < last; ++rowid) {
                    m_known[rowid];
                }
            }
        }
        auto isListed = readIndex("sqlite_autoindex_" + std::string(m_type.name) + "_1",
                                  m_type.fields[0].name, [](Known&, const Statement&) {});
        if (m_type.ownerField) {
            const auto& owner = m_type.fields[*m_type.ownerField];
            const auto index = std::string(m_type.name) + "_" + std::string(owner.name);
            isListed = readIndex(index, owner.name,
                                 [](Known& known, const Statement& row) {
                                     if (!row.isAbsent(0)) {
                                         known.owner = row.uuid(0);
                                     }
                                 }) ||
                       isListed;
        }
        m_report.mayMissMore = m_report.mayMissMore || (!isComplete && !isListed);
    }

    bool readIndex(const std::string& index, std::string_view field,
                   const std::function<void(Known&, const Statement&)>& take) {
        const auto column = tableSql::quoted(field);
        const auto select = "SELECT " + column + ", rowid FROM " + m_name + " INDEXED BY " +
                            tableSql::quoted(index) + " ORDER BY " + column;
        const auto note = [&](const Statement& row) {
            auto& known = m_known[row.integer(1)];
            known.isListed = true;
            take(known, row);
        };
        if (readAll(m_source, select, note)) {
            return true;
        }
        readAll(m_source, select + " DESC", note);
        return false;
    }

    void prepareReading() {
        std::vector<StoredField> newFields;
        std::string stored;
        std::string values;
        for (const auto& each : m_table.rowFields()) {
            stored += (stored.empty() ? "" : ", ") + tableSql::quoted(each.name);
        }
        for (const auto index : tableSql::rowFields(m_type)) {
            newFields.push_back({m_type.fields[index].name, m_type.fields[index].kind});
            values += (values.empty() ? "" : ", ") +
                      resolved(m_table.values[index],
                               [](std::string_view name) { return tableSql::quoted(name); });
        }
        addChecksumFunction(m_source, kStoredChecksum, m_type.name, m_table.rowFields());
        addChecksumFunction(m_source, kNewChecksum, m_type.name, newFields);
        m_select.emplace(m_source, "SELECT rowid, version, " + std::string(kNewChecksum) + "(" +
                                       values + "), " + values + ", checksum = " + kStoredChecksum +
                                       "(" + stored + ") FROM " + m_name + " WHERE rowid = ?");
        std::string columns = "rowid, version, checksum";
        std::string places = "?, ?, ?";
        for (const auto& field : newFields) {
            columns += ", " + tableSql::quoted(field.name);
            places += ", ?";
        }
        m_insert.emplace(m_target,
                         "INSERT INTO " + m_name + "(" + columns + ") VALUES(" + places + ")");
        m_fields = std::move(newFields);
    }

    Outcome read(std::int64_t rowid, Wanted wanted) {
        auto& known = m_known[rowid];
        known.outcome = known.isListed ? Outcome::missing : Outcome::none;
        m_select->bind(0, rowid);
        try {
            if (m_select->step()) {
                known.outcome = take(known, wanted);
            }
            m_select->reset();
        } catch (const StoreError& error) {
            m_select->reset();
            if (!isDamage(error)) {
                throw;
            }
        }
        return known.outcome;
    }

    Outcome take(Known& known, Wanted wanted) {
        const auto& row = *m_select;
        const auto count = static_cast<int>(m_fields.size());
        const auto first = tableSql::kFirstFieldColumn;
        const auto isSound = row.integer(first + count) != 0;
        if (m_type.ownerField && !known.owner) {
            const auto place = ownerColumn();
            known.owner = row.isAbsent(place) ? std::nullopt : std::optional(row.uuid(place));
        }
        if (!isSound) {
            for (int i = 0; i < count; ++i) {
                if (!isReadable(row, first + i, m_fields[static_cast<std::size_t>(i)].kind)) {
                    return Outcome::missing;
                }
            }
            if (wanted == Wanted::sound) {
                return Outcome::altered;
            }
        }
        for (int i = 0; i < first + count; ++i) {
            m_insert->bindColumn(i, row, i);
        }
        try {
            m_insert->run();
        } catch (const StoreError& error) {
            if (error.which() != StoreErrorCase::invalidRecord) {
                throw;
            }
            return Outcome::missing; // another record has its identifier
        }
        ++m_report.saved;
        return isSound ? Outcome::saved : Outcome::altered;
    }

    int ownerColumn() const {
        const auto fields = tableSql::rowFields(m_type);
        const auto place = std::find(fields.begin(), fields.end(), *m_type.ownerField);
        return tableSql::kFirstFieldColumn + static_cast<int>(place - fields.begin());
    }

    void copyExternal(const Field& field) {
        const auto table = tableSql::externalTable(m_type, field);
        Statement select(m_source, "SELECT checksum, bytes FROM " + table + " WHERE owner = ?");
        Statement insert(m_target,
                         "INSERT INTO " + table + "(owner, checksum, bytes) VALUES(?, ?, ?)");
        for (auto& [rowid, known] : m_known) {
            if (known.outcome != Outcome::saved && known.outcome != Outcome::altered) {
                continue;
            }
            try {
                select.bind(0, rowid);
                if (select.step()) {
                    const auto bytes = select.bytes(1);
                    const auto checksum = static_cast<std::int64_t>(base::checksum(bytes));
                    if (checksum != select.integer(0)) {
                        known.outcome = Outcome::altered;
                    }
                    insert.bind(0, rowid);
                    insert.bind(1, checksum);
                    insert.bind(2, bytes);
                    insert.run();
                }
            } catch (const StoreError& error) {
                if (!isDamage(error)) {
                    throw;
                }
                known.lacksBytes = true;
            }
            select.reset();
        }
    }

    void report() {
        std::map<std::optional<base::Uuid>, SalvageReport::Loss> losses;
        for (const auto& [rowid, known] : m_known) {
            const auto isMissing = known.outcome == Outcome::missing;
            const auto isAltered = known.outcome == Outcome::altered;
            if (isMissing || isAltered || known.lacksBytes) {
                auto& loss = losses[known.owner];
                loss.missing += isMissing ? 1 : 0;
                loss.altered += isAltered ? 1 : 0;
                loss.withoutBytes += known.lacksBytes ? 1 : 0;
            }
        }
        for (auto& [owner, loss] : losses) {
            loss.type = &m_type;
            loss.owner = owner;
            m_report.losses.push_back(loss);
        }
    }

    sqlite3* m_source;
    sqlite3* m_target;
    const OlderTable& m_table;
    const RecordType& m_type;
    std::string m_name;
    SalvageReport& m_report;
    std::map<std::int64_t, Known> m_known;
    std::vector<StoredField> m_fields;
    std::optional<Statement> m_select;
    std::optional<Statement> m_insert;
};

/// Absent also where it cannot be read any more.
std::optional<Replacement> readReplacement(sqlite3* source) {
    try {
        return ChangeLog::lastReplacement(source);
    } catch (const StoreError&) {
        return std::nullopt;
    }
}

/// What makes the new store the same store to whoever knew the old one: its identifier, and a
/// revision that nobody has seen yet.
void takeIdentity(sqlite3* source, sqlite3* target, const std::optional<StoreLock::Record>& known) {
    auto id = known ? std::optional(known->storeID) : std::nullopt;
    readAll(source, "SELECT storeID FROM StoreInfo",
            [&](const Statement& row) { id = row.uuid(0); });
    if (id) {
        Statement update(target, "UPDATE StoreInfo SET storeID = ?");
        update.bind(0, *id);
        update.run();
    }
    auto revision = known ? known->revision : 0;
    readAll(source, "SELECT revision FROM ChangeLog",
            [&](const Statement& row) { revision = std::max(revision, row.integer(0)); });
    Statement insert(target, "INSERT INTO ChangeLog(revision, changes) VALUES(?, NULL)");
    insert.bind(0, revision + 1);
    insert.run();
    if (const auto replacement = readReplacement(source)) {
        ChangeLog::keepReplacement(target, *replacement);
    }
}

} // namespace

SalvageReport salvageStore(const std::filesystem::path& store, const Schema& schema,
                           std::chrono::milliseconds patience, base::LogSink& log) {
    const StoreFile file(store);
    StoreLock lock(file.lockFile(), patience);
    const StoreLock::Guard guard(&lock);
    if (!file.exists()) {
        throw StoreError(StoreErrorCase::missing);
    }
    file.removeStaging();
    const SoleHold hold(file, patience);
    auto* const source = hold.handle();
    const auto tables = olderTables(schema, StoreFile::version(source, schema));
    SalvageReport report{.kept = file.keptName("damaged")};
    file.replaceBy(
        [&](const std::filesystem::path& staging) {
            StoreFile::writeEmpty(staging, schema);
            const SQLite::Database target(staging.string(), SQLite::OPEN_READWRITE);
            auto* const handle = target.getHandle();
            for (const auto* sql : {"PRAGMA locking_mode = EXCLUSIVE", "PRAGMA journal_mode = OFF",
                                    "PRAGMA synchronous = OFF", "BEGIN"}) {
                Statement(handle, sql).run();
            }
            for (const auto& table : tables) {
                TableSalvage(source, handle, table, report).run();
            }
            takeIdentity(source, handle, lock.record());
            for (const auto* sql :
                 {"COMMIT", "PRAGMA locking_mode = NORMAL", "PRAGMA journal_mode = WAL"}) {
                Statement(handle, sql).run();
            }
        },
        report.kept);
    base::Logger(log, "Store")
        .warning("Saved " + std::to_string(report.saved) +
                 " records from a damaged store, which is kept as " +
                 report.kept.filename().string());
    return report;
}

} // namespace korvex::store
