#include "richtext/stored/RichTextSerializer.h"

#include "base/Utf16.h"
#include "model/EntryContentLimit.h"
#include "model/ServiceErrors.h"
#include "richtext/RandomText.h"
#include "richtext/TableNotation.h"
#include "richtext/code/CodeSyntax.h"
#include "richtext/stored/CodeMetadata.h"
#include "richtext/stored/EntryText.h"
#include "richtext/table/RichTextTable.h"
#include "support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace korvex::tests {

namespace {

using namespace richtext;
using Serializer = RichTextSerializer;
using model::EntryServiceErrorCase;

base::Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string string(const base::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

bool isTooLong(const auto& work) {
    try {
        work();
        return false;
    } catch (const model::EntryServiceError& error) {
        return error.which() == EntryServiceErrorCase::contentTooLong;
    }
}

/// As an editor or the clipboard may have it: with code, attachments and whatever else is stored
/// otherwise or not at all, and with the paragraphs of its tables mixed up.
AttributedString unstoredText(unsigned seed) {
    const auto sound = RandomText(seed).next();
    std::mt19937 random(seed);
    std::vector<AttributedString> pieces;
    sound.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        const auto place = random() % 3 == 0 ? random() % (pieces.size() + 1) : pieces.size();
        pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(place),
                      sound.slice(paragraph.range));
    });
    AttributedString text;
    for (const auto& piece : pieces) {
        text.append(piece);
    }
    for (auto count = random() % 12; count > 0; --count) {
        const std::string language =
            std::vector{"auto", "plaintext", "no language", ""}[random() % 4];
        const bool isBlock = random() % 2 == 0;
        const bool isAttachment = random() % 4 == 0;
        text.editAttributes({random() % (text.length() + 1), random() % 12},
                            [&](CharacterAttributes& attributes) {
                                attributes.korvexCodeLanguage = language;
                                attributes.korvexCodeBlock = isBlock;
                                attributes.isAttachment = isAttachment;
                                attributes.font.size = 22'000;
                            });
    }
    return text;
}

class RichTextSerializerTest : public testing::Test {
protected:
    RecordingLog m_log;
    Serializer m_serializer{m_log};

    AttributedString stored(const AttributedString& text) {
        return m_serializer.decode(m_serializer.encode(text));
    }
};

} // namespace

TEST(RichTextNormalization, ReducesEveryRunToWhatIsStored) {
    const auto mono = FontFamily::monospaced;
    const auto red = Color{.red = 255};
    struct Case {
        CharacterAttributes before;
        CharacterAttributes after;
    };
    const std::vector<Case> cases{
        {{.font = {.size = 9'000}}, {}},
        {{.font = {.isBold = true, .isItalic = true, .size = 40'000}},
         {.font = {.isBold = true, .isItalic = true}}},
        {{.font = {.isBold = true, .size = 22'000}}, {.font = {.isBold = true, .size = 20'000}}},
        {{.font = {.isBold = true, .isItalic = true, .size = 17'000}},
         {.font = {.isBold = true, .isItalic = true, .size = 17'000}}},
        {{.font = {.isBold = true, .size = 15'000}}, {.font = {.isBold = true, .size = 15'000}}},
        {{.font = {.size = 20'000}}, {}},
        {{.font = {.family = mono, .isBold = true, .size = 20'000}},
         {.font = {.family = mono, .isBold = true}}},
        {{.foreground = red, .background = Color::named(SystemColor::label)}, {}},
        {{.underline = LineStyle::doubled, .strikethrough = LineStyle::dotted, .link = "x:y"},
         {.underline = LineStyle::doubled, .strikethrough = LineStyle::dotted, .link = "x:y"}},
        {{.font = {.isBold = true, .isItalic = true, .size = 17'000},
          .link = "x:y",
          .korvexCodeLanguage = "swift",
          .foreground = red},
         {.font = {.family = mono, .isBold = true, .isItalic = true},
          .link = "x:y",
          .korvexCodeLanguage = "swift"}},
        {{.korvexCodeLanguage = "no language", .korvexCodeBlock = true},
         {.font = {.family = mono}, .korvexCodeLanguage = "auto", .korvexCodeBlock = true}},
        {{.korvexCodeBlock = true}, {}},
    };
    AttributedString before;
    AttributedString after;
    for (const auto& each : cases) {
        before.append(u"ab", each.before, {});
        after.append(u"ab", each.after, {});
    }
    // Among them a code block, whose paragraph this is.
    after.editStyles({0, 1},
                     [](ParagraphStyle& style) { style.lineSpacing = kCodeBlockLineSpacing; });
    EXPECT_TRUE(Serializer::normalized(before).isEquivalentTo(after));
}

TEST(RichTextNormalization, AttachmentsGoAndTablesStayWhole) {
    const CharacterAttributes attachment{.isAttachment = true};
    AttributedString text(u"one\nt\uFFFCwo\n\uFFFC");
    for (const std::size_t offset : {5U, 9U}) {
        text.editAttributes({offset, 1}, [&](auto& attributes) { attributes = attachment; });
    }
    EXPECT_EQ(Serializer::normalized(text).text(), u"one\ntwo\n");
    EXPECT_TRUE(Serializer::normalized(AttributedString(u"\uFFFC\n", attachment)).isEmpty());

    // The end of a cell among them.
    text = TableNotation().text({"A00:a", "A01:b", "A10:c", "A11:d", ":x"});
    text.editAttributes({3, 1}, [&](auto& attributes) { attributes = attachment; });
    EXPECT_EQ(TableNotation::lines(Serializer::normalized(text)),
              (std::vector<std::string>{"A00:a", "A01:bc", "A10:", "A11:d", ":x"}));
}

TEST(RichTextNormalization, ParagraphsWithCodeBlocksGetTheirSpacing) {
    const CharacterAttributes block{.korvexCodeLanguage = "c", .korvexCodeBlock = true};
    const CharacterAttributes inlined{.korvexCodeLanguage = "c"};
    AttributedString text(u"plain\n", {}, {.lineSpacing = 7});
    text.append(u"inline\n", inlined, {.lineSpacing = 8});
    text.append(u"words ", {}, {.lineSpacing = 9});
    text.append(u"code\ncode\n", block, {.leftIndent = 5});
    text.append(u"code", block, {.lineSpacing = kCodeBlockLineSpacing});
    std::vector<ParagraphStyle> styles;
    Serializer::normalized(text).forEachParagraph(
        [&](const auto& paragraph) { styles.push_back(paragraph.style); });
    constexpr auto kSpacing = kCodeBlockLineSpacing;
    EXPECT_EQ(styles, (std::vector<ParagraphStyle>{{.lineSpacing = 7},
                                                   {.lineSpacing = 8},
                                                   {.lineSpacing = kSpacing},
                                                   {.leftIndent = 5, .lineSpacing = kSpacing},
                                                   {.lineSpacing = kSpacing}}));
}

TEST(RichTextNormalization, ASecondTimeChangesNothing) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const auto text = unstoredText(seed);
        const auto once = Serializer::normalized(text);
        ASSERT_TRUE(Serializer::normalized(once).isEquivalentTo(once));
        once.forEachRun([&](const AttributedString::CharacterRun& run) {
            const auto& attributes = run.attributes;
            ASSERT_FALSE(attributes.isAttachment);
            ASSERT_FALSE(attributes.foreground || attributes.background);
            ASSERT_TRUE(attributes.font.size == kBaseFontSize || headingLevel(attributes.font));
        });
    }
}

TEST(RichTextHeadings, ATextIsAHeadingWhenAllOfItIs) {
    const CharacterAttributes second{.font = fontOf(HeadingLevel::level2)};
    const CharacterAttributes third{.font = fontOf(HeadingLevel::level3)};
    using Parts = std::vector<std::pair<std::u16string, CharacterAttributes>>;
    for (const auto& [parts, level] : std::vector<std::pair<Parts, std::optional<HeadingLevel>>>{
             {{}, std::nullopt},
             {{{u"\n", second}}, std::nullopt},
             {{{u"words", second}}, HeadingLevel::level2},
             {{{u"\n", {}}, {u"words", third}, {u"\n\n", second}}, HeadingLevel::level3},
             {{{u"words", second}, {u" ", {}}}, std::nullopt},
             {{{u"words", {}}, {u"words", second}}, std::nullopt},
             {{{u"words", second}, {u"words", third}}, std::nullopt},
             {{{u"words", {.font = {.size = 20'000}}}}, std::nullopt},
             {{{u"words", {.font = {.isBold = true, .size = 22'000}}}}, HeadingLevel::level1},
         }) {
        AttributedString text;
        for (const auto& [units, attributes] : parts) {
            text.append(units, attributes, {});
        }
        EXPECT_EQ(Serializer::headingLevel(text), level);
    }
}

TEST(RichTextHeadings, AreFontsAndASpaceBefore) {
    AttributedString text(u"one\n", {.font = {.isItalic = true}}, {.spacingAfter = 3});
    text.append(u"two", {.font = {.family = FontFamily::monospaced, .size = 9'000}, .link = "x:y"},
                {});
    for (const auto level : kHeadingLevels) {
        const auto heading = Serializer::applyingHeading(level, text);
        EXPECT_EQ(Serializer::headingLevel(heading), level);
        auto italic = fontOf(level);
        italic.isItalic = true;
        EXPECT_EQ(heading.attributesAt(0).font, italic);
        EXPECT_EQ(heading.attributesAt(5),
                  (CharacterAttributes{.font = fontOf(level), .link = "x:y"}));
        EXPECT_EQ(heading.styleAt(0),
                  (ParagraphStyle{.spacingBefore = spacingBeforeOf(level), .spacingAfter = 3}));
        EXPECT_TRUE(Serializer::normalized(heading).isEquivalentTo(heading));

        const auto body = Serializer::applyingHeading(std::nullopt, heading);
        EXPECT_EQ(body.attributesAt(0).font, Font{.isItalic = true});
        EXPECT_EQ(body.attributesAt(5), CharacterAttributes{.link = "x:y"});
        EXPECT_EQ(body.styleAt(0), ParagraphStyle{.spacingAfter = 3});
    }
    // Each paragraph for itself, though their styles are one.
    const ParagraphStyle style{.spacingBefore = spacingBeforeOf(HeadingLevel::level1)};
    text = AttributedString(u"heading\n", {.font = fontOf(HeadingLevel::level1)}, style);
    text.append(u"spaced\n", {}, style);
    const auto body = Serializer::applyingHeading(std::nullopt, text);
    EXPECT_EQ(body.styleAt(0), ParagraphStyle());
    EXPECT_EQ(body.styleAt(8), style);
}

TEST(RichTextHeadings, EndCodeBlocksAndAreShownAsTheyAreStored) {
    const CharacterAttributes block{.korvexCodeLanguage = "c", .korvexCodeBlock = true};
    AttributedString text(u"Use ");
    text.append(u"f()", {.korvexCodeLanguage = "c"}, {});
    text.append(u"\n", {}, {});
    text.append(u"code", block, {});
    const auto stored = Serializer::normalized(text);
    for (const std::optional<HeadingLevel> level : {std::optional(HeadingLevel::level1), {}}) {
        const auto heading = Serializer::applyingHeading(level, stored);
        EXPECT_TRUE(Serializer::normalized(heading).isEquivalentTo(heading));
        EXPECT_EQ(heading.attributesAt(4), stored.attributesAt(4));
        EXPECT_EQ(heading.attributesAt(8),
                  CharacterAttributes{.font = level ? fontOf(*level) : Font()});
        EXPECT_EQ(heading.styleAt(8),
                  ParagraphStyle{.spacingBefore = level ? spacingBeforeOf(*level) : 0});
    }
}

TEST(RichTextLinks, OnlyThreeSchemesAreOpened) {
    for (const auto* const link :
         {"http://example.org", "HTTPS://example.org/?q=\u00e9", "MailTo:a@example.org"}) {
        EXPECT_TRUE(canOpenLink(link)) << link;
    }
    for (const auto* const link :
         {"", "https", "ftp://example.org", "file:///etc/passwd", "javascript:alert(1)",
          "korvex://board/inbox", "example.org", "//example.org", " https://example.org",
          "https ://example.org", "https://example.org\nx", ":https", "xhttps://example.org"}) {
        EXPECT_FALSE(canOpenLink(link)) << link;
    }
}

TEST_F(RichTextSerializerTest, CharactersAndBytesHaveALimitEach) {
    constexpr auto kMost = model::EntryContentLimit::kMaximumCharacters;
    // Three units and five bytes that are one character.
    std::u16string accents;
    for (std::size_t i = 0; i < kMost; ++i) {
        accents += u"a\u0301\u0301";
    }
    for (const auto& most : {std::u16string(kMost, u'x'), accents}) {
        EXPECT_EQ(stored(AttributedString(most)).text(), most);
        EXPECT_TRUE(isTooLong([&] { m_serializer.encode(AttributedString(most + u"x")); }));
    }
    std::u16string large = u"a" + std::u16string(1'048'576 / 2 - 1, u'\u0301');
    EXPECT_TRUE(Serializer::isWithinLimits(large + u"b"));
    EXPECT_FALSE(Serializer::isWithinLimits(large + u"bc"));
    EXPECT_TRUE(isTooLong([&] { m_serializer.encode(AttributedString(large + u"bc")); }));
    // Half of the units, but the same bytes.
    EXPECT_FALSE(Serializer::isWithinLimits(u"a" + std::u16string(349'526, u'\uFE0F')));
    EXPECT_FALSE(Serializer::isWithinLimits(std::u16string(1'048'577, u'\n')));
}

TEST_F(RichTextSerializerTest, WhatNormalizingAddsCountsToo) {
    auto text = AttributedString(std::u16string(9'999, u'x') + u"\n");
    EXPECT_NO_THROW(m_serializer.encode(text));
    text.editStyles({0, 1}, [](ParagraphStyle& style) {
        const auto table = std::make_shared<TextTable>(TextTable{.columns = 2});
        style.cells = {std::make_shared<TextTableCell>(TextTableCell{.table = table})};
    });
    EXPECT_TRUE(isTooLong([&] { m_serializer.encode(text); }));
}

TEST_F(RichTextSerializerTest, TheStoredFormHasALimitBothWays) {
    AttributedString text;
    for (int i = 0; i < 9'000; ++i) {
        text.append(
            u"x", {.link = "https://example.org/" + std::string(100, 'x') + std::to_string(i)}, {});
    }
    EXPECT_TRUE(isTooLong([&] { m_serializer.encode(text); }));
    const base::Bytes large(1'048'577, '{');
    EXPECT_TRUE(isTooLong([&] { m_serializer.decode(large); }));
    // A short document of a long text.
    const auto words = bytes("{\\rtf1 " + std::string(10'001, 'x') + "}");
    EXPECT_TRUE(isTooLong([&] { m_serializer.decode(words); }));
}

TEST_F(RichTextSerializerTest, CodeRunsComeBackUnlessTheTextWasChangedElsewhere) {
    AttributedString text(u"Say ");
    text.append(u"print", {.font = {.isBold = true}, .korvexCodeLanguage = "swift"}, {});
    text.append(u"(x)", {.font = {.isItalic = true}, .korvexCodeLanguage = "swift"}, {});
    text.append(u" twice:\n", {}, {});
    text.append(u"print(x)\nprint(x)\n", {.korvexCodeLanguage = "auto", .korvexCodeBlock = true},
                {});
    const auto data = m_serializer.encode(text);
    EXPECT_TRUE(m_serializer.decode(data).isEquivalentTo(Serializer::normalized(text)));

    auto changed = string(data);
    changed.replace(changed.find("twice"), 5, "thric");
    const auto decoded = m_serializer.decode(bytes(changed));
    EXPECT_EQ(decoded.text(), u"Say print(x) thric:\nprint(x)\nprint(x)\n");
    decoded.forEachRun(
        [](const AttributedString::CharacterRun& run) { EXPECT_FALSE(run.attributes.isCode()); });
    // What looked like code still does.
    EXPECT_EQ(CodeSyntax::language(decoded.attributesAt(4)), "auto");

    const auto plain = string(m_serializer.encode(AttributedString(u"no code")));
    EXPECT_EQ(plain.find("korvexcode"), std::string::npos);
}

TEST_F(RichTextSerializerTest, ATextThatLooksLikeTheGroupIsText) {
    const AttributedString text(u"{\\*\\korvexcode YWJj}",
                                {.link = "https://example.org/{\\*\\korvexcode }"}, {});
    EXPECT_TRUE(stored(text).isEquivalentTo(text));
}

TEST_F(RichTextSerializerTest, OlderHeadingsOf22PointsAreStoredWith20) {
    const auto data = bytes("{\\rtf1\\ansi{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica-Bold;}"
                            "\\f0\\b\\fs44 Old}");
    const auto text = m_serializer.decode(data);
    EXPECT_EQ(text.text(), u"Old");
    EXPECT_EQ(text.attributesAt(0).font, fontOf(HeadingLevel::level1));
    EXPECT_TRUE(stored(text).isEquivalentTo(text));
}

TEST_F(RichTextSerializerTest, TablesKeepTheirWidths) {
    const auto text = RichTextTable::make(3, 4);
    auto grid = *RichTextTable::Grid::read(text, outerTables(text)[0]);
    grid.apply({.kind = RichTextTable::Grid::Edit::Kind::resizeColumn, .index = 2, .width = 4'321});
    const auto resized = grid.attributedString();
    EXPECT_TRUE(stored(resized).isEquivalentTo(resized));
}

TEST_F(RichTextSerializerTest, AnythingComesBackAsItWasStoredAndIsStoredTheSameAgain) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const auto text = unstoredText(seed);
        const auto data = m_serializer.encode(text);
        const auto decoded = m_serializer.decode(data);
        ASSERT_TRUE(decoded.isEquivalentTo(Serializer::normalized(text))) << string(data);
        ASSERT_EQ(string(m_serializer.encode(decoded)), string(data));
    }
}

TEST_F(RichTextSerializerTest, EvenWhatNoTextShouldHoldSettlesWhenItIsStored) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const auto text = stored(RandomText(seed, RandomText::Kind::broken).next());
        const auto data = m_serializer.encode(text);
        ASSERT_EQ(string(m_serializer.encode(m_serializer.decode(data))), string(data));
    }
}

TEST_F(RichTextSerializerTest, DamagedOrMissingDataShowsThePlainText) {
    const auto plain = [&](const std::optional<base::Bytes>& data, std::string_view fallback) {
        return m_serializer.richText(data, fallback);
    };
    const auto words = Serializer::plainRichText("w\u00f6rds\r\nof an entry");
    EXPECT_EQ(words.text(), u"w\u00f6rds\r\nof an entry");
    EXPECT_EQ(words.attributesAt(0), CharacterAttributes());
    EXPECT_TRUE(plain(std::nullopt, "w\u00f6rds\r\nof an entry").isEquivalentTo(words));
    EXPECT_EQ(plain(base::Bytes(), "words").text(), u"words");
    EXPECT_EQ(plain(base::Bytes(1'048'577, ' '), "words").text(), u"words");
    EXPECT_EQ(plain(bytes("{\\rtf1 stored}"), "words").text(), u"stored");
    EXPECT_EQ(m_log.lines().size(), 0U);

    m_log.expectError("Unable to decode stored rich text; using plain-text fallback: ");
    EXPECT_EQ(plain(bytes("no document"), "words").text(), u"words");
    const auto tooLong = bytes("{\\rtf1 " + std::string(10'001, 'x') + "}");
    EXPECT_EQ(plain(tooLong, "words").text(), u"words");
    const auto lines = m_log.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1].message, "Unable to decode stored rich text; using plain-text fallback: "
                                "Korvex.EntryService (1)");

    // A plain text that is too long itself is previewed, whatever the data.
    const std::string longText(10'001, 'y');
    EXPECT_EQ(plain(bytes("{\\rtf1 stored}"), longText).text(), std::u16string(500, u'y'));
}

TEST_F(RichTextSerializerTest, FilesAreAttachedToTodosAndToTextsThatAreNoHeadings) {
    const auto allows = [&](std::string type, std::string content,
                            std::optional<AttributedString> text) {
        model::EntryFields fields;
        fields.typeRawValue = std::move(type);
        fields.content = std::move(content);
        if (text) {
            fields.richTextData = m_serializer.encode(*text);
        }
        return allowsAttachments(model::Entry(fields), m_serializer);
    };
    const auto heading =
        Serializer::applyingHeading(HeadingLevel::level3, AttributedString(u"words\n"));
    EXPECT_TRUE(allows("todo", "words", std::nullopt));
    EXPECT_TRUE(allows("todo", "words", heading));
    EXPECT_TRUE(allows("text", "words", std::nullopt));
    EXPECT_TRUE(allows("text", "words", AttributedString(u"words")));
    EXPECT_FALSE(allows("text", "words", heading));
    EXPECT_FALSE(allows("something new", "words", heading));
}

} // namespace korvex::tests
