#include "ui/widget/WidgetScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cstdint>

namespace korvex::ui {

namespace {

std::int64_t area(const QRect& rect) {
    return rect.isEmpty() ? 0 : std::int64_t{rect.width()} * rect.height();
}

/// The one that shows most of it; else the nearest.
QRect screenOf(const QRect& wanted) {
    QRect best = QGuiApplication::primaryScreen()->availableGeometry();
    auto bestArea = area(best & wanted);
    auto bestDistance = (best.center() - wanted.center()).manhattanLength();
    for (const auto* const screen : QGuiApplication::screens()) {
        const auto room = screen->availableGeometry();
        const auto seen = area(room & wanted);
        const auto distance = (room.center() - wanted.center()).manhattanLength();
        if (seen > bestArea || (seen == bestArea && seen == 0 && distance < bestDistance)) {
            best = room;
            bestArea = seen;
            bestDistance = distance;
        }
    }
    return best;
}

} // namespace

QRect WidgetScreens::fitted(const QRect& wanted, const QSize& least) {
    const auto room = screenOf(wanted);
    QRect place(wanted.topLeft(),
                wanted.size().boundedTo(room.size()).expandedTo(least.boundedTo(room.size())));
    place.moveLeft(std::clamp(place.left(), room.left(), room.right() + 1 - place.width()));
    place.moveTop(std::clamp(place.top(), room.top(), room.bottom() + 1 - place.height()));
    return place;
}

QRect WidgetScreens::next(const QSize& size, const std::vector<QRect>& others, int gap) {
    const auto room = QGuiApplication::primaryScreen()->availableGeometry();
    const auto rows = std::max(1, (room.height() - gap) / (size.height() + gap));
    const auto columns = std::max(1, (room.width() - gap) / (size.width() + gap));
    const auto placeAt = [&](int cell) {
        const auto fromEnd = (cell / rows + 1) * (size.width() + gap);
        const auto left = QGuiApplication::isRightToLeft() ? room.left() + fromEnd - size.width()
                                                           : room.right() + 1 - fromEnd;
        return QRect(QPoint(left, room.top() + gap + cell % rows * (size.height() + gap)), size);
    };
    for (int cell = 0; cell < rows * columns; ++cell) {
        const auto place = placeAt(cell);
        if (std::none_of(others.begin(), others.end(),
                         [&](const QRect& other) { return other.intersects(place); })) {
            return place;
        }
    }
    return placeAt(static_cast<int>(others.size()) % (rows * columns));
}

} // namespace korvex::ui
