#include "ui/kit/lists/RowLayouts.h"

#include <gtest/gtest.h>

#include <array>

namespace korvex::ui {
namespace {

constexpr int kMoreThanAreKept = 301;

struct Sizes {
    int width = 100;
    int cost = 1;
};

class FakeLayout {
public:
    explicit FakeLayout(Sizes sizes) : m_sizes(sizes) {}

    int width() const { return m_sizes.width; }
    int cost() const { return m_sizes.cost; }

private:
    Sizes m_sizes;
};

class RowLayoutsTest : public testing::Test {
protected:
    /// Whether the layout of the subject had to be made.
    bool isMade(int subject, Sizes sizes = {}) {
        bool isMade = false;
        const auto make = [&](const std::unique_ptr<FakeLayout>& former) {
            isMade = true;
            formerWidth = former ? former->width() : 0;
            return std::make_unique<FakeLayout>(sizes);
        };
        const auto& layout =
            m_layouts.at(&m_subjects.at(static_cast<std::size_t>(subject)), sizes.width, make);
        EXPECT_EQ(layout.width(), sizes.width);
        return isMade;
    }

    /// Of the layout that was at hand when one was made last; 0 for none.
    int formerWidth = 0;

    RowLayouts<FakeLayout> m_layouts;

private:
    std::array<char, kMoreThanAreKept> m_subjects{};
};

TEST_F(RowLayoutsTest, AreMadeOncePerSubjectAndWidth) {
    EXPECT_TRUE(isMade(0));
    EXPECT_TRUE(isMade(1));
    EXPECT_FALSE(isMade(0));
    EXPECT_TRUE(isMade(0, {.width = 200}));
    EXPECT_EQ(formerWidth, 100) << "of which it may use what no width changes";
    EXPECT_FALSE(isMade(0, {.width = 200}));
    EXPECT_FALSE(isMade(1));
    EXPECT_TRUE(isMade(0, {.width = 100})) << "only the last width is kept";
}

TEST_F(RowLayoutsTest, MoreThanAreKeptDriveOutTheOneDrawnLongestAgo) {
    for (int subject = 0; subject < kMoreThanAreKept - 1; ++subject) {
        EXPECT_TRUE(isMade(subject));
    }
    EXPECT_FALSE(isMade(0)) << "so many are kept";
    EXPECT_TRUE(isMade(kMoreThanAreKept - 1));
    EXPECT_FALSE(isMade(0)) << "it was drawn just now";
    EXPECT_TRUE(isMade(1));
}

TEST_F(RowLayoutsTest, OneDearerThanTheLimitIsThereAndTheOthersAreGone) {
    const Sizes dear{.cost = 10 * kMoreThanAreKept};
    EXPECT_TRUE(isMade(0));
    EXPECT_TRUE(isMade(1, dear));
    EXPECT_FALSE(isMade(1, dear));
    EXPECT_TRUE(isMade(0));
    EXPECT_TRUE(isMade(1, dear)) << "there is no room for both";
}

} // namespace
} // namespace korvex::ui
