#pragma once

#include "base/Uuid.h"
#include "model/Entry.h"
#include "store/Value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace korvex::services {

/// What a change has done to one entry: enough to take it back without touching what others have
/// changed since. A value that knows its entry by identifier only.
class EntryChange {
public:
    /// The place where an entry stood, or is to stand again.
    struct Place {
        base::Uuid board;
        std::int64_t sortOrder = 0;
    };

    /// The change that is pending, before it is saved: the store still knows what was.
    static EntryChange pendingOf(const model::Entry& entry);

    const base::Uuid& id() const { return m_id; }
    bool isEmpty() const { return m_fields.empty() && !m_place; }
    /// About how many bytes this keeps.
    std::size_t cost() const;
    /// A todo was completed or restored.
    bool isCompletion() const;
    /// Where the entry stood, if the change has moved it.
    const std::optional<Place>& place() const { return m_place; }

    /// Whether another has written words or attachments since, which taking it back would replace.
    bool isWrittenOver(const model::Entry& entry) const;
    /// Whether the entry is still on the board and in the list that the change has put it in.
    bool isWhereItWasPut(const model::Entry& entry) const;
    /// Gives the fields what they held before. What others have set since stays theirs.
    void takeBackFields(model::Entry& entry) const;

private:
    struct Field {
        std::size_t index;
        store::Value before;
        /// What it was set to; of texts and bytes only a checksum.
        store::Value after;
    };

    static bool isStillOurs(const model::Entry& entry, const Field& field);

    base::Uuid m_id;
    std::vector<Field> m_fields;
    std::optional<Place> m_place;
    std::optional<base::Uuid> m_boardAfter;
    bool m_isActiveAfter = true;
};

} // namespace korvex::services
