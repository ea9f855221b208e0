#include "store/ChecksumsAhead.h"

#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <system_error>

namespace korvex::store {

namespace {

constexpr std::size_t kBatch = 1024;

/// "rowid, checksum, whether the row is sound" of every row.
std::string selectRows(sqlite3* database, const OlderTable& table) {
    const RowReading reading(database, table);
    return "SELECT rowid, " + std::string(kNewChecksum) + "(" + reading.values + "), " +
           reading.isSound + " FROM " + tableSql::quoted(table.type->name) +
           " NOT INDEXED ORDER BY rowid";
}

} // namespace

ChecksumsAhead::ChecksumsAhead(sqlite3* database, const OlderTable& table) : m_database(database) {
    const auto sql = selectRows(database, table);
    try {
        m_thread = std::jthread([this, sql](const std::stop_token& stop) { read(sql, stop); });
    } catch (const std::system_error&) {
        read(sql, {}); // no thread to be had: all of them first
    }
}

ChecksumsAhead::~ChecksumsAhead() = default;

void ChecksumsAhead::read(const std::string& sql, const std::stop_token& stop) noexcept {
    try {
        Statement rows(m_database, sql);
        Batch batch;
        while (!stop.stop_requested() && rows.step()) {
            const auto isSound = rows.integer(2) != 0;
            m_alteredCount += isSound ? 0 : 1;
            batch.push_back({rows.integer(0), isSound ? rows.integer(1) : ~rows.integer(1)});
            if (batch.size() == kBatch) {
                hand(std::exchange(batch, {}));
            }
        }
        hand(std::move(batch));
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

void ChecksumsAhead::hand(Batch batch) {
    {
        const std::lock_guard lock(m_mutex);
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
        } else if (m_failure) {
            std::rethrow_exception(m_failure);
        }
        m_at = 0;
    }
    if (m_at == m_batch.size() || m_batch[m_at].rowid != rowid) {
        throw StoreError(StoreErrorCase::damaged, "rows differ from their copy");
    }
    return m_batch[m_at++].checksum;
}

std::size_t ChecksumsAhead::alteredCount() {
    if (m_thread.joinable()) {
        m_thread.join();
    }
    return m_alteredCount;
}

} // namespace korvex::store
