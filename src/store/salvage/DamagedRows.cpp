#include "store/salvage/DamagedRows.h"

#include "base/Digest.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <algorithm>
#include <optional>

namespace korvex::store {

namespace {

/// What a row takes of a page at least.
constexpr std::int64_t kLeastRowBytes = 4;
/// The same of a record, with its identifier and its checksum.
constexpr std::int64_t kLeastRecordBytes = 32;
/// Short ones, as of the log of changes, and those of trees in use no more.
constexpr std::int64_t kOtherRows = 10'000;

std::int64_t bytesOf(sqlite3* database) {
    return pragmaNumber(database, "page_count") * pragmaNumber(database, "page_size");
}

} // namespace

RowRead readNext(Statement& rows) {
    try {
        return rows.step() ? RowRead::row : RowRead::end;
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
        return RowRead::damage;
    }
}

bool hasSoundBytes(const Statement& row) {
    return row.storageClass(2) == SQLITE_BLOB &&
           static_cast<std::int64_t>(base::checksum(row.bytes(2))) == row.integer(1);
}

std::int64_t mostRecords(sqlite3* database) {
    return bytesOf(database) / kLeastRecordBytes + kOtherRows;
}

bool readAll(sqlite3* database, const std::string& sql,
             const std::function<void(const Statement&)>& sink) {
    std::optional<Statement> rows;
    std::int64_t most = 0;
    try {
        most = bytesOf(database) / kLeastRowBytes;
        rows.emplace(database, sql);
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
        return false;
    }
    auto read = readNext(*rows);
    for (; read == RowRead::row && most > 0; --most) {
        sink(*rows);
        read = readNext(*rows);
    }
    return read == RowRead::end;
}

bool areComplete(sqlite3* database, const std::vector<OlderTable>& tables) {
    const auto isComplete = [&](const std::string& column, const std::string& name) {
        return readAll(database, "SELECT " + column + " FROM " + name + " NOT INDEXED",
                       [](const Statement&) {});
    };
    return std::all_of(tables.begin(), tables.end(), [&](const OlderTable& table) {
        const auto& fields = table.type->fields;
        return isComplete("rowid", tableSql::quoted(table.type->name)) &&
               std::all_of(fields.begin(), fields.end(), [&](const Field& field) {
                   return field.kind != FieldKind::externalBytes || !table.has(field.name) ||
                          isComplete("owner", tableSql::externalTable(*table.type, field));
               });
    });
}

} // namespace korvex::store
