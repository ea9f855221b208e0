#include "store/salvage/TableSalvage.h"

#include "base/Digest.h"
#include "store/ChecksumFunction.h"
#include "store/StoreError.h"
#include "store/TableSql.h"
#include "store/salvage/DamagedRows.h"
#include "store/salvage/TableRoots.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace korvex::store {

namespace {

/// How far from where a table can be read no more each row is asked for.
constexpr std::int64_t kWidestGap = 1'000'000;

/// Of what is read and written, behind "rowid, version".
constexpr int kFirstField = 2;

base::Uuid freshIdentifier() {
    return base::Uuid::random();
}

} // namespace

TableSalvage::TableSalvage(sqlite3* source, sqlite3* target, const OlderTable& table,
                           const LooseTrees& looseTrees, SalvageReport& report,
                           const Ticker& ticker)
    : m_source(source),
      m_target(target),
      m_table(table),
      m_type(*table.type),
      m_name(tableSql::quoted(table.type->name)),
      m_looseTrees(looseTrees),
      m_report(report),
      m_ticker(ticker) {}

void TableSalvage::run() {
    findRows();
    prepareReading();
    std::vector<std::int64_t> altered;
    std::size_t done = 0;
    for (const auto& [rowid, known] : m_known) {
        m_ticker.progress(done, m_known.size());
        ++done;
        if (read(rowid, Wanted::sound) == Outcome::altered) {
            altered.push_back(rowid);
        }
    }
    // After all sound ones, none of which may lose its identifier to one of these.
    for (const auto rowid : altered) {
        read(rowid, Wanted::altered);
    }
    if (!m_looseTrees.areTablesKnown || !m_isComplete) {
        takeLoose();
    }
    for (const auto& field : m_type.fields) {
        if (field.kind == FieldKind::externalBytes && m_table.has(field.name)) {
            copyExternal(field);
        }
    }
    report();
}

/// Every row that the table or one of its indexes knows, and where the table is damaged any that it
/// may have besides.
void TableSalvage::findRows() {
    const auto select = "SELECT rowid FROM " + m_name + " NOT INDEXED ORDER BY rowid";
    const auto note = [&](const Statement& row) { m_known[row.integer(0)]; };
    m_isComplete = readAll(m_source, select, note);
    const auto reached = m_known.empty() ? 0 : m_known.rbegin()->first;
    if (!m_isComplete) {
        readAll(m_source, select + " DESC", note);
    }
    m_isListed = readIndex("sqlite_autoindex_" + std::string(m_type.name) + "_1",
                           m_type.fields[0].name, [](Known&, const Statement&) {});
    if (m_type.ownerField) {
        const auto& owner = m_type.fields[*m_type.ownerField];
        const auto index = std::string(m_type.name) + "_" + std::string(owner.name);
        m_isListed = readIndex(index, owner.name,
                               [](Known& known, const Statement& row) {
                                   if (!row.isAbsent(0)) {
                                       known.owner = row.uuid(0);
                                   }
                               }) ||
                     m_isListed;
    }
    if (!m_isComplete) {
        askForAllFrom(reached);
    }
    m_report.mayMissMore = m_report.mayMissMore || (!m_isComplete && !m_isListed);
}

void TableSalvage::askForAllFrom(std::int64_t reached) {
    // A damaged page may hold any number.
    const auto limit = std::min(reached, std::numeric_limits<std::int64_t>::max() - kWidestGap);
    const auto beyond = m_known.upper_bound(limit + kWidestGap);
    const auto last = beyond == m_known.begin() ? reached : std::prev(beyond)->first;
    for (auto rowid = limit + 1; rowid < last; ++rowid) {
        m_known[rowid];
    }
}

bool TableSalvage::readIndex(const std::string& index, std::string_view field,
                             const std::function<void(Known&, const Statement&)>& take) {
    if (!isThere(index)) {
        return false;
    }
    const auto column = tableSql::quoted(field);
    const auto select = "SELECT " + column + ", rowid FROM " + m_name + " INDEXED BY " +
                        tableSql::quoted(index) + " ORDER BY " + column;
    const auto note = [&](const Statement& row) {
        auto& known = m_known[row.integer(1)];
        known.isListed = true;
        take(known, row);
    };
    if (readAll(m_source, select, note)) {
        return true;
    }
    readAll(m_source, select + " DESC", note);
    return false;
}

bool TableSalvage::isThere(const std::string& index) {
    Statement look(m_source, "SELECT 1 FROM sqlite_schema WHERE type = 'index' AND name = ?");
    look.bind(0, std::string_view(index));
    return readNext(look) == RowRead::row;
}

void TableSalvage::prepareReading() {
    const RowReading reading(m_source, m_table);
    m_select.emplace(m_source, "SELECT rowid, version, " + reading.values + ", " + reading.isSound +
                                   " FROM " + m_name + " WHERE rowid = ?");
    std::string columns = "rowid, version";
    std::string values;
    for (std::size_t i = 0; i < reading.fields.size(); ++i) {
        columns += ", " + tableSql::quoted(reading.fields[i].name);
        values += ", ?" + std::to_string(i + kFirstField + 1);
    }
    // The checksum is that of what is written, which may be less than was read.
    addChecksumFunction(m_target, kNewChecksum, m_type.name, reading.fields);
    m_insert.emplace(m_target, "INSERT INTO " + m_name + "(" + columns +
                                   ", checksum) VALUES(?1, ?2" + values + ", " + kNewChecksum +
                                   "(" + values.substr(2) + "))");
    m_fields = reading.fields;
    m_isSound = reading.isSound;
}

/// Where several trees have a row, the newest counts: some are in use no more.
void TableSalvage::takeLoose() {
    struct Place {
        std::uint32_t tree = 0;
        std::int64_t version = 0;
    };
    std::map<std::int64_t, Place> newest;
    const auto select =
        "SELECT rowid, version, " + m_isSound + " FROM " + m_name + " NOT INDEXED ORDER BY rowid";
    readLoose(m_type.name, select, [&](std::uint32_t tree, const Statement& row) {
        const auto known = m_known.find(row.integer(0));
        // What a whole index does not know was deleted.
        const auto isMeant = !m_isListed || (known != m_known.end() && known->second.isListed);
        if (!isMeant || isSaved(row.integer(0)) || row.integer(2) == 0) {
            return;
        }
        const auto [place, isNew] = newest.try_emplace(row.integer(0), Place{tree, row.integer(1)});
        if (!isNew && place->second.version < row.integer(1)) {
            place->second = {tree, row.integer(1)};
        }
    });
    std::map<std::uint32_t, std::vector<std::int64_t>> byTree;
    for (const auto& [rowid, place] : newest) {
        byTree[place.tree].push_back(rowid);
    }
    for (const auto& [tree, rowids] : byTree) {
        setRoot(m_source, m_type.name, tree);
        for (const auto rowid : rowids) {
            const auto found = m_known.find(rowid);
            const auto former =
                found == m_known.end() ? std::nullopt : std::optional(found->second);
            if (read(rowid, Wanted::sound) == Outcome::saved) {
                continue;
            }
            // What is of a record that is saved is not missing either, unless it was before.
            if (former) {
                m_known[rowid] = *former;
            } else {
                m_known.erase(rowid);
            }
        }
    }
}

/// Each of the loose trees as if it were this table. They have no pages in common: where they seem
/// to, as where damage leads from one to another, not all of them are read.
void TableSalvage::readLoose(
    std::string_view table, const std::string& select,
    const std::function<void(std::uint32_t tree, const Statement& row)>& take) {
    auto rowsLeft = mostRecords(m_source);
    for (const auto tree : m_looseTrees.roots) {
        m_ticker.tick();
        if (rowsLeft < 0) {
            m_report.mayMissMore = true;
            return;
        }
        setRoot(m_source, table, tree);
        const auto takeOne = [&](const Statement& row) {
            --rowsLeft;
            take(tree, row);
        };
        if (!readAll(m_source, select, takeOne)) {
            readAll(m_source, select + " DESC", takeOne);
        }
    }
}

bool TableSalvage::isSaved(std::int64_t rowid) const {
    const auto known = m_known.find(rowid);
    return known != m_known.end() &&
           (known->second.outcome == Outcome::saved || known->second.outcome == Outcome::altered);
}

TableSalvage::Outcome TableSalvage::read(std::int64_t rowid, Wanted wanted) {
    auto& known = m_known[rowid];
    known.outcome = known.isListed ? Outcome::missing : Outcome::none;
    m_select->bind(0, rowid);
    if (readNext(*m_select) == RowRead::row) {
        known.outcome = take(known, wanted);
    }
    m_select->reset();
    return known.outcome;
}

TableSalvage::Outcome TableSalvage::take(Known& known, Wanted wanted) {
    const auto& row = *m_select;
    const auto count = static_cast<int>(m_fields.size());
    const auto hasIdentifier = row.isIdentifier(kFirstField);
    const auto isSound = row.integer(kFirstField + count) != 0 && hasIdentifier;
    if (m_type.ownerField && !known.owner) {
        const auto place = ownerColumn();
        known.owner = row.isAbsent(place) ? std::nullopt : std::optional(row.uuid(place));
    }
    if (!isSound && wanted == Wanted::sound) {
        return hasText(row) ? Outcome::altered : Outcome::missing;
    }
    m_insert->bindColumn(0, row, 0);
    bindReadable(1, row, FieldKind::integer);
    for (int i = 0; i < count; ++i) {
        bindReadable(kFirstField + i, row, m_fields[static_cast<std::size_t>(i)].kind);
    }
    if (!insert(hasIdentifier ? std::nullopt : std::optional(freshIdentifier()))) {
        // Another record has the same identifier, which is worth less than the words; but that
        // one may be sound, and comes first.
        if (wanted == Wanted::sound) {
            return Outcome::altered;
        }
        if (!insert(freshIdentifier())) {
            return Outcome::missing;
        }
    }
    ++m_report.saved;
    return wanted == Wanted::sound ? Outcome::saved : Outcome::altered;
}

/// With the identifier that was read, or another one. False where the table refuses it.
bool TableSalvage::insert(const std::optional<base::Uuid>& identifier) {
    if (identifier) {
        m_insert->bind(kFirstField, *identifier);
    }
    try {
        m_insert->run();
        return true;
    } catch (const StoreError& error) {
        if (error.which() != StoreErrorCase::invalidRecord) {
            throw;
        }
        return false;
    }
}

/// Whether anything is left that a person might have written.
bool TableSalvage::hasText(const Statement& row) const {
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const auto column = kFirstField + static_cast<int>(i);
        if (m_fields[i].kind == FieldKind::text && row.storageClass(column) == SQLITE_TEXT) {
            return true;
        }
    }
    return false;
}

/// Any value reads as something, which the repair of metadata then judges; but what cannot be
/// absent must not be.
void TableSalvage::bindReadable(int column, const Statement& row, FieldKind kind) {
    const auto isAbsent = row.isAbsent(column);
    if (kind == FieldKind::text && row.storageClass(column) != SQLITE_TEXT) {
        m_insert->bind(column, row.text(column));
    } else if (isAbsent && (kind == FieldKind::integer || kind == FieldKind::boolean)) {
        m_insert->bind(column, std::int64_t{0});
    } else if (isAbsent && kind == FieldKind::date) {
        m_insert->bind(column, 0.0);
    } else {
        m_insert->bindColumn(column, row, column);
    }
}

int TableSalvage::ownerColumn() const {
    const auto fields = tableSql::rowFields(m_type);
    const auto place = std::find(fields.begin(), fields.end(), *m_type.ownerField);
    return kFirstField + static_cast<int>(place - fields.begin());
}

void TableSalvage::copyExternal(const Field& field) {
    const auto table = tableSql::externalTable(m_type, field);
    Statement select(m_source, "SELECT checksum, bytes FROM " + table + " WHERE owner = ?");
    Statement insert(m_target, "INSERT INTO " + table + "(owner, checksum, bytes) VALUES(?, ?, ?)");
    for (auto& [rowid, known] : m_known) {
        if (!isSaved(rowid)) {
            continue;
        }
        select.bind(0, rowid);
        const auto read = readNext(select);
        if (read == RowRead::row) {
            const auto bytes = select.bytes(1);
            const auto checksum = static_cast<std::int64_t>(base::checksum(bytes));
            if (checksum != select.integer(0)) {
                known.outcome = Outcome::altered;
            }
            insert.bind(0, rowid);
            insert.bind(1, checksum);
            insert.bind(2, bytes);
            insert.run();
        }
        known.lacksBytes = read == RowRead::damage;
        select.reset();
    }
    if (m_looseTrees.areExternalsKnown &&
        readAll(m_source, "SELECT owner FROM " + table, [](const Statement&) {})) {
        return;
    }
    Statement add(m_target,
                  "INSERT OR IGNORE INTO " + table + "(owner, checksum, bytes) VALUES(?, ?, ?)");
    readLoose(std::string(m_type.name) + "." + std::string(field.name),
              "SELECT owner, checksum, bytes FROM " + table + " ORDER BY owner",
              [&](std::uint32_t, const Statement& row) {
                  if (hasSoundBytes(row) && isSaved(row.integer(0))) {
                      for (int column = 0; column < 3; ++column) {
                          add.bindColumn(column, row, column);
                      }
                      add.run();
                      m_known[row.integer(0)].lacksBytes = false;
                  }
              });
}

void TableSalvage::report() {
    std::map<std::optional<base::Uuid>, SalvageReport::Loss> losses;
    for (const auto& [rowid, known] : m_known) {
        const auto isMissing = known.outcome == Outcome::missing;
        const auto isAltered = known.outcome == Outcome::altered;
        if (isMissing || isAltered || known.lacksBytes) {
            auto& loss = losses[known.owner];
            loss.missing += isMissing ? 1 : 0;
            loss.altered += isAltered ? 1 : 0;
            loss.withoutBytes += known.lacksBytes ? 1 : 0;
        }
    }
    for (auto& [owner, loss] : losses) {
        loss.type = &m_type;
        loss.owner = owner;
        m_report.losses.push_back(loss);
    }
}

} // namespace korvex::store
