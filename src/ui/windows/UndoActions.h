#pragma once

#include "base/Signal.h"
#include "base/Uuid.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "services/UndoManager.h"
#include "store/ModelContext.h"

#include <QObject>

#include <functional>
#include <vector>

class QAction;
class QMenu;
class QWidget;

namespace korvex::ui {

class Navigation;

/// Undo and redo of one window, with their keys: they tell what they would take back, and are
/// enabled while there is something. What came back is shown with the keyboard on its row; where
/// that is another board, the window goes there and says so. Main thread.
class UndoActions final : public QObject {
    Q_OBJECT

public:
    /// All of it outlives the actions.
    UndoActions(store::ModelContext& context, services::UndoManager& manager,
                Navigation& navigation, QWidget& window);

    void addTo(QMenu& menu);
    void undo();
    /// Takes back this step, which need not be the latest any more.
    void undo(services::UndoManager::StepId step);
    void redo();

private:
    enum class Way { back, forth };
    /// What a step is about: one of its entries that is there, and a board.
    struct Subject {
        const model::Entry* entry = nullptr;
        model::Board* board = nullptr;
    };

    QAction* makeAction(const QKeySequence& keys, QWidget& window, void (UndoActions::*carryOut)());
    void update();
    void run(const services::UndoManager::About& about, Way way, const std::function<void()>& step);
    Subject subjectOf(const std::vector<base::Uuid>& entries, Way way) const;
    /// Shows it on the page; `done` says what was done, on a board that is not in sight.
    void show(const Subject& subject, const QString& done);

    store::ModelContext& m_context;
    services::UndoManager& m_manager;
    Navigation& m_navigation;
    QAction* m_undo;
    QAction* m_redo;
    base::Subscription m_changes;
};

} // namespace korvex::ui
