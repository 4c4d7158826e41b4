#include "asn1/der/der_cursor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using namespace ccrypto;

namespace {

using CursorOctets = std::vector<std::uint8_t>;

CursorOctets WithLength(const CursorOctets& head, std::size_t length)
{
    CursorOctets octets = head;
    octets.resize(head.size() + length, 0x55);
    return octets;
}

struct CursorCase {
    const char* name;
    CursorOctets octets;
    int valueLength; ///< below zero for what is no element
};

class CursorReads : public ::testing::TestWithParam<CursorCase> {};

} // namespace

TEST_P(CursorReads, DerAlone)
{
    SCOPED_TRACE(GetParam().name);
    DerCursor cursor(GetParam().octets);
    const DerItem item = cursor.read();
    ASSERT_EQ(static_cast<bool>(item), GetParam().valueLength >= 0);
    if (!item) {
        // Where it was.
        EXPECT_EQ(cursor.rest().size(), GetParam().octets.size());
        return;
    }
    EXPECT_EQ(item.identifier, GetParam().octets[0]);
    EXPECT_EQ(item.value.size(), static_cast<std::size_t>(GetParam().valueLength));
    EXPECT_EQ(item.octets.data(), GetParam().octets.data());
    EXPECT_EQ(item.octets.data() + item.octets.size(), item.value.data() + item.value.size());
    EXPECT_EQ(cursor.rest().data(), item.value.data() + item.value.size());
}

INSTANTIATE_TEST_SUITE_P(
    CursorOctets, CursorReads,
    ::testing::Values(CursorCase{"no value", {0x05, 0x00}, 0}, CursorCase{"a value, and more", {0x02, 0x01, 0x07, 0x02}, 1},
                      CursorCase{"127 octets", WithLength({0x04, 0x7F}, 127), 127},
                      CursorCase{"128 octets", WithLength({0x04, 0x81, 0x80}, 128), 128},
                      CursorCase{"255 octets", WithLength({0x04, 0x81, 0xFF}, 255), 255},
                      CursorCase{"256 octets", WithLength({0x04, 0x82, 0x01, 0x00}, 256), 256},
                      CursorCase{"65536 octets", WithLength({0x04, 0x83, 0x01, 0x00, 0x00}, 65536), 65536},
                      CursorCase{"tag 30", {0xBE, 0x00}, 0}, CursorCase{"nothing", {}, -1},
                      CursorCase{"an identifier alone", {0x30}, -1}, CursorCase{"a zero", {0x00, 0x00}, -1},
                      CursorCase{"tag 31", {0x1F, 0x00}, -1}, CursorCase{"a long tag", {0xBF, 0x21, 0x00}, -1},
                      CursorCase{"an indefinite length", {0x30, 0x80, 0x00, 0x00}, -1},
                      CursorCase{"127 octets in the long form", WithLength({0x04, 0x81, 0x7F}, 127), -1},
                      CursorCase{"a zero before the length", WithLength({0x04, 0x82, 0x00, 0x80}, 128), -1},
                      CursorCase{"five octets of length", WithLength({0x04, 0x85, 0x01, 0x00, 0x00, 0x00, 0x00}, 1), -1},
                      CursorCase{"a length of all ones", {0x04, 0xFF}, -1},
                      CursorCase{"a length cut short", {0x04, 0x82, 0x01}, -1},
                      CursorCase{"an octet less than the length", WithLength({0x04, 0x81, 0x80}, 127), -1},
                      CursorCase{"4 GiB less an octet", {0x04, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}, -1}));

TEST(DerCursor, WalksALevelByIdentifiers)
{
    const CursorOctets level = {0x02, 0x01, 0x07, 0x05, 0x00};
    DerCursor cursor(level);
    EXPECT_TRUE(cursor.nextIs(0x02));
    EXPECT_FALSE(cursor.read(0x05));
    EXPECT_TRUE(cursor.read(0x02));
    EXPECT_FALSE(cursor.atEnd());
    EXPECT_TRUE(cursor.read(0x05));
    EXPECT_TRUE(cursor.atEnd());
    EXPECT_FALSE(cursor.nextIs(0x05));
    EXPECT_FALSE(cursor.read());
}

TEST(DerCursor, OnlyValueIsThatOfOneElement)
{
    const CursorOctets one = {0x04, 0x01, 0x07};
    const CursorOctets two = {0x04, 0x01, 0x07, 0x05, 0x00};
    EXPECT_EQ(OnlyValue(one, 0x04)->size(), 1u);
    EXPECT_FALSE(OnlyValue(one, 0x02));
    EXPECT_FALSE(OnlyValue(two, 0x04));
    EXPECT_FALSE(OnlyValue({}, 0x04));
}
