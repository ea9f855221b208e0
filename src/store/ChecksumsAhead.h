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

/// The checksums that the rows of a table will have in the current version, read from a connection
/// by a thread that keeps ahead of whoever rewrites the rows: that takes as long as the rewriting.
/// A row that was not sound gets a checksum that it will not have. The connection belongs to the
/// thread as long as this lives.
class ChecksumsAhead {
public:
    ChecksumsAhead(sqlite3* database, const OlderTable& table);
    ~ChecksumsAhead();
    ChecksumsAhead(const ChecksumsAhead&) = delete;
    ChecksumsAhead& operator=(const ChecksumsAhead&) = delete;

    /// Of the next row in the order of rowids, which must be this one. Waits for it. Throws
    /// StoreError, also where the table cannot be read.
    std::int64_t next(std::int64_t rowid);
    /// How many rows were not sound. To be asked after the last row.
    std::size_t alteredCount();

private:
    struct Row {
        std::int64_t rowid;
        std::int64_t checksum;
    };
    using Batch = std::vector<Row>;

    void read(const std::string& sql, const std::stop_token& stop) noexcept;
    void hand(Batch batch);

    sqlite3* m_database;
    Batch m_batch;
    std::size_t m_at = 0;

    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<Batch> m_batches;
    bool m_hasEnded = false;
    /// The thread's, as long as it runs.
    std::size_t m_alteredCount = 0;
    std::exception_ptr m_failure;
    std::jthread m_thread;
};

} // namespace korvex::store
