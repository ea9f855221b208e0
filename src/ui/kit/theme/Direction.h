#pragma once

#include <QGuiApplication>
#include <QMargins>
#include <QRect>
#include <QString>
#include <QStyle>

#include <algorithm>

namespace korvex::ui {

/// Where `place`, reckoned as if lines began at the left, lies within `bounds` in the direction of
/// the window. What is painted or placed by hand goes through here; Qt's layouts, and texts drawn
/// with `Qt::AlignLeft` for the beginning of the line, turn by themselves.
inline QRect mirrored(const QRect& place, const QRect& bounds) {
    return QStyle::visualRect(QGuiApplication::layoutDirection(), bounds, place);
}

/// The same in a row that is `width` wide.
inline QRect mirrored(const QRect& place, int width) {
    return mirrored(place, QRect(0, place.top(), width, place.height()));
}

inline QMargins mirrored(const QMargins& margins) {
    return QGuiApplication::isRightToLeft()
               ? QMargins(margins.right(), margins.top(), margins.left(), margins.bottom())
               : margins;
}

/// Where the lines of a label begin, whatever its words are.
inline Qt::Alignment lineStart() {
    return Qt::AlignAbsolute | Qt::AlignVCenter |
           (QGuiApplication::isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft);
}

/// Where they end.
inline Qt::Alignment lineEnd() {
    return Qt::AlignAbsolute | Qt::AlignVCenter |
           (QGuiApplication::isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight);
}

/// For a control whose icon stands behind its text.
inline Qt::LayoutDirection turnedDirection() {
    return QGuiApplication::isRightToLeft() ? Qt::LeftToRight : Qt::RightToLeft;
}

/// -1 for the arrow key that leads towards the beginning of a line, 1 for the one that leads to its
/// end, 0 for all other keys.
inline int stepOf(int key) {
    const int towardsEnd = QGuiApplication::isRightToLeft() ? -1 : 1;
    return key == Qt::Key_Right ? towardsEnd : key == Qt::Key_Left ? -towardsEnd : 0;
}

/// The direction of a paragraph: that of its first letter; of the window where it has none.
inline Qt::LayoutDirection directionOf(const QString& text) {
    for (const auto character : text) {
        switch (character.direction()) {
        case QChar::DirL:
            return Qt::LeftToRight;
        case QChar::DirR:
        case QChar::DirAL:
            return Qt::RightToLeft;
        default:
            break;
        }
    }
    return QGuiApplication::layoutDirection();
}

/// Words of the user's for within a sentence of the window's language: where some of them run the
/// other way, they keep that to themselves.
inline QString isolated(const QString& words) {
    constexpr QChar kFirstStrongIsolate(0x2068);
    constexpr QChar kPopDirectionalIsolate(0x2069);
    const auto isOther = [](QChar character) {
        const auto direction = character.direction();
        return QGuiApplication::isRightToLeft()
                   ? direction == QChar::DirL
                   : direction == QChar::DirR || direction == QChar::DirAL;
    };
    return std::any_of(words.begin(), words.end(), isOther)
               ? kFirstStrongIsolate + words + kPopDirectionalIsolate
               : words;
}

} // namespace korvex::ui
