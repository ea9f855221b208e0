#pragma once

#include "base/Signal.h"
#include "services/EntryService.h"
#include "ui/entries/DraftKeeping.h"

#include <QCoreApplication>

namespace korvex::ui {

/// Stores what was typed into the editor of a row, now and then while it is typed and at the end.
/// Where the service refuses, the text stays in the editor and is kept as a draft. What another
/// program has written into the entry meanwhile is taken in, not written over. Main thread.
class EntryStoring final {
    Q_DECLARE_TR_FUNCTIONS(EntryStoring)

public:
    EntryStoring(EntryListModel& model, EditedEntry& edited, EntryEditors& editors,
                 DraftKeeping& drafts, services::EntryService& entries, services::UndoManager& undo,
                 store::ModelContext& context, const base::Clock& clock)
        : m_model(model),
          m_edited(edited),
          m_editors(editors),
          m_drafts(drafts),
          m_entries(entries),
          m_undo(undo),
          m_context(context),
          m_clock(clock) {}

    /// Whether the records change because of what is stored here.
    bool isBusy() const { return m_isBusy; }
    /// Stores the text where that has changed. False when it was refused, with the reason under the
    /// text. A draft that was created counts as a draft until `settleDraft`; a text that was
    /// emptied is deleted, and so is a new todo.
    bool store();
    /// The same while it is being typed: a text that is empty for now stays as it is stored.
    void storeSoFar();
    /// Whether what was refused last may be taken later as it is, as by a store that was busy.
    bool mayBeTakenLater() const { return m_mayBeTakenLater; }
    /// Whether there is something typed that the store does not have.
    bool hasUnstored();
    /// The user gives up what was typed: of a new entry all, of another what was typed since it was
    /// opened. Returns the words as they could be gone on with; nothing where there were none.
    std::optional<app::Draft> giveUp();
    /// The editor shows again what stood there before this editing, which is not stored yet.
    void putBack();
    /// An entry was opened in its editor, or a draft.
    void begin();
    /// The store has another text by now: takes it into the editor, beside what was typed there.
    void takeInOthers();
    /// What the user is to be told beside what the editor shows.
    base::Signal<const QString&>& noticed() { return m_noticed; }
    /// The draft that was created is a row as others are.
    void settleDraft();
    /// Makes two entries of a text, parted at the caret, and returns the second one. Null where
    /// there is nothing to split, and where it was refused: what was typed may be stored then.
    model::Entry* split();
    /// Makes todos of the lines, in the place of the draft or behind the entry that is edited.
    /// Returns the last of them, or null where it was refused.
    model::Entry* addLines(const QStringList& lines);

private:
    bool isEmptiedNewTodo() const;
    /// What was refused, if anything.
    std::optional<QString> tryToStore();
    void stored();
    /// What was said of the text under it, of a refusal or of where it comes from, is not so any
    /// more.
    void endMessage();
    /// Keeps what cannot be stored, and says so under the text, where it stays until it is stored.
    void refuse(const QString& reason);
    void createOrUpdate();
    void create();
    void update();
    void keepOthersTodo(const model::Entry& entry);
    /// The entry that the new ones are to stand after; null: at the very front.
    const model::Entry* predecessorOfDraft() const;
    std::vector<model::Entry*> createTodos(const std::vector<std::string>& contents,
                                           const model::Entry* after,
                                           services::EditingSession* session);
    model::Entry& createText(const model::Entry* after);

    EntryListModel& m_model;
    EditedEntry& m_edited;
    EntryEditors& m_editors;
    DraftKeeping& m_drafts;
    services::EntryService& m_entries;
    services::UndoManager& m_undo;
    store::ModelContext& m_context;
    const base::Clock& m_clock;
    bool m_isBusy = false;
    bool m_mayBeTakenLater = false;
    services::EditingSession m_session;
    base::Signal<const QString&> m_noticed;
};

} // namespace korvex::ui
