#include "store/RecordTables.h"

#include <algorithm>
#include <cassert>

namespace korvex::store {

namespace {

Record* found(const auto& records, const auto& key) {
    const auto place = records.find(key);
    return place != records.end() ? place->second : nullptr;
}

void erase(auto& records, const auto& key, const Record& record) {
    const auto place = records.find(key);
    if (place != records.end() && place->second == &record) {
        records.erase(place);
    }
}

} // namespace

Record* RecordTables::Table::atRowid(std::int64_t rowid) const {
    return found(byRowid, rowid);
}

Record* RecordTables::Table::withIdentifier(const base::Uuid& id) const {
    return found(byIdentifier, id);
}

void RecordTables::Table::forgetRow(const Record& record) {
    erase(byRowid, record.state().rowid, record);
}

RecordTables::RecordTables(std::span<const RecordType* const> types) {
    for (const auto* type : types) {
        m_tables.push_back({type, {}, {}});
    }
}

std::size_t RecordTables::indexOf(const RecordType& type) const {
    const auto table = std::find_if(m_tables.begin(), m_tables.end(),
                                    [&](const auto& each) { return each.type == &type; });
    assert(table != m_tables.end());
    return static_cast<std::size_t>(table - m_tables.begin());
}

Record& RecordTables::adopt(std::size_t index, std::unique_ptr<Record> record,
                            ContextCore& context) {
    auto& reference = *record;
    reference.state().context = &context;
    m_records.push_back(std::move(record));
    m_tables[index].byIdentifier[reference.id()] = &reference;
    return reference;
}

void RecordTables::forget(Record& record) {
    auto& table = of(record);
    auto& state = record.state();
    erase(table.byIdentifier, record.id(), record);
    table.forgetRow(record);
    state.phase = RecordState::Phase::deleted;
    state.context = nullptr;
    state.owner = nullptr;
    state.originals.clear();
    state.owned.clear();
    state.ownedIsLoaded = true;
}

void linkToOwner(Record& record) {
    auto& state = record.state();
    // A record that is not in the context yet is linked when it is inserted.
    if (record.isLive() && state.owner && state.owner->state().ownedIsLoaded) {
        auto& siblings = state.owner->state().owned;
        if (state.ownedIndex >= siblings.size() || siblings[state.ownedIndex] != &record) {
            state.ownedIndex = siblings.size();
            siblings.push_back(&record);
        }
    }
}

void unlinkFromOwner(Record& record) {
    auto& state = record.state();
    if (state.owner && state.owner->state().ownedIsLoaded) {
        auto& siblings = state.owner->state().owned;
        if (state.ownedIndex < siblings.size() && siblings[state.ownedIndex] == &record) {
            siblings[state.ownedIndex] = siblings.back();
            siblings[state.ownedIndex]->state().ownedIndex = state.ownedIndex;
            siblings.pop_back();
        }
    }
}

} // namespace korvex::store
