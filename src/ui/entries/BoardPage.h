#pragma once

#include "ui/boards/BoardRenaming.h"
#include "ui/entries/AttachmentInput.h"
#include "ui/entries/EntryActions.h"
#include "ui/entries/EntryMenu.h"
#include "ui/entries/EntryPasting.h"
#include "ui/workspace/ChangeCause.h"
#include "ui/workspace/Workspace.h"

namespace korvex::ui {

class BoardHeader;
class BoardListing;
class NoticeLine;

/// The content of one board: header, messages, entries. Main thread.
class BoardPage final : public Page {
    Q_OBJECT

public:
    BoardPage(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);
    ~BoardPage() override;

    QString title() const override;
    void takeKeyboard() override;
    bool showRecord(const base::Uuid& id) override;

    model::Board* board() const { return m_model.board(); }
    bool isEditing() const { return m_editing.isOpen(); }
    /// Returns false when what is being edited cannot be left; then the page stays as it is.
    bool showBoard(model::Board& board);
    /// Chooses the entry's row and scrolls it into the middle, among the completed todos too. Does
    /// nothing when it is not on this board, or what is being edited cannot be left.
    void showEntry(model::Entry& entry);
    /// Where words come from, as the editor says it under them.
    struct Origin {
        QString onTheirBoard;
        /// Where their board is no longer there.
        QString elsewhere;
        /// Where it is archived; empty for the same as above.
        QString archived = {};
    };
    enum class GivenWay {
        /// The board could not be read, which the page says.
        no,
        alone,
        /// The editor says where they were typed.
        withWords,
    };
    /// Shows this board, since the other is gone. What was typed there and can be stored nowhere
    /// comes along.
    GivenWay giveWayTo(model::Board& board, ChangeCause cause);
    /// Goes on with a draft in its place on this board, with the caret at this UTF-16 offset or at
    /// the end; `why` says where it comes from. False when what is being edited cannot be left.
    bool resume(const app::Draft& draft, const QString& why, int caret = -1);
    void startTodo();
    /// Starts a new text after the current entry.
    void startText();
    /// Gives the keyboard to the list, on its first row where none is chosen.
    void focusList();
    /// An archived board is only looked at, as is every board of a store that cannot be written.
    bool isReadOnly() const { return m_model.isReadOnly(); }
    bool showsArchivedBoard() const;
    /// The store's records have changed. To be called in sight or not: who counts the open todos
    /// hears of them from here.
    void refresh();

    EntryActions& actions() { return m_actions; }
    EntryListView& list() { return *m_list; }
    EntryListModel& entries() { return m_model; }
    /// Where what is done with the board from its page happens.
    BoardListing& header();

Q_SIGNALS:
    void iconRequested(const QRect& globalAnchor);
    void menuRequested(const QRect& globalAnchor);
    void unarchiveRequested();
    /// What was edited on the board is edited no more.
    void editingEnded();
    /// What was discarded is to be gone on with, on its board, or what has no board any more.
    void resumeRequested(const korvex::app::Draft& draft,
                         const korvex::ui::BoardPage::Origin& origin);

protected:
    bool leaveEditing() override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    EntryActions::Parts parts();
    void connectParts();
    void connectList();
    void paste();
    void updateHeader();
    void toggleCompleted();
    /// Tells the list how much of it the banner covers.
    void measureBanner();
    /// Whether a new entry can be begun, with nothing else under edit; says why not.
    bool canAdd();
    /// Says what came of an editing beside what its editor shows.
    void tellOfEditing(const QString& message);

    const Workspace& m_workspace;
    EntryListModel m_model;
    BoardHeader* m_header;
    BoardRenaming m_renaming;
    NoticeLine* m_archivedNotice;
    EntryListView* m_list;
    EntryEditing m_editing;
    AttachmentActions m_attachments;
    AttachmentInput m_attachmentInput;
    EntryActions m_actions;
    EntryMenu m_menu;
    EntryPasting m_pasting;
    base::Subscription m_ticks;
    /// What the editing has told last, and of which entry.
    ErrorBanner::MessageId m_told = 0;
    std::optional<base::Uuid> m_toldOf;
    bool m_isToldJustNow = false;
};

} // namespace korvex::ui
