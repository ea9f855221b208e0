#pragma once

#include "store/Condition.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvex::store {

struct SortKey {
    std::size_t field;
    bool ascending = true;
};

/// What a fetch asks for. The default asks for everything, in no particular order. Its order, as
/// its condition, is evaluated by SQLite for what is stored and in memory for what a context has
/// changed.
struct FetchDescriptor {
    Condition condition = {};
    std::vector<SortKey> order = {};
    std::optional<std::size_t> limit = std::nullopt;

    /// Whether `left` comes before `right` by the order; absent values first, as in SQLite.
    bool isBefore(const Record& left, const Record& right) const;
    /// " ORDER BY …"; empty where there is no order.
    std::string orderSql(const RecordType& type) const;
};

} // namespace korvex::store
