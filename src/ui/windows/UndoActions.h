#pragma once

#include "base/Signal.h"
#include "services/UndoManager.h"

#include <QObject>

class QAction;
class QMenu;
class QWidget;

namespace korvex::ui {

/// Undo and redo with their keys in one window: they tell what they would take back, and are
/// enabled while there is something. Whoever listens carries them out. Main thread.
class UndoActions final : public QObject {
    Q_OBJECT

public:
    /// The manager outlives the window.
    UndoActions(services::UndoManager& manager, QWidget& window);

    void addTo(QMenu& menu);

Q_SIGNALS:
    void undoRequested();
    void redoRequested();

private:
    QAction* makeAction(const QKeySequence& keys, QWidget& window);
    void update();

    services::UndoManager& m_manager;
    QAction* m_undo;
    QAction* m_redo;
    base::Subscription m_changes;
};

} // namespace korvex::ui
