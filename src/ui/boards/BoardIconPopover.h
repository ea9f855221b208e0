#pragma once

#include "base/Clock.h"
#include "model/BoardIcon.h"
#include "services/BoardService.h"
#include "ui/kit/Popover.h"

#include <QStringList>

class QGridLayout;
class QLabel;
class QToolButton;

namespace korvex::ui {

/// Chooses a board's icon and its colour; both are stored at once. Arrow keys walk the grids.
class BoardIconPopover final : public Popover {
    Q_OBJECT

public:
    BoardIconPopover(model::Board& board, services::BoardService& boards, const base::Clock& clock,
                     const Theme& theme, QWidget* window);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QToolButton* addButton(QGridLayout& grid, int place, int columns, const QString& title);
    void addIcons(QGridLayout& grid);
    void addColors(QGridLayout& grid);
    void chooseIcon(std::optional<model::BoardIcon> icon);
    void chooseColor(std::optional<model::BoardIconColor> color);
    void showChoice();
    void showRefusal(const std::optional<QString>& refused);

    model::Board& m_board;
    services::BoardService& m_boards;
    const base::Clock& m_clock;
    std::vector<QToolButton*> m_icons;
    /// The first is the accent colour, for none of the board's own.
    std::vector<QToolButton*> m_colors;
    QLabel* m_error;
};

} // namespace korvex::ui
