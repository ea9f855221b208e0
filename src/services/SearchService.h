#pragma once

#include "base/TextFolding.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "services/BoardService.h"
#include "services/FoldedTexts.h"
#include "services/SearchResult.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::services {

/// What a search found, in display order: the boards as in the sidebar, each followed by its
/// entries. Rows are made when they are asked for, so that a query that finds everything costs no
/// more than one that finds little. Valid until the store's records change.
class SearchResults {
public:
    std::size_t size() const { return m_rows.size(); }
    bool isEmpty() const { return m_rows.empty(); }
    SearchResult operator[](std::size_t index) const;
    /// Of a row: its board, and its entry (null for a board's row).
    const model::Board& board(std::size_t index) const { return *m_rows[index].board; }
    const model::Entry* entry(std::size_t index) const { return m_rows[index].entry; }

private:
    friend class SearchService; // to be solved without `friend`: see the search's sources
    struct Row {
        const model::Board* board;
        const model::Entry* entry;
    };
    std::vector<Row> m_rows;
};

/// Finds the boards and entries whose text contains every word of a query. Main thread.
class SearchService {
public:
    SearchService(store::ModelContext& context, const BoardService& boards, FoldedTexts& texts);

    /// On every key press. Throws StoreError.
    SearchResults search(std::string_view query);
    /// Does some of what the first search would have to do before it can answer, for about this
    /// long; false once nothing is left to do.
    bool prepare(std::chrono::milliseconds atMost);

    /// The words of a query: its pieces between white space.
    static std::vector<std::string> terms(std::string_view query);
    /// The same, folded.
    static std::vector<std::string> foldedTerms(std::string_view query,
                                                const base::TextFolding& folding);
    /// Whether the text contains every word of the query; a query without words matches all.
    static bool matches(std::string_view text, std::string_view query,
                        const base::TextFolding& folding);
};

} // namespace korvex::services
