#pragma once

#include "ui/entries/EntryListView.h"
#include "ui/entries/EntryStoring.h"
#include "ui/entries/TypingTimer.h"
#include "ui/workspace/Workspace.h"

#include <QMimeData>
#include <QObject>

#include <functional>

class QMenu;

namespace korvex::ui {

/// The editing of entries on a board's page, one at a time: a stored one or the draft of a new one.
/// Opens and closes the editor and walks from row to row. What is typed is stored while it is typed
/// and on leaving; where that is refused, the text stays in its editor with the reason under it.
/// Main thread.
class EntryEditing final : public QObject {
    Q_OBJECT

public:
    EntryEditing(EntryListModel& model, EntryListView& view, const Workspace& workspace,
                 const Theme& theme);

    bool isOpen() const { return m_edited.isOpen(); }
    /// The stored entry that is edited; null for a draft.
    model::Entry* entry() const { return m_edited.entry(); }

    /// Leaves what is edited now, if that may be left, and edits this row.
    void edit(int row, int caret);
    /// Starts a new todo after this entry; before all others for null.
    void startDraft(const model::Entry* after);
    void startDraftAtEnd();
    /// The same with something typed into it already.
    void startDraftWith(const QString& typed);
    /// Starts a new text after this entry, at the end for null.
    void startTextDraft(const model::Entry* after);
    /// Stores what was typed and closes the editor. False when it was refused: then all stays as it
    /// is.
    bool leave();
    /// Does as `leave`, but a stored todo that was emptied gets its text back.
    bool leaveForGood();
    /// Goes on with a draft: in the place of `edited`, else as a new entry behind `after`, before
    /// all others for null. `why` says under the text where it comes from. False when what is
    /// edited now cannot be left.
    bool resume(const app::Draft& draft, model::Entry* edited, const model::Entry* after,
                const QString& why, int caret);
    /// The UTF-16 offset at which one types; -1 while nothing is edited.
    int caret() { return isOpen() ? m_editors.current().caret() : -1; }
    /// Gives it to what is edited, which comes into sight with what is said of it.
    void takeKeyboard();
    /// Closes the editor, whatever the store says to that. What could not be stored, for another
    /// place.
    std::optional<app::Draft> takeAway();
    /// Whether there is anything to which something can be attached; says so where there is not.
    bool hasWords();
    /// The entry under edit, for what is attached to it; a draft is stored first. Null where that
    /// was refused, with the reason in the editor, and where nothing is edited.
    model::Entry* storedEntry();
    /// The store's records have changed: call before the model follows.
    void recordsChanged();
    /// Says anew when the edited todo is due: the time goes on while one types.
    void showDue();

Q_SIGNALS:
    /// What the user is to be told beside what the editor shows.
    void noticed(const QString& message);
    /// Another entry is edited, or a draft.
    void opened();
    /// What was edited is edited no more: it is stored, or given up.
    void closed();
    void completionRequested(korvex::model::Entry* entry);
    void scheduleRequested(korvex::model::Entry* entry);
    void moveRequested(korvex::model::Entry* entry, int offset);
    void typeChangeRequested(korvex::model::Entry* entry);
    /// It is to go to another board.
    void boardChangeRequested(korvex::model::Entry* entry);
    void deletionRequested(korvex::model::Entry* entry);
    /// The user has given up these words, which are stored and kept nowhere any more.
    void discarded(const korvex::app::Draft& draft);
    /// Files or a picture were pasted into an editor.
    void attachmentsPasted(const QMimeData* offered);
    /// More items may be added; the entry is null for a draft.
    void menuOpening(QMenu* menu, korvex::model::Entry* entry);

private:
    void connectEditors();
    void openStored(model::Entry& entry, int row, int caret);
    void openDraft(model::EntryType type, int row);
    void show(int row, int caret);
    void close();
    void closeToList();
    /// Closes the editor and forgets what was typed.
    void discard();
    /// False when it was refused; then what storing has found out about the entry is followed.
    bool store();
    /// The records have changed; `row` is where the editor stood before.
    void followRecords(int row);
    void heardOf(const store::ChangeSet& changes, EditedEntry::Replaced replaced);
    /// Whether the text of the open editor waits for the store to take it as it is.
    bool isWaiting();
    void storeAndStay();
    void storeSoFar();
    /// A draft that was stored is edited in the row that it has now.
    void settle();
    /// Edits the text of an entry that is gone, completed, moved or of another type as a new one.
    void becomeDraft(int row);

    // What the keys and the menu of an editor ask for: EntryEditingCommands.cpp
    using Request = std::function<void(model::Entry* entry, int caret)>;
    /// Stores, closes, and calls `request` with the entry and where the caret stood.
    void forward(const Request& request);
    void leaveToList();
    void moveAndGoOn(int offset);
    void changeType();
    void split();
    void makeNext();
    void removeAndGoUp();
    /// Deletes a stored todo that was emptied, as far as the store lets it. False when it was not.
    bool deleteEmptied();
    void walk(int direction);
    void pasteLines(const QString& text, const QStringList& others);
    void openMenu(const QPoint& globalPosition);

    EntryListModel& m_model;
    EntryListView& m_view;
    EditedEntry m_edited;
    EntryEditors m_editors;
    DraftKeeping m_drafts;
    EntryStoring m_storing;
    services::UndoManager& m_undo;
    TypingTimer m_typing;
    base::Subscription m_notices;
    base::Subscription m_ownReplacements;
    base::Subscription m_replacements;
};

} // namespace korvex::ui
