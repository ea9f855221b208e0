#include "richtext/rtf/RtfReaderText.h"

#include "richtext/rtf/RtfDialect.h"
#include "richtext/text/HeadingLevel.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace korvex::richtext::rtf {

namespace {

std::size_t hashOf(const CharacterState& state) {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15U;
    auto hash = static_cast<std::uint64_t>(static_cast<std::uint32_t>(state.font));
    const auto mix = [&](std::uint64_t value) { hash = (hash ^ value) * kOdd; };
    mix(static_cast<std::uint32_t>(state.size));
    mix(std::uint64_t{state.foreground} << 32U | state.background);
    mix(std::uint64_t{state.link} << 32U | static_cast<std::uint64_t>(state.heading) << 24U |
        static_cast<std::uint64_t>(state.underline) << 16U |
        static_cast<std::uint64_t>(state.strikethrough) << 8U | (state.isBold ? 4U : 0U) |
        (state.isItalic ? 2U : 0U) | (state.isHidden ? 1U : 0U));
    constexpr unsigned kHighByte = 56;
    return static_cast<std::size_t>(hash >> kHighByte);
}

} // namespace

TextBuilder::TextBuilder(Budget& budget, const FontTable& fonts, const ColorTable& colors,
                         ListTable& lists, std::size_t documentSize)
    : m_budget(budget), m_fonts(fonts), m_colors(colors), m_lists(lists), m_tables(budget, colors) {
    // Half of a document is text, or less.
    m_builder.reserve(documentSize / 2);
}

std::uint32_t TextBuilder::link(std::string target) {
    if (target.empty()) {
        return 0;
    }
    if (m_links.empty() || m_links.back() != target) {
        m_links.push_back(std::move(target));
    }
    return static_cast<std::uint32_t>(m_links.size());
}

std::size_t TextBuilder::numbering(TextList list) {
    constexpr std::size_t kCost = sizeof(TextList) + 4 * sizeof(TextListRef);
    const auto isGoingOn = !m_numberings.empty() && (m_lastNumbering == m_numberings.size() ||
                                                     m_paragraph.numbering == m_numberings.size());
    if (m_budget.isExhausted()) {
        return 0;
    }
    if (!isGoingOn || *m_numberings.back() != list) {
        m_budget.spend(kCost);
        m_numberings.push_back(std::make_shared<TextList>(std::move(list)));
    }
    return m_numberings.size();
}

void TextBuilder::append(std::u16string_view text) {
    while (!text.empty()) {
        const auto length = std::min(text.find(u'\n'), text.size());
        const auto words = afterBlanks(text.substr(0, length));
        if (!m_characters.isHidden && !words.empty()) {
            openInsets();
            m_builder.append(words, attributes());
        }
        if (length < text.size()) {
            endParagraph();
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

void TextBuilder::appendPlain(std::string_view text) {
    text = afterBlanks(text);
    if (m_characters.isHidden || text.empty()) {
        return;
    }
    openInsets();
    const auto id = attributes();
    std::array<char16_t, 256> wide;
    while (!text.empty()) {
        const auto length = std::min(text.size(), wide.size());
        std::copy_n(text.begin(), length, wide.begin());
        m_builder.append({wide.data(), length}, id);
        text.remove_prefix(length);
    }
}

void TextBuilder::endParagraph() {
    if (isInInset()) {
        breakLine();
    } else {
        endParagraph(m_paragraph.depth());
    }
}

void TextBuilder::openInsets() {
    if (m_insets.isPending()) {
        m_insets.open(isParagraphEmpty() ? Insets::Place::atStart : Insets::Place::behindText,
                      [this](std::u16string_view text) { m_builder.append(text, attributes()); });
    }
}

void TextBuilder::endInset() {
    if (const auto text = m_insets.end(); !text.empty()) {
        m_builder.append(text, attributes());
    }
}

void TextBuilder::endParagraph(std::size_t depth) {
    m_builder.append(u'\n', attributes());
    closeParagraph(depth);
    if (m_isWithoutFeed) {
        m_isWithoutFeed = false;
        m_endWithoutFeed = m_builder.length();
    }
}

void TextBuilder::closeParagraph(std::size_t depth) {
    m_builder.endParagraph(style(m_tables.cells(depth)));
    m_lastNumbering = m_paragraph.numbering;
    m_isAfterNestedRow = false;
    m_insets.forgetBreak();
}

void TextBuilder::endCell(std::size_t depth) {
    const auto isOpen = m_tables.isCellOpen(depth);
    // Only a table can be all that a cell holds: it brings its own paragraphs.
    const auto needsParagraph = isOpen ? !m_isAfterNestedRow : !m_tables.isPlaceholderNext(depth);
    if (!isParagraphEmpty() || needsParagraph) {
        endParagraph(depth);
    }
    m_isAfterNestedRow = false;
    if (!m_tables.isRowFull(depth) || !m_tables.isCellOpen(depth)) {
        m_tables.endCell(depth);
    }
}

void TextBuilder::endRow(std::size_t depth) {
    if (!isParagraphEmpty()) {
        endCell(depth);
    }
    m_tables.endRow(depth);
    m_isAfterNestedRow = depth > 1;
}

AttributedString TextBuilder::finish() {
    while (isInInset()) {
        endInset();
    }
    if (!isParagraphEmpty()) {
        closeParagraph(m_paragraph.depth());
    }
    m_tables.endTables(0);
    const auto length = m_builder.length();
    auto text = m_builder.take();
    if (length > 0 && m_endWithoutFeed == length) {
        text.remove({length - 1, 1});
    }
    return text;
}

AttributedString::AttributesId TextBuilder::attributes() {
    if (m_areCharactersStale) {
        auto& cached = m_cache[hashOf(m_characters) % m_cache.size()];
        if (cached.generation != m_generation || cached.state != m_characters) {
            cached = {m_characters, resolved(m_characters), m_generation};
        }
        m_attributes = cached.id;
        m_areCharactersStale = false;
    }
    return m_attributes;
}

AttributedString::AttributesId TextBuilder::resolved(const CharacterState& state) {
    // A value, and the growth of their table at its worst.
    constexpr std::size_t kCost = 5 * sizeof(CharacterAttributes);
    if (m_budget.isExhausted()) {
        return m_builder.idOf(CharacterAttributes());
    }
    const auto font = m_fonts.font(state.font);
    CharacterAttributes attributes;
    attributes.font = {.family = font.family,
                       .isBold = state.isBold || font.isBold,
                       .isItalic = state.isItalic || font.isItalic,
                       .size = state.size};
    if (state.heading > 0) {
        attributes.font = fontOf(static_cast<HeadingLevel>(state.heading));
        attributes.font.isItalic = state.isItalic || font.isItalic;
    }
    attributes.underline = state.underline;
    attributes.strikethrough = state.strikethrough;
    attributes.foreground = m_colors.color(state.foreground);
    attributes.background = m_colors.color(state.background);
    if (state.link > 0) {
        attributes.link = m_links[state.link - 1];
    }
    const auto id = m_builder.idOf(attributes);
    if (id >= m_attributesSeen) {
        m_attributesSeen = std::size_t{id} + 1;
        m_budget.spend(kCost + 3 * attributes.link.capacity());
    }
    return id;
}

AttributedString::StyleId TextBuilder::style(const std::vector<TextTableCellRef>& cells) {
    constexpr std::size_t kCost = 5 * sizeof(ParagraphStyle);
    const auto cell = cells.empty() ? nullptr : cells.back();
    if (!m_isParagraphStale && cell == m_styleCell) {
        return m_style;
    }
    m_isParagraphStale = false;
    m_styleCell = cell;
    if (m_budget.isExhausted()) {
        m_style = m_builder.idOf(ParagraphStyle());
        return m_style;
    }
    auto style = resolved(m_paragraph);
    style.cells = cells;
    m_style = m_builder.idOf(style);
    if (m_style >= m_stylesSeen) {
        m_stylesSeen = std::size_t{m_style} + 1;
        m_budget.spend(kCost +
                       3 * (style.tabStops.capacity() * sizeof(Twips) +
                            (style.lists.capacity() + cells.size()) * sizeof(TextTableCellRef)));
    }
    return m_style;
}

ParagraphStyle TextBuilder::resolved(const ParagraphState& state) {
    ParagraphStyle style{
        .alignment = state.alignment,
        .direction = state.direction,
        .leftIndent = state.leftIndent,
        .firstLineIndent = state.firstLineIndent,
        .rightIndent = state.rightIndent,
        .spacingBefore = state.spacingBefore,
        .spacingAfter = state.spacingAfter,
        .lineSpacing = state.lineSpacing,
        .tabStops = state.tabStops,
    };
    const auto minimum = std::max(state.minimumLineHeight, 0);
    const auto natural = state.maximumLineHeight == minimum ? -minimum : minimum;
    if (state.isLineHeightMultiple) {
        style.lineHeightMultiple = std::abs(state.lineHeight);
        style.lineHeight = natural;
    } else {
        style.lineHeight = state.lineHeight != 0 ? state.lineHeight : natural;
    }
    if (state.list != 0) {
        const auto chain = m_lists.chain(state.list, state.listLevel);
        style.lists.assign(chain.begin(), chain.end());
    } else if (state.numbering != 0) {
        style.lists.push_back(m_numberings[state.numbering - 1]);
    }
    return style;
}

} // namespace korvex::richtext::rtf
