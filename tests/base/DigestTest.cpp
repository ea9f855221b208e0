#include "base/Digest.h"

#include "base/Bytes.h"

#include <gtest/gtest.h>

namespace korvex::base {
namespace {

Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

// Stores hold these values. They were computed with another implementation of SipHash-2-4.
TEST(Digest, ChecksumsStayWhatStoresHold) {
    EXPECT_EQ(checksum({}), 0x4C786A4C8139FCA8U);
    EXPECT_EQ(checksum(bytes("Korvex")), 0x580DE8A821256169U);
}

TEST(Digest, AChecksumSeesEveryBit) {
    auto record = bytes("a record of some forty bytes, more or less");
    const auto sound = checksum(record);
    for (std::size_t bit = 0; bit < record.size() * 8; ++bit) {
        record[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_NE(checksum(record), sound) << bit;
        record[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
    }
    EXPECT_EQ(checksum(record), sound);
}

// The second test vector of FIPS 180-2, which every implementation must give.
TEST(Digest, Sha256IsTheOneThatOthersCompute) {
    const auto digest = sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq");
    EXPECT_EQ(Bytes(digest.begin(), digest.begin() + 8),
              (Bytes{0x24, 0x8D, 0x6A, 0x61, 0xD2, 0x06, 0x38, 0xB8}));
    EXPECT_EQ(sha256("")[0], 0xE3);
}

TEST(Digest, AMaskIsSixteenDigitsOfItsText) {
    const auto mask = maskHash("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0");
    EXPECT_EQ(mask.size(), 16U);
    EXPECT_EQ(mask.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(mask, maskHash("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0"));
    EXPECT_NE(mask, maskHash("0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F1"));
}

} // namespace
} // namespace korvex::base
