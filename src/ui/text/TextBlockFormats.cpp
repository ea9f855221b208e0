#include "ui/text/TextFormats.h"
#include "ui/text/TextSpacing.h"

namespace korvex::ui {

using namespace richtext;

QTextBlockFormat blockFormatOf(const ParagraphStyle& style, BlockKind kind, const TextLook& look) {
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

    if (!style.lists.empty()) {
        format.setProperty(kDepthProperty, static_cast<int>(style.lists.size()));
    }
    setKind(format, style, kind, look);
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

std::optional<HeadingLevel> headingOf(const QTextBlock& block) {
    const auto first = block.begin();
    const auto format = first.atEnd() ? block.charFormat() : first.fragment().charFormat();
    // What has no size of its own is none, as most paragraphs are.
    return format.hasProperty(kFontSizeProperty) ? headingLevel(attributesOf(format).font)
                                                 : std::nullopt;
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
