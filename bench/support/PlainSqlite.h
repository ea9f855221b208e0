#pragma once

#include "base/Uuid.h"

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace korvex::bench {

/// SQLite's C interface as the simplest good program would use it: what the store is measured
/// against. Throws std::runtime_error.
class PlainDatabase {
public:
    explicit PlainDatabase(const std::filesystem::path& file) {
        check(sqlite3_open(file.c_str(), &m_handle));
    }
    ~PlainDatabase() { sqlite3_close(m_handle); }
    PlainDatabase(const PlainDatabase&) = delete;
    PlainDatabase& operator=(const PlainDatabase&) = delete;

    sqlite3* handle() const { return m_handle; }
    void run(const std::string& sql) const {
        check(sqlite3_exec(m_handle, sql.c_str(), nullptr, nullptr, nullptr));
    }
    /// As durable as the store's own saves.
    void makeDurable() const {
        run("PRAGMA journal_mode = WAL");
        run("PRAGMA synchronous = FULL");
    }
    void check(int code) const {
        if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW) {
            throw std::runtime_error(sqlite3_errmsg(m_handle));
        }
    }

private:
    sqlite3* m_handle = nullptr;
};

/// Parameters count from 1 and columns from 0, as SQLite's do. Texts must live until the step.
class PlainStatement {
public:
    PlainStatement(const PlainDatabase& database, const std::string& sql) : m_database(database) {
        sqlite3_stmt* handle = nullptr;
        database.check(sqlite3_prepare_v2(database.handle(), sql.c_str(), -1, &handle, nullptr));
        m_handle.reset(handle);
    }

    bool step() {
        const int code = sqlite3_step(m_handle.get());
        m_database.check(code);
        return code == SQLITE_ROW;
    }
    void run() {
        step();
        sqlite3_reset(m_handle.get());
    }

    void bind(int index, std::int64_t value) { sqlite3_bind_int64(m_handle.get(), index, value); }
    void bind(int index, double value) { sqlite3_bind_double(m_handle.get(), index, value); }
    void bind(int index, std::string_view text) {
        sqlite3_bind_text(m_handle.get(), index, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
    }
    void bind(int index, const base::Uuid& id) {
        sqlite3_bind_blob(m_handle.get(), index, id.bytes.data(), 16, SQLITE_STATIC);
    }

    bool isAbsent(int column) const {
        return sqlite3_column_type(m_handle.get(), column) == SQLITE_NULL;
    }
    std::int64_t integer(int column) const { return sqlite3_column_int64(m_handle.get(), column); }
    double real(int column) const { return sqlite3_column_double(m_handle.get(), column); }
    std::string_view text(int column) const { return {data(column), size(column)}; }
    base::Uuid uuid(int column) const {
        base::Uuid id;
        text(column).copy(reinterpret_cast<char*>(id.bytes.data()), id.bytes.size());
        return id;
    }

private:
    struct Finalize {
        void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
    };

    const char* data(int column) const {
        return static_cast<const char*>(sqlite3_column_blob(m_handle.get(), column));
    }
    std::size_t size(int column) const {
        return static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column));
    }

    const PlainDatabase& m_database;
    std::unique_ptr<sqlite3_stmt, Finalize> m_handle;
};

} // namespace korvex::bench
