#pragma once

#include "base/Error.h"

#include <string>

namespace korvex::storage {

/// Why the store of all programs is not ready for one of them.
enum class SharedStoreErrorCase {
    appGroupUnavailable,    ///< nobody knows a folder for it
    notPrepared,            ///< no program that may prepare it has been started yet
    incompleteStore,        ///< it was there and is gone
    cloudMigrationRequired, ///< it must be upgraded first, which this program may not
};
std::string descriptionOf(SharedStoreErrorCase which);
std::string domainOf(SharedStoreErrorCase which);
using SharedStoreError = base::TypedError<SharedStoreErrorCase>;

} // namespace korvex::storage
