#include "base/Needle.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

namespace korvex::base {
namespace {

TEST(Needle, IsFoundWhereTheStandardLibraryFindsIt) {
    std::mt19937 random(3);
    const auto below = [&](std::size_t bound) { return random() % bound; };
    std::size_t found = 0;
    for (int round = 0; round < 30'000; ++round) {
        // Few different bytes, so that much is nearly there; in memory of exactly this size.
        const auto letters = 1 + below(4);
        std::string text(below(150), 'a');
        for (auto& byte : text) {
            byte =
                static_cast<char>((below(9) == 0 ? 0xd0 : 'a') + static_cast<int>(below(letters)));
        }
        std::string bytes(1 + below(below(10) == 0 ? 80 : 6), 'a');
        for (auto& byte : bytes) {
            byte = static_cast<char>('a' + static_cast<int>(below(letters)));
        }
        if (below(2) == 0 && !text.empty()) {
            const auto start = below(text.size());
            bytes = text.substr(start, 1 + below(90));
        }
        const auto copy = std::make_unique<char[]>(text.size());
        text.copy(copy.get(), text.size());
        const std::string_view exact(copy.get(), text.size());
        const auto from = below(text.size() + 2);
        const auto expected = text.find(bytes, from);
        ASSERT_EQ(Needle(bytes).find(exact, from), expected) << text << ": " << bytes;
        found += expected != std::string::npos ? 1 : 0;
    }
    EXPECT_GT(found, 5'000U);
}

} // namespace
} // namespace korvex::base
