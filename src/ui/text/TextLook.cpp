#include "ui/text/TextLook.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

using richtext::SystemColor;

struct Hues {
    QColor purple;
    QColor green;
    QColor orange;
    QColor blue;
    QColor pink;
    QColor red;
};

Hues huesOf(const ThemeColors& colors) {
    if (colors.isDark) {
        return {.purple = QColor(0xc7, 0x8d, 0xf2),
                .green = QColor(0x7f, 0xc9, 0x7a),
                .orange = QColor(0xf0, 0xa4, 0x5d),
                .blue = QColor(0x74, 0xb0, 0xff),
                .pink = QColor(0xf4, 0x86, 0xb4),
                .red = QColor(0xff, 0x7b, 0x72)};
    }
    return {.purple = QColor(0x84, 0x3a, 0xb8),
            .green = QColor(0x1f, 0x7a, 0x34),
            .orange = QColor(0xa6, 0x52, 0x0b),
            .blue = QColor(0x1a, 0x5f, 0xb4),
            .pink = QColor(0xb8, 0x2b, 0x6e),
            .red = QColor(0xc6, 0x28, 0x28)};
}

} // namespace

BlockKind kindOf(const KindTraits& traits) {
    if (traits.isCode) {
        return BlockKind::code;
    }
    if (traits.isItem) {
        return BlockKind::item;
    }
    if (!traits.heading) {
        return BlockKind::body;
    }
    switch (*traits.heading) {
    case richtext::HeadingLevel::level1:
        return BlockKind::heading1;
    case richtext::HeadingLevel::level2:
        return BlockKind::heading2;
    case richtext::HeadingLevel::level3:
        return BlockKind::heading3;
    }
    return BlockKind::body;
}

TextLook::TextLook(const Theme& theme) : font(theme.font()) {
    const auto& colors = theme.colors();
    const auto basePoints = richtext::kBaseFontSize / 1000.0;
    m_pixelsPerTwip = QFontInfo(font).pixelSize() / basePoints / richtext::kTwipsPerPoint;
    monospacedFamily = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    const auto leading = lineHeight(BlockKind::body) - QFontMetricsF(font).height();
    m_halfLeading = std::max(0, static_cast<int>(std::lround(leading / 2)));

    const auto isDark = colors.isDark;
    ground = colors.content;
    codeGround = blended(colors.text, colors.content, isDark ? 0.08 : 0.05);
    headerFill = blended(colors.text, colors.content, isDark ? 0.10 : 0.06);
    separator = colors.isHighContrast ? colors.border
                                      : blended(colors.text, colors.content, isDark ? 0.24 : 0.18);
    // As in every field; what is selected is drawn in the one colour that goes with it, so that
    // the colours of code and links need not be readable on it.
    selection = colors.accent;
    scrollHandle = colors.scrollHandle;
    m_contrast = colors.textContrast();
    m_grounds = {colors.content, colors.tinted(colors.content, Tint::rest), colors.selection,
                 codeGround, headerFill};
    text = readableOnAllGrounds(colors.text);
    quiet = readableOnAllGrounds(colors.secondaryText);
    link = readableOnAllGrounds(colors.accent);

    const auto hues = huesOf(colors);
    const auto set = [this](SystemColor name, const QColor& foreground, const QColor& fill) {
        m_foregrounds[static_cast<std::size_t>(name)] = readableOnAllGrounds(foreground);
        m_fills[static_cast<std::size_t>(name)] = fill;
    };
    set(SystemColor::none, text, colors.content);
    set(SystemColor::label, text, text);
    set(SystemColor::secondaryLabel, colors.secondaryText, colors.secondaryText);
    set(SystemColor::quaternaryLabel, colors.secondaryText, codeGround);
    set(SystemColor::separator, colors.secondaryText, separator);
    set(SystemColor::headerFill, colors.secondaryText, headerFill);
    for (const auto& [name, hue] :
         {std::pair(SystemColor::purple, hues.purple), std::pair(SystemColor::green, hues.green),
          std::pair(SystemColor::orange, hues.orange), std::pair(SystemColor::blue, hues.blue),
          std::pair(SystemColor::pink, hues.pink), std::pair(SystemColor::red, hues.red)}) {
        set(name, hue, blended(hue, colors.content, 0.2));
    }
}

QFont TextLook::fontOf(const richtext::Font& wanted) const {
    auto result = font;
    if (wanted.family == richtext::FontFamily::monospaced) {
        result.setFamilies({monospacedFamily});
        result.setFixedPitch(true);
    }
    result.setBold(wanted.isBold);
    result.setItalic(wanted.isItalic);
    result.setPointSizeF(pointSize(wanted.size));
    return result;
}

QColor TextLook::foreground(const richtext::Color& color) const {
    return color.name == SystemColor::none
               ? readableOnAllGrounds(QColor(color.red, color.green, color.blue))
               : m_foregrounds[static_cast<std::size_t>(color.name)];
}

QColor TextLook::fill(const richtext::Color& color) const {
    return color.name == SystemColor::none ? QColor(color.red, color.green, color.blue)
                                           : m_fills[static_cast<std::size_t>(color.name)];
}

int TextLook::lineHeight(BlockKind kind) const {
    return static_cast<int>(
        std::lround(letterSize(kind) * (isHeading(kind) ? kHeadingLineHeight : kLineHeight)));
}

double TextLook::letterSize(BlockKind kind) const {
    const auto size = [&] {
        switch (kind) {
        case BlockKind::heading1:
            return richtext::fontOf(richtext::HeadingLevel::level1).size;
        case BlockKind::heading2:
            return richtext::fontOf(richtext::HeadingLevel::level2).size;
        case BlockKind::heading3:
            return richtext::fontOf(richtext::HeadingLevel::level3).size;
        case BlockKind::body:
        case BlockKind::item:
        case BlockKind::code:
            break;
        }
        return richtext::kBaseFontSize;
    }();
    return pixels(richtext::kTwipsPerPoint) * size / 1000.0;
}

int TextLook::scaled(int length) const {
    return static_cast<int>(std::lround(pixels(length * richtext::kTwipsPerPoint)));
}

QColor TextLook::readableOnAllGrounds(QColor color) const {
    for (const auto& each : m_grounds) {
        color = readable(color, each, m_contrast);
    }
    return color;
}

} // namespace korvex::ui
