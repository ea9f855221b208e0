#pragma once

#include "store/Schema.h"

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>

namespace korvex::store {

/// The files of one store and what can be told from them before and after SQLite opens them. None
/// of these functions opens the store file itself: closing any descriptor of it would drop the
/// locks that SQLite holds in this process.
class StoreFile {
public:
    /// What SQLite keeps in the header of our files: "KVX1".
    static constexpr std::int32_t kApplicationID = 0x4B565831;

    explicit StoreFile(std::filesystem::path file) : m_file(std::move(file)) {}

    const std::filesystem::path& path() const { return m_file; }
    std::filesystem::path lockFile() const { return withSuffix(".lock"); }
    std::filesystem::path journal() const { return withSuffix("-wal"); }

    /// Whether anything stands there. Throws StoreError when that cannot be a store: `unreadable`,
    /// `notAStore`.
    bool exists() const;
    bool hasJournal() const { return journalSize() > 0; }
    /// In bytes; 0 where there is none.
    std::uintmax_t journalSize() const;
    /// Whether this process can make files beside it.
    bool allowsCompanions() const;
    /// Whether the file, its folder and the lock file may be written by this process.
    bool isWritable() const;

    /// Builds a new, empty store beside the file and renames it into place, so that it is there
    /// whole or not at all. The write lock must be held. Never replaces a file.
    void create(const Schema& schema) const;
    /// Removes what an interrupted `create` left. The write lock must be held.
    void removeStaging() const;

    /// Looks at the header of an open database; throws `notAStore` for a file that is cut short.
    void checkHeader(sqlite3* database) const;
    /// Checks that the open database belongs to this system and is of the schema's version; throws
    /// `notAStore`, `newerVersion`, `olderVersion`.
    static void checkVersion(sqlite3* database, const Schema& schema);

private:
    std::filesystem::path withSuffix(const char* suffix) const;
    std::filesystem::path directory() const;
    std::string stagingPrefix() const;

    std::filesystem::path m_file;
};

} // namespace korvex::store
