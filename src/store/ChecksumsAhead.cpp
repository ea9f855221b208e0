#include "store/ChecksumsAhead.h"

#include "store/ChecksumFunction.h"
#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <system_error>

namespace korvex::store {

namespace {

constexpr std::size_t kBatch = 1024;

/// "rowid, checksum" of every row, after the functions that it needs.
std::string prepared(sqlite3* database, const OlderTable& table) {
    std::vector<StoredField> newFields;
    std::string newValues;
    std::string storedValues;
    for (const auto index : tableSql::rowFields(*table.type)) {
        newFields.push_back({table.type->fields[index].name, table.type->fields[index].kind});
        newValues +=
            (newValues.empty() ? "" : ", ") + resolved(table.values[index], tableSql::quoted);
    }
    for (const auto& each : table.rowFields()) {
        storedValues += (storedValues.empty() ? "" : ", ") + tableSql::quoted(each.name);
    }
    addChecksumFunction(database, "storedChecksum", table.type->name, table.rowFields());
    addChecksumFunction(database, "newChecksum", table.type->name, newFields);
    return "SELECT rowid, CASE storedChecksum(" + storedValues +
           ") WHEN checksum THEN newChecksum(" + newValues + ") ELSE ~newChecksum(" + newValues +
           ") END FROM " + tableSql::quoted(table.type->name) + " NOT INDEXED ORDER BY rowid";
}

} // namespace

ChecksumsAhead::ChecksumsAhead(sqlite3* database, const OlderTable& table) : m_database(database) {
    const auto sql = prepared(database, table);
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
            batch.push_back({rows.integer(0), rows.integer(1)});
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

} // namespace korvex::store
