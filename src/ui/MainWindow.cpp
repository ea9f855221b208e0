#include "ui/MainWindow.h"

#include "ui/AppearanceMenu.h"
#include "ui/ArchivedBoardsPage.h"
#include "ui/BoardActions.h"
#include "ui/BoardPage.h"
#include "ui/ErrorBanner.h"
#include "ui/Refusal.h"
#include "ui/Sidebar.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

constexpr const char* kGeometryKey = "mainWindowGeometry";
constexpr const char* kSplitterKey = "mainWindowSplitter";
constexpr const char* kSidebarHiddenKey = "mainWindowSidebarHidden";
constexpr QSize kFirstSize(960, 640);
constexpr QSize kSmallestSize(420, 320);
constexpr int kFirstSidebarWidth = 220;
constexpr int kBoardShortcuts = 9;

base::Bytes toBytes(const QByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

QByteArray toByteArray(const base::Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

} // namespace

MainWindow::MainWindow(const Workspace& workspace, const Theme& theme)
    : m_workspace(workspace),
      m_theme(theme),
      m_splitter(new QSplitter(this)),
      m_sidebar(new Sidebar(workspace, theme)),
      m_pages(new QStackedWidget),
      m_page(new BoardPage(workspace, theme)) {
    setWindowTitle(QStringLiteral("Korvex"));
    setMinimumSize(kSmallestSize);
    m_pages->addWidget(m_page);
    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(m_pages);
    m_splitter->setHandleWidth(1);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setStretchFactor(1, 1);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_splitter);
    m_actions = new BoardActions(*m_sidebar, workspace, theme, *this);
    m_actions->setParent(this);

    connect(m_sidebar, &Sidebar::boardChosen, this,
            [this](model::Board* board) { showBoard(*board); });
    connect(
        m_sidebar, &Sidebar::boardMenuRequested, this,
        [this](model::Board* board, const QPoint& position) { openBoardMenu(*board, position); });
    connect(m_sidebar, &Sidebar::archivedRequested, this, &MainWindow::showArchived);
    connect(m_page, &BoardPage::iconRequested, this,
            [this](const QRect& anchor) { m_actions->chooseIcon(*m_page->board(), anchor); });
    connect(m_page, &BoardPage::menuRequested, this, &MainWindow::openPageMenu);
    connect(m_actions, &BoardActions::refused, this, &MainWindow::showError);
    connect(&m_page->entries(), &EntryListModel::countsChanged, this, [this] {
        if (m_page->board()) {
            m_sidebar->boards().setOpenTodoCount(*m_page->board(),
                                                 m_page->entries().openTodoCount());
        }
    });
    m_page->list().viewport()->installEventFilter(this);

    addShortcuts();
    restoreLayout();
    m_changes =
        workspace.context.didChange().connect([this](const store::ChangeSet&) { storeChanged(); });
    m_sidebar->refresh();
    if (auto* const board = launchBoard()) {
        showBoard(*board);
    }
    m_page->setFocus();
}

MainWindow::~MainWindow() = default;

void MainWindow::addShortcuts() {
    const auto add = [this](const QKeySequence& keys, auto&& action) {
        auto* const item = new QAction(this);
        item->setShortcut(keys);
        addAction(item);
        connect(item, &QAction::triggered, this, action);
    };
    add(Qt::CTRL | Qt::Key_N, [this] {
        if (m_page->board()) {
            showBoard(*m_page->board());
            m_page->startTodo();
        }
    });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_T, [this] { startText(); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_N, [this] {
        m_sidebar->show();
        m_sidebar->createBoard();
    });
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

void MainWindow::restoreLayout() {
    resize(kFirstSize);
    m_splitter->setSizes({kFirstSidebarWidth, kFirstSize.width() - kFirstSidebarWidth});
    if (const auto geometry = m_workspace.defaults.bytes(kGeometryKey)) {
        restoreGeometry(toByteArray(*geometry));
    }
    if (const auto sizes = m_workspace.defaults.bytes(kSplitterKey)) {
        m_splitter->restoreState(toByteArray(*sizes));
        m_splitter->setHandleWidth(1);
    }
    m_sidebar->setHidden(m_workspace.defaults.boolean(kSidebarHiddenKey).value_or(false));
}

void MainWindow::saveLayout() {
    m_workspace.defaults.setBytes(kGeometryKey, toBytes(saveGeometry()));
    m_workspace.defaults.setBytes(kSplitterKey, toBytes(m_splitter->saveState()));
    m_workspace.defaults.setBoolean(kSidebarHiddenKey, m_sidebar->isHidden());
}

/// The board that was shown last; the Inbox when that is gone.
model::Board* MainWindow::launchBoard() {
    model::Board* board = nullptr;
    if (const auto last = m_workspace.preferences.mainBoardSelectedBoardID()) {
        board = m_workspace.boards.board(*last);
    }
    return board && m_sidebar->boards().rowOf(*board) >= 0 ? board
                                                           : m_workspace.boards.inboxBoard();
}

void MainWindow::showBoard(model::Board& board) {
    if (!m_page->showBoard(board)) {
        // What is being edited there must not be left: the sidebar follows the page.
        if (m_page->board()) {
            m_sidebar->list().setCurrentBoard(*m_page->board());
        }
        return;
    }
    m_pages->setCurrentWidget(m_page);
    m_sidebar->list().setCurrentBoard(board);
    setWindowTitle(tr("%1 – Korvex").arg(toQString(board.name())));
    if (m_workspace.preferences.mainBoardSelectedBoardID() != board.id()) {
        m_workspace.preferences.setMainBoardSelectedBoardID(board.id());
    }
}

void MainWindow::showArchived() {
    if (!m_archivedPage) {
        m_archivedPage = new ArchivedBoardsPage(m_theme);
        m_pages->addWidget(m_archivedPage);
        connect(m_archivedPage, &ArchivedBoardsPage::unarchiveRequested, this,
                [this](model::Board* board) { m_actions->setArchived(*board, false); });
        connect(m_archivedPage, &ArchivedBoardsPage::deletionRequested, this,
                [this](model::Board* board, const QRect& anchor) {
                    m_actions->confirmDeletion(*board, anchor);
                });
    }
    if (m_page->leaveEditor()) {
        m_archivedPage->showBoards(m_sidebar->boards().archivedBoards());
        m_pages->setCurrentWidget(m_archivedPage);
        m_sidebar->list().clearChoice();
        setWindowTitle(tr("Archived boards – Korvex"));
    }
}

void MainWindow::storeChanged() {
    m_sidebar->refresh();
    auto* const shown = m_page->board();
    if (shown && m_sidebar->boards().rowOf(*shown) >= 0) {
        m_page->refresh();
    } else if (auto* const inbox = m_workspace.boards.inboxBoard()) {
        showBoard(*inbox);
    }
    if (m_archivedPage && m_pages->currentWidget() == m_archivedPage) {
        const auto& archived = m_sidebar->boards().archivedBoards();
        if (archived.empty() && m_page->board()) {
            showBoard(*m_page->board());
        } else {
            m_archivedPage->showBoards(archived);
        }
    } else if (m_page->board()) {
        m_sidebar->list().setCurrentBoard(*m_page->board());
        setWindowTitle(tr("%1 – Korvex").arg(toQString(m_page->board()->name())));
    }
}

void MainWindow::startText() {
    if (m_page->board()) {
        showBoard(*m_page->board());
        m_page->startText();
    }
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
    auto* const text = menu->addAction(tr("New text"));
    text->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_T);
    connect(text, &QAction::triggered, this, &MainWindow::startText);
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

void MainWindow::showNotices(const std::vector<std::string>& notices) {
    QStringList lines;
    for (const auto& notice : notices) {
        lines.append(toQString(notice));
    }
    if (!lines.isEmpty()) {
        m_page->banner().showMessage(lines.join(QLatin1Char('\n')), ErrorBanner::Tone::notice);
    }
}

void MainWindow::showError(const QString& message) {
    m_page->showMessage(message);
    m_pages->setCurrentWidget(m_page);
}

void MainWindow::comeForward() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (!m_wasPainted && event->type() == QEvent::Paint) {
        m_wasPainted = true;
        m_page->list().viewport()->removeEventFilter(this);
        // Once this paint has reached the screen.
        QTimer::singleShot(0, this, &MainWindow::firstPainted);
    }
    return QWidget::eventFilter(watched, event);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveLayout();
    if (m_page->leaveEditor()) {
        event->accept();
    } else {
        // What could not be stored stays in sight, with the reason.
        m_pages->setCurrentWidget(m_page);
        event->ignore();
    }
}

} // namespace korvex::ui
