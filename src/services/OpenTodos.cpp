#include "services/OpenTodos.h"

#include "services/EntryOrder.h"

#include <algorithm>

namespace korvex::services {

std::size_t openTodoCount(store::ModelContext& context, const model::Board& board) {
    using model::Entry;
    if (board.entriesAreLoaded()) {
        const auto& entries = board.entries();
        return static_cast<std::size_t>(
            std::count_if(entries.begin(), entries.end(),
                          [](const Entry* entry) { return entry->isOpenTodo(); }));
    }
    return context.count<Entry>(Entry::onBoard(board.id()) && Entry::openTodos());
}

std::vector<model::Entry*> openTodos(store::ModelContext& context, const model::Board& board) {
    using model::Entry;
    const auto found =
        context.fetch<Entry>({.condition = Entry::onBoard(board.id()) && Entry::openTodos()});
    return activeEntries(found, board.id());
}

} // namespace korvex::services
