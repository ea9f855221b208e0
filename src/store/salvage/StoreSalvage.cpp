#include "store/salvage/StoreSalvage.h"

#include "store/ChangeLog.h"
#include "store/JournalRemains.h"
#include "store/SoleHold.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"
#include "store/StoreUpgrade.h"
#include "store/TableSql.h"
#include "store/salvage/DamagedRows.h"
#include "store/salvage/MendedCopy.h"
#include "store/salvage/TableSalvage.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace korvex::store {

namespace {

/// No store is saved that often.
constexpr std::int64_t kHighestRevision = std::int64_t{1} << 53;

/// The damaged store, as far as SQLite reads it: itself, or a copy that is more in order.
class Source {
public:
    Source(const StoreFile& file, const Schema& schema, std::chrono::milliseconds patience,
           Ticker& ticker)
        : m_request(file.lockFile()) {
        if (!file.isTooShort() && canBeReadItself(file, schema, patience, ticker)) {
            return;
        }
        m_itself.reset();
        m_copy.emplace(file, schema, patience, ticker);
        m_tables = m_copy->tables();
    }

    sqlite3* handle() const { return m_itself ? m_itself->handle() : m_copy->handle(); }
    const std::vector<OlderTable>& tables() const { return m_tables; }
    LooseTrees looseTrees() const { return m_copy ? m_copy->looseTrees() : LooseTrees(); }
    bool isItself() const { return m_itself.has_value(); }
    bool mayLackTables() const { return m_copy && m_copy->mayLackTables(); }

private:
    bool canBeReadItself(const StoreFile& file, const Schema& schema,
                         std::chrono::milliseconds patience, Ticker& ticker) {
        try {
            m_itself.emplace(file, patience);
            ticker.accompany(handle());
            m_tables = olderTables(schema, StoreFile::version(handle(), schema));
            return hasTables(handle(), m_tables) && areComplete(handle(), m_tables);
        } catch (const StoreError& error) {
            if (!isDamage(error)) {
                throw;
            }
            return false;
        }
    }

    /// Nobody is to take the store while it goes from the one to the other.
    SoleRequest m_request;
    std::optional<SoleHold> m_itself;
    std::optional<MendedCopy> m_copy;
    std::vector<OlderTable> m_tables;
};

/// Absent also where it cannot be read any more.
std::optional<Replacement> readReplacement(sqlite3* source) {
    try {
        return ChangeLog::lastReplacement(source);
    } catch (const StoreError&) {
        return std::nullopt;
    }
}

/// What a damaged store says of itself. Which one it is, its lock says where it does not.
struct Identity {
    StoreLock::Record record;
    /// Whether it says to which revision it has come.
    bool isRevisionKnown = false;
};

Identity identityOf(sqlite3* source, const std::optional<StoreLock::Record>& known) {
    Identity found;
    found.record.storeID = known ? known->storeID : base::Uuid();
    readAll(source, "SELECT storeID FROM StoreInfo", [&](const Statement& row) {
        found.record.storeID = row.isIdentifier(0) ? row.uuid(0) : found.record.storeID;
    });
    auto& revision = found.record.revision;
    const auto isRead =
        readAll(source, "SELECT revision FROM ChangeLog", [&](const Statement& row) {
            // What is beyond is damage.
            revision =
                row.integer(0) <= kHighestRevision ? std::max(revision, row.integer(0)) : revision;
        });
    found.isRevisionKnown = isRead && revision > 0;
    return found;
}

/// What makes the new store the same store to whoever knew the old one: its identifier, and a
/// revision that nobody has seen yet.
void takeIdentity(sqlite3* source, sqlite3* target, const Schema& schema,
                  const std::optional<StoreLock::Record>& known) {
    const auto found = identityOf(source, known).record;
    if (found.storeID != base::Uuid()) {
        Statement update(target, "UPDATE StoreInfo SET storeID = ?");
        update.bind(0, found.storeID);
        update.run();
    }
    auto revision = found.revision;
    if (known && known->revision <= kHighestRevision) {
        revision = std::max(revision, known->revision);
    }
    // Where nothing else says it, the rows do; but no checksum is over their versions.
    for (const auto* type : revision == 0 ? schema.types : std::span<const RecordType* const>()) {
        readAll(target, "SELECT max(version) FROM " + tableSql::quoted(type->name),
                [&](const Statement& row) {
                    revision = std::clamp(row.integer(0), revision, kHighestRevision);
                });
    }
    Statement insert(target, "INSERT INTO ChangeLog(revision, changes) VALUES(?, NULL)");
    insert.bind(0, revision + 1);
    insert.run();
    if (const auto replacement = readReplacement(source)) {
        ChangeLog::keepReplacement(target, *replacement);
    }
}

/// Of a store that did not say so itself, since SQLite does not open it.
std::optional<MissingChanges> missingFrom(const Source& source, const StoreLock& lock) {
    if (source.isItself()) {
        return std::nullopt;
    }
    const auto found = identityOf(source.handle(), lock.record());
    return found.isRevisionKnown ? missingChanges(found.record, lock) : std::nullopt;
}

SalvageReport salvage(const StoreFile& file, const Schema& schema,
                      std::chrono::milliseconds patience, base::LogSink& log, Ticker& ticker) {
    StoreLock lock(file.lockFile(), patience);
    const StoreLock::Guard guard(&lock);
    if (!file.isThere()) {
        throw StoreError(StoreErrorCase::missing);
    }
    file.removeStaging();
    auto missing = findMissingChanges(file, lock);
    const Source source(file, schema, patience, ticker);
    if (!missing) {
        missing = missingFrom(source, lock);
    }
    SalvageReport report{.mayMissMore = source.mayLackTables(), .kept = file.keptName("damaged")};
    if (missing) {
        report.notices.push_back(missing->notice);
    }
    file.replaceBy(
        [&](const std::filesystem::path& staging) {
            StoreFile::writeEmpty(staging, schema);
            const SQLite::Database target(staging.string(), SQLite::OPEN_READWRITE);
            auto* const handle = target.getHandle();
            for (const auto* sql : {"PRAGMA locking_mode = EXCLUSIVE", "PRAGMA journal_mode = OFF",
                                    "PRAGMA synchronous = OFF", "BEGIN"}) {
                Statement(handle, sql).run();
            }
            const auto looseTrees = source.looseTrees();
            for (const auto& table : source.tables()) {
                TableSalvage(source.handle(), handle, table, looseTrees, report, ticker).run();
            }
            takeIdentity(source.handle(), handle, schema, lock.record());
            ticker.rethrow(); // what was taken for damage
            for (const auto* sql :
                 {"COMMIT", "PRAGMA locking_mode = NORMAL", "PRAGMA journal_mode = WAL"}) {
                Statement(handle, sql).run();
            }
            // Before it takes the place: the next start finds a sound store and removes them.
            if (!report.losses.empty() || report.mayMissMore) {
                report.formerStores = keepFormerStores(file.path(), schema);
            }
        },
        report.kept);
    base::Logger(log, "Store")
        .warning("Saved " + std::to_string(report.saved) +
                 " records from a damaged store, which is kept as " +
                 report.kept.filename().string());
    return report;
}

} // namespace

SalvageReport salvageStore(const std::filesystem::path& store, const Schema& schema,
                           std::chrono::milliseconds patience, base::LogSink& log,
                           const SalvageWatch& watch) {
    Ticker ticker(watch);
    try {
        return salvage(StoreFile(store), schema, patience, log, ticker);
    } catch (const StoreError&) {
        ticker.rethrow(); // for which SQLite failed
        throw;
    }
}

} // namespace korvex::store
