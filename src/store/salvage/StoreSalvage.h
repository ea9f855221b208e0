#pragma once

#include "base/Log.h"
#include "base/Uuid.h"
#include "store/Schema.h"
#include "store/salvage/Ticker.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
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

/// Reads what can be read of a store, row by row, into a new one of the schema's version, which
/// takes its place when it is on the disk. The damaged file stays beside it under the name
/// "Primary.store.damaged-…". The store may be of an older version, and all of it may stand in its
/// journal. No connection may be open in this process; waits `patience` for other programs to close
/// theirs. Blocks, some microseconds for each row; any thread. Throws StoreError, and what `watch`
/// throws. After a failure the store is as it was, but for its journal, which may have been moved
/// into the file.
SalvageReport salvageStore(const std::filesystem::path& store, const Schema& schema,
                           std::chrono::milliseconds patience, base::LogSink& log,
                           const SalvageWatch& watch = {});

} // namespace korvex::store
