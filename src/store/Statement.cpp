#include "store/Statement.h"

#include "store/StoreError.h"

#include <cstring>

namespace korvex::store {

namespace {

StoreErrorCase errorCase(int code) {
    switch (code & 0xff) {
    case SQLITE_FULL:
        return StoreErrorCase::full;
    case SQLITE_IOERR:
        return StoreErrorCase::inputOutput;
    case SQLITE_READONLY:
        return StoreErrorCase::readOnly;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return StoreErrorCase::busy;
    case SQLITE_CORRUPT:
        return StoreErrorCase::damaged;
    case SQLITE_NOTADB:
        return StoreErrorCase::notAStore;
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
        return StoreErrorCase::unreadable;
    case SQLITE_CONSTRAINT:
        return StoreErrorCase::invalidRecord;
    default:
        return StoreErrorCase::other;
    }
}

} // namespace

void throwSqliteError(sqlite3* database, int code) {
    std::string detail = database ? sqlite3_errmsg(database) : sqlite3_errstr(code);
    throw StoreError(errorCase(code), detail + ", " + std::to_string(code));
}

Statement::Statement(sqlite3* database, std::string_view sql) {
    sqlite3_stmt* handle = nullptr;
    const int code = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &handle, nullptr);
    m_handle.reset(handle);
    if (code != SQLITE_OK) {
        throwSqliteError(database, code);
    }
}

void Statement::check(int code) const {
    if (code != SQLITE_OK) {
        throwSqliteError(sqlite3_db_handle(raw()), code);
    }
}

bool Statement::step() {
    const int code = sqlite3_step(raw());
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code == SQLITE_DONE) {
        reset();
        return false;
    }
    sqlite3* database = sqlite3_db_handle(raw());
    const int extended = sqlite3_extended_errcode(database);
    const std::string detail = sqlite3_errmsg(database);
    reset();
    throw StoreError(errorCase(extended), detail + ", " + std::to_string(extended));
}

void Statement::run() {
    while (step()) {
    }
}

void Statement::bindValue(int index, const Value& value) {
    struct Binder {
        Statement& statement;
        int index;
        void operator()(std::monostate) const { statement.bindAbsent(index); }
        void operator()(std::int64_t number) const { statement.bind(index, number); }
        void operator()(double number) const { statement.bind(index, number); }
        void operator()(const std::string& text) const {
            statement.bind(index, std::string_view(text));
        }
        void operator()(const base::Bytes& bytes) const {
            statement.bind(index, std::span<const std::uint8_t>(bytes));
        }
        void operator()(const base::Uuid& id) const { statement.bind(index, id); }
    };
    std::visit(Binder{*this, index}, value);
}

std::string_view Statement::text(int column) const {
    // The text must be asked for before its size.
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(raw(), column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(raw(), column));
    return data ? std::string_view(data, size) : std::string_view();
}

std::span<const std::uint8_t> Statement::bytes(int column) const {
    const auto* data = static_cast<const std::uint8_t*>(sqlite3_column_blob(raw(), column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(raw(), column));
    return {data, data ? size : 0};
}

base::Uuid Statement::uuid(int column) const {
    base::Uuid id;
    const auto data = bytes(column);
    if (data.size() == id.bytes.size()) {
        std::memcpy(id.bytes.data(), data.data(), data.size());
    }
    return id;
}

} // namespace korvex::store
