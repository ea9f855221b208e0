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

TEST(CodeSyntax, MonospacedTextWithoutALanguageCountsAsAutomatic) {
    EXPECT_EQ(CodeSyntax::language({}), "");
    EXPECT_EQ(CodeSyntax::language({.font = {.family = FontFamily::monospaced}}), "auto");
    EXPECT_EQ(CodeSyntax::language(CodeSyntax::attributes("rust", CodeKind::block)), "rust");
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
        for (int i = 0; i < 2; ++i) {
            EXPECT_THAT(syntax.scopes(u"return 1;", "cpp"), IsEmpty());
            EXPECT_EQ(syntax.languages(), CodeSyntax::firstLanguages());
        }
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
    RecordingLog log;
    for (const auto& value : wrong) {
        CodeSyntax syntax(answering(value), &ScriptedEngine::library, log);
        EXPECT_THAT(syntax.scopes(u"0123456789", "cpp"), IsEmpty());
        EXPECT_EQ(syntax.languages(), CodeSyntax::firstLanguages());
    }
    // Among good ones, which keep their places.
    CodeSyntax syntax(
        answering(Engine::array({Engine::run(0, 2, "keyword"), Engine::run(2, 1, "type"),
                                 Engine::run(3, 1, "unheard-of"), Engine::run(99, 1, "number"),
                                 Engine::run(4, 2, "number.float")})),
        &ScriptedEngine::library, log);
    EXPECT_THAT(
        syntax.scopes(u"0123456789", "cpp"),
        ElementsAre(ScopeRun{{0, 3}, SystemColor::purple}, ScopeRun{{4, 2}, SystemColor::orange}));
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
}

} // namespace korvex::tests
