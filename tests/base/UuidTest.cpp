#include "base/Uuid.h"

#include <gtest/gtest.h>

#include <set>

namespace korvex::base {
namespace {

TEST(Uuid, ReadsTheHyphenatedFormInEitherCase) {
    constexpr auto kText = "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";
    const auto id = Uuid::parse(kText);
    ASSERT_TRUE(id);
    EXPECT_EQ(id->bytes[0], 0x0F);
    EXPECT_EQ(id->bytes[15], 0xF0);
    EXPECT_EQ(id->text(), kText);
    EXPECT_EQ(Uuid::parse("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0"), id);
    for (const char* text :
         {"", "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F", "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F00",
          "0F1E2D3C4B5A69788796A5B4C3D2E1F0", "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1G0",
          "{F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F}", "0F1E2D3C-4B5A-6978-87960A5B4C3D2E1F0",
          "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F-"}) {
        EXPECT_FALSE(Uuid::parse(text)) << text;
    }
}

TEST(Uuid, RandomOnesAreOfVersion4AndSortLikeTheirTexts) {
    std::set<Uuid> ids;
    for (int i = 0; i < 1000; ++i) {
        ids.insert(Uuid::random());
    }
    EXPECT_EQ(ids.size(), 1000U);
    std::string previous;
    for (const auto& id : ids) {
        const auto text = id.text();
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
        EXPECT_LT(previous, text);
        EXPECT_EQ(Uuid::parse(text), id);
        previous = text;
    }
}

} // namespace
} // namespace korvex::base
