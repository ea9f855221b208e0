#include "ui/windows/WindowActions.h"

#include "ui/boards/BoardActions.h"
#include "ui/boards/BoardPicker.h"
#include "ui/entries/BoardPage.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/windows/AppearanceMenu.h"
#include "ui/windows/Navigation.h"
#include "ui/windows/Sidebar.h"
#include "ui/windows/SidebarPlace.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>

namespace korvex::ui {

namespace {

constexpr int kBoardShortcuts = 9;

/// Below what it belongs to, which ends where the menu does; at the pointer, where that has no
/// size.
QPoint placeUnder(const QRect& anchor, QMenu& menu) {
    menu.ensurePolished();
    const auto isAtEnd = !anchor.isEmpty() && !QGuiApplication::isRightToLeft();
    return {anchor.left() + (isAtEnd ? anchor.width() - menu.sizeHint().width() : 0),
            anchor.top() + anchor.height()};
}

} // namespace

WindowActions::WindowActions(const Parts& parts, const Services& services, const Theme& theme)
    : QObject(&parts.window),
      m_parts(parts),
      m_services(services),
      m_theme(theme),
      m_undo(services.context, services.undo, parts.navigation, parts.window) {
    addShortcuts();
    connect(
        &parts.sidebar, &Sidebar::boardMenuRequested, this,
        [this](model::Board* board, const QPoint& position) { openBoardMenu(*board, position); });
    connect(&parts.boardPage, &BoardPage::menuRequested, this, &WindowActions::openPageMenu);
}

template <typename Action>
QAction* WindowActions::addShortcut(const QKeySequence& keys, Action&& action, Panels panels) {
    auto* const item = new QAction(this);
    item->setShortcut(keys);
    m_parts.window.addAction(item);
    connect(item, &QAction::triggered, this, [this, action, panels] {
        if (panels == Panels::stay || Popover::dismissAll(m_parts.window)) {
            action();
        }
    });
    return item;
}

void WindowActions::addShortcuts() {
    addShortcut(Qt::CTRL | Qt::Key_N, [this] { startTodo(); });
    addShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_T, [this] { startText(); });
    addShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_N, [this] {
        m_parts.sidebarPlace.show();
        m_parts.sidebar.createBoard();
    });
    m_find = addShortcut(Qt::CTRL | Qt::Key_F, [this] { find(); });
    m_find->setText(tr("Search"));
    m_goToBoard = addShortcut(
        Qt::CTRL | Qt::Key_K, [this] { pickBoard(); }, Panels::stay);
    m_goToBoard->setText(tr("Go to board…"));
    addShortcut(Qt::CTRL | Qt::Key_Comma, [this] { Q_EMIT settingsRequested(); });
    addShortcut(Qt::ALT | Qt::Key_Left, [this] { m_parts.navigation.goBack(); });
    addShortcut(Qt::Key_F9, [this] { toggleSidebar(); });
    addShortcut(
        Qt::SHIFT | Qt::Key_F10, [] { openContextMenu(); }, Panels::stay);
    addShortcut(Qt::CTRL | Qt::Key_Q, [this] { Q_EMIT quitRequested(); });
    for (int number = 0; number < kBoardShortcuts; ++number) {
        addShortcut(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + number),
                    [this, number] { openNumbered(number); });
    }
}

void WindowActions::startTodo() {
    if (m_parts.navigation.showLastBoard()) {
        m_parts.boardPage.startTodo();
    }
}

void WindowActions::startText() {
    if (m_parts.navigation.showLastBoard()) {
        m_parts.boardPage.startText();
    }
}

void WindowActions::find() {
    m_parts.sidebarPlace.show();
    m_parts.sidebar.searchField().setFocus(Qt::ShortcutFocusReason);
    m_parts.sidebar.searchField().selectAll();
}

void WindowActions::pickBoard() {
    if (auto* const open = m_parts.window.findChild<BoardPicker*>()) {
        open->closeNow();
        return;
    }
    if (!Popover::dismissAll(m_parts.window)) {
        return;
    }
    auto* const picker = new BoardPicker(
        {.title = tr("Go to board"), .boards = m_parts.sidebar.boards().activeBoards()},
        m_services.context, m_services.folding, m_theme, &m_parts.window);
    connect(picker, &BoardPicker::chosen, this,
            [this](model::Board* board) { m_parts.navigation.openBoard(*board); });
    picker->open();
}

void WindowActions::openNumbered(int number) {
    if (number < m_parts.sidebar.boards().rowCount()) {
        m_parts.navigation.openBoard(*m_parts.sidebar.boards().board(number));
    }
}

void WindowActions::toggleSidebar() {
    m_parts.sidebarPlace.toggle();
}

void WindowActions::openContextMenu() {
    if (auto* const focused = QApplication::focusWidget()) {
        const auto place =
            focused->inputMethodQuery(Qt::ImCursorRectangle).toRectF().toRect().center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place, focused->mapToGlobal(place));
        QApplication::sendEvent(focused, &event);
    }
}

QMenu* WindowActions::makeMenu() {
    auto* const menu = new QMenu(&m_parts.window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    return menu;
}

void WindowActions::openBoardMenu(model::Board& board, const QPoint& globalPosition) {
    auto* const menu = makeMenu();
    m_parts.boardActions.addTo(*menu, board, m_parts.sidebar);
    menu->popup(globalPosition);
}

void WindowActions::openPageMenu(const QRect& globalAnchor) {
    auto& page = m_parts.boardPage;
    if (!page.board()) {
        return;
    }
    auto* const menu = makeMenu();
    const MenuItems items(*menu, *this);
    if (!page.isReadOnly()) {
        items.add(tr("New text"), Qt::CTRL | Qt::SHIFT | Qt::Key_T, [this] { startText(); });
    }
    m_undo.addTo(*menu->addMenu(tr("Edit")));
    menu->addAction(m_find);
    menu->addAction(m_goToBoard);
    menu->addSeparator();
    m_parts.boardActions.addTo(*menu, *page.board(), page.header());
    menu->addSeparator();
    menu->addMenu(new AppearanceMenu(m_services.preferences, menu));
    items.add(m_parts.sidebarPlace.isShown() ? tr("Hide sidebar") : tr("Show sidebar"), Qt::Key_F9,
              [this] { toggleSidebar(); });
    items.add(tr("Settings…"), Qt::CTRL | Qt::Key_Comma, [this] { Q_EMIT settingsRequested(); });
    menu->popup(placeUnder(globalAnchor, *menu));
}

} // namespace korvex::ui
