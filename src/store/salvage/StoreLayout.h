#pragma once

#include "base/Bytes.h"
#include "store/OlderTable.h"
#include "store/Schema.h"

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace korvex::store {

/// A form that the tables of a store may have in its file. The file's first page says which; these
/// are for a store that has lost it.
struct StoreLayout {
    /// Of the store.
    std::int32_t version;
    /// What makes each table, its columns in their order; without indexes, which salvage takes for
    /// hints only.
    std::map<std::string, std::string> tables;
    /// The page where each table begins in a new store, and for good; empty where nobody knows.
    std::map<std::string, std::uint32_t> roots = {};
};

/// Every form that a store of this schema, or of a version on the way to it, may have: as the
/// version made it, or upgraded from there. The likeliest first.
std::vector<StoreLayout> storeLayouts(const Schema& schema);

/// The first page of a store of this form and of that many pages, in the mode with a journal, where
/// all tables begin at one page. Throws StoreError `notAStore` for a size of pages that no store
/// has.
base::Bytes firstPage(const StoreLayout& layout, std::size_t pageSize, std::uint32_t pages,
                      std::uint32_t root);

/// Puts the count of pages into a header, so that SQLite believes it.
void setPageCount(base::Bytes& header, std::uint32_t pages);
/// How many the header says that the file has; 0 where the last change does not confirm it.
std::uint32_t pageCount(const base::Bytes& header);

} // namespace korvex::store
