#include "richtext/rtf/RtfWriterHeader.h"

#include "richtext/rtf/RtfDialect.h"
#include "richtext/text/ListMarker.h"

#include <functional>
#include <string>

namespace korvex::richtext::rtf {

namespace {

/// In the order of `indexOf`.
constexpr std::array<std::string_view, 8> kFaces{
    "\\fnil\\fcharset0 .SFNS-Regular;",        "\\fnil\\fcharset0 .SFNS-RegularItalic;",
    "\\fnil\\fcharset0 .SFNS-Bold;",           "\\fnil\\fcharset0 .SFNS-BoldItalic;",
    "\\fmodern\\fcharset0 .SFNSMono-Regular;", "\\fmodern\\fcharset0 .SFNSMono-RegularItalic;",
    "\\fmodern\\fcharset0 .SFNSMono-Bold;",    "\\fmodern\\fcharset0 .SFNSMono-BoldItalic;",
};

std::size_t indexOf(const Font& font) {
    return (font.family == FontFamily::monospaced ? 4U : 0U) + (font.isBold ? 2U : 0U) +
           (font.isItalic ? 1U : 0U);
}

/// 0 is no colour and 1 is white, as the native dialect has them.
constexpr std::uint32_t kFirstColor = 2;

std::int32_t extended(std::uint8_t component) {
    constexpr std::int32_t kFullByte = 255;
    return (component * kFullComponent + kFullByte / 2) / kFullByte;
}

std::int32_t numberKind(MarkerFormat format) {
    constexpr std::int32_t kBullet = 23;
    constexpr std::int32_t kNoNumber = 255;
    switch (format) {
    case MarkerFormat::none:
        return kNoNumber;
    case MarkerFormat::disc:
    case MarkerFormat::circle:
    case MarkerFormat::square:
    case MarkerFormat::hyphen:
    case MarkerFormat::check:
        return kBullet;
    case MarkerFormat::decimal:
        return 0;
    case MarkerFormat::upperRoman:
        return 1;
    case MarkerFormat::lowerRoman:
        return 2;
    case MarkerFormat::upperAlpha:
        return 3;
    case MarkerFormat::lowerAlpha:
        return 4;
    }
    return kNoNumber;
}

void hexByte(Output& output, std::size_t value) {
    constexpr std::string_view kHex = "0123456789abcdef";
    output.raw("\\'");
    output.raw(kHex[value >> 4U & 0xFU]);
    output.raw(kHex[value & 0xFU]);
}

} // namespace

std::int32_t FontNumbers::of(const Font& font) {
    const auto index = indexOf(font);
    auto& number = m_numbers[index];
    if (!number) {
        number = static_cast<std::int32_t>(m_used.size());
        m_used.push_back(index);
    }
    return *number;
}

void FontNumbers::write(Output& output) const {
    output.openGroup();
    output.raw("\\fonttbl");
    if (m_used.empty()) {
        output.word("\\f", 0);
        output.raw(kFaces.front());
    }
    for (std::size_t number = 0; number < m_used.size(); ++number) {
        output.word("\\f", static_cast<std::int64_t>(number));
        output.raw(kFaces[m_used[number]]);
    }
    output.closeGroup();
}

std::uint32_t ColorNumbers::of(const std::optional<Color>& color) {
    if (!color) {
        return 0;
    }
    const auto key =
        color->name != SystemColor::none
            ? 1U << 24U | static_cast<std::uint32_t>(color->name)
            : static_cast<std::uint32_t>(color->red << 16U | color->green << 8U | color->blue);
    if (const auto known = m_numbers.find(key); known != m_numbers.end()) {
        return known->second;
    }
    const auto number = kFirstColor + static_cast<std::uint32_t>(m_colors.size());
    if (number >= kMaximumColors) {
        return 0;
    }
    m_colors.push_back(*color);
    m_numbers.emplace(key, number);
    return number;
}

void ColorNumbers::write(Output& output) const {
    output.raw("{\\colortbl;\\red255\\green255\\blue255;");
    const auto shown = [](const Color& color) {
        return color.name == SystemColor::none ? color : concrete(color.name);
    };
    for (const auto& color : m_colors) {
        const auto rgb = shown(color);
        output.word("\\red", rgb.red);
        output.word("\\green", rgb.green);
        output.word("\\blue", rgb.blue);
        output.raw(';');
    }
    output.raw("}\n{\\*\\expandedcolortbl;;");
    for (const auto& color : m_colors) {
        const auto rgb = shown(color);
        output.raw("\\cssrgb");
        output.word("\\c", extended(rgb.red));
        output.word("\\c", extended(rgb.green));
        output.word("\\c", extended(rgb.blue));
        if (color.name != SystemColor::none) {
            output.raw("\\cname ");
            output.raw(catalogName(color.name));
        }
        output.raw(';');
    }
    output.raw("}\n");
}

std::size_t ListNumbers::StepHash::operator()(const Step& step) const noexcept {
    constexpr std::size_t kOdd = 0x9E3779B97F4A7C15U;
    return std::hash<const void*>()(step.list) * kOdd + step.parent;
}

ListNumbers::Place ListNumbers::of(std::span<const TextListRef> chain) {
    constexpr auto kNoParent = static_cast<std::size_t>(-1);
    constexpr std::int64_t kLevelsPerList = 100;
    auto node = kNoParent;
    for (std::size_t level = 0; level < chain.size(); ++level) {
        const auto& list = chain[level];
        const auto [place, isNew] = m_steps.try_emplace(Step{node, list.get()}, m_nodes.size());
        if (isNew) {
            // The first list that is nested in a chain lengthens it; others need one of their own.
            auto number = node == kNoParent ? 0 : m_nodes[node].list;
            if (number == 0 || m_lists[static_cast<std::size_t>(number - 1)].size() != level) {
                const auto before = chain.first(level);
                m_lists.emplace_back(before.begin(), before.end());
                number = static_cast<std::int32_t>(m_lists.size());
            }
            m_lists[static_cast<std::size_t>(number - 1)].push_back(list);
            m_nodes.push_back({number, static_cast<std::int32_t>(level)});
            const auto templateNumber =
                number * kLevelsPerList + static_cast<std::int64_t>(level) + 1;
            m_identities.try_emplace(list.get(), Identity{templateNumber, 0});
        }
        node = place->second;
    }
    return m_nodes[node];
}

std::u16string ListNumbers::nextMarker(const TextListRef& list) {
    auto& items = m_identities[list.get()].itemsSoFar;
    const TextList written{list->marker.substr(0, kMaximumMarker), list->start};
    return markerText(written, std::int64_t{list->start} + items++);
}

void ListNumbers::write(Output& output) const {
    if (m_lists.empty()) {
        return;
    }
    output.raw("{\\*\\listtable");
    for (std::size_t index = 0; index < m_lists.size(); ++index) {
        const auto number = static_cast<std::int64_t>(index) + 1;
        output.raw('{');
        output.word("\\list\\listtemplateid", number);
        output.raw("\\listhybrid");
        for (std::size_t level = 0; level < m_lists[index].size(); ++level) {
            writeLevel(output, *m_lists[index][level], level);
        }
        output.raw("{\\listname ;}");
        output.word("\\listid", number);
        output.raw("}\n");
    }
    output.raw("}\n{\\*\\listoverridetable");
    for (std::size_t number = 1; number <= m_lists.size(); ++number) {
        output.word("{\\listoverride\\listid", static_cast<std::int64_t>(number));
        output.word("\\listoverridecount0\\ls", static_cast<std::int64_t>(number));
        output.raw('}');
    }
    output.raw("}\n");
}

void ListNumbers::writeLevel(Output& output, const TextList& list, std::size_t level) const {
    constexpr std::int64_t kLevelIndent = 720;
    const auto marker = std::u16string_view(list.marker).substr(0, kMaximumMarker);
    const auto parts = partsOf(marker);
    const auto kind = numberKind(parts.format);
    output.word("{\\listlevel\\levelnfc", kind);
    output.word("\\levelnfcn", kind);
    output.word("\\leveljc0\\leveljcn0\\levelfollow0\\levelstartat", list.start);
    output.raw("\\levelspace360\\levelindent0{\\*\\levelmarker ");
    output.text(marker);
    output.closeGroup();
    output.word("{\\leveltext\\leveltemplateid", m_identities.at(&list).templateNumber);
    const auto symbol =
        isCounting(parts.format) ? std::u16string(1, u'?') : symbolOf(parts.format, 1);
    hexByte(output, parts.before.size() + symbol.size() + parts.after.size());
    output.text(parts.before);
    if (isCounting(parts.format)) {
        hexByte(output, level);
    } else {
        output.text(symbol);
    }
    output.text(parts.after);
    output.raw(';');
    output.closeGroup();
    output.raw("{\\levelnumbers");
    if (isCounting(parts.format)) {
        hexByte(output, parts.before.size() + 1);
    }
    output.raw(";}");
    const auto indent = static_cast<std::int64_t>(level + 1) * kLevelIndent;
    output.word("\\fi-360\\li", indent);
    output.word("\\lin", indent);
    output.raw(" }");
}

} // namespace korvex::richtext::rtf
