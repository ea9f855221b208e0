#include "schedule/WidgetRefreshService.h"

#include <utility>

namespace korvex::schedule {

WidgetRefreshService::WidgetRefreshService(ReloadTimelines reloadTimelines, base::LogSink& log)
    : m_reloadTimelines(std::move(reloadTimelines)), m_log(log, "WidgetRefreshService") {}

void WidgetRefreshService::reloadTodoWidgets() {
    m_reloadTimelines(kBoardTodosWidget);
    m_log.info("Requested todo widget timeline reloads");
}

} // namespace korvex::schedule
