#include "ui/boards/ArchivedBoardsPage.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/SidebarRow.h"
#include "ui/kit/ErrorBanner.h"
#include "ui/kit/Refusal.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr int kNarrow = 400;

} // namespace

ArchivedBoardsPage::ArchivedBoardsPage(const Workspace& workspace, const Theme& theme,
                                       QWidget* parent)
    : QWidget(parent),
      m_workspace(workspace),
      m_theme(theme),
      m_title(new QLabel(tr("Archived boards"), this)),
      m_banner(new ErrorBanner(theme, this)),
      m_nothing(new QLabel(tr("No board is archived."), this)),
      m_area(new QScrollArea(this)) {
    m_title->setFont(theme.titleFont());
    m_title->setContentsMargins(18, 16, 18, 10);
    m_nothing->setContentsMargins(18, 4, 18, 8);
    m_nothing->setForegroundRole(QPalette::PlaceholderText);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setFocusPolicy(Qt::NoFocus);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_title);
    column->addWidget(m_banner);
    column->addWidget(m_nothing);
    column->addWidget(m_area, 1);
    connect(&theme, &Theme::changed, this, [this] {
        m_title->setFont(m_theme.titleFont());
        rebuild();
    });
}

void ArchivedBoardsPage::showBoards(const std::vector<model::Board*>& boards) {
    std::vector<Row> rows;
    const auto refused = refusal([&] {
        std::transform(boards.begin(), boards.end(), std::back_inserter(rows),
                       [this](const model::Board* board) { return rowOf(*board); });
    });
    if (refused) {
        m_banner->showMessage(*refused);
    } else if (rows != m_rows || !m_area->widget()) {
        m_rows = std::move(rows);
        rebuild();
    }
}

ArchivedBoardsPage::Row ArchivedBoardsPage::rowOf(const model::Board& board) const {
    return {.id = board.id(),
            .name = board.name(),
            .icon = boardIconName(board.iconSystemName()),
            .color = iconColorOf(board, m_theme.colors()),
            .entries = m_workspace.context.count<model::Entry>(model::Entry::onBoard(board.id()))};
}

void ArchivedBoardsPage::rebuild() {
    const auto focused = std::find_if(m_buttons.begin(), m_buttons.end(),
                                      [](const SidebarRow* row) { return row->hasFocus(); });
    const auto place = focused - m_buttons.begin();
    const bool hadFocus = focused != m_buttons.end();
    m_buttons.clear();
    m_lines.clear();
    auto* const rows = new QWidget;
    auto* const column = new QVBoxLayout(rows);
    column->setContentsMargins(6, 0, 18, 18);
    column->setSpacing(m_theme.rowDistance() / 2);
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        addRow(*rows, m_rows[i], static_cast<int>(i));
    }
    column->addStretch();
    if (auto* const former = m_area->takeWidget()) {
        former->hide();
        former->deleteLater(); // one of its buttons may have asked for this
    }
    m_area->setWidget(rows);
    arrange();
    m_nothing->setVisible(m_rows.empty());
    if (hadFocus && !m_buttons.empty()) {
        m_buttons[std::min(static_cast<std::size_t>(place), m_buttons.size() - 1)]->setFocus();
    }
}

void ArchivedBoardsPage::addRow(QWidget& rows, const Row& row, int number) {
    auto* const line = new QBoxLayout(QBoxLayout::LeftToRight);
    const auto name = toQString(row.name);
    auto* const open = new SidebarRow(row.icon, name, m_theme, &rows);
    open->setIconColor(row.color);
    open->setFocusPolicy(Qt::StrongFocus);
    const auto entries = static_cast<int>(row.entries);
    const auto note = entries == 1 ? tr("1 entry") : tr("%1 entries").arg(entries);
    open->setNote(note, note);
    auto* const unarchive = new QPushButton(tr("Unarchive"), &rows);
    unarchive->setAccessibleName(tr("Unarchive %1").arg(name));
    auto* const remove = new QPushButton(tr("Delete…"), &rows);
    remove->setAccessibleName(tr("Delete %1").arg(name));
    line->addWidget(open, 1);
    auto* const actions = new QHBoxLayout;
    actions->setContentsMargins(10, 0, 0, 0);
    actions->addWidget(unarchive);
    actions->addWidget(remove);
    actions->addStretch();
    line->addLayout(actions);
    m_lines.push_back(line);
    static_cast<QVBoxLayout*>(rows.layout())->addLayout(line);
    for (auto* const button : {unarchive, remove}) {
        button->setAutoDefault(true);
    }
    m_buttons.push_back(open);
    connect(open, &SidebarRow::clicked, this, [this, id = row.id] {
        with(id, [this](model::Board* board) { Q_EMIT openRequested(board); });
    });
    connect(open, &SidebarRow::walked, this,
            [this, number](int direction) { walk(number, direction); });
    connect(unarchive, &QPushButton::clicked, this, [this, id = row.id] {
        with(id, [this](model::Board* board) { Q_EMIT unarchiveRequested(board); });
    });
    connect(remove, &QPushButton::clicked, this, [this, id = row.id, remove] {
        const QRect anchor(remove->mapToGlobal(QPoint()), remove->size());
        with(id, [&](model::Board* board) { Q_EMIT deletionRequested(board, anchor); });
    });
}

void ArchivedBoardsPage::arrange() {
    const bool isNarrow = width() < m_theme.scaled(kNarrow);
    for (auto* const line : m_lines) {
        line->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        line->setSpacing(isNarrow ? 0 : 6);
    }
}

void ArchivedBoardsPage::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

void ArchivedBoardsPage::walk(int number, int direction) {
    const int next = number + direction;
    if (next >= 0 && next < static_cast<int>(m_buttons.size())) {
        auto* const button = m_buttons[static_cast<std::size_t>(next)];
        button->setFocus();
        m_area->ensureWidgetVisible(button);
    }
}

/// The board may be gone by now.
template <typename Signal>
void ArchivedBoardsPage::with(const base::Uuid& id, Signal&& signal) {
    if (auto* const board = m_workspace.boards.board(id)) {
        signal(board);
    }
}

void ArchivedBoardsPage::focusList() {
    if (!m_buttons.empty()) {
        m_buttons.front()->setFocus();
    } else {
        setFocus();
    }
}

void ArchivedBoardsPage::showMessage(const QString& message) {
    m_banner->showMessage(message);
}

} // namespace korvex::ui
