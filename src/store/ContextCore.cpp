#include "store/ContextCore.h"

#include "store/FieldAccess.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <algorithm>
#include <cassert>

namespace korvex::store {

namespace {

using Phase = RecordState::Phase;

Statement bound(sqlite3* database, const std::string& sql, const std::vector<Value>& bindings) {
    Statement statement(database, sql);
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        statement.bindValue(static_cast<int>(i), bindings[i]);
    }
    return statement;
}

/// Of a record that can have an owner.
const std::optional<base::Uuid>& ownerReference(const Record& record) {
    return *static_cast<std::optional<base::Uuid>*>(record.slot(*record.storedType().ownerField));
}

} // namespace

ContextCore::ContextCore(ModelContainer& container)
    : m_container(container),
      m_tables(container.schema().types),
      m_revision(container.revision()),
      m_announcements(container.didSave(), didChange) {}

void ContextCore::announce(ChangeSet changes, Announcements::Cause cause) {
    m_announcements.add(std::move(changes), cause);
    if (m_stepDepth == 0) {
        m_announcements.deliver();
    }
}

Record& ContextCore::materialize(std::size_t index, const Statement& row) {
    auto& table = m_tables[index];
    const auto& codec = statements(index).codec;
    const auto rowid = codec.rowid(row);
    if (auto* known = table.atRowid(rowid)) {
        if (known->id() == codec.identifier(row)) {
            return *known;
        }
        displace(index, *known);
    }
    auto record = table.type->make();
    codec.readRow(row, *record);
    auto& state = record->state();
    state.phase = Phase::stored;
    state.rowid = rowid;
    state.version = codec.version(row);
    state.checksum = codec.checksum(row);
    if (auto* known = table.withIdentifier(record->id())) {
        displace(index, *known);
    }
    table.byRowid.emplace(rowid, record.get());
    auto& reference = m_tables.adopt(index, std::move(record), *this);
    resolveOwner(reference);
    linkToOwner(reference);
    return reference;
}

void ContextCore::displace(std::size_t index, Record& record) {
    if (record.isInserted()) {
        return;
    }
    ChangeSet changes{.origin = ChangeSet::Origin::elsewhere};
    m_tables[index].forgetRow(record);
    goneFromStore(record, changes);
    if (!changes.isEmpty()) {
        m_announcements.add(std::move(changes), Announcements::Cause::other);
    }
}

Record* ContextCore::ownerOf(Record& record) {
    const auto* const known = record.state().owner;
    if (!known || known->state().context != this) {
        resolveOwner(record);
        linkToOwner(record);
    }
    return record.state().owner;
}

void ContextCore::resolveOwner(Record& record) {
    const auto& type = record.storedType();
    if (!type.ownerField) {
        return;
    }
    const auto& reference = ownerReference(record);
    if (!reference) {
        record.state().owner = nullptr;
        return;
    }
    if (!m_lastOwner || !m_lastOwner->isLive() || m_lastOwner->id() != *reference) {
        m_lastOwner = find(type.ownerType(), *reference);
    }
    record.state().owner = m_lastOwner;
}

Record* ContextCore::ownerInMemory(const Record& record) {
    const auto& type = record.storedType();
    if (!type.ownerField || !ownerReference(record)) {
        return nullptr;
    }
    auto& owners = m_tables[m_tables.indexOf(type.ownerType())];
    auto* const owner = owners.withIdentifier(*ownerReference(record));
    return owner && owner->isLive() ? owner : nullptr;
}

Record* ContextCore::find(const RecordType& type, const base::Uuid& id) {
    const auto index = m_tables.indexOf(type);
    if (auto* known = m_tables[index].withIdentifier(id)) {
        return known->isLive() ? known : nullptr;
    }
    auto& select = statements(index).selectByIdentifier;
    select.bind(0, id);
    Record* record = nullptr;
    if (select.step()) {
        record = &materialize(index, select);
        select.reset();
    }
    return record && record->isLive() ? record : nullptr;
}

void ContextCore::fetch(const RecordType& type, const FetchDescriptor& descriptor,
                        const std::function<void(Record&)>& sink) {
    const auto index = m_tables.indexOf(type);
    std::vector<Value> bindings;
    auto sql = tableSql::select(type) + " WHERE " + descriptor.condition.sql(type, bindings) +
               descriptor.orderSql(type);
    // Pending changes of this type can move records into the result, out of it, and within it: then
    // SQLite's limit and order say nothing yet.
    const auto isPlain = !m_pending.concern(type);
    if (isPlain && descriptor.limit) {
        sql += " LIMIT " + std::to_string(*descriptor.limit);
    }
    auto statement = bound(m_container.connection().handle(), sql, bindings);
    if (isPlain) {
        while (statement.step()) {
            sink(materialize(index, statement));
        }
        return;
    }
    std::vector<Record*> result;
    while (statement.step()) {
        auto& record = materialize(index, statement);
        if (record.isLive() && !PendingRecords::isPending(record)) {
            result.push_back(&record);
        }
    }
    m_pending.visit(type, [&](Record& record) {
        if (descriptor.condition.matches(record)) {
            result.push_back(&record);
        }
    });
    std::stable_sort(result.begin(), result.end(), [&](const Record* left, const Record* right) {
        return descriptor.isBefore(*left, *right);
    });
    if (descriptor.limit && result.size() > *descriptor.limit) {
        result.resize(*descriptor.limit);
    }
    for (auto* record : result) {
        sink(*record);
    }
}

std::size_t ContextCore::count(const RecordType& type, const Condition& condition) {
    if (!m_pending.isEmpty()) {
        std::size_t number = 0;
        fetch(type, {.condition = condition}, [&](Record&) { ++number; });
        return number;
    }
    auto statement =
        prepare("SELECT count(*) FROM " + tableSql::quoted(type.name), type, condition);
    std::size_t number = 0;
    while (statement.step()) {
        number = static_cast<std::size_t>(statement.integer(0));
    }
    return number;
}

void ContextCore::fetchValues(const RecordType& type, const std::vector<std::size_t>& fields,
                              const Condition& condition,
                              const std::function<void(std::span<const Value>)>& sink) {
    std::string columns;
    for (const auto field : fields) {
        columns += (columns.empty() ? "SELECT " : ", ") + tableSql::quoted(type.fields[field].name);
    }
    auto statement = prepare(columns + " FROM " + tableSql::quoted(type.name), type, condition);
    std::vector<Value> values(fields.size());
    while (statement.step()) {
        for (std::size_t i = 0; i < fields.size(); ++i) {
            values[i] = statement.value(static_cast<int>(i), type.fields[fields[i]].kind);
        }
        sink(values);
    }
}

void ContextCore::visit(const RecordType& type, const Condition& condition,
                        const std::function<void(const Record&)>& sink) {
    auto statement = prepare(tableSql::select(type), type, condition);
    const auto& codec = statements(m_tables.indexOf(type)).codec;
    const auto record = type.make();
    auto& state = record->state();
    // It belongs to no table; but what stands apart from its row is read by the row's number.
    state.context = this;
    while (statement.step()) {
        codec.readRow(statement, *record);
        state.rowid = codec.rowid(statement);
        sink(*record);
    }
}

Statement ContextCore::prepare(const std::string& what, const RecordType& type,
                               const Condition& condition) {
    std::vector<Value> bindings;
    const std::string sql = what + " WHERE " + condition.sql(type, bindings);
    return bound(m_container.connection().handle(), sql, bindings);
}

Record* ContextCore::stored(const Record& record) {
    const auto* owner = record.state().context;
    if (owner && owner != this) {
        return nullptr;
    }
    auto* const known = find(record.storedType(), record.id());
    auto& count = statements(m_tables.indexOf(record.storedType())).countByIdentifier;
    count.bind(0, record.id());
    std::int64_t number = 0;
    while (count.step()) {
        number = count.integer(0);
    }
    return number == 1 ? known : nullptr;
}

void ContextCore::loadOwned(Record& owner) {
    if (!owner.storedType().ownedType) {
        return;
    }
    const auto& type = owner.storedType().ownedType();
    std::vector<Record*> members;
    fetch(type,
          {.condition =
               Condition::compare(*type.ownerField, Condition::Comparison::equal, owner.id())},
          [&](Record& record) {
              // One that another has moved here since the last refresh comes with that.
              if (ownerReference(record) == owner.id()) {
                  members.push_back(&record);
              }
          });
    auto& state = owner.state();
    state.owned = std::move(members);
    state.ownedIsLoaded = true;
    for (std::size_t i = 0; i < state.owned.size(); ++i) {
        auto& owned = state.owned[i]->state();
        owned.owner = &owner;
        owned.ownedIndex = i;
    }
}

std::optional<base::Bytes> ContextCore::readExternal(const Record& record, std::size_t field) {
    for (auto& external : statements(m_tables.indexOf(record.storedType())).externals) {
        if (external.field != field) {
            continue;
        }
        external.select.bind(0, record.state().rowid);
        if (!external.select.step()) {
            return std::nullopt;
        }
        const auto bytes = external.select.bytes(0);
        base::Bytes copy(bytes.begin(), bytes.end());
        external.select.reset();
        return copy;
    }
    assert(false);
    return std::nullopt;
}

void ContextCore::insert(std::unique_ptr<Record> record) {
    assert(record->state().phase == Phase::detached && !record->state().context);
    const auto index = m_tables.indexOf(record->storedType());
    // Against what is only in the store the unique index guards, at the save.
    const auto* known = m_tables[index].withIdentifier(record->id());
    if (known && known->isLive()) {
        throw StoreError(StoreErrorCase::invalidRecord);
    }
    auto& reference = m_tables.adopt(index, std::move(record), *this);
    reference.state().phase = Phase::inserted;
    // What a new record owns is known: nothing yet.
    reference.state().ownedIsLoaded = reference.storedType().ownedType != nullptr;
    linkToOwner(reference);
    m_pending.inserted.push_back(&reference);
}

void ContextCore::remove(Record& record) {
    if (!record.isLive() || record.state().context != this) {
        return;
    }
    if (record.storedType().ownedType) {
        if (!record.state().ownedIsLoaded) {
            loadOwned(record);
        }
        const auto owned = record.state().owned;
        for (auto* each : owned) {
            remove(*each);
        }
    }
    unlinkFromOwner(record);
    if (record.isInserted()) {
        std::erase(m_pending.inserted, &record);
        m_tables.forget(record);
        return;
    }
    record.state().phase = Phase::deleted;
    m_pending.deleted.push_back(&record);
}

void ContextCore::noteChanged(Record& record) {
    if (!record.state().isListedAsChanged) {
        record.state().isListedAsChanged = true;
        m_pending.touched.push_back(&record);
    }
}

void ContextCore::rollback() noexcept {
    ChangeSet changes;
    for (auto* record : m_pending.inserted) {
        changes.deleted.push_back(record->id());
        unlinkFromOwner(*record);
        m_tables.forget(*record);
    }
    m_pending.inserted.clear();
    for (auto* record : m_pending.deleted) {
        record->state().phase = Phase::stored;
        changes.inserted.push_back(record->id());
    }
    auto moved = std::exchange(m_pending.deleted, {});
    std::vector<Record*> gone;
    for (auto* record : m_pending.touched) {
        auto& state = record->state();
        state.isListedAsChanged = false;
        if (!record->isLive()) {
            continue;
        }
        auto originals = std::exchange(state.originals, {});
        for (auto& original : originals) {
            const auto& field = record->storedType().fields[original.field];
            auto* slot = record->slot(original.field);
            if (field.kind == FieldKind::externalBytes) {
                *static_cast<ExternalBytes*>(slot) = {.isRead = false, .bytes = std::nullopt};
                continue;
            }
            if (record->storedType().ownerField == original.field) {
                unlinkFromOwner(*record);
                moved.push_back(record);
            }
            writeSlot(slot, field.kind, std::move(original.value));
        }
        if (!originals.empty()) {
            changes.updated.push_back(record->id());
        }
        if (state.isGoneFromStore) {
            gone.push_back(record);
        }
    }
    m_pending.touched.clear();
    // Not before every record is as it was: an owner may have been deleted, too.
    for (auto* record : moved) {
        record->state().owner = ownerInMemory(*record);
        linkToOwner(*record);
    }
    for (auto* record : gone) {
        goneFromStore(*record, changes);
    }
    if (!changes.isEmpty()) {
        announce(std::move(changes), Announcements::Cause::other);
    }
}

void ContextCore::beginStep() {
    auto& connection = m_container.connection();
    if (auto* lock = connection.lock()) {
        lock->acquire();
    }
    ++m_stepDepth;
    if (m_stepDepth == 1) {
        try {
            if (connection.allowsSave()) {
                connection.begin();
            }
            refresh();
        } catch (...) {
            endStep();
            throw;
        }
    }
}

void ContextCore::endStep() noexcept {
    auto& connection = m_container.connection();
    if (m_stepDepth == 1) {
        connection.rollback();
        m_replacement.reset();
    }
    --m_stepDepth;
    if (auto* lock = connection.lock()) {
        lock->release();
    }
    if (m_stepDepth == 0) {
        m_announcements.deliver();
    }
}

void ContextCore::afterStep(std::function<void()> work) {
    m_announcements.add(std::move(work));
    if (m_stepDepth == 0) {
        m_announcements.deliver();
    }
}

void ContextCore::processPendingChanges() {
    if (auto changes = m_pending.changeSet(); !changes.isEmpty()) {
        announce(std::move(changes), Announcements::Cause::other);
    }
}

} // namespace korvex::store
