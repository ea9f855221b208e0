#include "services/EntryPlaces.h"

#include "model/Board.h"
#include "services/OrderKey.h"

#include <algorithm>
#include <compare>
#include <map>

namespace korvex::services {

using model::Board;
using model::Entry;

namespace {

/// By what a whole board is in order: its active entries, then its completed todos.
struct BoardKey {
    bool isActive;
    OrderKey order;

    auto operator<=>(const BoardKey& other) const {
        return isActive != other.isActive ? other.isActive <=> isActive : order <=> other.order;
    }
};

BoardKey formerKey(const Entry& entry) {
    if (!entry.hasChanges()) {
        return {entry.isActive(), {entry.sortOrder(), entry.createdAt(), entry.id()}};
    }
    const auto type = std::get<std::string>(entry.originalValue(Entry::typeRawValueField));
    const auto isCompleted =
        std::get<std::int64_t>(entry.originalValue(Entry::isCompletedField)) != 0;
    return {model::entryType(type) != model::EntryType::todo || !isCompleted,
            {std::get<std::int64_t>(entry.originalValue(Entry::sortOrderField)), entry.createdAt(),
             entry.id()}};
}

std::optional<base::Uuid> formerBoard(const Entry& entry) {
    const auto board = entry.originalValue(Entry::boardField);
    return store::isAbsent(board) ? std::nullopt : std::optional(std::get<base::Uuid>(board));
}

/// What is to be found on one board, as indexes into the entries asked for.
struct Wanted {
    BoardKey key;
    std::size_t entry;
};

/// Counts, in one walk over the board, how many of its entries stood before each of `wanted`.
class Ranking {
public:
    explicit Ranking(std::vector<Wanted> wanted) : m_wanted(std::move(wanted)) {
        std::sort(m_wanted.begin(), m_wanted.end(),
                  [](const Wanted& left, const Wanted& right) { return left.key < right.key; });
        m_counts.resize(m_wanted.size() + 1);
    }

    void add(const BoardKey& member) {
        m_activeCount += member.isActive ? 1 : 0;
        const auto behind = std::upper_bound(
            m_wanted.begin(), m_wanted.end(), member,
            [](const BoardKey& key, const Wanted& wanted) { return key < wanted.key; });
        ++m_counts[static_cast<std::size_t>(behind - m_wanted.begin())];
    }

    void write(const base::Uuid& board, std::vector<std::optional<EntryPlace>>& to) const {
        std::int64_t before = 0;
        for (std::size_t i = 0; i < m_wanted.size(); ++i) {
            before += m_counts[i];
            to[m_wanted[i].entry] = {.board = board,
                                     .index = m_wanted[i].key.isActive ? before
                                                                       : before - m_activeCount};
        }
    }

private:
    std::vector<Wanted> m_wanted;
    /// At each place, how many stand before that one and not before those before it.
    std::vector<std::int64_t> m_counts;
    std::int64_t m_activeCount = 0;
};

} // namespace

bool isMoved(const Entry& entry) {
    return entry.isChanged(Entry::sortOrderField) || entry.isChanged(Entry::boardField) ||
           formerKey(entry).isActive != entry.isActive();
}

std::vector<std::optional<EntryPlace>> formerPlaces(store::ModelContext& context,
                                                    std::span<Entry* const> entries) {
    std::map<base::Uuid, std::vector<Wanted>> wanted;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (const auto board = formerBoard(*entries[i])) {
            wanted[*board].push_back({formerKey(*entries[i]), i});
        }
    }
    std::vector<std::optional<EntryPlace>> places(entries.size());
    for (auto& [id, onBoard] : wanted) {
        const auto* const board = context.find<Board>(id);
        if (!board) {
            continue;
        }
        Ranking ranking(std::move(onBoard));
        for (const auto* const entry : board->entries()) {
            if (!entry->isInserted() && !entry->isChanged(Entry::boardField)) {
                ranking.add(formerKey(*entry));
            }
        }
        for (const auto* const entry : entries) {
            if (entry->isChanged(Entry::boardField) && formerBoard(*entry) == id) {
                ranking.add(formerKey(*entry));
            }
        }
        ranking.write(id, places);
    }
    return places;
}

} // namespace korvex::services
