#pragma once

#include "app/AppPreferences.h"
#include "app/SystemAppearance.h"
#include "base/Signal.h"
#include "ui/kit/theme/Design.h"
#include "ui/kit/theme/ThemeColors.h"

#include <QFont>
#include <QObject>
#include <QPalette>

namespace korvex::ui {

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
    const QFont& sectionFont() const { return m_sectionFont; }
    const QFont& titleFont() const { return m_titleFont; }
    /// Makes the first text that is painted as quick as the next one: for a moment in which there
    /// is nothing else to do.
    void loadFonts() const;
    /// The font for what stands out among words of its size.
    static QFont strong(QFont font);
    /// The distance between the texts of two rows, in pixels.
    int rowDistance() const;
    /// A length given for the standard font size, scaled with the preferred one.
    int scaled(int length) const;
    int space(Space space) const { return scaled(static_cast<int>(space)); }
    int extent(Extent extent) const { return scaled(static_cast<int>(extent)); }
    double radius(Radius radius) const { return scaled(static_cast<int>(radius)); }
    /// The widest column of text, in pixels.
    int measure() const { return scaled(kMeasure); }
    /// In milliseconds; 0 where the desktop asks for stillness.
    int motion(Motion motion) const;

    /// What the desktop says; while the appearance is unknown the palette that it gave decides.
    using System = app::SystemAppearance;
    using SystemAppearance = System::Scheme;
    using SystemContrast = System::Contrast;
    using SystemMotion = System::Motion;
    const System& system() const { return m_system; }
    void setSystem(const System& system);

Q_SIGNALS:
    void changed();

private:
    void apply();
    bool isDark() const;
    QFont fontOf(TextSize size) const;

    app::AppPreferences& m_preferences;
    base::Subscription m_changes;
    QPalette m_systemPalette;
    QFont m_systemFont;
    System m_system;
    ThemeColors m_colors;
    QFont m_font;
    QFont m_smallFont;
    QFont m_sectionFont;
    QFont m_titleFont;
};

} // namespace korvex::ui
