#include "model/Entry.h"

#include "model/Board.h"

#include <array>
#include <cstddef>

namespace korvex::model {

namespace {

using store::FieldKind;
using Index = store::Field::Index;

constexpr std::array kFields{
    store::Field{"id", FieldKind::uuid, offsetof(EntryFields, id)},
    store::Field{"typeRawValue", FieldKind::text, offsetof(EntryFields, typeRawValue)},
    store::Field{"content", FieldKind::text, offsetof(EntryFields, content)},
    store::Field{"richTextData", FieldKind::optionalBytes, offsetof(EntryFields, richTextData)},
    store::Field{"attachmentData", FieldKind::externalBytes, offsetof(EntryFields, attachmentData)},
    store::Field{"createdAt", FieldKind::date, offsetof(EntryFields, createdAt)},
    store::Field{"updatedAt", FieldKind::date, offsetof(EntryFields, updatedAt)},
    store::Field{"sortOrder", FieldKind::integer, offsetof(EntryFields, sortOrder)},
    store::Field{"isCompleted", FieldKind::boolean, offsetof(EntryFields, isCompleted)},
    store::Field{"completedAt", FieldKind::optionalDate, offsetof(EntryFields, completedAt)},
    store::Field{"dueDay", FieldKind::optionalInteger, offsetof(EntryFields, dueDay)},
    // The schedule clock asks for the next of these two after each change.
    store::Field{"dueDate", FieldKind::optionalDate, offsetof(EntryFields, dueDate),
                 Index::present},
    store::Field{"dueStartDate", FieldKind::optionalDate, offsetof(EntryFields, dueStartDate)},
    store::Field{"reminderDate", FieldKind::optionalDate, offsetof(EntryFields, reminderDate),
                 Index::present},
    store::Field{"board", FieldKind::reference, offsetof(EntryFields, boardID), Index::all},
};

constexpr store::FieldReference kType{Entry::typeRawValueField};
constexpr store::FieldReference kIsCompleted{Entry::isCompletedField};

store::Value valueOf(EntryType type) {
    return std::string(rawValue(type));
}

} // namespace

const store::RecordType& Entry::recordType() {
    static const store::RecordType type{
        .name = "Entry",
        .fields = kFields,
        .make = []() -> std::unique_ptr<store::Record> { return std::make_unique<Entry>(); },
        .ownerField = boardField,
        .ownerType = &Board::recordType,
    };
    return type;
}

store::Condition Entry::onBoard(const base::Uuid& board) {
    return store::FieldReference{boardField} == store::Value(board);
}

store::Condition Entry::openTodos() {
    return kIsCompleted == store::Value(std::int64_t{0}) && kType == valueOf(EntryType::todo);
}

store::Condition Entry::completedTodos() {
    return kIsCompleted == store::Value(std::int64_t{1}) && kType == valueOf(EntryType::todo);
}

Entry::Entry() : Record(recordType(), &m_fields) {}

Entry::Entry(EntryFields fields) : Record(recordType(), &m_fields), m_fields(std::move(fields)) {
    m_fields.boardID.reset();
}

const std::optional<base::Bytes>& Entry::attachmentData() const {
    return externalBytes(attachmentDataField);
}

void Entry::forgetAttachmentData() const {
    forgetExternal(attachmentDataField);
}

Board* Entry::board() const {
    return static_cast<Board*>(owner());
}

TodoSchedule Entry::schedule() const {
    return {.dueDay = m_fields.dueDay,
            .dueDate = m_fields.dueDate,
            .dueStartDate = m_fields.dueStartDate,
            .reminderDate = m_fields.reminderDate};
}

void Entry::setType(EntryType type) {
    assign(typeRawValueField, m_fields.typeRawValue, std::string(rawValue(type)));
}

void Entry::setContent(std::string content) {
    assign(contentField, m_fields.content, std::move(content));
}

void Entry::setRichTextData(std::optional<base::Bytes> data) {
    assign(richTextDataField, m_fields.richTextData, std::move(data));
}

void Entry::setAttachmentData(std::optional<base::Bytes> data) {
    assignExternal(attachmentDataField, std::move(data));
}

void Entry::setCreatedAt(base::Instant createdAt) {
    assign(createdAtField, m_fields.createdAt, createdAt);
}

void Entry::setUpdatedAt(base::Instant updatedAt) {
    assign(updatedAtField, m_fields.updatedAt, updatedAt);
}

void Entry::setSortOrder(std::int64_t sortOrder) {
    assign(sortOrderField, m_fields.sortOrder, sortOrder);
}

void Entry::setIsCompleted(bool isCompleted) {
    assign(isCompletedField, m_fields.isCompleted, isCompleted);
}

void Entry::setCompletedAt(std::optional<base::Instant> completedAt) {
    assign(completedAtField, m_fields.completedAt, completedAt);
}

void Entry::setSchedule(const TodoSchedule& schedule) {
    assign(dueDayField, m_fields.dueDay, schedule.dueDay);
    assign(dueDateField, m_fields.dueDate, schedule.dueDate);
    assign(dueStartDateField, m_fields.dueStartDate, schedule.dueStartDate);
    assign(reminderDateField, m_fields.reminderDate, schedule.reminderDate);
}

void Entry::setBoard(Board* board) {
    setOwner(board);
}

} // namespace korvex::model
