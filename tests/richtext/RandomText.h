#pragma once

#include "richtext/text/AttributedString.h"

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace korvex::richtext {

/// Makes attributed strings of everything that one can hold. The same seed gives the same strings.
class RandomText {
public:
    /// Whether tables are complete enough to keep their places, and values within what is stored;
    /// otherwise anything goes that the types allow.
    enum class Kind { sound, broken };

    explicit RandomText(std::uint64_t seed, Kind kind = Kind::sound)
        : m_random(seed), m_kind(kind) {}

    /// About `paragraphs` paragraphs, those in tables aside.
    AttributedString next(int paragraphs = 6);

private:
    /// What the paragraphs of a block share.
    using Cells = std::vector<TextTableCellRef>;

    int below(int limit);
    bool oneIn(int count) { return below(count) == 0; }
    template <typename Value>
    const Value& oneOf(const std::vector<Value>& values) {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }
    template <typename Enumeration>
    Enumeration oneUpTo(Enumeration last) {
        return static_cast<Enumeration>(below(static_cast<int>(last) + 1));
    }

    void preparePools();
    Twips length();
    Color color();
    CharacterAttributes attributes();
    ParagraphStyle style(const Cells& cells);
    CellGeometry geometry();
    std::u16string words();
    void appendParagraph(AttributedString& text, const Cells& cells);
    void appendTable(AttributedString& text, const Cells& outer);
    void appendBlock(AttributedString& text, const Cells& cells, int paragraphs);
    void fillCell(AttributedString& text, const Cells& cells);

    std::mt19937_64 m_random;
    Kind m_kind;
    std::vector<TextListRef> m_lists;
    std::vector<CharacterAttributes> m_attributes;
    std::vector<ParagraphStyle> m_styles;
};

} // namespace korvex::richtext
