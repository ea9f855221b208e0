#pragma once

#include "base/Clock.h"
#include "services/EntryService.h"
#include "ui/entries/EntryListView.h"
#include "ui/kit/pages/Page.h"

class QMimeData;

namespace korvex::ui {

/// What is pasted into the list itself, with no editor open: formatted text becomes a text, plain
/// lines become todos, below the current entry and as one step of undo. Main thread.
class EntryPasting final {
public:
    EntryPasting(Page& page, EntryListModel& model, EntryListView& list,
                 services::EntryService& entries, const base::Clock& clock)
        : m_page(page), m_model(model), m_list(list), m_entries(entries), m_clock(clock) {}

    /// Nothing happens where there is no text.
    void paste(const QMimeData& offered);

private:
    /// What is last of the new.
    const model::Entry* create(const QMimeData& offered);
    /// The open entry that the new ones are to stand below; absent for the end.
    std::optional<base::Uuid> place() const;

    Page& m_page;
    EntryListModel& m_model;
    EntryListView& m_list;
    services::EntryService& m_entries;
    const base::Clock& m_clock;
};

} // namespace korvex::ui
