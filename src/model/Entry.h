#pragma once

#include "base/Bytes.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/EntryType.h"
#include "model/TodoSchedule.h"
#include "store/Condition.h"
#include "store/ExternalBytes.h"
#include "store/Record.h"

#include <optional>
#include <string>

namespace korvex::model {

class Board;

/// The stored fields of an entry, in their declared order.
struct EntryFields {
    base::Uuid id;
    std::string typeRawValue = "text";
    std::string content;
    std::optional<base::Bytes> richTextData;
    store::ExternalBytes attachmentData;
    base::Instant createdAt;
    base::Instant updatedAt;
    std::int64_t sortOrder = 0;
    bool isCompleted = false;
    std::optional<base::Instant> completedAt;
    std::optional<base::DayNumber> dueDay;
    std::optional<base::Instant> dueDate;
    std::optional<base::Instant> dueStartDate;
    std::optional<base::Instant> reminderDate;
    std::optional<base::Uuid> boardID;
};

/// A text entry or a todo on a board. Validates nothing: `EntryService` is the one that changes it.
class Entry final : public store::Record {
public:
    enum Field : std::size_t {
        idField,
        typeRawValueField,
        contentField,
        richTextDataField,
        attachmentDataField,
        createdAtField,
        updatedAtField,
        sortOrderField,
        isCompletedField,
        completedAtField,
        dueDayField,
        dueDateField,
        dueStartDateField,
        reminderDateField,
        boardField,
    };
    static const store::RecordType& recordType();
    /// What the store is asked for: the entries of a board; those that are `isOpenTodo`, and those
    /// that are `isCompletedTodo`.
    static store::Condition onBoard(const base::Uuid& board);
    static store::Condition openTodos();
    static store::Condition completedTodos();

    Entry();
    /// An entry not yet in a context, with these fields but for the board: `setBoard` sets that.
    explicit Entry(EntryFields fields);

    const std::string& typeRawValue() const { return m_fields.typeRawValue; }
    EntryType type() const { return entryType(m_fields.typeRawValue); }
    bool isTodo() const { return type() == EntryType::todo; }
    bool isOpenTodo() const { return isTodo() && !isCompleted(); }
    bool isCompletedTodo() const { return isTodo() && isCompleted(); }
    /// A text, or a todo that is open: what a board lists first.
    bool isActive() const { return !isCompletedTodo(); }
    const std::string& content() const { return m_fields.content; }
    const std::optional<base::Bytes>& richTextData() const { return m_fields.richTextData; }
    /// Read from the store when first asked for (may throw).
    const std::optional<base::Bytes>& attachmentData() const;
    /// Gives back the memory of `attachmentData` until it is asked for again, unless it is changed:
    /// attachments are large, and a context keeps its entries as long as it lives. What
    /// `attachmentData` returned is no longer valid.
    void forgetAttachmentData() const;
    base::Instant createdAt() const { return m_fields.createdAt; }
    base::Instant updatedAt() const { return m_fields.updatedAt; }
    std::int64_t sortOrder() const { return m_fields.sortOrder; }
    bool isCompleted() const { return m_fields.isCompleted; }
    std::optional<base::Instant> completedAt() const { return m_fields.completedAt; }
    std::optional<base::DayNumber> dueDay() const { return m_fields.dueDay; }
    std::optional<base::Instant> dueDate() const { return m_fields.dueDate; }
    std::optional<base::Instant> dueStartDate() const { return m_fields.dueStartDate; }
    std::optional<base::Instant> reminderDate() const { return m_fields.reminderDate; }
    Board* board() const;
    /// The board's identifier even while the board itself is not loaded or gone.
    std::optional<base::Uuid> boardID() const { return m_fields.boardID; }
    /// The four schedule fields as one value.
    TodoSchedule schedule() const;

    void setType(EntryType type);
    void setContent(std::string content);
    void setRichTextData(std::optional<base::Bytes> data);
    void setAttachmentData(std::optional<base::Bytes> data);
    void setCreatedAt(base::Instant createdAt);
    void setUpdatedAt(base::Instant updatedAt);
    void setSortOrder(std::int64_t sortOrder);
    void setIsCompleted(bool isCompleted);
    void setCompletedAt(std::optional<base::Instant> completedAt);
    void setSchedule(const TodoSchedule& schedule);
    void setBoard(Board* board);

private:
    EntryFields m_fields;
};

} // namespace korvex::model
