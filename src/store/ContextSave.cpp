#include "store/ContextCore.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include "base/Digest.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace korvex::store {

namespace {

using Phase = RecordState::Phase;

bool isGone(const Record* record) {
    return record->isLive() && record->state().isGoneFromStore;
}

/// Put with an owner here that someone else has deleted meanwhile.
bool hasLostItsOwner(Record* record) {
    const auto field = record->storedType().ownerField;
    if (!field || !record->isLive() || !(record->isInserted() || record->isChanged(*field))) {
        return false;
    }
    const auto* owner = record->state().context->ownerOf(*record);
    return !isAbsent(record->value(*field)) && (!owner || !owner->isLive());
}

/// Which fields of external bytes are written: those of a new row, or those that differ from it.
enum class External { all, changed };

void writeExternal(TypeStatements& type, const Record& record, External which) {
    for (auto& external : type.externals) {
        if (which == External::changed && !record.isChanged(external.field)) {
            continue;
        }
        const auto& bytes = static_cast<const ExternalBytes*>(record.slot(external.field))->bytes;
        if (bytes) {
            external.replace.bind(0, record.state().rowid);
            external.replace.bind(1, static_cast<std::int64_t>(base::checksum(*bytes)));
            external.replace.bind(2, std::span<const std::uint8_t>(*bytes));
            external.replace.run();
        } else if (which == External::changed) {
            external.remove.bind(0, record.state().rowid);
            external.remove.run();
        }
    }
}

/// A step of the core itself.
class Step {
public:
    explicit Step(ContextCore& core) : m_core(core) { m_core.beginStep(); }
    ~Step() { m_core.endStep(); }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

private:
    ContextCore& m_core;
};

} // namespace

void ContextCore::removeAllRows(std::string note) {
    assert(m_stepDepth > 0 && m_pending.isEmpty());
    if (!m_container.allowsSave()) {
        throw StoreError(StoreErrorCase::readOnly);
    }
    auto& connection = m_container.connection();
    connection.begin();
    m_replacement = {.revision = connection.revision() + 1, .note = std::move(note)};
    for (std::size_t index = 0; index < m_tables.size(); ++index) {
        assert(m_tables[index].byIdentifier.empty());
        const auto& type = *m_tables[index].type;
        for (const auto& field : type.fields) {
            if (field.kind == FieldKind::externalBytes) {
                Statement(connection.handle(),
                          "DELETE FROM " + tableSql::externalTable(type, field))
                    .run();
            }
        }
        Statement(connection.handle(), "DELETE FROM " + tableSql::quoted(type.name)).run();
    }
}

void ContextCore::writeRow(Record& detached) {
    assert(m_replacement && !detached.isLive());
    writeInserted(m_tables.indexOf(detached.storedType()), detached, m_replacement->revision);
}

void ContextCore::save() {
    if (m_pending.isEmpty() && !m_replacement) {
        return;
    }
    auto& connection = m_container.connection();
    if (!m_container.allowsSave()) {
        throw StoreError(StoreErrorCase::readOnly);
    }
    const Step step(*this);
    if (std::any_of(m_pending.touched.begin(), m_pending.touched.end(), isGone) ||
        std::any_of(m_pending.inserted.begin(), m_pending.inserted.end(), hasLostItsOwner) ||
        std::any_of(m_pending.touched.begin(), m_pending.touched.end(), hasLostItsOwner)) {
        throw StoreError(StoreErrorCase::conflict);
    }
    if (m_pending.isEmpty() && !m_replacement) {
        // What was deleted here, someone else deleted first.
        return;
    }
    connection.checkFilesAreInPlace();
    // The step's own transaction ended if something was saved in it already.
    connection.begin();
    const auto revision = connection.revision() + 1;
    try {
        const auto rows = writePending(revision);
        if (m_replacement) {
            connection.changeLog().appendEverything(revision);
            ChangeLog::keepReplacement(connection.handle(), *m_replacement);
        } else {
            connection.changeLog().append(revision, rows);
        }
        connection.commit(revision);
    } catch (...) {
        connection.rollback();
        m_replacement.reset();
        throw;
    }
    m_revision = revision;
    auto changes = settlePending(revision);
    changes.isReplacement = std::exchange(m_replacement, std::nullopt).has_value();
    changes.hasUnknownDeletions = changes.isReplacement;
    announce(std::move(changes), Announcements::Cause::save);
}

std::vector<RowChange> ContextCore::writePending(std::int64_t revision) {
    std::vector<RowChange> changes;
    const auto note = [&](std::size_t index, const Record& record) {
        changes.push_back({static_cast<std::uint8_t>(index), record.state().rowid});
    };
    for (auto* record : m_pending.deleted) {
        const auto index = m_tables.indexOf(record->storedType());
        auto& type = statements(index);
        for (auto& external : type.externals) {
            external.remove.bind(0, record->state().rowid);
            external.remove.run();
        }
        type.remove.bind(0, record->state().rowid);
        type.remove.run();
        note(index, *record);
    }
    for (auto* record : m_pending.inserted) {
        const auto index = m_tables.indexOf(record->storedType());
        writeInserted(index, *record, revision);
        note(index, *record);
    }
    for (auto* record : m_pending.changed()) {
        const auto index = m_tables.indexOf(record->storedType());
        writeChanged(index, *record, revision);
        note(index, *record);
    }
    return changes;
}

void ContextCore::writeInserted(std::size_t index, Record& record, std::int64_t revision) {
    auto& type = statements(index);
    type.codec.bindRow(type.insert, record, revision);
    type.insert.run();
    auto& state = record.state();
    state.alteration = 0;
    state.rowid = sqlite3_last_insert_rowid(m_container.connection().handle());
    writeExternal(type, record, External::all);
}

void ContextCore::writeChanged(std::size_t index, Record& record, std::int64_t revision) {
    auto& type = statements(index);
    std::vector<std::size_t> fields;
    for (const auto& original : record.state().originals) {
        if (record.storedType().fields[original.field].kind != FieldKind::externalBytes) {
            fields.push_back(original.field);
        }
    }
    // In one order, so that one set of fields has one statement.
    std::sort(fields.begin(), fields.end());
    auto& update = type.updateOf(m_container.connection().handle(), fields);
    // What was damaged before it was read is not vouched for by a save that changes something else:
    // the checksum stays as wrong as it was.
    auto& state = record.state();
    if (!state.alteration) {
        state.alteration = state.checksum ^ type.codec.originalChecksum(record);
    }
    update.bind(0, revision);
    update.bind(1, static_cast<std::int64_t>(type.codec.checksum(record) ^ *state.alteration));
    int column = 2;
    for (const auto field : fields) {
        type.codec.bindField(update, column, record, field);
        ++column;
    }
    update.bind(column, state.rowid);
    update.bind(column + 1, state.version);
    update.run();
    if (update.changes() != 1) {
        // Only who writes without our lock and log can have moved it.
        throw StoreError(StoreErrorCase::conflict);
    }
    writeExternal(type, record, External::changed);
}

ChangeSet ContextCore::settlePending(std::int64_t revision) {
    ChangeSet changes;
    for (auto* record : m_pending.deleted) {
        changes.deleted.push_back(record->id());
        m_tables.forget(*record);
    }
    m_pending.deleted.clear();
    for (auto* record : m_pending.inserted) {
        changes.inserted.push_back(record->id());
        auto& state = record->state();
        state.phase = Phase::stored;
        state.version = revision;
        m_tables.of(*record).byRowid[state.rowid] = record;
    }
    m_pending.inserted.clear();
    for (auto* record : m_pending.touched) {
        auto& state = record->state();
        state.isListedAsChanged = false;
        if (record->isLive() && record->hasChanges()) {
            changes.updated.push_back(record->id());
            state.originals.clear();
            state.version = revision;
        }
    }
    m_pending.touched.clear();
    return changes;
}

} // namespace korvex::store
