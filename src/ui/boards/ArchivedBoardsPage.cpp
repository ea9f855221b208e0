#include "ui/boards/ArchivedBoardsPage.h"

#include "model/Entry.h"
#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/SidebarRow.h"
#include "ui/kit/pages/ColumnLayout.h"
#include "ui/kit/pages/PageHeader.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Danger.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollArea>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Below this width, in pixels at the standard font size, a row's buttons stand under its name.
constexpr int kNarrow = 400;

} // namespace

ArchivedBoardsPage::ArchivedBoardsPage(const services::BoardService& boards,
                                       store::ModelContext& context, const Theme& theme,
                                       QWidget* parent)
    : Page(theme, parent),
      m_boards(boards),
      m_context(context),
      m_theme(theme),
      m_header(new PageHeader(tr("Archived boards"), theme)),
      m_area(new QScrollArea) {
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setFocusPolicy(Qt::NoFocus);
    layOut({m_header}, *m_area);
    connect(&theme, &Theme::changed, this, &ArchivedBoardsPage::rebuild);
}

QString ArchivedBoardsPage::title() const {
    return m_header->title();
}

void ArchivedBoardsPage::takeKeyboard() {
    if (m_buttons.empty()) {
        setFocus();
    } else {
        m_buttons.front()->setFocus();
    }
}

void ArchivedBoardsPage::storeChanged() {
    follow([this] {
        auto wanted = rows();
        if (wanted != m_rows || !m_area->widget()) {
            m_rows = std::move(wanted);
            rebuild();
        }
    });
}

std::vector<ArchivedBoardsPage::Row> ArchivedBoardsPage::rows() const {
    std::vector<Row> result;
    for (const auto* const board : m_boards.boards()) {
        if (board->isArchived()) {
            result.push_back(
                {.id = board->id(),
                 .name = board->name(),
                 .icon = boardIconName(board->iconSystemName()),
                 .color = iconColorOf(*board, m_theme.colors()),
                 .entries = m_context.count<model::Entry>(model::Entry::onBoard(board->id()))});
        }
    }
    return result;
}

void ArchivedBoardsPage::rebuild() {
    const auto focused = std::find_if(m_buttons.begin(), m_buttons.end(),
                                      [](const SidebarRow* row) { return row->hasFocus(); });
    const auto place = focused - m_buttons.begin();
    const auto hadFocus = focused != m_buttons.end();
    m_buttons.clear();
    m_lines.clear();
    auto* const rows = new QWidget;
    rows->setAccessibleName(m_header->title());
    Accessibility::setRole(*rows, QAccessible::List);
    auto* const column = new ColumnLayout(m_theme, rows);
    // The icons begin where the title does.
    const auto edge = m_theme.space(Space::wide);
    column->setContentsMargins(
        mirrored(QMargins(edge - 2 * m_theme.space(Space::medium), 0, edge, edge)));
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
    setHint(m_rows.empty() ? tr("Boards that you archive from their menu are kept here.")
                           : QString());
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
    const auto note = tr("%Ln (entry|entries)", nullptr, entries);
    open->setNote(note, note);
    auto* const unarchive = new QPushButton(tr("Unarchive"), &rows);
    unarchive->setAccessibleName(tr("Unarchive %1").arg(name));
    auto* const remove = new QPushButton(tr("Delete…"), &rows);
    remove->setAccessibleName(tr("Delete %1").arg(name));
    for (auto* const button : {unarchive, remove}) {
        button->setFlat(true);
        button->setEnabled(m_boards.allowsChanges());
    }
    markDangerous(*remove);
    line->addWidget(open, 1);
    auto* const actions = new QHBoxLayout;
    actions->setContentsMargins(mirrored(QMargins(2 * m_theme.space(Space::medium), 0, 0, 0)));
    actions->setSpacing(m_theme.space(Space::small));
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
            [this, number](int direction) { walkTo(number + direction); });
    connect(open, &SidebarRow::walkedToEnd, this, [this](int direction) {
        walkTo(direction < 0 ? 0 : static_cast<int>(m_buttons.size()) - 1);
    });
    connect(unarchive, &QPushButton::clicked, this, [this, id = row.id] {
        with(id, [this](model::Board* board) { Q_EMIT unarchiveRequested(board); });
    });
    connect(remove, &QPushButton::clicked, this, [this, id = row.id] {
        with(id, [this](model::Board* board) { Q_EMIT deletionRequested(board); });
    });
}

void ArchivedBoardsPage::arrange() {
    const auto isNarrow = width() < m_theme.scaled(kNarrow);
    for (auto* const line : m_lines) {
        line->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        line->setSpacing(isNarrow ? m_theme.space(Space::hair) : 0);
    }
}

void ArchivedBoardsPage::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

void ArchivedBoardsPage::walkTo(int number) {
    if (number >= 0 && number < static_cast<int>(m_buttons.size())) {
        auto* const button = m_buttons[static_cast<std::size_t>(number)];
        button->setFocus();
        m_area->ensureWidgetVisible(button);
    }
}

/// The board may be gone by now.
template <typename Signal>
void ArchivedBoardsPage::with(const base::Uuid& id, Signal&& signal) {
    if (auto* const board = m_boards.board(id)) {
        signal(board);
    }
}

} // namespace korvex::ui
