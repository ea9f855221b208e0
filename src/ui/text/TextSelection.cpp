#include "ui/text/TextSelection.h"

#include <QTextDocument>
#include <QTextTable>

#include <algorithm>

namespace korvex::ui {

const QTextTable* tableLeftBy(const QTextCursor& selection) {
    if (!selection.hasSelection() || selection.hasComplexSelection()) {
        return nullptr;
    }
    const auto start = std::min(selection.position(), selection.anchor());
    const QTextTable* result = nullptr;
    for (auto* frame = selection.document()->frameAt(start); frame; frame = frame->parentFrame()) {
        const auto* const table = qobject_cast<const QTextTable*>(frame);
        if (table && table->lastPosition() < selection.selectionEnd()) {
            result = table;
        }
    }
    return result;
}

int startOf(const QTextCursor& selection) {
    const auto* const table = tableLeftBy(selection);
    return table ? table->firstPosition() : selection.selectionStart();
}

} // namespace korvex::ui
