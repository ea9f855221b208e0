#pragma once

#include "base/Instant.h"
#include "base/Signal.h"
#include "model/Entry.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/todos/LingeringTicks.h"
#include "ui/todos/TodoServices.h"

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
class TodoActions final : public TodoTicking {
    Q_DECLARE_TR_FUNCTIONS(korvex::ui::TodoActions)

public:
    TodoActions(Page& page, const TodoServices& services, services::UndoManager& undo,
                const Theme& theme);

    bool complete(model::Entry& entry, std::optional<base::Instant> completedAt) override;
    bool restore(model::Entry& entry, std::optional<std::int64_t> position) override;

    struct Removal {
        /// What the row showed of the entry.
        QString text;
        /// Leaves the list where the user can go on.
        std::function<void()> goOn;
    };
    /// Deletes the entry, and offers for a while to take that back.
    void remove(model::Entry& entry, const Removal& removal);
    /// Says on the page what was done just now, and offers to take that back, until it was.
    void offerUndo(const QString& message);
    /// Where the todo's schedule is shown, on the screen; absent when it is not any more.
    using Place = std::function<std::optional<QRect>()>;
    /// Lets the schedule of an open todo be edited there, and follows when rows come and go.
    void openSchedule(model::Entry& entry, const Place& place);

private:
    Page& m_page;
    TodoServices m_services;
    services::UndoManager& m_undo;
    const Theme& m_theme;
    /// The step that can be taken back by a message, and that message.
    services::UndoManager::StepId m_offered = 0;
    ErrorBanner::MessageId m_offer = 0;
    base::Subscription m_undoChanges;
};

} // namespace korvex::ui
