#include "core/platform/secure_wipe.h"

#include <gtest/gtest.h>

#include <array>

using namespace ccrypto;

TEST(SecureWipe, ClearsExactlyTheGivenBytes)
{
    std::array<unsigned char, 8> bytes{1, 2, 3, 4, 5, 6, 7, 8};
    platform::SecureWipe(bytes.data() + 2, 3);
    platform::SecureWipe(bytes.data(), 0);
    platform::SecureWipe(nullptr, 0);
    EXPECT_EQ(bytes, (std::array<unsigned char, 8>{1, 2, 0, 0, 0, 6, 7, 8}));
}
