#pragma once

#include "richtext/code/CodeSyntax.h"
#include "richtext/text/AttributedString.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::richtext {

/// A maximal stretch of code in one language, inline code and blocks alike. It is analysed as one.
struct CodePiece {
    std::string language;
    std::u16string code;

    bool operator==(const CodePiece&) const = default;
};

/// Gathers the pieces of code in a text, whose runs are handed over one after the other.
class CodePieces {
public:
    /// Where the text of a run stands: an index of `pieces`, and an offset in that piece's code.
    struct Place {
        std::size_t piece = 0;
        std::size_t offset = 0;
    };

    /// Absent for a run that is no code, whose language is empty: the piece before it ends there.
    std::optional<Place> add(std::u16string_view text, std::string_view language);
    const std::vector<CodePiece>& pieces() const { return m_pieces; }

private:
    std::vector<CodePiece> m_pieces;
    /// Whether the next run may belong to the last piece.
    bool m_isOpen = false;
};

/// Calls `visit(TextRange, SystemColor)` with what a part of a piece has of the piece's colours,
/// which are in order. The ranges count from the start of the part.
template <typename Visit>
void forEachColor(std::span<const ScopeRun> scopes, TextRange part, Visit&& visit) {
    auto scope = std::partition_point(scopes.begin(), scopes.end(), [&](const ScopeRun& each) {
        return each.range.end() <= part.location;
    });
    for (; scope != scopes.end() && scope->range.location < part.end(); ++scope) {
        const auto start = std::max(scope->range.location, part.location);
        const auto end = std::min(scope->range.end(), part.end());
        visit(TextRange{start - part.location, end - start}, scope->color);
    }
}

} // namespace korvex::richtext
