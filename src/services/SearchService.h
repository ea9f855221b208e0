#pragma once

#include "base/TextFolding.h"
#include "model/Board.h"
#include "services/BoardService.h"
#include "services/FoldedTexts.h"
#include "services/SearchResults.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::services {

/// Finds the boards and entries whose text contains every word of a query. Main thread.
class SearchService {
public:
    /// Of a longer query, in bytes, only the words that begin within so many count; and of a word
    /// that is longer than an entry may be only so much that it still is.
    static constexpr std::size_t kMaximumQuery = 4096;

    /// All of them must outlive it, and the results.
    SearchService(store::ModelContext& context, const BoardService& boards, FoldedTexts& texts);
    SearchService(const SearchService&) = delete;
    SearchService& operator=(const SearchService&) = delete;

    /// Searches, fast enough for every key press. Throws StoreError.
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
