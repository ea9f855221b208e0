#pragma once

#include "richtext/text/Attributes.h"
#include "richtext/text/HeadingLevel.h"
#include "ui/kit/theme/Theme.h"

#include <QColor>
#include <QFont>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>

namespace korvex::ui {

/// What a paragraph is to those above and below it.
enum class BlockKind : std::uint8_t { body, item, code, heading1, heading2, heading3 };
/// What is asked of a paragraph; the first that is so decides.
struct KindTraits {
    bool isCode = false;
    bool isItem = false;
    std::optional<richtext::HeadingLevel> heading;
};
BlockKind kindOf(const KindTraits& traits);
constexpr bool isHeading(BlockKind kind) {
    return kind >= BlockKind::heading1;
}

/// How formatted text looks in one appearance and one font size. A text's points are scaled so that
/// its base size is the theme's font. Every colour of text has a contrast of at least 4.5 to 1, in
/// high contrast 7 to 1, on every ground that text stands on, code and table headers among them. A
/// value.
struct TextLook {
    explicit TextLook(const Theme& theme);

    /// The font of everything that has none of its own.
    QFont font;
    QString monospacedFamily;
    QColor text;
    /// Of the markers of lists.
    QColor quiet;
    QColor link;
    QColor codeGround;
    QColor headerFill;
    QColor separator;
    QColor selection;
    QColor scrollHandle;

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

    /// The measures of the design in whole pixels, for the size of the text's letters.
    int space(Space space) const { return scaled(static_cast<int>(space)); }
    int extent(Extent extent) const { return scaled(static_cast<int>(extent)); }
    double radius(Radius radius) const { return scaled(static_cast<int>(radius)); }

    /// What one level of a list moves the text in by, in pixels: there is room for two digits.
    int listIndent() const { return space(Space::vast); }
    /// Around the text of a code block, on its ground, in pixels.
    int codePaddingBeside() const { return space(Space::large); }
    int codePaddingAbove() const { return space(Space::medium); }
    /// Between the text of a table's cell and its lines, in pixels.
    int cellPadding() const { return space(Space::medium); }
    /// How high a line of such a paragraph is at least, in whole pixels.
    int lineHeight(BlockKind kind) const;
    /// The size of the letters of such a paragraph, in pixels.
    double letterSize(BlockKind kind) const;
    /// What a line of body text has above and below what its letters need, in whole pixels.
    int halfLeading() const { return m_halfLeading; }

private:
    static constexpr std::size_t kSystemColors =
        static_cast<std::size_t>(richtext::SystemColor::red) + 1;

    int scaled(int length) const;
    QColor readableOnAllGrounds(QColor color) const;

    double m_pixelsPerTwip = 1;
    int m_halfLeading = 0;
    /// What a colour of text has to differ from its ground by.
    double m_contrast = 0;
    /// Text stands on these.
    std::array<QColor, 5> m_grounds;
    std::array<QColor, kSystemColors> m_foregrounds;
    std::array<QColor, kSystemColors> m_fills;
};

} // namespace korvex::ui
