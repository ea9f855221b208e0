#include "storage/StoreStart.h"

#include "base/Error.h"
#include "storage/CloudStorePreparation.h"
#include "storage/DataIntegrityService.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreMigration.h"
#include "storage/StoreMarkers.h"
#include "store/StoreError.h"
#include "store/StoreUpgrade.h"

#include <iterator>
#include <utility>

namespace korvex::storage {

namespace {

/// Changes with the rules of the repair: every store is held to the new ones once.
constexpr std::string_view kRepairRules = "repaired by rules 2\n";

constexpr const char* kCategory = "SharedStore";

bool needsRepair(const store::ModelContainer& container, const std::filesystem::path& file) {
    return container.wasUpgraded() || container.isFromElsewhere() ||
           !storeMarkers::says(file, storeMarkers::kPrepared, kRepairRules);
}

/// Whether the store is as it should be now.
bool repair(StartedStore& store, const StoreStart::Request& request, base::LogSink& log) {
    try {
        // Until it is done: what else says that it is needed may be gone at the next start.
        if (!storeMarkers::says(request.storeFile, storeMarkers::kPrepared, {})) {
            storeMarkers::set(request.storeFile, storeMarkers::kPrepared);
        }
        const auto report =
            DataIntegrityService(*store.context, log)
                .repair({.now = request.now,
                         .onMergedBoard = [&](const base::Uuid& from, const base::Uuid& to) {
                             store.mergedBoards.emplace_back(from, to);
                         }});
        if (report.damaged > 0) {
            store.notices.push_back(
                store::StoreError(store::StoreErrorCase::damaged,
                                  std::to_string(report.damaged) + " without an identifier")
                    .errorDescription());
            return false;
        }
        if (report.repaired.contains(RepairKind::unreadableTexts) ||
            report.repaired.contains(RepairKind::unreadableAttachments)) {
            store.notices.push_back(
                "Some formatted texts or attachments could not be read any more. What is left of "
                "them was kept beside the store, in files whose names begin with " +
                request.storeFile.filename().string() + ".unreadable.");
        }
        storeMarkers::set(request.storeFile, storeMarkers::kPrepared, kRepairRules);
        store.container->adopt();
        return true;
    } catch (const base::Error& error) {
        base::Logger(log, kCategory).warning(error.errorDescription());
        return false;
    }
}

/// Once the store that was made of them has proven that all of it can be read.
void removeFormerStores(const store::ModelContainer& container, const std::filesystem::path& file,
                        base::LogSink& log) {
    if (!store::hasFormerStores(file, SharedModelContainer::schema())) {
        return;
    }
    const base::Logger logger(log, kCategory);
    try {
        if (container.check().isDamaged) {
            logger.warning("The store is damaged; the former one is kept");
            return;
        }
    } catch (const base::Error& error) {
        logger.warning(error.errorDescription());
        return;
    }
    store::removeFormerStores(file, SharedModelContainer::schema());
}

} // namespace

StartedStore StoreStart::open(const Request& request, base::LogSink& log) {
    StartedStore store;
    store.notices =
        SharedStoreMigration(log).prepare(request.legacyFile, request.storeFile.parent_path());
    auto wasUpgraded = false;
    if (request.cloudKitIdentifier) {
        auto prepared = CloudStorePreparation(log).prepare(request.storeFile, request.now);
        store.mergedBoards = std::move(prepared.mergedBoards);
        std::move(prepared.notices.begin(), prepared.notices.end(),
                  std::back_inserter(store.notices));
        wasUpgraded = prepared.wasUpgraded;
    }
    store.container = SharedModelContainer::make(
        {.storeURL = request.storeFile, .cloudKitIdentifier = request.cloudKitIdentifier}, log);
    const auto& noticed = store.container->notices();
    store.notices.insert(store.notices.end(), noticed.begin(), noticed.end());
    store.context = std::make_unique<store::ModelContext>(*store.container);
    if (!store.container->allowsSave()) {
        return store;
    }
    wasUpgraded = wasUpgraded || store.container->wasUpgraded();
    const auto isSound =
        !needsRepair(*store.container, request.storeFile) || repair(store, request, log);
    // A store that this start has upgraded has yet to prove itself.
    if (isSound && !wasUpgraded) {
        removeFormerStores(*store.container, request.storeFile, log);
    }
    return store;
}

} // namespace korvex::storage
