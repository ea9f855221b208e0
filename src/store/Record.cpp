#include "store/Record.h"

#include "store/ContextCore.h"
#include "store/FieldAccess.h"

#include <algorithm>
#include <cassert>

namespace korvex::store {

const base::Uuid& Record::id() const {
    return *static_cast<const base::Uuid*>(slot(0));
}

bool Record::isChanged(std::size_t field) const {
    return std::any_of(m_state.originals.begin(), m_state.originals.end(),
                       [&](const auto& original) { return original.field == field; });
}

Value Record::value(std::size_t field) const {
    const auto kind = m_type->fields[field].kind;
    if (kind == FieldKind::externalBytes) {
        const auto& bytes = externalBytes(field);
        return bytes ? Value(*bytes) : Value();
    }
    return readSlot(slot(field), kind);
}

Value Record::originalValue(std::size_t field) const {
    const auto original = std::find_if(m_state.originals.begin(), m_state.originals.end(),
                                       [&](const auto& each) { return each.field == field; });
    if (original == m_state.originals.end()) {
        return value(field);
    }
    if (m_type->fields[field].kind == FieldKind::externalBytes) {
        const auto bytes = m_state.context->readExternal(*this, field);
        return bytes ? Value(*bytes) : Value();
    }
    return original->value;
}

void Record::setValue(std::size_t field, Value value) {
    if (m_type->ownerField == field) {
        Record* owner = nullptr;
        if (!isAbsent(value)) {
            assert(m_state.context);
            owner = m_state.context->find(m_type->ownerType(), std::get<base::Uuid>(value));
        }
        setOwner(owner);
        return;
    }
    const auto kind = m_type->fields[field].kind;
    if (kind != FieldKind::externalBytes && readSlot(slot(field), kind) == value) {
        return;
    }
    willChange(field);
    writeSlot(slot(field), kind, std::move(value));
    didChange(field);
}

const std::optional<base::Bytes>& Record::externalBytes(std::size_t field) const {
    auto& external = *static_cast<ExternalBytes*>(slot(field));
    if (!external.isRead) {
        assert(m_state.context);
        external.bytes = m_state.context->readExternal(*this, field);
        external.isRead = true;
    }
    return external.bytes;
}

void Record::forgetExternal(std::size_t field) const {
    auto& external = *static_cast<ExternalBytes*>(slot(field));
    if (m_state.phase == RecordState::Phase::stored && external.bytes && !isChanged(field)) {
        external = {.isRead = false, .bytes = std::nullopt};
    }
}

void Record::assignExternal(std::size_t field, std::optional<base::Bytes> bytes) {
    auto& external = *static_cast<ExternalBytes*>(slot(field));
    if (external.isRead && external.bytes == bytes) {
        return;
    }
    willChange(field);
    external = {.isRead = true, .bytes = std::move(bytes)};
    didChange(field);
}

Record* Record::owner() const {
    return m_state.context ? m_state.context->ownerOf(const_cast<Record&>(*this)) : m_state.owner;
}

void Record::setOwner(Record* owner) {
    assert(m_type->ownerField);
    const auto field = *m_type->ownerField;
    auto& reference = *static_cast<std::optional<base::Uuid>*>(slot(field));
    // A reference to an owner that is gone is taken away all the same.
    if (owner == this->owner() && (owner || !reference)) {
        return;
    }
    willChange(field);
    unlinkFromOwner(*this);
    m_state.owner = owner;
    reference = owner ? std::optional(owner->id()) : std::nullopt;
    linkToOwner(*this);
    didChange(field);
}

const std::vector<Record*>& Record::owned() const {
    if (!m_state.ownedIsLoaded && m_state.context) {
        m_state.context->loadOwned(const_cast<Record&>(*this));
    }
    return m_state.owned;
}

void Record::willChange(std::size_t field) {
    // Only a stored record has originals: an inserted one has nothing to go back to.
    if (m_state.phase != RecordState::Phase::stored || isChanged(field)) {
        return;
    }
    const auto kind = m_type->fields[field].kind;
    // The old external bytes need not be read to be replaced; rollback reads them again.
    auto original = kind == FieldKind::externalBytes ? Value() : readSlot(slot(field), kind);
    m_state.originals.push_back({field, std::move(original)});
    m_state.context->noteChanged(*this);
}

void Record::didChange(std::size_t field) {
    if (m_state.phase != RecordState::Phase::stored) {
        return;
    }
    const auto kind = m_type->fields[field].kind;
    if (kind == FieldKind::externalBytes) {
        return;
    }
    // Changed and changed back is not changed.
    const auto original = std::find_if(m_state.originals.begin(), m_state.originals.end(),
                                       [&](const auto& each) { return each.field == field; });
    if (original != m_state.originals.end() && original->value == readSlot(slot(field), kind)) {
        m_state.originals.erase(original);
    }
}

} // namespace korvex::store
