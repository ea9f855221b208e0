#include "richtext/code/CodeSyntax.h"

#include "richtext/ScriptedEngine.h"
#include "support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace korvex::richtext {

// What a failed expectation shows.
void PrintTo(const ScopeRun& run, std::ostream* out) {
    *out << run.range.location << "+" << run.range.length << ":" << static_cast<int>(run.color);
}

} // namespace korvex::richtext

namespace korvex::tests {

namespace {

using namespace richtext;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kUnavailable = "Bundled code highlighter unavailable";
constexpr auto kFailed = "Bundled code highlighter failed to initialize";

AttributedString code(std::u16string_view text, std::string_view language, bool isBlock = false) {
    return CodeSyntax::applying(language, isBlock, AttributedString(text));
}

/// Gives the same answer to every call.
ScriptEngineFactory answering(ScriptEngine::Value value) {
    return ScriptedEngine::factory({.call = [value](auto, auto&) { return value; }});
}

} // namespace

TEST(CodeSyntax, TheFirstPartOfAScopeDecidesItsColour) {
    const std::vector<std::pair<SystemColor, std::vector<std::string>>> table{
        {SystemColor::purple, {"keyword", "selector-tag", "type", "keyword.control.flow"}},
        {SystemColor::green, {"string", "regexp", "symbol", "bullet", "addition", "string.x"}},
        {SystemColor::orange, {"number", "literal", "attr", "attribute"}},
        {SystemColor::blue, {"title", "built_in", "section", "title.function", "title.class."}},
        {SystemColor::secondaryLabel, {"comment", "doctag"}},
        {SystemColor::pink, {"meta", "tag", "name", "variable", "meta.prompt"}},
        {SystemColor::red, {"deletion"}},
        {SystemColor::label,
         {"", ".", "operator", "keywords", "Keyword", "selector", "built", ".keyword"}},
    };
    for (const auto& [color, scopes] : table) {
        for (const auto& scope : scopes) {
            EXPECT_EQ(CodeSyntax::color(scope), color) << scope;
        }
    }
}

TEST(CodeSyntax, OnlyWholeIdentifiersAreKnown) {
    for (const auto* const known : {"auto", "plaintext", "bash", "cpp", "yaml", "php-template"}) {
        EXPECT_TRUE(CodeSyntax::isKnownLanguage(known)) << known;
    }
    // The empty text, names, aliases of the library, other cases, parts.
    for (const auto* const unknown : {"", "C++", "js", "CPP", "cp", "cppp", "klingon", "auto "}) {
        EXPECT_FALSE(CodeSyntax::isKnownLanguage(unknown)) << unknown;
    }
}

TEST(CodeSyntax, CodeTakesItsLookAndKeepsTheRest) {
    CharacterAttributes before{.font = {.isBold = true, .size = 20'000},
                               .underline = LineStyle::single,
                               .link = "https://korvex.example",
                               .korvexCodeLanguage = "swift",
                               .korvexCodeBlock = true,
                               .foreground = Color{.red = 200}};
    const AttributedString text(u"one\ntwo", before, {.spacingAfter = 40});

    const auto block = CodeSyntax::applying("cpp", true, text);
    auto expected = CodeSyntax::attributes("cpp", true);
    expected.underline = LineStyle::single;
    expected.link = "https://korvex.example";
    EXPECT_EQ(block.attributesAt(0), expected);
    EXPECT_EQ(block.attributesAt(6), expected);
    EXPECT_EQ(expected.font, (Font{.family = FontFamily::monospaced}));
    EXPECT_EQ(expected.foreground, Color::named(SystemColor::label));
    EXPECT_EQ(expected.background, Color::named(SystemColor::quaternaryLabel));
    EXPECT_EQ(block.styleAt(5), (ParagraphStyle{.spacingAfter = 40, .lineSpacing = 60}));
    EXPECT_TRUE(CodeSyntax::isBlock(block));

    const auto inlineCode = CodeSyntax::applying("cpp", false, block);
    EXPECT_FALSE(CodeSyntax::isBlock(inlineCode));
    EXPECT_EQ(inlineCode.styleAt(5), (ParagraphStyle{.spacingAfter = 40}));
}

TEST(CodeSyntax, MonospacedTextWithoutALanguageCountsAsAutomatic) {
    AttributedString text(u"plain");
    text.append(u"mono", {.font = {.family = FontFamily::monospaced}}, {});
    text.append(code(u"code", "rust"));

    EXPECT_EQ(CodeSyntax::language(text, 4), "");
    EXPECT_EQ(CodeSyntax::language(text, 5), "auto");
    EXPECT_EQ(CodeSyntax::language(text, 9), "rust");
    EXPECT_EQ(CodeSyntax::language(text, text.length()), "rust");
    EXPECT_EQ(CodeSyntax::language(AttributedString(), 0), "");
}

TEST(CodeSyntax, AMissingOrFailingEngineOnlyTakesTheColours) {
    struct Case {
        const char* name;
        ScriptEngineFactory factory;
        ResourceLookup resources;
        const char* logged;
    };
    const auto failingAt = [](int place) {
        return [place](std::stop_token) {
            return std::make_unique<ScriptedEngine>(ScriptedEngine::Script{
                .evaluate = [place, count = 0](auto) mutable { return count++ != place; }});
        };
    };
    const std::vector<Case> cases{
        {"nothing", nullptr, nullptr, kUnavailable},
        {"no resource", answering({}), [](auto, auto) { return std::nullopt; }, kUnavailable},
        {"no engine", [](auto) { return nullptr; }, &ScriptedEngine::library, kUnavailable},
        {"library fails", failingAt(0), &ScriptedEngine::library, kFailed},
        {"console fails", failingAt(1), &ScriptedEngine::library, kFailed},
        {"functions fail", failingAt(2), &ScriptedEngine::library, kFailed},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        RecordingLog log;
        log.expectError(each.logged);
        CodeSyntax syntax(each.factory, each.resources, log);
        const auto text = code(u"return 1;", "cpp", true);
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(syntax.highlighted(text).isEquivalentTo(text));
            EXPECT_THAT(syntax.scopes(u"return 1;", "cpp"), IsEmpty());
            EXPECT_EQ(syntax.languages(), CodeSyntax::firstLanguages());
        }
        EXPECT_EQ(syntax.title("auto"), "Automatic");
        EXPECT_EQ(syntax.title("cpp"), "cpp");
        EXPECT_EQ(log.lines().size(), 1U);
    }
}

TEST(CodeSyntax, TheLibraryIsReadBeforeItsSurroundings) {
    RecordingLog log;
    std::vector<std::string> sources;
    CodeSyntax syntax(ScriptedEngine::factory({.evaluate =
                                                   [&](std::string_view source) {
                                                       sources.emplace_back(source);
                                                       return true;
                                                   }}),
                      &ScriptedEngine::library, log);
    EXPECT_THAT(sources, IsEmpty()) << "the engine was made before it was needed";
    syntax.scopes(u"x", "cpp");
    syntax.scopes(u"y", "cpp");
    EXPECT_THAT(sources,
                ElementsAre("the library",
                            "var console = { log: function() {}, error: function() {} };",
                            testing::HasSubstr("function korvexHighlight(code, language)")));
}

TEST(CodeSyntax, AnswersOfTheWrongShapeStayUncoloured) {
    using Engine = ScriptedEngine;
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<ScriptEngine::Value> wrong{
        {},
        Engine::number(3),
        Engine::string("keyword"),
        Engine::run(0, 1, "keyword"),
        Engine::array({Engine::number(1), Engine::array({}), Engine::object({})}),
        Engine::array({Engine::run(-1, 2, "keyword"), Engine::run(0.5, 2, "keyword"),
                       Engine::run(0, 1.5, "keyword"), Engine::run(0, 11, "keyword"),
                       Engine::run(9, 2, "keyword"), Engine::run(11, 0, "keyword"),
                       Engine::run(1e300, 1, "keyword"), Engine::run(0, infinity, "keyword"),
                       Engine::run(std::nan(""), 1, "keyword"), Engine::run(2, 0, "keyword")}),
        Engine::array(
            {Engine::object({{"location", Engine::number(0)}, {"length", Engine::number(1)}})}),
        Engine::array({Engine::object({{"location", Engine::number(0)},
                                       {"length", Engine::string("1")},
                                       {"scope", Engine::string("keyword")}})}),
    };
    for (const auto& value : wrong) {
        RecordingLog log;
        CodeSyntax syntax(answering(value), &ScriptedEngine::library, log);
        EXPECT_THAT(syntax.scopes(u"0123456789", "cpp"), IsEmpty());
        EXPECT_EQ(syntax.languages(), CodeSyntax::firstLanguages());
    }
}

TEST(CodeSyntax, GoodRunsAmongBadOnesKeepTheirPlaces) {
    RecordingLog log;
    using Engine = ScriptedEngine;
    CodeSyntax syntax(
        answering(Engine::array({Engine::run(0, 2, "keyword"), Engine::run(2, 1, "type"),
                                 Engine::run(3, 1, "unheard-of"), Engine::run(99, 1, "number"),
                                 Engine::run(4, 2, "number.float"), Engine::run(8, 2, "string")})),
        &ScriptedEngine::library, log);
    EXPECT_THAT(syntax.scopes(u"0123456789", "cpp"),
                ElementsAre(ScopeRun{{0, 3}, SystemColor::purple},
                            ScopeRun{{4, 2}, SystemColor::orange},
                            ScopeRun{{8, 2}, SystemColor::green}));
}

TEST(CodeSyntax, EachMaximalRunIsAnalysedAloneAndOnlyColoursChange) {
    RecordingLog log;
    std::vector<std::u16string> analysed;
    CodeSyntax syntax(ScriptedEngine::factory({.call =
                                                   [&](auto, const auto& arguments) {
                                                       analysed.push_back(
                                                           std::u16string(arguments[0]) + u"/" +
                                                           std::u16string(arguments[1]));
                                                       return ScriptedEngine::array(
                                                           {ScriptedEngine::run(1, 1, "number")});
                                                   }}),
                      &ScriptedEngine::library, log);

    AttributedString text(u"say ");
    auto linked = code(u"ab", "cpp");
    linked.editAttributes({1, 1}, [](auto& run) { run.link = "x"; });
    text.append(linked);
    text.append(code(u"cd\n", "java"));
    text.append(code(u"ef\ngh", "java", true));
    text.append(code(u"plain", "plaintext"));

    const auto colored = syntax.highlighted(text);
    EXPECT_THAT(analysed, ElementsAre(u"ab/cpp", u"cd\nef\ngh/java"));
    EXPECT_EQ(colored.text(), text.text());
    auto expected = text;
    for (const std::size_t orange : {5U, 7U}) {
        expected.editAttributes(
            {orange, 1}, [](auto& run) { run.foreground = Color::named(SystemColor::orange); });
    }
    EXPECT_TRUE(colored.isEquivalentTo(expected));
}

TEST(CodeSyntax, CodeOverTheLimitIsNotAnalysed) {
    RecordingLog log;
    int calls = 0;
    CodeSyntax syntax(ScriptedEngine::factory({.call =
                                                   [&](auto, auto&) {
                                                       ++calls;
                                                       return ScriptedEngine::array({});
                                                   }}),
                      &ScriptedEngine::library, log);
    syntax.scopes(std::u16string(20'001, u'x'), "cpp");
    syntax.scopes(u"x", "plaintext");
    syntax.scopes(u"", "cpp");
    EXPECT_EQ(calls, 0);
    syntax.scopes(std::u16string(20'000, u'x'), "cpp");
    EXPECT_EQ(calls, 1);

    // A colour that came with the text stays where nothing is analysed.
    auto text = code(std::u16string(20'001, u'x'), "cpp");
    text.editAttributes({5, 1}, [](auto& run) { run.foreground = Color{.red = 9}; });
    EXPECT_TRUE(syntax.highlighted(text).isEquivalentTo(text));
}

TEST(CodeSyntax, LanguagesComeByNameAndEachOnce) {
    RecordingLog log;
    const auto language = [](std::string id, std::string name) {
        return ScriptedEngine::object({{"id", ScriptedEngine::string(std::move(id))},
                                       {"name", ScriptedEngine::string(std::move(name))}});
    };
    CodeSyntax syntax(answering(ScriptedEngine::array(
                          {language("z", "php"), language("y", "Perl"), language("b", "Same"),
                           language("a", "Same"), language("nameless", ""),
                           language("plaintext", "Plain text"), language("r", "R")})),
                      &ScriptedEngine::library, log);
    EXPECT_THAT(syntax.languages(),
                ElementsAre(CodeLanguage{"auto", "Automatic"},
                            CodeLanguage{"plaintext", "Plain Text"},
                            CodeLanguage{"nameless", "nameless"}, CodeLanguage{"y", "Perl"},
                            CodeLanguage{"z", "php"}, CodeLanguage{"r", "R"},
                            CodeLanguage{"b", "Same"}, CodeLanguage{"a", "Same"}));
    EXPECT_EQ(syntax.title("auto"), "Automatic");
    EXPECT_EQ(syntax.title("z"), "php");
    EXPECT_EQ(syntax.title("klingon"), "klingon");
}

} // namespace korvex::tests
