#include "richtext/text/TextUnits.h"

#include <functional>
#include <string_view>
#include <utility>

namespace korvex::richtext {

namespace {

enum class UnitKind { word, character, gap };

bool isBetween(char16_t unit, char16_t first, char16_t last) {
    return unit >= first && unit <= last;
}

/// Scripts that are written without gaps are compared character by character.
UnitKind kindOf(char16_t unit) {
    constexpr char16_t kFirstJoiner = 0x200c;
    constexpr char16_t kLastJoiner = 0x200d;
    if (isBetween(unit, kFirstJoiner, kLastJoiner)) {
        return UnitKind::word;
    }
    if (unit < u'0' || isBetween(unit, u':', u'@') || isBetween(unit, u'[', u'`') ||
        isBetween(unit, u'{', 0xa0) || isBetween(unit, 0x2000, 0x206f) ||
        isBetween(unit, 0x3000, 0x303f)) {
        return UnitKind::gap;
    }
    return isBetween(unit, 0x2e80, 0xd7ff) ? UnitKind::character : UnitKind::word;
}

/// The line feed looks like nothing.
AttributedString withPlainFeed(AttributedString paragraph) {
    paragraph.editAttributes({paragraph.length() - 1, 1},
                             [](CharacterAttributes& attributes) { attributes = {}; });
    return paragraph;
}

const TextTable* tableOf(const ParagraphStyle& style) {
    return style.cells.empty() ? nullptr : style.cells.front()->table.get();
}

} // namespace

TextUnits TextUnits::paragraphsOf(const AttributedString& text) {
    TextUnits units(text);
    TextRange open;
    const TextTable* table = nullptr;
    const auto close = [&] {
        if (open.length > 0) {
            units.add(open, withPlainFeed(text.slice(open)),
                      table ? Weight::special : Weight::plain);
        }
    };
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        const auto* const own = tableOf(paragraph.style);
        if (own && own == table) {
            open.length += paragraph.range.length;
            return;
        }
        close();
        open = paragraph.range;
        table = own;
    });
    close();
    return units;
}

TextUnits TextUnits::wordsOf(const AttributedString& paragraph) {
    TextUnits units(paragraph);
    auto plain = paragraph;
    plain.editStyles({0, plain.length()}, [](ParagraphStyle& style) { style = {}; });
    const std::u16string_view text = paragraph.text();
    for (std::size_t start = 0; start < text.size();) {
        const auto kind = kindOf(text[start]);
        auto end = start + 1;
        while (kind != UnitKind::character && end < text.size() && kindOf(text[end]) == kind) {
            ++end;
        }
        const TextRange range{start, end - start};
        units.add(range, plain.slice(range),
                  kind == UnitKind::gap ? Weight::plain : Weight::special);
        start = end;
    }
    return units;
}

void TextUnits::add(TextRange range, AttributedString key, Weight weight) {
    const auto hash = std::hash<std::u16string>()(key.text());
    m_units.push_back({range, hash, std::move(key), weight});
}

std::size_t TextUnits::start(std::size_t index) const {
    return index < m_units.size() ? m_units[index].range.location : m_text->length();
}

TextRange TextUnits::range(IndexRange units) const {
    return {start(units.begin), start(units.end) - start(units.begin)};
}

bool TextUnits::areEqual(const TextUnits& left, std::size_t leftIndex, const TextUnits& right,
                         std::size_t rightIndex) {
    const auto& one = left.m_units[leftIndex];
    const auto& other = right.m_units[rightIndex];
    return one.hash == other.hash && one.key.isEquivalentTo(other.key);
}

bool TextUnits::areEqual(const TextUnits& left, IndexRange leftUnits, const TextUnits& right,
                         IndexRange rightUnits) {
    if (leftUnits.size() != rightUnits.size()) {
        return false;
    }
    for (std::size_t i = 0; i < leftUnits.size(); ++i) {
        if (!areEqual(left, leftUnits.begin + i, right, rightUnits.begin + i)) {
            return false;
        }
    }
    return true;
}

std::vector<SequenceChange> changesBetween(const TextUnits& before, const TextUnits& after) {
    return sequenceChanges(before.size(), after.size(), [&](std::size_t left, std::size_t right) {
        return TextUnits::areEqual(before, left, after, right);
    });
}

} // namespace korvex::richtext
