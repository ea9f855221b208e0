#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "services/FoldedTexts.h"
#include "services/SearchResult.h"

#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace korvex::services {

/// What a search found, in display order: the boards as in the sidebar, each followed by its
/// entries. Rows are made when they are asked for, so that a query that finds everything costs no
/// more than one that finds little. Valid until the store's records change.
class SearchResults {
public:
    /// A board and what was found on it.
    struct Section {
        const model::Board* board;
        std::size_t firstRow;
    };
    static constexpr auto kBoardRow = std::numeric_limits<FoldedTexts::Number>::max();

    SearchResults() = default;
    /// For the service: `rows` holds the texts' numbers, and `kBoardRow` for a board.
    SearchResults(const FoldedTexts& texts, std::vector<Section> sections,
                  std::vector<FoldedTexts::Number> rows)
        : m_texts(&texts), m_sections(std::move(sections)), m_rows(std::move(rows)) {}

    std::size_t size() const { return m_rows.size(); }
    bool isEmpty() const { return m_rows.empty(); }
    /// The content of an entry that others have deleted meanwhile is empty. May throw StoreError.
    SearchResult operator[](std::size_t index) const;
    /// The identity of a result, without making a record.
    SearchResult::ID id(std::size_t index) const;
    const model::Board& board(std::size_t index) const;
    /// Null for a board's row, and when others have deleted the entry meanwhile. May throw
    /// StoreError.
    const model::Entry* entry(std::size_t index) const;

private:
    const FoldedTexts* m_texts = nullptr;
    std::vector<Section> m_sections;
    std::vector<FoldedTexts::Number> m_rows;
};

} // namespace korvex::services
