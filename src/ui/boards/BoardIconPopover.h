#pragma once

#include "base/Clock.h"
#include "model/BoardIcon.h"
#include "services/BoardService.h"
#include "ui/kit/overlays/Popover.h"

namespace korvex::ui {

class BoardLookButton;
class ButtonGrid;
class RefusalLabel;

/// Chooses a board's icon and its colour; both are stored at once. Arrow keys walk the two grids,
/// which have the same columns; Tab leads from one to the other, Return chooses and closes.
class BoardIconPopover final : public Popover {
    Q_OBJECT

public:
    BoardIconPopover(model::Board& board, services::BoardService& boards, const base::Clock& clock,
                     const Theme& theme, QWidget* window);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    BoardLookButton* addButton(ButtonGrid& grid, const QString& title) const;
    void addIcons();
    void addColors();
    void chooseIcon(std::optional<model::BoardIcon> icon);
    void chooseColor(std::optional<model::BoardIconColor> color);
    void showChoice();
    void showRefusal(const std::optional<QString>& refused);

    model::Board& m_board;
    services::BoardService& m_boards;
    const base::Clock& m_clock;
    /// Of each button, in pixels.
    int m_side;
    ButtonGrid* m_icons;
    /// The first is the accent colour, for none of the board's own.
    ButtonGrid* m_colors;
    RefusalLabel* m_error;
};

} // namespace korvex::ui
