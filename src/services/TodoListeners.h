#pragma once

#include "base/Uuid.h"
#include "services/Collaborators.h"
#include "store/ModelContext.h"

#include <memory>
#include <span>
#include <vector>

namespace korvex::services {

/// Everybody who is told when stored todos have changed: once for all changes of a step, when it
/// has let go of the store and told its own observers. A value over them and the context, who must
/// outlive it; its copies tell together. Main thread.
class TodoListeners {
public:
    TodoListeners(store::ModelContext& context, ReminderReconciling& reminders,
                  WidgetReloading& widgets);

    /// After the save. `withoutReminder` are those whose pending reminder is no longer right.
    void todosChanged(std::span<const base::Uuid> withoutReminder = {}) const;

private:
    /// What is to be told at the end of the step under way.
    struct Waiting {
        ReminderReconciling& reminders;
        WidgetReloading& widgets;
        std::vector<base::Uuid> withoutReminder;
        bool isWaiting = false;

        void tell();
    };

    store::ModelContext* m_context;
    std::shared_ptr<Waiting> m_waiting;
};

} // namespace korvex::services
