#include "ui/ArchivedBoardsPage.h"

#include "ui/BoardColors.h"
#include "ui/IconSet.h"
#include "ui/Text.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace korvex::ui {

ArchivedBoardsPage::ArchivedBoardsPage(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_title(new QLabel(tr("Archived boards"), this)),
      m_column(new QVBoxLayout(this)) {
    m_title->setFont(theme.titleFont());
    m_column->setContentsMargins(18, 16, 18, 18);
    m_column->setSpacing(12);
    m_column->addWidget(m_title);
    m_column->addStretch();
    connect(&theme, &Theme::changed, this, [this] { m_title->setFont(m_theme.titleFont()); });
}

void ArchivedBoardsPage::showBoards(const std::vector<model::Board*>& boards) {
    delete m_rows;
    m_rows = new QWidget(this);
    auto* const rows = new QVBoxLayout(m_rows);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(m_theme.rowDistance());
    m_column->insertWidget(1, m_rows);
    for (auto* const board : boards) {
        addRow(*board);
    }
    if (boards.empty()) {
        rows->addWidget(new QLabel(tr("No board is archived."), m_rows));
    }
    m_rows->show();
}

void ArchivedBoardsPage::addRow(model::Board& board) {
    auto* const line = new QHBoxLayout;
    const auto name = toQString(board.name());
    auto* const icon = new QLabel(m_rows);
    icon->setPixmap(IconSet::pixmap(IconSet::boardIconName(board.iconSystemName()),
                                    iconColorOf(board, m_theme.colors()), m_theme.scaled(18),
                                    devicePixelRatioF()));
    auto* const label = new QLabel(name, m_rows);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    auto* const unarchive = new QPushButton(tr("Unarchive"), m_rows);
    unarchive->setAccessibleName(tr("Unarchive %1").arg(name));
    auto* const remove = new QPushButton(tr("Delete…"), m_rows);
    remove->setAccessibleName(tr("Delete %1").arg(name));
    line->addWidget(icon);
    line->addWidget(label, 1);
    line->addWidget(unarchive);
    line->addWidget(remove);
    static_cast<QVBoxLayout*>(m_rows->layout())->addLayout(line);
    for (auto* const button : {unarchive, remove}) {
        button->setAutoDefault(true);
    }
    connect(unarchive, &QPushButton::clicked, this,
            [this, &board] { Q_EMIT unarchiveRequested(&board); });
    connect(remove, &QPushButton::clicked, this, [this, &board, remove] {
        Q_EMIT deletionRequested(&board, {remove->mapToGlobal(QPoint()), remove->size()});
    });
}

} // namespace korvex::ui
