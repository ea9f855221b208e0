#include "services/SearchService.h"

#include "base/Text.h"
#include "model/EntryContentLimit.h"

#include <algorithm>

namespace korvex::services {

namespace {

bool containsAll(std::string_view text, const std::vector<base::Needle>& terms) {
    return std::all_of(terms.begin(), terms.end(),
                       [&](const base::Needle& term) { return term.isIn(text); });
}

/// The longest first; a term that is part of another says nothing.
std::vector<base::Needle> decisive(std::vector<std::string> terms) {
    std::stable_sort(terms.begin(), terms.end(), [](const std::string& a, const std::string& b) {
        return a.size() > b.size();
    });
    std::vector<base::Needle> kept;
    std::string all;
    for (auto& term : terms) {
        if (all.find(term) == std::string::npos) {
            all += term + ' ';
            kept.emplace_back(std::move(term));
        }
    }
    return kept;
}

} // namespace

SearchService::SearchService(store::ModelContext& context, const BoardService& boards,
                             FoldedTexts& texts)
    : m_context(context),
      m_boards(boards),
      m_texts(texts),
      m_changes(context.didChange().connect([this](const auto&) { m_visibleIsCurrent = false; })) {}

SearchResults SearchService::search(std::string_view query) {
    const auto needles = decisive(foldedTerms(query, m_texts.folding()));
    if (needles.empty()) {
        return {};
    }
    m_texts.update();
    lookAtBoards();
    m_found.clear();
    m_texts.find(needles, m_found);
    m_isFound.assign(m_texts.numberCount(), false);
    for (const auto number : m_found) {
        m_isFound[number] = true;
    }
    std::vector<SearchResults::Section> sections;
    std::vector<FoldedTexts::Number> rows;
    rows.reserve(m_found.size() + m_visible.size());
    for (const auto& [board, foldedName] : m_visible) {
        const auto firstRow = rows.size();
        if (containsAll(foldedName, needles)) {
            rows.push_back(SearchResults::kBoardRow);
        }
        for (const auto number : m_texts.entriesInOrder(board->id())) {
            if (m_isFound[number]) {
                rows.push_back(number);
            }
        }
        if (rows.size() > firstRow) {
            sections.push_back({board, firstRow});
        }
    }
    return {m_texts, std::move(sections), std::move(rows)};
}

void SearchService::lookAtBoards() {
    if (m_visibleIsCurrent && !m_context.hasChanges()) {
        return;
    }
    m_visible.clear();
    for (const auto* board : m_boards.boards()) {
        m_visible.push_back({board, m_texts.folding().folded(board->name())});
    }
    m_visibleIsCurrent = !m_context.hasChanges();
}

std::vector<std::string> SearchService::terms(std::string_view query) {
    const auto words = base::words(query);
    return {words.begin(), words.end()};
}

std::vector<std::string> SearchService::foldedTerms(std::string_view query,
                                                    const base::TextFolding& folding) {
    std::vector<std::string> result;
    constexpr auto kMaximumWord = model::EntryContentLimit::kMaximumBytes + 1;
    for (const auto word : base::words(query.substr(0, kMaximumQuery + kMaximumWord))) {
        if (static_cast<std::size_t>(word.data() - query.data()) >= kMaximumQuery) {
            break;
        }
        auto term = folding.folded(word.substr(0, kMaximumWord));
        if (!term.empty()) {
            result.push_back(std::move(term));
        }
    }
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

bool SearchService::matches(std::string_view text, std::string_view query,
                            const base::TextFolding& folding) {
    return containsAll(folding.folded(text), decisive(foldedTerms(query, folding)));
}

} // namespace korvex::services
