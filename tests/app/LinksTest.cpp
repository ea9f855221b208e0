#include "app/Links.h"

#include <gtest/gtest.h>

namespace korvex::app {
namespace {

constexpr const char* kId = "0C2E6F7A-1111-4A5B-9C3D-2E1F0A9B8C7D";

TEST(Links, ABoardOrAnEntryIsNamedByItsIdentifierAlone) {
    const auto id = *base::Uuid::parse(kId);
    const auto name = std::string(kId);
    EXPECT_EQ(boardID("korvex://board/" + name), id);
    EXPECT_EQ(boardID(boardUrl(id)), id);
    EXPECT_EQ(Link::parse(entryUrl(id)), (Link{.kind = Link::Kind::entry, .id = id}));
    EXPECT_EQ(Link::parse(kInboxUrl), Link{});
    EXPECT_EQ(boardID(kInboxUrl), std::nullopt);
    EXPECT_EQ(boardID(entryUrl(id)), std::nullopt);
    for (const auto& same : std::initializer_list<std::string>{
             "korvex://board/0c2e6f7a-1111-4a5b-9c3d-2e1f0a9b8c7d", "korvex://board/" + name + "/",
             "korvex://board/" + name + "?from=widget", "korvex://board/" + name + "#top",
             "korvex://me@board:80/" + name, "korvex://board/%30C2E6F7A" + name.substr(8)}) {
        EXPECT_EQ(boardID(same), id) << same;
    }
    for (const auto& other :
         std::initializer_list<std::string>{"",
                                            name,
                                            "korvex:" + name,
                                            "korvex:board/" + name,
                                            "korvex:/board/" + name,
                                            "korvex://" + name,
                                            "korvex://boards/" + name,
                                            "korvex:///board/" + name,
                                            "korvex://board/" + name + "/x",
                                            "korvex://board/x/" + name,
                                            "korvex://board",
                                            "korvex://board/",
                                            "korvex://board/?" + name,
                                            "korvex://board/today",
                                            "korvex://entry/inbox",
                                            "Korvex://board/" + name,
                                            "https://board/" + name,
                                            "korvex://Board/" + name,
                                            "korvex://board/%G0" + name,
                                            "korvex://board/" + name + "%",
                                            "korvex://board/" + name + "%0",
                                            "korvex://board/" + name + std::string(600, '/')}) {
        EXPECT_EQ(Link::parse(other), std::nullopt) << other;
    }
}

} // namespace
} // namespace korvex::app
