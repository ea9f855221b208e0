#include "ui/boards/BoardHeader.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace korvex::ui {

BoardHeader::BoardHeader(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_icon(new QToolButton(this)),
      m_name(new QLabel(this)),
      m_count(new QLabel(this)),
      m_menu(new QToolButton(this)) {
    m_icon->setAutoRaise(true);
    m_icon->setFocusPolicy(Qt::TabFocus);
    m_icon->setAccessibleName(tr("Icon of the board"));
    m_icon->setToolTip(tr("Choose icon and color"));
    m_name->setTextFormat(Qt::PlainText);
    m_name->setWordWrap(true);
    m_name->setAlignment(lineStart());
    m_menu->setAutoRaise(true);
    m_menu->setFocusPolicy(Qt::TabFocus);
    m_menu->setAccessibleName(tr("Menu of the board"));
    m_menu->setToolTip(tr("Board and appearance"));
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(14, 16, 14, 10);
    row->setSpacing(6);
    row->addWidget(m_icon);
    row->addWidget(m_name, 1);
    row->addWidget(m_count);
    row->addWidget(m_menu);
    connect(m_icon, &QToolButton::clicked, this, [this] {
        Q_EMIT iconRequested({m_icon->mapToGlobal(QPoint()), m_icon->size()});
    });
    connect(m_menu, &QToolButton::clicked, this, [this] { Q_EMIT menuRequested(menuPlace()); });
    connect(&theme, &Theme::changed, this, &BoardHeader::applyTheme);
    applyTheme();
}

void BoardHeader::show(const model::Board& board, int openTodoCount) {
    m_iconName = boardIconName(board.iconSystemName());
    m_iconColor = iconColorOf(board, m_theme.colors());
    m_icon->setIcon(IconSet::icon(m_iconName, m_iconColor));
    const auto name = toQString(board.name());
    m_name->setText(breakable(name));
    m_name->setAccessibleName(name);
    m_count->setText(openTodoCount == 0 ? QString() : tr("%1 open").arg(openTodoCount));
}

void BoardHeader::setChangeable(bool changeable) {
    m_icon->setEnabled(changeable);
}

QPoint BoardHeader::menuPlace() const {
    return m_menu->mapToGlobal(QPoint(0, m_menu->height()));
}

void BoardHeader::contextMenuEvent(QContextMenuEvent* event) {
    Q_EMIT menuRequested(event->reason() == QContextMenuEvent::Keyboard ? menuPlace()
                                                                        : event->globalPos());
}

void BoardHeader::applyTheme() {
    const auto& colors = m_theme.colors();
    m_name->setFont(m_theme.titleFont());
    m_count->setFont(m_theme.font());
    auto quiet = m_count->palette();
    quiet.setColor(QPalette::WindowText, colors.secondaryText);
    m_count->setPalette(quiet);
    const auto icon = m_theme.scaled(22);
    m_icon->setIconSize({icon, icon});
    const auto dots = m_theme.scaled(20);
    m_menu->setIconSize({dots, dots});
    m_menu->setIcon(IconSet::icon(QStringLiteral("dots-three"), colors.secondaryText));
}

} // namespace korvex::ui
