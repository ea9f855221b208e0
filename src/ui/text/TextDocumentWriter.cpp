#include "ui/text/TextDocumentWriter.h"

#include "richtext/text/Formatting.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextSelection.h"

#include <QTextDocument>

#include <algorithm>
#include <cstdint>

namespace korvex::ui {

namespace {

using namespace richtext;

/// A larger grid is drawn as paragraphs, so that a few bytes cannot ask for a million cells.
constexpr std::int64_t kMaximumGrid = 10'000;
/// Units that a document takes for something else.
constexpr std::u16string_view kForeignUnits = u"\r\u2029\ufdd0\ufdd1";

bool hasParagraphBefore(const QTextCursor& cursor) {
    return cursor.position() > 0 && cursor.document()->characterAt(cursor.position() - 1) ==
                                        QChar(QChar::ParagraphSeparator);
}

} // namespace

TextDocumentWriter::TextDocumentWriter(QTextCursor& cursor, const TextLook& look)
    : m_cursor(cursor), m_look(look), m_lists(*cursor.document()) {}

void TextDocumentWriter::replaceSelection(const AttributedString& text) {
    m_text = &text;
    m_cursor.beginEditBlock();
    auto rest = removeSelection();
    const auto isInline = text.text().find(u'\n') == std::u16string::npos &&
                          (text.isEmpty() || text.styleAt(0).cells.empty());
    if (isInline && m_place != Place::ended) {
        writeInline();
    } else {
        if (m_place == Place::fresh && hasParagraphBefore(m_cursor)) {
            // A table must follow the paragraph before it without an empty one in between.
            m_cursor.setPosition(m_cursor.position() - 1);
            m_place = Place::ended;
            rest.kind = Rest::Kind::wholeParagraph;
        }
        std::vector<Paragraph> paragraphs;
        text.forEachParagraph([&](const AttributedString::ParagraphRun& run) {
            const auto hasFeed = text.text()[run.range.end() - 1] == u'\n';
            paragraphs.push_back({run.range, &run.style, hasFeed});
        });
        write(paragraphs, 0);
        finish(rest);
    }
    m_cursor.endEditBlock();
}

TextDocumentWriter::Rest TextDocumentWriter::removeSelection() {
    QTextCursor behind(m_cursor);
    behind.setPosition(m_cursor.selectionEnd());
    Rest rest{
        .kind = isGap(behind.block()) ? Rest::Kind::gap : Rest::Kind::paragraph,
        .block = behind.blockFormat(),
        .end = behind.blockCharFormat(),
    };
    if (const auto* const table = tableLeftBy(m_cursor)) {
        const auto end = m_cursor.selectionEnd();
        m_cursor.setPosition(table->firstPosition() - 1);
        const auto isParagraph = !isGap(m_cursor.block());
        const auto look = isParagraph ? m_cursor.blockFormat() : rest.block;
        const auto endLook = isParagraph ? m_cursor.blockCharFormat() : rest.end;
        m_cursor.setPosition(end, QTextCursor::KeepAnchor);
        m_cursor.removeSelectedText();
        m_cursor.setBlockFormat(look);
        m_cursor.setBlockCharFormat(endLook);
        if (isParagraph) {
            m_place = Place::ended;
            return rest;
        }
    } else {
        m_cursor.removeSelectedText();
    }
    m_place = m_cursor.atBlockStart() ? Place::fresh : Place::inside;
    return rest;
}

void TextDocumentWriter::writeInline() {
    if (m_text->isEmpty()) {
        return;
    }
    const auto& style = m_text->styleAt(0);
    const auto block = m_cursor.block();
    if (block.length() == 1 && (!block.textList() || !style.lists.empty())) {
        m_place = Place::fresh;
        writeParagraph({{0, m_text->length()}, &style, false}, 0);
    } else {
        writeRuns({0, m_text->length()});
    }
}

void TextDocumentWriter::finish(const Rest& rest) {
    const auto setRest = [&] {
        m_cursor.setBlockFormat(rest.block);
        m_cursor.setBlockCharFormat(rest.end);
    };
    if (m_place == Place::ended) {
        if (rest.kind == Rest::Kind::paragraph) {
            m_cursor.insertBlock(rest.block, rest.end);
        } else {
            m_cursor.setPosition(m_cursor.position() + 1);
        }
        return;
    }
    if (rest.kind == Rest::Kind::wholeParagraph) {
        m_cursor.deleteChar();
    }
    if (m_place == Place::fresh) {
        setRest();
    }
}

void TextDocumentWriter::write(Paragraphs paragraphs, std::size_t depth) {
    while (!paragraphs.empty()) {
        const auto& cells = paragraphs.front().style->cells;
        if (cells.size() <= depth) {
            writeParagraph(paragraphs.front(), depth);
            paragraphs = paragraphs.subspan(1);
            continue;
        }
        const auto* const table = cells[depth]->table.get();
        const auto end =
            std::find_if(paragraphs.begin(), paragraphs.end(), [&](const Paragraph& paragraph) {
                const auto& others = paragraph.style->cells;
                return others.size() <= depth || others[depth]->table.get() != table;
            });
        const auto part = paragraphs.first(static_cast<std::size_t>(end - paragraphs.begin()));
        paragraphs = paragraphs.subspan(part.size());
        if (const auto whole = tableOf(part, depth)) {
            writeTable(*whole, depth);
        } else {
            for (const auto& each : part) {
                writeParagraph(each, depth);
            }
        }
    }
}

void TextDocumentWriter::writeParagraph(const Paragraph& paragraph, std::size_t depth) {
    const auto& style = *paragraph.style;
    if (m_place != Place::inside) {
        auto format = blockFormatOf(style, kindOf(paragraph), m_look);
        if (style.cells.size() > depth) {
            const auto first = style.cells.begin() + static_cast<std::ptrdiff_t>(depth);
            format.setProperty(kCellsProperty, QVariant::fromValue(std::vector<TextTableCellRef>(
                                                   first, style.cells.end())));
        }
        const auto hasList = style.lists.empty() || setList(format, style.lists);
        const auto& end = endOf(paragraph);
        if (m_place == Place::ended) {
            m_cursor.insertBlock(format, charFormat(end));
        } else {
            if (m_cursor.blockFormat() != format) {
                m_cursor.setBlockFormat(format);
            }
            if (!m_hasEnd) {
                setEndAttributes(m_cursor.block(), end, m_look);
            }
        }
        if (!hasList) {
            m_lists.add(style.lists, *m_cursor.createList(listFormatOf(style.lists)));
        }
    }
    m_hasEnd = false;
    writeRuns({paragraph.range.location, paragraph.range.length - (paragraph.hasFeed ? 1 : 0)});
    m_place = paragraph.hasFeed ? Place::ended : Place::inside;
}

void TextDocumentWriter::writeTable(const Table& table, std::size_t depth) {
    m_writtenTables.insert(table.cells.front()->table.get());
    if (m_place == Place::fresh) {
        markGap();
    }
    const TableFormats formats(table.cells, m_look);
    auto* const made =
        m_cursor.insertTable(table.rows, table.cells.front()->table->columns, formats.table());
    for (const auto& cell : table.cells) {
        if (cell->rowSpan > 1 || cell->columnSpan > 1) {
            made->mergeCells(cell->row, cell->column, cell->rowSpan, cell->columnSpan);
        }
    }
    for (std::size_t i = 0; i < table.cells.size(); ++i) {
        const auto& cell = table.cells[i];
        const auto& first = table.contents[i].front();
        auto place = made->cellAt(cell->row, cell->column);
        QTextTableCellFormat format;
        format.merge(charFormat(endOf(first)));
        format.clearBackground(); // would fill the cell
        m_hasEnd = true;
        format.setTableCellColumnSpan(cell->columnSpan);
        format.setTableCellRowSpan(cell->rowSpan);
        formats.apply(cell, format);
        place.setFormat(format);
        m_cursor.setPosition(place.firstPosition());
        m_place = Place::fresh;
        write(table.contents[i], depth + 1);
        if (m_place == Place::fresh) {
            markGap();
        }
    }
    m_hasEnd = false;
    m_cursor.setPosition(made->lastPosition() + 1);
    m_place = Place::fresh;
}

void TextDocumentWriter::writeRuns(TextRange range) {
    m_text->forEachRun(range, [&](const AttributedString::CharacterRun& run) {
        const auto& format = charFormat(run.attributes);
        auto text =
            std::u16string_view(m_text->text()).substr(run.range.location, run.range.length);
        while (!text.empty()) {
            const auto foreign = std::min(text.find_first_of(kForeignUnits), text.size());
            if (foreign > 0) {
                m_cursor.insertText(toQString(text.substr(0, foreign)), format);
            }
            if (foreign < text.size()) {
                const auto unit = text[foreign];
                auto standIn = format;
                standIn.setProperty(kUnitProperty, int{unit});
                const auto breaksLine = unit == u'\r' || unit == u'\u2029';
                m_cursor.insertText(
                    QString(QChar(breaksLine ? QChar::LineSeparator : QChar::ReplacementCharacter)),
                    standIn);
            }
            text.remove_prefix(std::min(foreign + 1, text.size()));
        }
    });
}

bool TextDocumentWriter::setList(QTextBlockFormat& format, const std::vector<TextListRef>& lists) {
    const auto* const known = m_lists.of(lists);
    if (known) {
        format.setObjectIndex(known->objectIndex());
    }
    return known;
}

void TextDocumentWriter::markGap() {
    QTextBlockFormat format;
    format.setProperty(kGapProperty, true);
    m_cursor.setBlockFormat(format);
}

const QTextCharFormat& TextDocumentWriter::charFormat(const CharacterAttributes& attributes) {
    const auto [place, isNew] = m_charFormats.try_emplace(&attributes);
    if (isNew) {
        place->second = charFormatOf(attributes, m_look);
    }
    return place->second;
}

const CharacterAttributes& TextDocumentWriter::endOf(const Paragraph& paragraph) const {
    return m_text->attributesAt(paragraph.range.end() - 1);
}

BlockKind TextDocumentWriter::kindOf(const Paragraph& paragraph) const {
    const auto& first = m_text->attributesAt(paragraph.range.location);
    return ui::kindOf({.isCode = richtext::isCodeBlock(*m_text, paragraph.range),
                       .isItem = !paragraph.style->lists.empty(),
                       .heading = headingLevel(first.font)});
}

std::optional<TextDocumentWriter::Table> TextDocumentWriter::tableOf(Paragraphs paragraphs,
                                                                     std::size_t depth) const {
    Table result;
    const auto& table = paragraphs.front().style->cells[depth]->table;
    const std::int64_t columns = table->columns;
    if (columns < 1 || columns > kMaximumGrid || m_writtenTables.contains(table.get())) {
        return std::nullopt;
    }
    std::int64_t area = 0;
    for (std::size_t i = 0; i < paragraphs.size();) {
        const auto& cell = paragraphs[i].style->cells[depth];
        auto end = i + 1;
        while (end < paragraphs.size() && paragraphs[end].style->cells[depth] == cell) {
            ++end;
        }
        const auto right = std::int64_t{cell->column} + cell->columnSpan;
        const auto bottom = std::int64_t{cell->row} + cell->rowSpan;
        const auto isAfterLast = result.cells.empty() ||
                                 std::pair(result.cells.back()->row, result.cells.back()->column) <
                                     std::pair(cell->row, cell->column);
        if (cell->row < 0 || cell->column < 0 || cell->rowSpan < 1 || cell->columnSpan < 1 ||
            right > columns || bottom * columns > kMaximumGrid || !isAfterLast) {
            return std::nullopt;
        }
        area += std::int64_t{cell->rowSpan} * cell->columnSpan;
        result.rows = std::max(result.rows, static_cast<int>(bottom));
        result.cells.push_back(cell);
        result.contents.push_back(paragraphs.subspan(i, end - i));
        i = end;
    }
    if (area != result.rows * columns) {
        return std::nullopt;
    }
    // Of the right size altogether, but a place may be covered twice and another not at all.
    std::vector<bool> isCovered(static_cast<std::size_t>(area));
    for (const auto& cell : result.cells) {
        for (auto row = cell->row; row < cell->row + cell->rowSpan; ++row) {
            for (auto column = cell->column; column < cell->column + cell->columnSpan; ++column) {
                auto place = isCovered[static_cast<std::size_t>(row * columns + column)];
                if (place) {
                    return std::nullopt;
                }
                place = true;
            }
        }
    }
    return result;
}

} // namespace korvex::ui
