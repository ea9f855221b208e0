#include "base/Base64.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

namespace korvex::base {
namespace {

TEST(Base64, WritesTheStandardAlphabetWithPadding) {
    for (const auto& [bytes, text] : {
             std::pair{Bytes{}, ""},
             std::pair{Bytes{0xFB}, "+w=="},
             std::pair{Bytes{0xFF, 0xEF}, "/+8="},
             std::pair{Bytes{'a', 'b', 'c'}, "YWJj"},
         }) {
        EXPECT_EQ(base64(bytes), text);
        EXPECT_EQ(bytesOfBase64(text), bytes);
    }
}

TEST(Base64, RefusesWhatItDoesNotWrite) {
    for (const auto* const text :
         {"YWJ", "YWJj=", "+w", "+w=", "YW Jj", "YWJj\n", "-w==", "+x==", "=",
          "====", "A===", "/+9=", "YW=j", "+w==YWJj", "YWJjYW\xc3j", "Y\xffJjYWJj"}) {
        EXPECT_FALSE(bytesOfBase64(text)) << text;
    }
}

TEST(Base64, GivesBackWhatItTook) {
    std::mt19937 random(3);
    for (std::size_t length = 0; length < 200; ++length) {
        Bytes bytes(length);
        for (auto& byte : bytes) {
            byte = static_cast<std::uint8_t>(random());
        }
        EXPECT_EQ(bytesOfBase64(base64(bytes)), bytes);
    }
}

} // namespace
} // namespace korvex::base
