#include "ui/editor/BarPlace.h"

#include "ui/kit/theme/Direction.h"

#include <algorithm>

namespace korvex::ui {

BarRoom roomForBar(int height, const BarSurroundings& around) {
    const auto room = height + 2 * around.distance;
    return around.above >= room ? BarRoom{.top = room} : BarRoom{.foot = room};
}

BarPlace placeOfBar(const QSize& wanted, const BarSurroundings& around) {
    const auto& sight = around.sight;
    const auto& row = around.row;
    const auto distance = around.distance;
    const auto room = sight.adjusted(distance, distance, -distance, -distance);
    const auto height = wanted.height();
    const auto width = std::min({wanted.width(), row.width(), room.width()});
    const auto line = QRect(row.left(), 0, row.width(), height);
    const auto place = mirrored(QRect(row.left(), 0, width, height), line);
    if (roomForBar(height, around).top > 0) {
        const auto over = row.top() - distance - height;
        return {place.translated(0, std::max(over, room.top())),
                over < room.top() ? BarPlace::Edge::top : BarPlace::Edge::none};
    }
    const auto under = row.bottom() + 1 + distance;
    const auto lowest = room.bottom() + 1 - height;
    return {place.translated(0, std::min(under, lowest)),
            under > lowest ? BarPlace::Edge::foot : BarPlace::Edge::none};
}

} // namespace korvex::ui
