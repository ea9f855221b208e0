#include "store/ContextCore.h"
#include "store/FieldAccess.h"
#include "store/TableSql.h"

#include <algorithm>
#include <set>
#include <unordered_set>

namespace korvex::store {

void ContextCore::refresh() {
    auto& connection = m_container.connection();
    if (connection.revision() == m_revision) {
        return;
    }
    ChangeSet changes{.origin = ChangeSet::Origin::elsewhere};
    {
        const StoreConnection::ReadScope scope(connection);
        const auto revision = connection.revision();
        // A store that went back (restored from a copy underneath) has no log of that.
        const auto log =
            revision > m_revision ? connection.changeLog().changesSince(m_revision) : std::nullopt;
        if (log) {
            std::set<std::pair<std::uint8_t, std::int64_t>> seen;
            for (const auto& change : *log) {
                if (change.type < m_tables.size() &&
                    seen.emplace(change.type, change.rowid).second) {
                    refreshRow(change.type, change.rowid, changes);
                }
            }
        } else {
            const auto replaced = ChangeLog::lastReplacement(connection.handle());
            changes.isReplacement =
                revision < m_revision || (replaced && replaced->revision > m_revision);
            changes.hasUnknownDeletions = true;
            for (std::size_t index = 0; index < m_tables.size(); ++index) {
                refreshEverything(index, changes);
            }
        }
        m_revision = revision;
    }
    if (!changes.isEmpty()) {
        announce(std::move(changes), Announcements::Cause::other);
    }
}

void ContextCore::refreshRow(std::size_t index, std::int64_t rowid, ChangeSet& changes) {
    auto& table = m_tables[index];
    auto& type = statements(index);
    type.selectByRowid.bind(0, rowid);
    const auto exists = type.selectByRowid.step();
    auto* record = table.atRowid(rowid);
    if (!exists) {
        if (record) {
            goneFromStore(*record, changes);
        } else {
            changes.hasUnknownDeletions = true;
        }
        return;
    }
    const auto id = type.codec.identifier(type.selectByRowid);
    if (record && record->id() != id) {
        // SQLite gave the number of a deleted row to a new one.
        goneFromStore(*record, changes);
        table.byRowid.erase(rowid);
        record = nullptr;
    }
    if (record) {
        // One that was read since the last refresh is as it should be, and nobody was told.
        if (record->state().version != type.codec.version(type.selectByRowid)) {
            mergeRow(index, type.selectByRowid, *record);
        }
        changes.updated.push_back(id);
    } else {
        if (isWatched(index, type.selectByRowid)) {
            materialize(index, type.selectByRowid);
        }
        changes.inserted.push_back(id);
    }
    type.selectByRowid.reset();
}

void ContextCore::refreshEverything(std::size_t index, ChangeSet& changes) {
    auto& table = m_tables[index];
    std::vector<std::int64_t> moved;
    std::unordered_set<std::int64_t> present;
    Statement versions(m_container.connection().handle(),
                       "SELECT rowid, version FROM " + tableSql::quoted(table.type->name));
    while (versions.step()) {
        const auto rowid = versions.integer(0);
        const auto* known = table.atRowid(rowid);
        if (!known || known->state().version != versions.integer(1)) {
            moved.push_back(rowid);
        }
        present.insert(rowid);
    }
    std::vector<Record*> gone;
    for (const auto& [rowid, record] : table.byRowid) {
        if (!present.contains(rowid)) {
            gone.push_back(record);
        }
    }
    for (auto* record : gone) {
        goneFromStore(*record, changes);
    }
    for (const auto rowid : moved) {
        refreshRow(index, rowid, changes);
    }
}

bool ContextCore::isWatched(std::size_t index, const Statement& row) {
    const auto& type = *m_tables[index].type;
    if (!type.ownerField) {
        return false;
    }
    const auto reference = statements(index).codec.readField(row, *type.ownerField);
    if (isAbsent(reference)) {
        return false;
    }
    const auto& owners = m_tables[m_tables.indexOf(type.ownerType())];
    const auto* owner = owners.withIdentifier(std::get<base::Uuid>(reference));
    return owner && owner->state().ownedIsLoaded;
}

void ContextCore::mergeRow(std::size_t index, const Statement& row, Record& record) {
    const auto& codec = statements(index).codec;
    const auto& type = record.storedType();
    auto& state = record.state();
    for (const auto field : tableSql::rowFields(type)) {
        auto stored = codec.readField(row, field);
        const auto original = std::find_if(state.originals.begin(), state.originals.end(),
                                           [&](const auto& each) { return each.field == field; });
        auto* slot = record.slot(field);
        const auto kind = type.fields[field].kind;
        if (original != state.originals.end()) {
            // Changed here: mine stays, over what is stored now.
            if (readSlot(slot, kind) == stored) {
                state.originals.erase(original);
            } else {
                original->value = std::move(stored);
            }
            continue;
        }
        if (type.ownerField == field) {
            if (readSlot(slot, kind) != stored) {
                unlinkFromOwner(record);
                writeSlot(slot, kind, std::move(stored));
                resolveOwner(record);
                linkToOwner(record);
            }
            continue;
        }
        writeSlot(slot, kind, std::move(stored));
    }
    for (std::size_t field = 0; field < type.fields.size(); ++field) {
        if (type.fields[field].kind == FieldKind::externalBytes && !record.isChanged(field)) {
            *static_cast<ExternalBytes*>(record.slot(field)) = {.isRead = false,
                                                                .bytes = std::nullopt};
        }
    }
    state.version = codec.version(row);
    state.checksum = codec.checksum(row);
    state.alteration.reset();
}

void ContextCore::goneFromStore(Record& record, ChangeSet& changes) {
    auto& state = record.state();
    if (!record.isLive()) {
        // Deleted here too, and not saved yet: then there is nothing left to delete.
        std::erase(m_pending.deleted, &record);
        m_tables.forget(record);
        return;
    }
    if (record.hasChanges()) {
        state.isGoneFromStore = true;
        return;
    }
    changes.deleted.push_back(record.id());
    unlinkFromOwner(record);
    for (auto* owned : state.owned) {
        owned->state().owner = nullptr;
    }
    m_tables.forget(record);
}

} // namespace korvex::store
