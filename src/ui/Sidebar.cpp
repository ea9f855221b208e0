#include "ui/Sidebar.h"

#include "ui/ErrorBanner.h"
#include "ui/IconSet.h"
#include "ui/Refusal.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTimer>
#include <QToolButton>

namespace korvex::ui {

Sidebar::Sidebar(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_workspace(workspace),
      m_theme(theme),
      m_model(workspace),
      m_title(new QLabel(tr("Boards"), this)),
      m_add(new QToolButton(this)),
      m_list(new BoardListView(m_model, theme, this)),
      m_banner(new ErrorBanner(theme, this)),
      m_archived(new QToolButton(this)) {
    setMinimumWidth(kMinimumWidth);
    setMaximumWidth(kMaximumWidth);
    m_add->setAutoRaise(true);
    m_add->setFocusPolicy(Qt::TabFocus);
    m_add->setAccessibleName(tr("New board"));
    m_add->setToolTip(tr("New board (Ctrl+Shift+N)"));
    m_archived->setAutoRaise(true);
    m_archived->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_archived->setFocusPolicy(Qt::TabFocus);
    m_archived->setAccessibleName(tr("Archived boards"));
    m_archived->setToolTip(tr("Archived boards"));
    m_archived->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* const heading = new QHBoxLayout;
    heading->setContentsMargins(16, 18, 12, 4);
    heading->addWidget(m_title, 1);
    heading->addWidget(m_add);
    auto* const foot = new QHBoxLayout;
    foot->setContentsMargins(8, 8, 8, 10);
    foot->addWidget(m_archived);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 1, 0);
    column->setSpacing(0);
    column->addLayout(heading);
    column->addWidget(m_banner);
    column->addWidget(m_list);
    column->addStretch();
    column->addLayout(foot);
    m_archived->hide();

    connect(m_add, &QToolButton::clicked, this, &Sidebar::createBoard);
    connect(m_archived, &QToolButton::clicked, this, &Sidebar::archivedRequested);
    connect(m_list, &BoardListView::boardChosen, this, &Sidebar::boardChosen);
    connect(m_list, &BoardListView::menuRequested, this, &Sidebar::boardMenuRequested);
    connect(m_list, &BoardListView::renamed, this,
            [this](model::Board* board, const QString& name) { store(*board, name); });
    connect(m_list, &BoardListView::dropped, this, &Sidebar::move);
    connect(&theme, &Theme::changed, this, &Sidebar::applyTheme);
    applyTheme();
}

void Sidebar::refresh() {
    if (const auto refused = refusal([&] { m_model.refresh(); })) {
        showMessage(*refused);
    }
    m_archived->setVisible(!m_model.archivedBoards().empty());
    countSoon();
}

void Sidebar::countSoon() {
    if (m_isCountDue) {
        return;
    }
    m_isCountDue = true;
    QTimer::singleShot(0, this, [this] {
        m_isCountDue = false;
        if (const auto refused = refusal([&] { m_model.countTodos(); })) {
            showMessage(*refused);
        }
    });
}

void Sidebar::createBoard() {
    model::Board* created = nullptr;
    const auto refused = refusal([&] {
        created = &m_workspace.boards.createBoard(toUtf8(tr("New board")), m_workspace.now());
    });
    if (refused) {
        showMessage(*refused);
        return;
    }
    m_banner->clear();
    Q_EMIT boardChosen(created);
    rename(*created);
}

void Sidebar::rename(model::Board& board) {
    if (m_model.rowOf(board) >= 0) {
        m_list->rename(board);
    }
}

void Sidebar::store(model::Board& board, const QString& name) {
    const auto refused =
        refusal([&] { m_workspace.boards.renameBoard(board, toUtf8(name), m_workspace.now()); });
    if (!refused) {
        m_banner->clear();
        return;
    }
    showMessage(*refused);
    // What was typed stays to be corrected; Escape gives it up.
    QTimer::singleShot(0, this, [this, id = board.id(), name] {
        if (auto* const again = m_workspace.boards.board(id); again && m_model.rowOf(*again) >= 0) {
            m_list->rename(*again, name);
        }
    });
}

void Sidebar::move(const base::Uuid& id, const base::Uuid& target,
                   model::EntryPlacement placement) {
    if (id == target) {
        return;
    }
    const auto refused =
        refusal([&] { m_workspace.boards.moveBoard(id, target, placement, m_workspace.now()); });
    if (refused) {
        showMessage(*refused);
    }
}

void Sidebar::showMessage(const QString& message) {
    m_banner->showMessage(message);
}

void Sidebar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.colors().sidebar);
    painter.fillRect(QRect(width() - 1, 0, 1, height()), m_theme.colors().hairline);
}

void Sidebar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    elideArchived();
}

/// A button cuts a text that has no room; this one says that there is more.
void Sidebar::elideArchived() {
    const int around = m_theme.scaled(16) + 36; // icon, distances, margins
    m_archived->setText(m_archived->fontMetrics().elidedText(tr("Archived boards"), Qt::ElideRight,
                                                             width() - around));
}

void Sidebar::applyTheme() {
    const auto& colors = m_theme.colors();
    auto font = m_theme.smallFont();
    font.setWeight(QFont::DemiBold);
    m_title->setFont(font);
    auto quiet = m_title->palette();
    quiet.setColor(QPalette::WindowText, colors.secondaryText);
    quiet.setColor(QPalette::ButtonText, colors.secondaryText);
    m_title->setPalette(quiet);
    m_archived->setPalette(quiet);
    m_archived->setFont(m_theme.font());
    m_archived->setIcon(IconSet::icon(QStringLiteral("archive"), colors.secondaryText));
    m_archived->setIconSize({m_theme.scaled(16), m_theme.scaled(16)});
    elideArchived();
    m_add->setIcon(IconSet::icon(QStringLiteral("plus"), colors.secondaryText));
    m_add->setIconSize({m_theme.scaled(16), m_theme.scaled(16)});
    update();
}

} // namespace korvex::ui
