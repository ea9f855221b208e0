#include "richtext/rtf/RtfReaderDocument.h"

#include <algorithm>
#include <array>

namespace korvex::richtext::rtf {

DocumentReader::DocumentReader(std::string_view document)
    : m_tokens(document),
      m_budget(document.size()),
      m_fonts(m_budget),
      m_lists(m_budget),
      m_text(m_budget, m_fonts, m_colors, m_lists, document.size()) {
    constexpr std::int32_t kWestern = 1252;
    m_fonts.setDocumentCodePage(kWestern);
    m_groups.reserve(kMaximumGroups);
}

AttributedString DocumentReader::read() {
    Token token;
    while (!m_isOver && m_tokens.next(token)) {
        switch (token.kind) {
        case Token::Kind::plain:
            plain(token.text);
            break;
        case Token::Kind::byte:
            byte(token.byte);
            break;
        case Token::Kind::open:
            open();
            break;
        case Token::Kind::close:
            close();
            break;
        case Token::Kind::symbol:
            symbol(token.byte);
            break;
        case Token::Kind::word:
            word(token.word);
            break;
        }
    }
    finishBytes();
    return m_text.finish();
}

void DocumentReader::plain(std::string_view text) {
    m_isOptional = false;
    if (m_unitsToSkip > 0) {
        const auto skipped = std::min(text.size(), static_cast<std::size_t>(m_unitsToSkip));
        m_unitsToSkip -= static_cast<std::int32_t>(skipped);
        text.remove_prefix(skipped);
    }
    // The second byte of a character can look like any other.
    while (!text.empty() && (!m_decoder.isIdle() || m_group.destination != Destination::body)) {
        byte(text.front());
        text.remove_prefix(1);
    }
    if (!text.empty()) {
        m_text.appendPlain(text);
    }
}

void DocumentReader::byte(char value) {
    m_isOptional = false;
    if (m_unitsToSkip > 0) {
        --m_unitsToSkip;
        return;
    }
    switch (m_group.destination) {
    case Destination::fontTable:
        m_fonts.text(value);
        break;
    case Destination::colorTable:
        m_colors.text(value);
        break;
    case Destination::extendedColorTable:
        m_colors.extendedText(value);
        break;
    default:
        if (m_decoder.isIdle()) {
            if (m_group.destination == Destination::body && control(value)) {
                break;
            }
            selectCodePage();
        }
        m_decoder.add(static_cast<std::uint8_t>(value),
                      [this](std::u16string_view text) { units(text); });
        break;
    }
}

/// Controls are kept where a document says them as characters; as bytes they come from elsewhere.
bool DocumentReader::control(char value) {
    constexpr char kLineTab = '\x0B';
    constexpr char kFormFeed = '\x0C';
    constexpr char kDelete = '\x7F';
    switch (value) {
    case '\t':
        return false;
    case '\n':
    case '\r':
        m_text.endParagraph();
        return true;
    case kLineTab:
    case kFormFeed:
        m_text.breakLine();
        return true;
    default:
        return (value >= 0 && value < ' ') || value == kDelete;
    }
}

void DocumentReader::units(std::u16string_view text) {
    switch (m_group.destination) {
    case Destination::body:
        m_text.append(text);
        break;
    case Destination::fieldInstruction:
        m_instruction += text;
        break;
    case Destination::levelText:
    case Destination::levelMarker:
    case Destination::textBeforeNumber:
    case Destination::textAfterNumber:
        m_lists.text(m_group.destination, text);
        break;
    default:
        break;
    }
}

void DocumentReader::finishBytes() {
    m_decoder.finish([this](std::u16string_view text) { units(text); });
}

void DocumentReader::unicode(std::int32_t value) {
    constexpr std::int32_t kUnits = 0x10000;
    constexpr std::int32_t kLast = 0x10FFFF;
    constexpr std::int32_t kLeadBase = 0xD800 - (kUnits >> 10);
    constexpr std::int32_t kTrailBase = 0xDC00;
    finishBytes();
    m_unitsToSkip = m_group.fallbackUnits;
    if (value >= kUnits && value <= kLast) {
        const std::array<char16_t, 2> pair{static_cast<char16_t>(kLeadBase + (value >> 10)),
                                           static_cast<char16_t>(kTrailBase + (value & 0x3FF))};
        units({pair.data(), pair.size()});
        return;
    }
    // Writers that think of 16 bits with a sign write negative values.
    const auto isUnit = value > -kUnits && value < kUnits;
    const auto unit = isUnit ? static_cast<char16_t>(value) : u'\uFFFD';
    units({&unit, 1});
}

void DocumentReader::symbol(char name) {
    if (m_unitsToSkip > 0) {
        --m_unitsToSkip;
        return;
    }
    const auto character = [&](char16_t unit) {
        finishBytes();
        units({&unit, 1});
    };
    switch (name) {
    case '*':
        m_isOptional = true;
        return;
    case '\n':
    case '\r':
        if (m_group.destination == Destination::body) {
            finishBytes();
            m_text.endParagraph();
        }
        break;
    case '\t':
        character(u'\t');
        break;
    case '~':
        character(u'\u00A0');
        break;
    case '_':
        character(u'\u2011');
        break;
    case '-':
        character(u'\u00AD');
        break;
    case '\\':
    case '{':
    case '}':
        byte(name);
        break;
    default:
        break;
    }
    m_isOptional = false;
}

void DocumentReader::selectCodePage() {
    m_decoder.select(m_fonts.font(m_text.characters().font).codePage);
}

} // namespace korvex::richtext::rtf
