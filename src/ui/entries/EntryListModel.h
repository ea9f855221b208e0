#pragma once

#include "model/Entry.h"
#include "ui/attachments/AttachmentSummaries.h"
#include "ui/kit/RowDiff.h"
#include "ui/workspace/Workspace.h"

#include <QAbstractListModel>

#include <optional>
#include <vector>

namespace korvex::ui {

/// The rows of one board's page: its active entries, among them perhaps a draft, the row that makes
/// a new todo, and the completed todos under a heading that opens and closes. Follows the store by
/// small steps (see `refresh`), so that selection, editor and scroll position stay.
class EntryListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    enum class RowKind { entry, draft, newTodo, completedHeading, completed };
    enum Role { kindRole = Qt::UserRole };

    explicit EntryListModel(const Workspace& workspace, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Null shows nothing.
    void setBoard(model::Board* board);
    model::Board* board() const { return m_board; }
    /// An archived board is only looked at: nothing is edited, ticked or made on it.
    bool isReadOnly() const { return m_isReadOnly; }
    /// Takes in what the store's records say now. Only rows that differ are touched.
    void refresh();

    RowKind kind(int row) const { return m_rows[static_cast<std::size_t>(row)].kind; }
    /// The entry of a row; null for the rows that are none.
    model::Entry* entry(int row) const { return m_rows[static_cast<std::size_t>(row)].entry; }
    /// -1 when no row shows it.
    int rowOf(const model::Entry& entry) const;
    int rowOf(RowKind kind) const;
    /// Text as it is shown: an entry over the limit is cut to its preview.
    QString text(int row) const;
    /// Of a row that has an entry; valid until that changes.
    const services::AttachmentList& attachments(int row) const {
        return m_attachments.of(*entry(row));
    }
    /// Open entries within the content limit; others are shown and not edited.
    bool isEditable(int row) const;

    int openTodoCount() const { return m_openTodoCount; }
    std::size_t completedCount() const { return m_completed.size(); }
    bool isCompletedExpanded() const { return m_isCompletedExpanded; }
    void setCompletedExpanded(bool expanded);

    /// Puts the draft after this entry, before all entries when it is null. There is at most one;
    /// its row.
    int openDraft(const model::Entry* after);
    /// Before the row for new todos, also when entries are added there.
    int openDraftAtEnd();
    void closeDraft();
    bool hasDraft() const { return m_draftPlace != DraftPlace::none; }
    /// The entry before the draft; null when it stands first.
    model::Entry* draftPredecessor() const;

    /// Lets a todo that is being completed stay in its row until `release`.
    void linger(model::Entry& entry);
    void release(const model::Entry& entry);
    bool isLingering(const model::Entry& entry) const;

Q_SIGNALS:
    void countsChanged();

private:
    enum class DraftPlace { none, start, afterEntry, end };
    struct Row {
        RowKind kind = RowKind::entry;
        model::Entry* entry = nullptr;
        /// Tells whether what is shown has changed.
        std::size_t stamp = 0;
    };

    std::vector<Row> wantedRows();
    void addLingering(std::vector<Row>& rows) const;
    void addDraft(std::vector<Row>& rows) const;
    void apply(const std::vector<Row>& wanted);
    void applySteps(const std::vector<RowStep>& steps, const std::vector<Row>& wanted);
    void applyAtOnce(const std::vector<Row>& wanted);
    QString accessibleDescription(const model::Entry& entry) const;

    const Workspace& m_workspace;
    AttachmentSummaries m_attachments;
    model::Board* m_board = nullptr;
    std::vector<Row> m_rows;
    std::vector<model::Entry*> m_completed;
    std::vector<model::Entry*> m_lingering;
    int m_openTodoCount = 0;
    bool m_isReadOnly = false;
    bool m_isCompletedExpanded = false;
    DraftPlace m_draftPlace = DraftPlace::none;
    const model::Entry* m_draftAfter = nullptr;
};

} // namespace korvex::ui
