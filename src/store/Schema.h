#pragma once

#include "store/Migration.h"
#include "store/RecordType.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::store {

/// One version of the stored schema. `number` is what the store file carries; it grows with every
/// version.
struct SchemaVersion {
    std::string_view name;
    std::int32_t number;
};

/// The current schema: its version and the record types that this build reads and writes.
struct Schema {
    SchemaVersion version;
    /// Every version that ever was, oldest first, the current one last.
    std::span<const SchemaVersion> history;
    /// Owners before the records they own.
    std::span<const RecordType* const> types;
    /// How a store of an older version becomes one of this; null where none does.
    const MigrationPlan* migrations = nullptr;
};

} // namespace korvex::store
