#include "store/Statement.h"

#include "store/StoreError.h"

#include <cassert>
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
    throw StoreError::ofSqlite(errorCase(code), detail + ", " + std::to_string(code));
}

std::int64_t pragmaNumber(sqlite3* database, std::string_view name) {
    Statement statement(database, "PRAGMA " + std::string(name));
    std::int64_t number = 0;
    while (statement.step()) {
        number = statement.integer(0);
    }
    return number;
}

Statement::Statement(sqlite3* database, std::string_view sql) {
    sqlite3_stmt* handle = nullptr;
    const auto code = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
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
    const auto code = sqlite3_step(raw());
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code == SQLITE_DONE) {
        reset();
        return false;
    }
    auto* database = sqlite3_db_handle(raw());
    const auto extended = sqlite3_extended_errcode(database);
    const std::string detail = sqlite3_errmsg(database);
    reset();
    throw StoreError::ofSqlite(errorCase(extended), detail + ", " + std::to_string(extended));
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
            statement.check(sqlite3_bind_text64(statement.raw(), index + 1, text.data(),
                                                text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
        }
        void operator()(const base::Bytes& bytes) const {
            // A null pointer would bind NULL where no bytes are meant.
            const auto* data =
                bytes.empty() ? reinterpret_cast<const std::uint8_t*>("") : bytes.data();
            statement.check(sqlite3_bind_blob64(statement.raw(), index + 1, data, bytes.size(),
                                                SQLITE_TRANSIENT));
        }
        void operator()(const base::Uuid& id) const {
            statement.check(sqlite3_bind_blob64(statement.raw(), index + 1, id.bytes.data(),
                                                id.bytes.size(), SQLITE_TRANSIENT));
        }
    };
    std::visit(Binder{*this, index}, value);
}

std::string_view Statement::text(int column) const {
    // As bytes, which a store's texts are in UTF-8: asked for as a text, each is copied to get a
    // zero at its end. The text must be asked for before its size.
    const auto* data = static_cast<const char*>(sqlite3_column_blob(raw(), column));
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

Value Statement::value(int column, FieldKind kind) const {
    if (isAbsent(column)) {
        return {};
    }
    switch (kind) {
    case FieldKind::uuid:
    case FieldKind::optionalUuid:
    case FieldKind::reference:
        return uuid(column);
    case FieldKind::text:
    case FieldKind::optionalText:
        return std::string(text(column));
    case FieldKind::optionalBytes: {
        const auto data = bytes(column);
        return base::Bytes(data.begin(), data.end());
    }
    case FieldKind::integer:
    case FieldKind::optionalInteger:
        return integer(column);
    case FieldKind::boolean:
        return std::int64_t{integer(column) != 0 ? 1 : 0};
    case FieldKind::date:
    case FieldKind::optionalDate:
        return real(column);
    case FieldKind::externalBytes:
        break;
    }
    assert(false);
    return {};
}

} // namespace korvex::store
