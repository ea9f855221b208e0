#include "ui/text/TextFormats.h"

#include "richtext/code/CodeSyntax.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextSelection.h"

#include <QTextDocument>
#include <QTextFragment>

#include <algorithm>
#include <array>
#include <utility>

namespace korvex::ui {

namespace {

using namespace richtext;

constexpr QChar kFrameStart{0xfdd0};
constexpr QChar kFrameEnd{0xfdd1};

struct DrawnLine {
    LineStyle style;
    QTextCharFormat::UnderlineStyle drawn;
};
constexpr std::array kUnderlines{
    DrawnLine{LineStyle::none, QTextCharFormat::NoUnderline},
    DrawnLine{LineStyle::single, QTextCharFormat::SingleUnderline},
    DrawnLine{LineStyle::thick, QTextCharFormat::SingleUnderline},
    DrawnLine{LineStyle::doubled, QTextCharFormat::SingleUnderline},
    DrawnLine{LineStyle::dotted, QTextCharFormat::DotLine},
    DrawnLine{LineStyle::dashed, QTextCharFormat::DashUnderline},
    DrawnLine{LineStyle::dashDotted, QTextCharFormat::DashDotLine},
    DrawnLine{LineStyle::dashDotDotted, QTextCharFormat::DashDotDotLine},
};

LineStyle lineStyle(int number) {
    return number < 0 || number > static_cast<int>(LineStyle::dashDotDotted)
               ? LineStyle::single
               : static_cast<LineStyle>(number);
}

LineStyle underlineOf(const QTextCharFormat& format) {
    const auto drawn = format.underlineStyle();
    if (drawn == QTextCharFormat::NoUnderline) {
        return LineStyle::none;
    }
    if (format.hasProperty(kUnderlineProperty)) {
        return lineStyle(format.intProperty(kUnderlineProperty));
    }
    const auto* const known =
        std::find_if(kUnderlines.begin(), kUnderlines.end(),
                     [&](const DrawnLine& line) { return line.drawn == drawn; });
    return known == kUnderlines.end() ? LineStyle::single : known->style;
}

uint packed(const Color& color) {
    return static_cast<uint>(color.name) << 24U | static_cast<uint>(color.red) << 16U |
           static_cast<uint>(color.green) << 8U | color.blue;
}

std::optional<Color> colorIn(const QTextCharFormat& format, TextProperty property) {
    if (!format.hasProperty(property)) {
        return std::nullopt;
    }
    const auto value = format.property(property).toUInt();
    return Color{.name = static_cast<SystemColor>(value >> 24U),
                 .red = static_cast<std::uint8_t>(value >> 16U),
                 .green = static_cast<std::uint8_t>(value >> 8U),
                 .blue = static_cast<std::uint8_t>(value)};
}

void setLines(QTextCharFormat& format, const CharacterAttributes& attributes) {
    const auto isLink = !attributes.link.empty();
    const auto wanted = attributes.underline;
    if (isLink || wanted != LineStyle::none) {
        const auto drawn = wanted == LineStyle::none ? LineStyle::single : wanted;
        format.setUnderlineStyle(kUnderlines[static_cast<std::size_t>(drawn)].drawn);
        if (underlineOf(format) != wanted) {
            format.setProperty(kUnderlineProperty, static_cast<int>(wanted));
        }
    }
    if (attributes.strikethrough != LineStyle::none) {
        format.setFontStrikeOut(true);
        if (attributes.strikethrough != LineStyle::single) {
            format.setProperty(kStrikethroughProperty, static_cast<int>(attributes.strikethrough));
        }
    }
}

void setColors(QTextCharFormat& format, const CharacterAttributes& attributes,
               const TextLook& look) {
    if (attributes.foreground) {
        format.setProperty(kForegroundProperty, packed(*attributes.foreground));
    }
    if (attributes.background) {
        format.setProperty(kBackgroundProperty, packed(*attributes.background));
    }
    if (!attributes.link.empty()) {
        format.setForeground(look.link);
    } else if (attributes.foreground) {
        format.setForeground(look.foreground(*attributes.foreground));
    }
    // The ground of code is not the characters': `paintUnderText` draws it.
    if (attributes.background && !attributes.isCode()) {
        format.setBackground(look.fill(*attributes.background));
    }
}

/// The table whose cell or end stands before the block. Within a step of undo, unlike a cursor's
/// current table, which is known only after it.
const QTextTable* tableBefore(const QTextBlock& block) {
    return qobject_cast<const QTextTable*>(
        block.document()->object(block.charFormat().objectIndex()));
}

} // namespace

QTextCharFormat charFormatOf(const CharacterAttributes& attributes, const TextLook& look) {
    QTextCharFormat format;
    const auto& font = attributes.font;
    if (font.family == FontFamily::monospaced) {
        format.setFontFixedPitch(true);
        format.setFontFamilies({look.monospacedFamily});
    }
    if (font.isBold) {
        format.setFontWeight(QFont::Bold);
    }
    if (font.isItalic) {
        format.setFontItalic(true);
    }
    if (font.size != kBaseFontSize) {
        // Nothing that a file says makes a text unreadable or larger than the screen.
        format.setFontPointSize(look.pointSize(std::clamp(font.size, 4'000, 96'000)));
        format.setProperty(kFontSizeProperty, font.size);
    }
    if (!attributes.link.empty()) {
        format.setAnchor(true);
        format.setAnchorHref(toQString(attributes.link));
    }
    if (attributes.isCode()) {
        format.setProperty(kCodeLanguageProperty, toQString(attributes.korvexCodeLanguage));
    }
    if (attributes.korvexCodeBlock) {
        format.setProperty(kCodeBlockProperty, true);
    }
    if (attributes.isAttachment) {
        format.setProperty(kAttachmentProperty, true);
    }
    setLines(format, attributes);
    setColors(format, attributes, look);
    return format;
}

CharacterAttributes attributesOf(const QTextCharFormat& format) {
    CharacterAttributes result;
    result.font.family = format.fontFixedPitch() ? FontFamily::monospaced : FontFamily::system;
    result.font.isBold = format.fontWeight() >= QFont::DemiBold;
    result.font.isItalic = format.fontItalic();
    if (format.hasProperty(kFontSizeProperty)) {
        result.font.size = format.intProperty(kFontSizeProperty);
    }
    result.underline = underlineOf(format);
    if (format.fontStrikeOut()) {
        result.strikethrough = format.hasProperty(kStrikethroughProperty)
                                   ? lineStyle(format.intProperty(kStrikethroughProperty))
                                   : LineStyle::single;
    }
    if (format.isAnchor()) {
        result.link = toUtf8(format.anchorHref());
    }
    result.korvexCodeLanguage = toUtf8(format.stringProperty(kCodeLanguageProperty));
    result.korvexCodeBlock = format.boolProperty(kCodeBlockProperty);
    result.foreground = colorIn(format, kForegroundProperty);
    result.background = colorIn(format, kBackgroundProperty);
    result.isAttachment = format.boolProperty(kAttachmentProperty);
    return result;
}

void setEndAttributes(const QTextBlock& block, const CharacterAttributes& attributes,
                      const TextLook& look) {
    auto format = charFormatOf(attributes, look);
    if (const auto* const table = tableBefore(block)) {
        auto cell = table->cellAt(block.position());
        if (cell.isValid() && cell.firstPosition() == block.position()) {
            // The character before it is the cell itself.
            auto cellFormat = cell.format().toTableCellFormat();
            for (const int property :
                 {int{QTextFormat::FontFixedPitch}, int{QTextFormat::FontFamilies},
                  int{QTextFormat::FontWeight}, int{QTextFormat::FontItalic},
                  int{QTextFormat::FontPointSize}, int{QTextFormat::FontStrikeOut},
                  int{QTextFormat::TextUnderlineStyle}, int{QTextFormat::IsAnchor},
                  int{QTextFormat::AnchorHref}, int{QTextFormat::ForegroundBrush},
                  int{kUnderlineProperty}, int{kStrikethroughProperty}, int{kFontSizeProperty},
                  int{kCodeLanguageProperty}, int{kCodeBlockProperty}, int{kForegroundProperty},
                  int{kBackgroundProperty}, int{kAttachmentProperty}}) {
                cellFormat.clearProperty(property);
            }
            format.clearBackground(); // would be the cell's fill
            cellFormat.merge(format);
            if (cellFormat != cell.format()) {
                cell.setFormat(cellFormat);
            }
            return;
        }
    }
    if (format != block.charFormat()) {
        QTextCursor(block).setBlockCharFormat(format);
    }
}

void changeAttributes(QTextCursor& cursor, const TextLook& look,
                      const std::function<void(CharacterAttributes&)>& change) {
    const auto changed = [&](const QTextCharFormat& format) {
        auto attributes = attributesOf(format);
        change(attributes);
        return attributes;
    };
    if (!cursor.hasSelection()) {
        cursor.setCharFormat(charFormatOf(changed(cursor.charFormat()), look));
        return;
    }
    const auto start = startOf(cursor);
    const auto end = cursor.selectionEnd();
    QTextCursor editing(cursor.document());
    editing.beginEditBlock();
    for (auto block = cursor.document()->findBlock(start);
         block.isValid() && block.position() < end; block = block.next()) {
        struct Run {
            int start;
            int end;
            QTextCharFormat format;
        };
        std::vector<Run> runs;
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const auto fragment = it.fragment();
            const auto from = std::max(start, fragment.position());
            const auto to = std::min(end, fragment.position() + fragment.length());
            if (from < to) {
                runs.push_back({from, to, fragment.charFormat()});
            }
        }
        for (const auto& run : runs) {
            editing.setPosition(run.start);
            editing.setPosition(run.end, QTextCursor::KeepAnchor);
            auto format = charFormatOf(changed(run.format), look);
            if (run.format.hasProperty(kUnitProperty)) {
                format.setProperty(kUnitProperty, run.format.property(kUnitProperty));
            }
            // A change that changes nothing would be a step of undo all the same.
            if (format != run.format) {
                editing.setCharFormat(format);
            }
        }
        if (block.position() + block.length() <= end) {
            setEndAttributes(block, changed(block.charFormat()), look);
        }
    }
    editing.endEditBlock();
}

std::vector<QTextBlock> blocksBesideTables(const QTextDocument& document) {
    std::vector<QTextBlock> result;
    auto frames = document.rootFrame()->childFrames();
    while (!frames.isEmpty()) {
        const auto* const frame = frames.takeLast();
        frames += frame->childFrames();
        for (const auto position : {frame->firstPosition() - 1, frame->lastPosition() + 1}) {
            if (const auto block = document.findBlock(position); block.isValid()) {
                result.push_back(block);
            }
        }
    }
    return result;
}

bool isGap(const QTextBlock& block) {
    if (block.length() != 1 || !block.blockFormat().boolProperty(kGapProperty)) {
        return false;
    }
    const auto& document = *block.document();
    const auto position = block.position();
    const auto before = position == 0 ? kFrameStart : document.characterAt(position - 1);
    const auto after = document.characterAt(position);
    if (after == kFrameStart && (before == kFrameStart || before == kFrameEnd)) {
        // The next cell begins with the same character as a table.
        const auto next = block.next();
        const auto* const table = tableBefore(next);
        if (table && table->firstPosition() == next.position()) {
            return true;
        }
    }
    return before == kFrameEnd && (after == kFrameStart || after == kFrameEnd);
}

} // namespace korvex::ui
