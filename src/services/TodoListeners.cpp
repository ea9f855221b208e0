#include "services/TodoListeners.h"

#include <utility>

namespace korvex::services {

TodoListeners::TodoListeners(store::ModelContext& context, ReminderReconciling& reminders,
                             WidgetReloading& widgets)
    : m_context(&context),
      m_waiting(std::make_shared<Waiting>(
          Waiting{.reminders = reminders, .widgets = widgets, .withoutReminder = {}})) {}

void TodoListeners::todosChanged(std::span<const base::Uuid> withoutReminder) const {
    auto& ids = m_waiting->withoutReminder;
    ids.insert(ids.end(), withoutReminder.begin(), withoutReminder.end());
    if (!std::exchange(m_waiting->isWaiting, true)) {
        m_context->afterStep([waiting = m_waiting] { waiting->tell(); });
    }
}

void TodoListeners::Waiting::tell() {
    isWaiting = false;
    if (const auto ids = std::exchange(withoutReminder, {}); !ids.empty()) {
        reminders.removePending(ids);
    }
    widgets.reloadTodoWidgets();
    reminders.requestReconcile();
}

} // namespace korvex::services
