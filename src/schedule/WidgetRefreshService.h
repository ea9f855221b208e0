#pragma once

#include "base/Log.h"
#include "services/Collaborators.h"

#include <functional>
#include <string_view>

namespace korvex::schedule {

/// The kind of the widgets that show a board's todos.
inline constexpr std::string_view kBoardTodosWidget = "Korvex.BoardTodos";

/// Asks the widgets to show what is stored now. Main thread.
class WidgetRefreshService final : public services::WidgetReloading {
public:
    /// Has the widgets of a kind reload; must not throw.
    using ReloadTimelines = std::function<void(std::string_view kind)>;

    WidgetRefreshService(ReloadTimelines reloadTimelines, base::LogSink& log);

    void reloadTodoWidgets() override;

private:
    ReloadTimelines m_reloadTimelines;
    base::Logger m_log;
};

} // namespace korvex::schedule
