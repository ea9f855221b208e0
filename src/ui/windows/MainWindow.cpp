#include "ui/windows/MainWindow.h"

#include "ui/boards/BoardActions.h"
#include "ui/entries/BoardPage.h"
#include "ui/kit/ErrorBanner.h"
#include "ui/kit/Text.h"
#include "ui/windows/PageStack.h"
#include "ui/windows/Sidebar.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QSplitter>
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
      m_pages(new PageStack),
      m_page(new BoardPage(workspace, theme)) {
    setWindowTitle(QStringLiteral("Korvex"));
    setMinimumSize(kSmallestSize);
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
    addPages();
    m_pages->show(PageKind::board);

    connectSidebar();
    connect(m_page, &BoardPage::iconRequested, this,
            [this](const QRect& anchor) { m_actions->chooseIcon(*m_page->board(), anchor); });
    connect(m_page, &BoardPage::menuRequested, this, &MainWindow::openPageMenu);
    connect(m_page, &BoardPage::unarchiveRequested, this,
            [this] { m_actions->setArchived(*m_page->board(), false); });
    connect(m_actions, &BoardActions::refused, this, &MainWindow::showError);
    connect(&m_page->entries(), &EntryListModel::countsChanged, this, [this] {
        auto* const board = m_page->board();
        if (board && m_sidebar->boards().rowOf(*board) >= 0) {
            m_sidebar->boards().setOpenTodoCount(*board, m_page->entries().openTodoCount());
        }
    });
    m_page->list().viewport()->installEventFilter(this);

    addShortcuts();
    addUndoActions();
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
    m_pages->showMessage(message);
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
        QTimer::singleShot(0, this, [this] {
            Q_EMIT firstPainted();
            countUpcoming();
        });
    }
    return QWidget::eventFilter(watched, event);
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape &&
        (m_pages->current() != PageKind::board || m_page->isReadOnly())) {
        goBack();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveLayout();
    if (m_page->leaveEditor()) {
        event->accept();
    } else {
        // What could not be stored stays in sight, with the reason.
        m_pages->show(PageKind::board);
        pageChanged();
        event->ignore();
    }
}

} // namespace korvex::ui
