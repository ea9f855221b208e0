#include "storage/StoreStart.h"

#include "base/Error.h"
#include "storage/CloudStorePreparation.h"
#include "storage/DataIntegrityService.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreMigration.h"
#include "storage/StoreAdvice.h"
#include "storage/StoreMarkers.h"
#include "storage/UnreadableContents.h"
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

/// Where the metadata of a damaged store were repaired, what is altered would pass for what was
/// meant, and be judged by it.
void leaveDamaged(StartedStore& store, const StoreStart::Request& request,
                  const base::Logger& log) {
    log.warning("The store is damaged: it is not repaired, and the former one is kept");
    store.notices.push_back(damageNotice(request.storeFile));
}

/// Whether the store is as it should be now.
bool repair(StartedStore& store, const StoreStart::Request& request, base::LogSink& log) {
    const base::Logger logger(log, kCategory);
    try {
        // Until it is done: what else says that it is needed may be gone at the next start.
        if (!storeMarkers::says(request.storeFile, storeMarkers::kPrepared, {})) {
            storeMarkers::set(request.storeFile, storeMarkers::kPrepared);
        }
        if (store.container->check().isDamaged) {
            leaveDamaged(store, request, logger);
            return false;
        }
        const auto report =
            DataIntegrityService(*store.context, log)
                .repair({.now = request.now,
                         .onMergedBoard = [&](const base::Uuid& from, const base::Uuid& to) {
                             store.mergedBoards.emplace_back(from, to);
                         }});
        if (report.damaged > 0) { // since it was checked
            leaveDamaged(store, request, logger);
            return false;
        }
        if (auto notice = noticeOnSetAside(report, request.storeFile)) {
            store.notices.push_back(*std::move(notice));
        }
        storeMarkers::set(request.storeFile, storeMarkers::kPrepared, kRepairRules);
        store.container->adopt();
        return true;
    } catch (const base::Error& error) {
        logger.warning(error.what());
        return false;
    }
}

/// Once the store that was made of them has proven that all of it can be read.
void removeFormerStores(StartedStore& store, const StoreStart::Request& request,
                        base::LogSink& log) {
    if (!store::hasFormerStores(request.storeFile, SharedModelContainer::schema())) {
        return;
    }
    const base::Logger logger(log, kCategory);
    try {
        if (store.container->check().isDamaged) {
            leaveDamaged(store, request, logger);
            return;
        }
    } catch (const base::Error& error) {
        logger.warning(error.what());
        return;
    }
    store::removeFormerStores(request.storeFile, SharedModelContainer::schema());
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
        removeFormerStores(store, request, log);
    }
    return store;
}

} // namespace korvex::storage
