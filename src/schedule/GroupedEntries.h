#pragma once

#include "schedule/EntryKey.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <unordered_map>
#include <utility>

namespace korvex::schedule {

/// Entries in groups, each where its key puts it. Keys are remembered: so an entry that has changed
/// is found where it stood, whatever its fields say now, and the others need not be asked again. An
/// entry can also be held without being shown. `emptyGroup` makes a group from the group of a key.
template <typename Group, Group (*emptyGroup)(std::uint64_t)>
class GroupedEntries {
public:
    struct Held {
        model::Entry* entry;
        /// Absent while it is not shown.
        std::optional<EntryKey> key;
    };

    const std::vector<Group>& groups() const { return m_groups; }
    bool isEmpty() const { return m_held.empty(); }
    std::size_t shownCount() const { return m_shownCount; }

    const Held* find(const base::Uuid& id) const {
        const auto found = m_places.find(id);
        return found != m_places.end() ? &m_held[found->second] : nullptr;
    }

    /// Holds the entry, shown at `key` or not at all. True when it was shown or is now.
    bool place(model::Entry& entry, const std::optional<EntryKey>& key) {
        auto& held = heldFor(entry);
        const auto former = held.key;
        if (former == key && held.entry == &entry) {
            return key.has_value();
        }
        hide(held);
        held = {&entry, key};
        show(held);
        return former || key;
    }

    /// True when it was shown.
    bool drop(const base::Uuid& id) {
        const auto* held = find(id);
        if (!held) {
            return false;
        }
        const auto wasShown = held->key.has_value();
        hide(*held);
        letGo(id);
        return wasShown;
    }

    /// Holds the entry as `place` does, and lets it go as `drop` does; but the groups are wrong
    /// until `placeAll`.
    void hold(model::Entry& entry) { heldFor(entry) = {&entry, std::nullopt}; }
    void letGo(const base::Uuid& id) {
        if (const auto found = m_places.find(id); found != m_places.end()) {
            auto& held = m_held[found->second];
            held = m_held.back();
            m_places[held.entry->id()] = found->second;
            m_held.pop_back();
            m_places.erase(id);
        }
    }
    void letAllGo() {
        m_held.clear();
        m_places.clear();
    }

    /// Asks `keyOf` about every held entry and makes all groups anew: for when many are elsewhere
    /// than they were.
    template <typename KeyOf>
    void placeAll(KeyOf&& keyOf) {
        std::vector<KeyedEntry> shown;
        shown.reserve(m_held.size());
        visitEntries(
            m_held, [](const Held& held) { return held.entry; },
            [&](Held& held) {
                held.key = keyOf(*held.entry);
                if (held.key) {
                    shown.push_back({*held.key, held.entry});
                }
            });
        const auto sorted = inOrder(shown);
        m_shownCount = sorted.size();
        m_groups = cutIntoGroups<Group>(sorted, emptyGroup);
        m_keys.clear();
        for (std::size_t next = 0; const auto& group : m_groups) {
            m_keys.push_back(sorted[next].group);
            next += group.entries.size();
        }
    }

    /// The shown entries of a group whose moments lie within the two, both included.
    std::vector<model::Entry*> between(std::uint64_t group, std::uint64_t from,
                                       std::uint64_t to) const {
        const auto index = indexOf(group);
        if (index == m_keys.size() || m_keys[index] != group) {
            return {};
        }
        const auto& entries = m_groups[index].entries;
        const auto first =
            std::partition_point(entries.begin(), entries.end(), [&](const model::Entry* each) {
                return keyOf(*each).moment < from;
            });
        const auto last = std::partition_point(first, entries.end(), [&](const model::Entry* each) {
            return keyOf(*each).moment <= to;
        });
        return {first, last};
    }

private:
    using Place = typename std::vector<model::Entry*>::iterator;

    Held& heldFor(model::Entry& entry) {
        const auto [place, isNew] =
            m_places.try_emplace(entry.id(), static_cast<std::uint32_t>(m_held.size()));
        if (isNew) {
            m_held.push_back({&entry, std::nullopt});
        }
        return m_held[place->second];
    }

    const EntryKey& keyOf(const model::Entry& entry) const {
        return *m_held[m_places.at(entry.id())].key;
    }

    std::size_t indexOf(std::uint64_t group) const {
        return static_cast<std::size_t>(std::lower_bound(m_keys.begin(), m_keys.end(), group) -
                                        m_keys.begin());
    }

    Place placeOf(const KeyedEntry& shown, std::vector<model::Entry*>& entries) const {
        return std::partition_point(entries.begin(), entries.end(), [&](model::Entry* each) {
            return KeyedEntry{keyOf(*each), each}.isBefore(shown);
        });
    }

    void show(const Held& held) {
        if (!held.key) {
            return;
        }
        const auto index = indexOf(held.key->group);
        const auto at = static_cast<std::ptrdiff_t>(index);
        if (index == m_keys.size() || m_keys[index] != held.key->group) {
            m_keys.insert(m_keys.begin() + at, held.key->group);
            m_groups.insert(m_groups.begin() + at, emptyGroup(held.key->group));
        }
        auto& entries = m_groups[index].entries;
        entries.insert(placeOf({*held.key, held.entry}, entries), held.entry);
        ++m_shownCount;
    }

    void hide(const Held& held) {
        if (!held.key) {
            return;
        }
        const auto index = indexOf(held.key->group);
        auto& entries = m_groups[index].entries;
        const auto place = placeOf({*held.key, held.entry}, entries);
        assert(place != entries.end() && *place == held.entry);
        entries.erase(place);
        if (entries.empty()) {
            const auto at = static_cast<std::ptrdiff_t>(index);
            m_groups.erase(m_groups.begin() + at);
            m_keys.erase(m_keys.begin() + at);
        }
        --m_shownCount;
    }

    /// Every entry that is held, in no order.
    std::vector<Held> m_held;
    /// Where in `m_held` each entry is.
    std::unordered_map<base::Uuid, std::uint32_t> m_places;
    std::vector<Group> m_groups;
    /// The group of the keys of each group's entries, in the order of `m_groups`.
    std::vector<std::uint64_t> m_keys;
    std::size_t m_shownCount = 0;
};

} // namespace korvex::schedule
