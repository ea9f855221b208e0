#include "ui/text/TextSpacing.h"

#include "ui/text/TextLines.h"

#include <QScopedValueRollback>
#include <QTextCursor>
#include <QTextFrame>

#include <algorithm>
#include <utility>
#include <vector>

namespace korvex::ui {

namespace {

using namespace richtext;

/// The longest distance that is taken from a file; half a screen.
constexpr Twips kLongest = 720 * kTwipsPerPoint;
/// The height of a line that nothing is said of, as a part of its letters' size: multiples in files
/// count from it.
constexpr double kNaturalHeight = 1.2;

double pixelsOf(Twips length, const TextLook& look) {
    return look.pixels(std::clamp(length, 0, kLongest));
}

int distance(BlockKind above, BlockKind below, const TextLook& look) {
    using enum BlockKind;
    if (above == code && below == code) {
        return 0;
    }
    const auto grounds = above == code || below == code ? look.codePaddingAbove() : 0;
    const auto between = [&] {
        if (isHeading(above)) {
            return Space::medium;
        }
        if (isHeading(below)) {
            return below == heading3 ? Space::large : Space::wide;
        }
        return above == below ? Space::small : Space::medium;
    }();
    return look.space(between) + grounds;
}

ParagraphStyle storedStyleOf(const QTextBlockFormat& format) {
    return format.property(kStyleProperty).value<ParagraphStyle>();
}

void setLineHeight(QTextBlockFormat& format, const ParagraphStyle& style, BlockKind kind,
                   const TextLook& look) {
    if (style.lineHeight < 0) {
        format.setLineHeight(look.pixels(std::clamp(-style.lineHeight, 80, kLongest)),
                             QTextBlockFormat::FixedHeight);
        return;
    }
    const auto multiple = std::clamp(style.lineHeightMultiple, 0, 2'400) / 240.0;
    auto height = std::max({static_cast<double>(look.lineHeight(kind)),
                            look.pixels(std::min(style.lineHeight, kLongest)),
                            look.letterSize(kind) * kNaturalHeight * multiple});
    if (kind != BlockKind::code) { // a code block's own spacing says no more than the design
        height += pixelsOf(style.lineSpacing, look);
    }
    format.setLineHeight(height, QTextBlockFormat::MinimumHeight);
}

QTextBlockFormat spaced(const QTextBlock& block, const TextLook& look) {
    auto format = block.blockFormat();
    auto style = storedStyleOf(format);
    const auto kind = kindOf(block);
    const auto isItem = block.textList() != nullptr;
    if (isItem) {
        style.lists.emplace_back(); // which is all that is asked of them
    }
    setKind(format, style, kind, look);
    if (const auto below = block.next(); isParagraphBelow(below)) {
        const auto asked =
            std::max(style.spacingAfter, storedStyleOf(below.blockFormat()).spacingBefore);
        format.setBottomMargin(std::max(static_cast<double>(distance(kind, kindOf(below), look)),
                                        pixelsOf(asked, look)));
    }
    return format;
}

struct Change {
    QTextBlock block;
    QTextBlockFormat format;
};

std::vector<Change> changesBetween(const QTextDocument& document, int from, int to,
                                   const TextLook& look) {
    std::vector<Change> result;
    auto block = document.findBlock(std::clamp(from, 0, document.characterCount() - 1));
    if (block.previous().isValid()) {
        block = block.previous();
    }
    for (; block.isValid() && block.position() <= to; block = block.next()) {
        if (!isGap(block)) {
            auto format = spaced(block, look);
            if (format != block.blockFormat()) {
                result.push_back({block, std::move(format)});
            }
        }
    }
    return result;
}

/// The frame of the whole text: half of a line's leading is taken from its top and given to its
/// foot, since Qt puts all of it over the letters; and the grounds of code lie within it.
QTextFrameFormat frameFor(const QTextDocument& document, const TextLook& look) {
    auto format = document.rootFrame()->frameFormat();
    const auto around = [&](const QTextBlock& edge) {
        return isCodeBlock(edge) ? look.codePaddingAbove() : 0;
    };
    format.setTopMargin(around(document.begin()) - look.halfLeading());
    format.setBottomMargin(around(document.lastBlock()) + look.halfLeading());
    return format;
}

void apply(QTextDocument& document, const std::vector<Change>& changes,
           const QTextFrameFormat& frame) {
    for (const auto& change : changes) {
        QTextCursor(change.block).setBlockFormat(change.format);
    }
    if (frame != document.rootFrame()->frameFormat()) {
        document.rootFrame()->setFrameFormat(frame);
    }
}

} // namespace

BlockKind kindOf(const QTextBlock& block) {
    return kindOf({.isCode = isCodeBlock(block),
                   .isItem = block.textList() != nullptr,
                   .heading = headingOf(block)});
}

void setKind(QTextBlockFormat& format, const ParagraphStyle& style, BlockKind kind,
             const TextLook& look) {
    const auto padding = kind == BlockKind::code ? look.codePaddingBeside() : 0;
    const auto isItem = !style.lists.empty(); // its list moves it in
    // What hangs out to the left must not leave the text's ground.
    format.setLeftMargin(padding + (isItem ? 0 : pixelsOf(style.leftIndent, look)));
    format.setTextIndent(isItem
                             ? 0
                             : look.pixels(std::clamp(style.firstLineIndent,
                                                      -std::max(style.leftIndent, 0), kLongest)));
    format.setRightMargin(padding + pixelsOf(style.rightIndent, look));
    format.setBottomMargin(std::max(static_cast<double>(distance(kind, kind, look)),
                                    pixelsOf(style.spacingAfter, look)));
    setLineHeight(format, style, kind, look);
}

void spaceParagraphs(QTextDocument& document, const TextLook& look) {
    apply(document, changesBetween(document, 0, document.characterCount(), look),
          frameFor(document, look));
}

TextSpacing::TextSpacing(QTextDocument& document, QObject* parent)
    : QObject(parent), m_document(document) {
    connect(&document, &QTextDocument::contentsChange, this,
            [this](int position, int, int added) { note(position, added); });
    connect(&document, &QTextDocument::contentsChanged, this, &TextSpacing::update);
}

void TextSpacing::note(int position, int added) {
    if (!m_isUpdating) {
        m_from = m_from < 0 ? position : std::min(m_from, position);
        m_to = std::max(m_to, position + added);
    }
}

void TextSpacing::update() {
    if (m_isUpdating || !m_look || m_from < 0) {
        return;
    }
    const auto from = std::exchange(m_from, -1);
    const auto to = std::exchange(m_to, -1);
    // A text that is set is spaced already, and what is taken back comes with its distances.
    if (!m_document.isUndoRedoEnabled() || m_document.isRedoAvailable()) {
        return;
    }
    const auto changes = changesBetween(m_document, from, to, *m_look);
    const auto frame = frameFor(m_document, *m_look);
    if (changes.empty() && frame == m_document.rootFrame()->frameFormat()) {
        return; // even an empty edit would be announced
    }
    const QScopedValueRollback updating(m_isUpdating, true);
    QTextCursor cursor(&m_document);
    cursor.joinPreviousEditBlock();
    apply(m_document, changes, frame);
    cursor.endEditBlock();
}

} // namespace korvex::ui
