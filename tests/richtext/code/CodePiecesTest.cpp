#include "richtext/code/CodePieces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvex::tests {

namespace {

using namespace richtext;
using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

TEST(CodePieces, EachMaximalStretchOfALanguageIsOne) {
    CodePieces pieces;
    EXPECT_FALSE(pieces.add(u"say ", ""));
    struct Case {
        std::u16string_view text;
        std::string_view language;
        std::size_t piece;
        std::size_t offset;
    };
    for (const auto& each : {Case{u"ab", "cpp", 0, 0}, Case{u"cd\n", "java", 1, 0},
                             Case{u"ef\n", "java", 1, 3}, Case{u"gh", "java", 1, 6}}) {
        const auto place = pieces.add(each.text, each.language);
        ASSERT_TRUE(place);
        EXPECT_EQ(place->piece, each.piece);
        EXPECT_EQ(place->offset, each.offset);
    }
    EXPECT_FALSE(pieces.add(u"\n", ""));
    EXPECT_EQ(pieces.add(u"again", "java")->piece, 2U);
    EXPECT_THAT(pieces.pieces(),
                ElementsAre(CodePiece{"cpp", u"ab"}, CodePiece{"java", u"cd\nef\ngh"},
                            CodePiece{"java", u"again"}));
}

TEST(CodePieces, APartHasWhatItsPieceHasOfColours) {
    const std::vector<ScopeRun> scopes{
        {{0, 2}, SystemColor::red}, {{2, 5}, SystemColor::green}, {{9, 1}, SystemColor::blue}};
    const auto colorsOf = [&](TextRange part) {
        std::vector<ScopeRun> result;
        forEachColor(scopes, part, [&](TextRange range, SystemColor color) {
            result.push_back({range, color});
        });
        return result;
    };
    EXPECT_THAT(colorsOf({0, 10}), testing::ElementsAreArray(scopes));
    EXPECT_THAT(colorsOf({1, 3}), ElementsAre(ScopeRun{{0, 1}, SystemColor::red},
                                              ScopeRun{{1, 2}, SystemColor::green}));
    EXPECT_THAT(colorsOf({7, 2}), IsEmpty());
    EXPECT_THAT(colorsOf({6, 90}), ElementsAre(ScopeRun{{0, 1}, SystemColor::green},
                                               ScopeRun{{3, 1}, SystemColor::blue}));
}

} // namespace korvex::tests
