#pragma once

#include "app/AppPreferences.h"
#include "base/Signal.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPalette>

namespace korvex::ui {

/// The colours of one appearance. Texts have a contrast of at least 4.5 to 1 on every ground they
/// stand on.
struct ThemeColors {
    QColor content;
    QColor sidebar;
    QColor text;
    QColor secondaryText;
    QColor hairline;
    QColor accent;
    QColor onAccent;
    QColor selection;
    QColor hover;
    QColor danger;
    bool isDark = false;
};

/// How the windows look: colours, fonts and distances, from the user's preferences and the system's
/// appearance. Sets the application's palette and font. Main thread.
class Theme final : public QObject {
    Q_OBJECT

public:
    explicit Theme(app::AppPreferences& preferences, QObject* parent = nullptr);
    /// Gives the application the system's palette and font back, so that the next one finds them.
    ~Theme() override;

    const ThemeColors& colors() const { return m_colors; }
    /// The sans-serif of the system at the preferred size.
    const QFont& font() const { return m_font; }
    /// The font of labels beside a text is one size smaller.
    const QFont& smallFont() const { return m_smallFont; }
    const QFont& titleFont() const { return m_titleFont; }
    /// The distance between the texts of two rows, in pixels.
    int rowDistance() const;
    /// A length given for the standard font size, scaled with the preferred one.
    int scaled(int length) const;

    enum class SystemAppearance { unknown, light, dark };
    /// What the desktop says; while it is unknown the palette that it gave decides.
    void setSystemAppearance(SystemAppearance appearance);

Q_SIGNALS:
    void changed();

private:
    void apply();
    bool isDark() const;

    app::AppPreferences& m_preferences;
    base::Subscription m_changes;
    QPalette m_systemPalette;
    QFont m_systemFont;
    SystemAppearance m_systemAppearance = SystemAppearance::unknown;
    ThemeColors m_colors;
    QFont m_font;
    QFont m_smallFont;
    QFont m_titleFont;
};

/// The ratio of luminances of the Web Content Accessibility Guidelines, from 1 to 21.
double contrast(const QColor& left, const QColor& right);
/// The colour, as much darker or lighter as it takes for `ratio` against the ground.
QColor readable(QColor color, const QColor& ground, double ratio = 4.5);
/// `part` of 0 to 1 of `color` over the ground.
QColor blended(const QColor& color, const QColor& ground, double part);
/// The ground of a message in this colour over the content.
QColor messageGround(const ThemeColors& colors, const QColor& color);

} // namespace korvex::ui
