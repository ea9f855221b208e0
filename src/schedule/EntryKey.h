#pragma once

#include "base/Instant.h"
#include "model/Entry.h"

#include <bit>
#include <compare>
#include <cstdint>
#include <span>
#include <vector>

namespace korvex::schedule {

/// Numbers in the order of what they were made of, so that one sort serves all.
constexpr std::uint64_t orderedBits(std::int64_t value) {
    return static_cast<std::uint64_t>(value) ^ std::uint64_t{1} << 63U;
}
constexpr std::uint64_t orderedBits(base::Instant instant) {
    // Adding zero makes one of the two zeros.
    const auto bits = std::bit_cast<std::int64_t>(instant.seconds + 0.0);
    return bits >= 0 ? orderedBits(bits) : ~static_cast<std::uint64_t>(bits);
}
/// The later, the smaller.
constexpr std::uint64_t orderedBitsFromLatest(base::Instant instant) {
    return ~orderedBits(instant);
}
constexpr base::Instant instantOfBitsFromLatest(std::uint64_t bits) {
    constexpr auto kSign = std::uint64_t{1} << 63U;
    const auto ordered = ~bits;
    return {std::bit_cast<double>((ordered & kSign) != 0 ? ordered ^ kSign : ~ordered)};
}

/// Where an entry stands in a list of groups: by the first of these that differs. It holds all that
/// decides and can change: so a list that remembers its keys keeps its order while the fields of
/// its entries become others.
struct EntryKey {
    std::uint64_t group = 0;
    std::uint64_t moment = 0;
    std::uint64_t boardOrder = 0;
    std::uint64_t entryOrder = 0;
    /// Zero in a list that does not ask for it.
    std::uint64_t createdAt = 0;

    auto operator<=>(const EntryKey&) const = default;
};

struct KeyedEntry {
    EntryKey key;
    model::Entry* entry;

    /// Where the keys are equal, the identifiers decide, which never change: no two entries stand
    /// at one place.
    bool isBefore(const KeyedEntry& other) const {
        const auto order = key <=> other.key;
        return order != 0 ? order < 0 : entry->id() < other.entry->id();
    }
};

/// A key with nothing but the fields that the entry's board and its place there give.
EntryKey keyOnBoards(const model::Entry& entry);

/// An entry in the group of its key.
struct GroupedEntry {
    std::uint64_t group;
    model::Entry* entry;
};

/// The entries in order. Hardly compares where there are many: the time is that of a few walks
/// through the list. Upcoming over 100,000 todos misses its promise of speed with `std::sort`.
std::vector<GroupedEntry> inOrder(const std::vector<KeyedEntry>& entries);

/// Entries in the order of their groups, as groups; `makeGroup` makes an empty one for a key's
/// group.
template <typename Group, typename MakeGroup>
std::vector<Group> cutIntoGroups(std::span<const GroupedEntry> sorted, MakeGroup&& makeGroup) {
    std::vector<Group> groups;
    for (auto rest = sorted; !rest.empty();) {
        const auto key = rest.front().group;
        std::size_t count = 0;
        while (count < rest.size() && rest[count].group == key) {
            ++count;
        }
        auto& group = groups.emplace_back(makeGroup(key));
        group.entries.reserve(count);
        for (const auto& each : rest.first(count)) {
            group.entries.push_back(each.entry);
        }
        rest = rest.subspan(count);
    }
    return groups;
}

/// Calls `visit` with each item's entry and the item. Entries lie all over the memory, which
/// answers sooner when it is asked for the next ones before they are needed.
template <typename Items, typename EntryOf, typename Visit>
void visitEntries(Items& items, EntryOf&& entryOf, Visit&& visit) {
    constexpr std::size_t kAhead = 8;
    constexpr std::size_t kCacheLine = 64;
    const auto count = std::size(items);
    for (std::size_t i = 0; i < count; ++i) {
        if (i + kAhead < count) {
            const auto* soon = reinterpret_cast<const char*>(entryOf(items[i + kAhead]));
            for (std::size_t offset = 0; offset < sizeof(model::Entry); offset += kCacheLine) {
                __builtin_prefetch(soon + offset);
            }
        }
        visit(items[i]);
    }
}

} // namespace korvex::schedule
