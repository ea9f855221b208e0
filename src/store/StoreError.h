#pragma once

#include "base/Error.h"

namespace korvex::store {

/// Why a store could not be opened, read or written.
enum class StoreErrorCase {
    missing,             ///< the file is not there, and creating it was not asked for
    incomplete,          ///< the file is gone while its companions say that it held data
    notAStore,           ///< empty, truncated, or no store of this system
    symbolicLink,        ///< the journal would stand beside what it leads to
    newerVersion,        ///< written by a newer version of the schema
    olderVersion,        ///< no migration leads from there to the current schema
    needsUpgrade,        ///< of an older version, and not to be upgraded by who opened it
    upgradeNeedsWriting, ///< of an older version, where nothing can be written
    noFolder,            ///< the folder is not there and cannot be made
    unreadable,          ///< the folder or file may not be read
    readOnly,            ///< a save on a store that may only be read
    busy,                ///< another program held the write lock for too long
    damaged,             ///< SQLite found the file malformed
    nothingReadable,     ///< a salvage found nothing of a store
    full,                ///< no space left
    inputOutput,         ///< the disk failed
    conflict,            ///< a record to save was deleted by another program
    changesMissing,      ///< changes that were saved are no longer in the journal
    invalidRecord,       ///< two records with one identifier
    other,
};

class StoreError final : public base::Error {
public:
    /// `detail`: what the system said, in parentheses for the user and for the log.
    explicit StoreError(StoreErrorCase which, const std::string& detail = {});
    /// `words`: SQLite's own, for the log; the user reads them only where ours say no more than
    /// that it failed.
    static StoreError ofSqlite(StoreErrorCase which, const std::string& words);

    StoreErrorCase which() const noexcept { return m_which; }
    /// For the log.
    const char* what() const noexcept override { return m_logged.c_str(); }

private:
    StoreErrorCase m_which;
    std::string m_logged;
};

/// Whether what was read is damaged. Any other failure says nothing about it.
bool isDamage(const StoreError& error);

/// Throws what a failed call of the system means to a store: `full` or `inputOutput`. `what`: what
/// failed so, where the case does not say it.
[[noreturn]] void throwSystemError(int error, const std::string& what = {});

} // namespace korvex::store
