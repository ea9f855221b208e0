#pragma once

#include "ui/kit/theme/Theme.h"

#include <QObject>
#include <QStyle>
#include <QTimer>
#include <QVariantAnimation>

class QPainter;
class QScrollBar;
class QStyleOptionSlider;
class QWidget;

namespace korvex::ui {

/// The thin handle of a scroll bar that lies over the content and takes no room of it. It comes
/// when something scrolls or the pointer comes to what can be scrolled, and fades a moment later,
/// unless the pointer is on the bar; where the desktop asks for stillness or high contrast it
/// stays. It can always be grabbed.
/// One for each bar, which it belongs to. Main thread.
class ScrollHandle final : public QObject {
    Q_OBJECT

public:
    /// The handle of the bar, made when it has none.
    static ScrollHandle& of(QScrollBar& bar, const Theme& theme);

    /// From 0, not to be seen, to 1.
    double opacity() const;

    static void paint(QPainter& painter, const QStyleOptionSlider& option, const QWidget* bar,
                      const Theme& theme);
    /// Parts of the bar: it has no arrows.
    static QRect partOf(const QStyleOptionSlider& option, QStyle::SubControl part,
                        const Theme& theme);
    /// The width of the strip in which the handle can be grabbed, in pixels.
    static int width(const Theme& theme);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ScrollHandle(QScrollBar& bar, const Theme& theme);
    /// Shows the handle, for as long as it is wanted and a moment more.
    void come();
    void fade();
    bool isWanted() const;
    bool stays() const;

    QScrollBar& m_bar;
    const Theme& m_theme;
    QTimer m_rest;
    QVariantAnimation m_fading;
    bool m_isShown = false;
};

} // namespace korvex::ui
