#include "richtext/rtf/RtfWriter.h"

#include "base/Utf16.h"
#include "richtext/rtf/RtfDialect.h"
#include "richtext/rtf/RtfWriterHeader.h"
#include "richtext/rtf/RtfWriterOutput.h"
#include "richtext/rtf/RtfWriterStyles.h"
#include "richtext/rtf/RtfWriterTables.h"
#include "richtext/text/HeadingLevel.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::richtext {

namespace rtf {

namespace {

/// The lists of a paragraph that can be written, down to the first that cannot.
std::span<const TextListRef> chainOf(const ParagraphStyle& style) {
    std::size_t count = 0;
    while (count < std::min(style.lists.size(), kMaximumListDepth) && style.lists[count]) {
        ++count;
    }
    return std::span(style.lists).first(count);
}

/// The style of the places in a table that hold no text.
const ParagraphStyle kPlainStyle;

/// Writes the text of a document, and gathers on the way what the header must say.
class Body {
public:
    explicit Body(const AttributedString& text);

    void write() {
        m_output.reserve(estimatedSize());
        writeBlock(0, m_paragraphs.size(), 0);
    }
    base::Bytes document() const;

private:
    struct Paragraph {
        TextRange range;
        const ParagraphStyle* style;
    };
    struct Run {
        std::size_t end;
        const CharacterAttributes* attributes;
    };
    /// What ends a paragraph: a line feed, or the cell at this depth of nesting.
    using Ending = std::size_t;
    static constexpr Ending kLineFeed = 0;

    /// The cells of a paragraph that can be written, down to the first that cannot.
    static std::span<const TextTableCellRef> cellsOf(const Paragraph& paragraph);

    void writeBlock(std::size_t first, std::size_t end, std::size_t depth,
                    Ending ending = kLineFeed);
    std::size_t writeTable(std::size_t first, std::size_t end, std::size_t depth);
    void writeRow(const TablePlan& plan, const TablePlan::Row& row, std::size_t depth,
                  std::span<const CellStretch> stretches);
    void writeCellEnd(std::size_t depth);
    void writeParagraph(const Paragraph& paragraph, std::size_t depth, Ending ending);
    std::size_t estimatedSize() const;
    std::optional<HeadingLevel> headingLevelOf(TextRange paragraph);
    void writeStyle(const ParagraphStyle& style, std::size_t depth,
                    std::optional<HeadingLevel> heading = std::nullopt);
    void writeListText(const ParagraphStyle& style);
    /// Whether a paragraph ends with a line feed, as all but the last one do.
    bool isEnded(TextRange paragraph) const { return m_text[paragraph.end() - 1] == u'\n'; }
    void writeText(TextRange paragraph, Ending ending);
    void writeFormat(const CharacterAttributes& attributes);
    void openLink(std::u16string_view link);

    const std::u16string& m_text;
    std::vector<Paragraph> m_paragraphs;
    std::vector<Run> m_runs;
    std::size_t m_run = 0;

    Output m_output;
    FontNumbers m_fonts;
    ColorNumbers m_colors;
    ListNumbers m_lists;
    /// What holds at this point of the output; nothing before the first words.
    std::optional<CharacterFormat> m_format;
    const ParagraphStyle* m_style = nullptr;
    std::size_t m_depth = 0;
    std::optional<HeadingLevel> m_heading;
    std::string m_styleWords;
};

Body::Body(const AttributedString& text) : m_text(text.text()) {
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        m_paragraphs.push_back({paragraph.range, &paragraph.style});
    });
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        m_runs.push_back({run.range.end(), &run.attributes});
    });
}

/// Enough for most texts: to grow means to copy, and room that is not used costs nothing.
std::size_t Body::estimatedSize() const {
    constexpr std::size_t kPerRun = 64;
    constexpr std::size_t kPerParagraph = 128;
    constexpr std::size_t kPerCell = 384;
    auto size = 2 * m_text.size() + kPerRun * m_runs.size() + kPerParagraph * m_paragraphs.size();
    for (const auto& paragraph : m_paragraphs) {
        size += paragraph.style->cells.empty() ? 0 : kPerCell;
    }
    return size;
}

std::span<const TextTableCellRef> Body::cellsOf(const Paragraph& paragraph) {
    const auto& cells = paragraph.style->cells;
    std::size_t count = 0;
    while (count < std::min(cells.size(), kMaximumTableDepth) && cells[count] &&
           cells[count]->table) {
        ++count;
    }
    return std::span(cells).first(count);
}

/// Paragraphs that share their cells down to `depth`. The last one ends with `ending`.
void Body::writeBlock(std::size_t first, std::size_t end, std::size_t depth, Ending ending) {
    while (first < end) {
        if (cellsOf(m_paragraphs[first]).size() > depth) {
            first = writeTable(first, end, depth);
            if (first == end && ending != kLineFeed) {
                writeCellEnd(depth);
            }
        } else {
            writeParagraph(m_paragraphs[first], depth, first + 1 == end ? ending : kLineFeed);
            ++first;
        }
    }
}

/// The table that begins with the first of these paragraphs; returns where it ends.
std::size_t Body::writeTable(std::size_t first, std::size_t end, std::size_t depth) {
    std::vector<CellStretch> stretches;
    const auto* const table = cellsOf(m_paragraphs[first])[depth]->table.get();
    for (; first < end; ++first) {
        const auto cells = cellsOf(m_paragraphs[first]);
        if (cells.size() <= depth || cells[depth]->table.get() != table) {
            break;
        }
        const auto* const cell = cells[depth].get();
        if (stretches.empty() || stretches.back().cell != cell) {
            stretches.push_back({cell, first, first});
        }
        stretches.back().end = first + 1;
    }
    const TablePlan plan(stretches);
    for (const auto& row : plan.rows()) {
        writeRow(plan, row, depth + 1, stretches);
        if (&row == &plan.rows().back()) {
            m_output.raw("\\lastrow");
        }
        m_output.raw(depth == 0 ? "\\row\n" : "\\nestrow\n");
    }
    return first;
}

void Body::writeRow(const TablePlan& plan, const TablePlan::Row& row, std::size_t depth,
                    std::span<const CellStretch> stretches) {
    m_output.word("\n\\itap", static_cast<std::int64_t>(depth));
    m_output.word("\\trowd \\taflags1 \\trgaph108\\trleft", kRowLeft);
    m_output.raw(" \\trbrdrt\\brdrnil "
                 "\\trbrdrl\\brdrnil \\trbrdrr\\brdrnil \n");
    plan.writeDefinition(m_output, m_colors, row);
    m_styleWords.clear();
    for (const auto& slot : row) {
        if (slot.kind == TablePlan::Slot::Kind::cell) {
            m_styleWords.clear();
            const auto& stretch = stretches[slot.stretch];
            writeBlock(stretch.first, stretch.end, depth, depth);
            continue;
        }
        if (m_styleWords.empty() || m_depth != depth) {
            writeStyle(kPlainStyle, depth);
        }
        writeCellEnd(depth);
    }
    m_styleWords.clear();
}

void Body::writeCellEnd(std::size_t depth) {
    if (depth == 1) {
        m_output.raw("\\cell ");
    } else {
        m_output.word("\\itap", static_cast<std::int64_t>(depth));
        m_output.raw("\\nestcell ");
    }
}

void Body::writeParagraph(const Paragraph& paragraph, std::size_t depth, Ending ending) {
    writeStyle(*paragraph.style, depth, headingLevelOf(paragraph.range));
    writeListText(*paragraph.style);
    writeText(paragraph.range, ending);
    if (!isEnded(paragraph.range) && ending != kLineFeed) {
        m_output.raw("\\korvexnofeed");
        writeCellEnd(ending);
    }
}

/// The level that all characters of a paragraph share.
std::optional<HeadingLevel> Body::headingLevelOf(TextRange paragraph) {
    while (m_runs[m_run].end <= paragraph.location) {
        ++m_run;
    }
    const auto level = headingLevel(m_runs[m_run].attributes->font);
    for (auto run = m_run; level && m_runs[run].end < paragraph.end(); ++run) {
        if (headingLevel(m_runs[run + 1].attributes->font) != level) {
            return std::nullopt;
        }
    }
    return level;
}

/// Styles are compared as they are written, since two may differ in what cannot be.
void Body::writeStyle(const ParagraphStyle& style, std::size_t depth,
                      std::optional<HeadingLevel> heading) {
    if (m_style == &style && m_depth == depth && m_heading == heading && !m_styleWords.empty()) {
        return;
    }
    m_style = &style;
    m_depth = depth;
    m_heading = heading;
    Output words;
    writeParagraphWords(words, style, depth, heading);
    if (const auto chain = chainOf(style); !chain.empty()) {
        const auto place = m_lists.of(chain);
        words.word("\\ls", place.list);
        words.word("\\ilvl", place.level);
    }
    if (words.bytes() != m_styleWords) {
        m_output.raw(words.bytes());
        m_styleWords = words.bytes();
    }
}

void Body::writeListText(const ParagraphStyle& style) {
    const auto chain = chainOf(style);
    if (chain.empty()) {
        return;
    }
    m_output.openGroup();
    m_output.raw("\\listtext\t");
    m_output.text(m_lists.nextMarker(chain.back()));
    m_output.raw('\t');
    m_output.closeGroup();
}

/// A paragraph's text, and what ends it when it ends. A field, and with it a group, never reaches
/// past a paragraph, since the next one's style must outlive it.
void Body::writeText(TextRange paragraph, Ending ending) {
    const auto hasEnd = isEnded(paragraph);
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
        while (m_runs[m_run].end <= start) {
            ++m_run;
        }
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
        if (ending == kLineFeed) {
            m_output.raw("\\\n");
        } else {
            writeCellEnd(ending);
        }
    }
    closeLink();
}

void Body::openLink(std::u16string_view link) {
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

void Body::writeFormat(const CharacterAttributes& attributes) {
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

base::Bytes Body::document() const {
    Output header;
    header.raw("{\\rtf1\\ansi\\ansicpg1252\\cocoartf2822\n\\cocoatextscaling0\\cocoaplatform0");
    m_fonts.write(header);
    header.raw('\n');
    m_colors.write(header);
    m_lists.write(header);
    header.raw(
        "\\paperw11900\\paperh16840\\margl1440\\margr1440\\vieww11520\\viewh8400\\viewkind0\n"
        "\\deftab720\n");
    base::Bytes document;
    document.reserve(header.bytes().size() + m_output.bytes().size() + 1);
    document.insert(document.end(), header.bytes().begin(), header.bytes().end());
    document.insert(document.end(), m_output.bytes().begin(), m_output.bytes().end());
    document.push_back('}');
    return document;
}

/// Attachments cannot be written; a line feed that carries one still ends its paragraph.
AttributedString withoutAttachments(const AttributedString& text) {
    AttributedString result;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        if (!run.attributes.isAttachment) {
            result.append(text.slice(run.range));
            return;
        }
        for (auto offset = run.range.location; offset < run.range.end(); ++offset) {
            if (text.text()[offset] == u'\n') {
                result.append(text.slice({offset, 1}));
            }
        }
    });
    result.editAttributes({0, result.length()},
                          [](CharacterAttributes& attributes) { attributes.isAttachment = false; });
    return result;
}

bool hasAttachments(const AttributedString& text) {
    bool isFound = false;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        isFound = isFound || run.attributes.isAttachment;
    });
    return isFound;
}

} // namespace

} // namespace rtf

base::Bytes writeRtf(const AttributedString& text) {
    if (rtf::hasAttachments(text)) {
        return writeRtf(rtf::withoutAttachments(text));
    }
    rtf::Body body(text);
    body.write();
    return body.document();
}

} // namespace korvex::richtext
