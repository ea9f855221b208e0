#include "richtext/rtf/RtfWriter.h"

#include "richtext/rtf/RtfDialect.h"
#include "richtext/rtf/RtfWriterHeader.h"
#include "richtext/rtf/RtfWriterOutput.h"
#include "richtext/rtf/RtfWriterStyles.h"
#include "richtext/rtf/RtfWriterTables.h"
#include "richtext/rtf/RtfWriterText.h"
#include "richtext/text/HeadingLevel.h"
#include "richtext/text/ListIndents.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
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
    void writeCellEnd(std::size_t depth) { m_output.raw(endingWords(depth)); }
    /// What stands for the end of a paragraph.
    static std::string endingWords(Ending ending);
    void writeParagraph(const Paragraph& paragraph, std::size_t depth, Ending ending);
    std::size_t estimatedSize() const;
    void writeStyle(const ParagraphStyle& style, std::size_t depth,
                    std::optional<HeadingLevel> heading = std::nullopt);
    void writeListText(const ParagraphStyle& style);

    const std::u16string& m_units;
    std::vector<Paragraph> m_paragraphs;

    Output m_output;
    ColorNumbers m_colors;
    ListNumbers m_lists;
    TextWriter m_text;
    const ParagraphStyle* m_style = nullptr;
    std::size_t m_depth = 0;
    std::optional<HeadingLevel> m_heading;
    std::string m_styleWords;
};

Body::Body(const AttributedString& text) : m_units(text.text()), m_text(text, m_output, m_colors) {
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        m_paragraphs.push_back({paragraph.range, &paragraph.style});
    });
}

/// Enough for most texts: to grow means to copy, and room that is not used costs nothing.
std::size_t Body::estimatedSize() const {
    constexpr std::size_t kPerRun = 64;
    constexpr std::size_t kPerParagraph = 128;
    constexpr std::size_t kPerCell = 384;
    auto size =
        2 * m_units.size() + kPerRun * m_text.runCount() + kPerParagraph * m_paragraphs.size();
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

std::string Body::endingWords(Ending ending) {
    switch (ending) {
    case kLineFeed:
        return "\\\n";
    case 1:
        return "\\cell ";
    default:
        return "\\itap" + std::to_string(ending) + "\\nestcell ";
    }
}

void Body::writeParagraph(const Paragraph& paragraph, std::size_t depth, Ending ending) {
    writeStyle(*paragraph.style, depth, m_text.headingLevelOf(paragraph.range));
    writeListText(*paragraph.style);
    m_text.write(paragraph.range, endingWords(ending));
    const auto isEnded = m_units[paragraph.range.end() - 1] == u'\n';
    if (!isEnded && ending != kLineFeed) {
        m_output.raw("\\korvexnofeed");
        writeCellEnd(ending);
    }
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

base::Bytes Body::document() const {
    Output header;
    header.raw("{\\rtf1\\ansi\\ansicpg1252\\cocoartf2822\n\\cocoatextscaling0\\cocoaplatform0");
    m_text.fonts().write(header);
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
