#pragma once

#include "store/ModelContext.h"

#include <string>

namespace korvex::store {

/// Gives a store other contents, more of them than should be in memory at once: takes all records
/// out and writes new ones, each at once and without keeping it. Within a LockedStep of a context
/// that has read nothing and changed nothing yet. That context then reads what was written, and its
/// next save makes all of it last, as one save; a step that ends without takes it all back. Other
/// contexts follow when they refresh. The store keeps the note until the next replacement. Throws
/// StoreError.
class ContentReplacement {
public:
    ContentReplacement(ModelContext& context, std::string note);
    /// A record that belongs to no context. One with an owner names it by `setOwner`.
    void add(Record& detached);

private:
    ModelContext& m_context;
};

} // namespace korvex::store
