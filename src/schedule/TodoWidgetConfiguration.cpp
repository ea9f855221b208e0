#include "schedule/TodoWidgetConfiguration.h"

#include <algorithm>

namespace korvex::schedule {

std::vector<WidgetBoardEntity> WidgetBoardQuery::suggestedEntities() const {
    std::vector<WidgetBoardEntity> result;
    for (const auto* const board : m_boards.boards()) {
        result.push_back({.id = board->id(), .name = board->name()});
    }
    return result;
}

std::vector<WidgetBoardEntity>
WidgetBoardQuery::entities(std::span<const base::Uuid> identifiers) const {
    auto result = suggestedEntities();
    std::erase_if(result, [&](const WidgetBoardEntity& entity) {
        return std::find(identifiers.begin(), identifiers.end(), entity.id) == identifiers.end();
    });
    return result;
}

} // namespace korvex::schedule
