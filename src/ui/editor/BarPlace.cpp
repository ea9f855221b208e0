#include "ui/editor/BarPlace.h"

#include "ui/kit/theme/Direction.h"

#include <algorithm>
#include <array>

namespace korvex::ui {

QRect placeOfBar(const QSize& wanted, const BarSurroundings& around) {
    const auto& sight = around.sight;
    const auto& row = around.row;
    const auto distance = around.distance;
    const auto room = sight.adjusted(distance, distance, -distance, -distance);
    const auto height = wanted.height();
    const auto width = std::min({wanted.width(), row.width(), room.width()});
    const auto line = QRect(row.left(), 0, row.width(), height);
    const auto place = mirrored(QRect(row.left(), 0, width, height), line);
    const auto fits = [&](int top) {
        const auto bar = place.translated(0, top);
        return top >= room.top() && bar.bottom() <= room.bottom() &&
               (bar.bottom() < around.caret.top() || top > around.caret.bottom());
    };
    const auto over = row.top() - distance - height;
    const auto under = row.bottom() + 1 + distance;
    const auto top = room.top();
    const auto foot = room.bottom() + 1 - height;
    // Of a row whose top is out of sight the bar keeps to where its top would be.
    const auto isTopInSight = row.top() >= sight.top();
    const std::array choices{over, isTopInSight ? under : top, isTopInSight ? top : foot, foot};
    const auto* const chosen = std::find_if(choices.begin(), choices.end(), fits);
    return place.translated(0, chosen == choices.end() ? top : *chosen);
}

} // namespace korvex::ui
