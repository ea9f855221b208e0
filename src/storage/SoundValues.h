#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/Board.h"
#include "model/TodoSchedule.h"
#include "storage/RepairReport.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvex::storage {

// What a repair makes of values, without a store: each is given back as it is when it is sound.
// What is found to be wrong is counted in the report.

/// From a board to the one that took its place.
using MergedBoards = std::map<base::Uuid, base::Uuid>;

enum class BoardNumbers { asTheyAre, dense };
/// All boards of a store, put in their order. Of several system boards that mean the same the first
/// one stays and the others are marked as merged into it. `merged` gets every board that is marked,
/// `newlyMerged` those that were not before.
void makeSound(std::vector<model::BoardFields>& boards, BoardNumbers numbers, MergedBoards& merged,
               MergedBoards& newlyMerged, RepairReport& report);

/// What a repair looks at of an entry.
struct EntryValues {
    base::Uuid id;
    std::string type;
    base::Instant createdAt;
    base::Instant updatedAt;
    std::int64_t sortOrder = 0;
    bool isCompleted = false;
    std::optional<base::Instant> completedAt;
    model::TodoSchedule schedule;
    std::optional<base::Uuid> board;

    bool operator==(const EntryValues&) const = default;
};
/// All but the board and the order.
void makeSound(EntryValues& entry, RepairReport& report);

} // namespace korvex::storage
