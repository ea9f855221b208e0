#pragma once

#include "base/Uuid.h"
#include "schedule/EntryKey.h"

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace korvex::schedule {

/// Entries with the keys that they were given last, each found by its identifier.
class HeldEntries {
public:
    struct Held {
        model::Entry* entry;
        /// Absent while it is not shown.
        std::optional<EntryKey> key;
    };

    bool isEmpty() const { return m_held.empty(); }
    /// Every entry that is held, in no order.
    std::span<Held> all() { return m_held; }

    /// Null when it is not held. Valid until another entry is held or one is let go.
    const Held* find(const base::Uuid& id) const {
        const auto found = m_places.find(id);
        return found != m_places.end() ? &m_held[found->second] : nullptr;
    }

    /// Holds the entry from now on, without a key where it was not held before. Valid as above.
    Held& of(model::Entry& entry) {
        const auto [place, isNew] =
            m_places.try_emplace(entry.id(), static_cast<std::uint32_t>(m_held.size()));
        if (isNew) {
            m_held.push_back({&entry, std::nullopt});
        }
        return m_held[place->second];
    }

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

private:
    std::vector<Held> m_held;
    /// Where in `m_held` each entry is.
    std::unordered_map<base::Uuid, std::uint32_t> m_places;
};

} // namespace korvex::schedule
