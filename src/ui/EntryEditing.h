#pragma once

#include "ui/EntryListView.h"
#include "ui/TodoEditor.h"

#include <QObject>

#include <memory>

namespace korvex::ui {

/// The editing of todos on a board's page, one at a time: a stored one or the draft of a new one.
/// What was typed is stored on leaving; where that is refused, the text stays in its editor with
/// the reason under it. Main thread.
class EntryEditing final : public QObject {
    Q_OBJECT

public:
    EntryEditing(EntryListModel& model, EntryListView& view, const Workspace& workspace,
                 const Theme& theme);
    ~EntryEditing() override;

    bool isOpen() const { return m_target != Target::none; }
    /// The stored todo that is edited; null for a draft.
    model::Entry* entry() const { return m_entry; }

    /// Leaves what is edited now, if that may be left, and edits this row.
    void edit(int row, int caret);
    /// A new todo after this entry; before all others for null.
    void startDraft(const model::Entry* after);
    void startDraftAtEnd();
    /// Stores what was typed and closes the editor. False when it was refused: then all stays as it
    /// is.
    bool leave();
    /// As `leave`, but a stored todo that was emptied gets its text back.
    bool leaveForGood();
    /// The store's records have changed: call before the model follows.
    void recordsChanged();

Q_SIGNALS:
    void completionRequested(korvex::model::Entry* entry);
    void scheduleRequested(korvex::model::Entry* entry);
    void moveRequested(korvex::model::Entry* entry, int offset);

private:
    enum class Target { none, stored, draft };

    void open(Target target, model::Entry* entry, int row, const QString& text, int caret);
    void close();
    void discard();
    /// Stores the text; on success `m_entry` is the todo that holds it, if any.
    bool store();
    bool createFromDraft(const QString& text);
    void makeNext();
    void removeAndGoUp();
    void walk(int direction);
    void pasteLines(const QString& text, const QStringList& others);
    std::vector<model::Entry*> create(const std::vector<std::string>& contents,
                                      const model::Entry* after);
    const model::Entry* openPredecessor(int row) const;
    bool isStillHere() const;
    void becomeDraft();

    EntryListModel& m_model;
    EntryListView& m_view;
    const Workspace& m_workspace;
    std::unique_ptr<TodoEditor> m_editor;
    Target m_target = Target::none;
    model::Entry* m_entry = nullptr;
    /// The stored text that the editor was given.
    QString m_original;
    bool m_isStoring = false;
};

} // namespace korvex::ui
