#include "ui/windows/UndoActions.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>

namespace korvex::ui {

namespace {

/// "Undo Complete Todo"; the names of what was done are the services' own.
QString withName(const QString& action, const std::string& name) {
    const auto translated =
        QCoreApplication::translate("korvex::services::UndoManager", name.c_str());
    return name.empty() ? action : action + QLatin1Char(' ') + translated;
}

} // namespace

UndoActions::UndoActions(services::UndoManager& manager, QWidget& window)
    : m_manager(manager),
      m_undo(makeAction(Qt::CTRL | Qt::Key_Z, window)),
      m_redo(makeAction(Qt::CTRL | Qt::SHIFT | Qt::Key_Z, window)),
      m_changes(manager.didChange().connect([this] { update(); })) {
    connect(m_undo, &QAction::triggered, this, &UndoActions::undoRequested);
    connect(m_redo, &QAction::triggered, this, &UndoActions::redoRequested);
    update();
}

QAction* UndoActions::makeAction(const QKeySequence& keys, QWidget& window) {
    auto* const action = new QAction(this);
    action->setShortcut(keys);
    action->setShortcutVisibleInContextMenu(true);
    window.addAction(action);
    return action;
}

void UndoActions::addTo(QMenu& menu) {
    menu.addActions({m_undo, m_redo});
}

void UndoActions::update() {
    m_undo->setText(withName(tr("Undo"), m_manager.undoActionName()));
    m_undo->setEnabled(m_manager.canUndo());
    m_redo->setText(withName(tr("Redo"), m_manager.redoActionName()));
    m_redo->setEnabled(m_manager.canRedo());
}

} // namespace korvex::ui
