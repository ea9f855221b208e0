#pragma once

#include "schedule/EntryKey.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvex::schedule {

/// Groups of entries in the order of their keys. `emptyGroup` makes one from its key.
template <typename Group, Group (*emptyGroup)(std::uint64_t)>
class KeyedGroups {
public:
    using Entries = std::vector<model::Entry*>;

    const std::vector<Group>& all() const { return m_groups; }

    /// Null when there is no group of this key.
    const Entries* find(std::uint64_t key) const {
        const auto index = indexOf(key);
        return isAt(index, key) ? &m_groups[index].entries : nullptr;
    }
    Entries* find(std::uint64_t key) {
        const auto index = indexOf(key);
        return isAt(index, key) ? &m_groups[index].entries : nullptr;
    }
    /// The entries of the group, which is made where there is none.
    Entries& of(std::uint64_t key) {
        const auto index = indexOf(key);
        if (!isAt(index, key)) {
            // The room for the key comes first: once the group is in, nothing may fail.
            if (m_keys.size() == m_keys.capacity()) {
                m_keys.reserve(2 * m_keys.size() + 1);
            }
            m_groups.insert(m_groups.begin() + static_cast<std::ptrdiff_t>(index), emptyGroup(key));
            m_keys.insert(m_keys.begin() + static_cast<std::ptrdiff_t>(index), key);
        }
        return m_groups[index].entries;
    }
    void remove(std::uint64_t key) {
        if (const auto index = indexOf(key); isAt(index, key)) {
            m_keys.erase(m_keys.begin() + static_cast<std::ptrdiff_t>(index));
            m_groups.erase(m_groups.begin() + static_cast<std::ptrdiff_t>(index));
        }
    }

    /// The groups of these entries, which are in order, and no others.
    void assign(const std::vector<GroupedEntry>& sorted) {
        m_groups = cutIntoGroups<Group>(sorted, emptyGroup);
        m_keys.clear();
        for (std::size_t next = 0; const auto& group : m_groups) {
            m_keys.push_back(sorted[next].group);
            next += group.entries.size();
        }
    }

private:
    std::size_t indexOf(std::uint64_t key) const {
        return static_cast<std::size_t>(std::lower_bound(m_keys.begin(), m_keys.end(), key) -
                                        m_keys.begin());
    }
    bool isAt(std::size_t index, std::uint64_t key) const {
        return index < m_keys.size() && m_keys[index] == key;
    }

    std::vector<Group> m_groups;
    /// The key of each of them.
    std::vector<std::uint64_t> m_keys;
};

} // namespace korvex::schedule
