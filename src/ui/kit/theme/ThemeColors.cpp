#include "ui/kit/theme/ThemeColors.h"

#include "ui/kit/theme/Design.h"

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// How much of the text's colour a tint has.
double strengthOf(Tint tint) {
    return tint == Tint::rest ? 0.07 : tint == Tint::hovered ? 0.11 : 0.15;
}

/// What follows from the grounds and texts, which have been set. `chosen` is how much of the accent
/// the ground of what is chosen has.
void derive(ThemeColors& colors, const QColor& accent, const QColor& danger, double chosen) {
    colors.selection = blended(accent, colors.content, chosen);
    // Of the grounds, one of these two is the nearest to such a line, in the light and in the dark.
    const auto line = [&](double strength) {
        const auto color = blended(colors.text, colors.content, strength);
        return readable(readable(color, colors.sidebar, colors.markContrast()), colors.raised,
                        colors.markContrast());
    };
    colors.border = line(0.30);
    colors.scrollHandle = line(0.40);
    if (colors.isHighContrast) {
        colors.hairline = colors.border;
    }
    // Which ground is the nearest to these depends on the accent.
    const auto forText = colors.textContrast();
    colors.secondaryText = colors.readableOnGrounds(colors.secondaryText, forText);
    colors.accent = colors.readableOnGrounds(accent, forText);
    colors.danger = colors.readableOnGrounds(danger, forText);
    const QColor onAccent = colors.isDark ? Qt::black : Qt::white;
    colors.onAccent = readable(onAccent, colors.accent, forText);
}

} // namespace

ThemeColors ThemeColors::light(const QColor& accent, Contrast contrast) {
    ThemeColors colors;
    colors.isHighContrast = contrast == Contrast::high;
    colors.content = QColor(0xff, 0xff, 0xff);
    colors.sidebar = QColor(0xf6, 0xf6, 0xf7);
    colors.raised = QColor(0xff, 0xff, 0xff);
    colors.field = QColor(0xff, 0xff, 0xff);
    colors.text = colors.isHighContrast ? QColor(Qt::black) : QColor(0x1d, 0x1d, 0x20);
    colors.secondaryText =
        colors.isHighContrast ? QColor(0x33, 0x34, 0x38) : QColor(0x5e, 0x61, 0x68);
    colors.hairline = QColor(0xe3, 0xe4, 0xe7);
    derive(colors, accent, QColor(0xc6, 0x28, 0x28), 0.12);
    return colors;
}

ThemeColors ThemeColors::dark(const QColor& accent, Contrast contrast) {
    ThemeColors colors;
    colors.isDark = true;
    colors.isHighContrast = contrast == Contrast::high;
    colors.content = colors.isHighContrast ? QColor(Qt::black) : QColor(0x1b, 0x1b, 0x1e);
    colors.sidebar = colors.isHighContrast ? QColor(0x12, 0x12, 0x14) : QColor(0x23, 0x23, 0x26);
    colors.raised = colors.isHighContrast ? QColor(0x12, 0x12, 0x14) : QColor(0x2a, 0x2a, 0x2e);
    colors.field = colors.isHighContrast ? QColor(0x12, 0x12, 0x14) : QColor(0x28, 0x28, 0x2c);
    colors.text = colors.isHighContrast ? QColor(Qt::white) : QColor(0xec, 0xec, 0xee);
    colors.secondaryText =
        colors.isHighContrast ? QColor(0xd4, 0xd5, 0xda) : QColor(0xa8, 0xaa, 0xb1);
    colors.hairline = QColor(0x37, 0x38, 0x3c);
    // In high contrast an edge tells what is chosen; a strong tint of a bright accent would leave
    // no text readable on it.
    derive(colors, accent, QColor(0xff, 0x7b, 0x72), colors.isHighContrast ? 0.12 : 0.20);
    return colors;
}

QColor ThemeColors::readableOnGrounds(QColor color, double ratio) const {
    for (const auto& ground : grounds()) {
        color = readable(color, ground, ratio);
    }
    return color;
}

QColor ThemeColors::tint(Tint tint) const {
    auto color = text;
    color.setAlphaF(static_cast<float>(strengthOf(tint)));
    return color;
}

QColor ThemeColors::tinted(const QColor& ground, Tint tint) const {
    return blended(text, ground, strengthOf(tint));
}

std::vector<QColor> ThemeColors::grounds() const {
    std::vector<QColor> all;
    for (const auto& ground : {content, sidebar, raised, field, selection}) {
        all.insert(all.end(), {ground, tinted(ground, Tint::rest), tinted(ground, Tint::hovered),
                               tinted(ground, Tint::pressed)});
    }
    return all;
}

QPalette ThemeColors::palette() const {
    QPalette palette;
    palette.setColor(QPalette::Window, content);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, sidebar);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, secondaryText);
    palette.setColor(QPalette::Button, sidebar);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, danger);
    palette.setColor(QPalette::ToolTipBase, raised);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, onAccent);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Light, blended(text, content, 0.02));
    palette.setColor(QPalette::Midlight, hairline);
    palette.setColor(QPalette::Mid, hairline);
    palette.setColor(QPalette::Dark, border);
    palette.setColor(QPalette::Shadow, border);
    const auto disabled = blended(text, content, kDisabledOpacity);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText}) {
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    return palette;
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
    const auto mix = [part](int one, int other) {
        return static_cast<int>(std::lround(one * part + other * (1 - part)));
    };
    // As screens show it: what is to be readable is reckoned with the colour that will be seen.
    return {mix(color.red(), ground.red()), mix(color.green(), ground.green()),
            mix(color.blue(), ground.blue())};
}

QColor messageGround(const ThemeColors& colors, const QColor& color) {
    return blended(color, colors.content, colors.isDark ? 0.16 : 0.09);
}

} // namespace korvex::ui
