#include "ui/text/TextFormats.h"

#include <algorithm>

namespace korvex::ui {

namespace {

using namespace richtext;

/// The longest distance that is taken from a file; half a screen.
constexpr Twips kLongest = 720 * kTwipsPerPoint;

} // namespace

QTextBlockFormat blockFormatOf(const ParagraphStyle& style, Ground ground, const TextLook& look) {
    QTextBlockFormat format;
    auto kept = style;
    kept.lists.clear();
    kept.cells.clear();
    kept.alignment = TextAlignment::natural;
    kept.direction = WritingDirection::natural;
    if (kept != ParagraphStyle{}) {
        format.setProperty(kStyleProperty, QVariant::fromValue(kept));
    }

    switch (style.alignment) {
    case TextAlignment::natural:
        break;
    case TextAlignment::left:
        format.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
        break;
    case TextAlignment::center:
        format.setAlignment(Qt::AlignHCenter);
        break;
    case TextAlignment::right:
        format.setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
        break;
    case TextAlignment::justified:
        format.setAlignment(Qt::AlignJustify);
        break;
    }
    if (style.direction != WritingDirection::natural) {
        format.setLayoutDirection(
            style.direction == WritingDirection::rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    }

    const auto padding = ground == Ground::code ? look.codePadding() : 0;
    const auto set = [](double value, auto&& setter) {
        if (value != 0) {
            setter(value);
        }
    };
    if (style.lists.empty()) {
        // What hangs out to the left must not leave the text's ground.
        set(look.pixels(std::clamp(style.leftIndent, 0, kLongest)) + padding,
            [&](double value) { format.setLeftMargin(value); });
        set(look.pixels(
                std::clamp(style.firstLineIndent, -std::max(style.leftIndent, 0), kLongest)),
            [&](double value) { format.setTextIndent(value); });
    } else {
        format.setProperty(kDepthProperty, static_cast<int>(style.lists.size()));
    }
    set(look.pixels(std::clamp(style.rightIndent, 0, kLongest)) + padding,
        [&](double value) { format.setRightMargin(value); });
    // The lines of a code block are so far apart, and the ground's edges so far from the first and
    // the last; of two neighbours Qt takes the larger distance.
    const auto distance = ground == Ground::code ? look.codePadding() / 2 : 0;
    set(std::max(look.pixels(std::clamp(style.spacingBefore, 0, kLongest)), distance),
        [&](double value) { format.setTopMargin(value); });
    set(std::max(look.pixels(std::clamp(style.spacingAfter, 0, kLongest)), distance),
        [&](double value) { format.setBottomMargin(value); });
    if (style.lineHeight < 0) {
        format.setLineHeight(look.pixels(std::clamp(-style.lineHeight, 80, kLongest)),
                             QTextBlockFormat::FixedHeight);
    } else if (style.lineHeight > 0) {
        format.setLineHeight(look.pixels(std::min(style.lineHeight, kLongest)),
                             QTextBlockFormat::MinimumHeight);
    } else if (style.lineHeightMultiple > 0) {
        format.setLineHeight(std::clamp(style.lineHeightMultiple, 120, 2'400) / 2.4,
                             QTextBlockFormat::ProportionalHeight);
    } else if (style.lineSpacing > 0 && ground == Ground::plain) {
        format.setLineHeight(look.pixels(std::min(style.lineSpacing, kLongest)),
                             QTextBlockFormat::LineDistanceHeight);
    }
    if (!style.tabStops.empty()) {
        QList<QTextOption::Tab> tabs;
        for (const auto stop : style.tabStops) {
            tabs.append(QTextOption::Tab(look.pixels(stop), QTextOption::LeftTab));
        }
        format.setTabPositions(tabs);
    }
    return format;
}

ParagraphStyle styleOf(const QTextBlockFormat& format) {
    auto result = format.property(kStyleProperty).value<ParagraphStyle>();
    if (format.hasProperty(QTextFormat::BlockAlignment)) {
        const auto alignment = format.alignment();
        if (alignment.testFlag(Qt::AlignHCenter)) {
            result.alignment = TextAlignment::center;
        } else if (alignment.testFlag(Qt::AlignJustify)) {
            result.alignment = TextAlignment::justified;
        } else if (alignment.testFlag(Qt::AlignRight)) {
            result.alignment = TextAlignment::right;
        } else if (alignment.testFlag(Qt::AlignAbsolute)) {
            result.alignment = TextAlignment::left;
        }
    }
    if (format.hasProperty(QTextFormat::LayoutDirection)) {
        switch (format.layoutDirection()) {
        case Qt::LeftToRight:
            result.direction = WritingDirection::leftToRight;
            break;
        case Qt::RightToLeft:
            result.direction = WritingDirection::rightToLeft;
            break;
        case Qt::LayoutDirectionAuto:
            break;
        }
    }
    return result;
}

bool isCodeBlock(const QTextBlock& block) {
    auto fragment = block.begin();
    if (fragment.atEnd()) {
        return block.charFormat().boolProperty(kCodeBlockProperty);
    }
    for (; !fragment.atEnd(); ++fragment) {
        if (!fragment.fragment().charFormat().boolProperty(kCodeBlockProperty)) {
            return false;
        }
    }
    return true;
}

} // namespace korvex::ui
