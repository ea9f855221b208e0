#pragma once

#include "store/StoreFile.h"
#include "store/StoreLock.h"

#include <sqlite3.h>

#include <cstdint>
#include <optional>
#include <string>

namespace korvex::store {

/// A store whose newest changes stood in a journal that was cut or removed outside this system.
struct MissingChanges {
    /// The revision that was the newest one.
    std::int64_t recorded = 0;
    /// For the user, in full sentences.
    std::string notice;
};

/// Which store this is, of whatever version, and its newest revision. Throws StoreError.
StoreLock::Record newestOf(sqlite3* database);

/// Whether a store that is at `found` has been further, by the record of its lock, which must be
/// held.
std::optional<MissingChanges> missingChanges(const StoreLock::Record& found, const StoreLock& lock);

/// The same; what is left of its journal, and would be written over by the next save, is kept
/// beside it then as "Primary.store.journal-before-<revision>". To be asked before anything moves
/// or removes the journal. Throws StoreError where it cannot be kept: whoever went on would write
/// over it.
std::optional<MissingChanges> findMissingChanges(const StoreLock::Record& found,
                                                 const StoreFile& file, const StoreLock& lock);

/// The same of a store that may be damaged and that this process does not have open: where it
/// opens and does not say how far it is, its journal is kept. What does not open at all keeps its
/// journal as it is; one that is too short is not opened. Throws StoreError where that fails.
std::optional<MissingChanges> findMissingChanges(const StoreFile& file, const StoreLock& lock);

} // namespace korvex::store
