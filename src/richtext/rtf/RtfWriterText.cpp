#include "richtext/rtf/RtfWriterText.h"

#include "base/Utf16.h"
#include "richtext/rtf/RtfDialect.h"

#include <algorithm>
#include <string>
#include <utility>

namespace korvex::richtext::rtf {

TextWriter::TextWriter(const AttributedString& text, Output& output, ColorNumbers& colors)
    : m_text(text.text()), m_output(output), m_colors(colors) {
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        m_runs.push_back({run.range.end(), &run.attributes});
    });
}

void TextWriter::skipTo(std::size_t offset) {
    while (m_runs[m_run].end <= offset) {
        ++m_run;
    }
}

std::optional<HeadingLevel> TextWriter::headingLevelOf(TextRange paragraph) {
    skipTo(paragraph.location);
    const auto level = headingLevel(m_runs[m_run].attributes->font);
    for (auto run = m_run; level && m_runs[run].end < paragraph.end(); ++run) {
        if (headingLevel(m_runs[run + 1].attributes->font) != level) {
            return std::nullopt;
        }
    }
    return level;
}

void TextWriter::write(TextRange paragraph, std::string_view ending) {
    const auto hasEnd = m_text[paragraph.end() - 1] == u'\n';
    auto start = paragraph.location;
    std::u16string link;
    std::optional<CharacterFormat> outer;
    const auto closeLink = [&] {
        if (!link.empty()) {
            m_output.raw('}');
            m_output.closeGroup();
            m_format = outer;
            link.clear();
        }
    };
    while (start < paragraph.end()) {
        skipTo(start);
        const auto& run = m_runs[m_run];
        const auto& attributes = *run.attributes;
        const auto end = std::min(run.end, paragraph.end());
        if (!link.empty() || !attributes.link.empty()) {
            auto next = base::utf16(attributes.link);
            if (next != link) {
                closeLink();
                outer = m_format;
                link = std::move(next);
                openLink(link);
            }
        }
        writeFormat(attributes);
        const auto isLast = end == paragraph.end();
        const auto length = end - start - (isLast && hasEnd ? 1 : 0);
        m_output.text(std::u16string_view(m_text).substr(start, length));
        start = end;
    }
    if (hasEnd) {
        m_output.raw(ending);
    }
    closeLink();
}

void TextWriter::openLink(std::u16string_view link) {
    if (link.empty()) {
        return;
    }
    m_output.openGroup();
    m_output.raw("\\field{\\*\\fldinst{HYPERLINK \"");
    std::u16string quoted;
    for (const auto unit : link) {
        if (unit == u'"' || unit == u'\\') {
            quoted.push_back(u'\\');
        }
        quoted.push_back(unit);
    }
    m_output.text(quoted);
    m_output.raw("\"}");
    m_output.closeGroup();
    m_output.raw("{\\fldrslt ");
}

void TextWriter::writeFormat(const CharacterAttributes& attributes) {
    const CharacterFormat format{
        .font = m_fonts.of(attributes.font),
        .isBold = attributes.font.isBold,
        .isItalic = attributes.font.isItalic,
        .size = std::clamp(attributes.font.size, 1, kMaximumFontSize),
        .foreground = m_colors.of(attributes.foreground),
        .background = m_colors.of(attributes.background),
        .underline = attributes.underline,
        .strikethrough = attributes.strikethrough,
    };
    if (m_format != format) {
        writeChange(m_output, m_format, format);
        m_format = format;
    }
}

} // namespace korvex::richtext::rtf
