#include "services/EntryChange.h"

#include "base/Digest.h"

#include <algorithm>
#include <array>
#include <span>

namespace korvex::services {

using model::Entry;

namespace {

/// What a person wrote or attached: never to be written over unseen.
constexpr std::array<std::size_t, 3> kWords{Entry::contentField, Entry::richTextDataField,
                                            Entry::attachmentDataField};
/// The fields that are given back with the entry's place.
constexpr std::array<std::size_t, 2> kPlace{Entry::sortOrderField, Entry::boardField};
constexpr std::size_t kFieldCount = Entry::boardField + 1;

bool isOneOf(std::span<const std::size_t> fields, std::size_t field) {
    return std::find(fields.begin(), fields.end(), field) != fields.end();
}

/// A text or bytes are known again by their checksum, without being kept; all else is short enough.
store::Value witness(const store::Value& value) {
    std::span<const std::uint8_t> bytes;
    if (const auto* const text = std::get_if<std::string>(&value)) {
        bytes = {reinterpret_cast<const std::uint8_t*>(text->data()), text->size()};
    } else if (const auto* const data = std::get_if<base::Bytes>(&value)) {
        bytes = *data;
    } else {
        return value;
    }
    return static_cast<std::int64_t>(base::checksum(bytes));
}

std::size_t sizeOf(const store::Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return text->size();
    }
    if (const auto* const data = std::get_if<base::Bytes>(&value)) {
        return data->size();
    }
    return 0;
}

} // namespace

EntryChange EntryChange::pendingOf(const Entry& entry) {
    EntryChange change;
    change.m_id = entry.id();
    change.m_boardAfter = entry.boardID();
    change.m_isActiveAfter = entry.isActive();
    for (std::size_t field = 0; field < kFieldCount; ++field) {
        if (entry.isChanged(field) && !isOneOf(kPlace, field)) {
            change.m_fields.push_back({.index = field,
                                       .before = entry.originalValue(field),
                                       .after = witness(entry.value(field))});
        }
    }
    if (entry.isChanged(Entry::sortOrderField) || entry.isChanged(Entry::boardField)) {
        const auto board = entry.originalValue(Entry::boardField);
        if (const auto* const id = std::get_if<base::Uuid>(&board)) {
            change.m_place = {
                .board = *id,
                .sortOrder = std::get<std::int64_t>(entry.originalValue(Entry::sortOrderField))};
        }
    }
    return change;
}

std::size_t EntryChange::cost() const {
    auto bytes = sizeof(EntryChange);
    for (const auto& field : m_fields) {
        bytes += sizeof(Field) + sizeOf(field.before);
    }
    return bytes;
}

bool EntryChange::isCompletion() const {
    return std::any_of(m_fields.begin(), m_fields.end(),
                       [](const Field& field) { return field.index == Entry::isCompletedField; });
}

bool EntryChange::isStillOurs(const Entry& entry, const Field& field) {
    return witness(entry.value(field.index)) == field.after;
}

bool EntryChange::isWrittenOver(const Entry& entry) const {
    return std::any_of(m_fields.begin(), m_fields.end(), [&](const Field& field) {
        return isOneOf(kWords, field.index) && !isStillOurs(entry, field);
    });
}

bool EntryChange::isWhereItWasPut(const Entry& entry) const {
    return entry.boardID() == m_boardAfter && entry.isActive() == m_isActiveAfter;
}

void EntryChange::takeBackFields(Entry& entry) const {
    for (const auto& field : m_fields) {
        if (isStillOurs(entry, field)) {
            entry.setValue(field.index, field.before);
        }
    }
}

} // namespace korvex::services
