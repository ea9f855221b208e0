#pragma once

#include "base/Instant.h"
#include "base/Log.h"
#include "storage/RepairReport.h"
#include "storage/Work.h"
#include "store/salvage/StoreSalvage.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvex::storage {

/// What was wrong with a store, and what became of it.
struct StoreRepairReport {
    /// Present where the store was damaged and a new one took its place.
    std::optional<store::SalvageReport> salvage;
    /// For each of its losses the name of the board that the lost ones stood on; empty where that
    /// is not known.
    std::vector<std::string> boardNames;
    RepairReport metadata;
    /// Boards that another took the place of: the preferences are to name that one.
    std::vector<std::pair<base::Uuid, base::Uuid>> mergedBoards;
    /// What was noticed of the store and cannot be repaired, in full sentences.
    std::vector<std::string> notices;

    bool wasSound() const { return !salvage && metadata.isEmpty() && notices.empty(); }
};

struct StoreRepairRequest {
    std::filesystem::path storeFile;
    /// The store of older programs, where there may be one.
    std::optional<std::filesystem::path> legacyFile = std::nullopt;
    base::Instant now;
};

/// Reads the whole store; saves what can be read of a damaged one, then repairs its metadata. Where
/// there is none yet, the store of older programs becomes it first, as far as that can be read. No
/// container of the store may be open in this process. Any thread; blocks. Can be cancelled until
/// the new store takes the damaged one's place, or begins to take over an older one. Throws
/// StoreError, SharedStoreError `incompleteStore`, LegacyStoreError and Cancelled.
StoreRepairReport repairStore(const StoreRepairRequest& request, base::LogSink& log, Work& work);

} // namespace korvex::storage
