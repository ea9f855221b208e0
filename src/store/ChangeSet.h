#pragma once

#include "base/Uuid.h"

#include <vector>

namespace korvex::store {

/// Which records a save or a refresh touched, by identifier, over all record types.
struct ChangeSet {
    enum class Origin { thisContext, elsewhere };

    Origin origin = Origin::thisContext;
    std::vector<base::Uuid> inserted;
    std::vector<base::Uuid> updated;
    std::vector<base::Uuid> deleted;
    /// Rows are gone that were no records here: nobody knows their identifiers any more.
    bool hasUnknownDeletions = false;
    /// The store as a whole got other contents, as by a restore: what was known of the former ones
    /// says nothing of these.
    bool isReplacement = false;

    bool isEmpty() const {
        return inserted.empty() && updated.empty() && deleted.empty() && !hasUnknownDeletions;
    }
};

} // namespace korvex::store
