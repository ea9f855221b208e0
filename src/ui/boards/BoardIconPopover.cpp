#include "ui/boards/BoardIconPopover.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/BoardLookButton.h"
#include "ui/kit/controls/ButtonGrid.h"
#include "ui/kit/controls/RefusalLabel.h"
#include "ui/kit/words/Refusal.h"

#include <QApplication>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Icons and colours stand in the same columns.
constexpr int kColumns = 8;
constexpr int kRows = (model::kBoardIconCount + kColumns - 1) / kColumns +
                      (1 + model::kBoardIconColorCount + kColumns - 1) / kColumns;

/// How wide and high a button is: smaller in a window that has no room for all of them.
int sideIn(const QWidget& window, const Theme& theme) {
    const auto usual = theme.extent(Extent::control) + theme.space(Space::small);
    const auto around = 2 * theme.space(Space::wide);
    const auto apart = theme.space(Space::hair);
    return std::min({usual, (window.width() - around) / kColumns - apart,
                     (window.height() - around - theme.space(Space::large)) / kRows - apart});
}

} // namespace

BoardIconPopover::BoardIconPopover(model::Board& board, services::BoardService& boards,
                                   const base::Clock& clock, const Theme& theme, QWidget* window)
    : Popover(theme, window),
      m_board(board),
      m_boards(boards),
      m_clock(clock),
      m_side(sideIn(*window, theme)),
      m_icons(new ButtonGrid(tr("Icon"), kColumns, theme, this)),
      m_colors(new ButtonGrid(tr("Color"), kColumns, theme, this)),
      m_error(new RefusalLabel(theme, this)) {
    setAccessibleName(tr("Icon and color of the board"));
    addIcons();
    addColors();
    auto* const column = new QVBoxLayout(this);
    const auto margin = theme.space(Space::large);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(margin);
    column->addWidget(m_icons, 0, Qt::AlignLeft);
    column->addWidget(m_colors, 0, Qt::AlignLeft);
    column->addWidget(m_error);
    showChoice();
    setFocusProxy(m_icons);
}

BoardLookButton* BoardIconPopover::addButton(ButtonGrid& grid, const QString& title) const {
    auto* const button = new BoardLookButton(title, m_side, theme(), &grid);
    grid.add(button);
    return button;
}

void BoardIconPopover::addIcons() {
    for (const auto icon : model::allBoardIcons()) {
        auto* const button = addButton(*m_icons, translated(model::title(icon)));
        connect(button, &QToolButton::clicked, this, [this, icon] { chooseIcon(icon); });
    }
}

void BoardIconPopover::addColors() {
    const auto add = [&](std::optional<model::BoardIconColor> color, const QString& title) {
        auto* const button = addButton(*m_colors, title);
        button->show(colorOf(color, theme().colors()));
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
    const auto color = ownColorOf(m_board);
    const auto drawing = iconColorOf(m_board, theme().colors());
    for (std::size_t i = 0; i < m_icons->buttons().size(); ++i) {
        static_cast<BoardLookButton*>(m_icons->buttons()[i])
            ->show(drawing, boardIconName(model::rawValue(static_cast<model::BoardIcon>(i))));
    }
    m_icons->choose(static_cast<std::size_t>(icon));
    m_colors->choose(color ? static_cast<std::size_t>(*color) + 1 : 0);
}

void BoardIconPopover::showRefusal(const std::optional<QString>& refused) {
    m_error->say(refused.value_or(QString()));
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
