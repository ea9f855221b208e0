#include "base/Collation.h"

#include "support/ScopedEnvironment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace korvex::base {
namespace {

TEST(NameOrder, OrdersNamesAsPeopleDo) {
    for (const auto& [locale, sorted] : {
             std::pair<const char*, std::vector<std::string>>{
                 "en_US", {"", "2024", "board 2", "Board 10", "resume", "Résumé", "Zürich"}},
             {"de_DE", {"Ofen", "öl", "Otto", "zu"}},
             {"sv_SE", {"Ofen", "Otto", "zu", "öl"}},
         }) {
        const NameOrder order(locale);
        auto names = sorted;
        std::reverse(names.begin(), names.end());
        std::sort(names.begin(), names.end(), [&](const auto& left, const auto& right) {
            return order.compare(left, right) < 0;
        });
        EXPECT_EQ(names, sorted) << locale;
        EXPECT_EQ(order.compare(sorted[1], sorted[1]), 0);
        EXPECT_GT(order.compare(sorted[2], sorted[1]), 0);
        EXPECT_EQ(order.compare("board", "BOARD"), 0) << "case is folded";
    }
}

TEST(NameOrder, NeedsNoLocale) {
    const tests::ScopedEnvironment all("LC_ALL", "C");
    const NameOrder order;
    // Not the order of bytes, which the C locale has for programs.
    EXPECT_LT(order.compare("apple", "Banana"), 0);
    EXPECT_LT(order.compare("Board 9", "Board 10"), 0);
}

} // namespace
} // namespace korvex::base
