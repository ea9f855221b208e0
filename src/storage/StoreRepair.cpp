#include "storage/StoreRepair.h"

#include "model/Board.h"
#include "model/Entry.h"
#include "storage/DataIntegrityService.h"
#include "storage/SalvageSentences.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreMigration.h"
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

/// Of older programs, where they have left the only store; it was read, or saved, whole then.
bool takeOver(const StoreRepairRequest& request, base::LogSink& log, Work& work,
              StoreRepairReport& report) {
    std::error_code unknown;
    if (!request.legacyFile || std::filesystem::exists(request.storeFile, unknown) ||
        !SharedStoreMigration::isLeft(*request.legacyFile)) {
        return false;
    }
    work.beginForGood(Stage::replacing);
    auto taken =
        SharedStoreMigration(log).takeOver(*request.legacyFile, request.storeFile.parent_path());
    report.notices = std::move(taken.notices);
    report.salvage = std::move(taken.salvage);
    return !report.notices.empty();
}

/// What is there, into order.
void lookAndSalvage(const std::filesystem::path& storeFile, base::LogSink& log, Work& work,
                    StoreRepairReport& report) {
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
}

} // namespace

StoreRepairReport repairStore(const StoreRepairRequest& request, base::LogSink& log, Work& work) {
    StoreRepairReport report;
    work.begin(Stage::checking);
    if (!takeOver(request, log, work, report)) {
        lookAndSalvage(request.storeFile, log, work, report);
    }
    work.beginForGood(Stage::replacing);
    const auto container = open(request.storeFile, log);
    store::ModelContext context(*container);
    if (report.salvage) {
        report.boardNames = boardNamesOf(*report.salvage, context);
    }
    report.metadata =
        DataIntegrityService(context, log)
            .repair({.now = request.now, .onMergedBoard = [&](const auto& from, const auto& to) {
                         report.mergedBoards.emplace_back(from, to);
                     }});
    container->adopt();
    return report;
}

} // namespace korvex::storage
