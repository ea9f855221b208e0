#include "base/Signal.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace korvex::base {
namespace {

TEST(Signal, CallsObserversInTheirOrderUntilTheyCancel) {
    Signal<int> signal;
    std::vector<int> heard;
    auto first = signal.connect([&](int value) { heard.push_back(value); });
    {
        const auto second = signal.connect([&](int value) { heard.push_back(-value); });
        signal.emit(1);
    }
    signal.emit(2);
    auto moved = std::move(first);
    signal.emit(3);
    moved.cancel();
    signal.emit(4);
    EXPECT_EQ(heard, (std::vector{1, -1, 2, 3}));
}

TEST(Signal, ObserversMayChangeTheListWhileTheyAreCalled) {
    Signal<> signal;
    std::vector<std::string> heard;
    Subscription second;
    Subscription late;
    Subscription first = signal.connect([&] {
        heard.emplace_back("first");
        second.cancel();
        first.cancel();
        late = signal.connect([&] { heard.emplace_back("late"); });
    });
    second = signal.connect([&] { heard.emplace_back("second"); });
    signal.emit();
    EXPECT_EQ(heard, (std::vector<std::string>{"first"}));
    signal.emit();
    EXPECT_EQ(heard, (std::vector<std::string>{"first", "late"}));
}

TEST(Signal, MayEndWhileItCallsAndBeforeItsSubscriptions) {
    std::optional<Signal<>> signal(std::in_place);
    int calls = 0;
    const auto first = signal->connect([&] {
        ++calls;
        signal.reset();
    });
    const auto second = signal->connect([&] { ++calls; });
    signal->emit();
    // The list is gone with the signal, and who stands further down is not called any more.
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace korvex::base
