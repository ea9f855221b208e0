#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korvex::services {

/// Where new entries go on a board: among its active entries, or behind all of them. Good for one
/// change, and as long as nothing else changes the board.
class NewEntryPlace {
public:
    /// As `insertionIndex` has it, with its errors; may throw StoreError.
    NewEntryPlace(store::ModelContext& context, const model::Board& board,
                  const std::optional<base::Uuid>& after, const std::optional<base::Uuid>& before);

    /// Numbers the new entries there, in their order, and whatever stands behind them.
    void number(std::span<model::Entry* const> created);

private:
    /// What appending to a board needs to know of it.
    struct Appending {
        std::int64_t activeCount = 0;
        std::vector<model::Entry*> completed;
    };

    /// Answers that from the store without making records of all active entries: a capture into a
    /// long board reads no more than it must. Absent when the board is loaded anyway, or when its
    /// order is not dense and all entries must be numbered anew.
    static std::optional<Appending> appendingUnloaded(store::ModelContext& context,
                                                      const model::Board& board);

    const model::Board& m_board;
    std::optional<Appending> m_appending;
    /// Unless it is appended unloaded: where among these it goes.
    std::vector<model::Entry*> m_active;
    std::size_t m_index = 0;
};

} // namespace korvex::services
