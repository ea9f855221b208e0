// The colours of code with the engine and the highlighter that Korvex comes with.

#include "base/Utf16.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "richtext/code/CodeHighlighter.h"
#include "richtext/code/CodeLanguages.h"
#include "richtext/code/CodeSyntax.h"
#include "support/FakeRunLoop.h"
#include "support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <random>

namespace korvex::tests {

namespace {

using namespace richtext;
using platform::javascriptcore::ScriptModule;
using testing::IsEmpty;

class CodeColorsTest : public testing::Test {
protected:
    /// The colour of a part of the code that stands there once.
    SystemColor colorOf(std::u16string_view part, std::u16string_view code,
                        std::string_view language) {
        const auto start = code.find(part);
        EXPECT_NE(start, std::u16string_view::npos);
        for (const auto& run : syntax.scopes(code, language)) {
            if (run.range.location <= start && start + part.size() <= run.range.end()) {
                return run.color;
            }
        }
        return SystemColor::label;
    }

    RecordingLog log;
    ScriptModule module{ScriptModule::defaultFile(), log};
    CodeSyntax syntax{module.engineFactory(), module.resources(), log};
};

/// The factory, three scripts, and two calls.
constexpr int kSteps = 6;

void advance(std::atomic<int>& reached) {
    ++reached;
    reached.notify_all();
}

/// Tells what the engine has begun to do.
class NotedEngine final : public ScriptEngine {
public:
    NotedEngine(std::unique_ptr<ScriptEngine> engine, std::atomic<int>& reached)
        : m_engine(std::move(engine)), m_reached(reached) {}

    bool evaluate(std::string_view source) override {
        advance(m_reached);
        return m_engine->evaluate(source);
    }
    std::optional<Value> call(std::string_view function,
                              const std::vector<std::u16string_view>& arguments) override {
        advance(m_reached);
        return m_engine->call(function, arguments);
    }

private:
    std::unique_ptr<ScriptEngine> m_engine;
    std::atomic<int>& m_reached;
};

/// Another library in the place of the real one.
ResourceLookup library(std::string_view source) {
    return [source](auto, auto) { return std::optional(source); };
}

} // namespace

TEST_F(CodeColorsTest, EachLanguageHasItsColours) {
    struct Case {
        const char* language;
        std::u16string_view code;
        std::u16string_view part;
        SystemColor color;
    };
    constexpr std::u16string_view kCpp =
        u"// note\nint twice(int value) {\n    return value * 42; // \"x\"\n}\n";
    const std::vector<Case> cases{
        {"cpp", kCpp, u"return", SystemColor::purple},
        {"cpp", kCpp, u"twice", SystemColor::blue},
        {"cpp", kCpp, u"42", SystemColor::orange},
        {"cpp", kCpp, u"// note", SystemColor::secondaryLabel},
        {"cpp", kCpp, u"value *", SystemColor::label},
        {"cpp", u"auto s = \"text\";", u"\"text\"", SystemColor::green},
        {"css", u"p { color: red; }", u"color", SystemColor::orange},
        {"diff", u"-gone\n+new\n", u"-gone", SystemColor::red},
        {"diff", u"-gone\n+new\n", u"+new", SystemColor::green},
        {"xml", u"<p class=\"x\">text</p>", u"class", SystemColor::orange},
        {"xml", u"<style>p { color: red; }</style>", u"color", SystemColor::orange},
        {"json", u"{\"a\": true}", u"\"a\"", SystemColor::orange},
        {"python", u"def f():\n    pass\n", u"def", SystemColor::purple},
        {"bash", u"echo $HOME", u"$HOME", SystemColor::pink},
        {"auto", u"#include <vector>\nint main() { std::vector<int> v; return v.size(); }\n",
         u"return", SystemColor::purple},
        {"klingon", kCpp, u"return", SystemColor::label},
        {"js", u"return 1", u"return", SystemColor::purple},
        {"plaintext", kCpp, u"return", SystemColor::label},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(colorOf(each.part, each.code, each.language), each.color)
            << each.language << " " << base::utf8(each.part);
    }
}

TEST_F(CodeColorsTest, TheTableOfLanguagesIsWhatTheHighlighterReports) {
    std::vector<std::string> reported;
    for (const auto& language : syntax.languages()) {
        EXPECT_FALSE(language.name.empty()) << language.id;
        EXPECT_TRUE(CodeSyntax::isKnownLanguage(language.id)) << language.id;
        reported.push_back(language.id);
    }
    EXPECT_EQ(reported[0], "auto");
    EXPECT_EQ(reported[1], "plaintext");
    std::erase(reported, "auto");
    const auto known = highlighterLanguages();
    EXPECT_THAT(reported, testing::UnorderedElementsAreArray(known.begin(), known.end()));
    EXPECT_THAT(syntax.languages(), testing::Contains(CodeLanguage{"cpp", "C++"}));
    EXPECT_EQ(syntax.languages()[1], (CodeLanguage{"plaintext", "Plain Text"}));
}

TEST_F(CodeColorsTest, TwentyThousandUnitsAreColouredAndOneMoreIsNot) {
    std::u16string code = u"return 42;\n";
    while (code.size() < CodeSyntax::kMaximumHighlighted) {
        code += u"return 42;\n";
    }
    code.resize(CodeSyntax::kMaximumHighlighted);
    const auto runs = syntax.scopes(code, "cpp");
    ASSERT_GE(runs.size(), 2U);
    EXPECT_EQ(runs[0], (ScopeRun{{0, 6}, SystemColor::purple}));
    EXPECT_EQ(runs[1], (ScopeRun{{7, 2}, SystemColor::orange}));
    EXPECT_THAT(syntax.scopes(code + u" ", "cpp"), IsEmpty());
}

TEST_F(CodeColorsTest, WhatStandsBeforeShiftsNothing) {
    const std::vector<std::u16string> before{
        u"",    u"é", u"😀😀", {0xD83D}, {0xDE00, 0xD83D}, {u'x', 0xD83D, u'\n'}, u"🏳️‍🌈",
        {u'\0'}};
    for (const auto& each : before) {
        for (const auto& after : before) {
            const auto code = u"/* " + each + u" */ return 42; // " + after;
            EXPECT_EQ(colorOf(u"return", code, "cpp"), SystemColor::purple);
            EXPECT_EQ(colorOf(u"42", code, "cpp"), SystemColor::orange);
            EXPECT_EQ(colorOf(u"// " + after.substr(0, after.find(u'\n')), code, "cpp"),
                      SystemColor::secondaryLabel);
        }
    }
}

TEST_F(CodeColorsTest, WhateverTheCodeTheRunsAreInOrderAndInside) {
    constexpr std::u16string_view kParts[]{
        u"return ", u"\"", u"'", u"`",     u"${",  u"}",     u"{",       u"<script>", u"</",
        u"/*",      u"*/", u"#", u"```\n", u"\n",  u"class", u"0x1F ",   u"😀",        u"<?php ",
        u"$x",      u"é",  u"@", u"def ",  u"===", u"--",    u"/[a-z]/", u">>> ",     u"\xD83D"};
    std::mt19937 random(7);
    for (const auto language : highlighterLanguages()) {
        std::u16string code;
        while (code.size() < 400) {
            code += kParts[random() % std::size(kParts)];
        }
        std::size_t end = 0;
        for (const auto& run : syntax.scopes(code, language)) {
            EXPECT_GE(run.range.location, end) << language;
            EXPECT_GT(run.range.length, 0U);
            end = run.range.end();
        }
        EXPECT_LE(end, code.size()) << language;
    }
}

TEST_F(CodeColorsTest, DeepNestingIsNoDanger) {
    std::u16string code;
    while (code.size() < CodeSyntax::kMaximumHighlighted - 3) {
        code += u"`${";
    }
    syntax.scopes(code, "javascript");
    EXPECT_EQ(colorOf(u"42", u"return 42", "cpp"), SystemColor::orange);
}

TEST_F(CodeColorsTest, ScopesPassDownAndNestedLanguagesAreNone) {
    // 0 none, 1 string, 2 passed through a nested language, 3 its own, 4 none again, and a wrapper
    // outside of everything.
    CodeSyntax fixed(module.engineFactory(), library(R"js(
        var hljs = {
            highlight: function(code, options) {
                console.log("the console must be there");
                return { _emitter: { rootNode: { children: [
                    "0",
                    { scope: "string", children: [
                        "1",
                        { scope: "language:css", children: [
                            "2", { children: ["2"] }, { scope: "number.x", children: ["3"] }] },
                        "" ] },
                    { scope: "language:xml", children: [
                        "4", { scope: "keyword.control", children: ["5"] }] } ] } } };
            },
            listLanguages: function() { return []; }
        };)js"),
                     log);
    EXPECT_THAT(fixed.scopes(u"01223456", "cpp"),
                testing::ElementsAre(ScopeRun{{1, 3}, SystemColor::green},
                                     ScopeRun{{4, 1}, SystemColor::orange},
                                     ScopeRun{{6, 1}, SystemColor::purple}));
}

TEST_F(CodeColorsTest, ALibraryThatThrowsLeavesCodeUncoloured) {
    for (const auto* const broken : {"throw new Error();", "var hljs = ;", "while"}) {
        RecordingLog itsLog;
        itsLog.expectError("Bundled code highlighter failed to initialize");
        CodeSyntax failing(module.engineFactory(), library(broken), itsLog);
        EXPECT_THAT(failing.scopes(u"return 1;", "cpp"), IsEmpty());
        EXPECT_EQ(failing.languages(), CodeSyntax::firstLanguages());
    }
    // A library that reads well and then fails: nothing more is said.
    CodeSyntax failing(module.engineFactory(), library("var hljs = {};"), log);
    EXPECT_THAT(failing.scopes(u"return 1;", "cpp"), IsEmpty());
    EXPECT_EQ(failing.languages(), CodeSyntax::firstLanguages());
}

TEST_F(CodeColorsTest, ManyRequestsFromALiveHighlighterAllArrive) {
    FakeRunLoop runLoop;
    CodeHighlighter highlighter(module.engineFactory(), module.resources(), runLoop, log);
    std::vector<std::u16string> codes;
    for (int i = 0; i < 200; ++i) {
        codes.push_back(u"return " + base::utf16(std::to_string(i)) + u";");
    }
    // More than may wait at once: what is still wanted is asked for again.
    const auto isKnown = [&](const auto& code) {
        return highlighter.scopes(code, "cpp") != nullptr;
    };
    while (std::count_if(codes.begin(), codes.end(), isKnown) < std::ssize(codes)) {
        runLoop.waitForPosted();
        runLoop.runPosted();
    }
    for (const auto& code : codes) {
        EXPECT_EQ(*highlighter.scopes(code, "cpp"), syntax.scopes(code, "cpp"));
    }
}

TEST_F(CodeColorsTest, HighlightersMayEndAtAnyTime) {
    std::u16string code;
    while (code.size() < CodeSyntax::kMaximumHighlighted - 20) {
        code += u"auto x = f(1, \"two\");\n";
    }
    // It ends while the engine is made, reads its scripts or analyses, or before or after that.
    for (int step = 0; step <= kSteps; ++step) {
        std::atomic<int> reached = 0;
        const auto factory = [&](std::stop_token stop) -> std::unique_ptr<ScriptEngine> {
            advance(reached);
            auto engine = module.engineFactory()(stop);
            // One that was stopped before it was made.
            return engine ? std::make_unique<NotedEngine>(std::move(engine), reached) : nullptr;
        };
        FakeRunLoop runLoop;
        CodeHighlighter highlighter(factory, module.resources(), runLoop, log);
        highlighter.scopes(code, "auto");
        highlighter.languages();
        for (auto at = reached.load(); at < step; at = reached.load()) {
            reached.wait(at);
        }
    }
}

} // namespace korvex::tests
