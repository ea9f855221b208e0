#include "services/OpenTodos.h"

#include "model/Entry.h"

namespace korvex::services {

std::size_t openTodoCount(store::ModelContext& context, const model::Board& board) {
    using model::Entry;
    return context.count<Entry>(Entry::onBoard(board.id()) && Entry::openTodos());
}

} // namespace korvex::services
