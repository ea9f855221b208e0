#include "services/SearchResults.h"

#include <algorithm>

namespace korvex::services {

using model::Board;
using model::Entry;

SearchResult SearchResults::operator[](std::size_t index) const {
    const auto& on = board(index);
    SearchResult result{
        .id = id(index), .boardID = on.id(), .boardName = on.name(), .isArchived = on.isArchived()};
    if (m_rows[index] == kBoardRow) {
        result.content = on.name();
        return result;
    }
    result.entryType = model::EntryType::text;
    if (const auto* found = entry(index)) {
        result.entryType = found->type();
        result.content = found->content();
        if (found->isTodo()) {
            result.isCompleted = found->isCompleted();
            result.schedule = found->schedule();
        }
    }
    return result;
}

SearchResult::ID SearchResults::id(std::size_t index) const {
    return m_rows[index] == kBoardRow ? SearchResult::ID::board(board(index).id())
                                      : SearchResult::ID::entry(m_texts->id(m_rows[index]));
}

const Board& SearchResults::board(std::size_t index) const {
    return *(std::upper_bound(
                 m_sections.begin(), m_sections.end(), index,
                 [](std::size_t row, const Section& each) { return row < each.firstRow; }) -
             1)
                ->board;
}

const Entry* SearchResults::entry(std::size_t index) const {
    return m_rows[index] == kBoardRow ? nullptr : m_texts->entry(m_rows[index]);
}

} // namespace korvex::services
