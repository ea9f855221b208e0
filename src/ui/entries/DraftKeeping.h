#pragma once

#include "app/DraftFolder.h"
#include "richtext/stored/RichTextSerializer.h"
#include "ui/entries/EditedEntry.h"
#include "ui/entries/EntryEditors.h"

namespace korvex::ui {

/// Keeps what is typed into the editor of a row as a draft beside the store, while it cannot be
/// stored. Main thread.
class DraftKeeping final {
public:
    DraftKeeping(const EntryListModel& model, const EditedEntry& edited, EntryEditors& editors,
                 app::DraftFolder& folder, const richtext::RichTextSerializer& serializer,
                 const base::Clock& clock)
        : m_model(model),
          m_edited(edited),
          m_editors(editors),
          m_folder(folder),
          m_serializer(serializer),
          m_clock(clock) {}

    /// Another entry is edited from here on. A draft that was kept until then waits for the next
    /// start.
    void begin();
    /// The rows are about to follow the store, and may all go with their board: keeps what a draft
    /// tells of the place.
    void rememberPlace() { m_after = predecessor(); }
    /// Writes what the editor shows, if there are words in it that are not kept yet. False when
    /// that failed too.
    bool keep();
    /// It was stored, or the user has given it up.
    void forget();
    /// What the editor shows, as a draft.
    app::Draft draft() const;
    /// What was typed.
    richtext::AttributedString textOf(const app::Draft& draft) const;
    /// What the editor shows is this draft.
    void resume(const app::Draft& draft) { m_id = draft.id; }

private:
    /// The open entry above what is edited; the last one known where its row is not shown any more.
    std::optional<base::Uuid> predecessor() const;

    const EntryListModel& m_model;
    const EditedEntry& m_edited;
    EntryEditors& m_editors;
    app::DraftFolder& m_folder;
    const richtext::RichTextSerializer& m_serializer;
    const base::Clock& m_clock;
    /// Of the draft that is kept, if there is one.
    std::optional<base::Uuid> m_id;
    /// What was written last under it.
    std::optional<app::Draft> m_kept;
    std::optional<base::Uuid> m_after;
};

} // namespace korvex::ui
