#include "richtext/rtf/RtfReaderHeader.h"

#include "richtext/rtf/RtfCodePages.h"
#include "richtext/rtf/RtfDialect.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace korvex::richtext::rtf {

namespace {

/// Whether "Mono" stands in the name as a word, as it does not in "Monotype".
bool hasMonoInName(std::string_view name) {
    constexpr std::string_view kWord = "Mono";
    for (auto place = name.find(kWord); place != name.npos; place = name.find(kWord, place + 1)) {
        const auto rest = name.substr(place + kWord.size());
        if (rest.empty() || rest.front() < 'a' || rest.front() > 'z' || rest.starts_with("space")) {
            return true;
        }
    }
    return false;
}

/// Whether the name is that of a monospaced font, written as people read it or, without blanks, as
/// PostScript has it.
bool isMonospaced(std::string_view name) {
    constexpr auto kMonospaced = std::to_array<std::string_view>({
        "CascadiaCode",
        "Consolas",
        "Courier",
        "FiraCode",
        "Fixedsys",
        "Hack-",
        "Inconsolata",
        "LetterGothic",
        "LucidaConsole",
        "LucidaSansTypewriter",
        "Menlo",
        "Monaco",
        "OCRA",
        "SourceCodePro",
    });
    std::string squeezed(name);
    std::erase(squeezed, ' ');
    return squeezed == "Hack" || squeezed == "Terminal" || hasMonoInName(squeezed) ||
           std::any_of(kMonospaced.begin(), kMonospaced.end(),
                       [&](std::string_view start) { return squeezed.starts_with(start); });
}

/// What follows the family: "BoldItalic" of "Helvetica-BoldItalic".
std::string_view faceOf(std::string_view name) {
    const auto hyphen = name.find('-');
    return hyphen == name.npos ? std::string_view() : name.substr(hyphen + 1);
}

/// The weight of a variable font's instance, such as 600 in "_wght2580000": a hexadecimal number
/// with 16 bits of fraction.
std::int32_t variableWeight(std::string_view face) {
    constexpr std::string_view kAxis = "_wght";
    constexpr int kHexadecimal = 16;
    constexpr unsigned kFractionBits = 16;
    const auto axis = face.find(kAxis);
    std::uint32_t weight = 0;
    if (axis != face.npos) {
        const auto* const digits = face.data() + axis + kAxis.size();
        std::from_chars(digits, face.data() + face.size(), weight, kHexadecimal);
    }
    return static_cast<std::int32_t>(weight >> kFractionBits);
}

bool isBoldFace(std::string_view face) {
    constexpr std::int32_t kBoldWeight = 600;
    constexpr std::array<std::string_view, 4> kBold{"Bold", "bold", "Heavy", "Black"};
    return variableWeight(face) >= kBoldWeight ||
           std::any_of(kBold.begin(), kBold.end(),
                       [&](std::string_view word) { return face.find(word) != face.npos; });
}

bool isItalicFace(std::string_view face) {
    return face.find("Italic") != face.npos || face.find("Oblique") != face.npos;
}

std::uint8_t byteOf(std::int32_t component) {
    constexpr std::int64_t kFullByte = 255;
    const auto scaled =
        (std::clamp(component, 0, kFullComponent) * kFullByte + kFullComponent / 2) /
        kFullComponent;
    return static_cast<std::uint8_t>(scaled);
}

std::uint8_t limitedByte(std::int32_t value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

} // namespace

void FontTable::word(const Keyword& keyword, std::int32_t parameter) {
    switch (keyword.action) {
    case Action::font:
        endEntry();
        m_entry.number = parameter;
        break;
    case Action::fixedPitchFamily:
        m_entry.isFixedPitch = true;
        break;
    case Action::pitch:
        m_entry.isFixedPitch = m_entry.isFixedPitch || parameter == 1;
        break;
    case Action::fontCharset:
        m_entry.charset = parameter;
        break;
    case Action::fontCodePage:
        m_entry.codePage = parameter;
        break;
    default:
        break;
    }
}

void FontTable::text(char byte) {
    if (byte == ';') {
        endEntry();
    } else if (m_entry.name.size() < kMaximumName) {
        m_entry.name.push_back(byte);
    }
}

void FontTable::endEntry() {
    // Table and growth of a hash map, at its worst.
    constexpr std::size_t kCost = 200;
    if (m_entry.number && !m_budget.isExhausted()) {
        std::string_view name = m_entry.name;
        name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
        const auto face = faceOf(name);
        const FontEntry font{
            .family = m_entry.isFixedPitch || isMonospaced(name) ? FontFamily::monospaced
                                                                 : FontFamily::system,
            .isBold = isBoldFace(face),
            .isItalic = isItalicFace(face),
            .codePage = m_entry.codePage != 0 ? m_entry.codePage
                                              : codePageOf(m_entry.charset, m_documentCodePage),
        };
        m_budget.spend(kCost);
        m_fonts.insert_or_assign(*m_entry.number, font);
    }
    m_entry = {};
}

FontEntry FontTable::font(std::int32_t number) const {
    const auto found = m_fonts.find(number);
    return found != m_fonts.end() ? found->second : FontEntry{.codePage = m_documentCodePage};
}

void ColorTable::word(const Keyword& keyword, std::int32_t parameter) {
    if (!m_color) {
        m_color = Color();
    }
    switch (keyword.action) {
    case Action::red:
        m_color->red = limitedByte(parameter);
        break;
    case Action::green:
        m_color->green = limitedByte(parameter);
        break;
    case Action::blue:
        m_color->blue = limitedByte(parameter);
        break;
    default:
        break;
    }
}

void ColorTable::text(char byte) {
    if (byte == ';') {
        if (m_colors.size() < kMaximumColors) {
            m_colors.push_back(m_color);
        }
        m_color.reset();
    }
}

void ColorTable::extendedWord(const Keyword& keyword, std::int32_t parameter) {
    switch (keyword.action) {
    case Action::standardColor:
        m_extended.standardComponents = static_cast<std::size_t>(keyword.value);
        break;
    case Action::component:
        if (m_extended.componentCount < kComponents) {
            m_extended.components[m_extended.componentCount++] = parameter;
        }
        break;
    case Action::colorName:
        m_extended.isNamed = true;
        break;
    default:
        break;
    }
}

void ColorTable::extendedText(char byte) {
    if (byte != ';') {
        if (m_extended.isNamed && m_extended.name.size() < kMaximumName) {
            m_extended.name.push_back(byte);
        }
        return;
    }
    if (m_extendedIndex < m_colors.size()) {
        auto& color = m_colors[m_extendedIndex];
        const auto count = m_extended.standardComponents;
        if (count > 0 && m_extended.componentCount >= count) {
            const auto at = [&](std::size_t index) {
                return byteOf(m_extended.components[std::min(index, count - 1)]);
            };
            color = Color{.red = at(0), .green = at(1), .blue = at(2)};
        }
        if (const auto name = systemColor(m_extended.name); name != SystemColor::none) {
            color = Color::named(name);
        }
    }
    ++m_extendedIndex;
    m_extended = {};
}

std::optional<Color> ColorTable::color(std::uint32_t index) const {
    return index > 0 && index < m_colors.size() ? m_colors[index] : std::nullopt;
}

} // namespace korvex::richtext::rtf
