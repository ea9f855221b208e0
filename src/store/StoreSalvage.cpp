#include "store/StoreSalvage.h"

#include "base/Digest.h"
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
constexpr std::uint64_t kWidestGap = 1'000'000;

enum class Read { row, end, damage };

/// The next row of the damaged store. What fails elsewhere, as in the new one, is not its damage.
Read readNext(Statement& rows) {
    try {
        return rows.step() ? Read::row : Read::end;
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
        return Read::damage;
    }
}

/// False when damage is in the way; what was met before has been told.
bool readAll(sqlite3* database, const std::string& sql,
             const std::function<void(const Statement&)>& sink) {
    std::optional<Statement> rows;
    try {
        rows.emplace(database, sql);
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
        return false;
    }
    auto read = readNext(*rows);
    while (read == Read::row) {
        sink(*rows);
        read = readNext(*rows);
    }
    return read == Read::end;
}

/// The rows of one record type, out of the damaged store into the new one.
class TableSalvage {
public:
    TableSalvage(sqlite3* source, sqlite3* target, const OlderTable& table, SalvageReport& report,
                 const SalvageProgress& progress)
        : m_source(source),
          m_target(target),
          m_table(table),
          m_type(*table.type),
          m_name(tableSql::quoted(table.type->name)),
          m_report(report),
          m_progress(progress) {}

    void run() {
        findRows();
        prepareReading();
        std::vector<std::int64_t> altered;
        std::size_t done = 0;
        for (const auto& [rowid, known] : m_known) {
            if (m_progress) {
                m_progress(done, m_known.size());
                ++done;
            }
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
            // A damaged page may hold any number.
            const auto gap = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first);
            if (last > first && gap <= kWidestGap) {
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
        if (!isThere(index)) {
            return false;
        }
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

    bool isThere(const std::string& index) {
        Statement look(m_source, "SELECT 1 FROM sqlite_schema WHERE type = 'index' AND name = ?");
        look.bind(0, std::string_view(index));
        return readNext(look) == Read::row;
    }

    void prepareReading() {
        const RowReading reading(m_source, m_table);
        m_select.emplace(m_source, "SELECT rowid, version, " + reading.values + ", " +
                                       reading.isSound + " FROM " + m_name + " WHERE rowid = ?");
        std::string columns = "rowid, version";
        std::string values;
        for (std::size_t i = 0; i < reading.fields.size(); ++i) {
            columns += ", " + tableSql::quoted(reading.fields[i].name);
            values += ", ?" + std::to_string(i + kFirstField + 1);
        }
        // The checksum is that of what is written, which may be less than was read.
        addChecksumFunction(m_target, kNewChecksum, m_type.name, reading.fields);
        m_insert.emplace(m_target, "INSERT INTO " + m_name + "(" + columns +
                                       ", checksum) VALUES(?1, ?2" + values + ", " + kNewChecksum +
                                       "(" + values.substr(2) + "))");
        m_fields = reading.fields;
    }

    Outcome read(std::int64_t rowid, Wanted wanted) {
        auto& known = m_known[rowid];
        known.outcome = known.isListed ? Outcome::missing : Outcome::none;
        m_select->bind(0, rowid);
        if (readNext(*m_select) == Read::row) {
            known.outcome = take(known, wanted);
        }
        m_select->reset();
        return known.outcome;
    }

    Outcome take(Known& known, Wanted wanted) {
        const auto& row = *m_select;
        const auto count = static_cast<int>(m_fields.size());
        const auto hasIdentifier = row.isIdentifier(kFirstField);
        const auto isSound = row.integer(kFirstField + count) != 0 && hasIdentifier;
        if (m_type.ownerField && !known.owner) {
            const auto place = ownerColumn();
            known.owner = row.isAbsent(place) ? std::nullopt : std::optional(row.uuid(place));
        }
        if (!isSound && wanted == Wanted::sound) {
            return hasText(row) ? Outcome::altered : Outcome::missing;
        }
        m_insert->bindColumn(0, row, 0);
        bindReadable(1, row, FieldKind::integer);
        for (int i = 0; i < count; ++i) {
            bindReadable(kFirstField + i, row, m_fields[static_cast<std::size_t>(i)].kind);
        }
        if (!insert(hasIdentifier ? std::nullopt : std::optional(freshIdentifier()))) {
            // Another record has the same identifier, which is worth less than the words; but that
            // one may be sound, and comes first.
            if (wanted == Wanted::sound) {
                return Outcome::altered;
            }
            if (!insert(freshIdentifier())) {
                return Outcome::missing;
            }
        }
        ++m_report.saved;
        return wanted == Wanted::sound ? Outcome::saved : Outcome::altered;
    }

    static base::Uuid freshIdentifier() { return base::Uuid::random(); }

    /// With the identifier that was read, or another one. False where the table refuses it.
    bool insert(const std::optional<base::Uuid>& identifier) {
        if (identifier) {
            m_insert->bind(kFirstField, *identifier);
        }
        try {
            m_insert->run();
            return true;
        } catch (const StoreError& error) {
            if (error.which() != StoreErrorCase::invalidRecord) {
                throw;
            }
            return false;
        }
    }

    /// Whether anything is left that a person might have written.
    bool hasText(const Statement& row) const {
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            const auto column = kFirstField + static_cast<int>(i);
            if (m_fields[i].kind == FieldKind::text && row.storageClass(column) == SQLITE_TEXT) {
                return true;
            }
        }
        return false;
    }

    /// Any value reads as something, which the repair of metadata then judges; but what cannot be
    /// absent must not be.
    void bindReadable(int column, const Statement& row, FieldKind kind) {
        const auto isAbsent = row.isAbsent(column);
        if (kind == FieldKind::text && row.storageClass(column) != SQLITE_TEXT) {
            m_insert->bind(column, row.text(column));
        } else if (isAbsent && (kind == FieldKind::integer || kind == FieldKind::boolean)) {
            m_insert->bind(column, std::int64_t{0});
        } else if (isAbsent && kind == FieldKind::date) {
            m_insert->bind(column, 0.0);
        } else {
            m_insert->bindColumn(column, row, column);
        }
    }

    int ownerColumn() const {
        const auto fields = tableSql::rowFields(m_type);
        const auto place = std::find(fields.begin(), fields.end(), *m_type.ownerField);
        return kFirstField + static_cast<int>(place - fields.begin());
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
            select.bind(0, rowid);
            const auto read = readNext(select);
            if (read == Read::row) {
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
            known.lacksBytes = read == Read::damage;
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

    /// Of what is read and written, behind "rowid, version".
    static constexpr int kFirstField = 2;

    sqlite3* m_source;
    sqlite3* m_target;
    const OlderTable& m_table;
    const RecordType& m_type;
    std::string m_name;
    SalvageReport& m_report;
    const SalvageProgress& m_progress;
    std::map<std::int64_t, Known> m_known;
    std::vector<StoredField> m_fields;
    std::optional<Statement> m_select;
    std::optional<Statement> m_insert;
};

/// What makes the new store the same store to whoever knew the old one: its identifier, and a
/// revision that nobody has seen yet.
void takeIdentity(sqlite3* source, sqlite3* target, const std::optional<StoreLock::Record>& known) {
    auto id = known ? known->storeID : base::Uuid();
    readAll(source, "SELECT storeID FROM StoreInfo",
            [&](const Statement& row) { id = row.isIdentifier(0) ? row.uuid(0) : id; });
    if (id != base::Uuid()) {
        Statement update(target, "UPDATE StoreInfo SET storeID = ?");
        update.bind(0, id);
        update.run();
    }
    auto revision = known ? known->revision : 0;
    readAll(source, "SELECT revision FROM ChangeLog",
            [&](const Statement& row) { revision = std::max(revision, row.integer(0)); });
    Statement insert(target, "INSERT INTO ChangeLog(revision, changes) VALUES(?, NULL)");
    insert.bind(0, revision + 1);
    insert.run();
}

} // namespace

SalvageReport salvageStore(const std::filesystem::path& store, const Schema& schema,
                           std::chrono::milliseconds patience, base::LogSink& log,
                           const SalvageProgress& progress) {
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
                TableSalvage(source, handle, table, report, progress).run();
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
