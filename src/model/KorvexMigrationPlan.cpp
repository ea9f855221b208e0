#include "model/KorvexMigrationPlan.h"

#include <array>

namespace korvex::model {

namespace {

using store::FieldChange;
using store::FieldKind;
using store::StoredField;

// A board's list of its entries, which was called otherwise once, has no column: it is the other
// side of the entries' reference.
constexpr std::array kBoardV10{
    StoredField{"id", FieldKind::uuid},           StoredField{"name", FieldKind::text},
    StoredField{"createdAt", FieldKind::date},    StoredField{"updatedAt", FieldKind::date},
    StoredField{"sortOrder", FieldKind::integer}, StoredField{"isSystem", FieldKind::boolean},
};

constexpr std::array kEntryV10{
    StoredField{"id", FieldKind::uuid},
    StoredField{"type", FieldKind::text},
    StoredField{"content", FieldKind::text},
    StoredField{"richTextData", FieldKind::optionalBytes},
    StoredField{"createdAt", FieldKind::date},
    StoredField{"updatedAt", FieldKind::date},
    StoredField{"sortOrder", FieldKind::integer},
    StoredField{"isCompleted", FieldKind::boolean},
    StoredField{"completedAt", FieldKind::optionalDate},
    StoredField{"board", FieldKind::reference},
};

constexpr std::array kTypesV10{
    store::StoredType{"Board", kBoardV10},
    store::StoredType{"Entry", kEntryV10},
};

constexpr FieldChange added(std::string_view type, std::string_view field, FieldKind kind) {
    return {.type = type, .kind = FieldChange::Kind::added, .field = {field, kind}};
}

constexpr FieldChange removed(std::string_view type, std::string_view field, FieldKind kind) {
    return {.type = type, .kind = FieldChange::Kind::removed, .field = {field, kind}};
}

// Both types stand side by side in the bridge, so that one can be made of the other.
constexpr std::array kToBridge{added("Entry", "typeRawValue", FieldKind::text)};
constexpr std::array kTypeOfEntry{store::FieldAssignment{
    "Entry", "typeRawValue", "CASE {type} WHEN 'todo' THEN 'todo' ELSE 'text' END"}};

constexpr std::array kToV11{removed("Entry", "type", FieldKind::text),
                            added("Board", "systemIdentifier", FieldKind::optionalText),
                            added("Board", "mergedIntoBoardID", FieldKind::optionalUuid)};
constexpr std::array kIdentifierOfSystemBoard{store::FieldAssignment{
    "Board", "systemIdentifier",
    "CASE WHEN {isSystem} THEN CASE {name} WHEN 'Today' THEN 'today' ELSE 'inbox' END "
    "ELSE {systemIdentifier} END"}};

constexpr std::array kToV12{added("Entry", "dueDay", FieldKind::optionalInteger),
                            added("Entry", "dueDate", FieldKind::optionalDate),
                            added("Entry", "reminderDate", FieldKind::optionalDate)};
constexpr std::array kToV13{added("Entry", "attachmentData", FieldKind::externalBytes)};
constexpr std::array kToV14{added("Board", "icon", FieldKind::optionalText)};
constexpr std::array kToV15{added("Board", "iconColor", FieldKind::optionalText)};
constexpr std::array kToV16{added("Board", "isArchived", FieldKind::boolean)};
constexpr std::array kToV17{added("Entry", "dueStartDate", FieldKind::optionalDate)};

constexpr std::array kStages{
    store::MigrationStage{.to = 105, .changes = kToBridge, .assignments = kTypeOfEntry},
    store::MigrationStage{.to = 110, .changes = kToV11, .assignments = kIdentifierOfSystemBoard},
    store::MigrationStage{.to = 120, .changes = kToV12},
    store::MigrationStage{.to = 130, .changes = kToV13},
    store::MigrationStage{.to = 140, .changes = kToV14},
    store::MigrationStage{.to = 150, .changes = kToV15},
    store::MigrationStage{.to = 160, .changes = kToV16},
    store::MigrationStage{.to = 170, .changes = kToV17},
};

} // namespace

const store::MigrationPlan& korvexMigrationPlan() {
    static constexpr store::MigrationPlan plan{
        .oldest = 100, .types = kTypesV10, .stages = kStages};
    return plan;
}

} // namespace korvex::model
