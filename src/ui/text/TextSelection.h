#pragma once

#include <QTextCursor>

class QTextTable;

namespace korvex::ui {

/// What a selection of a document under edit is about. Main thread.

/// The outermost table that the selection begins in and leaves, which selects all of it; null where
/// there is none.
const QTextTable* tableLeftBy(const QTextCursor& selection);
/// Where what is selected begins, or where the caret is. Not `selectionStart`: of a selection that
/// leaves a table, Qt says the end of the paragraph above the table.
int startOf(const QTextCursor& selection);

} // namespace korvex::ui
