#include "crypto/base/constant_time.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using namespace ccrypto;

using constant_time::Declassify;
using constant_time::Mask;

TEST(ConstantTime, ComparesWordsAtTheirEdges)
{
    constexpr std::uint64_t top = std::uint64_t{1} << 63;
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    constexpr std::array<std::uint64_t, 8> words = {0, 1, 2, top - 1, top, top + 1, most - 1, most};
    for (const std::uint64_t left : words) {
        EXPECT_EQ(Declassify(Mask::IsZero(left)), left == 0) << left;
        for (const std::uint64_t right : words) {
            SCOPED_TRACE(testing::Message() << left << " and " << right);
            EXPECT_EQ(Declassify(Mask::Equal(left, right)), left == right);
            EXPECT_EQ(Declassify(Mask::Less(left, right)), left < right);
            EXPECT_EQ(Mask::Less(left, right).select(left, right), std::min(left, right));
        }
    }
    EXPECT_EQ(Mask::True().select<std::uint8_t>(0xA5, 0x5A), 0xA5);
    EXPECT_EQ(Mask::False().select<std::uint8_t>(0xA5, 0x5A), 0x5A);
}

TEST(ConstantTime, ComparesAndCopiesEveryByte)
{
    std::array<std::uint8_t, 40> left{};
    std::array<std::uint8_t, 40> right{};
    for (std::size_t i = 0; i < left.size(); ++i) {
        EXPECT_TRUE(Declassify(constant_time::EqualBytes(left.data(), right.data(), left.size())));
        right[i] = static_cast<std::uint8_t>(1u << (i % 8));
        EXPECT_FALSE(Declassify(constant_time::EqualBytes(left.data(), right.data(), left.size()))) << i;
        EXPECT_TRUE(Declassify(constant_time::EqualBytes(left.data(), right.data(), i)));
        constant_time::CopyBytesIf(Mask::False(), left.data(), right.data(), left.size());
        EXPECT_NE(left, right);
        constant_time::CopyBytesIf(Mask::True(), left.data(), right.data(), left.size());
        EXPECT_EQ(left, right);
    }
}
