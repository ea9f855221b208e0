#include "store/salvage/TableRoots.h"

#include "store/TableSql.h"
#include "store/salvage/DamagedRows.h"

#include <algorithm>
#include <span>
#include <tuple>

namespace korvex::store {

namespace {

/// Each is looked at for each table in each form that it may have: some seconds.
constexpr std::size_t kMostCandidates = 1'000;

bool isOfRecords(std::string_view table, const std::vector<OlderTable>& tables) {
    return std::any_of(tables.begin(), tables.end(),
                       [&](const auto& each) { return table.starts_with(each.type->name); });
}

} // namespace

void setRoot(sqlite3* database, std::string_view table, std::uint32_t root) {
    Statement(database, "PRAGMA writable_schema = ON").run();
    Statement update(database, "UPDATE sqlite_schema SET rootpage = ? WHERE name = ?");
    update.bind(0, std::int64_t{root});
    update.bind(1, table);
    update.run();
    Statement(database, "PRAGMA writable_schema = RESET").run();
}

TableRoots::TableRoots(sqlite3* database, const StoreLayout& layout,
                       const std::vector<OlderTable>& tables,
                       const std::vector<std::uint32_t>& candidates, std::uint32_t none,
                       const Ticker& ticker)
    : m_database(database),
      m_layout(layout),
      m_candidates(candidates),
      m_none(none),
      m_ticker(ticker) {
    for (const auto& table : tables) {
        const auto& type = *table.type;
        const RowReading reading(m_database, table);
        const auto records = best({.table = std::string(type.name),
                                   .select = "SELECT version, " + reading.isSound + " FROM " +
                                             tableSql::quoted(type.name),
                                   .isSound = [](const auto& row) { return row.integer(1) != 0; }});
        m_sound += records.sound;
        m_others += records.others;
        m_areAllFound = m_areAllFound && records.sound > 0;
        m_areComplete = m_areComplete && records.isComplete;
        const auto known = layout.roots.find(std::string(type.name));
        const auto isCertain = known != layout.roots.end() && known->second == records.root;
        m_areCertain = m_areCertain && isCertain;
        for (const auto& field : type.fields) {
            if (field.kind == FieldKind::externalBytes && table.has(field.name)) {
                const auto name = std::string(type.name) + "." + std::string(field.name);
                const auto found = best({.table = name,
                                         .select = "SELECT 0, checksum, bytes FROM " +
                                                   tableSql::externalTable(type, field),
                                         .isSound = hasSoundBytes});
                const auto place = layout.roots.find(name);
                if (isCertain && place != layout.roots.end() && place->second < m_none) {
                    // Where its records stand as in a new store, so does this: another tree is a
                    // part of it or in use no more.
                    setRoot(m_database, name, place->second);
                } else {
                    // It may be among those that were not looked at.
                    m_areExternalsKnown = m_areExternalsKnown &&
                                          m_candidates.size() <= kMostCandidates &&
                                          (found.sound == 0 || found.isComplete);
                }
            }
        }
    }
    // Then those that say which store it is, and how far it has come, are where they were, too.
    for (const auto& [name, root] : layout.roots) {
        if (m_areCertain && !isOfRecords(name, tables) && root < none) {
            setRoot(m_database, name, root);
        }
    }
}

TableRoots::Tree TableRoots::best(const Rows& rows) const {
    Tree best{.root = m_none};
    auto rowsLeft = mostRecords(m_database);
    // A new store's tables never move. Elsewhere a tree may also be one that is in use no more.
    if (const auto known = m_layout.roots.find(rows.table); known != m_layout.roots.end()) {
        best = look(rows, known->second, rowsLeft);
    }
    const auto most = best.sound > 0 ? 0 : std::min(m_candidates.size(), kMostCandidates);
    for (const auto root : std::span(m_candidates).first(most)) {
        m_ticker.tick();
        if (rowsLeft < 0) {
            best.isComplete = false; // they share pages
            break;
        }
        const auto tree = look(rows, root, rowsLeft);
        const auto isOnly = best.sound == 0 || tree.sound == 0;
        if (std::tie(tree.newest, tree.sound) > std::tie(best.newest, best.sound)) {
            best = tree;
        }
        best.isComplete = best.isComplete && isOnly;
    }
    setRoot(m_database, rows.table, best.root);
    return best;
}

TableRoots::Tree TableRoots::look(const Rows& rows, std::uint32_t root,
                                  std::int64_t& rowsLeft) const {
    setRoot(m_database, rows.table, root);
    Tree tree{.root = root};
    const auto take = [&](const Statement& row) {
        --rowsLeft;
        if (rows.isSound(row)) {
            ++tree.sound;
            tree.newest = std::max(tree.newest, row.integer(0));
        } else {
            ++tree.others;
        }
    };
    const auto select = rows.select + " NOT INDEXED ORDER BY rowid";
    tree.isComplete = readAll(m_database, select, take);
    if (!tree.isComplete) {
        readAll(m_database, select + " DESC", take);
    }
    return tree.sound > 0 ? tree : Tree{.root = m_none};
}

} // namespace korvex::store
