#include "services/EntryNumbering.h"

#include "services/EntryOrder.h"

#include <algorithm>
#include <unordered_set>

namespace korvex::services {

using model::Board;
using model::Entry;

namespace {

template <typename Value>
void appendOnce(Value* value, std::vector<Value*>& to) {
    if (std::find(to.begin(), to.end(), value) == to.end()) {
        to.push_back(value);
    }
}

void insertAt(std::int64_t position, Entry* entry, std::vector<Entry*>& into) {
    const auto end = static_cast<std::int64_t>(into.size());
    into.insert(into.begin() + std::clamp(position, std::int64_t{0}, end), entry);
}

/// Numbers the board with those of `places`, in order, that stand on it now.
void arrange(const Board& board, std::span<const PlacedEntry> places,
             const std::unordered_set<const Entry*>& moved) {
    auto active = activeEntries(board);
    auto completed = completedInOrder(board);
    const auto isMoved = [&](const Entry* entry) { return moved.contains(entry); };
    std::erase_if(active, isMoved);
    std::erase_if(completed, isMoved);
    for (const auto& place : places) {
        if (place.entry->board() == &board) {
            insertAt(place.index, place.entry, place.entry->isActive() ? active : completed);
        }
    }
    numberFrom(0, active, completed);
}

} // namespace

void numberFrom(std::int64_t first, std::span<Entry* const> entries,
                std::span<Entry* const> completed) {
    auto position = first;
    for (const auto& list : {entries, completed}) {
        for (auto* const entry : list) {
            entry->setSortOrder(position);
            ++position;
        }
    }
}

void assignSortOrder(std::span<Entry* const> entries, const Board& board) {
    numberFrom(0, entries, completedInOrder(board));
}

void normalizeSortOrder(const Board& board) {
    assignSortOrder(activeEntries(board), board);
}

std::vector<const Board*> boardsOf(std::span<Entry* const> entries) {
    std::vector<const Board*> boards;
    for (const auto* const entry : entries) {
        if (const auto* const board = entry->board()) {
            appendOnce(board, boards);
        }
    }
    return boards;
}

PlacedEntry placed(Entry& entry, Board& board, std::int64_t sortOrder) {
    if (entry.isActive()) {
        return {.entry = &entry, .board = &board, .index = sortOrder};
    }
    const auto begin = static_cast<std::int64_t>(activeEntries(board).size());
    return {.entry = &entry, .board = &board, .index = std::max(sortOrder, begin) - begin};
}

void putInPlace(std::span<const PlacedEntry> places) {
    std::vector<PlacedEntry> inOrder(places.begin(), places.end());
    std::stable_sort(inOrder.begin(), inOrder.end(),
                     [](const auto& left, const auto& right) { return left.index < right.index; });
    std::unordered_set<const Entry*> moved;
    std::vector<const Board*> left;
    std::vector<const Board*> targets;
    for (const auto& place : inOrder) {
        moved.insert(place.entry);
        if (const auto* const board = place.entry->board(); board && board != place.board) {
            appendOnce(board, left);
        }
        place.entry->setBoard(place.board);
        appendOnce<const Board>(place.board, targets);
    }
    for (const auto* const board : targets) {
        arrange(*board, inOrder, moved);
        std::erase(left, board);
    }
    for (const auto* const board : left) {
        normalizeSortOrder(*board);
    }
}

} // namespace korvex::services
