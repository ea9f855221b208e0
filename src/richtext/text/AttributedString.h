#pragma once

#include "richtext/text/Attributes.h"
#include "richtext/text/Interned.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::richtext {

/// A part of a string, in UTF-16 units.
struct TextRange {
    std::size_t location = 0;
    std::size_t length = 0;

    std::size_t end() const { return location + length; }
    bool operator==(const TextRange&) const = default;
};

/// Text with attributes: one UTF-16 string, runs of character attributes and paragraphs with their
/// styles. A line feed ends a paragraph and belongs to it; nothing else does. What follows the last
/// line feed is a paragraph only when it is not empty. A value; offsets and lengths count UTF-16
/// units, and a range that reaches past the end is cut there. Every operation is linear or better
/// in what it touches.
class AttributedString {
public:
    using AttributesId = Interned<CharacterAttributes>::Id;
    using StyleId = Interned<ParagraphStyle>::Id;

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
        visitRuns<CharacterRun>(m_runs, m_attributes, range, visit);
    }
    /// Calls `visit` with each maximal ParagraphRun of equal styles, in order.
    template <typename Visit>
    void forEachStyleRun(Visit&& visit) const {
        visitRuns<ParagraphRun>(m_paragraphs, m_styles, TextRange{0, length()}, visit);
    }
    /// Calls `visit` with the ParagraphRun of every single paragraph, in order.
    template <typename Visit>
    void forEachParagraph(Visit&& visit) const {
        std::size_t start = 0;
        for (const Run& run : m_paragraphs) {
            while (start < run.end) {
                const auto feed = m_text.find(u'\n', start);
                const auto end = feed == std::u16string::npos ? length() : feed + 1;
                visit(ParagraphRun{{start, end - start}, m_styles[run.id]});
                start = end;
            }
        }
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
        rewrite(m_runs, m_attributes, clamped(range), edit);
    }
    /// The same for the styles of all paragraphs that the range touches; an empty range touches the
    /// paragraph that it stands in.
    template <typename Edit>
    void editStyles(TextRange range, Edit&& edit) {
        rewrite(m_paragraphs, m_styles, wholeParagraphs(range), edit);
    }

    /// Makes a string from its front, without comparing values again and again.
    class Builder;

    /// Equal text, runs and styles; lists, tables and cells need not be the same objects, but must
    /// be shared in the same way and have equal values.
    bool isEquivalentTo(const AttributedString& other) const;

private:
    struct Run {
        std::size_t end;
        std::uint32_t id;
    };
    using Runs = std::vector<Run>;

    TextRange clamped(TextRange range) const;
    TextRange wholeParagraphs(TextRange range) const;
    void appendPart(const AttributedString& other, TextRange range);
    static Runs::const_iterator runAt(const Runs& runs, std::size_t offset) {
        return std::partition_point(runs.begin(), runs.end(),
                                    [&](const Run& run) { return run.end <= offset; });
    }
    /// Adds a run that reaches to `end`, or lets the last one reach there.
    static void extend(Runs& runs, std::size_t end, std::uint32_t id) {
        if (!runs.empty() && runs.back().id == id) {
            runs.back().end = end;
        } else if (runs.empty() ? end > 0 : end > runs.back().end) {
            runs.push_back({end, id});
        }
    }

    template <typename Visited, typename Values, typename Visit>
    static void visitRuns(const Runs& runs, const Values& values, TextRange range, Visit& visit) {
        auto start = range.location;
        for (auto run = runAt(runs, start); run != runs.end() && start < range.end(); ++run) {
            const auto end = std::min(run->end, range.end());
            visit(Visited{{start, end - start}, values[run->id]});
            start = end;
        }
    }

    template <typename T, typename Edit>
    static void rewrite(Runs& runs, Interned<T>& values, TextRange range, Edit& edit) {
        if (range.length == 0) {
            return;
        }
        constexpr auto kUnknown = static_cast<std::uint32_t>(-1);
        // Values are interned anew, so that those no longer used are forgotten.
        Interned<T> newValues;
        std::vector<std::uint32_t> kept(values.size(), kUnknown);
        std::vector<std::uint32_t> edited(values.size(), kUnknown);
        Runs newRuns;
        newRuns.reserve(runs.size() + 2);
        const auto keep = [&](std::size_t end, std::uint32_t id) {
            if (kept[id] == kUnknown) {
                kept[id] = newValues.idOf(values[id]);
            }
            extend(newRuns, end, kept[id]);
        };
        const auto change = [&](std::size_t end, std::uint32_t id) {
            if (edited[id] == kUnknown) {
                auto value = values[id];
                edit(value);
                edited[id] = newValues.idOf(value);
            }
            extend(newRuns, end, edited[id]);
        };
        std::size_t start = 0;
        for (const Run& run : runs) {
            if (start < range.location) {
                keep(std::min(run.end, range.location), run.id);
            }
            if (run.end > range.location && start < range.end()) {
                change(std::min(run.end, range.end()), run.id);
            }
            if (run.end > range.end()) {
                keep(run.end, run.id);
            }
            start = run.end;
        }
        runs = std::move(newRuns);
        values = std::move(newValues);
    }

    std::u16string m_text;
    Runs m_runs;
    Runs m_paragraphs;
    Interned<CharacterAttributes> m_attributes;
    Interned<ParagraphStyle> m_styles;
};

class AttributedString::Builder {
public:
    void reserve(std::size_t units) { m_string.m_text.reserve(units); }
    AttributesId idOf(const CharacterAttributes& attributes) {
        return m_string.m_attributes.idOf(attributes);
    }
    StyleId idOf(const ParagraphStyle& style) { return m_string.m_styles.idOf(style); }
    const CharacterAttributes& attributes(AttributesId id) const {
        return m_string.m_attributes[id];
    }
    const ParagraphStyle& style(StyleId id) const { return m_string.m_styles[id]; }

    std::size_t length() const { return m_string.m_text.size(); }
    /// Where the paragraph begins that is being written.
    std::size_t paragraphStart() const { return m_paragraphStart; }

    void append(std::u16string_view text, AttributesId attributes) {
        m_string.m_text.append(text);
        extend(m_string.m_runs, m_string.m_text.size(), attributes);
    }
    void append(char16_t unit, AttributesId attributes) {
        m_string.m_text.push_back(unit);
        extend(m_string.m_runs, m_string.m_text.size(), attributes);
    }
    /// Gives the style to all that was appended since the last paragraph ended. The last unit must
    /// be a line feed, or nothing may follow.
    void endParagraph(StyleId style) {
        extend(m_string.m_paragraphs, m_string.m_text.size(), style);
        m_paragraphStart = m_string.m_text.size();
    }

    /// Every paragraph must have ended before.
    AttributedString take() { return std::move(m_string); }

private:
    AttributedString m_string;
    std::size_t m_paragraphStart = 0;
};

} // namespace korvex::richtext
