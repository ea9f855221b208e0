#include "richtext/rtf/RtfReaderDocument.h"

#include "richtext/text/HeadingLevel.h"

#include <algorithm>
#include <string>
#include <utility>

namespace korvex::richtext::rtf {

namespace {

constexpr bool isBetween(Action action, Action first, Action last) {
    return action >= first && action <= last;
}

} // namespace

void DocumentReader::word(const Word& word) {
    const auto isOptional = std::exchange(m_isOptional, false);
    const auto& keyword = *word.keyword;
    if (keyword.action == Action::binary) {
        m_tokens.skip(word.parameter.value);
    }
    if (m_unitsToSkip > 0) {
        --m_unitsToSkip;
        return;
    }
    switch (keyword.action) {
    case Action::ignored:
        if (isOptional && keyword.name.empty()) {
            enter(Destination::skipped);
        }
        return;
    case Action::destination:
        enter(static_cast<Destination>(keyword.value));
        return;
    case Action::fallbackUnits: {
        constexpr std::int32_t kMaximum = 255;
        m_group.fallbackUnits =
            word.parameter.isPresent ? std::clamp(word.parameter.value, 0, kMaximum) : 1;
        return;
    }
    case Action::unicode:
        if (word.parameter.isPresent) {
            unicode(word.parameter.value);
        }
        return;
    case Action::character: {
        finishBytes();
        const auto unit = static_cast<char16_t>(keyword.value);
        units({&unit, 1});
        return;
    }
    default:
        break;
    }
    switch (m_group.destination) {
    case Destination::body:
        bodyWord(keyword, word.parameter);
        break;
    case Destination::fontTable:
        m_fonts.word(keyword, word.parameter.value);
        break;
    case Destination::colorTable:
        m_colors.word(keyword, word.parameter.value);
        break;
    case Destination::extendedColorTable:
        m_colors.extendedWord(keyword, word.parameter.value);
        break;
    case Destination::list:
    case Destination::listLevel:
    case Destination::levelText:
    case Destination::listOverride:
    case Destination::overrideLevel:
    case Destination::numbering:
        m_lists.word(keyword, word.parameter.value);
        break;
    default:
        break;
    }
}

void DocumentReader::bodyWord(const Keyword& keyword, Parameter parameter) {
    if (isBetween(keyword.action, Action::font, Action::background)) {
        if (keyword.action == Action::font) {
            finishBytes();
        }
        // The end of such a group would not be noticed.
        if (keyword.action != Action::hidden || m_uncountedGroups == 0 || !parameter.isOn()) {
            m_text.editCharacters().word(keyword, parameter);
        }
    } else if (isBetween(keyword.action, Action::alignment, Action::tableDepth)) {
        editParagraph().word(keyword, parameter);
    } else if (isBetween(keyword.action, Action::rowDefault, Action::absentCell)) {
        tableWord(keyword, parameter);
    } else {
        documentWord(keyword, parameter);
    }
}

void DocumentReader::documentWord(const Keyword& keyword, Parameter parameter) {
    switch (keyword.action) {
    case Action::codePage:
        m_fonts.setDocumentCodePage(parameter.value);
        break;
    case Action::codePageFixed:
        m_fonts.setDocumentCodePage(keyword.value);
        break;
    case Action::nativeDialect:
        m_dialect = RtfDialect::native;
        m_lists.setDialect(m_dialect);
        m_text.tables().setDialect(m_dialect);
        break;
    case Action::defaultFont:
        m_defaultFont = parameter.value;
        m_text.editCharacters().font = m_defaultFont;
        break;
    case Action::plain: {
        finishBytes();
        const auto& before = m_text.characters();
        m_text.editCharacters() = {
            .font = m_defaultFont, .link = before.link, .heading = before.heading};
        break;
    }
    case Action::paragraphDefault:
        editParagraph() = {};
        if (m_text.characters().heading != 0) {
            m_text.editCharacters().heading = 0;
        }
        m_text.restartParagraph();
        m_endedCellDepth = 0;
        break;
    case Action::section:
    case Action::paragraphEnd:
        finishBytes();
        // A section ends with a paragraph, which most writers end before it.
        if (keyword.action == Action::paragraphEnd || !m_text.isParagraphEmpty()) {
            m_text.endParagraph();
        }
        break;
    case Action::lineBreak:
        finishBytes();
        m_text.breakLine();
        break;
    case Action::noteMark:
        noteMark();
        break;
    case Action::outlineLevel:
        // In a native document, as in a text here, a heading is known by its font alone.
        if (m_dialect != RtfDialect::native) {
            const auto level = parameter.value;
            m_text.editCharacters().heading =
                level >= 0 && level < static_cast<std::int32_t>(kHeadingLevels.size())
                    ? static_cast<std::uint8_t>(level + 1)
                    : 0;
        }
        break;
    case Action::withoutFeed:
        m_text.setWithoutFeed();
        break;
    default:
        break;
    }
}

/// The number of the note that follows. Within a note, where it is repeated, it stands before it.
void DocumentReader::noteMark() {
    if (m_text.isInInset()) {
        return;
    }
    finishBytes();
    m_text.appendPlain(std::to_string(++m_noteMarks));
}

void DocumentReader::tableWord(const Keyword& keyword, Parameter parameter) {
    if (m_text.isInInset()) {
        // Tables beside the text are the lines of it.
        finishBytes();
        const auto isEnd = keyword.action == Action::cellEnd || keyword.action == Action::rowEnd ||
                           keyword.action == Action::nestedCellEnd ||
                           keyword.action == Action::nestedRowEnd;
        if (isEnd) {
            m_text.breakLine();
        }
        return;
    }
    const auto depth = std::max<std::size_t>(m_text.paragraph().tableDepth, 1);
    const auto nestedDepth = std::max<std::size_t>(depth, 2);
    finishBytes();
    const auto endedCellDepth = std::exchange(m_endedCellDepth, 0);
    switch (keyword.action) {
    case Action::cellEnd:
        m_text.endCell(1);
        m_endedCellDepth = 1;
        break;
    case Action::nestedCellEnd:
        m_text.endCell(nestedDepth);
        m_endedCellDepth = nestedDepth;
        break;
    case Action::rowEnd:
        m_text.endRow(1);
        break;
    case Action::nestedRowEnd:
        m_text.endRow(nestedDepth);
        break;
    case Action::lastRow:
        // A cell that ends with a table leaves the depth at that of the table.
        m_text.tables().setLastRow(endedCellDepth > 0 ? endedCellDepth : depth);
        break;
    default:
        m_text.tables().definitionWord(depth, keyword, parameter.value);
        break;
    }
}

ParagraphState& DocumentReader::editParagraph() {
    if (!m_group.hasChangedParagraph && m_groups.size() > 1) {
        m_paragraphs.push_back(m_text.paragraph());
        m_group.hasChangedParagraph = true;
    }
    return m_text.editParagraph();
}

} // namespace korvex::richtext::rtf
