#pragma once

#include "richtext/text/AttributedString.h"
#include "richtext/text/SequenceDiff.h"

#include <cstddef>
#include <vector>

namespace korvex::richtext {

/// A text cut into pieces that texts are compared by. Refers to its text, which must outlive it.
class TextUnits {
public:
    /// Its paragraphs, each with the line feed at its end, and each table as one. The text must end
    /// with a line feed.
    static TextUnits paragraphsOf(const AttributedString& text);
    /// The words of one paragraph, and what stands between them; its style does not count.
    static TextUnits wordsOf(const AttributedString& paragraph);

    std::size_t size() const { return m_units.size(); }
    /// A table, or a word.
    bool isSpecial(std::size_t index) const { return m_units[index].weight == Weight::special; }
    TextRange range(IndexRange units) const;
    AttributedString slice(IndexRange units) const { return m_text->slice(range(units)); }
    /// Where the unit begins; the end of the text for `size()`.
    std::size_t start(std::size_t index) const;

    static bool areEqual(const TextUnits& left, std::size_t leftIndex, const TextUnits& right,
                         std::size_t rightIndex);
    static bool areEqual(const TextUnits& left, IndexRange leftUnits, const TextUnits& right,
                         IndexRange rightUnits);

private:
    enum class Weight { plain, special };
    struct Unit {
        TextRange range;
        std::size_t hash;
        AttributedString key;
        Weight weight;
    };

    explicit TextUnits(const AttributedString& text) : m_text(&text) {}
    void add(TextRange range, AttributedString key, Weight weight);

    const AttributedString* m_text;
    std::vector<Unit> m_units;
};

/// Where two cut texts differ.
std::vector<SequenceChange> changesBetween(const TextUnits& before, const TextUnits& after);

} // namespace korvex::richtext
