#pragma once

#include "app/AppPreferences.h"
#include "base/TextFolding.h"
#include "model/Board.h"
#include "services/UndoManager.h"
#include "store/ModelContext.h"
#include "ui/windows/UndoActions.h"

#include <QObject>

class QAction;
class QKeySequence;
class QMenu;
class QPoint;
class QWidget;

namespace korvex::ui {

class BoardActions;
class BoardPage;
class Navigation;
class Sidebar;
class SidebarPlace;
class Theme;

/// What the keys of the main window and the menus of its boards do. Main thread.
class WindowActions final : public QObject {
    Q_OBJECT

public:
    /// What the actions are about; all of it outlives them.
    struct Parts {
        QWidget& window;
        Sidebar& sidebar;
        SidebarPlace& sidebarPlace;
        BoardPage& boardPage;
        BoardActions& boardActions;
        Navigation& navigation;
    };
    /// What the actions work with; all of it outlives them.
    struct Services {
        store::ModelContext& context;
        services::UndoManager& undo;
        const base::TextFolding& folding;
        app::AppPreferences& preferences;
    };
    WindowActions(const Parts& parts, const Services& services, const Theme& theme);

    /// Takes this change of the window back.
    void undo(services::UndoManager::StepId step) { m_undo.undo(step); }

Q_SIGNALS:
    void settingsRequested();
    /// The user wants to end the program.
    void quitRequested();

private:
    /// What becomes of the panels that are open: they belong to what stands there, which most
    /// actions change.
    enum class Panels { end, stay };
    template <typename Action>
    QAction* addShortcut(const QKeySequence& keys, Action&& action, Panels panels = Panels::end);
    void addShortcuts();
    void startTodo();
    void startText();
    void find();
    void pickBoard();
    void openNumbered(int number);
    void toggleSidebar();
    /// The menu of what has the keyboard, which not every platform has a key for.
    static void openContextMenu();
    QMenu* makeMenu();
    void openBoardMenu(model::Board& board, const QPoint& globalPosition);
    void openPageMenu(const QRect& globalAnchor);

    Parts m_parts;
    Services m_services;
    const Theme& m_theme;
    UndoActions m_undo;
    QAction* m_find = nullptr;
    QAction* m_goToBoard = nullptr;
};

} // namespace korvex::ui
