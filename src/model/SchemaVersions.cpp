#include "model/SchemaVersions.h"

#include "model/Board.h"
#include "model/Entry.h"
#include "model/KorvexMigrationPlan.h"

#include <array>

namespace korvex::model {

namespace {

// The numbers leave room for a version between two.
constexpr std::array kVersions{
    store::SchemaVersion{"KorvexSchemaV10", 100}, store::SchemaVersion{"KorvexSchemaBridge", 105},
    store::SchemaVersion{"KorvexSchemaV11", 110}, store::SchemaVersion{"KorvexSchemaV12", 120},
    store::SchemaVersion{"KorvexSchemaV13", 130}, store::SchemaVersion{"KorvexSchemaV14", 140},
    store::SchemaVersion{"KorvexSchemaV15", 150}, store::SchemaVersion{"KorvexSchemaV16", 160},
    store::SchemaVersion{"KorvexSchemaV17", 170},
};

} // namespace

const store::Schema& currentSchema() {
    static const std::array types{&Board::recordType(), &Entry::recordType()};
    static const store::Schema schema{.version = kVersions.back(),
                                      .history = kVersions,
                                      .types = types,
                                      .migrations = &korvexMigrationPlan()};
    return schema;
}

} // namespace korvex::model
