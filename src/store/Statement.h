#pragma once

#include "store/RecordType.h"
#include "store/Value.h"

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace korvex::store {

/// A prepared statement over SQLite's own interface, for the paths that touch every value of every
/// row: SQLiteCpp's columns copy a shared pointer for each value. Throws StoreError. Columns and
/// parameters count from 0. What is bound must live until the statement has run.
class Statement {
public:
    Statement(sqlite3* database, std::string_view sql);

    /// Makes the statement ready to run again; bindings stay.
    void reset() noexcept { sqlite3_reset(m_handle.get()); }
    /// True while there is a row; resets when there is none, or on failure.
    bool step();
    /// Runs to the end and resets.
    void run();
    /// How many rows the last run changed.
    int changes() const { return sqlite3_changes(sqlite3_db_handle(m_handle.get())); }

    void bind(int index, std::int64_t value) { check(sqlite3_bind_int64(raw(), index + 1, value)); }
    void bind(int index, double value) { check(sqlite3_bind_double(raw(), index + 1, value)); }
    void bind(int index, std::string_view text) {
        // A null pointer would bind NULL where an empty text is meant.
        check(sqlite3_bind_text64(raw(), index + 1, text.data() ? text.data() : "", text.size(),
                                  SQLITE_STATIC, SQLITE_UTF8));
    }
    void bind(int index, std::span<const std::uint8_t> bytes) {
        check(bytes.empty() ? sqlite3_bind_zeroblob(raw(), index + 1, 0)
                            : sqlite3_bind_blob64(raw(), index + 1, bytes.data(), bytes.size(),
                                                  SQLITE_STATIC));
    }
    void bind(int index, const base::Uuid& id) {
        bind(index, std::span<const std::uint8_t>(id.bytes));
    }
    void bind(int index, base::Uuid&& temporary) = delete;
    void bindAbsent(int index) { check(sqlite3_bind_null(raw(), index + 1)); }
    /// Copies the value: it need not live on.
    void bindValue(int index, const Value& value);

    /// A column of another statement's row, copied as it stands.
    void bindColumn(int index, const Statement& row, int column) {
        check(sqlite3_bind_value(raw(), index + 1, sqlite3_column_value(row.raw(), column)));
    }

    /// SQLITE_INTEGER and its like: what stands in the column, whatever it should be.
    int storageClass(int column) const { return sqlite3_column_type(raw(), column); }
    bool isAbsent(int column) const { return sqlite3_column_type(raw(), column) == SQLITE_NULL; }
    std::int64_t integer(int column) const { return sqlite3_column_int64(raw(), column); }
    double real(int column) const { return sqlite3_column_double(raw(), column); }
    /// Whether an identifier stands in the column.
    bool isIdentifier(int column) const {
        return storageClass(column) == SQLITE_BLOB && bytes(column).size() == sizeof(base::Uuid);
    }
    /// Valid until the next step.
    std::string_view text(int column) const;
    std::span<const std::uint8_t> bytes(int column) const;
    /// A column as a field of that kind.
    Value value(int column, FieldKind kind) const;
    /// A column that is no identifier reads as the nil identifier.
    base::Uuid uuid(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* handle) const noexcept { sqlite3_finalize(handle); }
    };

    sqlite3_stmt* raw() const { return m_handle.get(); }
    void check(int code) const;

    std::unique_ptr<sqlite3_stmt, Finalize> m_handle;
};

/// What a pragma says that is a number. Throws StoreError.
std::int64_t pragmaNumber(sqlite3* database, std::string_view name);

/// The StoreError for a result code of SQLite, with the database's own message.
[[noreturn]] void throwSqliteError(sqlite3* database, int code);

} // namespace korvex::store
