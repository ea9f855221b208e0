#pragma once

#include "base/Uuid.h"
#include "store/Value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace korvex::services {

/// Where an entry stands: among the active entries of its board when it is active, else among its
/// completed todos, which are numbered behind those.
struct EntryPlace {
    base::Uuid board;
    std::int64_t sortOrder = 0;
};

/// What a change has done to one entry: enough to take it back without touching what others have
/// changed since.
struct EntryChange {
    struct Field {
        std::size_t index;
        store::Value before;
        /// What it was set to; of texts and bytes only a checksum.
        store::Value after;
    };

    base::Uuid id;
    std::vector<Field> fields;
    /// Where it stood, if the change has moved it, and what the move has made of it.
    std::optional<EntryPlace> place;
    std::optional<base::Uuid> boardAfter;
    bool isActiveAfter = true;

    bool isEmpty() const { return fields.empty() && !place; }
    /// About how many bytes this keeps.
    std::size_t cost() const;
};

} // namespace korvex::services
