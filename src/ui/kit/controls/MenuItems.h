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

/// The text of an item whose keys are only told, in the column that menus have for them.
inline constexpr QLatin1Char kBeforeKeys('\t');
inline QString withKeys(const QString& title, const QString& keys) {
    return keys.isEmpty() ? title : title + kBeforeKeys + keys;
}

} // namespace korvex::ui
