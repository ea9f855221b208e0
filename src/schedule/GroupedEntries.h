#pragma once

#include "schedule/HeldEntries.h"
#include "schedule/KeyedGroups.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <vector>

namespace korvex::schedule {

/// Entries in groups, each where its key puts it. Keys are remembered: so an entry that has changed
/// is found where it stood, whatever its fields say now, and the others need not be asked again. An
/// entry can also be held without being shown.
template <typename Group, Group (*emptyGroup)(std::uint64_t)>
class GroupedEntries {
public:
    using Held = HeldEntries::Held;

    const std::vector<Group>& groups() const { return m_groups.all(); }
    bool isEmpty() const { return m_held.isEmpty(); }
    std::size_t shownCount() const { return m_shownCount; }

    const Held* find(const base::Uuid& id) const { return m_held.find(id); }

    /// Holds the entry, shown at `key` or not at all. True when it was shown or is now.
    bool place(model::Entry& entry, const std::optional<EntryKey>& key) {
        auto& held = m_held.of(entry);
        const auto former = held.key;
        if (former == key && held.entry == &entry) {
            return key.has_value();
        }
        hide(held);
        held = {&entry, key};
        show(held);
        return former || key;
    }

    /// Lets the entry go. True when it was shown.
    bool drop(const base::Uuid& id) {
        const auto* held = find(id);
        if (!held) {
            return false;
        }
        const auto wasShown = held->key.has_value();
        hide(*held);
        m_held.letGo(id);
        return wasShown;
    }

    /// Holds the entry as `place` does, and lets it go as `drop` does; but the groups are wrong
    /// until `placeAll`.
    void hold(model::Entry& entry) { m_held.of(entry) = {&entry, std::nullopt}; }
    void letGo(const base::Uuid& id) { m_held.letGo(id); }
    void letAllGo() { m_held.letAllGo(); }

    /// Asks `keyOf` about every held entry and makes all groups anew: for when many are elsewhere
    /// than they were.
    template <typename KeyOf>
    void placeAll(KeyOf&& keyOf) {
        const auto all = m_held.all();
        std::vector<KeyedEntry> shown;
        shown.reserve(all.size());
        visitEntries(
            all, [](const Held& held) { return held.entry; },
            [&](Held& held) {
                held.key = keyOf(*held.entry);
                if (held.key) {
                    shown.push_back({*held.key, held.entry});
                }
            });
        const auto sorted = inOrder(shown);
        m_shownCount = sorted.size();
        m_groups.assign(sorted);
    }

    /// The shown entries of a group whose moments lie within the two, both included.
    std::vector<model::Entry*> between(std::uint64_t group, std::uint64_t from,
                                       std::uint64_t to) const {
        const auto* entries = m_groups.find(group);
        if (!entries) {
            return {};
        }
        const auto first =
            std::partition_point(entries->begin(), entries->end(), [&](const model::Entry* each) {
                return keyOf(*each).moment < from;
            });
        const auto last =
            std::partition_point(first, entries->end(), [&](const model::Entry* each) {
                return keyOf(*each).moment <= to;
            });
        return {first, last};
    }

private:
    using Entries = std::vector<model::Entry*>;

    const EntryKey& keyOf(const model::Entry& entry) const { return *m_held.find(entry.id())->key; }

    Entries::iterator placeOf(const KeyedEntry& shown, Entries& entries) const {
        return std::partition_point(entries.begin(), entries.end(), [&](model::Entry* each) {
            return KeyedEntry{keyOf(*each), each}.isBefore(shown);
        });
    }

    void show(const Held& held) {
        if (!held.key) {
            return;
        }
        auto& entries = m_groups.of(held.key->group);
        entries.insert(placeOf({*held.key, held.entry}, entries), held.entry);
        ++m_shownCount;
    }

    void hide(const Held& held) {
        if (!held.key) {
            return;
        }
        auto* const entries = m_groups.find(held.key->group);
        assert(entries);
        const auto place = placeOf({*held.key, held.entry}, *entries);
        assert(place != entries->end() && *place == held.entry);
        entries->erase(place);
        if (entries->empty()) {
            m_groups.remove(held.key->group);
        }
        --m_shownCount;
    }

    HeldEntries m_held;
    KeyedGroups<Group, emptyGroup> m_groups;
    std::size_t m_shownCount = 0;
};

} // namespace korvex::schedule
