#include "TextDump.h"

#include "base/Utf16.h"
#include "richtext/text/HeadingLevel.h"

namespace korvex::tests {

namespace {

using namespace richtext;

std::string lineStart(const CharacterAttributes& first, const ParagraphStyle& style) {
    std::string start;
    if (!style.cells.empty()) {
        const auto& cell = *style.cells.back();
        start += "|" + std::to_string(cell.row) + "," + std::to_string(cell.column) + " ";
    }
    if (!style.lists.empty()) {
        start += std::string(2 * (style.lists.size() - 1), ' ');
        const auto marker = base::utf8(style.lists.back()->marker);
        start += marker == "{disc}" ? "- " : marker == "{decimal}." ? "1. " : marker + " ";
    }
    if (first.korvexCodeBlock) {
        start += first.korvexCodeLanguage + "> ";
    } else if (const auto level = headingLevel(first.font)) {
        start += std::string(static_cast<std::size_t>(*level), '#') + " ";
    }
    return start;
}

std::string dumped(std::u16string_view text, const CharacterAttributes& attributes) {
    auto result = base::utf8(text);
    const auto put = [&](bool isSet, const char* mark) {
        if (isSet) {
            result = mark + result + mark;
        }
    };
    put(!attributes.korvexCodeBlock && attributes.font.family == FontFamily::monospaced, "`");
    put(attributes.font.isBold && !headingLevel(attributes.font), "*");
    put(attributes.font.isItalic, "/");
    put(attributes.underline != LineStyle::none, "_");
    put(attributes.strikethrough != LineStyle::none, "~");
    if (!attributes.link.empty()) {
        result = "[" + result + "](" + attributes.link + ")";
    }
    return result;
}

} // namespace

std::string dump(const AttributedString& text) {
    std::string result;
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        result += lineStart(text.attributesAt(paragraph.range.location), paragraph.style);
        auto content = paragraph.range;
        const bool hasFeed = text.text()[content.end() - 1] == u'\n';
        content.length -= hasFeed ? 1 : 0;
        text.forEachRun(content, [&](const AttributedString::CharacterRun& run) {
            result +=
                dumped(text.text().substr(run.range.location, run.range.length), run.attributes);
        });
        result += hasFeed ? "\n" : "";
    });
    return result;
}

} // namespace korvex::tests
