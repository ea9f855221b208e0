#pragma once

#include "ui/attachments/AttachmentActions.h"
#include "ui/entries/AttachmentInput.h"
#include "ui/entries/EntryEditing.h"

#include <QWidget>

#include <memory>

class QLabel;
class QMenu;

namespace korvex::ui {

class ArchivedNotice;
class BoardHeader;
class ErrorBanner;

/// The content of one board: header, messages, entries. Carries out what the user asks of entries.
class BoardPage final : public QWidget {
    Q_OBJECT

public:
    BoardPage(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);
    ~BoardPage() override;

    model::Board* board() const { return m_model.board(); }
    /// False when what is being edited cannot be left; then the page stays as it is.
    bool showBoard(model::Board& board);
    /// Stores what is being edited. False when that was refused.
    bool leaveEditor() { return m_editing.leaveForGood(); }
    void startTodo();
    /// After the current entry.
    void startText();
    void focusList();
    /// Chooses the entry's row and scrolls it into the middle, among the completed todos too. False
    /// when it is not on this board, or what is being edited cannot be left.
    bool showEntry(model::Entry& entry);
    /// An archived board is only looked at.
    bool isReadOnly() const { return m_model.isReadOnly(); }
    void moveToBoard(const base::Uuid& id, model::Board& board);
    /// Takes the window's latest change back, or does it again, and shows what came back.
    void undo();
    void redo();
    /// The store's records have changed.
    void refresh();
    void showMessage(const QString& message);

    EntryListView& list() { return *m_list; }
    EntryListModel& entries() { return m_model; }
    ErrorBanner& banner() { return *m_banner; }

Q_SIGNALS:
    void iconRequested(const QRect& globalAnchor);
    void menuRequested(const QPoint& globalPosition);
    void unarchiveRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectList();
    void connectAttachments();
    /// Asks for files for what is edited, or else for the current entry.
    void attachFiles();
    /// The entry is null for a draft.
    void addAttachmentItems(QMenu& menu, model::Entry* entry);
    void toggle(int row);
    void complete(model::Entry& entry);
    void endLingering(const model::Entry& entry);
    void restore(model::Entry& entry);
    void move(model::Entry& entry, int offset);
    void drop(const base::Uuid& id, int targetRow, model::EntryPlacement placement);
    void changeType(model::Entry& entry);
    void remove(model::Entry& entry);
    void chooseBoard(model::Entry& entry);
    /// Undoes or redoes.
    template <typename Operation>
    void takeBack(Operation&& operation);
    void openSchedule(model::Entry& entry);
    void openMenu(int row, const QPoint& globalPosition);
    void updateHeader();
    /// Runs an operation and says in the banner why it was refused; true when it was done.
    template <typename Operation>
    bool perform(Operation&& operation);

    const Workspace& m_workspace;
    const Theme& m_theme;
    EntryListModel m_model;
    BoardHeader* m_header;
    ArchivedNotice* m_archivedNotice;
    ErrorBanner* m_banner;
    QLabel* m_emptyHint;
    EntryListView* m_list;
    EntryEditing m_editing;
    AttachmentActions m_attachments;
    AttachmentInput m_attachmentInput;
    base::Subscription m_ticks;
};

} // namespace korvex::ui
