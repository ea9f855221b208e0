#include "richtext/text/SequenceDiff.h"

#include <algorithm>
#include <cstdint>

namespace korvex::richtext {

namespace {

/// A table of so many steps takes some milliseconds.
constexpr std::size_t kMostSteps = 1'000'000;

/// The lengths of the longest common subsequences of all ends of two middles.
class CommonLengths {
public:
    CommonLengths(IndexRange before, IndexRange after,
                  const std::function<bool(std::size_t, std::size_t)>& isEqual)
        : m_columns(after.size() + 1), m_lengths((before.size() + 1) * m_columns) {
        for (auto row = before.size(); row-- > 0;) {
            for (auto column = after.size(); column-- > 0;) {
                at(row, column) = isEqual(before.begin + row, after.begin + column)
                                      ? at(row + 1, column + 1) + 1
                                      : std::max(at(row + 1, column), at(row, column + 1));
            }
        }
    }

    std::uint32_t& at(std::size_t row, std::size_t column) {
        return m_lengths[row * m_columns + column];
    }

private:
    std::size_t m_columns;
    std::vector<std::uint32_t> m_lengths;
};

} // namespace

std::vector<SequenceChange>
sequenceChanges(std::size_t beforeSize, std::size_t afterSize,
                const std::function<bool(std::size_t, std::size_t)>& isEqual) {
    IndexRange before{0, beforeSize};
    IndexRange after{0, afterSize};
    while (!before.isEmpty() && !after.isEmpty() && isEqual(before.begin, after.begin)) {
        ++before.begin;
        ++after.begin;
    }
    while (!before.isEmpty() && !after.isEmpty() && isEqual(before.end - 1, after.end - 1)) {
        --before.end;
        --after.end;
    }
    if (before.isEmpty() && after.isEmpty()) {
        return {};
    }
    if (before.isEmpty() || after.isEmpty() || before.size() > kMostSteps / after.size()) {
        return {{before, after}};
    }
    CommonLengths lengths(before, after, isEqual);
    std::vector<SequenceChange> changes;
    std::size_t row = 0;
    std::size_t column = 0;
    const auto step = [&](IndexRange gone, IndexRange come) {
        if (!changes.empty() && changes.back().before.end == gone.begin &&
            changes.back().after.end == come.begin) {
            changes.back().before.end = gone.end;
            changes.back().after.end = come.end;
        } else {
            changes.push_back({gone, come});
        }
    };
    while (row < before.size() || column < after.size()) {
        const auto oldPlace = before.begin + row;
        const auto newPlace = after.begin + column;
        if (row < before.size() && column < after.size() && isEqual(oldPlace, newPlace)) {
            ++row;
            ++column;
        } else if (row < before.size() &&
                   (column == after.size() ||
                    lengths.at(row + 1, column) >= lengths.at(row, column + 1))) {
            step({oldPlace, oldPlace + 1}, {newPlace, newPlace});
            ++row;
        } else {
            step({oldPlace, oldPlace}, {newPlace, newPlace + 1});
            ++column;
        }
    }
    return changes;
}

} // namespace korvex::richtext
