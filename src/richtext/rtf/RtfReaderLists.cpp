#include "richtext/rtf/RtfReaderLists.h"

#include "richtext/text/ListIndents.h"
#include "richtext/text/ListMarker.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace korvex::richtext::rtf {

namespace {

constexpr std::int32_t kBullet = 23;

/// What a bullet looks like, in the fonts that writers take for it.
MarkerFormat bulletFormat(std::u16string_view symbol) {
    switch (symbol.empty() ? u'\u2022' : symbol.front()) {
    case u'o':
    case u'\u25E6':
    case u'\u25CB':
        return MarkerFormat::circle;
    case u'\uF0A7':
    case u'\u00A7':
    case u'\u25AA':
    case u'\u25A0':
        return MarkerFormat::square;
    case u'-':
    case u'\u2010':
    case u'\u2013':
    case u'\u2014':
    case u'\u2043':
        return MarkerFormat::hyphen;
    case u'\u2713':
    case u'\u2714':
    case u'\uF0FC':
        return MarkerFormat::check;
    default:
        return MarkerFormat::disc;
    }
}

MarkerFormat numberFormat(std::int32_t kind) {
    constexpr std::int32_t kNoNumber = 255;
    switch (kind) {
    case 1:
        return MarkerFormat::upperRoman;
    case 2:
        return MarkerFormat::lowerRoman;
    case 3:
        return MarkerFormat::upperAlpha;
    case 4:
        return MarkerFormat::lowerAlpha;
    case kNoNumber:
        return MarkerFormat::none;
    default:
        return MarkerFormat::decimal;
    }
}

/// A marker without more than fits, and without what could be taken for a format.
std::u16string marker(std::u16string_view before, MarkerFormat format, std::u16string_view after) {
    std::u16string marker(before);
    marker += bracedName(format);
    marker += after;
    return marker.size() <= kMaximumMarker ? marker : std::u16string(bracedName(format));
}

/// The marker of a level text: its length, then what is shown, with the numbers of levels in it.
std::u16string markerOf(std::u16string_view levelText, std::int32_t kind) {
    const std::size_t length = levelText.empty() ? 0U : levelText.front();
    const auto shown = levelText.substr(levelText.empty() ? 0 : 1).substr(0, length);
    if (kind == kBullet) {
        return std::u16string(bracedName(bulletFormat(shown)));
    }
    const auto isNumber = [](char16_t unit) { return unit < kMaximumListDepth; };
    const auto first = std::find_if(shown.begin(), shown.end(), isNumber);
    const auto last = std::find_if(shown.rbegin(), shown.rend(), isNumber);
    return marker({shown.begin(), first}, numberFormat(kind), {last.base(), shown.end()});
}

void append(std::u16string& text, std::u16string_view more) {
    // A length and a semicolon come with the longest marker.
    constexpr std::size_t kMaximumText = kMaximumMarker + 2;
    text += more.substr(0, kMaximumText - std::min(text.size(), kMaximumText));
}

} // namespace

TextList ListTable::LevelText::list() const {
    return {marker ? marker->substr(0, kMaximumMarker) : markerOf(text, kind), start.value_or(1)};
}

void ListTable::begin(Destination destination) {
    switch (destination) {
    case Destination::list:
        m_levels.clear();
        m_listId = 0;
        break;
    case Destination::listLevel:
        m_level = {};
        break;
    case Destination::levelMarker:
        m_level.marker.emplace();
        break;
    case Destination::listOverride:
        m_override = {};
        break;
    case Destination::overrideLevel:
        m_isInOverride = true;
        m_overridesStart = false;
        m_overrideLevel = {};
        m_level = {};
        break;
    case Destination::numbering:
        m_level = {};
        m_textBefore.clear();
        m_textAfter.clear();
        break;
    default:
        break;
    }
}

void ListTable::word(const Keyword& keyword, std::int32_t parameter) {
    switch (keyword.action) {
    case Action::listId:
        m_listId = parameter;
        m_override.listId = parameter;
        break;
    case Action::list:
        m_override.number = parameter;
        break;
    case Action::levelKind:
        m_level.kind = parameter;
        break;
    case Action::levelStart:
    case Action::numberStart:
        m_level.start = parameter;
        if (m_overridesStart) {
            m_overrideLevel.start = parameter;
        }
        break;
    case Action::levelTemplate:
        m_level.templateNumber = parameter;
        break;
    case Action::overridesStart:
        m_overridesStart = true;
        m_overrideLevel.start = m_level.start;
        break;
    case Action::numberKind:
        m_level.kind = keyword.value;
        break;
    default:
        break;
    }
}

void ListTable::text(Destination destination, std::u16string_view text) {
    switch (destination) {
    case Destination::levelMarker:
        if (m_level.marker) {
            append(*m_level.marker, text);
        }
        break;
    case Destination::levelText:
        append(m_level.text, text);
        break;
    case Destination::textBeforeNumber:
        append(m_textBefore, text);
        break;
    case Destination::textAfterNumber:
        append(m_textAfter, text);
        break;
    default:
        break;
    }
}

void ListTable::end(Destination destination) {
    switch (destination) {
    case Destination::listLevel:
        if (m_isInOverride) {
            m_overrideLevel.list = m_level.list();
        } else if (m_levels.size() < kMaximumListDepth) {
            m_levels.push_back({m_level.list(), m_level.templateNumber, nullptr});
        }
        break;
    case Destination::list:
        endList();
        break;
    case Destination::overrideLevel:
        m_isInOverride = false;
        if (m_override.levels.size() < kMaximumListDepth) {
            m_override.levels.push_back(std::move(m_overrideLevel));
        }
        break;
    case Destination::listOverride:
        endOverride();
        break;
    default:
        break;
    }
}

void ListTable::endList() {
    constexpr std::size_t kListCost = 200;
    constexpr std::size_t kLevelCost = 2 * sizeof(Level);
    if (m_budget.isExhausted()) {
        return;
    }
    m_budget.spend(kListCost + kLevelCost * m_levels.size());
    m_listsById.insert_or_assign(m_listId, m_lists.size());
    m_lists.emplace_back(m_levels);
}

void ListTable::endOverride() {
    constexpr std::size_t kCost = 400;
    const auto list = m_listsById.find(m_override.listId);
    if (m_budget.isExhausted() || m_override.number <= 0 || list == m_listsById.end()) {
        return;
    }
    // A marker can be as long as this again.
    constexpr std::size_t kLevelCost = 2 * sizeof(OverrideLevel) + 2 * kMaximumMarker;
    m_budget.spend(kCost + kLevelCost * m_override.levels.size());
    m_numbered.insert_or_assign(
        m_override.number,
        Numbered{.list = list->second, .overrides = std::move(m_override.levels)});
}

TextListRef ListTable::identity(Level& level) {
    constexpr std::size_t kCost = sizeof(TextList) + 2 * sizeof(TextListRef);
    if (!level.identity) {
        m_budget.spend(kCost);
        level.identity = std::make_shared<TextList>(level.list);
        if (m_dialect == RtfDialect::native && level.templateNumber != 0) {
            m_budget.spend(kCost);
            const auto [known, isNew] =
                m_byTemplate.try_emplace(level.templateNumber, level.identity);
            if (!isNew && *known->second == level.list) {
                level.identity = known->second;
            }
        }
    }
    return level.identity;
}

std::span<const TextListRef> ListTable::chain(std::int32_t number, std::int32_t level) {
    const auto place = m_numbered.find(number);
    if (place == m_numbered.end()) {
        return {};
    }
    auto& numbered = place.value();
    auto& levels = m_lists[numbered.list];
    const auto depth = std::min(static_cast<std::size_t>(level) + 1, levels.size());
    while (numbered.chain.size() < depth) {
        const auto next = numbered.chain.size();
        const auto* const changed =
            next < numbered.overrides.size() ? &numbered.overrides[next] : nullptr;
        if (!changed || (!changed->list && !changed->start)) {
            numbered.chain.push_back(identity(levels[next]));
            continue;
        }
        auto list = changed->list.value_or(levels[next].list);
        list.start = changed->start.value_or(list.start);
        numbered.chain.push_back(std::make_shared<TextList>(std::move(list)));
    }
    return std::span(numbered.chain).first(depth);
}

TextList ListTable::numbering() const {
    if (m_level.kind == kBullet) {
        return {std::u16string(bracedName(bulletFormat(m_textBefore))), 1};
    }
    return {marker(m_textBefore, numberFormat(m_level.kind), m_textAfter),
            m_level.start.value_or(1)};
}

} // namespace korvex::richtext::rtf
