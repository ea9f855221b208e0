#include "services/EntryOrder.h"

#include "model/ServiceErrors.h"

#include <algorithm>
#include <iterator>

namespace korvex::services {

using model::Entry;

namespace {

bool isBefore(const Entry* left, const Entry* right) {
    return ordered(*left, *right);
}

void sortInOrder(std::vector<Entry*>& entries) {
    // They mostly come in order already: looking costs less than sorting.
    if (!std::is_sorted(entries.begin(), entries.end(), isBefore)) {
        std::sort(entries.begin(), entries.end(), isBefore);
    }
}

template <typename Predicate>
std::vector<Entry*> entriesOf(const model::Board& board, Predicate&& predicate) {
    auto entries = board.entries();
    std::erase_if(entries, [&](const Entry* entry) { return !predicate(*entry); });
    sortInOrder(entries);
    return entries;
}

std::size_t indexOf(const base::Uuid& id, std::span<Entry* const> active) {
    const auto found = std::find_if(active.begin(), active.end(),
                                    [&](const Entry* entry) { return entry->id() == id; });
    if (found == active.end()) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::invalidReorder);
    }
    return static_cast<std::size_t>(found - active.begin());
}

} // namespace

std::vector<Entry*> activeEntries(std::span<Entry* const> entries, const base::Uuid& boardID) {
    std::vector<Entry*> active;
    std::copy_if(
        entries.begin(), entries.end(), std::back_inserter(active),
        [&](const Entry* entry) { return entry->isActive() && entry->boardID() == boardID; });
    sortInOrder(active);
    return active;
}

std::vector<Entry*> activeEntries(const model::Board& board) {
    return entriesOf(board, [](const Entry& entry) { return entry.isActive(); });
}

std::vector<Entry*> activeTodos(const model::Board& board) {
    return entriesOf(board, [](const Entry& entry) { return entry.isOpenTodo(); });
}

std::vector<Entry*> completedTodos(const model::Board& board) {
    auto completed = completedInOrder(board);
    std::stable_sort(completed.begin(), completed.end(), [](const Entry* left, const Entry* right) {
        // A completed todo without its moment comes from elsewhere; it goes last.
        return left->completedAt().value_or(base::Instant::distantPast()) >
               right->completedAt().value_or(base::Instant::distantPast());
    });
    return completed;
}

std::vector<Entry*> completedInOrder(const model::Board& board) {
    return entriesOf(board, [](const Entry& entry) { return !entry.isActive(); });
}

std::size_t insertionIndex(const std::optional<base::Uuid>& after,
                           const std::optional<base::Uuid>& before,
                           std::span<Entry* const> active) {
    if (before) {
        return indexOf(*before, active);
    }
    if (after) {
        return indexOf(*after, active) + 1;
    }
    return active.size();
}

} // namespace korvex::services
