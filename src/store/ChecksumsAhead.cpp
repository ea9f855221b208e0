#include "store/ChecksumsAhead.h"

#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <system_error>

namespace korvex::store {

namespace {

constexpr std::size_t kBatch = 1024;
/// So many wait at most to be taken: three mebibytes.
constexpr std::size_t kMostBatches = 128;

/// "rowid, checksum, whether the row is sound" of every row.
std::string selectRows(sqlite3* database, const OlderTable& table) {
    const RowReading reading(database, table);
    return "SELECT rowid, " + std::string(kNewChecksum) + "(" + reading.values + "), " +
           reading.isSound + " FROM " + tableSql::quoted(table.type->name) +
           " NOT INDEXED ORDER BY rowid";
}

} // namespace

ChecksumsAhead::ChecksumsAhead(sqlite3* database, const std::vector<OlderTable>& tables)
    : m_database(database), m_tables(tables) {
    try {
        m_thread = std::jthread([this](const std::stop_token& stop) { read(stop); });
    } catch (const std::system_error&) {
        read({}); // no thread to be had: all of them first
    }
}

ChecksumsAhead::~ChecksumsAhead() = default;

void ChecksumsAhead::read(const std::stop_token& stop) noexcept {
    try {
        Batch batch;
        for (const auto& table : m_tables) {
            read(table, batch, stop);
        }
        hand(std::move(batch), stop);
    } catch (...) {
        const std::lock_guard lock(m_mutex);
        m_failure = std::current_exception();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
    }
    m_arrived.notify_one();
}

void ChecksumsAhead::read(const OlderTable& table, Batch& batch, const std::stop_token& stop) {
    Statement rows(m_database, selectRows(m_database, table));
    while (!stop.stop_requested() && rows.step()) {
        const auto isSound = rows.integer(2) != 0;
        batch.push_back({.rowid = rows.integer(0),
                         .checksum = isSound ? rows.integer(1) : ~rows.integer(1),
                         .isSound = isSound});
        if (batch.size() == kBatch) {
            hand(std::exchange(batch, {}), stop);
        }
    }
}

void ChecksumsAhead::hand(Batch batch, const std::stop_token& stop) {
    {
        std::unique_lock lock(m_mutex);
        // Without a thread nobody takes them meanwhile.
        if (stop.stop_possible()) {
            m_taken.wait(lock, stop, [this] { return m_batches.size() < kMostBatches; });
        }
        m_batches.push_back(std::move(batch));
    }
    m_arrived.notify_one();
}

std::int64_t ChecksumsAhead::next(std::int64_t rowid) {
    if (m_at == m_batch.size()) {
        std::unique_lock lock(m_mutex);
        m_arrived.wait(lock, [this] { return !m_batches.empty() || m_hasEnded; });
        m_batch.clear();
        if (!m_batches.empty()) {
            m_batch = std::move(m_batches.front());
            m_batches.pop_front();
            m_taken.notify_one();
        } else if (m_failure) {
            std::rethrow_exception(m_failure);
        }
        m_at = 0;
    }
    if (m_at == m_batch.size() || m_batch[m_at].rowid != rowid) {
        throw StoreError(StoreErrorCase::damaged, "rows differ from their copy");
    }
    const auto& row = m_batch[m_at++];
    m_alteredCount += row.isSound ? 0 : 1;
    return row.checksum;
}

} // namespace korvex::store
