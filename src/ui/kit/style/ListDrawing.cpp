#include "ui/kit/style/ListDrawing.h"

#include "ui/kit/style/ControlState.h"
#include "ui/kit/theme/Shapes.h"

namespace korvex::ui {

void ListDrawing::paintRow(QPainter& painter, const QStyleOptionViewItem& option,
                           const Theme& theme) {
    const auto& colors = theme.colors();
    const auto radius = theme.radius(Radius::medium);
    const auto isChosen = option.state.testFlag(QStyle::State_Selected);
    if (isChosen) {
        Shapes::paintChosen(painter, option.rect, radius, colors);
    } else if (ControlState(option).isHovered()) {
        Shapes::paintBox(painter, option.rect, radius, colors.tint(Tint::rest), QColor());
    }
}

QStyleOptionViewItem ListDrawing::contentOf(const QStyleOptionViewItem& option) {
    auto content = option;
    content.state.setFlag(QStyle::State_Selected, false);
    content.state.setFlag(QStyle::State_MouseOver, false);
    return content;
}

void ListDrawing::paintSplitter(QPainter& painter, const QStyleOption& option, const Theme& theme) {
    const ControlState state(option);
    if (state.isHovered() || state.isPressed()) {
        painter.fillRect(option.rect, theme.colors().accent);
    }
}

void ListDrawing::paintToolBarSeparator(QPainter& painter, const QStyleOption& option,
                                        const Theme& theme) {
    const auto margin = theme.space(Space::small);
    const auto isHorizontal = option.state.testFlag(QStyle::State_Horizontal);
    auto line = option.rect.adjusted(margin, margin, -margin, -margin);
    if (isHorizontal) {
        line = QRect(option.rect.center().x(), line.top(), kLine, line.height());
    } else {
        line = QRect(line.left(), option.rect.center().y(), line.width(), kLine);
    }
    painter.fillRect(line, theme.colors().hairline);
}

} // namespace korvex::ui
