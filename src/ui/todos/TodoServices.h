#pragma once

#include "app/AppPreferences.h"
#include "base/Clock.h"
#include "services/EntryService.h"
#include "store/ModelContext.h"
#include "ui/workspace/Workspace.h"

namespace korvex::ui {

/// What is needed to change a todo at its row, its schedule too; all of it outlives the views.
struct TodoServices {
    store::ModelContext& context;
    services::EntryService& entries;
    schedule::ReminderCenter& reminders;
    app::AppPreferences& preferences;
    const DateTexts& dates;
    const base::Clock& clock;
};

inline TodoServices todoServices(const Workspace& workspace) {
    return {.context = workspace.context,
            .entries = workspace.entries,
            .reminders = workspace.reminders,
            .preferences = workspace.preferences,
            .dates = workspace.dates,
            .clock = workspace.clock};
}

} // namespace korvex::ui
