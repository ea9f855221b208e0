#include "ui/kit/style/MenuDrawing.h"

#include "ui/kit/style/ControlState.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QIcon>
#include <QPainterPath>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr QLatin1Char kBeforeKeys('\t');

bool isSeparator(const QStyleOptionMenuItem& option) {
    return option.menuItemType == QStyleOptionMenuItem::Separator;
}

/// The columns of an item from where lines begin, as if that were the left.
struct Columns {
    QRect check;
    QRect icon;
    QRect words;
    QRect caret;

    static Columns of(const QStyleOptionMenuItem& option, const Theme& theme) {
        const auto gap = theme.space(Space::medium);
        const auto mark = theme.extent(Extent::smallIcon);
        // The tint of the chosen item ends before the edge, what stands in it before that.
        auto room = option.rect.adjusted(theme.space(Space::small) + gap, 0,
                                         -theme.space(Space::small) - gap, 0);
        Columns columns;
        const auto take = [&room, gap](int width) {
            QRect taken(room.left(), room.top(), width, room.height());
            room.setLeft(taken.right() + 1 + gap);
            return taken;
        };
        if (option.menuHasCheckableItems) {
            columns.check = take(mark);
        }
        if (option.maxIconWidth > 0) {
            columns.icon = take(theme.extent(Extent::icon));
        }
        if (option.menuItemType == QStyleOptionMenuItem::SubMenu) {
            const auto caret = theme.extent(Extent::caret);
            columns.caret = QRect(room.right() + 1 - caret, room.top(), caret, room.height());
            room.setRight(columns.caret.left() - 1 - gap);
        }
        columns.words = room;
        return columns;
    }
};

QRect square(const QRect& room, int size) {
    QRect place(0, 0, size, size);
    place.moveCenter(room.center());
    return place;
}

} // namespace

void MenuDrawing::paintPanel(QPainter& painter, const QRect& window, double radius,
                             const Theme& theme) {
    painter.fillRect(window, theme.colors().content);
    Shapes::paintPanel(painter, window, radius, theme.colors());
}

QRegion MenuDrawing::shapeOf(const QRect& window, double radius) {
    QPainterPath outline;
    outline.addRoundedRect(window, radius, radius);
    return QRegion(outline.toFillPolygon().toPolygon());
}

void MenuDrawing::paintItem(QPainter& painter, const QStyleOptionMenuItem& option,
                            const Theme& theme) {
    const auto& colors = theme.colors();
    const auto inset = theme.space(Space::small);
    if (isSeparator(option)) {
        painter.fillRect(option.rect.left() + inset, option.rect.center().y(),
                         option.rect.width() - 2 * inset, kLine, colors.hairline);
        return;
    }
    const ControlState state(option);
    if (option.state.testFlag(QStyle::State_Selected) && state.isEnabled()) {
        Shapes::paintChosen(painter, option.rect.adjusted(inset, 0, -inset, 0),
                            theme.radius(Radius::medium), colors);
    }
    const FadedWhenDisabled faded(painter, state);
    const auto columns = Columns::of(option, theme);
    const auto mirrored = [&option](const QRect& place) {
        return QStyle::visualRect(option.direction, option.rect, place);
    };
    if (option.checked && option.checkType != QStyleOptionMenuItem::NotCheckable) {
        const auto size = theme.extent(Extent::smallIcon);
        IconSet::draw(painter, QStringLiteral("check-bold"), colors.accent,
                      mirrored(square(columns.check, size)));
    }
    if (!option.icon.isNull()) {
        option.icon.paint(&painter, mirrored(square(columns.icon, columns.icon.width())));
    }
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu) {
        Shapes::paintCaret(painter, mirrored(columns.caret),
                           option.direction == Qt::RightToLeft ? Shapes::Caret::left
                                                               : Shapes::Caret::right,
                           colors.secondaryText, theme);
    }
    const auto words = mirrored(columns.words);
    painter.setFont(option.font);
    painter.setPen(colors.text);
    const auto start = QStyle::visualAlignment(option.direction, Qt::AlignLeft);
    constexpr int kFlags =
        Qt::AlignVCenter | Qt::TextShowMnemonic | Qt::TextDontClip | Qt::TextSingleLine;
    painter.drawText(words, static_cast<int>(start) | kFlags,
                     isolated(option.text.section(kBeforeKeys, 0, 0)));
    if (option.text.contains(kBeforeKeys)) {
        const auto end = QStyle::visualAlignment(option.direction, Qt::AlignRight);
        // A heading shows its own letters, its keys the letters of all keys.
        painter.setFont(theme.font());
        painter.setPen(colors.secondaryText);
        painter.drawText(words, static_cast<int>(end) | kFlags,
                         option.text.section(kBeforeKeys, 1));
    }
}

QSize MenuDrawing::sizeOf(const QStyleOptionMenuItem& option, const QSize& words,
                          const Theme& theme) {
    const auto gap = theme.space(Space::medium);
    if (isSeparator(option)) {
        return {words.width(), gap + kLine};
    }
    auto width = words.width() + 2 * (theme.space(Space::small) + gap);
    width += option.menuHasCheckableItems ? theme.extent(Extent::smallIcon) + gap : 0;
    width += option.maxIconWidth > 0 ? theme.extent(Extent::icon) + gap : 0;
    width += option.menuItemType == QStyleOptionMenuItem::SubMenu
                 ? theme.extent(Extent::caret) + gap
                 : 0;
    width += option.text.contains(kBeforeKeys) ? theme.space(Space::wide) : 0;
    return {width, std::max(words.height() + gap, theme.extent(Extent::control))};
}

} // namespace korvex::ui
