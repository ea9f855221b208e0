#include "base/ByteSize.h"

#include <gtest/gtest.h>

namespace korvex::base {
namespace {

TEST(ByteSize, IsCutInTheStepsInWhichLimitsCount) {
    struct Case {
        std::size_t bytes;
        const char* shown;
    };
    for (const auto& [bytes, shown] :
         {Case{0, "0 bytes"}, Case{1, "1 byte"}, Case{1023, "1023 bytes"}, Case{1024, "1 KB"},
          Case{2047, "1 KB"}, Case{1'048'575, "1023 KB"}, Case{1'048'576, "1 MB"},
          Case{1'572'864, "1.5 MB"}, Case{10'485'759, "9.9 MB"}, Case{10'485'760, "10 MB"}}) {
        EXPECT_EQ(sizeText(bytes), shown);
    }
}

} // namespace
} // namespace korvex::base
