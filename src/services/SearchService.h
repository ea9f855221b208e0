#pragma once

#include "base/TextFolding.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "services/BoardService.h"
#include "services/FoldedTexts.h"
#include "services/SearchResult.h"

#include <chrono>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
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
    /// Without making a record.
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

/// Finds the boards and entries whose text contains every word of a query. Main thread.
class SearchService {
public:
    /// Of a longer query, in bytes, only the beginning counts.
    static constexpr std::size_t kMaximumQuery = 4096;

    /// All of them must outlive it, and the results.
    SearchService(store::ModelContext& context, const BoardService& boards, FoldedTexts& texts);
    SearchService(const SearchService&) = delete;
    SearchService& operator=(const SearchService&) = delete;

    /// On every key press. Throws StoreError.
    SearchResults search(std::string_view query);
    /// Does some of what the first search would have to do before it can answer, for about this
    /// long; false once nothing is left to do.
    bool prepare(std::chrono::milliseconds atMost) { return m_texts.prepare(atMost); }

    /// The words of a query: its pieces between white space.
    static std::vector<std::string> terms(std::string_view query);
    /// The same, folded, each once; without those of which nothing is left, such as an accent
    /// alone.
    static std::vector<std::string> foldedTerms(std::string_view query,
                                                const base::TextFolding& folding);
    /// Whether the text contains every word of the query; a query without words matches all.
    static bool matches(std::string_view text, std::string_view query,
                        const base::TextFolding& folding);

private:
    struct VisibleBoard {
        const model::Board* board;
        std::string foldedName;
    };

    void lookAtBoards();

    store::ModelContext& m_context;
    const BoardService& m_boards;
    FoldedTexts& m_texts;
    std::vector<VisibleBoard> m_visible;
    bool m_visibleIsCurrent = false;
    base::Subscription m_changes;
    /// Between searches only their memory is of use.
    std::vector<FoldedTexts::Number> m_found;
    std::vector<bool> m_isFound;
};

} // namespace korvex::services
