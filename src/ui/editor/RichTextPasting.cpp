#include "ui/editor/RichTextEdit.h"

#include "ui/editor/RichTextRuns.h"
#include "ui/editor/TableMenu.h"
#include "ui/kit/MenuItems.h"
#include "ui/text/Links.h"
#include "ui/text/OfferedFiles.h"
#include "ui/text/RichTextClipboard.h"
#include "ui/text/TextDocumentConversion.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>

#include <algorithm>

namespace korvex::ui {

bool RichTextEdit::canInsertFromMimeData(const QMimeData* source) const {
    return hasText(*source) || isForAttaching(*source);
}

void RichTextEdit::insertFromMimeData(const QMimeData* source) {
    if (isForAttaching(*source)) {
        Q_EMIT attachmentsPasted(source);
        return;
    }
    insertPasted(textFrom(*source));
}

void RichTextEdit::pastePlainText() {
    if (const auto* const offered = QApplication::clipboard()->mimeData()) {
        insertPasted(plainTextFrom(*offered));
    }
}

/// Into code goes what it says only.
void RichTextEdit::insertPasted(const richtext::AttributedString& text) {
    auto attributes = typingAttributes();
    attributes.link.clear();
    if (!attributes.isCode()) {
        insert(text);
        return;
    }
    auto units = text.text();
    if (!attributes.korvexCodeBlock) {
        std::replace(units.begin(), units.end(), u'\n', u' ');
    }
    const auto style = styleOf(textCursor().blockFormat());
    insert(richtext::AttributedString(units, attributes, style));
}

QMimeData* RichTextEdit::createMimeDataFromSelection() const {
    return mimeDataOf(textOf(textCursor())).release();
}

QMenu* RichTextEdit::makeMenu() {
    auto* const menu = new QMenu(this);
    const auto add = [&](const QString& text, const QKeySequence& keys, bool isEnabled,
                         auto&& action) { addItem(*menu, text, keys, isEnabled, this, action); };
    const bool hasSelection = textCursor().hasSelection();
    const auto* const clipboard = QApplication::clipboard()->mimeData();
    const bool canPaste = clipboard && canInsertFromMimeData(clipboard);
    add(tr("Undo"), QKeySequence::Undo, document()->isUndoAvailable(), [this] { undo(); });
    add(tr("Redo"), QKeySequence::Redo, document()->isRedoAvailable(), [this] { redo(); });
    menu->addSeparator();
    add(tr("Cut"), QKeySequence::Cut, hasSelection, [this] { cut(); });
    add(tr("Copy"), QKeySequence::Copy, hasSelection, [this] { copy(); });
    add(tr("Paste"), QKeySequence::Paste, canPaste, [this] { paste(); });
    add(tr("Paste as plain text"), Qt::CTRL | Qt::SHIFT | Qt::Key_V, canPaste,
        [this] { pastePlainText(); });
    add(tr("Select all"), QKeySequence::SelectAll, !document()->isEmpty(), [this] { selectAll(); });
    menu->addSeparator();
    const auto& link = formatState().link;
    add(link.isEmpty() ? tr("Add link…") : tr("Change link…"), Qt::CTRL | Qt::SHIFT | Qt::Key_K,
        true, [this] { Q_EMIT linkRequested(); });
    if (!link.isEmpty()) {
        add(tr("Open link"), {}, true, [link] { openLink(link); });
        add(tr("Remove link"), {}, true, [this] { setLink({}); });
    }
    if (formatState().isInTable) {
        menu->addMenu(new TableMenu(*this, menu));
    }
    return menu;
}

} // namespace korvex::ui
