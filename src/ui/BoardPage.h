#pragma once

#include "ui/EntryEditing.h"

#include <QWidget>

#include <memory>

class QLabel;

namespace korvex::ui {

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
    void startTodo() { m_editing.startDraftAtEnd(); }
    /// After the current entry.
    void startText();
    void focusList();
    /// The store's records have changed.
    void refresh();
    void showMessage(const QString& message);

    EntryListView& list() { return *m_list; }
    EntryListModel& entries() { return m_model; }
    ErrorBanner& banner() { return *m_banner; }

Q_SIGNALS:
    void iconRequested(const QRect& globalAnchor);
    void menuRequested(const QPoint& globalPosition);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectList();
    void toggle(int row);
    void complete(model::Entry& entry);
    void endLingering(const model::Entry& entry);
    void restore(model::Entry& entry);
    void move(model::Entry& entry, int offset);
    void drop(const base::Uuid& id, int targetRow, model::EntryPlacement placement);
    void changeType(model::Entry& entry);
    /// Asks first where something would be lost.
    void requestDeletion(model::Entry& entry);
    void remove(model::Entry& entry);
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
    ErrorBanner* m_banner;
    QLabel* m_emptyHint;
    EntryListView* m_list;
    EntryEditing m_editing;
    base::Subscription m_ticks;
};

} // namespace korvex::ui
