#pragma once

#include "store/OlderTable.h"

#include <sqlite3.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace korvex::store {

/// The checksums that the rows of some tables will have in the current version, read from a
/// connection by a thread that keeps ahead of whoever rewrites the rows: that takes as long as the
/// rewriting. A row that was not sound gets a checksum that it will not have. The connection
/// belongs to the thread as long as this lives.
class ChecksumsAhead {
public:
    /// `tables` must outlive this.
    ChecksumsAhead(sqlite3* database, const std::vector<OlderTable>& tables);
    ~ChecksumsAhead();
    ChecksumsAhead(const ChecksumsAhead&) = delete;
    ChecksumsAhead& operator=(const ChecksumsAhead&) = delete;

    /// Of the next row, table by table in the order of rowids, which must be this one. Waits for
    /// it. Throws StoreError, also where the table cannot be read.
    std::int64_t next(std::int64_t rowid);
    /// How many rows were not sound, of those that were asked for.
    std::int64_t alteredCount() const { return m_alteredCount; }

private:
    struct Row {
        std::int64_t rowid;
        std::int64_t checksum;
        bool isSound;
    };
    using Batch = std::vector<Row>;

    void read(const std::stop_token& stop) noexcept;
    void read(const OlderTable& table, Batch& batch, const std::stop_token& stop);
    void hand(Batch batch, const std::stop_token& stop);

    sqlite3* m_database;
    const std::vector<OlderTable>& m_tables;
    Batch m_batch;
    std::size_t m_at = 0;
    std::int64_t m_alteredCount = 0;

    std::mutex m_mutex;
    std::condition_variable m_arrived;
    /// There is room for one more.
    std::condition_variable_any m_taken;
    std::deque<Batch> m_batches;
    bool m_hasEnded = false;
    std::exception_ptr m_failure;
    std::jthread m_thread;
};

} // namespace korvex::store
