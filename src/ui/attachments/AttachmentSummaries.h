#pragma once

#include "base/Signal.h"
#include "services/AttachmentList.h"
#include "store/ModelContext.h"

#include <unordered_map>

namespace korvex::ui {

/// What the rows show of the attachments of their entries: read once, and again after the entry has
/// changed. Keeps names and sizes, never the files. Main thread.
class AttachmentSummaries {
public:
    explicit AttachmentSummaries(store::ModelContext& context);

    /// Valid until the entry changes or `clear`. What the store cannot read counts as damaged.
    const services::AttachmentList& of(const model::Entry& entry) const;
    void clear() { m_known.clear(); }

private:
    struct Known {
        base::Instant updatedAt;
        services::AttachmentList list;
    };

    mutable std::unordered_map<base::Uuid, Known> m_known;
    base::Subscription m_changes;
};

} // namespace korvex::ui
