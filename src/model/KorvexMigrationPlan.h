#pragma once

#include "store/Schema.h"

namespace korvex::model {

/// From `KorvexSchemaV10` over the bridge to `KorvexSchemaV17`.
const store::MigrationPlan& korvexMigrationPlan();

} // namespace korvex::model
