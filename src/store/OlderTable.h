#pragma once

#include "store/Schema.h"

#include <cstdint>
#include <functional>
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

/// The expression with each {name} replaced by what `column` says.
std::string resolved(std::string_view expression,
                     const std::function<std::string(std::string_view)>& column);

} // namespace korvex::store
