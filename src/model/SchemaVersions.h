#pragma once

#include "store/Schema.h"

namespace korvex::model {

/// The schema of this build: `KorvexSchemaV17`.
const store::Schema& currentSchema();

} // namespace korvex::model
