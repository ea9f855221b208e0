#pragma once

#include "richtext/text/Attributes.h"
#include "ui/kit/theme/Theme.h"

#include <QColor>
#include <QFont>
#include <QString>

#include <array>

namespace korvex::ui {

/// How formatted text looks in one appearance and one font size. A text's points are scaled so that
/// its base size is the theme's font. Every colour of text has a contrast of at least 4.5 to 1 on
/// every ground that text stands on, code and table headers among them. A value.
struct TextLook {
    explicit TextLook(const Theme& theme);

    /// The font of everything that has none of its own.
    QFont font;
    QString monospacedFamily;
    QColor text;
    QColor link;
    QColor codeGround;
    QColor headerFill;
    QColor separator;

    /// The length in pixels; fractions of a pixel stay.
    double pixels(richtext::Twips length) const { return length * m_pixelsPerTwip; }
    /// The size in points of the screen.
    double pointSize(richtext::MilliPoints size) const {
        return font.pointSizeF() * size / richtext::kBaseFontSize;
    }
    QFont fontOf(const richtext::Font& wanted) const;

    /// What a text of this colour is drawn in.
    QColor foreground(const richtext::Color& color) const;
    /// What a ground, a fill or a line of this colour is drawn in.
    QColor fill(const richtext::Color& color) const;

    /// What one level of a list moves the text in by, in pixels.
    double listIndent() const { return pixels(24 * richtext::kTwipsPerPoint); }
    /// Around the text of a code block, on its ground, in pixels.
    double codePadding() const { return pixels(8 * richtext::kTwipsPerPoint); }

private:
    static constexpr std::size_t kSystemColors =
        static_cast<std::size_t>(richtext::SystemColor::red) + 1;

    QColor readableOnAllGrounds(QColor color) const;

    double m_pixelsPerTwip = 1;
    /// Text stands on these.
    std::array<QColor, 5> m_grounds;
    std::array<QColor, kSystemColors> m_foregrounds;
    std::array<QColor, kSystemColors> m_fills;
};

} // namespace korvex::ui
