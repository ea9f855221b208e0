#pragma once

#include "schedule/GroupRules.h"
#include "schedule/GroupedEntries.h"

namespace korvex::schedule {

/// Entries in groups, each where the rules put it, and held only as long as they hold it. Main
/// thread; the rules must outlive it.
template <typename Group, Group (*emptyGroup)(std::uint64_t)>
class RuledGroups {
public:
    explicit RuledGroups(GroupRules& rules) : m_rules(rules) {}

    const GroupedEntries<Group, emptyGroup>& entries() const { return m_entries; }

    /// Whether it is held, or is to be.
    bool concern(const model::Entry& entry) const {
        return isHeld(entry) || m_entries.find(entry.id());
    }

    /// Puts the entry where it is to be now. True when it was shown or is now.
    bool place(model::Entry& entry) {
        return isHeld(entry) ? m_entries.place(entry, m_rules.keyOf(entry))
                             : m_entries.drop(entry.id());
    }
    /// True when it was shown.
    bool drop(const base::Uuid& id) { return m_entries.drop(id); }

    /// Takes the entry in or lets it go; but the groups are wrong until `placeAll`.
    void hold(model::Entry& entry) {
        if (isHeld(entry)) {
            m_entries.hold(entry);
        } else {
            m_entries.letGo(entry.id());
        }
    }
    void letGo(const base::Uuid& id) { m_entries.letGo(id); }
    void letAllGo() { m_entries.letAllGo(); }

    /// Puts every entry where it is to be now.
    void placeAll() {
        m_entries.placeAll([this](const model::Entry& entry) { return m_rules.keyOf(entry); });
    }

private:
    bool isHeld(const model::Entry& entry) const { return entry.isLive() && m_rules.holds(entry); }

    GroupRules& m_rules;
    GroupedEntries<Group, emptyGroup> m_entries;
};

} // namespace korvex::schedule
