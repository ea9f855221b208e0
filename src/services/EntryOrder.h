#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "services/OrderKey.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace korvex::services {

// The entries of a board as it lists them: the active ones and the completed todos apart, both as
// `ordered` has them.

/// Text entries and open todos of that board among `entries`, in order.
std::vector<model::Entry*> activeEntries(std::span<model::Entry* const> entries,
                                         const base::Uuid& boardID);
std::vector<model::Entry*> activeEntries(const model::Board& board);
/// The open todos.
std::vector<model::Entry*> activeTodos(const model::Board& board);
/// Most recently completed first; equal instants in the board's order.
std::vector<model::Entry*> completedTodos(const model::Board& board);
/// The same as they are numbered.
std::vector<model::Entry*> completedInOrder(const model::Board& board);

/// Where a new entry goes among `active`: `before` decides when both are given, and with neither it
/// goes to the end. Throws EntryServiceError `invalidReorder` for an identifier not in `active`.
std::size_t insertionIndex(const std::optional<base::Uuid>& after,
                           const std::optional<base::Uuid>& before,
                           std::span<model::Entry* const> active);

} // namespace korvex::services
