#pragma once

#include "richtext/text/AttributedString.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace korvex::richtext {

class AttributedString::Builder {
public:
    void reserve(std::size_t units) { m_string.m_text.reserve(units); }
    AttributesId idOf(const CharacterAttributes& attributes) {
        return m_string.m_attributes.idOf(attributes);
    }
    StyleId idOf(const ParagraphStyle& style) { return m_string.m_styles.idOf(style); }

    std::size_t length() const { return m_string.m_text.size(); }
    /// Where the paragraph begins that is being written.
    std::size_t paragraphStart() const { return m_paragraphStart; }

    void append(std::u16string_view text, AttributesId attributes) {
        m_string.m_text.append(text);
        m_string.m_attributes.extend(m_string.m_text.size(), attributes);
    }
    void append(char16_t unit, AttributesId attributes) {
        m_string.m_text.push_back(unit);
        m_string.m_attributes.extend(m_string.m_text.size(), attributes);
    }
    /// Gives the style to all that was appended since the last paragraph ended. The last unit must
    /// be a line feed, or nothing may follow.
    void endParagraph(StyleId style) {
        m_string.m_styles.extend(m_string.m_text.size(), style);
        m_paragraphStart = m_string.m_text.size();
    }

    /// Every paragraph must have ended before.
    AttributedString take() { return std::move(m_string); }

private:
    AttributedString m_string;
    std::size_t m_paragraphStart = 0;
};

} // namespace korvex::richtext
