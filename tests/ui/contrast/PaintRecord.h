#pragma once

#include <QPaintDevice>
#include <QRegion>
#include <QString>

#include <memory>
#include <vector>

class QWidget;

namespace korvex::tests {

/// What a widget has drawn that somebody is to make out, in the widget's own coordinates: letters,
/// signs, and the lines that controls are known by. What was painted over, clipped away or disabled
/// is not in it, nor are grounds and hairlines.
class PaintRecord {
public:
    struct Drawn {
        enum class Kind {
            text,
            /// A picture or a filled sign.
            sign,
            /// The edge of a control, a circle, a ring.
            outline,
        };
        Kind kind;
        QRectF place;
        /// What of the place is in sight.
        QRegion visible;
        /// Of a text.
        QString words;
        /// Of an outline: points on it.
        std::vector<QPointF> points;
    };

    explicit PaintRecord(QWidget& widget);

    const std::vector<Drawn>& drawn() const { return m_drawn; }

private:
    std::vector<Drawn> m_drawn;
};

} // namespace korvex::tests
