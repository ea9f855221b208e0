#include "ui/editor/TextMenu.h"

#include "ui/editor/RichTextEdit.h"
#include "ui/editor/TableMenu.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/text/Links.h"

namespace korvex::ui {

void addEditingItems(QMenu& menu, QTextEdit& edit, const std::function<void()>& pastePlain) {
    const MenuItems items(menu, edit);
    const auto hasSelection = edit.textCursor().hasSelection();
    const auto canPaste = edit.canPaste();
    items.add(TextMenu::tr("Undo"), QKeySequence::Undo, [&edit] { edit.undo(); })
        .setEnabled(edit.document()->isUndoAvailable());
    items.add(TextMenu::tr("Redo"), QKeySequence::Redo, [&edit] { edit.redo(); })
        .setEnabled(edit.document()->isRedoAvailable());
    menu.addSeparator();
    items.add(TextMenu::tr("Cut"), QKeySequence::Cut, [&edit] { edit.cut(); })
        .setEnabled(hasSelection);
    items.add(TextMenu::tr("Copy"), QKeySequence::Copy, [&edit] { edit.copy(); })
        .setEnabled(hasSelection);
    items.add(TextMenu::tr("Paste"), QKeySequence::Paste, [&edit] { edit.paste(); })
        .setEnabled(canPaste);
    if (pastePlain) {
        items.add(TextMenu::tr("Paste as plain text"), Qt::CTRL | Qt::SHIFT | Qt::Key_V, pastePlain)
            .setEnabled(canPaste);
    }
    items.add(TextMenu::tr("Select all"), QKeySequence::SelectAll, [&edit] { edit.selectAll(); })
        .setEnabled(!edit.document()->isEmpty());
}

TextMenu::TextMenu(RichTextEdit& edit, QWidget* parent) : QMenu(parent) {
    addEditingItems(*this, edit, [&edit] { edit.pastePlainText(); });
    addSeparator();
    const MenuItems items(*this, edit);
    const auto& link = edit.formatState().link;
    items.add(link.isEmpty() ? tr("Add link…") : tr("Change link…"),
              Qt::CTRL | Qt::SHIFT | Qt::Key_K,
              [&edit] { edit.perform({{richtext::RichTextAction::Kind::link}}); });
    if (!link.isEmpty()) {
        items.add(tr("Open link"), {}, [link] { openLink(link); });
        items.add(tr("Remove link"), {}, [&edit] { edit.setLink({}); });
    }
    if (edit.formatState().isInTable) {
        addMenu(new TableMenu(edit, this));
    }
}

} // namespace korvex::ui
