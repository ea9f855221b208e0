#pragma once

#include "base/Uuid.h"
#include "model/EntryType.h"
#include "model/TodoSchedule.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvex::services {

/// One row of what a search found: a board, or an entry with the board it stands on.
struct SearchResult {
    struct ID {
        enum class Kind { board, entry };
        Kind kind = Kind::entry;
        base::Uuid id;

        static ID board(const base::Uuid& id) { return {Kind::board, id}; }
        static ID entry(const base::Uuid& id) { return {Kind::entry, id}; }
        bool operator==(const ID&) const = default;
    };

    ID id;
    base::Uuid boardID;
    std::string boardName;
    /// Absent for a board.
    std::optional<model::EntryType> entryType;
    /// A board's is its name.
    std::string content;
    bool isCompleted = false;
    std::optional<model::TodoSchedule> schedule;
    /// Whether the board is archived, for an entry the one that it is on.
    bool isArchived = false;

    bool operator==(const SearchResult&) const = default;

    /// English: "Board", "Text", "Todo", "Completed Todo".
    std::string_view kind() const;
    /// The name of its icon.
    std::string_view symbol() const;
};

} // namespace korvex::services
