#include "ui/editor/TableInPlace.h"

#include "ui/text/TextFormats.h"

#include <QTextCursor>
#include <QTextTable>

namespace korvex::ui {

using richtext::AttributedString;
using richtext::RichTextTable;
using Edit = RichTextTable::Grid::Edit;
using Kind = Edit::Kind;

namespace {

/// Where another row becomes the header, cells that stay look different afterwards.
bool leavesOthersAlone(const Edit& edit) {
    switch (edit.kind) {
    case Kind::insertRow:
        return edit.index > 0 || edit.where == Edit::Where::after;
    case Kind::deleteRow:
        return edit.index > 0;
    case Kind::insertColumn:
    case Kind::deleteColumn:
    case Kind::resizeColumn:
        return true;
    case Kind::duplicateRow:
    case Kind::moveRow:
    case Kind::duplicateColumn:
    case Kind::moveColumn:
        break;
    }
    return false;
}

bool hasSpans(const QTextTable& table) {
    for (int row = 0; row < table.rows(); ++row) {
        for (int column = 0; column < table.columns(); ++column) {
            const auto cell = table.cellAt(row, column);
            if (cell.rowSpan() != 1 || cell.columnSpan() != 1) {
                return true;
            }
        }
    }
    return false;
}

/// An empty cell that Qt has made takes the look that the model gives it.
void dress(QTextTableCell cell, const AttributedString& content,
           const richtext::TextTableCellRef& look, const TableFormats& formats,
           const TextLook& textLook) {
    auto format = QTextTableCellFormat();
    format.merge(charFormatOf(content.attributesAt(0), textLook));
    format.clearBackground(); // would fill the cell
    formats.apply(look, format);
    cell.setFormat(format);
    cell.firstCursorPosition().setBlockFormat(
        blockFormatOf(content.styleAt(0), BlockKind::body, textLook));
}

} // namespace

bool editInPlace(QTextTable& table, const Edit& edit, const RichTextTable::Grid& edited,
                 std::size_t depth, const TextLook& look) {
    if (!leavesOthersAlone(edit) || edited.needsRepair() || hasSpans(table)) {
        return false;
    }
    const auto text = edited.attributedString();
    std::vector<richtext::TextTableCellRef> cells;
    for (const auto& each : RichTextTable::cells(text, text.styleAt(0).cells[depth]->table)) {
        cells.push_back(each.cell);
    }
    const TableFormats formats(cells, look);
    if (formats.table().borderCollapse() != table.format().borderCollapse()) {
        return false; // all cells have to draw other borders
    }
    const auto place = edit.index + (edit.where == Edit::Where::after ? 1 : 0);
    QTextCursor before(table.firstCursorPosition());
    before.setPosition(table.firstPosition() - 1);
    const auto formatBefore = before.blockFormat();
    QTextCursor cursor(before);
    cursor.beginEditBlock();
    if (edit.kind == Kind::insertRow) {
        table.insertRows(place, 1);
    } else if (edit.kind == Kind::insertColumn) {
        table.insertColumns(place, 1);
    } else if (edit.kind == Kind::deleteRow) {
        table.removeRows(edit.index, 1);
    } else if (edit.kind == Kind::deleteColumn) {
        table.removeColumns(edit.index, 1);
    }
    // An empty paragraph before the table ends with the first cell; where that goes, it takes on
    // the format of the cell's own paragraph.
    if (before.blockFormat() != formatBefore) {
        before.setBlockFormat(formatBefore);
    }
    table.setFormat(formats.table());
    const auto lookOf = [&](int row, int column) {
        return cells[static_cast<std::size_t>(row * edited.columnCount() + column)];
    };
    const auto dressAt = [&](int row, int column) {
        const auto& contents = edited.rows()[static_cast<std::size_t>(row)];
        dress(table.cellAt(row, column), contents[static_cast<std::size_t>(column)],
              lookOf(row, column), formats, look);
    };
    const auto applyTo = [&](int column) {
        for (int row = 0; row < edited.rowCount(); ++row) {
            auto cell = table.cellAt(row, column);
            auto format = cell.format().toTableCellFormat();
            formats.apply(lookOf(row, column), format);
            cell.setFormat(format);
        }
    };
    if (edit.kind == Kind::insertRow) {
        for (int column = 0; column < edited.columnCount(); ++column) {
            dressAt(place, column);
        }
    } else if (edit.kind == Kind::insertColumn) {
        for (int row = 0; row < edited.rowCount(); ++row) {
            dressAt(row, place);
        }
        if (place == 0) {
            applyTo(1); // the border on the left is another column's now
        }
    } else if (edit.kind == Kind::resizeColumn) {
        applyTo(edit.index);
    } else if (edit.kind == Kind::deleteColumn && edit.index == 0) {
        applyTo(0);
    }
    cursor.endEditBlock();
    return true;
}

} // namespace korvex::ui
