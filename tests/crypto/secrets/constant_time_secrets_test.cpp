#include "crypto/base/constant_time.h"

#include <gtest/gtest.h>
#include <valgrind/memcheck.h>

#include <array>

using namespace ccrypto;

using constant_time::Declassify;
using constant_time::Mask;

TEST(Secrets, AreCompared)
{
    ASSERT_NE(RUNNING_ON_VALGRIND, 0u) << "without valgrind this program proves nothing";
    std::array<std::uint8_t, 32> left{};
    std::array<std::uint8_t, 32> right{};
    right[31] = 1;
    constant_time::ClassifyBytes(left.data(), left.size());
    EXPECT_FALSE(Declassify(constant_time::EqualBytes(left.data(), right.data(), left.size())));
    constant_time::CopyBytesIf(constant_time::EqualBytes(left.data(), right.data(), 31), left.data(), right.data(), left.size());
    EXPECT_TRUE(Declassify(constant_time::EqualBytes(left.data(), right.data(), left.size())));
}

TEST(Secrets, StayMarkedThroughACalculationUntilDeclassified)
{
    const auto marks = [](const std::uint64_t& value) {
        std::uint64_t bits = 0;
        EXPECT_EQ(VALGRIND_GET_VBITS(&value, &bits, sizeof bits), 1u);
        return bits;
    };
    std::uint64_t secret = 5;
    constant_time::ClassifyBytes(&secret, sizeof secret);
    std::uint64_t smaller = Mask::Less(secret, 7).select<std::uint64_t>(1, 2);
    EXPECT_NE(marks(smaller), 0u);
    EXPECT_EQ(marks(Declassify(smaller)), 0u);
    EXPECT_EQ(Declassify(smaller), 1u);
}
