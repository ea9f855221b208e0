#include "cli/output/RichTextJson.h"

#include "base/Utf16.h"
#include "richtext/stored/RichTextSerializer.h"

#include <unordered_map>

namespace korvex::cli {

namespace {

using namespace richtext;

std::string_view nameOf(FontFamily family) {
    switch (family) {
    case FontFamily::system:
        return "system";
    case FontFamily::monospaced:
        return "monospaced";
    }
    return {};
}

std::string_view nameOf(LineStyle style) {
    switch (style) {
    case LineStyle::none:
        return "none";
    case LineStyle::single:
        return "single";
    case LineStyle::thick:
        return "thick";
    case LineStyle::doubled:
        return "doubled";
    case LineStyle::dotted:
        return "dotted";
    case LineStyle::dashed:
        return "dashed";
    case LineStyle::dashDotted:
        return "dashDotted";
    case LineStyle::dashDotDotted:
        return "dashDotDotted";
    }
    return {};
}

std::string_view nameOf(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::natural:
        return "natural";
    case TextAlignment::left:
        return "left";
    case TextAlignment::center:
        return "center";
    case TextAlignment::right:
        return "right";
    case TextAlignment::justified:
        return "justified";
    }
    return {};
}

std::string_view nameOf(WritingDirection direction) {
    switch (direction) {
    case WritingDirection::natural:
        return "natural";
    case WritingDirection::leftToRight:
        return "leftToRight";
    case WritingDirection::rightToLeft:
        return "rightToLeft";
    }
    return {};
}

class Writer {
public:
    explicit Writer(Json& json) : m_json(json) {}

    void text(const AttributedString& text) {
        m_json.member("text", base::utf8(text.text()));
        if (const auto level = RichTextSerializer::headingLevel(text)) {
            m_json.member("heading", static_cast<std::int64_t>(*level));
        }
        m_json.key("runs");
        m_json.beginArray();
        text.forEachRun([&](const auto& run) {
            m_json.beginObject();
            range(run.range);
            m_json.key("attributes");
            attributes(run.attributes);
            m_json.endObject();
        });
        m_json.endArray();
        m_json.key("paragraphs");
        m_json.beginArray();
        text.forEachParagraph([&](const auto& paragraph) {
            m_json.beginObject();
            range(paragraph.range);
            m_json.key("style");
            style(paragraph.style);
            m_json.endObject();
        });
        m_json.endArray();
    }

private:
    /// Whole points as whole numbers.
    void points(std::string_view name, std::int64_t value, std::int64_t unitsPerPoint) {
        if (value % unitsPerPoint == 0) {
            m_json.member(name, value / unitsPerPoint);
        } else {
            m_json.member(name, static_cast<double>(value) / static_cast<double>(unitsPerPoint));
        }
    }
    void length(std::string_view name, Twips value) {
        if (value != 0) {
            points(name, value, kTwipsPerPoint);
        }
    }
    void flag(std::string_view name, bool value) {
        if (value) {
            m_json.flag(name, value);
        }
    }
    template <typename Enumeration>
    void name(std::string_view key, Enumeration value) {
        if (value != Enumeration{}) {
            m_json.member(key, nameOf(value));
        }
    }

    void range(TextRange range) {
        m_json.member("location", static_cast<std::int64_t>(range.location));
        m_json.member("length", static_cast<std::int64_t>(range.length));
    }

    void attributes(const CharacterAttributes& attributes) {
        m_json.beginObject();
        m_json.member("font", nameOf(attributes.font.family));
        points("size", attributes.font.size, 1000);
        flag("bold", attributes.font.isBold);
        flag("italic", attributes.font.isItalic);
        name("underline", attributes.underline);
        name("strikethrough", attributes.strikethrough);
        if (!attributes.link.empty()) {
            m_json.member("link", attributes.link);
        }
        if (attributes.isCode()) {
            m_json.member("korvexCodeLanguage", attributes.korvexCodeLanguage);
            flag("korvexCodeBlock", attributes.korvexCodeBlock);
        }
        m_json.endObject();
    }

    void style(const ParagraphStyle& style) {
        m_json.beginObject();
        name("alignment", style.alignment);
        name("direction", style.direction);
        length("leftIndent", style.leftIndent);
        length("firstLineIndent", style.firstLineIndent);
        length("rightIndent", style.rightIndent);
        length("spacingBefore", style.spacingBefore);
        length("spacingAfter", style.spacingAfter);
        length("lineSpacing", style.lineSpacing);
        length("lineHeight", style.lineHeight);
        if (style.lineHeightMultiple != 0) {
            points("lineHeightMultiple", style.lineHeightMultiple, 240);
        }
        if (!style.tabStops.empty()) {
            m_json.key("tabStops");
            m_json.beginArray();
            for (const auto stop : style.tabStops) {
                m_json.number(static_cast<double>(stop) / kTwipsPerPoint);
            }
            m_json.endArray();
        }
        if (!style.lists.empty()) {
            m_json.key("lists");
            m_json.beginArray();
            for (const auto& list : style.lists) {
                m_json.beginObject();
                m_json.member("list", numberOf(m_lists, list.get()));
                m_json.member("marker", base::utf8(list->marker));
                m_json.member("start", std::int64_t{list->start});
                m_json.endObject();
            }
            m_json.endArray();
        }
        if (!style.cells.empty()) {
            m_json.key("cells");
            m_json.beginArray();
            for (const auto& each : style.cells) {
                cell(*each);
            }
            m_json.endArray();
        }
        m_json.endObject();
    }

    void cell(const TextTableCell& cell) {
        m_json.beginObject();
        m_json.member("table", numberOf(m_tables, cell.table.get()));
        m_json.member("row", std::int64_t{cell.row});
        m_json.member("column", std::int64_t{cell.column});
        if (cell.rowSpan != 1) {
            m_json.member("rowSpan", std::int64_t{cell.rowSpan});
        }
        if (cell.columnSpan != 1) {
            m_json.member("columnSpan", std::int64_t{cell.columnSpan});
        }
        if (cell.geometry.width) {
            points("width", *cell.geometry.width, kTwipsPerPoint);
        }
        m_json.endObject();
    }

    using Numbers = std::unordered_map<const void*, std::int64_t>;
    /// Numbers each by its first appearance, from 0.
    static std::int64_t numberOf(Numbers& numbers, const void* identity) {
        return numbers.try_emplace(identity, static_cast<std::int64_t>(numbers.size()))
            .first->second;
    }

    Json& m_json;
    Numbers m_lists;
    Numbers m_tables;
};

} // namespace

void writeRichText(Json& json, const AttributedString& text) {
    Writer(json).text(text);
}

} // namespace korvex::cli
