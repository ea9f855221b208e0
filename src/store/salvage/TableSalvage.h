#pragma once

#include "store/OlderTable.h"
#include "store/Statement.h"
#include "store/salvage/StoreSalvage.h"
#include "store/salvage/TableRoots.h"
#include "store/salvage/Ticker.h"

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::store {

/// The rows of one record type, out of the damaged store into the new one.
class TableSalvage {
public:
    TableSalvage(sqlite3* source, sqlite3* target, const OlderTable& table,
                 const LooseTrees& looseTrees, SalvageReport& report, const Ticker& ticker);

    /// Throws StoreError where the new store cannot be written, and what the ticker throws.
    void run();

private:
    enum class Wanted { sound, altered };
    enum class Outcome { saved, altered, missing, none };

    struct Known {
        /// An index says that there is such a row.
        bool isListed = false;
        Outcome outcome = Outcome::none;
        bool lacksBytes = false;
        std::optional<base::Uuid> owner;
    };

    void findRows();
    void askForAllFrom(std::int64_t reached);
    bool readIndex(const std::string& index, std::string_view field,
                   const std::function<void(Known&, const Statement&)>& take);
    bool isThere(const std::string& index);
    void prepareReading();
    void takeLoose();
    void readLoose(std::string_view table, const std::string& select,
                   const std::function<void(std::uint32_t tree, const Statement& row)>& take);
    bool isSaved(std::int64_t rowid) const;
    Outcome read(std::int64_t rowid, Wanted wanted);
    Outcome take(Known& known, Wanted wanted);
    bool insert(const std::optional<base::Uuid>& identifier);
    bool hasText(const Statement& row) const;
    void bindReadable(int column, const Statement& row, FieldKind kind);
    int ownerColumn() const;
    void copyExternal(const Field& field);
    void report();

    sqlite3* m_source;
    sqlite3* m_target;
    const OlderTable& m_table;
    const RecordType& m_type;
    std::string m_name;
    const LooseTrees& m_looseTrees;
    /// Whether the table was read to its end, and an index of it.
    bool m_isComplete = false;
    bool m_isListed = false;
    /// SQL that says whether a row is what was saved last.
    std::string m_isSound;
    SalvageReport& m_report;
    const Ticker& m_ticker;
    std::map<std::int64_t, Known> m_known;
    std::vector<StoredField> m_fields;
    std::optional<Statement> m_select;
    std::optional<Statement> m_insert;
};

} // namespace korvex::store
