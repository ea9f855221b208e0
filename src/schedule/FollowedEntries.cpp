#include "schedule/FollowedEntries.h"

namespace korvex::schedule {

namespace {

/// To look up so many records one by one costs as much as to read all.
constexpr std::size_t kManyInserted = 512;

} // namespace

FollowedEntries::FollowedEntries(store::ModelContext& context, store::Condition condition)
    : m_context(context), m_condition(std::move(condition)) {}

std::vector<model::Entry*> FollowedEntries::readAll() {
    // The boards first and together: each entry asks for its own.
    Changes changes;
    m_boards.clear();
    for (const auto* board : m_context.fetch<model::Board>()) {
        learn(*board, changes);
    }
    return m_context.fetch<model::Entry>({.condition = m_condition});
}

FollowedEntries::Changes FollowedEntries::of(const store::ChangeSet& changes) {
    Changes result{.entries = {}, .deleted = changes.deleted};
    for (const auto& id : changes.deleted) {
        // One that came back in another row is among the inserted, too, and is compared there with
        // what it was.
        if (m_boards.contains(id) && !m_context.find<model::Board>(id)) {
            m_boards.erase(id);
        }
    }
    if (changes.inserted.size() > kManyInserted) {
        result.entries = readAll();
        result.movedBoards = true;
    }
    for (const auto* ids : {&changes.inserted, &changes.updated}) {
        if (ids == &changes.inserted && ids->size() > kManyInserted) {
            continue;
        }
        for (const auto& id : *ids) {
            if (!m_boards.contains(id)) {
                if (auto* entry = m_context.find<model::Entry>(id)) {
                    result.entries.push_back(entry);
                    continue;
                }
            }
            if (const auto* board = m_context.find<model::Board>(id)) {
                learn(*board, result);
            }
        }
    }
    return result;
}

void FollowedEntries::learn(const model::Board& board, Changes& changes) {
    const Standing now{.isArchived = board.isArchived(), .sortOrder = board.sortOrder()};
    // What stands on a new board is among the changes itself.
    auto& known = m_boards.try_emplace(board.id(), now).first->second;
    if (known != now) {
        known = now;
        changes.movedBoards = true;
    }
    changes.touchedBoards = true;
}

} // namespace korvex::schedule
