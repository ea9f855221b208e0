#pragma once

#include "richtext/text/AttributeRuns.h"
#include "richtext/text/Attributes.h"
#include "richtext/text/ParagraphStyle.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace korvex::richtext {

/// Text with attributes: one UTF-16 string, runs of character attributes and paragraphs with their
/// styles. A line feed ends a paragraph and belongs to it; nothing else does. What follows the last
/// line feed is a paragraph only when it is not empty. A value; offsets and lengths count UTF-16
/// units, and a range that reaches past the end is cut there. Every operation is linear or better
/// in what it touches.
class AttributedString {
public:
    using AttributesId = AttributeRuns<CharacterAttributes>::Id;
    using StyleId = AttributeRuns<ParagraphStyle>::Id;

    struct CharacterRun {
        TextRange range;
        const CharacterAttributes& attributes;
    };
    /// Neighbouring paragraphs with equal styles; or, from `forEachParagraph`, one of them.
    struct ParagraphRun {
        TextRange range;
        const ParagraphStyle& style;
    };

    AttributedString() = default;
    explicit AttributedString(std::u16string_view text, const CharacterAttributes& attributes = {},
                              const ParagraphStyle& style = {});

    const std::u16string& text() const { return m_text; }
    std::size_t length() const { return m_text.size(); }
    bool isEmpty() const { return m_text.empty(); }

    /// The attributes, and the style, of the character at `offset`; at the end those of the last
    /// character, and in an empty string the default ones.
    const CharacterAttributes& attributesAt(std::size_t offset) const;
    const ParagraphStyle& styleAt(std::size_t offset) const;
    /// The whole paragraph around `offset`, with its line feed.
    TextRange paragraphAt(std::size_t offset) const;

    /// Calls `visit` with each maximal CharacterRun, in order.
    template <typename Visit>
    void forEachRun(Visit&& visit) const {
        forEachRun(TextRange{0, length()}, std::forward<Visit>(visit));
    }
    /// The same of a part; the first and the last run are cut to it.
    template <typename Visit>
    void forEachRun(TextRange range, Visit&& visit) const {
        m_attributes.visit(range, [&](TextRange run, const CharacterAttributes& attributes) {
            visit(CharacterRun{run, attributes});
        });
    }
    /// Calls `visit` with each maximal ParagraphRun of equal styles, in order.
    template <typename Visit>
    void forEachStyleRun(Visit&& visit) const {
        m_styles.visit({0, length()}, [&](TextRange run, const ParagraphStyle& style) {
            visit(ParagraphRun{run, style});
        });
    }
    /// Calls `visit` with the ParagraphRun of every single paragraph, in order.
    template <typename Visit>
    void forEachParagraph(Visit&& visit) const {
        forEachStyleRun([&](const ParagraphRun& run) {
            for (auto start = run.range.location; start < run.range.end();) {
                const auto feed = m_text.find(u'\n', start);
                const auto end = feed == std::u16string::npos ? length() : feed + 1;
                visit(ParagraphRun{{start, end - start}, run.style});
                start = end;
            }
        });
    }

    AttributedString slice(TextRange range) const;
    /// A paragraph that is made of parts of two takes the style of the first; put in after a line
    /// feed, the replacement's own first paragraph is the first.
    void replace(TextRange range, const AttributedString& replacement);
    void remove(TextRange range) { replace(range, {}); }
    void append(const AttributedString& other) { appendPart(other, {0, other.length()}); }
    /// A paragraph that has begun already keeps its style: `style` counts from the first paragraph
    /// on that begins in `text`.
    void append(std::u16string_view text, const CharacterAttributes& attributes,
                const ParagraphStyle& style);

    /// `edit` changes the attributes of each distinct run in the range: called once for each
    /// distinct value, so it must depend on nothing else.
    template <typename Edit>
    void editAttributes(TextRange range, Edit&& edit) {
        m_attributes.rewrite(clamped(range), edit);
    }
    /// The same for the styles of all paragraphs that the range touches; an empty range touches the
    /// paragraph that it stands in.
    template <typename Edit>
    void editStyles(TextRange range, Edit&& edit) {
        m_styles.rewrite(wholeParagraphs(range), edit);
    }
    /// `edit(TextRange, ParagraphStyle&)` changes the style of each paragraph for itself.
    template <typename Edit>
    void editEachStyle(Edit&& edit) {
        AttributeRuns<ParagraphStyle> styles;
        forEachParagraph([&](const ParagraphRun& paragraph) {
            auto style = paragraph.style;
            edit(paragraph.range, style);
            styles.extend(paragraph.range.end(), styles.idOf(style));
        });
        m_styles = std::move(styles);
    }

    /// Makes a string from its front, without comparing values again and again; see
    /// AttributedStringBuilder.h.
    class Builder;

    /// Equal text, runs and styles; lists, tables and cells need not be the same objects, but must
    /// be shared in the same way and have equal values.
    bool isEquivalentTo(const AttributedString& other) const;

private:
    TextRange clamped(TextRange range) const;
    TextRange wholeParagraphs(TextRange range) const;
    void appendPart(const AttributedString& other, TextRange range);

    std::u16string m_text;
    AttributeRuns<CharacterAttributes> m_attributes;
    AttributeRuns<ParagraphStyle> m_styles;
};

} // namespace korvex::richtext
