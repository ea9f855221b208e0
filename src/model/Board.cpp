#include "model/Board.h"

#include "model/BoardIcon.h"
#include "model/Entry.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace korvex::model {

namespace {

using store::FieldKind;

constexpr std::array kFields{
    store::Field{"id", FieldKind::uuid, offsetof(BoardFields, id)},
    store::Field{"name", FieldKind::text, offsetof(BoardFields, name)},
    store::Field{"createdAt", FieldKind::date, offsetof(BoardFields, createdAt)},
    store::Field{"updatedAt", FieldKind::date, offsetof(BoardFields, updatedAt)},
    store::Field{"sortOrder", FieldKind::integer, offsetof(BoardFields, sortOrder)},
    store::Field{"isSystem", FieldKind::boolean, offsetof(BoardFields, isSystem)},
    store::Field{"isArchived", FieldKind::boolean, offsetof(BoardFields, isArchived)},
    store::Field{"icon", FieldKind::optionalText, offsetof(BoardFields, icon)},
    store::Field{"iconColor", FieldKind::optionalText, offsetof(BoardFields, iconColor)},
    store::Field{"systemIdentifier", FieldKind::optionalText,
                 offsetof(BoardFields, systemIdentifier)},
    store::Field{"mergedIntoBoardID", FieldKind::optionalUuid,
                 offsetof(BoardFields, mergedIntoBoardID)},
};

} // namespace

std::optional<std::string_view> impliedSystemIdentifier(std::string_view name) {
    return name == "Inbox"   ? std::optional(kInboxIdentifier)
           : name == "Today" ? std::optional(kLegacyInboxIdentifier)
                             : std::nullopt;
}

const store::RecordType& Board::recordType() {
    static const store::RecordType type{
        .name = "Board",
        .fields = kFields,
        .make = []() -> std::unique_ptr<store::Record> { return std::make_unique<Board>(); },
        .ownedType = &Entry::recordType,
    };
    return type;
}

Board::Board() : Record(recordType(), &m_fields) {}

Board::Board(BoardFields fields) : Record(recordType(), &m_fields), m_fields(std::move(fields)) {}

void Board::setName(std::string name) {
    assign(nameField, m_fields.name, std::move(name));
}

void Board::setCreatedAt(base::Instant createdAt) {
    assign(createdAtField, m_fields.createdAt, createdAt);
}

void Board::setUpdatedAt(base::Instant updatedAt) {
    assign(updatedAtField, m_fields.updatedAt, updatedAt);
}

void Board::setSortOrder(std::int64_t sortOrder) {
    assign(sortOrderField, m_fields.sortOrder, sortOrder);
}

void Board::setIsSystem(bool isSystem) {
    assign(isSystemField, m_fields.isSystem, isSystem);
}

void Board::setIsArchived(bool isArchived) {
    assign(isArchivedField, m_fields.isArchived, isArchived);
}

void Board::setIcon(std::optional<std::string> icon) {
    assign(iconField, m_fields.icon, std::move(icon));
}

void Board::setIconColor(std::optional<std::string> iconColor) {
    assign(iconColorField, m_fields.iconColor, std::move(iconColor));
}

void Board::setSystemIdentifier(std::optional<std::string> identifier) {
    assign(systemIdentifierField, m_fields.systemIdentifier, std::move(identifier));
}

void Board::setMergedIntoBoardID(std::optional<base::Uuid> id) {
    assign(mergedIntoBoardIDField, m_fields.mergedIntoBoardID, id);
}

std::vector<Entry*> Board::entries() const {
    std::vector<Entry*> entries;
    entries.reserve(owned().size());
    for (auto* record : owned()) {
        entries.push_back(static_cast<Entry*>(record));
    }
    return entries;
}

std::string Board::iconSystemName() const {
    const auto known = m_fields.icon ? boardIcon(*m_fields.icon) : std::nullopt;
    return std::string(rawValue(known.value_or(BoardIcon::board)));
}

std::string Board::deletionMessage() const {
    const auto all = entries();
    const auto completed = std::count_if(all.begin(), all.end(),
                                         [](const Entry* entry) { return entry->isCompleted(); });
    return "Deleting " + m_fields.name +
           " permanently deletes this board and all its entries. Completed entries to delete: " +
           std::to_string(completed) +
           ". All connections to this board will also be removed. This can’t be undone.";
}

} // namespace korvex::model
