#pragma once

#include "ui/entries/EntryListView.h"
#include "ui/entries/TextEditor.h"
#include "ui/entries/TodoEditor.h"

#include <QMimeData>
#include <QObject>

#include <memory>

namespace korvex::ui {

/// The editing of entries on a board's page, one at a time: a stored one or the draft of a new one.
/// What was typed is stored on leaving; where that is refused, the text stays in its editor with
/// the reason under it. Main thread.
class EntryEditing final : public QObject {
    Q_OBJECT

public:
    EntryEditing(EntryListModel& model, EntryListView& view, const Workspace& workspace,
                 const Theme& theme);
    ~EntryEditing() override;

    bool isOpen() const { return m_target != Target::none; }
    /// The stored entry that is edited; null for a draft.
    model::Entry* entry() const { return m_entry; }

    /// Leaves what is edited now, if that may be left, and edits this row.
    void edit(int row, int caret);
    /// A new todo after this entry; before all others for null.
    void startDraft(const model::Entry* after);
    void startDraftAtEnd();
    /// A new text after this entry, at the end for null.
    void startTextDraft(const model::Entry* after);
    /// Stores what was typed and closes the editor. False when it was refused: then all stays as it
    /// is.
    bool leave();
    /// As `leave`, but a stored todo that was emptied gets its text back.
    bool leaveForGood();
    /// Closes the editor and forgets what was typed.
    void discard();
    /// The entry under edit, for what is attached to it; a draft is stored first. Null where that
    /// was refused, with the reason in the editor.
    model::Entry* storedEntry();
    /// The store's records have changed: call before the model follows.
    void recordsChanged();

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void completionRequested(korvex::model::Entry* entry);
    void scheduleRequested(korvex::model::Entry* entry);
    void moveRequested(korvex::model::Entry* entry, int offset);
    void typeChangeRequested(korvex::model::Entry* entry);
    /// It is to go to another board.
    void boardChangeRequested(korvex::model::Entry* entry);
    void deletionRequested(korvex::model::Entry* entry);
    /// Files or a picture were pasted into an editor.
    void attachmentsPasted(const QMimeData* offered);
    /// More items may be added; the entry is null for a draft.
    void menuOpening(QMenu* menu, korvex::model::Entry* entry);

private:
    enum class Target { none, stored, draft };

    void connectEditor(RowEditor& editor);
    void connectTodoEditor();
    void connectTextEditor();
    TextEditor& textEditor();
    RowEditor& editorFor(model::EntryType type);

    void openStored(model::Entry& entry, int row, int caret);
    void openDraft(model::EntryType type, int row);
    void show(RowEditor& editor, int row, int caret);
    void close();
    /// Gives the editor what the store has.
    void load(const model::Entry& entry);
    /// Stores the text; on success `m_entry` is the entry that holds it, if any.
    bool store();
    void create();
    void update();
    bool isStoredChanged() const;
    /// Stores, closes, and calls `request` with the entry and where the caret stood.
    template <typename Request>
    void forward(Request&& request);
    void storeAndStay();
    void leaveToList();
    void showLimit();
    void moveAndGoOn(int offset);
    void changeType();
    void openMenu(const QPoint& globalPosition);

    void makeNext();
    void removeAndGoUp();
    void walk(int direction);
    void pasteLines(const QString& text, const QStringList& others);
    std::vector<model::Entry*> createTodos(const std::vector<std::string>& contents,
                                           const model::Entry* after);
    model::Entry& createText(const richtext::AttributedString& text, const model::Entry* after);
    void split();
    const model::Entry* openPredecessor(int row) const;
    bool isStillHere() const;
    void becomeDraft();

    EntryListModel& m_model;
    EntryListView& m_view;
    const Workspace& m_workspace;
    const Theme& m_theme;
    std::unique_ptr<TodoEditor> m_todoEditor;
    /// Made when the first text is edited.
    std::unique_ptr<TextEditor> m_textEditor;
    /// The one in use.
    RowEditor* m_editor = nullptr;
    Target m_target = Target::none;
    model::EntryType m_type = model::EntryType::todo;
    model::Entry* m_entry = nullptr;
    /// What the store had when the editor was filled last.
    std::string m_storedContent;
    std::optional<base::Bytes> m_storedText;
    bool m_isStoring = false;
};

} // namespace korvex::ui
