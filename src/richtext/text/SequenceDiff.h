#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace korvex::richtext {

/// From `begin` to `end`, the latter not included.
struct IndexRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    std::size_t size() const { return end - begin; }
    bool isEmpty() const { return begin == end; }
    bool operator==(const IndexRange&) const = default;
};

/// A part of a sequence that another has otherwise; one of the two ranges may be empty.
struct SequenceChange {
    IndexRange before;
    IndexRange after;

    bool operator==(const SequenceChange&) const = default;
};

/// Where two sequences of these lengths differ, from the front; what lies between two changes is
/// equal. `isEqual` is asked of an index in each. The changes are the least there can be, unless
/// the differing middles are so long that finding those would be felt: then they are one change.
std::vector<SequenceChange>
sequenceChanges(std::size_t beforeSize, std::size_t afterSize,
                const std::function<bool(std::size_t, std::size_t)>& isEqual);

} // namespace korvex::richtext
