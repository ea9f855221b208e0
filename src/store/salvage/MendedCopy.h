#pragma once

#include "base/FileDescriptor.h"
#include "store/OlderTable.h"
#include "store/Schema.h"
#include "store/StoreFile.h"
#include "store/salvage/DamagedPages.h"
#include "store/salvage/StoreLayout.h"
#include "store/salvage/TableRoots.h"
#include "store/salvage/Ticker.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace korvex::store {

/// Copies a file into a new one; what the disk does not give is left zero. Whether it gave all.
/// Throws StoreError, and what the ticker throws.
bool copyReadable(const base::FileDescriptor& source, const std::filesystem::path& copy,
                  const Ticker& ticker);

/// A store that SQLite does not open, or not to the end of its tables, since its file is cut short,
/// the disk does not give all of it, or its first page or one that leads to others is damaged, so
/// far in order that its rows can be read: in a copy, which is removed with this. Nobody else has
/// the store open while it lives.
///
/// What lay behind the end of a file that was cut, be it to nothing, is damage like any other; what
/// was committed to its journal is put in first. A first page that cannot be read is replaced by
/// that of a new store, of an older version, or of one that was upgraded: the rows that pass their
/// checksums tell which, and which tree of pages is whose table.
class MendedCopy {
public:
    /// The write lock must be held, and a `SoleRequest`. Throws StoreError: `nothingReadable` where
    /// nothing in the file is known to be of this system, `busy` where another program has it open
    /// for longer than that; and what the ticker throws, which must outlive this.
    MendedCopy(const StoreFile& file, const Schema& schema, std::chrono::milliseconds patience,
               Ticker& ticker);
    ~MendedCopy();
    MendedCopy(const MendedCopy&) = delete;
    MendedCopy& operator=(const MendedCopy&) = delete;

    sqlite3* handle() const { return m_database->getHandle(); }
    /// Of the version that it is of.
    const std::vector<OlderTable>& tables() const { return m_tables; }
    /// None where the tables are whole.
    const LooseTrees& looseTrees() const { return m_looseTrees; }
    /// Whether there may have been more in it than can be told.
    bool mayLackTables() const { return m_mayLackTables; }

private:
    void holdAlone(std::chrono::milliseconds patience);
    base::FileDescriptor openJournal(const char* suffix) const;
    void copy();
    void open();
    void rollBack();
    void findLooseTrees();
    bool hasNewerColumns() const;
    bool opensWithItsHeader();
    bool opensWithNewHeader();
    bool opensWithNewFirstPage();

    StoreFile m_file;
    const Schema& m_schema;
    Ticker& m_ticker;
    std::vector<StoreLayout> m_layouts;
    base::FileDescriptor m_held;
    std::filesystem::path m_copy;
    /// Of the copy.
    std::optional<DamagedPages> m_pages;
    std::unique_ptr<SQLite::Database> m_database;
    std::vector<OlderTable> m_tables;
    LooseTrees m_looseTrees;
    bool m_mayLackTables = false;
};

} // namespace korvex::store
