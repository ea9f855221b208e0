#pragma once

#include <QObject>
#include <QRect>

class QWidget;

namespace korvex::ui {

/// Opens menus and lists of choices inside the window that they belong to, where they fit, and cuts
/// the corners of the lists. Watches what `watch` is called with. Main thread.
class PopupPlace final : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    void watch(QWidget& popup);

    /// Where a popup that would open at `wanted` opens, so that it stays inside `window`: shifted
    /// to the left, or upwards, above `opener`, which is what it belongs to or the pointer, where
    /// it would come to lie over that. Unchanged where it has no room. All in global coordinates.
    static QRect inside(const QRect& window, const QRect& wanted, const QRect& opener);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace korvex::ui
