#include "store/ContextCore.h"

#include "store/FieldAccess.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <algorithm>
#include <cassert>

namespace korvex::store {

namespace {

using Phase = RecordState::Phase;

/// Whether `left` comes before `right` by the keys; absent values first, as in SQLite.
bool isBefore(const Record& left, const Record& right, const std::vector<SortKey>& order) {
    for (const SortKey& key : order) {
        const Value a = left.value(key.field);
        const Value b = right.value(key.field);
        if (a != b) {
            return (a < b) == key.ascending;
        }
    }
    return false;
}

bool isPendingOf(const Record& record, const RecordType& type) {
    return &record.storedType() == &type && record.isLive() &&
           (record.isInserted() || record.hasChanges());
}

} // namespace

ContextCore::ContextCore(ModelContainer& container) : m_container(container) {
    for (const RecordType* type : container.schema().types) {
        m_tables.push_back({type, {}, {}});
    }
    m_revision = container.connection().revision();
}

std::size_t ContextCore::indexOf(const RecordType& type) const {
    for (std::size_t i = 0; i < m_tables.size(); ++i) {
        if (m_tables[i].type == &type) {
            return i;
        }
    }
    assert(false);
    return 0;
}

Record& ContextCore::adopt(std::size_t index, std::unique_ptr<Record> record) {
    Record& reference = *record;
    reference.state().context = this;
    m_records.push_back(std::move(record));
    m_tables[index].byIdentifier[reference.id()] = &reference;
    return reference;
}

Record& ContextCore::materialize(std::size_t index, const Statement& row) {
    Table& table = m_tables[index];
    const RowCodec& codec = statements(index).codec;
    const std::int64_t rowid = codec.rowid(row);
    const auto known = table.byRowid.find(rowid);
    if (known != table.byRowid.end()) {
        return *known->second;
    }
    auto record = table.type->make();
    codec.readRow(row, *record);
    RecordState& state = record->state();
    state.phase = Phase::stored;
    state.rowid = rowid;
    state.version = codec.version(row);
    table.byRowid.emplace(rowid, record.get());
    Record& reference = adopt(index, std::move(record));
    resolveOwner(reference);
    linkToOwner(reference);
    return reference;
}

void ContextCore::resolveOwner(Record& record) {
    const RecordType& type = record.storedType();
    if (!type.ownerField) {
        return;
    }
    const auto& reference = *static_cast<std::optional<base::Uuid>*>(record.slot(*type.ownerField));
    if (!reference) {
        record.state().owner = nullptr;
        return;
    }
    if (!m_lastOwner || !m_lastOwner->isLive() || m_lastOwner->id() != *reference) {
        m_lastOwner = find(type.ownerType(), *reference);
    }
    record.state().owner = m_lastOwner;
}

void ContextCore::linkToOwner(Record& record) {
    RecordState& state = record.state();
    // A record that is not in the context yet is linked when it is inserted.
    if (record.isLive() && state.owner && state.owner->state().ownedIsLoaded) {
        auto& siblings = state.owner->state().owned;
        state.ownedIndex = siblings.size();
        siblings.push_back(&record);
    }
}

void ContextCore::unlinkFromOwner(Record& record) {
    RecordState& state = record.state();
    if (state.owner && state.owner->state().ownedIsLoaded) {
        auto& siblings = state.owner->state().owned;
        if (state.ownedIndex < siblings.size() && siblings[state.ownedIndex] == &record) {
            siblings[state.ownedIndex] = siblings.back();
            siblings[state.ownedIndex]->state().ownedIndex = state.ownedIndex;
            siblings.pop_back();
        }
    }
}

Record* ContextCore::find(const RecordType& type, const base::Uuid& id) {
    const std::size_t index = indexOf(type);
    const auto found = m_tables[index].byIdentifier.find(id);
    if (found != m_tables[index].byIdentifier.end()) {
        return found->second->isLive() ? found->second : nullptr;
    }
    Statement& select = statements(index).selectByIdentifier;
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
    const std::size_t index = indexOf(type);
    std::vector<Value> bindings;
    std::string sql = tableSql::select(type) + " WHERE " + descriptor.condition.sql(type, bindings);
    if (!descriptor.order.empty()) {
        sql += " ORDER BY ";
        for (std::size_t i = 0; i < descriptor.order.size(); ++i) {
            const SortKey& key = descriptor.order[i];
            sql += (i > 0 ? ", " : "") + tableSql::quoted(type.fields[key.field].name) +
                   (key.ascending ? "" : " DESC");
        }
    }
    // Pending changes of this type can move records into the result, out of it, and within it: then
    // SQLite's limit and order say nothing yet.
    const auto concernsType = [&](const auto& records) {
        return std::any_of(records.begin(), records.end(),
                           [&](const Record* record) { return &record->storedType() == &type; });
    };
    const bool isPlain =
        !concernsType(m_inserted) && !concernsType(m_changed) && !concernsType(m_deleted);
    if (isPlain && descriptor.limit) {
        sql += " LIMIT " + std::to_string(*descriptor.limit);
    }
    Statement statement(m_container.connection().handle(), sql);
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        statement.bindValue(static_cast<int>(i), bindings[i]);
    }
    if (isPlain) {
        while (statement.step()) {
            sink(materialize(index, statement));
        }
        return;
    }
    std::vector<Record*> result;
    while (statement.step()) {
        Record& record = materialize(index, statement);
        if (record.isLive() && !isPendingOf(record, type)) {
            result.push_back(&record);
        }
    }
    for (const auto* pending : {&m_inserted, &m_changed}) {
        for (Record* record : *pending) {
            if (isPendingOf(*record, type) && descriptor.condition.matches(*record)) {
                result.push_back(record);
            }
        }
    }
    std::stable_sort(result.begin(), result.end(), [&](const Record* left, const Record* right) {
        return isBefore(*left, *right, descriptor.order);
    });
    if (descriptor.limit && result.size() > *descriptor.limit) {
        result.resize(*descriptor.limit);
    }
    for (Record* record : result) {
        sink(*record);
    }
}

std::size_t ContextCore::count(const RecordType& type, const Condition& condition) {
    if (hasChanges()) {
        std::size_t number = 0;
        fetch(type, {.condition = condition}, [&](Record&) { ++number; });
        return number;
    }
    Statement statement = prepare("SELECT count(*) FROM ", type, condition);
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
    for (const std::size_t field : fields) {
        columns += (columns.empty() ? "SELECT " : ", ") + tableSql::quoted(type.fields[field].name);
    }
    Statement statement = prepare(columns + " FROM ", type, condition);
    std::vector<Value> values(fields.size());
    while (statement.step()) {
        for (std::size_t i = 0; i < fields.size(); ++i) {
            values[i] = statement.value(static_cast<int>(i), type.fields[fields[i]].kind);
        }
        sink(values);
    }
}

Statement ContextCore::prepare(const std::string& what, const RecordType& type,
                               const Condition& condition) {
    std::vector<Value> bindings;
    const std::string sql =
        what + tableSql::quoted(type.name) + " WHERE " + condition.sql(type, bindings);
    Statement statement(m_container.connection().handle(), sql);
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        statement.bindValue(static_cast<int>(i), bindings[i]);
    }
    return statement;
}

bool ContextCore::isStored(const Record& record) {
    Statement& count = statements(indexOf(record.storedType())).countByIdentifier;
    count.bind(0, record.id());
    std::int64_t number = 0;
    while (count.step()) {
        number = count.integer(0);
    }
    return number == 1;
}

void ContextCore::loadOwned(Record& owner) {
    if (!owner.storedType().ownedType) {
        return;
    }
    const RecordType& type = owner.storedType().ownedType();
    std::vector<Record*> members;
    fetch(type,
          {.condition =
               Condition::compare(*type.ownerField, Condition::Comparison::equal, owner.id())},
          [&](Record& record) { members.push_back(&record); });
    RecordState& state = owner.state();
    state.owned = std::move(members);
    state.ownedIsLoaded = true;
    for (std::size_t i = 0; i < state.owned.size(); ++i) {
        state.owned[i]->state().ownedIndex = i;
    }
}

std::optional<base::Bytes> ContextCore::readExternal(const Record& record, std::size_t field) {
    for (auto& external : statements(indexOf(record.storedType())).externals) {
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
    const std::size_t index = indexOf(record->storedType());
    // Against what is only in the store the unique index guards, at the save.
    const auto known = m_tables[index].byIdentifier.find(record->id());
    if (known != m_tables[index].byIdentifier.end() && known->second->isLive()) {
        throw StoreError(StoreErrorCase::invalidRecord);
    }
    Record& reference = adopt(index, std::move(record));
    reference.state().phase = Phase::inserted;
    // What a new record owns is known: nothing yet.
    reference.state().ownedIsLoaded = reference.storedType().ownedType != nullptr;
    linkToOwner(reference);
    m_inserted.push_back(&reference);
}

void ContextCore::remove(Record& record) {
    if (!record.isLive() || record.state().context != this) {
        return;
    }
    if (record.storedType().ownedType) {
        if (!record.state().ownedIsLoaded) {
            loadOwned(record);
        }
        const std::vector<Record*> owned = record.state().owned;
        for (Record* each : owned) {
            remove(*each);
        }
    }
    unlinkFromOwner(record);
    if (record.isInserted()) {
        std::erase(m_inserted, &record);
        forget(record);
        return;
    }
    record.state().phase = Phase::deleted;
    m_deleted.push_back(&record);
}

void ContextCore::noteChanged(Record& record) {
    if (!record.state().isListedAsChanged) {
        record.state().isListedAsChanged = true;
        m_changed.push_back(&record);
    }
}

bool ContextCore::hasChanges() const {
    return !m_inserted.empty() || !m_deleted.empty() ||
           std::any_of(m_changed.begin(), m_changed.end(),
                       [](const Record* record) { return record->hasChanges(); });
}

std::vector<Record*> ContextCore::inserted() const {
    return m_inserted;
}

std::vector<Record*> ContextCore::changed() const {
    std::vector<Record*> records;
    std::copy_if(m_changed.begin(), m_changed.end(), std::back_inserter(records),
                 [](const Record* record) { return record->isLive() && record->hasChanges(); });
    return records;
}

std::vector<Record*> ContextCore::deleted() const {
    return m_deleted;
}

void ContextCore::forget(Record& record) {
    Table& table = m_tables[indexOf(record.storedType())];
    const auto byIdentifier = table.byIdentifier.find(record.id());
    if (byIdentifier != table.byIdentifier.end() && byIdentifier->second == &record) {
        table.byIdentifier.erase(byIdentifier);
    }
    const auto byRowid = table.byRowid.find(record.state().rowid);
    if (byRowid != table.byRowid.end() && byRowid->second == &record) {
        table.byRowid.erase(byRowid);
    }
    detach(record);
}

void ContextCore::detach(Record& record) {
    RecordState& state = record.state();
    state.phase = Phase::deleted;
    state.context = nullptr;
    state.owner = nullptr;
    state.originals.clear();
    state.owned.clear();
    state.ownedIsLoaded = true;
}

void ContextCore::rollback() {
    ChangeSet changes;
    for (Record* record : m_inserted) {
        changes.deleted.push_back(record->id());
        unlinkFromOwner(*record);
        forget(*record);
    }
    m_inserted.clear();
    for (Record* record : m_deleted) {
        record->state().phase = Phase::stored;
        changes.inserted.push_back(record->id());
        linkToOwner(*record);
    }
    m_deleted.clear();
    std::vector<Record*> gone;
    for (Record* record : m_changed) {
        RecordState& state = record->state();
        state.isListedAsChanged = false;
        if (!record->isLive()) {
            continue;
        }
        const auto originals = std::exchange(state.originals, {});
        for (const auto& original : originals) {
            const Field& field = record->storedType().fields[original.field];
            void* slot = record->slot(original.field);
            if (field.kind == FieldKind::externalBytes) {
                *static_cast<ExternalBytes*>(slot) = {.isRead = false, .bytes = std::nullopt};
                continue;
            }
            if (record->storedType().ownerField == original.field) {
                unlinkFromOwner(*record);
                writeSlot(slot, field.kind, original.value);
                resolveOwner(*record);
                linkToOwner(*record);
                continue;
            }
            writeSlot(slot, field.kind, original.value);
        }
        if (!originals.empty()) {
            changes.updated.push_back(record->id());
        }
        if (state.isGoneFromStore) {
            gone.push_back(record);
        }
    }
    m_changed.clear();
    for (Record* record : gone) {
        goneFromStore(*record, changes);
    }
    if (!changes.isEmpty()) {
        announce(std::move(changes), false);
    }
}

void ContextCore::beginStep() {
    StoreConnection& connection = m_container.connection();
    if (StoreLock* lock = connection.lock()) {
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
    StoreConnection& connection = m_container.connection();
    if (m_stepDepth == 1) {
        connection.rollback();
    }
    --m_stepDepth;
    if (StoreLock* lock = connection.lock()) {
        lock->release();
    }
    if (m_stepDepth == 0) {
        deliver();
    }
}

void ContextCore::announce(ChangeSet changes, bool isSave) {
    m_announcements.push_back({std::move(changes), isSave});
    if (m_stepDepth == 0) {
        deliver();
    }
}

void ContextCore::deliver() noexcept {
    if (m_isDelivering) {
        return;
    }
    m_isDelivering = true;
    while (!m_announcements.empty()) {
        const Announcement next = std::move(m_announcements.front());
        m_announcements.pop_front();
        if (next.isSave) {
            m_container.didSave().emit(next.changes);
        }
        didChange.emit(next.changes);
    }
    m_isDelivering = false;
}

void ContextCore::processPendingChanges() {
    if (autosaves && hasChanges()) {
        save();
        return;
    }
    ChangeSet changes;
    const auto append = [](std::vector<base::Uuid>& ids, const std::vector<Record*>& records) {
        for (const Record* record : records) {
            ids.push_back(record->id());
        }
    };
    append(changes.inserted, m_inserted);
    append(changes.updated, changed());
    append(changes.deleted, m_deleted);
    if (!changes.isEmpty()) {
        announce(std::move(changes), false);
    }
}

} // namespace korvex::store
