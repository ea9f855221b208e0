#pragma once

#include "ui/entries/EntryListView.h"
#include "ui/kit/Page.h"
#include "ui/workspace/Workspace.h"

class QMimeData;

namespace korvex::ui {

/// What is pasted into the list itself, with no editor open: formatted text becomes a text, plain
/// lines become todos, below the current entry and as one step of undo. Main thread.
class EntryPasting final {
public:
    EntryPasting(Page& page, EntryListModel& model, EntryListView& list,
                 const Workspace& workspace)
        : m_page(page), m_model(model), m_list(list), m_workspace(workspace) {}

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
    const Workspace& m_workspace;
};

} // namespace korvex::ui
