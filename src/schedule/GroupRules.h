#pragma once

#include "schedule/EntryKey.h"

#include <optional>

namespace korvex::schedule {

/// Which entries a list holds, and where it shows them. What it answers may change only where the
/// list is told to place its entries anew.
class GroupRules {
public:
    virtual ~GroupRules() = default;
    /// Whether the entry can come to be shown without being changed itself.
    virtual bool holds(const model::Entry& entry) const = 0;
    /// Where an entry that is held stands; absent while it is not shown.
    virtual std::optional<EntryKey> keyOf(const model::Entry& entry) = 0;
};

} // namespace korvex::schedule
