#pragma once

#include "store/OlderTable.h"
#include "store/Statement.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace korvex::store {

enum class RowRead { row, end, damage };

/// The next row of a damaged store. What fails elsewhere, as in the new one, is not its damage.
RowRead readNext(Statement& rows);

/// Whether the bytes of a row that was read as "owner, checksum, bytes" are what was saved.
bool hasSoundBytes(const Statement& row);

/// How many rows of records the trees of a file may have, all together; where they have more, they
/// share pages. Throws StoreError.
std::int64_t mostRecords(sqlite3* database);

/// Hands over each row in turn. False when damage is in the way; what was met before has been told.
/// More rows than there is room for in the file are damage too, as of pages that name each other in
/// a circle.
bool readAll(sqlite3* database, const std::string& sql,
             const std::function<void(const Statement&)>& sink);

/// Whether every table of records can be read to its end, though not each row in it.
bool areComplete(sqlite3* database, const std::vector<OlderTable>& tables);

} // namespace korvex::store
