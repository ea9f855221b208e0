#pragma once

#include "base/Uuid.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korvex::services {

/// Where an entry stands: how many of its board's active entries, or of its completed todos when it
/// is one, stand before it.
struct EntryPlace {
    base::Uuid board;
    std::int64_t index = 0;
};

/// Whether what is pending moves the entry: to another place, another board, or between the active
/// entries and the completed todos.
bool isMoved(const model::Entry& entry);
/// Where the entries stood before what is pending; absent for one that had no board, or whose
/// board is not found. `entries` holds all that are pending to leave their boards. May throw
/// StoreError.
std::vector<std::optional<EntryPlace>> formerPlaces(store::ModelContext& context,
                                                    std::span<model::Entry* const> entries);

} // namespace korvex::services
