#include "ui/kit/theme/Theme.h"

#include <QApplication>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

constexpr int kStandardFontSize = 13;
/// A size of 13 means as much as elsewhere: 13 pixels where the screen has 96 to the inch, which
/// are 9.75 points there, and more where the user scales texts up.
constexpr double kPointsPerPixel = 72.0 / 96.0;

double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

ThemeColors lightColors(const QColor& accent) {
    ThemeColors colors;
    colors.content = QColor(0xff, 0xff, 0xff);
    colors.sidebar = QColor(0xf5, 0xf5, 0xf6);
    colors.text = QColor(0x1d, 0x1d, 0x20);
    colors.secondaryText = QColor(0x5e, 0x61, 0x68);
    colors.hairline = QColor(0xe1, 0xe2, 0xe5);
    colors.selection = blended(accent, colors.content, 0.12);
    colors.hover = blended(colors.text, colors.content, 0.04);
    colors.accent = readable(accent, colors.selection);
    colors.danger = readable(QColor(0xc6, 0x28, 0x28), colors.selection);
    return colors;
}

ThemeColors darkColors(const QColor& accent) {
    ThemeColors colors;
    colors.isDark = true;
    colors.content = QColor(0x1b, 0x1b, 0x1e);
    colors.sidebar = QColor(0x24, 0x24, 0x27);
    colors.text = QColor(0xec, 0xec, 0xee);
    colors.secondaryText = QColor(0xa8, 0xaa, 0xb1);
    colors.hairline = QColor(0x37, 0x38, 0x3c);
    colors.selection = blended(accent, colors.content, 0.24);
    colors.hover = blended(colors.text, colors.content, 0.05);
    colors.accent = readable(accent, colors.selection);
    colors.danger = readable(QColor(0xff, 0x7b, 0x72), colors.selection);
    return colors;
}

QPalette paletteOf(const ThemeColors& colors) {
    const auto field = colors.isDark ? blended(colors.text, colors.content, 0.06) : colors.content;
    QPalette palette;
    palette.setColor(QPalette::Window, colors.content);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, colors.sidebar);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.secondaryText);
    palette.setColor(QPalette::Button, colors.sidebar);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, colors.danger);
    palette.setColor(QPalette::ToolTipBase, colors.sidebar);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, colors.onAccent);
    palette.setColor(QPalette::Link, colors.accent);
    palette.setColor(QPalette::Light, blended(colors.text, colors.content, 0.02));
    palette.setColor(QPalette::Midlight, colors.hairline);
    palette.setColor(QPalette::Mid, colors.hairline);
    palette.setColor(QPalette::Dark, blended(colors.text, colors.content, 0.30));
    palette.setColor(QPalette::Shadow, blended(colors.text, colors.content, 0.40));
    const auto disabled = blended(colors.text, colors.content, 0.45);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    return palette;
}

} // namespace

Theme::Theme(app::AppPreferences& preferences, QObject* parent)
    : QObject(parent),
      m_preferences(preferences),
      m_systemPalette(QApplication::palette()),
      m_systemFont(QApplication::font()) {
    m_changes = preferences.didChange().connect([this] { apply(); });
    apply();
}

Theme::~Theme() {
    QApplication::setPalette(m_systemPalette);
    QApplication::setFont(m_systemFont);
}

int Theme::rowDistance() const {
    return m_preferences.boardSpacing() == app::AppPreferences::BoardSpacing::compact ? 4 : 8;
}

int Theme::scaled(int length) const {
    return static_cast<int>(
        std::lround(length * m_preferences.fontSize() / static_cast<double>(kStandardFontSize)));
}

void Theme::setSystemAppearance(SystemAppearance appearance) {
    if (m_systemAppearance != appearance) {
        m_systemAppearance = appearance;
        apply();
    }
}

void Theme::apply() {
    const auto accent = m_systemPalette.color(QPalette::Highlight);
    m_colors = isDark() ? darkColors(accent) : lightColors(accent);
    m_colors.onAccent = readable(m_colors.isDark ? Qt::black : Qt::white, m_colors.accent);

    const auto size = m_preferences.fontSize() * kPointsPerPixel;
    m_font = m_systemFont;
    m_font.setPointSizeF(size);
    m_smallFont = m_font;
    m_smallFont.setPointSizeF(size * 12 / kStandardFontSize);
    m_titleFont = m_font;
    m_titleFont.setPointSizeF(size * 20 / kStandardFontSize);
    m_titleFont.setWeight(QFont::Bold);

    QApplication::setPalette(paletteOf(m_colors));
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
    if (m_systemAppearance != SystemAppearance::unknown) {
        return m_systemAppearance == SystemAppearance::dark;
    }
    return m_systemPalette.color(QPalette::Window).lightness() <
           m_systemPalette.color(QPalette::WindowText).lightness();
}

double contrast(const QColor& left, const QColor& right) {
    const auto one = luminance(left);
    const auto other = luminance(right);
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

QColor readable(QColor color, const QColor& ground, double ratio) {
    const QColor target = luminance(ground) < 0.18 ? Qt::white : Qt::black;
    const auto start = color;
    for (int step = 1; step <= 20 && contrast(color, ground) < ratio; ++step) {
        color = blended(target, start, step / 20.0);
    }
    return color;
}

QColor blended(const QColor& color, const QColor& ground, double part) {
    const auto mix = [part](double one, double other) {
        return static_cast<float>(one * part + other * (1 - part));
    };
    return QColor::fromRgbF(mix(color.redF(), ground.redF()), mix(color.greenF(), ground.greenF()),
                            mix(color.blueF(), ground.blueF()));
}

QColor messageGround(const ThemeColors& colors, const QColor& color) {
    return blended(color, colors.content, colors.isDark ? 0.16 : 0.09);
}

} // namespace korvex::ui
