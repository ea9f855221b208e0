#include "storage/StoreRepair.h"

#include "model/Board.h"
#include "model/Entry.h"
#include "storage/DataIntegrityService.h"
#include "storage/SalvageSentences.h"
#include "storage/SharedModelContainer.h"
#include "store/ModelContext.h"
#include "store/StoreError.h"

namespace korvex::storage {

namespace {

constexpr std::chrono::seconds kPatience{10};

std::unique_ptr<store::ModelContainer> open(const std::filesystem::path& file, base::LogSink& log) {
    auto container =
        SharedModelContainer::openExisting(file, store::ModelConfiguration::Older::upgrade, log);
    if (!container->allowsSave()) {
        throw store::StoreError(store::StoreErrorCase::readOnly);
    }
    return container;
}

/// What the first opening says of a store.
struct Found {
    bool isDamaged = false;
    bool wasUpgraded = false;
    std::vector<std::string> notices;
};

void look(const std::filesystem::path& file, base::LogSink& log, Work& work, Found& found) {
    try {
        const auto container = open(file, log);
        found.wasUpgraded = container->wasUpgraded();
        found.notices = container->notices();
        {
            store::ModelContext context(*container);
            work.begin(Stage::checking,
                       context.count<model::Board>() + context.count<model::Entry>());
        }
        found.isDamaged =
            container->check([&](std::size_t records) { work.advance(records); }).isDamaged;
    } catch (const store::StoreError& error) {
        if (!store::isDamage(error)) {
            throw;
        }
        found.isDamaged = true;
    }
}

store::SalvageReport salvage(const std::filesystem::path& file, base::LogSink& log, Work& work) {
    return store::salvageStore(file, SharedModelContainer::schema(), kPatience, log,
                               {.progress =
                                    [&](std::size_t done, std::size_t of) {
                                        if (done == 0) {
                                            work.begin(Stage::writing, of);
                                        } else {
                                            work.advance(1);
                                        }
                                    },
                                .tick = [&] { work.checkCancellation(); }});
}

} // namespace

StoreRepairReport repairStore(const std::filesystem::path& storeFile, base::Instant now,
                              base::LogSink& log, Work& work) {
    StoreRepairReport report;
    work.begin(Stage::checking);
    Found found;
    try {
        look(storeFile, log, work, found);
        if (found.isDamaged) {
            report.salvage = salvage(storeFile, log, work);
        }
    } catch (const Cancelled&) {
        if (!found.wasUpgraded) {
            throw;
        }
        throw Cancelled("Cancelled. The store was brought to the current version of Korvex; "
                        "nothing else was changed.");
    }
    // Whoever noticed it first: it is gone once the store is adopted.
    report.notices = std::move(found.notices);
    if (report.notices.empty() && report.salvage) {
        report.notices = report.salvage->notices;
    }
    work.beginForGood(Stage::replacing);
    const auto container = open(storeFile, log);
    store::ModelContext context(*container);
    if (report.salvage) {
        report.boardNames = boardNamesOf(*report.salvage, context);
    }
    report.metadata =
        DataIntegrityService(context, log)
            .repair({.now = now, .onMergedBoard = [&](const auto& from, const auto& to) {
                         report.mergedBoards.emplace_back(from, to);
                     }});
    container->adopt();
    return report;
}

} // namespace korvex::storage
