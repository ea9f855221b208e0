#include "ui/widget/WidgetHeader.h"

#include "schedule/TodoWidgetConfiguration.h"
#include "ui/boards/NamedRow.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>

namespace korvex::ui {

WidgetBoardButton::WidgetBoardButton(const Theme& theme, QWidget* parent)
    : QAbstractButton(parent), m_theme(theme) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setToolTip(tr("Open the board in Korvex"));
}

void WidgetBoardButton::show(const Shown& shown) {
    m_shown = shown;
    setAccessibleName(m_shown.openCount > 0
                          ? tr("%1, %Ln open todo(s)", nullptr, m_shown.openCount).arg(m_shown.name)
                          : m_shown.name);
    setAccessibleDescription(toolTip());
    update();
}

QSize WidgetBoardButton::sizeHint() const {
    return {m_theme.scaled(kPanelMeasure), NamedRow::height(m_theme)};
}

QSize WidgetBoardButton::minimumSizeHint() const {
    return {m_theme.extent(Extent::control), NamedRow::height(m_theme)};
}

void WidgetBoardButton::paintEvent(QPaintEvent*) {
    QStyle::State state;
    state.setFlag(QStyle::State_MouseOver, underMouse() || isDown());
    state.setFlag(QStyle::State_HasFocus, hasFocus() && window()->isActiveWindow());
    const NamedRow row{.icon = m_shown.icon,
                       .iconColor = m_shown.color,
                       .name = m_shown.name,
                       .note = m_shown.openCount > 0 ? QLocale().toString(m_shown.openCount)
                                                     : QString()};
    QPainter painter(this);
    row.paint(painter, NamedRow::box(rect(), 0, m_theme), state, m_theme);
}

void WidgetBoardButton::mousePressEvent(QMouseEvent* event) {
    m_pressedAt = event->globalPosition().toPoint();
    m_isDragged = false;
    QAbstractButton::mousePressEvent(event);
}

void WidgetBoardButton::mouseMoveEvent(QMouseEvent* event) {
    const auto at = event->globalPosition().toPoint();
    const auto isFar = (at - m_pressedAt).manhattanLength() >= QApplication::startDragDistance();
    if (event->buttons().testFlag(Qt::LeftButton) && !m_isDragged && isFar) {
        m_isDragged = true;
        setDown(false);
        Q_EMIT dragged(m_pressedAt);
    }
    if (m_isDragged) {
        event->ignore(); // for the window, where nobody else moves it
    } else {
        QAbstractButton::mouseMoveEvent(event);
    }
}

void WidgetBoardButton::mouseReleaseEvent(QMouseEvent* event) {
    if (m_isDragged) {
        m_isDragged = false;
        setDown(false);
        event->ignore();
        return;
    }
    QAbstractButton::mouseReleaseEvent(event);
}

void WidgetBoardButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void WidgetBoardButton::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void WidgetBoardButton::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

WidgetHeader::WidgetHeader(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_board(new WidgetBoardButton(theme, this)),
      m_choice(new QToolButton(this)),
      m_menu(new QToolButton(this)) {
    for (auto* const button : {m_choice, m_menu}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
    }
    const auto title = translated(schedule::TodoWidgetConfiguration::kTitle);
    m_choice->setAccessibleName(title);
    m_choice->setToolTip(title);
    m_menu->setAccessibleName(tr("Menu of the widget"));
    m_menu->setToolTip(tr("Menu of the widget"));
    auto* const line = new QHBoxLayout(this);
    line->addWidget(m_board, 1);
    line->addWidget(m_choice);
    line->addWidget(m_menu);
    connect(m_choice, &QToolButton::clicked, this, &WidgetHeader::choiceRequested);
    connect(m_menu, &QToolButton::clicked, this, &WidgetHeader::menuRequested);
    connect(&theme, &Theme::changed, this, &WidgetHeader::applyTheme);
    applyTheme();
}

QRect WidgetHeader::menuAnchor() const {
    return {m_menu->mapToGlobal(QPoint()), m_menu->size()};
}

void WidgetHeader::setHasChoice(bool hasChoice) {
    m_choice->setEnabled(hasChoice);
}

const QWidget& WidgetHeader::choiceButton() const {
    return *m_choice;
}

void WidgetHeader::applyTheme() {
    // The board's icon stands above the circles of its todos.
    const auto side = m_theme.space(Space::wide) - m_theme.space(Space::medium);
    layout()->setContentsMargins(side, m_theme.space(Space::medium), side,
                                 m_theme.space(Space::small));
    layout()->setSpacing(m_theme.space(Space::hair));
    const auto icon = m_theme.extent(Extent::icon);
    const auto& color = m_theme.colors().secondaryText;
    m_choice->setIcon(IconSet::icon(QStringLiteral("caret-down"), color));
    m_menu->setIcon(IconSet::icon(QStringLiteral("dots-three"), color));
    for (auto* const button : {m_choice, m_menu}) {
        button->setIconSize({icon, icon});
    }
    m_board->updateGeometry();
    m_board->update();
}

} // namespace korvex::ui
