#include "ui/entries/EntryEditing.h"

#include "ui/kit/controls/MenuItems.h"

#include <QMenu>

namespace korvex::ui {

using model::EntryType;

/// Commands on the entry itself need it stored first; they go on with the editor closed.
void EntryEditing::forward(const Request& request) {
    if (store()) {
        auto* const stored = entry();
        const auto caret = m_editors.current().caret();
        closeToList();
        if (stored) {
            request(stored, caret);
        }
    }
}

void EntryEditing::leaveToList() {
    if (leaveForGood()) {
        m_view.setFocus();
    }
}

void EntryEditing::moveAndGoOn(int offset) {
    forward([&](model::Entry* entry, int caret) {
        Q_EMIT moveRequested(entry, offset);
        edit(m_model.rowOf(*entry), caret);
    });
}

void EntryEditing::changeType() {
    forward([this](model::Entry* entry, int caret) {
        Q_EMIT typeChangeRequested(entry);
        edit(m_model.rowOf(*entry), caret);
    });
}

void EntryEditing::split() {
    if (const auto* const second = m_storing.split()) {
        close();
        edit(m_model.rowOf(*second), 0);
    } else if (entry() && m_view.editedRow() != m_model.rowOf(*entry())) {
        m_view.placeEditor(m_editors.current(), m_model.rowOf(*entry()));
    }
}

void EntryEditing::makeNext() {
    const auto isEmptyDraft = m_edited.isNew() && m_editors.current().isBlank();
    if ((!isEmptyDraft && deleteEmptied()) || !store()) {
        return;
    }
    if (isEmptyDraft || m_model.isReadOnly()) {
        // Return on a line left empty ends the writing, as on a board that was archived meanwhile.
        closeToList();
        return;
    }
    const auto* const after = entry();
    m_model.closeDraft();
    Q_EMIT closed();
    openDraft(EntryType::todo, m_model.openDraft(after));
}

bool EntryEditing::deleteEmptied() {
    auto* const emptied = entry();
    if (!m_edited.isTodo() || !m_edited.isStored() || !m_editors.current().isBlank()) {
        return false;
    }
    // Undoing brings back what it said before it was emptied.
    m_storing.putBack();
    if (store()) {
        Q_EMIT deletionRequested(emptied);
    }
    return true;
}

void EntryEditing::removeAndGoUp() {
    const auto place = m_view.editedRow();
    const auto* const above = place > 0 ? m_model.entry(place - 1) : nullptr;
    const auto* const emptied = entry();
    if (m_edited.isNew() ? !leave() : deleteEmptied() && emptied->isLive()) {
        return; // that was refused
    }
    const auto row = above ? m_model.rowOf(*above) : -1;
    if (row >= 0) {
        edit(row, -1);
    } else {
        m_view.setFocus();
    }
}

void EntryEditing::walk(int direction) {
    const auto row = m_view.editedRow() + direction;
    if (row < 0 || row >= m_model.rowCount()) {
        return;
    }
    const auto* const next = m_model.entry(row);
    const auto kind = m_model.kind(row);
    if (next && kind == EntryRowKind::entry) {
        // Down into a text begins at its top.
        edit(row, direction > 0 && !next->isTodo() ? 0 : -1);
    } else if (leave()) {
        m_view.setCurrentRow(next ? m_model.rowOf(*next) : m_model.rowOf(kind));
        m_view.setFocus();
    }
}

void EntryEditing::pasteLines(const QString& text, const QStringList& others) {
    if (!isOpen()) {
        return; // the entry has just been found to be gone
    }
    // The end of the text has gone with the last line: neither without the other.
    const services::UndoManager::Group paste(m_undo, "Paste");
    const auto isDraft = m_edited.isDraft();
    if (const auto* const last =
            m_storing.addLines(isDraft ? QStringList(text) + others : others)) {
        auto& editor = m_editors.current();
        if (isDraft) {
            editor.revert(); // all of it is stored elsewhere
        } else {
            editor.change(richtext::AttributedString(text.toStdU16String()));
        }
        edit(m_model.rowOf(*last), -1);
    }
}

void EntryEditing::openMenu(const QPoint& globalPosition) {
    auto& editor = m_editors.current();
    auto* const menu = editor.makeMenu();
    menu->setParent(&m_view, menu->windowFlags());
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // Another program may end the editing that the menu is of.
    connect(this, &EntryEditing::closed, menu, &QMenu::close);
    const MenuItems items(*menu, *this);
    menu->addSeparator();
    const auto isText = !m_edited.isTodo();
    if (isText) {
        items.add(tr("Split here"), Qt::CTRL | Qt::SHIFT | Qt::Key_Return, [this] { split(); })
            .setEnabled(m_editors.text().parts().has_value());
    }
    items.add(isText ? tr("Change to todo") : tr("Change to text"), {}, [this] { changeType(); })
        .setEnabled(!editor.isBlank());
    const auto moveToBoard = [this] {
        forward([this](model::Entry* entry, int) { Q_EMIT boardChangeRequested(entry); });
    };
    items.add(tr("Move to board…"), Qt::CTRL | Qt::SHIFT | Qt::Key_M, moveToBoard)
        .setEnabled(!editor.isBlank());
    Q_EMIT menuOpening(menu, entry());
    items.add(isText ? tr("Delete text") : tr("Delete todo"), {}, [this] {
        if (auto* const stored = m_edited.isStored() ? entry() : nullptr) {
            Q_EMIT deletionRequested(stored);
        } else {
            discard();
        }
    });
    menu->popup(globalPosition);
}

} // namespace korvex::ui
