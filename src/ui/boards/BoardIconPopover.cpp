#include "ui/boards/BoardIconPopover.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/controls/ButtonGrid.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Refusal.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr int kIconColumns = 8;
constexpr int kColorColumns = 10;
constexpr int kMargin = 12;
constexpr int kIconSize = 20;
constexpr int kSwatchSize = 18;
/// What a button is wider than its icon, with the distance to the next one.
constexpr int kAroundIcon = 14;
constexpr int kWindowMargin = 8;

/// As many as the window has room for.
int columnsIn(const QWidget& window, int iconSize, int most, const Theme& theme) {
    const auto room = window.width() - 2 * (kMargin + kWindowMargin);
    return std::clamp(room / (theme.scaled(iconSize) + kAroundIcon), 1, most);
}

QIcon swatch(const QColor& color, int size, qreal scale) {
    QPixmap pixmap(QSize(size, size) * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QRectF(0.5, 0.5, size - 1, size - 1));
    return QIcon(pixmap);
}

} // namespace

BoardIconPopover::BoardIconPopover(model::Board& board, services::BoardService& boards,
                                   const base::Clock& clock, const Theme& theme, QWidget* window)
    : Popover(theme, window),
      m_board(board),
      m_boards(boards),
      m_clock(clock),
      m_icons(new ButtonGrid(tr("Icon"), columnsIn(*window, kIconSize, kIconColumns, theme), this)),
      m_colors(
          new ButtonGrid(tr("Color"), columnsIn(*window, kSwatchSize, kColorColumns, theme), this)),
      m_error(new QLabel(this)) {
    setAccessibleName(tr("Icon and color of the board"));
    addIcons();
    addColors();
    m_error->setWordWrap(true);
    m_error->setFont(theme.smallFont());
    Accessibility::setRole(*m_error, QAccessible::AlertMessage);
    m_error->hide();
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->setSpacing(10);
    column->addWidget(m_icons, 0, Qt::AlignLeft);
    column->addWidget(m_colors, 0, Qt::AlignLeft);
    column->addWidget(m_error);
    showChoice();
    setFocusProxy(m_icons);
}

QToolButton* BoardIconPopover::addButton(ButtonGrid& grid, const QString& title, int iconSize) {
    auto* const button = new QToolButton(this);
    const auto size = theme().scaled(iconSize);
    button->setAutoRaise(true);
    button->setIconSize({size, size});
    button->setToolTip(title);
    button->setAccessibleName(title);
    grid.add(button);
    return button;
}

void BoardIconPopover::addIcons() {
    for (const auto icon : model::allBoardIcons()) {
        auto* const button = addButton(*m_icons, translated(model::title(icon)), kIconSize);
        connect(button, &QToolButton::clicked, this, [this, icon] { chooseIcon(icon); });
    }
}

void BoardIconPopover::addColors() {
    const auto size = theme().scaled(kSwatchSize);
    const auto add = [&](std::optional<model::BoardIconColor> color, const QString& title) {
        auto* const button = addButton(*m_colors, title, kSwatchSize);
        button->setIcon(swatch(colorOf(color, theme().colors()), size, devicePixelRatioF()));
        connect(button, &QToolButton::clicked, this, [this, color] { chooseColor(color); });
    };
    add(std::nullopt, tr("Accent color"));
    for (const auto color : model::allBoardIconColors()) {
        add(color, translated(model::title(color)));
    }
}

void BoardIconPopover::chooseIcon(std::optional<model::BoardIcon> icon) {
    showRefusal(refusal([&] {
        m_boards.setIcon(icon ? std::optional(model::rawValue(*icon)) : std::nullopt, m_board,
                         m_clock.now());
    }));
}

void BoardIconPopover::chooseColor(std::optional<model::BoardIconColor> color) {
    showRefusal(refusal([&] {
        m_boards.setIconColor(color ? std::optional(model::rawValue(*color)) : std::nullopt,
                              m_board, m_clock.now());
    }));
}

void BoardIconPopover::showChoice() {
    const auto icon = model::boardIcon(m_board.iconSystemName()).value_or(model::BoardIcon::board);
    const auto color =
        m_board.iconColor() ? model::boardIconColor(*m_board.iconColor()) : std::nullopt;
    const auto drawing = iconColorOf(m_board, theme().colors());
    for (std::size_t i = 0; i < m_icons->buttons().size(); ++i) {
        m_icons->buttons()[i]->setIcon(IconSet::icon(
            boardIconName(model::rawValue(static_cast<model::BoardIcon>(i))), drawing));
    }
    m_icons->choose(static_cast<std::size_t>(icon));
    m_colors->choose(color ? static_cast<std::size_t>(*color) + 1 : 0);
}

void BoardIconPopover::showRefusal(const std::optional<QString>& refused) {
    m_error->setVisible(refused.has_value());
    m_error->setText(refused.value_or(QString()));
    Accessibility::say(*m_error, m_error->text());
    showChoice();
    placeAgain();
}

void BoardIconPopover::keyPressEvent(QKeyEvent* event) {
    auto* const focused = qobject_cast<QToolButton*>(QApplication::focusWidget());
    if (focused && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        focused->click();
        closeNow();
    } else {
        Popover::keyPressEvent(event);
    }
}

} // namespace korvex::ui
