#include "services/EntryChange.h"

#include "base/Digest.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

namespace korvex::services {

using model::Entry;

namespace {

/// The fields of an entry that make sense only together. Its number and its board are its place.
constexpr std::size_t kWords[]{Entry::contentField, Entry::richTextDataField};
constexpr std::size_t kAttachments[]{Entry::attachmentDataField};
constexpr std::size_t kState[]{Entry::typeRawValueField, Entry::isCompletedField,
                               Entry::completedAtField};
constexpr std::size_t kSchedule[]{Entry::dueDayField, Entry::dueDateField, Entry::dueStartDateField,
                                  Entry::reminderDateField};
/// The words of a text are no todo's: where the type is another, they go with it.
constexpr std::size_t kTypeAndWords[]{Entry::contentField, Entry::richTextDataField,
                                      Entry::typeRawValueField, Entry::isCompletedField,
                                      Entry::completedAtField};
constexpr std::span<const std::size_t> kUnits[]{kWords, kAttachments, kState, kSchedule};

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

std::vector<EntryChange> EntryChange::pendingOf(store::ModelContext& context,
                                                std::span<Entry* const> entries) {
    std::vector<Entry*> moved;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(moved),
                 [](const Entry* entry) { return isMoved(*entry); });
    const auto places = formerPlaces(context, moved);
    std::vector<EntryChange> changes;
    auto nextMoved = std::size_t{0};
    for (const auto* const entry : entries) {
        auto change = fieldsOf(*entry);
        if (nextMoved < moved.size() && moved[nextMoved] == entry) {
            change.m_place = places[nextMoved];
            ++nextMoved;
        }
        if (!change.m_units.empty() || change.m_place) {
            changes.push_back(std::move(change));
        }
    }
    return changes;
}

EntryChange EntryChange::fieldsOf(const Entry& entry) {
    EntryChange change;
    change.m_id = entry.id();
    change.m_boardAfter = entry.boardID();
    change.m_isActiveAfter = entry.isActive();
    const auto add = [&](std::span<const std::size_t> fields) {
        auto& unit = change.m_units.emplace_back();
        for (const auto field : fields) {
            unit.push_back({.index = field,
                            .before = entry.originalValue(field),
                            .after = witness(entry.value(field))});
        }
    };
    const auto isOtherType = entry.isChanged(Entry::typeRawValueField);
    if (isOtherType) {
        add(kTypeAndWords);
    }
    for (const auto fields : kUnits) {
        const auto isInFirst = isOtherType && isOneOf(kTypeAndWords, fields.front());
        if (!isInFirst && std::any_of(fields.begin(), fields.end(),
                                      [&](std::size_t field) { return entry.isChanged(field); })) {
            add(fields);
        }
    }
    change.m_updatedAtAfter = entry.updatedAt();
    change.m_setsUpdatedAt = !change.m_units.empty() || entry.isChanged(Entry::updatedAtField);
    return change;
}

std::size_t EntryChange::cost() const {
    auto bytes = sizeof(EntryChange);
    for (const auto& unit : m_units) {
        for (const auto& field : unit) {
            bytes += sizeof(Field) + sizeOf(field.before);
        }
    }
    return bytes;
}

const EntryChange::Unit* EntryChange::unitOf(std::size_t field) const {
    const auto found = std::find_if(m_units.begin(), m_units.end(), [&](const Unit& unit) {
        return std::any_of(unit.begin(), unit.end(),
                           [&](const Field& each) { return each.index == field; });
    });
    return found == m_units.end() ? nullptr : &*found;
}

bool EntryChange::isCompletion() const {
    const auto* const state = unitOf(Entry::isCompletedField);
    return state && std::any_of(state->begin(), state->end(), [](const Field& field) {
               return field.index == Entry::isCompletedField && field.before != field.after;
           });
}

bool EntryChange::isNothing() const {
    return !m_place && std::all_of(m_units.begin(), m_units.end(), [](const Unit& unit) {
        return std::all_of(unit.begin(), unit.end(),
                           [](const Field& field) { return witness(field.before) == field.after; });
    });
}

bool EntryChange::shareFields(const Unit& left, const Unit& right) {
    return std::any_of(left.begin(), left.end(), [&](const Field& field) {
        return std::any_of(right.begin(), right.end(),
                           [&](const Field& other) { return other.index == field.index; });
    });
}

std::optional<EntryChange> EntryChange::followedBy(const EntryChange& later) const {
    if (m_id != later.m_id || m_place || later.m_place) {
        return std::nullopt;
    }
    auto joined = *this;
    joined.m_updatedAtAfter = later.m_updatedAtAfter;
    for (const auto& unit : later.m_units) {
        const auto own = std::find_if(joined.m_units.begin(), joined.m_units.end(),
                                      [&](const Unit& each) { return shareFields(each, unit); });
        if (own == joined.m_units.end()) {
            joined.m_units.push_back(unit);
            continue;
        }
        if (own->size() != unit.size()) {
            return std::nullopt; // the type has changed
        }
        for (std::size_t i = 0; i < unit.size(); ++i) {
            if (witness(unit[i].before) != (*own)[i].after) {
                return std::nullopt;
            }
            (*own)[i].after = unit[i].after;
        }
    }
    return joined;
}

bool EntryChange::isStillOurs(const Entry& entry, const Unit& unit) {
    return std::all_of(unit.begin(), unit.end(), [&](const Field& field) {
        return witness(entry.value(field.index)) == field.after;
    });
}

bool EntryChange::isWrittenOver(const Entry& entry) const {
    for (const auto field : {Entry::contentField, Entry::attachmentDataField}) {
        if (const auto* const unit = unitOf(field); unit && !isStillOurs(entry, *unit)) {
            return true;
        }
    }
    return false;
}

std::optional<EntryPlace> EntryChange::placeToGiveBack(const Entry& entry) const {
    const auto* const state = unitOf(Entry::isCompletedField);
    const auto isWhereItWasPut = entry.boardID() == m_boardAfter &&
                                 entry.isActive() == m_isActiveAfter &&
                                 (!state || isStillOurs(entry, *state));
    return isWhereItWasPut ? m_place : std::nullopt;
}

EntryChange::TakenBack EntryChange::takeBackFields(Entry& entry) const {
    for (const auto& unit : m_units) {
        if (isStillOurs(entry, unit)) {
            for (const auto& field : unit) {
                entry.setValue(field.index, field.before);
            }
        }
    }
    return entry.updatedAt() == m_updatedAtAfter ? TakenBack::exactly : TakenBack::amongOthers;
}

} // namespace korvex::services
