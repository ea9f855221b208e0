#include "ui/boards/BoardIconPopover.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/IconSet.h"
#include "ui/kit/Refusal.h"

#include <QApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr int kIconColumns = 8;
constexpr int kColorColumns = 10;
constexpr int kMargin = 12;
constexpr int kIconSize = 20;
constexpr int kSwatchSize = 18;

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
      m_error(new QLabel(this)) {
    setAccessibleName(tr("Icon and color of the board"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    column->setSpacing(10);
    auto* const icons = new QGridLayout;
    auto* const colors = new QGridLayout;
    for (auto* const grid : {icons, colors}) {
        grid->setSpacing(2);
        column->addLayout(grid);
    }
    addIcons(*icons);
    addColors(*colors);
    m_error->setWordWrap(true);
    m_error->setFont(theme.smallFont());
    m_error->hide();
    column->addWidget(m_error);
    showChoice();
    const auto icon = model::boardIcon(board.iconSystemName()).value_or(model::BoardIcon::board);
    setFocusProxy(m_icons[static_cast<std::size_t>(icon)]);
}

QToolButton* BoardIconPopover::addButton(QGridLayout& grid, int place, int columns,
                                         const QString& title) {
    auto* const button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setCheckable(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setToolTip(title);
    button->setAccessibleName(title);
    grid.addWidget(button, place / columns, place % columns);
    return button;
}

void BoardIconPopover::addIcons(QGridLayout& grid) {
    const auto size = theme().scaled(kIconSize);
    for (const auto icon : model::allBoardIcons()) {
        auto* const button = addButton(grid, static_cast<int>(icon), kIconColumns,
                                       tr(std::string(model::title(icon)).c_str()));
        button->setIconSize({size, size});
        connect(button, &QToolButton::clicked, this, [this, icon] { chooseIcon(icon); });
        m_icons.push_back(button);
    }
}

void BoardIconPopover::addColors(QGridLayout& grid) {
    const auto size = theme().scaled(kSwatchSize);
    const auto add = [&](std::optional<model::BoardIconColor> color, const QString& title) {
        auto* const button =
            addButton(grid, static_cast<int>(m_colors.size()), kColorColumns, title);
        button->setIconSize({size, size});
        button->setIcon(swatch(colorOf(color, theme().colors()), size, devicePixelRatioF()));
        connect(button, &QToolButton::clicked, this, [this, color] { chooseColor(color); });
        m_colors.push_back(button);
    };
    add(std::nullopt, tr("Accent color"));
    for (const auto color : model::allBoardIconColors()) {
        add(color, tr(std::string(model::title(color)).c_str()));
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
    for (std::size_t i = 0; i < m_icons.size(); ++i) {
        m_icons[i]->setIcon(IconSet::icon(
            boardIconName(model::rawValue(static_cast<model::BoardIcon>(i))), drawing));
        m_icons[i]->setChecked(i == static_cast<std::size_t>(icon));
    }
    for (std::size_t i = 0; i < m_colors.size(); ++i) {
        m_colors[i]->setChecked(i == (color ? static_cast<std::size_t>(*color) + 1 : 0));
    }
}

void BoardIconPopover::showRefusal(const std::optional<QString>& refused) {
    m_error->setVisible(refused.has_value());
    m_error->setText(refused.value_or(QString()));
    showChoice();
    placeAgain();
}

void BoardIconPopover::keyPressEvent(QKeyEvent* event) {
    auto* const focused = qobject_cast<QToolButton*>(QApplication::focusWidget());
    for (const auto& [buttons, columns] :
         {std::pair(&m_icons, kIconColumns), std::pair(&m_colors, kColorColumns)}) {
        const auto found = std::find(buttons->begin(), buttons->end(), focused);
        if (found == buttons->end()) {
            continue;
        }
        const auto step = event->key() == Qt::Key_Left    ? -1
                          : event->key() == Qt::Key_Right ? 1
                          : event->key() == Qt::Key_Up    ? -columns
                          : event->key() == Qt::Key_Down  ? columns
                                                          : 0;
        const auto place = found - buttons->begin() + step;
        if (step != 0) {
            if (place >= 0 && place < static_cast<std::ptrdiff_t>(buttons->size())) {
                (*buttons)[static_cast<std::size_t>(place)]->setFocus();
            }
            return;
        }
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            focused->click();
            closeNow();
            return;
        }
    }
    Popover::keyPressEvent(event);
}

} // namespace korvex::ui
