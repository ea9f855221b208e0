#include "richtext/text/AttributedString.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

namespace korvex::richtext {

namespace {

/// Pairs the identities of two strings, one to one.
template <typename T>
class Pairing {
public:
    /// Whether these two can be the same; `isNew` tells the first meeting, where values count.
    bool pair(const T* left, const T* right, bool& isNew) {
        const auto [forth, isNewLeft] = m_forth.try_emplace(left, right);
        const auto [back, isNewRight] = m_back.try_emplace(right, left);
        isNew = isNewLeft && isNewRight;
        return forth->second == right && back->second == left;
    }

private:
    std::unordered_map<const T*, const T*> m_forth;
    std::unordered_map<const T*, const T*> m_back;
};

class Equivalence {
public:
    bool operator()(const ParagraphStyle& left, const ParagraphStyle& right) {
        return plain(left) == plain(right) && haveEquivalentLists(left, right) &&
               haveEquivalentCells(left, right);
    }

private:
    static ParagraphStyle plain(ParagraphStyle style) {
        style.lists.clear();
        style.cells.clear();
        return style;
    }
    bool haveEquivalentLists(const ParagraphStyle& left, const ParagraphStyle& right) {
        return std::equal(left.lists.begin(), left.lists.end(), right.lists.begin(),
                          right.lists.end(), [&](const auto& mine, const auto& other) {
                              bool isNew = false;
                              return m_lists.pair(mine.get(), other.get(), isNew) &&
                                     (!isNew || *mine == *other);
                          });
    }
    bool haveEquivalentCells(const ParagraphStyle& left, const ParagraphStyle& right) {
        return std::equal(left.cells.begin(), left.cells.end(), right.cells.begin(),
                          right.cells.end(), [&](const auto& mine, const auto& other) {
                              bool isNew = false;
                              return m_cells.pair(mine.get(), other.get(), isNew) &&
                                     (!isNew || areEquivalent(*mine, *other));
                          });
    }
    bool areEquivalent(const TextTableCell& left, const TextTableCell& right) {
        bool isNew = false;
        return m_tables.pair(left.table.get(), right.table.get(), isNew) &&
               (!isNew || *left.table == *right.table) && left.row == right.row &&
               left.column == right.column && left.rowSpan == right.rowSpan &&
               left.columnSpan == right.columnSpan && left.geometry == right.geometry;
    }

    Pairing<TextList> m_lists;
    Pairing<TextTable> m_tables;
    Pairing<TextTableCell> m_cells;
};

void mix(std::size_t& seed, std::size_t value) {
    seed = (seed ^ value) * 0x9E3779B97F4A7C15U;
    seed ^= seed >> 29U;
}

std::size_t numberOf(const std::optional<Color>& color) {
    return color ? 1U + (static_cast<std::size_t>(color->name) << 32U |
                         static_cast<std::size_t>(color->red) << 16U |
                         static_cast<std::size_t>(color->green) << 8U | color->blue)
                 : 0U;
}

} // namespace

AttributedString::AttributedString(std::u16string_view text, const CharacterAttributes& attributes,
                                   const ParagraphStyle& style) {
    append(text, attributes, style);
}

const CharacterAttributes& AttributedString::attributesAt(std::size_t offset) const {
    static const CharacterAttributes kNone;
    return m_attributes.isEmpty() ? kNone : m_attributes.at(offset);
}

const ParagraphStyle& AttributedString::styleAt(std::size_t offset) const {
    static const ParagraphStyle kNone;
    return m_styles.isEmpty() ? kNone : m_styles.at(offset);
}

TextRange AttributedString::paragraphAt(std::size_t offset) const {
    offset = std::min(offset, length());
    const auto before = offset == 0 ? std::u16string::npos : m_text.rfind(u'\n', offset - 1);
    const auto start = before == std::u16string::npos ? 0 : before + 1;
    const auto feed = m_text.find(u'\n', offset);
    const auto end = feed == std::u16string::npos ? length() : feed + 1;
    return {start, end - start};
}

AttributedString AttributedString::slice(TextRange range) const {
    AttributedString result;
    result.appendPart(*this, clamped(range));
    return result;
}

void AttributedString::replace(TextRange range, const AttributedString& replacement) {
    range = clamped(range);
    AttributedString result;
    result.m_text.reserve(length() - range.length + replacement.length());
    result.appendPart(*this, {0, range.location});
    result.appendPart(replacement, {0, replacement.length()});
    result.appendPart(*this, {range.end(), length() - range.end()});
    *this = std::move(result);
}

void AttributedString::append(std::u16string_view text, const CharacterAttributes& attributes,
                              const ParagraphStyle& style) {
    if (text.empty()) {
        return;
    }
    const auto isContinued = !m_text.empty() && m_text.back() != u'\n';
    const auto oldEnd = length();
    m_text.append(text);
    m_attributes.extend(length(), m_attributes.idOf(attributes));
    auto begun = oldEnd;
    if (isContinued) {
        const auto feed = m_text.find(u'\n', oldEnd);
        begun = feed == std::u16string::npos ? length() : feed + 1;
        m_styles.stretch(begun);
    }
    if (begun < length()) {
        m_styles.extend(length(), m_styles.idOf(style));
    }
}

void AttributedString::appendPart(const AttributedString& other, TextRange range) {
    if (range.length == 0) {
        return;
    }
    if (&other == this) {
        appendPart(AttributedString(other), range);
        return;
    }
    const auto isContinued = !m_text.empty() && m_text.back() != u'\n';
    const auto oldEnd = length();
    m_text.append(other.m_text, range.location, range.length);
    m_attributes.append(other.m_attributes, range, oldEnd);
    auto begun = range.location;
    if (isContinued) {
        const auto feed = other.m_text.find(u'\n', range.location);
        begun = feed == std::u16string::npos ? range.end() : std::min(feed + 1, range.end());
        m_styles.stretch(oldEnd + begun - range.location);
    }
    m_styles.append(other.m_styles, {begun, range.end() - begun}, oldEnd + begun - range.location);
}

bool AttributedString::isEquivalentTo(const AttributedString& other) const {
    return m_text == other.m_text &&
           m_attributes.isEqualTo(other.m_attributes, std::equal_to<CharacterAttributes>()) &&
           m_styles.isEqualTo(other.m_styles, Equivalence());
}

TextRange AttributedString::clamped(TextRange range) const {
    const auto location = std::min(range.location, length());
    return {location, std::min(range.length, length() - location)};
}

TextRange AttributedString::wholeParagraphs(TextRange range) const {
    range = clamped(range);
    const auto start = paragraphAt(range.location).location;
    const auto end =
        range.length == 0 ? paragraphAt(range.location).end() : paragraphAt(range.end() - 1).end();
    return {start, end - start};
}

} // namespace korvex::richtext

std::size_t std::hash<korvex::richtext::CharacterAttributes>::operator()(
    const korvex::richtext::CharacterAttributes& attributes) const noexcept {
    using namespace korvex::richtext;
    const auto& font = attributes.font;
    auto seed = static_cast<std::size_t>(font.size);
    mix(seed, (static_cast<std::size_t>(font.family) << 2U) | (font.isBold ? 2U : 0U) |
                  (font.isItalic ? 1U : 0U));
    mix(seed, static_cast<std::size_t>(attributes.underline) << 8U |
                  static_cast<std::size_t>(attributes.strikethrough) << 2U |
                  (attributes.korvexCodeBlock ? 2U : 0U) | (attributes.isAttachment ? 1U : 0U));
    mix(seed, std::hash<std::string>()(attributes.link));
    mix(seed, std::hash<std::string>()(attributes.korvexCodeLanguage));
    mix(seed, numberOf(attributes.foreground));
    mix(seed, numberOf(attributes.background));
    return seed;
}

std::size_t std::hash<korvex::richtext::ParagraphStyle>::operator()(
    const korvex::richtext::ParagraphStyle& style) const noexcept {
    using namespace korvex::richtext;
    std::size_t seed =
        static_cast<std::size_t>(style.alignment) << 2U | static_cast<std::size_t>(style.direction);
    for (const auto length :
         {style.leftIndent, style.firstLineIndent, style.rightIndent, style.spacingBefore,
          style.spacingAfter, style.lineSpacing, style.lineHeightMultiple, style.lineHeight}) {
        mix(seed, static_cast<std::size_t>(static_cast<std::uint32_t>(length)));
    }
    for (const auto stop : style.tabStops) {
        mix(seed, static_cast<std::size_t>(static_cast<std::uint32_t>(stop)));
    }
    for (const auto& list : style.lists) {
        mix(seed, std::hash<const void*>()(list.get()));
    }
    for (const auto& cell : style.cells) {
        mix(seed, std::hash<const void*>()(cell.get()));
    }
    return seed;
}
