#pragma once

#include <QColor>
#include <QPalette>

#include <vector>

namespace korvex::ui {

/// How strongly a control stands out from the ground under it, whatever that is.
enum class Tint { rest, hovered, pressed };

/// The colours of one appearance. Texts have a contrast of at least 4.5 to 1 on every ground they
/// stand on, also where the pointer is on it or presses it, and what is no text but says something
/// 3 to 1; in high contrast 7 to 1 and 4.5 to 1. This holds for any accent.
struct ThemeColors {
    /// The grounds: of what the user wrote, of the sidebar, of panels and menus over the content,
    /// of what is filled in.
    QColor content;
    QColor sidebar;
    QColor raised;
    QColor field;
    QColor text;
    QColor secondaryText;
    /// A line that only parts; it says nothing by itself.
    QColor hairline;
    /// The edge by which a control is known.
    QColor border;
    QColor accent;
    QColor onAccent;
    /// The ground of what is chosen.
    QColor selection;
    QColor danger;
    QColor scrollHandle;
    bool isDark = false;
    bool isHighContrast = false;

    enum class Contrast { usual, high };
    static ThemeColors light(const QColor& accent, Contrast contrast);
    static ThemeColors dark(const QColor& accent, Contrast contrast);

    /// The least contrast of texts, and of what is no text but says something.
    double textContrast() const { return isHighContrast ? 7 : 4.5; }
    double markContrast() const { return isHighContrast ? 4.5 : 3; }
    /// A translucent colour, so that it suits every ground.
    QColor tint(Tint tint) const;
    /// The ground with that over it.
    QColor tinted(const QColor& ground, Tint tint) const;
    /// All that texts may stand on: the grounds and what is chosen, each in every state.
    std::vector<QColor> grounds() const;
    /// The colour, as much darker or lighter as it takes for `ratio` against all of these.
    QColor readableOnGrounds(QColor color, double ratio) const;

    /// The same for what Qt draws.
    QPalette palette() const;
};

/// The ratio of luminances of the Web Content Accessibility Guidelines, from 1 to 21.
double contrast(const QColor& left, const QColor& right);
/// The colour, as much darker or lighter as it takes for `ratio` against the ground.
QColor readable(QColor color, const QColor& ground, double ratio);
/// `part` of 0 to 1 of `color` over the ground.
QColor blended(const QColor& color, const QColor& ground, double part);
/// The ground of a message in this colour over the content.
QColor messageGround(const ThemeColors& colors, const QColor& color);

} // namespace korvex::ui
