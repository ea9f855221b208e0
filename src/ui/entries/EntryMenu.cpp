#include "ui/entries/EntryMenu.h"

#include "ui/kit/controls/MenuItems.h"

namespace korvex::ui {

EntryMenu::EntryMenu(const EntryActions::Parts& parts, EntryActions& actions)
    : m_parts(parts), m_actions(actions) {
    connect(&m_parts.editing, &EntryEditing::menuOpening, this,
            [this](QMenu* menu, model::Entry* entry) { addAttachmentItems(*menu, entry); });
}

void EntryMenu::open(int row, const QPoint& globalPosition) {
    auto& entry = *m_parts.model.entry(row);
    auto* const menu = new QMenu(&m_parts.page);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (m_parts.model.isReadOnly()) {
        addAttachmentItems(*menu, &entry);
        if (menu->isEmpty()) {
            delete menu;
        } else {
            menu->popup(globalPosition);
        }
        return;
    }
    const MenuItems items(*menu, *this);
    if (m_parts.model.kind(row) == EntryListModel::RowKind::entry) {
        addOpenItems(*menu, row);
    } else {
        items.add(tr("Restore"), Qt::Key_Space, [this, &entry] { m_actions.restore(entry); });
    }
    addAttachmentItems(*menu, &entry);
    items.add(tr("Move to board…"), Qt::CTRL | Qt::SHIFT | Qt::Key_M,
              [this, &entry] { m_actions.chooseBoard(entry); });
    items.add(entry.isTodo() ? tr("Delete todo") : tr("Delete text"), Qt::Key_Delete,
              [this, &entry] { m_actions.remove(entry); });
    menu->popup(globalPosition);
}

void EntryMenu::addOpenItems(QMenu& menu, int row) {
    auto& entry = *m_parts.model.entry(row);
    const auto isEditable = m_parts.model.isEditable(row);
    const MenuItems items(menu, *this);
    items
        .add(tr("Edit"), Qt::Key_F2,
             [this, &entry] { m_parts.editing.edit(m_parts.model.rowOf(entry), -1); })
        .setEnabled(isEditable);
    items
        .add(tr("Schedule…"), Qt::CTRL | Qt::Key_D,
             [this, &entry] { m_actions.openSchedule(entry); })
        .setEnabled(entry.isTodo());
    items
        .add(tr("Complete"), Qt::CTRL | Qt::Key_Return,
             [this, &entry] { m_actions.complete(entry); })
        .setEnabled(entry.isOpenTodo());
    menu.addSeparator();
    items.add(tr("Move up"), Qt::ALT | Qt::Key_Up, [this, &entry] { m_actions.move(entry, -1); });
    items.add(tr("Move down"), Qt::ALT | Qt::Key_Down,
              [this, &entry] { m_actions.move(entry, 1); });
    items.add(tr("New todo below"), {}, [this, &entry] { m_parts.editing.startDraft(&entry); });
    items.add(tr("New text below"), Qt::CTRL | Qt::SHIFT | Qt::Key_T,
              [this, &entry] { m_parts.editing.startTextDraft(&entry); });
    menu.addSeparator();
    items
        .add(entry.isTodo() ? tr("Change to text") : tr("Change to todo"), {},
             [this, &entry] { m_actions.changeType(entry); })
        .setEnabled(isEditable);
}

void EntryMenu::addAttachmentItems(QMenu& menu, model::Entry* entry) {
    menu.addSeparator();
    if (!m_parts.model.isReadOnly()) {
        MenuItems(menu, *this)
            .add(tr("Attach files…"), Qt::CTRL | Qt::SHIFT | Qt::Key_A,
                 [this] { m_actions.attachFiles(); })
            .setEnabled(!entry || m_parts.attachments.canAttachTo(*entry));
    }
    if (entry) {
        m_parts.attachments.addAttachments(menu, *entry);
    }
    menu.addSeparator();
}

} // namespace korvex::ui
