#include "ui/kit/theme/Theme.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

using Preference = app::AppPreferences::Property;

constexpr int kStandardFontSize = 13;
/// A size of 13 means as much as elsewhere: 13 pixels where the screen has 96 to the inch, which
/// are 9.75 points there, and more where the user scales texts up.
constexpr double kPointsPerPixel = 72.0 / 96.0;

} // namespace

Theme::Theme(app::AppPreferences& preferences, QObject* parent)
    : QObject(parent),
      m_preferences(preferences),
      m_systemPalette(QApplication::palette()),
      m_systemFont(QApplication::font()) {
    m_changes = preferences.didChange().connect([this](Preference changed) {
        if (changed == Preference::appearance || changed == Preference::fontSize ||
            changed == Preference::boardSpacing) {
            apply();
        }
    });
    apply();
}

Theme::~Theme() {
    QApplication::setPalette(m_systemPalette);
    QApplication::setFont(m_systemFont);
}

int Theme::rowDistance() const {
    return m_preferences.boardSpacing() == app::AppPreferences::BoardSpacing::compact
               ? space(Space::small)
               : space(Space::medium);
}

int Theme::scaled(int length) const {
    return static_cast<int>(
        std::lround(length * m_preferences.fontSize() / static_cast<double>(kStandardFontSize)));
}

void Theme::setSystem(const System& system) {
    if (m_system != system) {
        m_system = system;
        apply();
    }
}

int Theme::motion(Motion motion) const {
    return m_system.motion == SystemMotion::still ? 0 : static_cast<int>(motion);
}

void Theme::loadFonts() const {
    constexpr QSize kGround(1200, 60);
    // As a window is painted, so that the letters are drawn in the form that it asks for.
    QImage ground(kGround, QImage::Format_RGB32);
    QPainter painter(&ground);
    for (const auto& font : {m_font, m_smallFont, m_sectionFont, m_titleFont}) {
        painter.setFont(font);
        painter.drawText(
            ground.rect(), 0,
            QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"));
    }
}

QFont Theme::strong(QFont font) {
    font.setWeight(QFont::DemiBold);
    return font;
}

QFont Theme::fontOf(TextSize size) const {
    auto font = m_systemFont;
    font.setPointSizeF(m_preferences.fontSize() * kPointsPerPixel * static_cast<int>(size) /
                       kStandardFontSize);
    return font;
}

void Theme::apply() {
    const auto accent = m_systemPalette.color(QPalette::Highlight);
    const auto contrast = m_system.contrast == SystemContrast::high ? ThemeColors::Contrast::high
                                                                    : ThemeColors::Contrast::usual;
    m_colors =
        isDark() ? ThemeColors::dark(accent, contrast) : ThemeColors::light(accent, contrast);

    m_font = fontOf(TextSize::body);
    m_smallFont = fontOf(TextSize::label);
    m_sectionFont = strong(fontOf(TextSize::section));
    m_titleFont = fontOf(TextSize::title);
    m_titleFont.setWeight(QFont::Bold);

    QApplication::setPalette(m_colors.palette());
    QApplication::setFont(m_font);
    Q_EMIT changed();
}

bool Theme::isDark() const {
    switch (m_preferences.appearance()) {
    case app::AppPreferences::Appearance::light:
        return false;
    case app::AppPreferences::Appearance::dark:
        return true;
    case app::AppPreferences::Appearance::system:
        break;
    }
    if (m_system.appearance != SystemAppearance::unknown) {
        return m_system.appearance == SystemAppearance::dark;
    }
    return m_systemPalette.color(QPalette::Window).lightness() <
           m_systemPalette.color(QPalette::WindowText).lightness();
}

} // namespace korvex::ui
