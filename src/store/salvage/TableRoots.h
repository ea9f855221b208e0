#pragma once

#include "store/OlderTable.h"
#include "store/Statement.h"
#include "store/salvage/StoreLayout.h"
#include "store/salvage/Ticker.h"

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::store {

/// Has a table of the database begin at another page. Throws StoreError.
void setRoot(sqlite3* database, std::string_view table, std::uint32_t root);

/// Trees of pages that may have been parts of tables. Others may be of other tables, or in use no
/// more.
struct LooseTrees {
    std::vector<std::uint32_t> roots;
    /// Whether it is known where each table begins: they matter only where one cannot be read to
    /// its end then.
    bool areTablesKnown = false;
    /// The same of the tables of external bytes.
    bool areExternalsKnown = false;
};

/// Where the tables begin in a database whose first page is of a layout and not its own: that page
/// is made to say so.
class TableRoots {
public:
    /// `candidates`: pages that a table may begin at; `none`: an empty one, of those that are not
    /// found. Throws StoreError where that fails for other reasons than damage.
    TableRoots(sqlite3* database, const StoreLayout& layout, const std::vector<OlderTable>& tables,
               const std::vector<std::uint32_t>& candidates, std::uint32_t none,
               const Ticker& ticker);

    /// How many rows pass their checksums, and how many that belong to them do not.
    std::int64_t soundRows() const { return m_sound; }
    std::int64_t otherRows() const { return m_others; }
    /// Whether there are any for each type.
    bool areAllFound() const { return m_areAllFound; }
    /// Whether each could be read to its end, and no other tree may have been a part of it.
    bool areComplete() const { return m_areComplete; }
    /// Whether every table of records was found where a new store has it.
    bool areCertain() const { return m_areCertain; }
    /// Whether it is known where each table of external bytes begins, though not that it can be
    /// read to its end.
    bool areExternalsKnown() const { return m_areExternalsKnown; }

private:
    struct Tree {
        std::uint32_t root = 0;
        std::int64_t sound = 0;
        std::int64_t others = 0;
        /// The newest version of a row in it.
        std::int64_t newest = 0;
        /// Whether it was read to its end, and is the only one of its table.
        bool isComplete = false;
    };
    /// How the rows of a table are read, and whether one is what was saved.
    struct Rows {
        std::string table;
        std::string select;
        bool (*isSound)(const Statement& row);
    };
    Tree look(const Rows& rows, std::uint32_t root, std::int64_t& rowsLeft) const;
    Tree best(const Rows& rows) const;

    sqlite3* m_database;
    const StoreLayout& m_layout;
    const std::vector<std::uint32_t>& m_candidates;
    std::uint32_t m_none;
    const Ticker& m_ticker;
    std::int64_t m_sound = 0;
    std::int64_t m_others = 0;
    bool m_areAllFound = true;
    bool m_areComplete = true;
    bool m_areCertain = true;
    bool m_areExternalsKnown = true;
};

} // namespace korvex::store
