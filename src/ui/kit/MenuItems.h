#pragma once

#include <QKeySequence>
#include <QMenu>

#include <utility>

namespace korvex::ui {

/// Adds an item of a context menu that calls `action` while `receiver` lives. Its keys are shown;
/// they are listened to by the view that the menu is of.
template <typename Receiver, typename Action>
void addItem(QMenu& menu, const QString& text, const QKeySequence& keys, bool isEnabled,
             Receiver* receiver, Action&& action) {
    auto* const item = menu.addAction(text);
    item->setShortcut(keys);
    item->setShortcutVisibleInContextMenu(true);
    item->setEnabled(isEnabled);
    QObject::connect(item, &QAction::triggered, receiver, std::forward<Action>(action));
}

} // namespace korvex::ui
