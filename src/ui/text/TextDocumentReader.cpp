#include "ui/text/TextDocumentReader.h"

#include "richtext/table/TableLayout.h"
#include "richtext/text/ListIndents.h"

#include <QTextDocument>
#include <QTextFragment>

#include <algorithm>

namespace korvex::ui {

namespace {

using namespace richtext;

constexpr std::size_t kMaximumCells = 16;

std::u16string_view viewOf(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

/// The geometry of a cell that came into a table, after those beside it.
CellGeometry geometryBeside(const TextTableCell* above, const TextTableCell* left, int row) {
    const auto* const model = above ? above : left;
    if (!model) {
        return newCellGeometry(row);
    }
    auto result = model->geometry;
    if (model->row == 0 && row > 0) {
        result.background.reset(); // the header's
    }
    return result;
}

} // namespace

AttributedString TextDocumentReader::read() {
    m_builder.reserve(static_cast<std::size_t>(m_document.characterCount()));
    auto* const root = m_document.rootFrame();
    readFrame(root->begin(), root->end());
    return m_builder.take();
}

CharacterAttributes TextDocumentReader::attributes(const QTextCharFormat& format,
                                                   const QTextBlockFormat&) const {
    return attributesOf(format);
}

ParagraphStyle TextDocumentReader::style(const QTextBlockFormat& format) const {
    return styleOf(format);
}

TextList TextDocumentReader::list(const QTextListFormat& format) const {
    return {.marker = markerOf(format)};
}

bool TextDocumentReader::isLeftOut(const QTextBlock& block) const {
    return isGap(block);
}

void TextDocumentReader::readFrame(QTextFrame::iterator from, const QTextFrame::iterator& to) {
    for (; from != to; ++from) {
        auto* const frame = from.currentFrame();
        if (const auto* const table = qobject_cast<const QTextTable*>(frame)) {
            readTable(*table);
        } else if (frame) {
            readFrame(frame->begin(), frame->end());
        } else if (const auto block = from.currentBlock(); block.isValid() && !isLeftOut(block)) {
            readBlock(block);
        }
    }
}

void TextDocumentReader::readTable(const QTextTable& table) {
    const auto isTooDeep = m_cells.size() == kMaximumCells;
    auto outerStyles = std::exchange(m_styles, {});
    for (const auto& [place, cell] : cellsOf(table)) {
        if (isTooDeep) {
            readFrame(place.begin(), place.end());
            continue;
        }
        m_cells.push_back(cell);
        m_styles.clear();
        readFrame(place.begin(), place.end());
        m_cells.pop_back();
    }
    m_styles = std::move(outerStyles);
}

std::vector<TextDocumentReader::Cell> TextDocumentReader::cellsOf(const QTextTable& table) {
    const auto columns = table.columns();
    auto identity = table.format().property(kTableProperty).value<TextTableRef>();
    const auto isSame =
        identity && identity->columns == columns && m_tables.insert(identity.get()).second;
    if (!isSame) {
        identity = std::make_shared<TextTable>(TextTable{.columns = columns});
    }
    std::vector<Cell> result;
    std::unordered_set<const TextTableCell*> known;
    // By column, the last cell that was read.
    std::vector<const TextTableCell*> above(static_cast<std::size_t>(columns), nullptr);
    for (int row = 0; row < table.rows(); ++row) {
        for (int column = 0; column < columns; ++column) {
            const auto place = table.cellAt(row, column);
            if (place.row() != row || place.column() != column) {
                continue; // covered by another cell
            }
            auto cell = place.format().property(kCellProperty).value<TextTableCellRef>();
            const auto fits = isSame && cell && cell->table == identity && cell->row == row &&
                              cell->column == column && cell->rowSpan == place.rowSpan() &&
                              cell->columnSpan == place.columnSpan() &&
                              known.insert(cell.get()).second;
            if (!fits) {
                const auto* const left = column > 0 ? result.back().cell.get() : nullptr;
                cell = std::make_shared<TextTableCell>(TextTableCell{
                    .table = identity,
                    .row = row,
                    .column = column,
                    .rowSpan = place.rowSpan(),
                    .columnSpan = place.columnSpan(),
                    .geometry =
                        cell ? cell->geometry
                             : geometryBeside(above[static_cast<std::size_t>(column)], left, row)});
            }
            above[static_cast<std::size_t>(column)] = cell.get();
            result.push_back({place, std::move(cell)});
        }
    }
    return result;
}

void TextDocumentReader::readBlock(const QTextBlock& block) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const auto fragment = it.fragment();
        append(fragment.text(), known(fragment.charFormatIndex(), fragment.charFormat(), block));
    }
    const auto isLast = block.position() + block.length() >= m_document.characterCount();
    if (!isLast) {
        m_builder.append(u'\n', known(block.charFormatIndex(), block.charFormat(), block).id);
    }
    if (m_builder.length() > m_builder.paragraphStart()) {
        m_builder.endParagraph(styleId(block));
    }
}

void TextDocumentReader::append(const QString& text, Known known) {
    if (known.unit == 0) {
        m_builder.append(viewOf(text), known.id);
        return;
    }
    // What was typed behind a stand-in took its format over.
    for (const char16_t unit : viewOf(text)) {
        const auto standsIn = unit == QChar::LineSeparator || unit == QChar::ReplacementCharacter;
        m_builder.append(standsIn ? known.unit : unit, known.id);
    }
}

TextDocumentReader::Known TextDocumentReader::known(int charFormat, const QTextCharFormat& format,
                                                    const QTextBlock& block) {
    const auto key = static_cast<std::uint64_t>(static_cast<std::uint32_t>(charFormat)) << 32U |
                     static_cast<std::uint32_t>(block.blockFormatIndex());
    const auto [place, isNew] = m_attributes.try_emplace(key);
    if (isNew) {
        place->second = {m_builder.idOf(attributes(format, block.blockFormat())),
                         static_cast<char16_t>(format.intProperty(kUnitProperty))};
    }
    return place->second;
}

AttributedString::StyleId TextDocumentReader::styleId(const QTextBlock& block) {
    const auto [place, isNew] = m_styles.try_emplace(block.blockFormatIndex());
    if (isNew) {
        const auto format = block.blockFormat();
        auto read = style(format);
        if (const auto* const list = block.textList()) {
            read.lists = listsOf(*list);
        }
        read.cells = m_cells;
        for (auto& cell : format.property(kCellsProperty).value<std::vector<TextTableCellRef>>()) {
            if (read.cells.size() < kMaximumCells) {
                read.cells.push_back(std::move(cell));
            }
        }
        m_lastLists = read.lists;
        place->second = m_builder.idOf(read);
    }
    return place->second;
}

const std::vector<TextListRef>& TextDocumentReader::listsOf(const QTextList& list) {
    const auto [place, isNew] = m_lists.try_emplace(&list);
    if (!isNew) {
        return place->second;
    }
    const auto format = list.format();
    auto lists = format.property(kListsProperty).value<std::vector<TextListRef>>();
    if (lists.empty()) {
        const auto depth = std::clamp<std::size_t>(
            static_cast<std::size_t>(std::max(format.indent(), 1)), 1, kMaximumListDepth);
        lists = m_lastLists;
        lists.resize(std::min(lists.size(), depth - 1));
        lists.push_back(std::make_shared<TextList>(this->list(format)));
    }
    place->second = std::move(lists);
    return place->second;
}

} // namespace korvex::ui
