#pragma once

#include <tsl/robin_map.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace korvex::richtext {

/// Values, each once, named by their place of first coming. Few values are found by looking at each
/// of them, many by their hash.
template <typename T>
class Interned {
public:
    using Id = std::uint32_t;

    Id idOf(const T& value) {
        // Runs come in turns: the last value asked for is often asked for again.
        if (m_last < m_values.size() && m_values[m_last] == value) {
            return m_last;
        }
        m_last = found(value);
        return m_last;
    }
    const T& operator[](Id id) const { return m_values[id]; }
    std::size_t size() const { return m_values.size(); }

private:
    /// Up to here comparing costs less than hashing.
    static constexpr std::size_t kSearched = 6;

    static constexpr Id kNone = static_cast<Id>(-1);

    Id found(const T& value) {
        if (m_values.size() < kSearched) {
            for (Id id = 0; id < m_values.size(); ++id) {
                if (m_values[id] == value) {
                    return id;
                }
            }
            return added(value);
        }
        if (m_newest.empty()) {
            for (Id id = 0; id < m_values.size(); ++id) {
                index(id);
            }
        }
        const auto known = m_newest.find(std::hash<T>()(value));
        for (auto id = known == m_newest.end() ? kNone : known->second; id != kNone;
             id = m_older[id]) {
            if (m_values[id] == value) {
                return id;
            }
        }
        const auto id = added(value);
        index(id);
        return id;
    }

    Id added(const T& value) {
        m_values.push_back(value);
        return static_cast<Id>(m_values.size() - 1);
    }
    void index(Id id) {
        const auto [place, isNew] = m_newest.try_emplace(std::hash<T>()(m_values[id]), id);
        m_older.push_back(isNew ? kNone : std::exchange(place.value(), id));
    }

    std::vector<T> m_values;
    /// Leads from a hash to the last value that has it; `m_older` leads from each value to the one
    /// before it with the same hash.
    tsl::robin_map<std::size_t, Id> m_newest;
    std::vector<Id> m_older;
    Id m_last = 0;
};

} // namespace korvex::richtext
