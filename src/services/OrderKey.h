#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "store/Record.h"

#include <compare>
#include <concepts>
#include <cstdint>

namespace korvex::services {

/// By what the boards of a store and the entries of a board are put in order: the number that they
/// are given, and where a store from elsewhere has one number twice, their age, then the
/// identifier.
struct OrderKey {
    std::int64_t sortOrder;
    base::Instant createdAt;
    base::Uuid id;

    auto operator<=>(const OrderKey&) const = default;
};

/// Whether a board or an entry stands before another.
template <std::derived_from<store::Record> Record>
bool ordered(const Record& left, const Record& right) {
    // The numbers alone nearly always decide, and sorting asks often.
    if (left.sortOrder() != right.sortOrder()) {
        return left.sortOrder() < right.sortOrder();
    }
    const auto keyOf = [](const Record& record) {
        return OrderKey{record.sortOrder(), record.createdAt(), record.id()};
    };
    return keyOf(left) < keyOf(right);
}

} // namespace korvex::services
