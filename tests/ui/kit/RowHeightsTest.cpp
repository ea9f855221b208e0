#include "ui/kit/lists/RowHeights.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace korvex::ui {
namespace {

/// The same, in the plainest way.
class NaiveHeights {
public:
    std::vector<int> heights;

    std::int64_t top(int row) const {
        return std::accumulate(heights.begin(), heights.begin() + row, std::int64_t{0});
    }
    int rowAt(std::int64_t y) const {
        std::int64_t bottom = 0;
        for (std::size_t row = 0; row < heights.size(); ++row) {
            bottom += heights[row];
            if (y < bottom) {
                return static_cast<int>(row);
            }
        }
        return static_cast<int>(heights.size()) - 1;
    }
};

TEST(RowHeights, FollowsAPlainListThroughAnyChanges) {
    std::mt19937 random(7);
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    RowHeights tested;
    NaiveHeights plain;
    for (int change = 0; change < 3000; ++change) {
        const int count = tested.count();
        switch (count == 0 ? 0 : pick(0, 3)) {
        case 0: {
            const int first = pick(0, count);
            const int added = pick(1, 5);
            std::vector<int> heights;
            for (int i = 0; i < added; ++i) {
                heights.push_back(pick(0, 9));
            }
            tested.insert(first, added,
                          [&](int row) { return heights[static_cast<std::size_t>(row - first)]; });
            plain.heights.insert(plain.heights.begin() + first, heights.begin(), heights.end());
            break;
        }
        case 1: {
            const int first = pick(0, count - 1);
            const int removed = pick(1, std::min(count - first, 4));
            tested.remove(first, removed);
            plain.heights.erase(plain.heights.begin() + first,
                                plain.heights.begin() + first + removed);
            break;
        }
        case 2: {
            const int first = pick(0, count - 1);
            const int moved = pick(1, std::min(count - first, 3));
            int destination = pick(0, count - moved);
            if (destination == first) {
                continue; // no move at all
            }
            destination += destination > first ? moved : 0;
            tested.move(first, moved, destination);
            std::vector<int> block(plain.heights.begin() + first,
                                   plain.heights.begin() + first + moved);
            plain.heights.erase(plain.heights.begin() + first,
                                plain.heights.begin() + first + moved);
            const int place = destination > first ? destination - moved : destination;
            plain.heights.insert(plain.heights.begin() + place, block.begin(), block.end());
            break;
        }
        default: {
            const int row = pick(0, count - 1);
            const int height = pick(0, 30);
            tested.setMeasured(row, height);
            plain.heights[static_cast<std::size_t>(row)] = height;
            break;
        }
        }
        ASSERT_EQ(tested.count(), static_cast<int>(plain.heights.size()));
        ASSERT_EQ(tested.total(), plain.top(tested.count()));
        if (tested.count() > 0) {
            const int row = pick(0, tested.count() - 1);
            ASSERT_EQ(tested.top(row), plain.top(row));
            const auto y = pick(-5, static_cast<int>(tested.total()) + 5);
            ASSERT_EQ(tested.rowAt(y), plain.rowAt(std::max(y, 0))) << "at " << y;
        }
    }
}

TEST(RowHeights, WithoutRowsThereIsNoRowAnywhere) {
    RowHeights heights;
    EXPECT_EQ(heights.rowAt(0), -1);
    EXPECT_EQ(heights.total(), 0);
}

} // namespace
} // namespace korvex::ui
