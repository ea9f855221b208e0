#pragma once

#include "store/Schema.h"

#include <SQLiteCpp/Database.h>
#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::store {

class StoreLock;

/// The files of one store and what can be told from them before and after SQLite opens them. None
/// of these functions opens the store file past SQLite: closing any descriptor of it would drop the
/// locks that SQLite holds in this process.
class StoreFile {
public:
    /// What every file of SQLite begins with.
    static constexpr std::string_view kMagic{"SQLite format 3\0", 16};
    /// How long the header is: a file that is shorter is none of SQLite's.
    static constexpr std::size_t kHeaderBytes = 100;
    /// What SQLite keeps in the header of our files: "KVX1".
    static constexpr std::int32_t kApplicationID = 0x4B565831;

    /// What SQLite appends to a file's name for its journals, in the mode with one and in others.
    static constexpr const char* kJournal = "-wal";
    static constexpr const char* kRollback = "-journal";
    static constexpr std::array kJournals{kJournal, kRollback};

    explicit StoreFile(std::filesystem::path file) : m_file(std::move(file)) {}

    const std::filesystem::path& path() const { return m_file; }
    std::filesystem::path lockFile() const { return withSuffix(".lock"); }
    std::filesystem::path journal() const { return withSuffix(kJournal); }

    /// Whether anything stands there. Throws StoreError when that cannot be a store: `unreadable`,
    /// `notAStore`, `symbolicLink`.
    bool exists() const;
    /// The same where a file that is too short for a store is taken too: its words may stand in its
    /// journal, which SQLite, were it to open the file, would remove.
    bool isThere() const;
    /// Whether it is so short.
    bool isTooShort() const;
    bool hasJournal() const { return journalSize() > 0; }
    /// In bytes; 0 where there is none.
    std::uintmax_t journalSize() const;
    /// Makes its folder where it is missing, for its owner alone; one that is there keeps its
    /// permissions. Throws StoreError `noFolder`.
    void makeFolder() const;
    /// Whether a store stood here that was taken away: its journal, or the record of its lock,
    /// which must be held, is left. Throws what `exists` throws.
    bool isGone(const StoreLock& lock) const;
    /// Whether this process can make files beside it.
    bool allowsCompanions() const;
    /// Whether the file, its folder and the lock file may be written by this process.
    bool isWritable() const;

    /// Writes an empty store with an identifier of its own to a new file, which is not synced.
    /// Throws StoreError and SQLite::Exception.
    static void writeEmpty(const std::filesystem::path& file, const Schema& schema);
    /// A new, empty store. The write lock must be held. Never replaces a file.
    void create(const Schema& schema) const;

    /// Writes a store file at the path that it is given and leaves no other connection on it.
    using Filling = std::function<void(const std::filesystem::path& staging)>;
    /// Has a file made beside the place of this one, syncs it and renames it into place, so that it
    /// is there whole or not at all. Never replaces a file. Throws StoreError.
    void createBy(const Filling& fill) const;
    /// The same in the place of the store that stands there, which becomes the file `kept` in the
    /// same folder, with its journals where it has any: at every moment one of them is in place.
    /// The write lock must be held, and nobody else may have the store open (`SoleHold`).
    void replaceBy(const Filling& fill, const std::filesystem::path& kept) const;
    /// Makes `copy` a store that holds what this one holds at one moment, its journal included. It
    /// may be in use, of any version, and need not be writable; it is not changed. The copy is
    /// there whole, in one file and on the disk, or not at all; it never replaces a file. Blocks;
    /// any thread. With a schema the rows of both are read and compared first. Throws StoreError:
    /// `damaged` where they cannot be read or differ, and what `version` throws.
    void copyTo(const std::filesystem::path& copy, const Schema* readBackBy = nullptr) const;
    /// Puts what was written to the file on the disk. Throws StoreError.
    void sync() const;
    /// A new name for what is made on the way to these, beside the store.
    std::filesystem::path stagingName() const;
    /// Removes what interrupted ones of these left. The write lock must be held.
    void removeStaging() const;

    /// The name under which the store is kept when another takes its place:
    /// "Primary.store.`what`-20250310-143000-…", with the moment in UTC. It is new, unless a killed
    /// `replaceBy` has given the store one already.
    std::filesystem::path keptName(std::string_view what) const;
    /// Every file of such a name, the oldest first.
    std::vector<std::filesystem::path> kept(std::string_view what) const;

    /// The URI under which SQLite opens the store for reading only.
    std::string readingUri() const;

    /// Looks at the header of an open database; throws `notAStore` for a file that is cut short.
    void checkHeader(sqlite3* database) const;
    /// The number of the version that has written the open database. Throws `notAStore` for one
    /// that does not belong to this system, `newerVersion`, `olderVersion` for one that cannot be
    /// upgraded, and `damaged` where no version has a number as low and the tables are of one.
    static std::int32_t version(sqlite3* database, const Schema& schema);

private:
    std::filesystem::path withSuffix(const char* suffix) const;
    std::filesystem::path directory() const;
    /// So that SQLite leaves no companions beside a store that had none: what is opened for reading
    /// only cannot remove them. Null where another program has it open, or it may not be written.
    std::unique_ptr<SQLite::Database> openAlone() const;
    std::string keptPrefix(std::string_view what) const;
    std::filesystem::path makeStaging(const Filling& fill) const;
    void moveJournalsTo(const std::filesystem::path& kept) const;
    void moveJournalsBack(const std::filesystem::path& kept) const noexcept;
    /// Has a staging file made and `moveIn` move it for good; leaves none on failure.
    void place(const Filling& fill, const Filling& moveIn) const;

    std::filesystem::path m_file;
};

} // namespace korvex::store
