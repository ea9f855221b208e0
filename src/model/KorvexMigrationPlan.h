#pragma once

#include "store/Migration.h"

namespace korvex::model {

/// From `KorvexSchemaV10` over the bridge to `KorvexSchemaV17`.
const store::MigrationPlan& korvexMigrationPlan();

} // namespace korvex::model
