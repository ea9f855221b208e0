#pragma once

#include "ui/kit/theme/Theme.h"

#include <QProxyStyle>

class QStyleOptionToolButton;

namespace korvex::ui {

class PopupPlace;

/// Draws every control that Qt brings by the theme: flat, in its colours and measures, with one
/// look for what is chosen and one ring for what has the keyboard. Qt's plain style lies under it
/// for what is not drawn here, whatever style the desktop has. The theme outlives it. Main thread.
class QuietStyle final : public QProxyStyle {
    Q_OBJECT

public:
    explicit QuietStyle(const Theme& theme);

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    /// Words that run against the window's direction keep their own: "Delete…", "8:00 AM".
    void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette,
                      bool isEnabled, const QString& text, QPalette::ColorRole role) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& content,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                       const QWidget* widget) const override;
    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                const QStyleOption* option) const override;

private:
    bool drawsPrimitive(PrimitiveElement element, const QStyleOption& option, QPainter& painter,
                        const QWidget* widget) const;
    bool drawsControl(ControlElement element, const QStyleOption& option, QPainter& painter,
                      const QWidget* widget) const;
    void drawToolButton(const QStyleOptionToolButton& option, QPainter& painter,
                        const QWidget* widget) const;
    double popupRadius(const QWidget* popup) const;

    const Theme& m_theme;
    PopupPlace* m_popups;
};

/// As long as it lives, the application has this style; before the theme goes, the application gets
/// Qt's plain one.
class InstalledStyle final {
public:
    explicit InstalledStyle(const Theme& theme);
    ~InstalledStyle();
    InstalledStyle(const InstalledStyle&) = delete;
    InstalledStyle& operator=(const InstalledStyle&) = delete;
};

} // namespace korvex::ui
