#pragma once

#include "base/Clock.h"
#include "services/EntryService.h"
#include "ui/entries/EntryListView.h"
#include "ui/entries/OpenPlace.h"
#include "ui/kit/pages/Page.h"

#include <string_view>

class QMimeData;

namespace korvex::ui {

/// What is pasted into the list itself, below the current entry, or let go over it: formatted text
/// becomes a text, plain lines become todos, as one step of undo. Main thread.
class EntryPasting final {
public:
    EntryPasting(Page& page, EntryListModel& model, EntryListView& list,
                 services::EntryService& entries, const base::Clock& clock)
        : m_page(page), m_model(model), m_list(list), m_entries(entries), m_clock(clock) {}

    /// Nothing happens where there is no text.
    void paste(const QMimeData& offered);
    /// The same where it was let go; with no place, at the end.
    void drop(const QMimeData& offered, const std::optional<EntryReordering::Place>& place);

private:
    void makeEntries(const QMimeData& offered, const OpenPlace& place, std::string_view undoName);
    /// What is last of the new.
    const model::Entry* create(const QMimeData& offered, const OpenPlace& place,
                               std::string_view undoName);
    /// Below the current entry, as far as that is open; else at the end.
    OpenPlace current() const;

    Page& m_page;
    EntryListModel& m_model;
    EntryListView& m_list;
    services::EntryService& m_entries;
    const base::Clock& m_clock;
};

} // namespace korvex::ui
