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
    Source(const StoreFile& file, const Schema& schema, std::chrono::milliseconds patience) {
        try {
            m_itself.emplace(file, patience);
            m_tables = olderTables(schema, StoreFile::version(handle(), schema));
            if (hasTables(handle(), m_tables) && areComplete(handle(), m_tables)) {
                return;
            }
        } catch (const StoreError& error) {
            if (!isDamage(error)) {
                throw;
            }
        }
        m_itself.reset();
        m_copy.emplace(file, schema, patience);
        m_tables = m_copy->tables();
    }

    sqlite3* handle() const { return m_itself ? m_itself->handle() : m_copy->handle(); }
    const std::vector<OlderTable>& tables() const { return m_tables; }
    LooseTrees looseTrees() const { return m_copy ? m_copy->looseTrees() : LooseTrees(); }
    bool mayLackTables() const { return m_copy && m_copy->mayLackTables(); }

private:
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

/// What makes the new store the same store to whoever knew the old one: its identifier, and a
/// revision that nobody has seen yet.
void takeIdentity(sqlite3* source, sqlite3* target, const Schema& schema,
                  const std::optional<StoreLock::Record>& known) {
    auto id = known ? known->storeID : base::Uuid();
    readAll(source, "SELECT storeID FROM StoreInfo",
            [&](const Statement& row) { id = row.isIdentifier(0) ? row.uuid(0) : id; });
    if (id != base::Uuid()) {
        Statement update(target, "UPDATE StoreInfo SET storeID = ?");
        update.bind(0, id);
        update.run();
    }
    // What is beyond is damage.
    const auto later = [](std::int64_t one, std::int64_t other) {
        return other <= kHighestRevision ? std::max(one, other) : one;
    };
    auto revision = known ? later(0, known->revision) : 0;
    readAll(source, "SELECT revision FROM ChangeLog",
            [&](const Statement& row) { revision = later(revision, row.integer(0)); });
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
    const auto missing = findMissingChanges(file, lock);
    const Source source(file, schema, patience);
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
                TableSalvage(source.handle(), handle, table, looseTrees, report, progress).run();
            }
            takeIdentity(source.handle(), handle, schema, lock.record());
            for (const auto* sql :
                 {"COMMIT", "PRAGMA locking_mode = NORMAL", "PRAGMA journal_mode = WAL"}) {
                Statement(handle, sql).run();
            }
            // Before it takes the place: the next start finds a sound store and removes them.
            if (!report.losses.empty() || report.mayMissMore) {
                report.formerStores = keepFormerStores(store, schema);
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
