#include "ui/text/TextDocumentConversion.h"

#include "ui/text/TextDocumentReader.h"
#include "ui/text/TextDocumentWriter.h"
#include "ui/text/TextSelection.h"
#include "ui/text/TextSpacing.h"

#include <algorithm>
#include <vector>

namespace korvex::ui {

namespace {

using namespace richtext;

/// The positions of all blocks that stand for nothing in the text, in order.
std::vector<int> gapsOf(const QTextDocument& document) {
    std::vector<int> result;
    for (const auto& block : blocksBesideTables(document)) {
        if (isGap(block)) {
            result.push_back(block.position());
        }
    }
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

/// The selected cells of a table as a table of their own.
AttributedString selectedCells(const QTextCursor& selection) {
    const auto& document = *selection.document();
    const auto& table = *selection.currentTable();
    int firstRow = 0;
    int rows = 0;
    int firstColumn = 0;
    int columns = 0;
    selection.selectedTableCells(&firstRow, &rows, &firstColumn, &columns);
    const auto text = textOf(document);
    const auto identity = std::make_shared<TextTable>(TextTable{.columns = columns});
    AttributedString result;
    for (int row = firstRow; row < firstRow + rows; ++row) {
        for (int column = firstColumn; column < firstColumn + columns; ++column) {
            const auto place = table.cellAt(row, column);
            if (place.row() != row || place.column() != column) {
                continue;
            }
            const auto start = offsetOf(document, place.firstPosition());
            auto content =
                text.slice({start, offsetOf(document, place.lastPosition()) + 1 - start});
            const auto& cells = text.styleAt(start).cells;
            const auto depth = cells.empty() ? 0 : cells.size() - 1;
            const auto cell = std::make_shared<TextTableCell>(TextTableCell{
                .table = identity,
                .row = row - firstRow,
                .column = column - firstColumn,
                .rowSpan = std::min(place.rowSpan(), firstRow + rows - row),
                .columnSpan = std::min(place.columnSpan(), firstColumn + columns - column),
                .geometry = cells.empty() ? CellGeometry{} : cells.back()->geometry});
            content.editStyles({0, content.length()}, [&](ParagraphStyle& style) {
                const auto kept = std::min(depth + 1, style.cells.size());
                style.cells.erase(style.cells.begin(),
                                  style.cells.begin() + static_cast<std::ptrdiff_t>(kept));
                style.cells.insert(style.cells.begin(), cell);
            });
            result.append(content);
        }
    }
    return result;
}

} // namespace

void setText(QTextDocument& document, const AttributedString& text, const TextLook& look) {
    const auto canUndo = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    document.clear();
    document.setDefaultFont(look.font);
    document.setDocumentMargin(0);
    document.setIndentWidth(look.listIndent());
    auto option = document.defaultTextOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document.setDefaultTextOption(option);
    QTextCursor cursor(&document);
    cursor.beginEditBlock(); // laid out once
    TextDocumentWriter(cursor, look).replaceSelection(text);
    spaceParagraphs(document, look);
    cursor.endEditBlock();
    document.setUndoRedoEnabled(canUndo);
    document.setModified(false);
}

AttributedString textOf(const QTextDocument& document) {
    return TextDocumentReader(document).read();
}

void insertText(QTextCursor& cursor, const AttributedString& text, const TextLook& look) {
    TextDocumentWriter(cursor, look).replaceSelection(text);
}

AttributedString textOf(const QTextCursor& selection) {
    if (!selection.hasSelection()) {
        return {};
    }
    if (selection.hasComplexSelection()) {
        return selectedCells(selection);
    }
    const auto& document = *selection.document();
    const auto start = offsetOf(document, startOf(selection));
    const auto end = offsetOf(document, selection.selectionEnd());
    return textOf(document).slice({start, end - start});
}

std::size_t offsetOf(const QTextDocument& document, int position) {
    position = std::clamp(position, 0, document.characterCount() - 1);
    const auto gaps = gapsOf(document);
    const auto before = std::lower_bound(gaps.begin(), gaps.end(), position) - gaps.begin();
    return static_cast<std::size_t>(position - before);
}

int positionOf(const QTextDocument& document, std::size_t offset) {
    const auto last = document.characterCount() - 1;
    auto position = static_cast<int>(std::min(offset, static_cast<std::size_t>(last)));
    for (const auto gap : gapsOf(document)) {
        if (gap <= position) {
            ++position;
        }
    }
    return std::min(position, last);
}

} // namespace korvex::ui
