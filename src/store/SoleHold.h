#pragma once

#include "base/FileDescriptor.h"
#include "store/StoreFile.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <chrono>
#include <filesystem>
#include <memory>

namespace korvex::store {

/// A connection that nobody else shares the store with while it lives, with the journal moved into
/// the file: only such a file may be replaced, since SQLite finds a journal by the file's name. The
/// write lock must be held all the time.
class SoleHold {
public:
    /// Waits that long for other connections to close. Throws StoreError: `busy` when that was not
    /// enough.
    SoleHold(const StoreFile& file, std::chrono::milliseconds patience);

    sqlite3* handle() const { return m_database->getHandle(); }
    /// Copies the file, which is all of the store, into a new one that is not synced. Once. Throws
    /// StoreError.
    void copyTo(const std::filesystem::path& copy);

private:
    /// False while another connection is open.
    bool tryToTake();

    StoreFile m_file;
    /// Closed after the database: to close any descriptor of its file gives up all locks on it.
    base::FileDescriptor m_source;
    std::unique_ptr<SQLite::Database> m_database;
};

} // namespace korvex::store
