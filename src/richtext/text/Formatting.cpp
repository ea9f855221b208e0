#include "richtext/text/Formatting.h"

#include <string>
#include <utility>

namespace korvex::richtext {

namespace {

void setFont(CharacterAttributes& attributes, std::optional<HeadingLevel> level) {
    const auto isItalic = attributes.font.isItalic;
    attributes.font = level ? fontOf(*level) : Font();
    attributes.font.isItalic = isItalic;
}

} // namespace

bool countsAsCode(const CharacterAttributes& attributes) {
    return attributes.isCode() || attributes.font.family == FontFamily::monospaced;
}

bool isInlineCode(const CharacterAttributes& attributes) {
    return countsAsCode(attributes) && !attributes.korvexCodeBlock;
}

bool isCodeBlock(const AttributedString& text, TextRange paragraph) {
    if (paragraph.length > 1 && text.text()[paragraph.end() - 1] == u'\n') {
        --paragraph.length;
    }
    bool isBlock = true;
    text.forEachRun(paragraph, [&](const AttributedString::CharacterRun& run) {
        isBlock = isBlock && run.attributes.korvexCodeBlock;
    });
    return isBlock;
}

void ParagraphKind::add(const CharacterAttributes& attributes) {
    isHeading = isHeading || (!countsAsCode(attributes) && headingLevel(attributes.font));
    isCodeBlock = isCodeBlock || attributes.korvexCodeBlock;
}

ParagraphKind kindOf(const AttributedString& text, TextRange paragraph) {
    ParagraphKind kind;
    text.forEachRun(paragraph,
                    [&](const AttributedString::CharacterRun& run) { kind.add(run.attributes); });
    return kind;
}

void applyHeading(std::optional<HeadingLevel> level, CharacterAttributes& attributes) {
    // Monospaced text that names no language was never made code here.
    if (attributes.isCode() && !attributes.korvexCodeBlock) {
        return;
    }
    removeCode(attributes, std::nullopt);
    setFont(attributes, level);
}

void applyHeading(std::optional<HeadingLevel> level, ParagraphStyle& style, ParagraphKind former) {
    if (level) {
        style.spacingBefore = spacingBeforeOf(*level);
    } else if (former.isHeading) {
        style.spacingBefore = 0;
    }
    if (former.isCodeBlock) {
        style.lineSpacing = 0;
    }
}

void applyBodyText(CharacterAttributes& attributes) {
    if (attributes.korvexCodeBlock) {
        removeCode(attributes, std::nullopt);
    }
    if (headingLevel(attributes.font)) {
        setFont(attributes, std::nullopt);
    }
}

void applyBodyText(ParagraphStyle& style, ParagraphKind former) {
    applyHeading(std::nullopt, style, former);
}

void clearFormats(CharacterAttributes& attributes) {
    attributes = {.link = std::exchange(attributes.link, {})};
}

void clearFormats(ParagraphStyle& style) {
    style = {.direction = style.direction, .cells = std::exchange(style.cells, {})};
}

void applyCode(CharacterAttributes& attributes, std::string_view language, CodeKind kind) {
    const auto wasCode = countsAsCode(attributes);
    attributes.font = {.family = FontFamily::monospaced,
                       .isBold = wasCode && attributes.font.isBold,
                       .isItalic = wasCode && attributes.font.isItalic};
    attributes.korvexCodeLanguage = std::string(language);
    attributes.korvexCodeBlock = kind == CodeKind::block;
    attributes.foreground.reset();
    attributes.background.reset();
}

void applyCodeBlock(ParagraphStyle& style) {
    style = {.direction = style.direction,
             .lineSpacing = kCodeBlockLineSpacing,
             .cells = std::exchange(style.cells, {})};
}

void removeCode(CharacterAttributes& attributes, std::optional<HeadingLevel> heading) {
    attributes.font.family = FontFamily::system;
    attributes.korvexCodeLanguage.clear();
    attributes.korvexCodeBlock = false;
    if (heading) {
        setFont(attributes, heading);
    }
}

} // namespace korvex::richtext
