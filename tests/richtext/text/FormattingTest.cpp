#include "richtext/text/Formatting.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace korvex::tests {

namespace {

using namespace richtext;

constexpr Font kMonospaced{.family = FontFamily::monospaced};

} // namespace

TEST(Formatting, CodeTakesItsLookAndKeepsLinksAndLines) {
    CharacterAttributes attributes{.font = {.isBold = true, .size = 20'000},
                                   .underline = LineStyle::single,
                                   .link = "https://korvex.example",
                                   .foreground = Color{.red = 200}};
    applyCode(attributes, "cpp", CodeKind::inlineCode);
    EXPECT_EQ(attributes, (CharacterAttributes{.font = kMonospaced,
                                               .underline = LineStyle::single,
                                               .link = "https://korvex.example",
                                               .korvexCodeLanguage = "cpp"}));
    // What is code already is made bold on purpose.
    auto bold = attributes;
    bold.font.isBold = true;
    bold.font.isItalic = true;
    applyCode(bold, "c", CodeKind::block);
    EXPECT_EQ(bold.font,
              (Font{.family = FontFamily::monospaced, .isBold = true, .isItalic = true}));
    removeCode(attributes, HeadingLevel::level2);
    EXPECT_EQ(attributes, (CharacterAttributes{.font = fontOf(HeadingLevel::level2),
                                               .underline = LineStyle::single,
                                               .link = "https://korvex.example"}));
}

TEST(Formatting, AHeadingKeepsAParagraphsOwnFormatsAndACodeBlockHasNone) {
    ParagraphStyle style{.alignment = TextAlignment::center, .spacingAfter = 40, .lineSpacing = 7};
    applyHeading(HeadingLevel::level1, style, {});
    EXPECT_EQ(style, (ParagraphStyle{.alignment = TextAlignment::center,
                                     .spacingBefore = spacingBeforeOf(HeadingLevel::level1),
                                     .spacingAfter = 40,
                                     .lineSpacing = 7}));
    style.lists = {std::make_shared<TextList>()};
    style.leftIndent = 720;
    applyCodeBlock(style);
    EXPECT_EQ(style, (ParagraphStyle{.lineSpacing = kCodeBlockLineSpacing}));
    applyBodyText(style, {.isCodeBlock = true});
    EXPECT_EQ(style, ParagraphStyle());
}

TEST(Formatting, OnlyWhatWasAHeadingOrACodeBlockLosesItsSpacing) {
    const ParagraphStyle spaced{.spacingBefore = 240, .lineSpacing = kCodeBlockLineSpacing};
    struct Case {
        ParagraphKind former;
        ParagraphStyle expected;
    };
    const std::vector<Case> cases{
        {{}, spaced},
        {{.isHeading = true}, {.lineSpacing = kCodeBlockLineSpacing}},
        {{.isCodeBlock = true}, {.spacingBefore = 240}},
    };
    for (const auto& each : cases) {
        auto style = spaced;
        applyHeading(std::nullopt, style, each.former);
        EXPECT_EQ(style, each.expected);
    }
}

TEST(Formatting, BodyTextKeepsWhatIsBoldUnlessAHeadingWas) {
    const std::vector<std::pair<CharacterAttributes, CharacterAttributes>> cases{
        {{.font = fontOf(HeadingLevel::level3), .link = "x:y"}, {.link = "x:y"}},
        {{.font = {.isBold = true}}, {.font = {.isBold = true}}},
        {{.font = kMonospaced, .korvexCodeLanguage = "c", .korvexCodeBlock = true}, {}},
        {{.font = kMonospaced, .korvexCodeLanguage = "c"},
         {.font = kMonospaced, .korvexCodeLanguage = "c"}},
    };
    for (const auto& [before, after] : cases) {
        auto attributes = before;
        applyBodyText(attributes);
        EXPECT_EQ(attributes, after);
    }
}

TEST(Formatting, AParagraphIsACodeBlockWhenAllOfItIs) {
    const CharacterAttributes block{.korvexCodeLanguage = "c", .korvexCodeBlock = true};
    AttributedString text(u"all", block);
    text.append(u"\n", {}, {});
    text.append(u"part", block, {});
    text.append(u"ly\n", {}, {});
    text.append(u"\n", block, {});
    text.append(u"\n", {}, {});
    std::vector<bool> areBlocks;
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        areBlocks.push_back(isCodeBlock(text, paragraph.range));
    });
    EXPECT_EQ(areBlocks, (std::vector<bool>{true, false, true, false}));
}

} // namespace korvex::tests
