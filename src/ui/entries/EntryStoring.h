#pragma once

#include "services/EntryService.h"
#include "ui/entries/EditedEntry.h"
#include "ui/entries/EntryEditors.h"

namespace korvex::ui {

/// Stores what was typed into the editor of a row. Where the service refuses, the text stays in the
/// editor with the reason under it. Main thread.
class EntryStoring final {
public:
    EntryStoring(EntryListModel& model, EditedEntry& edited, EntryEditors& editors,
                 services::EntryService& entries, const base::Clock& clock)
        : m_model(model),
          m_edited(edited),
          m_editors(editors),
          m_entries(entries),
          m_clock(clock) {}

    /// Whether the records change because of what is stored here.
    bool isBusy() const { return m_isBusy; }
    /// Stores the text where that has changed. False when it was refused. A draft that was created
    /// counts as a draft until `settleDraft`; an entry that was emptied is gone then.
    bool store();
    /// The draft that was created is a row as others are.
    void settleDraft();
    /// Makes two entries of a text, parted at the caret, and returns the second one. Null where
    /// there is nothing to split, and where it was refused: what was typed may be stored then.
    model::Entry* split();
    /// Makes todos of further lines, and of a draft's `text` too; the editor keeps `text` for an
    /// entry that is stored already. Returns the last of them, or null where it was refused.
    model::Entry* addLines(const QString& text, const QStringList& others);

private:
    void create();
    void update();
    /// The entry that the new ones are to stand after; null: at the very front.
    const model::Entry* predecessorOfDraft() const;
    std::vector<model::Entry*> createTodos(const std::vector<std::string>& contents,
                                           const model::Entry* after);
    model::Entry& createText(const model::Entry* after);

    EntryListModel& m_model;
    EditedEntry& m_edited;
    EntryEditors& m_editors;
    services::EntryService& m_entries;
    const base::Clock& m_clock;
    bool m_isBusy = false;
};

} // namespace korvex::ui
