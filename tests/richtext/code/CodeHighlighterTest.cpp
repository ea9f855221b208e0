#include "richtext/code/CodeHighlighter.h"

#include "base/Utf16.h"
#include "richtext/ScriptedEngine.h"
#include "richtext/code/HighlightQueue.h"
#include "support/FakeRunLoop.h"
#include "support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace korvex::tests {

namespace {

using namespace richtext;
using testing::ElementsAre;

/// A highlighter over an engine that analyses when it is let, and colours the first unit.
class CodeHighlighterTest : public testing::Test {
protected:
    std::optional<ScriptEngine::Value> answer(std::string_view function,
                                              const std::vector<std::u16string_view>& arguments,
                                              const std::stop_token& stop) {
        std::unique_lock lock(m_mutex);
        if (function == "korvexLanguages") {
            return ScriptedEngine::array({ScriptedEngine::object(
                {{"id", ScriptedEngine::string("cpp")}, {"name", ScriptedEngine::string("C++")}})});
        }
        m_begun.push_back(base::utf8(arguments[0]));
        m_change.notify_all();
        m_change.wait(lock, stop, [&] { return m_allowed > 0; });
        if (stop.stop_requested()) {
            return std::nullopt;
        }
        --m_allowed;
        return ScriptedEngine::array({ScriptedEngine::run(0, 1, "keyword")});
    }

    ScriptEngineFactory factory() {
        return [this](std::stop_token stop) {
            m_hasEngine = true;
            return std::make_unique<ScriptedEngine>(
                ScriptedEngine::Script{.call = [this, stop](auto function, const auto& arguments) {
                    return answer(function, arguments, stop);
                }});
        };
    }

    void allow(int count) {
        const std::lock_guard lock(m_mutex);
        m_allowed += count;
        m_change.notify_all();
    }
    void waitForBegun(std::size_t count) {
        std::unique_lock lock(m_mutex);
        m_change.wait(lock, [&] { return m_begun.size() >= count; });
    }
    std::vector<std::string> begun() {
        const std::lock_guard lock(m_mutex);
        return m_begun;
    }
    /// Runs the loop until `isReached` says so; CTest's time limit ends a wait for ever.
    template <typename Condition>
    void runUntil(Condition&& isReached) {
        while (!isReached()) {
            runLoop.runPosted();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    bool isKnown(std::u16string_view code, std::string_view language = "cpp") {
        return highlighter->scopes(code, language) != nullptr;
    }

    RecordingLog log;
    FakeRunLoop runLoop;
    std::mutex m_mutex;
    std::condition_variable_any m_change;
    std::vector<std::string> m_begun;
    int m_allowed = 0;
    std::atomic<bool> m_hasEngine = false;
    std::unique_ptr<CodeHighlighter> highlighter =
        std::make_unique<CodeHighlighter>(factory(), &ScriptedEngine::library, runLoop, log);
};

} // namespace

TEST_F(CodeHighlighterTest, ColoursArriveOnceAndAreRemembered) {
    int arrivals = 0;
    const auto counting = highlighter->arrived().connect([&] { ++arrivals; });
    ASSERT_FALSE(isKnown(u"int"));
    ASSERT_FALSE(isKnown(u"int")) << "asked twice is analysed once";
    allow(10);
    runUntil([&] { return arrivals > 0; });
    EXPECT_THAT(*highlighter->scopes(u"int", "cpp"),
                ElementsAre(ScopeRun{{0, 1}, SystemColor::purple}));
    EXPECT_THAT(begun(), ElementsAre("int"));

    // The language belongs to what is remembered.
    ASSERT_FALSE(isKnown(u"int", "rust"));
    runUntil([&] { return isKnown(u"int", "rust"); });
    EXPECT_TRUE(isKnown(u"int"));
    EXPECT_EQ(arrivals, 2);
}

TEST_F(CodeHighlighterTest, WhatNeedsNoAnalysisStartsNoEngine) {
    EXPECT_TRUE(isKnown(u"int", "plaintext"));
    EXPECT_TRUE(isKnown(u""));
    EXPECT_TRUE(isKnown(std::u16string(20'001, u'x')));
    CodeHighlighter without(nullptr, nullptr, runLoop, log);
    EXPECT_TRUE(without.scopes(u"int", "cpp")->empty());
    EXPECT_EQ(without.languages(), CodeSyntax::firstLanguages());
    EXPECT_FALSE(m_hasEngine);
    EXPECT_EQ(runLoop.postedCount(), 0U);
}

TEST_F(CodeHighlighterTest, TheNewestGoesFirstAndTheUnwantedAway) {
    isKnown(u"first");
    waitForBegun(1);
    // Somebody types while the first is analysed, and an old entry stands beside it.
    for (const auto* const typed : {u"beside", u"a", u"ab", u"abc"}) {
        isKnown(typed);
    }
    const auto asking = highlighter->arrived().connect([&] {
        isKnown(u"beside");
        isKnown(u"abc");
    });
    allow(1);
    runUntil([&] { return isKnown(u"first"); });
    waitForBegun(2);
    allow(1);
    runUntil([&] { return isKnown(u"abc"); });
    allow(10);
    runUntil([&] { return isKnown(u"beside"); });
    // What was typed over is gone: a later request comes at once.
    isKnown(u"later");
    runUntil([&] { return isKnown(u"later"); });
    const auto order = begun();
    EXPECT_EQ(order[0], "first");
    EXPECT_EQ(order[1], "abc");
    EXPECT_THAT(order, testing::Not(testing::Contains("a")));
    EXPECT_EQ(order.back(), "later");
}

TEST_F(CodeHighlighterTest, TheLanguagesArrive) {
    int arrivals = 0;
    const auto counting = highlighter->arrived().connect([&] { ++arrivals; });
    EXPECT_EQ(highlighter->languages(), CodeSyntax::firstLanguages());
    runUntil([&] { return arrivals == 1; });
    EXPECT_EQ(highlighter->languages().size(), 3U);
    EXPECT_EQ(highlighter->languages().back(), (CodeLanguage{"cpp", "C++"}));
}

TEST_F(CodeHighlighterTest, AnAnalysisUnderWayEndsWithTheHighlighter) {
    isKnown(u"never ends");
    waitForBegun(1);
    isKnown(u"never begins");
    highlighter.reset();
    runLoop.runPosted();
    EXPECT_THAT(begun(), ElementsAre("never ends"));
}

TEST_F(CodeHighlighterTest, AnAnswerThatComesTooLateIsDropped) {
    bool hasArrived = false;
    const auto watching = highlighter->arrived().connect([&] { hasArrived = true; });
    isKnown(u"int");
    allow(1);
    while (runLoop.postedCount() == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    highlighter.reset();
    runLoop.runPosted();
    EXPECT_FALSE(hasArrived);
}

TEST_F(CodeHighlighterTest, AnObserverMayDestroyTheHighlighter) {
    const auto destroying = highlighter->arrived().connect([&] { highlighter.reset(); });
    isKnown(u"int");
    allow(1);
    runUntil([&] { return highlighter == nullptr; });
}

TEST_F(CodeHighlighterTest, AFailureCostsOnlyItsOwnColours) {
    log.expectError("out of luck");
    CodeHighlighter failing(
        ScriptedEngine::factory(
            {.call = [](auto, const auto& arguments) -> std::optional<ScriptEngine::Value> {
                if (arguments[0] == u"bad") {
                    throw std::runtime_error("out of luck");
                }
                return ScriptedEngine::array({ScriptedEngine::run(0, 1, "type")});
            }}),
        &ScriptedEngine::library, runLoop, log);
    for (const auto* const code : {u"bad", u"good"}) {
        runUntil([&] { return failing.scopes(code, "cpp") != nullptr; });
    }
    EXPECT_TRUE(failing.scopes(u"bad", "cpp")->empty());
    EXPECT_EQ(failing.scopes(u"good", "cpp")->size(), 1U);
}

TEST(HighlightQueue, IsBoundedAndKeepsTheNewest) {
    HighlightQueue queue;
    for (int i = 0; i < 1000; ++i) {
        const auto code = base::utf16(std::to_string(i));
        queue.ask(CodeKey::of(code, "cpp"), code);
    }
    queue.ask(CodeKey::of(u"950", "cpp"), u"950");
    EXPECT_EQ(queue.takeNewest().code, u"950");
    std::size_t count = 1;
    while (!queue.isEmpty()) {
        EXPECT_EQ(queue.takeNewest().code, base::utf16(std::to_string(1000 - count)));
        ++count;
        count += count == 50 ? 1 : 0; // 950 was taken already
    }
    EXPECT_EQ(count, HighlightQueue::kMaximumWaiting + 1);
}

TEST(HighlightQueue, DropsWhatNobodyHasAskedForAgain) {
    HighlightQueue queue;
    queue.ask(CodeKey::of(u"a", "cpp"), u"a");
    queue.ask(CodeKey::of(u"b", "cpp"), u"b");
    queue.forgetUnwanted();
    queue.ask(CodeKey::of(u"a", "cpp"), u"a");
    queue.forgetUnwanted();
    ASSERT_FALSE(queue.isEmpty());
    EXPECT_EQ(queue.takeNewest().code, u"a");
    EXPECT_TRUE(queue.isEmpty());
}

TEST(ScopeCache, ForgetsWhatWasAskedForLongestAgo) {
    constexpr std::size_t kUnits = 100;
    ScopeCache cache(kUnits);
    const auto key = [](std::size_t number) {
        return CodeKey::of(std::u16string(10, static_cast<char16_t>(u'a' + number)), "cpp");
    };
    for (std::size_t i = 0; i < 10; ++i) {
        cache.insert(key(i), {});
    }
    ASSERT_NE(cache.find(key(0)), nullptr);
    // A stretch of colour counts too: this one takes the place of three.
    cache.insert(key(10), {{{0, 1}, SystemColor::red}});
    EXPECT_NE(cache.find(key(0)), nullptr);
    for (const std::size_t gone : {1U, 2U, 3U}) {
        EXPECT_EQ(cache.find(key(gone)), nullptr) << gone;
    }
    EXPECT_NE(cache.find(key(4)), nullptr);

    cache.insert(key(10), {});
    EXPECT_TRUE(cache.find(key(10))->empty());
    for (const std::size_t there : {11U, 12U}) {
        cache.insert(key(there), {});
    }
    EXPECT_NE(cache.find(key(5)), nullptr) << "the room of the stretch was free again";
    const auto huge = CodeKey::of(std::u16string(1000, u'z'), "cpp");
    cache.insert(huge, {});
    EXPECT_NE(cache.find(huge), nullptr);
    EXPECT_EQ(cache.find(key(10)), nullptr) << "nothing has room beside it";
    cache.insert(key(1), {});
    EXPECT_EQ(cache.find(huge), nullptr);
    EXPECT_NE(cache.find(key(1)), nullptr);
}

} // namespace korvex::tests
