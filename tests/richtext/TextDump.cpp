#include "TextDump.h"

#include "base/Utf16.h"

#include <array>
#include <map>
#include <sstream>

namespace korvex::richtext {

namespace {

constexpr std::array kLineStyles{"none",   "single", "thick",       "double",
                                 "dotted", "dashed", "dash-dotted", "dash-dot-dotted"};
constexpr std::array kColors{"",
                             "label",
                             "secondary label",
                             "quaternary label",
                             "separator",
                             "header fill",
                             "purple",
                             "green",
                             "orange",
                             "blue",
                             "pink",
                             "red"};
constexpr std::array kAlignments{"natural", "left", "center", "right", "justified"};
constexpr std::array kDirections{"natural", "left to right", "right to left"};
constexpr std::array kVerticalAlignments{"top", "middle", "bottom"};
constexpr std::array kSides{"top", "left", "bottom", "right"};

template <std::size_t Count, typename Enumeration>
const char* nameOf(const std::array<const char*, Count>& names, Enumeration value) {
    return names.at(static_cast<std::size_t>(value));
}

std::string shown(const Color& color) {
    if (color.name != SystemColor::none) {
        return nameOf(kColors, color.name);
    }
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string text = "#";
    for (const auto component : {color.red, color.green, color.blue}) {
        text += kHex[component >> 4U];
        text += kHex[component & 0xFU];
    }
    return text;
}

/// Quoted, with what cannot be seen as its number.
std::string shown(std::u16string_view text) {
    std::ostringstream out;
    out << '"';
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto unit = text[index];
        const bool isPair = unit >= 0xD800 && unit < 0xDC00 && index + 1 < text.size() &&
                            text[index + 1] >= 0xDC00 && text[index + 1] < 0xE000;
        if (isPair) {
            out << base::utf8(text.substr(index++, 2));
        } else if (unit == u'\n') {
            out << "\\n";
        } else if (unit == u'\t') {
            out << "\\t";
        } else if (unit == u'"' || unit == u'\\') {
            out << '\\' << static_cast<char>(unit);
        } else if (unit < 0x20 || (unit >= 0x7F && unit <= 0xA0) || unit == 0xAD ||
                   (unit >= 0x2000 && unit < 0x2070 && unit != 0x2013 && unit != 0x2014 &&
                    (unit < 0x2018 || unit > 0x2022)) ||
                   (unit >= 0xD800 && unit < 0xF900) || unit >= 0xFEFF) {
            out << "\\u{" << std::hex << static_cast<unsigned>(unit) << std::dec << '}';
        } else {
            out << base::utf8(text.substr(index, 1));
        }
    }
    out << '"';
    return out.str();
}

class Dump {
public:
    explicit Dump(const AttributedString& text) : m_text(text) {}

    std::string made() {
        m_text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
            m_out << "paragraph";
            describe(paragraph.style);
            m_out << '\n';
            m_text.forEachRun(paragraph.range, [&](const AttributedString::CharacterRun& run) {
                m_out << "    "
                      << shown(std::u16string_view(m_text.text())
                                   .substr(run.range.location, run.range.length));
                describe(run.attributes);
                m_out << '\n';
            });
        });
        return m_out.str();
    }

private:
    void length(const char* name, std::int32_t value) {
        if (value != 0) {
            m_out << ", " << name << ' ' << value;
        }
    }

    void describe(const CharacterAttributes& attributes) {
        const auto& font = attributes.font;
        m_out << ' ' << (font.family == FontFamily::monospaced ? "mono " : "")
              << static_cast<double>(font.size) / 1000.0 << " pt" << (font.isBold ? ", bold" : "")
              << (font.isItalic ? ", italic" : "");
        if (attributes.underline != LineStyle::none) {
            m_out << ", underline " << nameOf(kLineStyles, attributes.underline);
        }
        if (attributes.strikethrough != LineStyle::none) {
            m_out << ", strikethrough " << nameOf(kLineStyles, attributes.strikethrough);
        }
        if (!attributes.link.empty()) {
            m_out << ", link <" << attributes.link << '>';
        }
        if (attributes.foreground) {
            m_out << ", color " << shown(*attributes.foreground);
        }
        if (attributes.background) {
            m_out << ", on " << shown(*attributes.background);
        }
    }

    void describe(const ParagraphStyle& style) {
        if (style.alignment != TextAlignment::natural) {
            m_out << ", " << nameOf(kAlignments, style.alignment);
        }
        if (style.direction != WritingDirection::natural) {
            m_out << ", " << nameOf(kDirections, style.direction);
        }
        length("left", style.leftIndent);
        length("first line", style.firstLineIndent);
        length("right", style.rightIndent);
        length("before", style.spacingBefore);
        length("after", style.spacingAfter);
        length("between lines", style.lineSpacing);
        length("line height multiple", style.lineHeightMultiple);
        length("line height", style.lineHeight);
        for (const auto stop : style.tabStops) {
            m_out << ", tab " << stop;
        }
        for (const auto& list : style.lists) {
            m_out << ", list " << numberOf(m_lists, list.get());
            if (m_isNew) {
                m_out << " (" << shown(list->marker) << " from " << list->start << ')';
            }
        }
        for (const auto& cell : style.cells) {
            m_out << ", cell " << numberOf(m_cells, cell.get());
            if (m_isNew) {
                describe(*cell);
            }
        }
    }

    void describe(const TextTableCell& cell) {
        m_out << " (table " << numberOf(m_tables, cell.table.get());
        if (m_isNew) {
            m_out << " of " << cell.table->columns;
        }
        m_out << " at " << cell.row << ' ' << cell.column;
        if (cell.rowSpan != 1 || cell.columnSpan != 1) {
            m_out << " spans " << cell.rowSpan << ' ' << cell.columnSpan;
        }
        const auto& geometry = cell.geometry;
        if (geometry.width) {
            m_out << ", width " << *geometry.width;
        }
        if (geometry.verticalAlignment != VerticalAlignment::top) {
            m_out << ", " << nameOf(kVerticalAlignments, geometry.verticalAlignment);
        }
        if (geometry.background) {
            m_out << ", on " << shown(*geometry.background);
        }
        for (std::size_t side = 0; side < kSides.size(); ++side) {
            const auto& border = geometry.borders.at(side);
            if (geometry.padding.at(side) != 0) {
                m_out << ", " << kSides.at(side) << " padding " << geometry.padding.at(side);
            }
            if (border != CellBorder()) {
                m_out << ", " << kSides.at(side) << " border " << border.width;
                m_out << (border.color ? ' ' + shown(*border.color) : "");
            }
        }
        m_out << ')';
    }

    /// The object's number; `m_isNew` when it has not come before.
    int numberOf(std::map<const void*, int>& known, const void* object) {
        const auto [place, isNew] = known.try_emplace(object, static_cast<int>(known.size()) + 1);
        m_isNew = isNew;
        return place->second;
    }

    const AttributedString& m_text;
    std::ostringstream m_out;
    std::map<const void*, int> m_lists;
    std::map<const void*, int> m_tables;
    std::map<const void*, int> m_cells;
    bool m_isNew = false;
};

} // namespace

std::string dump(const AttributedString& text) {
    return Dump(text).made();
}

} // namespace korvex::richtext
