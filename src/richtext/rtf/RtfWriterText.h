#pragma once

#include "richtext/rtf/RtfWriterHeader.h"
#include "richtext/rtf/RtfWriterOutput.h"
#include "richtext/rtf/RtfWriterStyles.h"
#include "richtext/text/AttributedString.h"
#include "richtext/text/HeadingLevel.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace korvex::richtext::rtf {

/// Writes the characters of paragraphs, from the first to the last, with their formats and links.
class TextWriter {
public:
    /// All must outlive the writer.
    TextWriter(const AttributedString& text, Output& output, ColorNumbers& colors);

    std::size_t runCount() const { return m_runs.size(); }
    /// Numbers the fonts of what was written.
    const FontNumbers& fonts() const { return m_fonts; }

    /// The level that all characters of the paragraph to be written next share.
    std::optional<HeadingLevel> headingLevelOf(TextRange paragraph);
    /// Writes a paragraph and, for its line feed, `ending`. A field, and with it a group, never
    /// reaches past a paragraph, since the next one's style must outlive it.
    void write(TextRange paragraph, std::string_view ending);

private:
    struct Run {
        std::size_t end;
        const CharacterAttributes* attributes;
    };

    void skipTo(std::size_t offset);
    void writeFormat(const CharacterAttributes& attributes);
    void openLink(std::u16string_view link);

    const std::u16string& m_text;
    Output& m_output;
    ColorNumbers& m_colors;
    FontNumbers m_fonts;
    std::vector<Run> m_runs;
    std::size_t m_run = 0;
    /// What holds at this point of the output; nothing before the first words.
    std::optional<CharacterFormat> m_format;
};

} // namespace korvex::richtext::rtf
