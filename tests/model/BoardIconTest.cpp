#include "model/BoardIcon.h"

#include <gtest/gtest.h>

#include <set>
#include <string_view>

namespace korvex::model {
namespace {

template <typename Cases, typename Find>
void expectDistinctAndFindable(const Cases& cases, Find find) {
    std::set<std::string_view> rawValues;
    std::set<std::string_view> titles;
    for (const auto each : cases) {
        rawValues.insert(rawValue(each));
        titles.insert(title(each));
        EXPECT_EQ(find(rawValue(each)), each) << rawValue(each);
    }
    EXPECT_EQ(rawValues.size(), cases.size());
    EXPECT_EQ(titles.size(), cases.size());
}

TEST(BoardIcon, EachHasATitleOfItsOwnAndIsFoundByItsRawValueAlone) {
    expectDistinctAndFindable(allBoardIcons(), boardIcon);
    expectDistinctAndFindable(allBoardIconColors(), boardIconColor);
    for (const char* value : {"", "folder", "Folder.fill", "folder.fill ", "Folder"}) {
        EXPECT_FALSE(boardIcon(value)) << value;
    }
    for (const char* value : {"", "Blue", "blue ", "white"}) {
        EXPECT_FALSE(boardIconColor(value)) << value;
    }
}

} // namespace
} // namespace korvex::model
