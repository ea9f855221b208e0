#include "schedule/EntryKey.h"

#include "model/Board.h"

#include <algorithm>
#include <array>
#include <utility>

namespace korvex::schedule {

namespace {

/// Below this, comparing is faster than walking through the counters.
constexpr std::size_t kFewItems = 512;
/// How many steps before it is needed the memory is asked for something.
constexpr std::size_t kAhead = 16;
constexpr unsigned kDigitBits = 11;
constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;
/// What the passes sort by; the little that is still equal then is compared.
constexpr unsigned kMostDigits = 3;

using Field = std::uint64_t EntryKey::*;
constexpr std::array<Field, 4> kFields{&EntryKey::group, &EntryKey::moment, &EntryKey::boardOrder,
                                       &EntryKey::entryOrder};

/// An entry's place in a list, and all of its key that fits: small, since each pass moves it.
struct Item {
    std::uint64_t key;
    std::uint32_t index;
};

/// Where the keys of a list differ, and how that part of them becomes one number.
class KeyPacking {
public:
    explicit KeyPacking(const std::vector<KeyedEntry>& entries) {
        std::array<std::uint64_t, kFields.size()> differing{};
        const auto& first = entries.front().key;
        for (const auto& each : entries) {
            for (std::size_t i = 0; i < kFields.size(); ++i) {
                differing[i] |= each.key.*kFields[i] ^ first.*kFields[i];
            }
        }
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            const auto bits = static_cast<unsigned>(std::bit_width(differing[i]));
            const auto dropped =
                bits == 0 ? 0 : static_cast<unsigned>(std::countr_zero(differing[i]));
            const auto kept = std::min(bits - dropped, 64 - m_bits);
            m_bits += kept;
            m_parts[i] = {.shift = bits - kept, .bits = kept};
        }
    }

    /// How many bits a number has at most.
    unsigned bits() const { return m_bits; }
    std::uint64_t number(const EntryKey& key) const {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            const auto& part = m_parts[i];
            // A shift by all bits is none.
            if (part.bits > 0) {
                const auto value = key.*kFields[i] >> part.shift;
                number = part.bits == 64 ? value
                                         : number << part.bits |
                                               (value & ((std::uint64_t{1} << part.bits) - 1));
            }
        }
        return number;
    }

private:
    struct Part {
        unsigned shift = 0;
        unsigned bits = 0;
    };
    std::array<Part, kFields.size()> m_parts;
    unsigned m_bits = 0;
};

/// One stable pass by the digit that begins at `shift`.
void pass(const std::vector<Item>& from, std::vector<Item>& to, unsigned shift) {
    const auto digit = [&](const Item& item) { return (item.key >> shift) & (kDigits - 1); };
    std::array<std::uint32_t, kDigits> places{};
    for (const auto& item : from) {
        ++places[digit(item)];
    }
    std::uint32_t next = 0;
    for (auto& place : places) {
        next += std::exchange(place, next);
    }
    for (const auto& item : from) {
        to[places[digit(item)]++] = item;
    }
}

/// Sorts by the keys, of which `bits` are used; `isLess` decides completely.
template <typename IsLess>
void sortItems(std::vector<Item>& items, unsigned bits, IsLess&& isLess) {
    if (items.size() < kFewItems) {
        std::sort(items.begin(), items.end(), isLess);
        return;
    }
    std::vector<Item> scratch(items.size());
    const auto lowest = bits - std::min(bits, kMostDigits * kDigitBits);
    for (auto shift = lowest; shift < bits; shift += kDigitBits) {
        pass(items, scratch, shift);
        items.swap(scratch);
    }
    for (auto first = items.begin(); first != items.end();) {
        auto last = first + 1;
        while (last != items.end() && last->key >> lowest == first->key >> lowest) {
            ++last;
        }
        if (last - first > 1) {
            std::sort(first, last, isLess);
        }
        first = last;
    }
}

} // namespace

EntryKey keyOnBoards(const model::Entry& entry) {
    const auto* board = entry.board();
    return {.boardOrder = orderedBits(board ? board->sortOrder() : std::int64_t{0}),
            .entryOrder = orderedBits(entry.sortOrder())};
}

std::vector<GroupedEntry> inOrder(const std::vector<KeyedEntry>& entries) {
    if (entries.empty()) {
        return {};
    }
    const KeyPacking packing(entries);
    std::vector<Item> items;
    items.reserve(entries.size());
    for (const auto& each : entries) {
        items.push_back({packing.number(each.key), static_cast<std::uint32_t>(items.size())});
    }
    sortItems(items, packing.bits(), [&](const Item& left, const Item& right) {
        if (left.key != right.key) {
            return left.key < right.key;
        }
        return entries[left.index].isBefore(entries[right.index]);
    });
    std::vector<GroupedEntry> result;
    result.reserve(entries.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i + kAhead < items.size()) {
            __builtin_prefetch(&entries[items[i + kAhead].index]);
        }
        const auto& each = entries[items[i].index];
        result.push_back({each.key.group, each.entry});
    }
    return result;
}

} // namespace korvex::schedule
