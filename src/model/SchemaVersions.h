#pragma once

#include "store/Schema.h"

#include <span>
#include <string_view>

namespace korvex::model {

/// The fields that one version of the schema stores of each record, by name, in declared order.
struct SchemaVersionFields {
    store::SchemaVersion version;
    std::span<const std::string_view> boardFields;
    std::span<const std::string_view> entryFields;
};

/// Every version of the schema, from `KorvexSchemaV10` to the current one.
std::span<const SchemaVersionFields> schemaHistory();

/// The schema of this build: `KorvexSchemaV17`.
const store::Schema& currentSchema();

} // namespace korvex::model
