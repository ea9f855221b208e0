#pragma once

#include "richtext/table/RichTextTable.h"
#include "ui/text/TextLook.h"

class QTextTable;

namespace korvex::ui {

/// Inserts or deletes a row or a column, or gives a column its width, by the document's own means,
/// as one step of undo: several times as fast as writing a large table anew, and undoing it leaves
/// the caret where the change was. `edited` is the grid after the edit, `depth` how many tables are
/// around this one. False, and nothing is changed, for other edits and where cells that stay would
/// have to look different, as when another row becomes the header. Main thread.
bool editInPlace(QTextTable& table, const richtext::RichTextTable::Grid::Edit& edit,
                 const richtext::RichTextTable::Grid& edited, std::size_t depth,
                 const TextLook& look);

} // namespace korvex::ui
