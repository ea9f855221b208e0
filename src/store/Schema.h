#pragma once

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

/// A field as an older version of the schema keeps it in its column.
struct StoredField {
    std::string_view name;
    FieldKind kind;
};

/// One record type in one version of the schema: its table and the fields in declared order.
struct StoredType {
    std::string_view name;
    std::span<const StoredField> fields;
};

/// What a stage does to one field. Nothing else is said of a stage that is lightweight.
struct FieldChange {
    enum class Kind { added, removed };

    /// The record type's name.
    std::string_view type;
    Kind kind;
    StoredField field;
};

/// A custom stage's work on one field: a function over rows, so that a store of any size is carried
/// over in one pass. `expression` is SQL over the fields of the version that the stage leads to,
/// each written as {name}; it must give a value of the field's kind for every row.
struct FieldAssignment {
    std::string_view type;
    std::string_view field;
    std::string_view expression;
};

/// The way from one version of the schema to the next: the changes first, then the assignments,
/// which see each other's former values. An added field is absent at first; where it cannot be, it
/// is 0, false or empty.
struct MigrationStage {
    /// The number of the version that it leads to.
    std::int32_t to;
    std::span<const FieldChange> changes = {};
    std::span<const FieldAssignment> assignments = {};
};

/// Every version that a store can be upgraded from: the oldest as it was, and the stages from there
/// to the current one, in order.
struct MigrationPlan {
    std::int32_t oldest;
    std::span<const StoredType> types;
    std::span<const MigrationStage> stages;
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
