#pragma once

#include "richtext/table/RichTextTable.h"

#include <array>
#include <cstddef>
#include <optional>

class QTextTable;

namespace korvex::ui {

class RichTextEdit;

enum class TableAction {
    insertRowAbove,
    insertRowBelow,
    insertColumnLeft,
    insertColumnRight,
    duplicateRow,
    duplicateColumn,
    moveRowUp,
    moveRowDown,
    moveColumnLeft,
    moveColumnRight,
    resetColumnWidth,
    deleteRow,
    deleteColumn,
    deleteTable,
};
inline constexpr std::array kTableActions{
    TableAction::insertRowAbove,    TableAction::insertRowBelow,   TableAction::insertColumnLeft,
    TableAction::insertColumnRight, TableAction::duplicateRow,     TableAction::duplicateColumn,
    TableAction::moveRowUp,         TableAction::moveRowDown,      TableAction::moveColumnLeft,
    TableAction::moveColumnRight,   TableAction::resetColumnWidth, TableAction::deleteRow,
    TableAction::deleteColumn,      TableAction::deleteTable,
};

/// The commands on the table that the caret of an editor stands in. Each is one step of undo and
/// gives what `RichTextTable::Grid` makes of the table. The caret stays in its cell wherever that
/// goes; an inserted row or column, or the copy of one, gets the caret in the same column or row;
/// after a deletion it stands in the cell that took the place, or in the last one. Deleting the
/// only row or column deletes the table; then the caret stands in the paragraph after it. Main
/// thread; the editor must outlive it.
class TableEditing final {
public:
    explicit TableEditing(RichTextEdit& edit) : m_edit(edit) {}

    /// Inserts a table below the paragraph at the caret, or in its place if that is empty; the
    /// caret goes into the first cell. The size is clamped to what a table may have. Nothing is
    /// changed in tables and in code, and where the text would become longer than an entry may be.
    void insert(int rows, int columns);
    /// Whether the command would change anything here.
    bool isAvailable(TableAction action) const;
    /// Carries the command out. Returns false, and changes nothing, when it is not available or the
    /// text would become longer than an entry may be.
    bool perform(TableAction action);
    /// The table may be any of the text. The width is clamped to 80 to 600 points; without one the
    /// column gets the default.
    bool resizeColumn(QTextTable& table, int column, std::optional<richtext::Twips> width);

    /// Selects the content of the next or the previous cell. False at the table's ends, and outside
    /// of a table.
    bool nextCell() { return selectNeighbour(1); }
    bool previousCell() { return selectNeighbour(-1); }

private:
    bool editedInPlace(QTextTable& table, const richtext::RichTextTable::Grid::Edit& edit,
                       const richtext::RichTextTable::Grid& edited, std::size_t depth);
    /// Puts the text in the place of the table and of its lead, as one step of undo; then the caret
    /// stands at this offset of the text.
    bool replace(const QTextTable& table, const richtext::AttributedString& text,
                 std::size_t caret);
    void placeCaret(std::size_t offset);
    bool selectNeighbour(int direction);

    RichTextEdit& m_edit;
};

} // namespace korvex::ui
