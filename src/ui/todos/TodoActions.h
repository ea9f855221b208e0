#pragma once

#include "base/Instant.h"
#include "base/Signal.h"
#include "model/Entry.h"
#include "ui/workspace/Workspace.h"

#include <QCoreApplication>
#include <QRect>

#include <cstdint>
#include <functional>
#include <optional>

namespace korvex::ui {

class Page;
class Theme;

/// What the user does with an entry at its row, the same on every page: carries it out, and tells
/// on the page why it was refused. Main thread.
class TodoActions {
    Q_DECLARE_TR_FUNCTIONS(korvex::ui::TodoActions)

public:
    TodoActions(Page& page, const Workspace& workspace, const Theme& theme);

    /// Completes an open todo and restores a completed one. False when that was refused, as below.
    bool toggle(model::Entry& entry);
    /// At this moment; now without one.
    bool complete(model::Entry& entry, std::optional<base::Instant> completedAt = std::nullopt);
    /// To this place on its board; to the end without one.
    bool restore(model::Entry& entry, std::optional<std::int64_t> position = std::nullopt);

    struct Removal {
        /// What the row showed of the entry.
        QString text;
        /// Leaves the list where the user can go on.
        std::function<void()> goOn;
    };
    void remove(model::Entry& entry, const Removal& removal);
    /// Says on the page what was done just now, and offers to take that back, until it was.
    void offerUndo(const QString& message);
    /// Lets the schedule of an open todo be edited under this place on the screen.
    void openSchedule(model::Entry& entry, const QRect& globalAnchor);

private:
    Page& m_page;
    const Workspace& m_workspace;
    const Theme& m_theme;
    services::UndoManager::StepId m_offered = 0;
    base::Subscription m_undoChanges;
};

} // namespace korvex::ui
