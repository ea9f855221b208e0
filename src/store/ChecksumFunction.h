#pragma once

#include "store/Schema.h"

#include <sqlite3.h>

#include <string>
#include <string_view>
#include <vector>

namespace korvex::store {

/// Gives the SQL of a connection a function of this name: the checksum of a row of the record type
/// `type`, from the values of these fields in their order. None of external bytes. Throws
/// StoreError.
void addChecksumFunction(sqlite3* database, const std::string& name, std::string_view type,
                         const std::vector<StoredField>& fields);

} // namespace korvex::store
