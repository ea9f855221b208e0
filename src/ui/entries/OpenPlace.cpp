#include "ui/entries/OpenPlace.h"

#include "services/EntryOrder.h"

namespace korvex::ui {

OpenPlace placeAfter(const model::Entry* entry, const model::Board& board) {
    if (entry) {
        return {.after = entry->id(), .before = {}};
    }
    const auto active = services::activeEntries(board);
    return {.after = {},
            .before = active.empty() ? std::nullopt : std::optional(active.front()->id())};
}

OpenPlace openPlace(const EntryListModel& model, const EntryReordering::Place& place) {
    const auto isBefore = place.placement == model::EntryPlacement::before;
    return placeAfter(model.openEntryAbove(isBefore ? place.row : place.row + 1), *model.board());
}

} // namespace korvex::ui
