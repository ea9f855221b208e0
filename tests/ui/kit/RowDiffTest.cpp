#include "ui/kit/lists/RowDiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>

namespace korvex::ui {
namespace {

std::vector<RowKey> keys(const std::vector<int>& kinds) {
    std::vector<RowKey> result;
    for (const int kind : kinds) {
        result.push_back({kind, nullptr});
    }
    return result;
}

/// What a model does with the steps.
std::vector<RowKey> applied(std::vector<RowKey> rows, const std::vector<RowStep>& steps,
                            const std::vector<RowKey>& after) {
    for (const auto& step : steps) {
        applyStep(step, rows, after);
    }
    return rows;
}

TEST(RowDiff, StepsLeadFromAnyRowsToAnyOthers) {
    std::mt19937 random(11);
    for (int round = 0; round < 4000; ++round) {
        std::vector<int> all(12);
        for (std::size_t i = 0; i < all.size(); ++i) {
            all[i] = static_cast<int>(i);
        }
        const auto some = [&] {
            std::shuffle(all.begin(), all.end(), random);
            const auto count = std::uniform_int_distribution<int>(0, 12)(random);
            return keys({all.begin(), all.begin() + count});
        };
        const auto before = some();
        const auto after = some();
        const auto steps = rowSteps(before, after);
        ASSERT_EQ(applied(before, steps, after), after);
        EXPECT_EQ(fewRowSteps(before, after, steps.size()), steps);
        EXPECT_TRUE(steps.empty() || !fewRowSteps(before, after, steps.size() - 1));
        for (const auto& step : steps) {
            // What a model may announce: nothing moves into itself.
            ASSERT_TRUE(step.kind != RowStep::Kind::move || step.destination < step.first ||
                        step.destination > step.first + step.count);
        }
    }
}

TEST(RowDiff, EverydayChangesAreOneStep) {
    using Kind = RowStep::Kind;
    const struct {
        const char* what;
        std::vector<int> before;
        std::vector<int> after;
        std::vector<RowStep> steps;
    } cases[] = {
        {"nothing", {1, 2, 3}, {1, 2, 3}, {}},
        {"a run appears", {1, 4}, {1, 2, 3, 4}, {{Kind::insert, 1, 2}}},
        {"a run goes", {1, 2, 3, 4}, {1, 4}, {{Kind::remove, 1, 2}}},
        {"a row goes down", {1, 2, 3, 4, 5}, {2, 3, 4, 1, 5}, {{Kind::move, 0, 1, 4}}},
        {"a row goes up", {1, 2, 3, 4, 5}, {1, 5, 2, 3, 4}, {{Kind::move, 4, 1, 1}}},
        {"to nothing", {1, 2}, {}, {{Kind::remove, 0, 2}}},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(rowSteps(keys(each.before), keys(each.after)), each.steps) << each.what;
    }
}

} // namespace
} // namespace korvex::ui
