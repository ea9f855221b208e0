#include "storage/SharedStoreError.h"

namespace korvex::storage {

std::string descriptionOf(SharedStoreErrorCase which) {
    switch (which) {
    case SharedStoreErrorCase::appGroupUnavailable:
        return "The Korvex App Group is unavailable. Check signing and App Group entitlements.";
    case SharedStoreErrorCase::notPrepared:
        return "Open Korvex once to prepare the shared store.";
    case SharedStoreErrorCase::incompleteStore:
        return "The shared store is incomplete. Existing local data has been preserved.";
    case SharedStoreErrorCase::cloudMigrationRequired:
        return "Open Korvex to upgrade the shared store safely before using the widget.";
    }
    return {};
}

std::string domainOf(SharedStoreErrorCase) {
    return "Korvex.SharedStore";
}

} // namespace korvex::storage
