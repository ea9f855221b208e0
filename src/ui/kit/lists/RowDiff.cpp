#include "ui/kit/lists/RowDiff.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <unordered_map>

namespace korvex::ui {

namespace {

struct RowKeyHash {
    std::size_t operator()(const RowKey& key) const {
        return std::hash<const void*>()(key.subject) * 31 + static_cast<std::size_t>(key.kind);
    }
};

using Positions = std::unordered_map<RowKey, int, RowKeyHash>;

Positions positions(const std::vector<RowKey>& keys, int first, int end) {
    Positions result;
    result.reserve(static_cast<std::size_t>(end - first));
    for (int i = first; i < end; ++i) {
        result.emplace(keys[static_cast<std::size_t>(i)], i);
    }
    return result;
}

/// Which elements belong to one longest increasing subsequence.
std::vector<bool> longestIncreasing(const std::vector<int>& values) {
    std::vector<std::size_t> ends;
    std::vector<std::size_t> previous(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto place =
            std::lower_bound(ends.begin(), ends.end(), values[i],
                             [&](std::size_t end, int value) { return values[end] < value; });
        previous[i] = place == ends.begin() ? values.size() : *(place - 1);
        if (place == ends.end()) {
            ends.push_back(i);
        } else {
            *place = i;
        }
    }
    std::vector<bool> result(values.size(), false);
    for (auto i = ends.empty() ? values.size() : ends.back(); i < values.size(); i = previous[i]) {
        result[i] = true;
    }
    return result;
}

class StepWriter {
public:
    StepWriter(const std::vector<RowKey>& before, const std::vector<RowKey>& after)
        : m_before(before), m_after(after) {
        const auto shorter = static_cast<int>(std::min(before.size(), after.size()));
        while (m_first < shorter && at(before, m_first) == at(after, m_first)) {
            ++m_first;
        }
        m_beforeEnd = static_cast<int>(before.size());
        m_afterEnd = static_cast<int>(after.size());
        while (m_beforeEnd > m_first && m_afterEnd > m_first &&
               at(before, m_beforeEnd - 1) == at(after, m_afterEnd - 1)) {
            --m_beforeEnd;
            --m_afterEnd;
        }
    }

    std::optional<std::vector<RowStep>> steps(std::size_t maximum) {
        removeMissing();
        if (m_steps.size() > maximum || !orderKept(maximum)) {
            return std::nullopt;
        }
        insertNew();
        if (m_steps.size() > maximum) {
            return std::nullopt;
        }
        return std::move(m_steps);
    }

private:
    static const RowKey& at(const std::vector<RowKey>& keys, int row) {
        return keys[static_cast<std::size_t>(row)];
    }

    void removeMissing() {
        const auto places = positions(m_after, m_first, m_afterEnd);
        for (int row = m_first; row < m_beforeEnd; ++row) {
            if (const auto place = places.find(at(m_before, row)); place != places.end()) {
                m_kept.push_back(place->second);
            }
        }
        for (int row = m_beforeEnd - 1; row >= m_first; --row) {
            if (places.contains(at(m_before, row))) {
                continue;
            }
            if (!m_steps.empty() && m_steps.back().first == row + 1) {
                --m_steps.back().first;
                ++m_steps.back().count;
            } else {
                m_steps.push_back({RowStep::Kind::remove, row, 1});
            }
        }
    }

    /// Moves each row that is out of order to directly after the one that precedes it in the new
    /// order. In ascending order: then all that precede it are in place already. None of them
    /// stands right already, or the longest run of rows in order would be longer by it. False when
    /// that would be too many steps.
    bool orderKept(std::size_t maximum) {
        const auto stays = longestIncreasing(m_kept);
        std::vector<int> moving;
        for (std::size_t i = 0; i < m_kept.size(); ++i) {
            if (!stays[i]) {
                moving.push_back(m_kept[i]);
            }
        }
        if (m_steps.size() + moving.size() > maximum) {
            return false;
        }
        std::sort(moving.begin(), moving.end());
        auto ascending = m_kept;
        std::sort(ascending.begin(), ascending.end());
        for (const auto place : moving) {
            const auto rank = std::lower_bound(ascending.begin(), ascending.end(), place);
            const auto from = std::find(m_kept.begin(), m_kept.end(), place);
            const auto to = rank == ascending.begin()
                                ? m_kept.begin()
                                : std::find(m_kept.begin(), m_kept.end(), *(rank - 1)) + 1;
            m_steps.push_back({RowStep::Kind::move,
                               m_first + static_cast<int>(from - m_kept.begin()), 1,
                               m_first + static_cast<int>(to - m_kept.begin())});
            if (to < from) {
                std::rotate(to, from, from + 1);
            } else {
                std::rotate(from, from + 1, to);
            }
        }
        return true;
    }

    void insertNew() {
        std::size_t next = 0;
        for (int row = m_first; row < m_afterEnd; ++row) {
            if (next < m_kept.size() && m_kept[next] == row) {
                ++next;
            } else if (!m_steps.empty() && m_steps.back().kind == RowStep::Kind::insert &&
                       m_steps.back().first + m_steps.back().count == row) {
                ++m_steps.back().count;
            } else {
                m_steps.push_back({RowStep::Kind::insert, row, 1});
            }
        }
    }

    const std::vector<RowKey>& m_before;
    const std::vector<RowKey>& m_after;
    /// What lies before and behind these is the same.
    int m_first = 0;
    int m_beforeEnd = 0;
    int m_afterEnd = 0;
    /// The kept rows between, as their places in `m_after`, in the order after the steps so far.
    std::vector<int> m_kept;
    std::vector<RowStep> m_steps;
};

} // namespace

std::vector<RowStep> rowSteps(const std::vector<RowKey>& before, const std::vector<RowKey>& after) {
    return *StepWriter(before, after).steps(std::numeric_limits<std::size_t>::max());
}

std::optional<std::vector<RowStep>> fewRowSteps(const std::vector<RowKey>& before,
                                                const std::vector<RowKey>& after,
                                                std::size_t maximum) {
    return StepWriter(before, after).steps(maximum);
}

} // namespace korvex::ui
