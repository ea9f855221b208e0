#include "store/ChangeLog.h"

#include <gtest/gtest.h>

#include <random>

namespace korvex::tests {

using store::ChangeLog;
using store::RowChange;

TEST(ChangeLog, DecodesWhatItEncoded) {
    std::mt19937_64 random(7);
    std::vector<RowChange> changes{{0, 1},         {1, INT64_MAX}, {0, INT64_MIN}, {255, -1},
                                   {3, INT64_MAX}, {3, INT64_MAX}, {2, 0}};
    for (int i = 0; i < 10'000; ++i) {
        changes.push_back({static_cast<std::uint8_t>(random() % 3),
                           static_cast<std::int64_t>(random() >> (random() % 64))});
    }
    std::vector<RowChange> decoded;
    ASSERT_TRUE(ChangeLog::decode(ChangeLog::encode(changes), decoded));
    ASSERT_EQ(decoded.size(), changes.size());
    for (std::size_t i = 0; i < changes.size(); ++i) {
        ASSERT_EQ(decoded[i].type, changes[i].type) << i;
        ASSERT_EQ(decoded[i].rowid, changes[i].rowid) << i;
    }
}

TEST(ChangeLog, BytesThatAreCutOrNeverEndAreRefused) {
    const auto encoded = ChangeLog::encode({{1, 1'000'000}});
    std::vector<RowChange> decoded;
    for (std::size_t size = 1; size < encoded.size(); ++size) {
        EXPECT_FALSE(ChangeLog::decode(std::span(encoded).first(size), decoded)) << size;
    }
    EXPECT_FALSE(ChangeLog::decode(base::Bytes(40, 0xff), decoded));
}

} // namespace korvex::tests
