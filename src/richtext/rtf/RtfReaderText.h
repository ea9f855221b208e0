#pragma once

#include "richtext/rtf/RtfBudget.h"
#include "richtext/rtf/RtfInsets.h"
#include "richtext/rtf/RtfReaderHeader.h"
#include "richtext/rtf/RtfReaderLists.h"
#include "richtext/rtf/RtfReaderStates.h"
#include "richtext/rtf/RtfReaderTables.h"
#include "richtext/text/AttributedStringBuilder.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::richtext::rtf {

/// The text that is read, with the states that hold where each part of it comes.
class TextBuilder {
public:
    TextBuilder(Budget& budget, const FontTable& fonts, const ColorTable& colors, ListTable& lists,
                std::size_t documentSize);

    TableBuilder& tables() { return m_tables; }
    const CharacterState& characters() const { return m_characters; }
    CharacterState& editCharacters() {
        m_areCharactersStale = true;
        return m_characters;
    }
    const ParagraphState& paragraph() const { return m_paragraph; }
    ParagraphState& editParagraph() {
        m_isParagraphStale = true;
        return m_paragraph;
    }
    /// To be called when the tables of fonts and colours have changed.
    void forgetAttributes() {
        ++m_generation;
        m_areCharactersStale = true;
    }
    /// The number of a link, which is UTF-8, for `CharacterState::link`.
    std::uint32_t link(std::string target);
    /// The number of an old writer's numbering, which is the last paragraph's where that is equal.
    std::size_t numbering(TextList list);

    /// Takes any text; a line feed ends the paragraph.
    void append(std::u16string_view text);
    /// The same for text that is only printable ASCII and tabs.
    void appendPlain(std::string_view text);
    void endParagraph();
    /// The line ends, but not its paragraph.
    void breakLine() { m_insets.breakLine(); }
    /// Between these two everything stands within the paragraph that is being read: ends of
    /// paragraphs and cells break its lines.
    void beginInset(Inset inset) { m_insets.begin(inset); }
    void endInset();
    bool isInInset() const { return !m_insets.isEmpty(); }
    std::size_t length() const { return m_builder.length(); }
    bool isParagraphEmpty() const { return m_builder.length() == m_builder.paragraphStart(); }
    /// The paragraph that ends next has no line feed, if it is the last.
    void setWithoutFeed() { m_isWithoutFeed = true; }
    void restartParagraph() { m_isAfterNestedRow = false; }
    /// Ends the cell at `depth`, where 1 is the outermost, and its last paragraph.
    void endCell(std::size_t depth);
    void endRow(std::size_t depth);

    AttributedString finish();

private:
    struct CachedAttributes {
        CharacterState state;
        AttributedString::AttributesId id = 0;
        std::uint32_t generation = 0;
    };

    /// Without the blanks with which an inset begins.
    template <typename Text>
    Text afterBlanks(Text text) const {
        const auto isBlank = [](char16_t unit) {
            return unit == u' ' || unit == u'\t' || unit == u'\u00A0';
        };
        while (m_insets.isAtStart() && !text.empty() &&
               isBlank(static_cast<char16_t>(text.front()))) {
            text.remove_prefix(1);
        }
        return text;
    }
    /// Writes what stands before the next unit.
    void openInsets();
    AttributedString::AttributesId attributes();
    AttributedString::AttributesId resolved(const CharacterState& state);
    AttributedString::StyleId style(const std::vector<TextTableCellRef>& cells);
    ParagraphStyle resolved(const ParagraphState& state);
    void endParagraph(std::size_t depth);
    void closeParagraph(std::size_t depth);

    Budget& m_budget;
    const FontTable& m_fonts;
    const ColorTable& m_colors;
    ListTable& m_lists;
    TableBuilder m_tables;
    AttributedString::Builder m_builder;

    CharacterState m_characters;
    bool m_areCharactersStale = true;
    AttributedString::AttributesId m_attributes = 0;
    std::size_t m_attributesSeen = 0;
    /// States that were resolved before, each in the one place that its hash gives it.
    std::array<CachedAttributes, 256> m_cache;
    /// Only what was resolved since the tables' last change counts.
    std::uint32_t m_generation = 1;
    std::vector<std::string> m_links;

    ParagraphState m_paragraph;
    bool m_isParagraphStale = true;
    TextTableCellRef m_styleCell;
    AttributedString::StyleId m_style = 0;
    std::size_t m_stylesSeen = 0;
    std::vector<TextListRef> m_numberings;
    std::size_t m_lastNumbering = 0;

    Insets m_insets;
    bool m_isAfterNestedRow = false;
    bool m_isWithoutFeed = false;
    /// Where the text ends when its last line feed is one that does not count.
    std::size_t m_endWithoutFeed = 0;
};

} // namespace korvex::richtext::rtf
