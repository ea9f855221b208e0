#include "ui/boards/BoardActions.h"
#include "ui/boards/BoardPicker.h"
#include "ui/entries/BoardPage.h"
#include "ui/kit/Refusal.h"
#include "ui/kit/SearchField.h"
#include "ui/windows/AppearanceMenu.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/PageStack.h"
#include "ui/windows/Sidebar.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>

namespace korvex::ui {

// What the window's keys and menus do.

namespace {

constexpr int kBoardShortcuts = 9;

/// "Undo Complete Todo"; the names of what was done are the services' own.
QString withName(const QString& action, const std::string& name) {
    const auto translated =
        QCoreApplication::translate("korvex::services::UndoManager", name.c_str());
    return name.empty() ? action : action + QLatin1Char(' ') + translated;
}

} // namespace

void MainWindow::addShortcuts() {
    const auto add = [this](const QKeySequence& keys, auto&& action) {
        auto* const item = new QAction(this);
        item->setShortcut(keys);
        addAction(item);
        connect(item, &QAction::triggered, this, action);
        return item;
    };
    add(Qt::CTRL | Qt::Key_N, [this] { startTodo(); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_T, [this] { startText(); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_N, [this] {
        m_sidebar->show();
        m_sidebar->createBoard();
    });
    m_find = add(Qt::CTRL | Qt::Key_F, [this] {
        m_sidebar->show();
        m_sidebar->searchField().setFocus(Qt::ShortcutFocusReason);
        m_sidebar->searchField().selectAll();
    });
    m_find->setText(tr("Search"));
    m_goToBoard = add(Qt::CTRL | Qt::Key_K, [this] { pickBoard(); });
    m_goToBoard->setText(tr("Go to board…"));
    add(Qt::ALT | Qt::Key_Left, [this] { goBack(); });
    add(Qt::Key_F9, [this] { m_sidebar->setVisible(m_sidebar->isHidden()); });
    add(Qt::CTRL | Qt::Key_Q, [this] { close(); });
    for (int number = 0; number < kBoardShortcuts; ++number) {
        add(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + number), [this, number] {
            if (number < m_sidebar->boards().rowCount()) {
                showBoard(*m_sidebar->boards().board(number));
                m_page->focusList();
            }
        });
    }
}

void MainWindow::addUndoActions() {
    const auto add = [this](const QKeySequence& keys, auto&& action) {
        auto* const item = new QAction(this);
        item->setShortcut(keys);
        item->setShortcutVisibleInContextMenu(true);
        addAction(item);
        connect(item, &QAction::triggered, this, action);
        return item;
    };
    m_undo = add(Qt::CTRL | Qt::Key_Z, [this] {
        takeBack([this] { m_page->undo(); }, [this] { m_workspace.undo.undo(); });
    });
    m_redo = add(Qt::CTRL | Qt::SHIFT | Qt::Key_Z, [this] {
        takeBack([this] { m_page->redo(); }, [this] { m_workspace.undo.redo(); });
    });
    m_undoChanges = m_workspace.undo.didChange().connect([this] { updateUndoActions(); });
    updateUndoActions();
}

void MainWindow::updateUndoActions() {
    const auto& manager = m_workspace.undo;
    m_undo->setText(withName(tr("Undo"), manager.undoActionName()));
    m_undo->setEnabled(manager.canUndo());
    m_redo->setText(withName(tr("Redo"), manager.redoActionName()));
    m_redo->setEnabled(manager.canRedo());
}

/// A board's page shows what came back; other pages follow the store.
template <typename OnBoard, typename Elsewhere>
void MainWindow::takeBack(OnBoard&& onBoard, Elsewhere&& elsewhere) {
    if (m_pages->current() == PageKind::board) {
        onBoard();
    } else if (const auto refused = refusal(elsewhere)) {
        showError(*refused);
    }
}

void MainWindow::startTodo() {
    if (auto* const board = lastBoard()) {
        showBoard(*board);
        m_page->startTodo();
    }
}

void MainWindow::startText() {
    if (auto* const board = lastBoard()) {
        showBoard(*board);
        m_page->startText();
    }
}

void MainWindow::pickBoard() {
    if (auto* const open = findChild<BoardPicker*>()) {
        open->closeNow();
        return;
    }
    auto* const picker = new BoardPicker(m_sidebar->boards().activeBoards(), tr("Go to board"),
                                         m_workspace, m_theme, this);
    connect(picker, &BoardPicker::chosen, this, [this](model::Board* board) {
        showBoard(*board);
        m_page->focusList();
    });
    picker->open();
}

void MainWindow::openBoardMenu(model::Board& board, const QPoint& globalPosition) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    m_actions->addTo(*menu, board);
    menu->popup(globalPosition);
}

void MainWindow::openPageMenu(const QPoint& globalPosition) {
    if (!m_page->board()) {
        return;
    }
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (!m_page->isReadOnly()) {
        auto* const text = menu->addAction(tr("New text"));
        text->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_T);
        connect(text, &QAction::triggered, this, &MainWindow::startText);
    }
    auto* const edit = menu->addMenu(tr("Edit"));
    edit->addActions({m_undo, m_redo});
    menu->addAction(m_find);
    menu->addAction(m_goToBoard);
    menu->addSeparator();
    m_actions->addTo(*menu, *m_page->board());
    menu->addSeparator();
    menu->addMenu(new AppearanceMenu(m_workspace.preferences, menu));
    auto* const sidebar =
        menu->addAction(m_sidebar->isHidden() ? tr("Show sidebar") : tr("Hide sidebar"));
    sidebar->setShortcut(Qt::Key_F9);
    connect(sidebar, &QAction::triggered, this,
            [this] { m_sidebar->setVisible(m_sidebar->isHidden()); });
    menu->popup(globalPosition);
}

} // namespace korvex::ui
