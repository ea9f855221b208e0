#include "services/NewEntryPlace.h"

#include "services/EntryNumbering.h"
#include "services/EntryOrder.h"

#include <algorithm>

namespace korvex::services {

using model::Entry;

NewEntryPlace::NewEntryPlace(store::ModelContext& context, const model::Board& board,
                             const std::optional<base::Uuid>& after,
                             const std::optional<base::Uuid>& before)
    : m_board(board) {
    if (!after && !before) {
        m_appending = appendingUnloaded(context, board);
    }
    if (!m_appending) {
        m_active = activeEntries(board);
        m_index = insertionIndex(after, before, m_active);
    }
}

void NewEntryPlace::number(std::span<Entry* const> created) {
    if (m_appending) {
        numberFrom(m_appending->activeCount, created, m_appending->completed);
        return;
    }
    m_active.insert(m_active.begin() + static_cast<std::ptrdiff_t>(m_index), created.begin(),
                    created.end());
    assignSortOrder(m_active, m_board);
}

std::optional<NewEntryPlace::Appending>
NewEntryPlace::appendingUnloaded(store::ModelContext& context, const model::Board& board) {
    if (board.entriesAreLoaded() || context.hasChanges()) {
        return std::nullopt;
    }
    const auto onBoard = Entry::onBoard(board.id());
    std::vector<std::int64_t> orders;
    context.fetchValues<Entry>({Entry::sortOrderField}, onBoard && !Entry::completedTodos(),
                               [&](std::span<const store::Value> values) {
                                   orders.push_back(std::get<std::int64_t>(values.front()));
                               });
    // Dense means that every place is taken once. Anything else needs a renumbering of all.
    const auto count = static_cast<std::int64_t>(orders.size());
    std::vector<bool> taken(orders.size());
    for (const auto order : orders) {
        if (order < 0 || order >= count || taken[static_cast<std::size_t>(order)]) {
            return std::nullopt;
        }
        taken[static_cast<std::size_t>(order)] = true;
    }
    auto completed = context.fetch<Entry>({.condition = onBoard && Entry::completedTodos()});
    std::sort(completed.begin(), completed.end(),
              [](const Entry* left, const Entry* right) { return ordered(*left, *right); });
    return Appending{.activeCount = count, .completed = std::move(completed)};
}

} // namespace korvex::services
