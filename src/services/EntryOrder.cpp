#include "services/EntryService.h"

#include <algorithm>
#include <limits>

namespace korvex::services {

using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

namespace {

constexpr auto kAtEnd = std::numeric_limits<std::int64_t>::max();

bool isOrdered(const Entry* left, const Entry* right) {
    return EntryService::ordered(*left, *right);
}

void sortInOrder(std::vector<Entry*>& entries) {
    // They mostly come in order already: looking costs less than sorting.
    if (!std::is_sorted(entries.begin(), entries.end(), isOrdered)) {
        std::sort(entries.begin(), entries.end(), isOrdered);
    }
}

template <typename Predicate>
std::vector<Entry*> entriesOf(const model::Board& board, Predicate&& predicate) {
    auto entries = board.entries();
    std::erase_if(entries, [&](const Entry* entry) { return !predicate(*entry); });
    sortInOrder(entries);
    return entries;
}

std::vector<Entry*>::iterator positionOf(std::vector<Entry*>& entries, const base::Uuid& id) {
    return std::find_if(entries.begin(), entries.end(),
                        [&](const Entry* entry) { return entry->id() == id; });
}

std::size_t indexOf(const base::Uuid& id, std::span<Entry* const> active) {
    const auto found = std::find_if(active.begin(), active.end(),
                                    [&](const Entry* entry) { return entry->id() == id; });
    if (found == active.end()) {
        throw EntryServiceError(EntryServiceErrorCase::invalidReorder);
    }
    return static_cast<std::size_t>(found - active.begin());
}

} // namespace

bool EntryService::ordered(const Entry& left, const Entry& right) {
    if (left.sortOrder() != right.sortOrder()) {
        return left.sortOrder() < right.sortOrder();
    }
    if (left.createdAt() != right.createdAt()) {
        return left.createdAt() < right.createdAt();
    }
    return left.id() < right.id();
}

std::vector<Entry*> EntryService::activeEntries(std::span<Entry* const> entries,
                                                const base::Uuid& boardID) {
    std::vector<Entry*> active;
    std::copy_if(
        entries.begin(), entries.end(), std::back_inserter(active),
        [&](const Entry* entry) { return entry->isActive() && entry->boardID() == boardID; });
    sortInOrder(active);
    return active;
}

std::vector<Entry*> EntryService::activeEntries(const model::Board& board) {
    return entriesOf(board, [](const Entry& entry) { return entry.isActive(); });
}

std::vector<Entry*> EntryService::activeTodos(const model::Board& board) {
    return entriesOf(board, [](const Entry& entry) { return entry.isOpenTodo(); });
}

std::vector<Entry*> EntryService::completedTodos(const model::Board& board) {
    auto completed = completedInOrder(board);
    std::stable_sort(completed.begin(), completed.end(), [](const Entry* left, const Entry* right) {
        // A completed todo without its moment comes from elsewhere; it goes last.
        return left->completedAt().value_or(base::Instant::distantPast()) >
               right->completedAt().value_or(base::Instant::distantPast());
    });
    return completed;
}

std::vector<Entry*> EntryService::completedInOrder(const model::Board& board) {
    return entriesOf(board, [](const Entry& entry) { return !entry.isActive(); });
}

std::size_t EntryService::insertionIndex(const std::optional<base::Uuid>& after,
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

void EntryService::assignSortOrder(std::span<Entry* const> entries, const model::Board& board,
                                   const std::unordered_set<base::Uuid>& excluding) {
    const auto completed = entriesOf(board, [&](const Entry& entry) {
        return !entry.isActive() && !excluding.contains(entry.id());
    });
    numberFrom(0, entries, completed);
}

void EntryService::numberFrom(std::int64_t first, std::span<Entry* const> entries,
                              std::span<Entry* const> completed) {
    std::int64_t position = first;
    for (const auto& list : {entries, completed}) {
        for (Entry* entry : list) {
            entry->setSortOrder(position);
            ++position;
        }
    }
}

void EntryService::moveEntry(const base::Uuid& id, const base::Uuid& relativeTo,
                             model::EntryPlacement placement, model::Board& board) {
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    auto active = activeEntries(board);
    const auto moved = positionOf(active, id);
    const auto target = positionOf(active, relativeTo);
    if (moved == active.end() || target == active.end() || moved == target) {
        m_log.warning(
            "Rejected reorder with missing, identical, completed, or cross-board entries");
        throw EntryServiceError(EntryServiceErrorCase::invalidReorder);
    }
    Entry* entry = *moved;
    active.erase(moved);
    auto place = positionOf(active, relativeTo);
    if (placement == model::EntryPlacement::after) {
        ++place;
    }
    active.insert(place, entry);
    change({.name = "Move Entry", .entries = {entry}}, [&] { assignSortOrder(active, board); });
}

void EntryService::moveEntry(const base::Uuid& id, std::int64_t offset, model::Board& board) {
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    auto active = activeEntries(board);
    const auto moved = positionOf(active, id);
    if (moved == active.end()) {
        throw EntryServiceError(EntryServiceErrorCase::invalidReorder);
    }
    const auto index = moved - active.begin();
    const auto count = static_cast<std::int64_t>(active.size());
    // Compared without adding, which could overflow.
    if (offset == 0 || offset < -index || offset >= count - index) {
        return;
    }
    moveEntry(id, active[static_cast<std::size_t>(index + offset)]->id(),
              offset > 0 ? model::EntryPlacement::after : model::EntryPlacement::before, board);
}

void EntryService::normalizeSortOrder(model::Board& board, SaveChanges saveChanges) {
    if (saveChanges == SaveChanges::no) {
        assignSortOrder(activeEntries(board), board);
        return;
    }
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    change([&] { assignSortOrder(activeEntries(board), board); });
}

void EntryService::moveEntry(Entry& given, model::Board& to, base::Instant now,
                             std::optional<std::int64_t> position) {
    const store::LockedStep step(*m_modelContext);
    Entry* const entry = &persisted(given);
    validateBoard(to);
    change({.name = "Move to Board", .entries = {entry}}, [&] {
        entry->setUpdatedAt(now);
        const std::pair<Entry*, EntryPlace> place{
            entry, {.board = to.id(), .sortOrder = position.value_or(kAtEnd)}};
        putInPlace({&place, 1});
    });
    todosChanged();
}

} // namespace korvex::services
