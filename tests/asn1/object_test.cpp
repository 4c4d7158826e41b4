#include "asn1/algorithm_identifier.h"
#include "asn1/asn1_collections.h"
#include "asn1/asn1_values.h"
#include "asn1/bit_string.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using std::string_view_literals::operator""sv;

element Der(std::string_view bytes)
{
    return element(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

std::string Hex(const element& bytes)
{
    return std::string(element(bytes.data(), bytes.length()).toString().view());
}

TEST(AlgorithmIdentifier, BuildsAndReadsItsParameters)
{
    CCryptoAlgorithmIdentifier sha256(algorithm::sha256, true);
    const element der = sha256.BuildDer();
    EXPECT_EQ(Hex(der), "300d06096086480165030402010500");
    EXPECT_EQ(Hex(sha256.GetDerEncodedOID()), "608648016503040201");

    CCryptoAlgorithmIdentifier read;
    ASSERT_TRUE(read.ParseDer(der));
    EXPECT_EQ(read.id(), algorithm::sha256);
    ASSERT_NE(read.parameters(), nullptr);
    EXPECT_TRUE(read.BuildDer() == der);

    CCryptoAlgorithmIdentifier bare(algorithm::ecdsaWithSha256, false);
    EXPECT_EQ(Hex(bare.BuildDer()), "300a06082a8648ce3d040302");
    EXPECT_TRUE(CCryptoAlgorithmIdentifier().BuildDer().isEmpty());
}

TEST(AlgorithmIdentifier, RefusesWhatTheTableDoesNotHave)
{
    CCryptoAlgorithmIdentifier sha384WithRsa;
    EXPECT_FALSE(sha384WithRsa.ParseDer(Der("\x30\x0D\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0C\x05\x00"sv)));
    EXPECT_EQ(sha384WithRsa.id(), algorithm::none);
    EXPECT_EQ(AlgorithmOfOid("1.2.840.113549.1.1.14"), 502u);
    EXPECT_EQ(AlgorithmOfOid(""), 0u);
}

TEST(BitString, NumbersBitsFromTheFirstBytesTop)
{
    bitString bits;
    bits.SetBit(9, true);
    EXPECT_EQ(Hex(bits.bits()), "0040");
    EXPECT_TRUE(bits.GetBit(9));
    EXPECT_FALSE(bits.GetBit(100));
    EXPECT_EQ(Hex(bits.BuildDer()), "0303000040");
    bitString read;
    EXPECT_TRUE(read.ParseDer(bits.BuildDer()));
    EXPECT_EQ(read.bits(), bits.bits());
    EXPECT_FALSE(read.ParseDer(Der("\x03\x02\x08\xFF")));
    EXPECT_FALSE(read.ParseDer(Der("\x03\x01\x05")));
}

class OctetStrings : public CCryptoASN1SequenceOfObjects {
public:
    std::unique_ptr<CCryptoASN1Object> CreateMember() override { return std::make_unique<CCryptoASN1OctetStringObject>(); }
};

TEST(Collections, ReadAndBuildTheirMembers)
{
    const element der = Der("\x30\x08\x04\x02hi\x04\x02yo");
    OctetStrings strings;
    ASSERT_TRUE(strings.ParseDer(der));
    ASSERT_EQ(strings.objects().size(), 2u);
    EXPECT_TRUE(strings.BuildDer() == der);
    EXPECT_FALSE(strings.ParseDer(Der("\x30\x03\x02\x01\x05")));
    OctetStrings none;
    EXPECT_EQ(Hex(none.BuildDer()), "3000");
    EXPECT_TRUE(none.ParseDer(none.BuildDer()));
}

TEST(Values, RoundTripAndRefuseOtherTypes)
{
    EXPECT_EQ(Hex(CCryptoASN1ObjectIdentifier("2.5.4.3").BuildDer()), "0603550403");
    EXPECT_FALSE(CCryptoASN1ObjectIdentifier().ParseDer(Der("\x02\x01\x05")));
    EXPECT_FALSE(CCryptoASN1ObjectIdentifier().Parse(nullptr));

    CCryptoASN1ContextSpecific tagged;
    ASSERT_TRUE(tagged.ParseDer(Der("\xA3\x06\x02\x01\x05\x02\x01\x06")));
    EXPECT_EQ(tagged.tagNumber(), 3u);
    EXPECT_EQ(Hex(tagged.BuildDer()), "a306020105020106");

    CCryptoASN1GeneralizedTime time;
    const element der = Der("\x18\x0F"
                            "20261122230000Z");
    ASSERT_TRUE(time.ParseDer(der));
    EXPECT_TRUE(time.BuildDer() == der);
    EXPECT_FALSE(time.ParseDer(Der("\x18\x0F"
                                   "20260231230000Z")));
}

} // namespace
