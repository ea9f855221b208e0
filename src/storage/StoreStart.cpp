#include "storage/StoreStart.h"

#include "base/Error.h"
#include "storage/CloudStorePreparation.h"
#include "storage/DataIntegrityService.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreMigration.h"
#include "storage/StoreMarkers.h"
#include "store/StoreUpgrade.h"

namespace korvex::storage {

namespace {

/// Changes with the rules of the repair: every store is held to the new ones once.
constexpr std::string_view kRepairRules = "repaired by rules 1\n";

bool needsRepair(const store::ModelContainer& container, const std::filesystem::path& file) {
    return container.wasUpgraded() || container.isFromElsewhere() ||
           !storeMarkers::says(file, storeMarkers::kPrepared, kRepairRules);
}

/// Whether the store is as it should be now.
bool repair(StartedStore& store, const StoreStart::Request& request, base::LogSink& log) {
    try {
        DataIntegrityService(*store.context, log)
            .repair({.now = request.now,
                     .onMergedBoard = [&](const base::Uuid& from, const base::Uuid& to) {
                         store.mergedBoards.emplace_back(from, to);
                     }});
        storeMarkers::set(request.storeFile, storeMarkers::kPrepared, kRepairRules);
        return true;
    } catch (const base::Error& error) {
        base::Logger(log, "SharedStore").warning(error.errorDescription());
        return false;
    }
}

} // namespace

StartedStore StoreStart::open(const Request& request, base::LogSink& log) {
    SharedStoreMigration(log).prepare(request.legacyFile, request.storeFile.parent_path());
    if (request.cloudKitIdentifier) {
        CloudStorePreparation(log).prepare(request.storeFile, request.now);
    }
    StartedStore store;
    store.container = SharedModelContainer::make(
        {.storeURL = request.storeFile, .cloudKitIdentifier = request.cloudKitIdentifier}, log);
    store.context = std::make_unique<store::ModelContext>(*store.container);
    if (!store.container->allowsSave()) {
        return store;
    }
    const auto isSound =
        !needsRepair(*store.container, request.storeFile) || repair(store, request, log);
    // A store that this start has upgraded has yet to prove itself.
    if (isSound && !store.container->wasUpgraded()) {
        store::removeFormerStores(request.storeFile, SharedModelContainer::schema());
    }
    return store;
}

} // namespace korvex::storage
