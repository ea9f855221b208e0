#include "platform/javascriptcore/ScriptModule.h"

#include "base/Utf16.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <thread>

namespace korvex::tests {

namespace {

using platform::javascriptcore::ScriptModule;
using richtext::ScriptEngine;
using Value = ScriptEngine::Value;

/// A value as a text, with ? for what has no kind.
std::string written(const Value& value) {
    std::string result;
    switch (value.kind) {
    case Value::Kind::other:
        return "?";
    case Value::Kind::number: {
        std::ostringstream out;
        out.precision(17);
        out << value.number;
        return out.str();
    }
    case Value::Kind::string:
        return "'" + value.string + "'";
    case Value::Kind::array:
        for (const auto& element : value.array) {
            result += (result.empty() ? "" : ",") + written(element);
        }
        return "[" + result + "]";
    case Value::Kind::object:
        for (const auto& [name, member] : value.object) {
            result += (result.empty() ? "" : ",") + name + ":" + written(member);
        }
        return "{" + result + "}";
    }
    return result;
}

std::string written(const std::optional<Value>& value) {
    return value ? written(*value) : "nothing";
}

bool isEngineMapped() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find("libjavascriptcore") != std::string::npos) {
            return true;
        }
    }
    return false;
}

class JavaScriptEngineTest : public testing::Test {
protected:
    std::unique_ptr<ScriptEngine> makeEngine() { return module.engineFactory()(stop.get_token()); }
    /// What the expression is worth, taken over by a call.
    std::string valueOf(const std::string& expression) {
        EXPECT_TRUE(engine->evaluate("function get() { return " + expression + "; }"));
        return written(engine->call("get", {}));
    }

    RecordingLog log;
    ScriptModule module{ScriptModule::defaultFile(), log};
    std::stop_source stop;
    std::unique_ptr<ScriptEngine> engine;
};

} // namespace

TEST_F(JavaScriptEngineTest, NothingIsMappedBeforeItIsNeeded) {
    // In a process of its own, in which no other test has asked for the engine.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto states = [&] {
        const auto factory = module.engineFactory();
        const auto resources = module.resources();
        std::cerr << isEngineMapped() << resources("highlight.min", "js").has_value()
                  << isEngineMapped() << (factory({}) != nullptr) << std::endl;
        std::quick_exit(0);
    };
    EXPECT_EXIT(states(), testing::ExitedWithCode(0), "0111");
}

TEST_F(JavaScriptEngineTest, ResourcesAreKnownByNameAndExtension) {
    EXPECT_TRUE(module.resources()("highlight.min", "js")->starts_with("/*!"));
    EXPECT_TRUE(module.resources()("highlight.min", "js")->ends_with(";"));
    EXPECT_FALSE(module.resources()("highlight", "js"));
    EXPECT_FALSE(module.resources()("highlight.min", "css"));
}

TEST_F(JavaScriptEngineTest, AMissingOrForeignModuleGivesNothing) {
    const TemporaryFolder folder;
    const auto noModule = folder / "no-module.so";
    std::ofstream(noModule) << "no module";
    for (const auto& file : {folder / "missing.so", noModule, std::filesystem::path("libm.so.6")}) {
        RecordingLog itsLog;
        const ScriptModule missing(file, itsLog);
        EXPECT_FALSE(missing.resources()("highlight.min", "js"));
        EXPECT_EQ(missing.engineFactory()({}), nullptr);
        EXPECT_EQ(itsLog.lines().size(), 1U) << file;
    }
}

TEST_F(JavaScriptEngineTest, ValuesComeOver) {
    engine = makeEngine();
    const std::vector<std::pair<std::string, std::string>> table{
        {"1", "1"},
        {"-0.1", "-0.10000000000000001"},
        {"1e300", "1.0000000000000001e+300"},
        {"9007199254740991", "9007199254740991"},
        {"'text'", "'text'"},
        {"'\\u0000\\n\\\"\\u00e9\\u{1f600}'", std::string("'\0\n\"é😀'", 11)},
        {"[]", "[]"},
        {"[1, 'a', [true, null, undefined]]", "[1,'a',[?,?,?]]"},
        {"({ b: 1, a: { c: [] } })", "{b:1,a:{c:[]}}"},
        {"({ f: function() {}, u: undefined, n: null })", "{n:?}"},
        {"Object.create({ inherited: 1 })", "{}"},
        {"NaN", "?"},
        {"Infinity", "?"},
        {"true", "?"},
        {"null", "?"},
        {"undefined", "?"},
        {"function() {}", "?"},
    };
    for (const auto& [expression, expected] : table) {
        EXPECT_EQ(valueOf(expression), expected) << expression;
    }
}

TEST_F(JavaScriptEngineTest, WhatIsTooLargeOrNoValueGivesNothing) {
    engine = makeEngine();
    const std::string depth8 = "[[[[[[[['deep']]]]]]]]";
    EXPECT_EQ(valueOf(depth8), depth8);
    EXPECT_EQ(valueOf("[" + depth8 + "]"), "nothing");
    EXPECT_EQ(valueOf("(function() { var v = 1; for (var i = 0; i < 5000; ++i) v = [v]; "
                      "return v; })()"),
              "nothing");
    EXPECT_NE(valueOf("new Array(200000).fill(1)"), "nothing");
    EXPECT_EQ(valueOf("new Array(200001).fill(1)"), "nothing");
    EXPECT_EQ(valueOf("new Array(1001).fill(new Array(200).fill(1))"), "nothing");
    EXPECT_EQ(valueOf("new Array(70000).fill({ a: 1, b: 2 })"), "nothing");
    EXPECT_EQ(valueOf("'x'.repeat(1 << 25)"), "nothing");
    EXPECT_EQ(valueOf("(function() { var v = []; v.push(v); return v; })()"), "nothing");
    EXPECT_EQ(valueOf("({ get bad() { throw 1; } })"), "nothing");
    EXPECT_EQ(valueOf("1n"), "nothing");
}

TEST_F(JavaScriptEngineTest, ExceptionsEndACallAndNothingElse) {
    engine = makeEngine();
    EXPECT_FALSE(engine->evaluate("this is no script"));
    EXPECT_FALSE(engine->evaluate("throw new Error('no')"));
    EXPECT_FALSE(engine->evaluate(std::string_view("1;\0 throw 1", 11)));
    EXPECT_TRUE(engine->evaluate("var number = 3; function recur() { return recur(); }"
                                 "Object.defineProperty(this, 'trap', { get() { throw 1; } });"));
    for (const auto* const function : {"missing", "number", "recur", "trap", ""}) {
        EXPECT_EQ(written(engine->call(function, {})), "nothing") << function;
    }
    EXPECT_EQ(valueOf("number"), "3");
}

TEST_F(JavaScriptEngineTest, ArgumentsKeepEveryUnit) {
    engine = makeEngine();
    ASSERT_TRUE(engine->evaluate("function units(a, b) { return [arguments.length, "
                                 "Array.from({ length: a.length }, (_, i) => a.charCodeAt(i)), b];"
                                 "}"));
    const std::u16string halves{u'a', 0xD83D, u'\0', 0xDE00, 0xD83D};
    EXPECT_EQ(written(engine->call("units", {halves, u"b"})), "[2,[97,55357,0,56832,55357],'b']");
    EXPECT_EQ(written(engine->call("units", {u"", u""})), "[2,[],'']");
}

TEST_F(JavaScriptEngineTest, AStopEndsTheScriptThatRuns) {
    engine = makeEngine();
    ASSERT_TRUE(
        engine->evaluate("var rounds = 0; function forever() { for (;;) ++rounds; }"
                         "function stubborn() { for (;;) try { forever(); } catch (e) {} }"));
    clockid_t clock{};
    ASSERT_EQ(pthread_getcpuclockid(pthread_self(), &clock), 0);
    const auto computed = [clock] {
        timespec time{};
        clock_gettime(clock, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    std::jthread stopping([&, before = computed()] {
        // The script is asked by its thread's own time, and has been allowed to go on some times.
        while (computed() - before < std::chrono::milliseconds(200)) {
            std::this_thread::yield();
        }
        stop.request_stop();
    });
    EXPECT_EQ(written(engine->call("stubborn", {})), "nothing");
    // Nothing begins any more.
    EXPECT_EQ(written(engine->call("forever", {})), "nothing");
    EXPECT_FALSE(engine->evaluate("1"));
}

TEST_F(JavaScriptEngineTest, EnginesShareNothing) {
    engine = makeEngine();
    ASSERT_TRUE(engine->evaluate("var kept = 1;"));
    const auto other = makeEngine();
    EXPECT_FALSE(other->evaluate("kept"));
    EXPECT_EQ(valueOf("kept"), "1");
}

} // namespace korvex::tests
