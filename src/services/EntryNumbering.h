#pragma once

#include "model/Board.h"
#include "model/Entry.h"

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace korvex::services {

// How the entries of a board get their numbers: from 0 in steps of 1, the completed todos behind
// the active entries. Nothing is saved here, and only what differs is written.

/// Numbers `entries` and then `completed` from `first` on.
void numberFrom(std::int64_t first, std::span<model::Entry* const> entries,
                std::span<model::Entry* const> completed);
/// Numbers `entries`, which are the board's active ones, in this order, then its completed todos.
void assignSortOrder(std::span<model::Entry* const> entries, const model::Board& board);
/// Numbers all entries of the board as they stand, which closes the gaps between them.
void normalizeSortOrder(const model::Board& board);

/// The boards that the entries stand on, each once.
std::vector<const model::Board*> boardsOf(std::span<model::Entry* const> entries);

/// Where an entry is to stand: its index among the active entries of the board when it is active,
/// else among its completed todos. The index is clamped to what there is.
struct PlacedEntry {
    static constexpr auto kAtEnd = std::numeric_limits<std::int64_t>::max();

    model::Entry* entry;
    model::Board* board;
    std::int64_t index = kAtEnd;
};
/// The place to which a number of the whole board, active entries and completed todos, leads.
PlacedEntry placed(model::Entry& entry, model::Board& board, std::int64_t sortOrder);
/// Moves the entries to their places and closes the gaps that they leave.
void putInPlace(std::span<const PlacedEntry> places);
inline void putInPlace(const PlacedEntry& place) {
    putInPlace({&place, 1});
}

} // namespace korvex::services
