#pragma once

#include "base/Log.h"
#include "base/Uuid.h"
#include "store/Schema.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvex::store {

/// What could be saved from a damaged store, and what could not.
struct SalvageReport {
    struct Loss {
        const RecordType* type = nullptr;
        /// To which record the lost ones belonged, as far as that is known.
        std::optional<base::Uuid> owner;
        std::size_t missing = 0;
        /// They differ from what was saved last, and are kept as they can be read; those whose
        /// identifier cannot be, or is another one's, under a new one.
        std::size_t altered = 0;
        /// Their external bytes cannot be read, at most these.
        std::size_t withoutBytes = 0;
    };

    std::size_t saved = 0;
    std::vector<Loss> losses;
    /// So much is damaged that nobody knows what else there was.
    bool mayMissMore = false;
    /// The damaged store.
    std::filesystem::path kept;
    /// Where something is lost: the stores of before an upgrade, which may still hold it.
    std::vector<std::filesystem::path> formerStores;
    /// What else the user should know of it, in full sentences.
    std::vector<std::string> notices;
};

/// Told for each record that is read how many of its type were read before, and how many there are.
using SalvageProgress = std::function<void(std::size_t done, std::size_t of)>;

/// Reads what can be read of a store, row by row, into a new one of the schema's version, which
/// takes its place when it is on the disk. The damaged file stays beside it under the name
/// "Primary.store.damaged-…". The store may be of an older version. No connection may be open in
/// this process; waits `patience` for other programs to close theirs. Blocks, some microseconds for
/// each row; any thread. What `progress` throws ends the work. Throws StoreError. After a failure
/// the store is as it was, but for its journal, which may have been moved into the file.
SalvageReport salvageStore(const std::filesystem::path& store, const Schema& schema,
                           std::chrono::milliseconds patience, base::LogSink& log,
                           const SalvageProgress& progress = {});

} // namespace korvex::store
