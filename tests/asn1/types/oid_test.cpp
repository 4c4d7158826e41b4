#include "asn1/der/der_parser.h"
#include "asn1/types/oid.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using namespace ccrypto;

namespace {

using OidOctets = std::vector<std::uint8_t>;

Oid OidOfDer(const OidOctets& der)
{
    return Oid::OfNode(CCryptoDERParser().Decode(der).get());
}

} // namespace

TEST(Oid, ComparesByOctets)
{
    const OidOctets commonName = {0x55, 0x04, 0x03};
    const Oid oid = Oid::FromDotted("2.5.4.3");
    EXPECT_EQ(oid, Oid(commonName));
    EXPECT_EQ(oid, OidOfDer({0x06, 0x03, 0x55, 0x04, 0x03}));
    EXPECT_TRUE(oid == std::span<const std::uint8_t>(commonName));
    EXPECT_FALSE(oid == Oid::FromDotted("2.5.4.31"));
    EXPECT_LT(oid, Oid::FromDotted("2.5.4.10"));
    EXPECT_LT(Oid::FromDotted("2.5.4"), oid);
    EXPECT_EQ(oid.dotted(), "2.5.4.3");
}

TEST(Oid, NoneIsEqualToNothing)
{
    const Oid none = {};
    EXPECT_TRUE(none.isNone());
    EXPECT_FALSE(none == Oid());
    EXPECT_TRUE(none.dotted().isEmpty());
    EXPECT_TRUE(Oid::FromDotted("2.5.x").isNone());
    EXPECT_TRUE(Oid::OfNode(nullptr).isNone());
    EXPECT_TRUE(OidOfDer({0x06, 0x00}).isNone());
    EXPECT_TRUE(OidOfDer({0x04, 0x03, 0x55, 0x04, 0x03}).isNone());
}

TEST(Oid, KeepsOctetsThatHaveNoTextOfTheirOwn)
{
    // 2.48, whose two arcs take two octets, one padded with a zero group, and one cut short.
    for (const OidOctets& octets : {OidOctets{0x81, 0x00}, OidOctets{0x55, 0x80, 0x03}, OidOctets{0x55, 0x84}}) {
        OidOctets der = {0x06, static_cast<std::uint8_t>(octets.size())};
        der.insert(der.end(), octets.begin(), octets.end());
        const Oid oid = OidOfDer(der);
        EXPECT_TRUE(oid == std::span<const std::uint8_t>(octets));
        EXPECT_FALSE(oid.dotted().isEmpty());
        EXPECT_FALSE(oid == Oid::FromDotted("2.5.3"));
    }
}
