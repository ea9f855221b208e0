#include "richtext/RandomText.h"

#include "richtext/rtf/RtfReader.h"
#include "richtext/rtf/RtfWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace korvex::richtext {
namespace {

constexpr std::uint64_t kSeeds = 1000;

std::string shown(const base::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST(RtfRoundTrip, WhatWasWrittenIsReadAsItWas) {
    for (std::uint64_t seed = 0; seed < kSeeds; ++seed) {
        const auto text = RandomText(seed).next();
        const auto written = writeRtf(text);
        const auto read = readRtf(written);
        ASSERT_TRUE(read.isEquivalentTo(text)) << "seed " << seed << "\n" << shown(written);
        ASSERT_EQ(shown(writeRtf(read)), shown(written)) << "seed " << seed;
    }
}

TEST(RtfRoundTrip, WhatCannotBeWrittenIsTakenAwayOnce) {
    for (std::uint64_t seed = 0; seed < kSeeds; ++seed) {
        const auto text = RandomText(seed, RandomText::Kind::broken).next();
        const auto written = writeRtf(text);
        const auto read = readRtf(written);
        std::u16string kept;
        text.forEachRun([&](const AttributedString::CharacterRun& run) {
            for (const auto unit :
                 std::u16string_view(text.text()).substr(run.range.location, run.range.length)) {
                if (unit == u'\n' || !run.attributes.isAttachment) {
                    kept.push_back(unit);
                }
            }
        });
        ASSERT_EQ(read.text(), kept) << "seed " << seed << "\n" << shown(written);
        ASSERT_EQ(shown(writeRtf(read)), shown(written)) << "seed " << seed;
    }
}

} // namespace
} // namespace korvex::richtext
