#include "storage/StoreRepair.h"

#include "model/Board.h"
#include "storage/DataIntegrityService.h"
#include "storage/SharedModelContainer.h"
#include "store/ModelContext.h"
#include "store/StoreError.h"

namespace korvex::storage {

namespace {

constexpr std::chrono::seconds kPatience{10};

std::unique_ptr<store::ModelContainer> open(const std::filesystem::path& file, base::LogSink& log) {
    using Configuration = store::ModelConfiguration;
    auto container = store::ModelContainer::open(SharedModelContainer::schema(),
                                                 {.file = file,
                                                  .whenMissing = Configuration::Missing::refuse,
                                                  .whenOlder = Configuration::Older::upgrade},
                                                 log);
    if (!container->allowsSave()) {
        throw store::StoreError(store::StoreErrorCase::readOnly);
    }
    return container;
}

bool isDamaged(const std::filesystem::path& file, base::LogSink& log) {
    try {
        return open(file, log)->check().isDamaged;
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::damaged) {
            throw;
        }
        return true;
    }
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
    const auto needsSalvage = isDamaged(storeFile, log);
    work.checkCancellation();
    work.begin(Stage::replacing);
    if (needsSalvage) {
        report.salvage =
            store::salvageStore(storeFile, SharedModelContainer::schema(), kPatience, log);
    }
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
    return report;
}

} // namespace korvex::storage
