#include "storage/StoreRepair.h"

#include "model/Board.h"
#include "model/Entry.h"
#include "storage/DataIntegrityService.h"
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

bool isDamaged(const std::filesystem::path& file, base::LogSink& log, Work& work) {
    try {
        const auto container = open(file, log);
        {
            store::ModelContext context(*container);
            work.begin(Stage::checking,
                       context.count<model::Board>() + context.count<model::Entry>());
        }
        return container->check([&](std::size_t records) { work.advance(records); }).isDamaged;
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::damaged) {
            throw;
        }
        return true;
    }
}

store::SalvageReport salvage(const std::filesystem::path& file, base::LogSink& log, Work& work) {
    return store::salvageStore(file, SharedModelContainer::schema(), kPatience, log,
                               [&](std::size_t done, std::size_t of) {
                                   if (done == 0) {
                                       work.begin(Stage::writing, of);
                                   } else {
                                       work.advance(1);
                                   }
                               });
}

std::vector<std::string> boardNames(const store::SalvageReport& salvage,
                                    store::ModelContext& context) {
    std::vector<std::string> names;
    for (const auto& loss : salvage.losses) {
        const auto* board = loss.owner ? context.find<model::Board>(*loss.owner) : nullptr;
        names.push_back(board ? board->name() : std::string());
    }
    return names;
}

} // namespace

StoreRepairReport repairStore(const std::filesystem::path& storeFile, base::Instant now,
                              base::LogSink& log, Work& work) {
    StoreRepairReport report;
    work.begin(Stage::checking);
    if (isDamaged(storeFile, log, work)) {
        report.salvage = salvage(storeFile, log, work);
    }
    work.beginForGood(Stage::replacing);
    const auto container = open(storeFile, log);
    store::ModelContext context(*container);
    if (report.salvage) {
        report.boardNames = boardNames(*report.salvage, context);
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
