#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/Entry.h"
#include "services/EntryPlaces.h"
#include "store/ModelContext.h"
#include "store/Value.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace korvex::services {

/// What a change has done to one entry: enough to take it back without touching what others have
/// changed since. A value that knows its entry by identifier only.
class EntryChange {
public:
    /// The changes that are pending, before they are saved: the store still knows what was. One for
    /// each entry that is changed; `entries` holds all that are pending to leave their boards. May
    /// throw StoreError.
    static std::vector<EntryChange> pendingOf(store::ModelContext& context,
                                              std::span<model::Entry* const> entries);

    const base::Uuid& id() const { return m_id; }
    /// About how many bytes this keeps.
    std::size_t cost() const;
    /// A todo was completed or restored.
    bool isCompletion() const;
    /// It has left everything as it was, such as words that were typed and taken away again.
    bool isNothing() const;
    /// It counts as a change of the entry itself, as which a move within its board does not.
    bool setsUpdatedAt() const { return m_setsUpdatedAt; }

    /// This change and a later one of the same entry in one. Absent where another has changed in
    /// between what both have, and where one of them has moved the entry.
    std::optional<EntryChange> followedBy(const EntryChange& later) const;

    /// Whether the words or the attachments that it has changed are no longer as it left them:
    /// then none of it is to be taken back.
    bool isWrittenOver(const model::Entry& entry) const;
    /// Where the entry is to stand again; absent where the change has not moved it, or another has
    /// moved, completed or restored it since.
    std::optional<EntryPlace> placeToGiveBack(const model::Entry& entry) const;
    enum class TakenBack { exactly, amongOthers };
    /// Gives the fields what they held before; not `updatedAt`, since this is a change too. What
    /// others have set since stays theirs, with all that belongs to it. Where the entry was not
    /// changed since, it is exactly what it was.
    TakenBack takeBackFields(model::Entry& entry) const;

private:
    struct Field {
        std::size_t index;
        store::Value before;
        /// What it was set to; of texts and bytes only a checksum.
        store::Value after;
    };
    /// Fields that make sense only together, such as those of a schedule: when another has set one
    /// of them, none is given back. One that has not changed has two equal values.
    using Unit = std::vector<Field>;

    static EntryChange fieldsOf(const model::Entry& entry);
    static bool shareFields(const Unit& left, const Unit& right);
    static bool isStillOurs(const model::Entry& entry, const Unit& unit);
    const Unit* unitOf(std::size_t field) const;

    base::Uuid m_id;
    std::vector<Unit> m_units;
    /// Where it stood, if the change has moved it, and the board and the list that it was put in.
    std::optional<EntryPlace> m_place;
    std::optional<base::Uuid> m_boardAfter;
    bool m_isActiveAfter = true;
    bool m_setsUpdatedAt = false;
    base::Instant m_updatedAtAfter;
};

} // namespace korvex::services
