#pragma once

#include "store/Schema.h"

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::store {

/// The table of a record type in a store of some version, and how its rows read as those of the
/// current one.
struct OlderTable {
    const RecordType* type;
    /// As that version has them, in declared order.
    std::vector<StoredField> fields;
    /// For each field of `type` the value that it has: SQL over `fields`, each written as {name}.
    /// Empty for external bytes, which stay where they are.
    std::vector<std::string> values;

    /// Whether that version has a field of this name.
    bool has(std::string_view field) const;
    /// The fields that stand in the row, and their kinds.
    std::vector<StoredField> rowFields() const;
};

/// One for each type of the schema; of the current version too. Throws StoreError `olderVersion`
/// where the schema knows no way on from `version`.
std::vector<OlderTable> olderTables(const Schema& schema, std::int32_t version);

/// What the columns of a table are called; none where there is no such table. Not asked for by a
/// SELECT: a name in quotes that is no column's is a text to SQLite. Throws StoreError.
std::set<std::string, std::less<>> columnsOf(sqlite3* database, std::string_view table);

/// Whether the database has these tables, and those of every store, with all of the columns that
/// this system reads. Throws StoreError.
bool hasTables(sqlite3* database, const std::vector<OlderTable>& tables);
/// The same of any version that the schema can read or upgrade.
bool hasTablesOfAnyVersion(sqlite3* database, const Schema& schema);

/// The function of SQL that gives the values of a row of the current version their checksum.
inline constexpr const char* kNewChecksum = "newChecksum";

/// How SQL reads the rows of such a table. Gives the connection the functions that it takes.
struct RowReading {
    RowReading(sqlite3* database, const OlderTable& table);

    /// The fields of the current version that stand in the row.
    std::vector<StoredField> fields;
    /// Their values, separated by commas.
    std::string values;
    /// Whether the row is what was saved last.
    std::string isSound;
};

/// What a table holds.
struct RowCount {
    std::int64_t rows = 0;
    /// Those that are not what was saved last.
    std::int64_t altered = 0;

    bool operator==(const RowCount&) const = default;
};

/// One of so many parts of each table, of about as many rows each.
struct TablePart {
    std::int64_t index = 0;
    std::int64_t count = 1;
};

/// Reads every row of a store of any version, or of a part of it, and compares it with its
/// checksum; one count for each type of the schema. Throws StoreError, what `StoreFile::version`
/// throws too.
std::vector<RowCount> countRows(sqlite3* database, const Schema& schema,
                                const TablePart& part = {});

/// The expression with each {name} replaced by what `column` says.
std::string resolved(std::string_view expression,
                     const std::function<std::string(std::string_view)>& column);

} // namespace korvex::store
