#pragma once

#include "base/FileDescriptor.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace korvex::store {

/// A connection that nobody else shares the store with while it lives, with the journal moved into
/// the file: only such a file may be replaced, since SQLite finds a journal by the file's name. The
/// write lock must be held all the time. Programs that only show the store let go of it for that
/// (`SoleRequest`).
class SoleHold {
public:
    /// Waits that long for other connections to close. Throws StoreError: `busy`, with the names of
    /// those programs, when that was not enough.
    SoleHold(const StoreFile& file, std::chrono::milliseconds patience);

    sqlite3* handle() const { return m_database->getHandle(); }
    /// Copies the file, which is all of the store, into a new one that is not synced. Once. Throws
    /// StoreError.
    void copyTo(const std::filesystem::path& copy);

private:
    /// False while another connection is open.
    bool tryToTake();

    StoreFile m_file;
    SoleRequest m_request;
    /// Closed after the database: to close any descriptor of its file gives up all locks on it.
    base::FileDescriptor m_source;
    std::unique_ptr<SQLite::Database> m_database;
};

/// Which other programs have the store open, as far as the system tells: "it is open in
/// korvex-desktop, process 4711"; empty where it does not. Opens nothing of the store.
std::string holdersOf(const std::filesystem::path& store);

} // namespace korvex::store
