#pragma once

#include "richtext/stored/RichTextSerializer.h"
#include "schedule/ScheduleClock.h"
#include "ui/attachments/AttachmentSummaries.h"
#include "ui/kit/lists/RowModel.h"
#include "ui/todos/DueLabel.h"

#include <vector>

namespace korvex::ui {

enum class EntryRowKind { entry, draft, newTodo, completedHeading, completed };

struct EntryListRow {
    EntryRowKind kind = EntryRowKind::entry;
    /// Null for a row that shows no entry.
    model::Entry* entry = nullptr;
    /// Tells whether what is shown has changed.
    std::size_t stamp = 0;

    RowKey key() const { return {static_cast<int>(kind), entry}; }
    bool operator==(const EntryListRow& other) const { return key() == other.key(); }
};

/// The rows of one board's page: its active entries, among them perhaps a draft, the row that makes
/// a new todo, and the completed todos under a heading that opens and closes. Follows the store by
/// small steps (see `refresh`), so that selection, editor and scroll position stay.
class EntryListModel final : public RowModel<EntryListRow> {
    Q_OBJECT

public:
    using RowKind = EntryRowKind;

    EntryListModel(store::ModelContext& context, const richtext::RichTextSerializer& serializer,
                   const schedule::ScheduleClock& clock, const DateTexts& dates,
                   QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Shows this board; nothing for null.
    void setBoard(model::Board* board);
    model::Board* board() const { return m_board; }
    /// An archived board is only looked at, as is every board of a store that cannot be written:
    /// nothing is edited, ticked or made on it.
    bool isReadOnly() const { return m_isReadOnly; }
    /// Whether the rows are those of an archived board.
    bool isArchived() const { return m_isArchived; }
    /// Takes in what the store's records say now. Only rows that differ are touched.
    void refresh();

    RowKind kind(int row) const { return at(row).kind; }
    /// The entry of a row; null for the rows that are none.
    model::Entry* entry(int row) const { return at(row).entry; }
    /// The row that shows the entry; -1 when none does.
    int rowOf(const model::Entry& entry) const;
    int rowOf(RowKind kind) const;
    /// The nearest entry above a row that is still open, and that new ones can stand after; null
    /// when there is none.
    const model::Entry* openEntryAbove(int row) const;
    /// The text of the row as it is shown.
    QString text(int row) const;
    /// An entry's text with its formatting, decoded with every call.
    richtext::AttributedString richText(const model::Entry& entry) const;
    /// When a todo is due, as it reads now.
    DueLabel dueLabel(const model::Entry& entry) const;
    /// The attachments of a row that has an entry; valid until that changes.
    const services::AttachmentList& attachments(int row) const {
        return m_attachments.of(*entry(row));
    }
    /// Open entries within the content limit; others are shown and not edited.
    bool isEditable(int row) const;

    int openTodoCount() const { return m_openTodoCount; }
    bool isCompletedExpanded() const { return m_isCompletedExpanded; }
    void setCompletedExpanded(bool expanded);

    /// Puts the draft after this entry, before all entries when it is null. There is at most one;
    /// its row.
    int openDraft(const model::Entry* after);
    /// Opens the draft before the row for new todos, where it stays when entries are added there.
    int openDraftAtEnd();
    void closeDraft();
    /// The draft was stored as this entry, which has its row from now on: nothing moves.
    void settleDraft(const model::Entry& entry);
    bool hasDraft() const { return m_draftPlace != DraftPlace::none; }

    /// Lets a todo that is being completed stay in its row until `release`.
    void linger(model::Entry& entry);
    void release(const model::Entry& entry);
    bool isLingering(const model::Entry& entry) const;

Q_SIGNALS:
    void countsChanged();

private:
    using Row = EntryListRow;
    enum class DraftPlace { none, start, afterEntry, end };

    std::vector<Row> wantedRows();
    void addLingering(std::vector<Row>& rows) const;
    void addDraft(std::vector<Row>& rows) const;
    void show(std::vector<Row> wanted);
    QString accessibleDescription(const model::Entry& entry) const;

    store::ModelContext& m_context;
    const richtext::RichTextSerializer& m_serializer;
    const schedule::ScheduleClock& m_clock;
    const DateTexts& m_dates;
    AttachmentSummaries m_attachments;
    model::Board* m_board = nullptr;
    std::vector<model::Entry*> m_completed;
    std::vector<model::Entry*> m_lingering;
    int m_openTodoCount = 0;
    bool m_isReadOnly = false;
    bool m_isArchived = false;
    bool m_isCompletedExpanded = false;
    DraftPlace m_draftPlace = DraftPlace::none;
    const model::Entry* m_draftAfter = nullptr;
};

} // namespace korvex::ui
