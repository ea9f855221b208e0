#pragma once

#include "base/Error.h"

#include <string>

namespace korvex::storage {

/// Why a restore was refused for what lies beside the store.
enum class RestoreErrorCase {
    nothingToTakeBack,
    snapshotIsGone,
    notAsAsked,
    storeChanged, ///< while a restore was being taken back
    running,
    ofStore,
};
std::string descriptionOf(RestoreErrorCase which);
std::string domainOf(RestoreErrorCase which);
using RestoreError = base::TypedError<RestoreErrorCase>;

} // namespace korvex::storage
