#include "ui/editor/TableEditing.h"

#include "ui/editor/RichTextEdit.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/editor/TableInPlace.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextDocumentConversion.h"

#include <QTextCursor>
#include <QTextTable>

#include <algorithm>
#include <utility>

namespace korvex::ui {

using richtext::AttributedString;
using richtext::RichTextTable;
using Grid = RichTextTable::Grid;
using Edit = Grid::Edit;

namespace {

/// A place in a table.
struct Place {
    int row = 0;
    int column = 0;
};

/// A table of the document as the model has it.
struct ReadTable {
    Grid grid;
    /// The text of the document from the first cell to the last.
    richtext::TextRange range;
    /// How many tables are around it.
    std::size_t depth = 0;
};

std::size_t depthOf(const QTextTable& table) {
    std::size_t result = 0;
    for (const auto* frame = table.parentFrame(); frame; frame = frame->parentFrame()) {
        result += qobject_cast<const QTextTable*>(frame) ? 1 : 0;
    }
    return result;
}

std::optional<ReadTable> read(const QTextTable& table, const AttributedString& text) {
    const auto first = offsetOf(*table.document(), table.firstPosition());
    const auto depth = depthOf(table);
    if (first >= text.length() || text.styleAt(first).cells.size() <= depth) {
        return std::nullopt;
    }
    const auto reference = text.styleAt(first).cells[depth]->table;
    auto grid = Grid::read(text, reference);
    if (!grid || grid->rowCount() != table.rows() || grid->columnCount() != table.columns()) {
        return std::nullopt;
    }
    const auto cells = RichTextTable::cells(text, reference);
    const auto start = cells.front().range.location;
    return ReadTable{std::move(*grid), {start, cells.back().range.end() - start}, depth};
}

/// The end of the paragraph before the table, which in a document is the table's own beginning;
/// empty where there is no such paragraph.
AttributedString leadOf(const QTextTable& table, const AttributedString& text) {
    const auto before = offsetOf(*table.document(), table.firstPosition() - 1);
    return text.slice({before, offsetOf(*table.document(), table.firstPosition()) - before});
}

/// Counted from the grid's start, in UTF-16 units.
std::size_t offsetOf(const Grid& grid, Place place) {
    std::size_t result = 0;
    for (int row = 0; row <= place.row; ++row) {
        const auto& contents = grid.rows()[static_cast<std::size_t>(row)];
        const auto end = row < place.row ? contents.size() : static_cast<std::size_t>(place.column);
        for (std::size_t column = 0; column < end; ++column) {
            result += contents[column].length();
        }
    }
    return result;
}

qsizetype lengthOf(const Grid& grid) {
    return static_cast<qsizetype>(offsetOf(grid, {grid.rowCount() - 1, grid.columnCount()}));
}

Place placeOf(const QTextTable& table, int position) {
    const auto cell = table.cellAt(position);
    return {cell.row(), cell.column()};
}

/// What takes the place of the table and of its lead.
AttributedString rebuilt(const ReadTable& table, const Grid& grid, AttributedString lead) {
    auto result = std::move(lead);
    result.append(grid.attributedString());
    // The paragraph after the table stays where it is.
    const auto after = grid.range().end() - table.range.end();
    result.remove({result.length() - after, after});
    return result;
}

/// What the grid is to do, and where the caret stands afterwards.
struct Step {
    Edit edit;
    Place caret;
};

/// Knows all actions but `deleteTable`.
Step stepFor(TableAction action, Place at, const QTextTable& table) {
    const auto [row, column] = at;
    const auto lastRow = table.rows() - 1;
    const auto lastColumn = table.columns() - 1;
    using Kind = Edit::Kind;
    using Where = Edit::Where;
    switch (action) {
    case TableAction::insertRowAbove:
        return {{.kind = Kind::insertRow, .index = row, .where = Where::before}, at};
    case TableAction::insertRowBelow:
        return {{.kind = Kind::insertRow, .index = row, .where = Where::after}, {row + 1, column}};
    case TableAction::insertColumnLeft:
        return {{.kind = Kind::insertColumn, .index = column, .where = Where::before}, at};
    case TableAction::insertColumnRight:
        return {{.kind = Kind::insertColumn, .index = column, .where = Where::after},
                {row, column + 1}};
    case TableAction::duplicateRow:
        return {{.kind = Kind::duplicateRow, .index = row}, {row + 1, column}};
    case TableAction::duplicateColumn:
        return {{.kind = Kind::duplicateColumn, .index = column}, {row, column + 1}};
    case TableAction::moveRowUp:
        return {{.kind = Kind::moveRow, .index = row, .target = row - 1}, {row - 1, column}};
    case TableAction::moveRowDown:
        return {{.kind = Kind::moveRow, .index = row, .target = row + 1}, {row + 1, column}};
    case TableAction::moveColumnLeft:
        return {{.kind = Kind::moveColumn, .index = column, .target = column - 1},
                {row, column - 1}};
    case TableAction::moveColumnRight:
        return {{.kind = Kind::moveColumn, .index = column, .target = column + 1},
                {row, column + 1}};
    case TableAction::resetColumnWidth:
        return {{.kind = Kind::resizeColumn, .index = column}, at};
    case TableAction::deleteRow:
        return {{.kind = Kind::deleteRow, .index = row}, {std::min(row, lastRow - 1), column}};
    case TableAction::deleteColumn:
        return {{.kind = Kind::deleteColumn, .index = column},
                {row, std::min(column, lastColumn - 1)}};
    case TableAction::deleteTable:
        break;
    }
    return {};
}

} // namespace

void TableEditing::insert(int rows, int columns) {
    auto cursor = m_edit.textCursor();
    if (cursor.currentTable() || isCodeBlock(cursor.block())) {
        return; // tables do not stand in tables, nor in code
    }
    auto table = RichTextTable::make(std::clamp(rows, 1, RichTextTable::kMaximumRows),
                                     std::clamp(columns, 1, RichTextTable::kMaximumColumns));
    cursor.clearSelection();
    const auto isLast = !cursor.block().next().isValid();
    if (!isLast) {
        // What stands here, or follows, is the paragraph after the table.
        table.remove({table.length() - 1, 1});
    }
    if (!isEmpty(cursor.block())) {
        cursor.movePosition(QTextCursor::EndOfBlock);
        AttributedString below(u"\n");
        below.append(table);
        table = std::move(below);
    }
    m_edit.setTextCursor(cursor);
    const auto place = cursor.position();
    if (m_edit.insert(table)) {
        auto first = m_edit.textCursor();
        first.setPosition(place);
        while (!first.currentTable() && first.movePosition(QTextCursor::NextBlock)) {
        }
        m_edit.setTextCursor(first);
    }
}

bool TableEditing::isAvailable(TableAction action) const {
    const auto cursor = m_edit.textCursor();
    const auto* const table = cursor.currentTable();
    if (!table) {
        return false;
    }
    const auto [row, column] = placeOf(*table, cursor.position());
    switch (action) {
    case TableAction::insertRowAbove:
    case TableAction::insertRowBelow:
    case TableAction::duplicateRow:
        return table->rows() < RichTextTable::kMaximumRows;
    case TableAction::insertColumnLeft:
    case TableAction::insertColumnRight:
    case TableAction::duplicateColumn:
        return table->columns() < RichTextTable::kMaximumColumns;
    case TableAction::moveRowUp:
        return row > 0;
    case TableAction::moveRowDown:
        return row + 1 < table->rows();
    case TableAction::moveColumnLeft:
        return column > 0;
    case TableAction::moveColumnRight:
        return column + 1 < table->columns();
    case TableAction::resetColumnWidth: {
        const auto found = read(*table, textOf(*m_edit.document()));
        return found && found->grid.columnWidths()[static_cast<std::size_t>(column)].has_value();
    }
    case TableAction::deleteRow:
    case TableAction::deleteColumn:
    case TableAction::deleteTable:
        return true;
    }
    return false;
}

bool TableEditing::perform(TableAction action) {
    auto caret = m_edit.textCursor();
    auto* const table = caret.currentTable();
    if (!table) {
        return false;
    }
    const auto& document = *m_edit.document();
    const auto text = textOf(document);
    if (action == TableAction::deleteTable ||
        (action == TableAction::deleteRow && table->rows() == 1) ||
        (action == TableAction::deleteColumn && table->columns() == 1)) {
        return replace(*table, leadOf(*table, text), offsetOf(document, table->firstPosition()));
    }
    const auto found = read(*table, text);
    if (!found) {
        return false;
    }
    const auto at = placeOf(*table, caret.position());
    const auto step = stepFor(action, at, *table);
    const auto inCell =
        offsetOf(document, caret.position()) - found->range.location - offsetOf(found->grid, at);
    auto grid = found->grid;
    if (!grid.apply(step.edit)) {
        return false;
    }
    const auto& cell = grid.rows()[static_cast<std::size_t>(step.caret.row)]
                                  [static_cast<std::size_t>(step.caret.column)];
    const auto offset =
        found->range.location + offsetOf(grid, step.caret) + std::min(inCell, cell.length() - 1);
    caret.clearSelection(); // what is selected would count as room
    m_edit.setTextCursor(caret);
    const auto added = lengthOf(grid) - lengthOf(found->grid);
    if (added > 0 && !m_edit.allows(QString(added, QLatin1Char('\n')))) {
        return false;
    }
    if (editedInPlace(*table, step.edit, grid, found->depth)) {
        placeCaret(offset);
        return true;
    }
    return replace(*table, rebuilt(*found, grid, leadOf(*table, text)), offset);
}

bool TableEditing::resizeColumn(QTextTable& table, int column,
                                std::optional<richtext::Twips> width) {
    const auto text = textOf(*m_edit.document());
    const auto found = read(table, text);
    if (!found) {
        return false;
    }
    const Edit edit{.kind = Edit::Kind::resizeColumn, .index = column, .width = width};
    auto grid = found->grid;
    const auto caret = offsetOf(*m_edit.document(), m_edit.textCursor().position());
    return grid.apply(edit) && (editedInPlace(table, edit, grid, found->depth) ||
                                replace(table, rebuilt(*found, grid, leadOf(table, text)), caret));
}

// A step of undo that begins with the caret's own cursor leads back to where that stood.

bool TableEditing::editedInPlace(QTextTable& table, const Edit& edit,
                                 const RichTextTable::Grid& edited, std::size_t depth) {
    auto caret = m_edit.textCursor();
    caret.beginEditBlock();
    const auto isDone = editInPlace(table, edit, edited, depth, m_edit.look());
    caret.endEditBlock();
    return isDone;
}

bool TableEditing::replace(const QTextTable& table, const AttributedString& text,
                           std::size_t caret) {
    const auto first = table.firstPosition() - 1;
    const auto end = table.lastPosition() + 1;
    if (!m_edit.allowsReplacing(first, end, toQString(text.text()))) {
        return false;
    }
    auto before = m_edit.textCursor();
    before.beginEditBlock();
    QTextCursor whole(m_edit.document());
    whole.setPosition(first);
    whole.setPosition(end, QTextCursor::KeepAnchor);
    insertText(whole, text, m_edit.look());
    before.endEditBlock();
    placeCaret(caret);
    return true;
}

void TableEditing::placeCaret(std::size_t offset) {
    auto caret = m_edit.textCursor();
    caret.setPosition(positionOf(*m_edit.document(), offset));
    m_edit.setTextCursor(caret);
    m_edit.ensureCursorVisible();
}

bool TableEditing::selectNeighbour(int direction) {
    auto cursor = m_edit.textCursor();
    const auto* const table = cursor.currentTable();
    if (!table) {
        return false;
    }
    auto cell = table->cellAt(cursor);
    const auto start = cell;
    // A cell that spans several places is passed once.
    for (int place = cell.row() * table->columns() + cell.column(); cell == start;) {
        place += direction;
        if (place < 0 || place >= table->rows() * table->columns()) {
            return false;
        }
        cell = table->cellAt(place / table->columns(), place % table->columns());
    }
    cursor.setPosition(cell.firstPosition());
    cursor.setPosition(cell.lastPosition(), QTextCursor::KeepAnchor);
    m_edit.setTextCursor(cursor);
    return true;
}

} // namespace korvex::ui
