#pragma once

#include "richtext/rtf/RtfBudget.h"
#include "richtext/rtf/RtfCodePages.h"
#include "richtext/rtf/RtfInsets.h"
#include "richtext/rtf/RtfKeywords.h"
#include "richtext/rtf/RtfReaderHeader.h"
#include "richtext/rtf/RtfReaderLists.h"
#include "richtext/rtf/RtfReaderStates.h"
#include "richtext/rtf/RtfReaderText.h"
#include "richtext/rtf/RtfTokens.h"
#include "richtext/text/AttributedString.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::richtext::rtf {

/// Walks through the tokens of a document and hands each to what it belongs to.
class DocumentReader {
public:
    explicit DocumentReader(std::string_view document);

    AttributedString read();

private:
    /// Groups that are nested deeper than this are not told apart.
    static constexpr std::size_t kMaximumGroups = 256;

    struct Group {
        Destination destination = Destination::body;
        std::int32_t fallbackUnits = 1;
        bool isField = false;
        /// Where the text stood when the drawing began that this is a part of.
        std::size_t shapeStart = 0;
        /// Whether an inset ends with the group.
        bool isInset = false;
        /// Whether the paragraph's state from before the group waits to be restored.
        bool hasChangedParagraph = false;
    };
    struct SavedGroup {
        Group group;
        CharacterState characters;
    };

    void plain(std::string_view text);
    void byte(char value);
    /// Takes text of whatever group this is.
    void units(std::u16string_view text);
    void finishBytes();
    void unicode(std::int32_t value);
    void symbol(char name);
    void open();
    void close();
    void word(const Word& word);
    /// Takes a byte of the body that is no character; false for all others.
    bool control(char value);
    void noteMark();
    void enter(Destination destination);
    void enterInset(Inset inset);
    /// Whether such a group can stand here.
    bool isExpected(Destination destination) const;
    /// Comes after the end of a group that held `destination`.
    void leave(Destination destination);
    void bodyWord(const Keyword& keyword, Parameter parameter);
    void documentWord(const Keyword& keyword, Parameter parameter);
    void tableWord(const Keyword& keyword, Parameter parameter);
    void selectCodePage();
    /// The paragraph's state, which the end of the group will put back.
    ParagraphState& editParagraph();
    Destination outerDestination() const { return m_groups.back().group.destination; }

    Tokens m_tokens;
    Budget m_budget;
    FontTable m_fonts;
    ColorTable m_colors;
    ListTable m_lists;
    TextBuilder m_text;
    ByteDecoder m_decoder;

    Group m_group;
    /// The enclosing groups, from the outermost.
    std::vector<SavedGroup> m_groups;
    std::vector<ParagraphState> m_paragraphs;
    std::size_t m_uncountedGroups = 0;
    bool m_isOver = false;
    bool m_isOptional = false;
    RtfDialect m_dialect = RtfDialect::office;
    std::int32_t m_defaultFont = 0;
    /// How much of what follows stands for a character that was read already.
    std::int32_t m_unitsToSkip = 0;
    std::u16string m_instruction;
    /// How many notes have a number for their mark.
    std::int32_t m_noteMarks = 0;
    /// The depth of the cell that ended last, while nothing but the end of its row can follow.
    std::size_t m_endedCellDepth = 0;
};

} // namespace korvex::richtext::rtf
