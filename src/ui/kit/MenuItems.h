#pragma once

#include <QKeySequence>
#include <QMenu>

#include <utility>

namespace korvex::ui {

/// Adds the items of a context menu, which call their actions while `receiver` lives. Keys are only
/// shown: they are listened to by the view that the menu is of.
class MenuItems final {
public:
    MenuItems(QMenu& menu, const QObject& receiver) : m_menu(menu), m_receiver(receiver) {}

    /// The item, to be disabled where it does not apply.
    template <typename Action>
    QAction& add(const QString& text, const QKeySequence& keys, Action&& action) const {
        auto& item = *m_menu.addAction(text);
        item.setShortcut(keys);
        item.setShortcutVisibleInContextMenu(true);
        QObject::connect(&item, &QAction::triggered, &m_receiver, std::forward<Action>(action));
        return item;
    }

private:
    QMenu& m_menu;
    const QObject& m_receiver;
};

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
