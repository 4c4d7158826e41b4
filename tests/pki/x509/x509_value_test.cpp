#include "asn1/der/der_parser.h"
#include "pki/x509/x509_time.h"
#include "pki/x509/x509_value.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/test_der.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

ElementNodePtr DecodedValue(const Bytes& der)
{
    return CCryptoDERParser().Decode(der);
}

constexpr const char* valueMissingText = "CCrypto_X509_Value; Parser or value missing?";
constexpr const char* valueInvalidText = "CCrypto_X509_Value; Invalid value?";

struct ValueCase {
    const char* name;
    Bytes der;
    const char* reason; ///< empty for a value that reads
};

class ReadsValue : public ::testing::TestWithParam<ValueCase> {};

const Bytes commonNameValue = Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::utf8String, {'x'})});

} // namespace

TEST_P(ReadsValue, OfExtensionsAndAttributes)
{
    ForgetFailure();
    const CCrypto_X509_Value value(DecodedValue(GetParam().der).get());
    EXPECT_EQ(value.oid().isNone(), *GetParam().reason != '\0');
    EXPECT_EQ(ReasonOfFailure(), GetParam().reason);
    EXPECT_EQ(value.value() == nullptr, *GetParam().reason != '\0');
}

INSTANTIATE_TEST_SUITE_P(
    Values, ReadsValue,
    ::testing::Values(ValueCase{"attribute", commonNameValue, ""},
                      ValueCase{"attribute in its SET", Tlv(der::set, commonNameValue), ""},
                      ValueCase{"two in a SET", Tlv(der::set, {commonNameValue, commonNameValue}), valueMissingText},
                      ValueCase{"empty SET", Tlv(der::set, Bytes()), valueMissingText},
                      ValueCase{"no OID", Tlv(der::sequence, NumberTlv(1)), valueMissingText},
                      ValueCase{"OID of no octets", Tlv(der::sequence, {Tlv(der::oid, Bytes()), NumberTlv(1)}), valueInvalidText},
                      ValueCase{"flag of two octets",
                                Tlv(der::sequence, {OidTlv("2.5.29.19"), Tlv(der::boolean, {0, 0}), NumberTlv(1)}),
                                valueInvalidText}));

TEST(X509Value, OidsWithoutUniqueTextComeBackAsTheirOctets)
{
    // The first octet stands for two arcs: 2.48 and 2.999 have no text that is theirs alone.
    for (const Bytes& octets : {Bytes{0x81, 0x00}, Bytes{0x88, 0x37}, Bytes{0x55, 0x04, 0x03}}) {
        const Bytes der = Tlv(der::sequence, {Tlv(der::oid, octets), Tlv(der::boolean, {0xFF}), Tlv(der::octetString, {5, 0})});
        CCrypto_X509_Value value(DecodedValue(der).get());
        EXPECT_EQ(Bytes(value.oid().octets().begin(), value.oid().octets().end()), octets);
        EXPECT_EQ(BytesOf(value.BuildDer()), der);
    }
}

TEST(X509Value, BuildsWithoutADefaultFlag)
{
    const ElementNodePtr octets = DecodedValue(Tlv(der::octetString, {5, 0}));
    CCrypto_X509_Value value(Oid::FromDotted("2.5.29.15"), octets.get());
    EXPECT_EQ(HexOf(value.BuildDer()), "3009"
                                       "0603551d0f"
                                       "04020500");
    EXPECT_EQ(HexOf(value.content()), "0500");
    EXPECT_TRUE(CCrypto_X509_Value(Oid(), octets.get()).BuildDer().isEmpty());
    EXPECT_TRUE(CCrypto_X509_Value(Oid::FromDotted("2.5.29.15"), nullptr).BuildDer().isEmpty());
}

TEST(X509ValueList, KeepsRelativeNamesOfSeveralValues)
{
    const Bytes country = Tlv(der::sequence, {OidTlv("2.5.4.6"), Tlv(der::printableString, TextBytes("FI"))});
    // Not in the order of DER, and so it stays.
    const Bytes octets = Joined({Tlv(der::set, {country, commonNameValue}), Tlv(der::set, commonNameValue)});
    CCrypto_X509_ValueList list;
    ASSERT_TRUE(list.Parse(DecodedValue(octets).get(), true));
    ASSERT_EQ(list.values().size(), 3u);
    EXPECT_EQ(list.values()[1]->relativeName(), 0u);
    EXPECT_EQ(list.values()[2]->relativeName(), 1u);
    EXPECT_EQ(BytesOf(list.GetDerEncodedElement()), Tlv(der::sequence, octets));

    // What is built has the order of DER.
    auto added = std::make_unique<CCrypto_X509_Value>(Oid::FromDotted("2.5.4.3"), list.values()[1]->value());
    added->setRelativeName(1);
    list.add(std::move(added));
    EXPECT_EQ(BytesOf(list.GetDerEncodedElement()),
              Tlv(der::sequence, {Tlv(der::set, {commonNameValue, country}), Tlv(der::set, {commonNameValue, commonNameValue})}));
}

TEST(X509ValueList, RefusesWhatIsNeitherAndStaysEmpty)
{
    CCrypto_X509_ValueList list;
    const Bytes extension = Tlv(der::sequence, {OidTlv("2.5.29.15"), Tlv(der::octetString, {5, 0})});
    const Bytes relativeName = Tlv(der::set, commonNameValue);
    const Bytes paddedType = Tlv(der::sequence, {Tlv(0x06, Bytes{0x55, 0x1D, 0x80, 0x0F}), Tlv(der::octetString, {5, 0})});
    const Bytes unfinishedType = Tlv(der::sequence, {Tlv(0x06, Bytes{0x55, 0x1D, 0x9D}), Tlv(der::octetString, {5, 0})});
    const Bytes inPieces = Tlv(der::sequence, {OidTlv("2.5.29.15"), Bytes{0x24, 0}});
    for (const bool asName : {false, true}) {
        EXPECT_TRUE(list.Parse(DecodedValue(asName ? relativeName : extension).get(), asName));
        for (const Bytes& other : {asName ? extension : relativeName, Joined({relativeName, extension}),
                                   Joined({extension, relativeName}), NumberTlv(1), Tlv(der::set, NumberTlv(1)), inPieces,
                                   paddedType, unfinishedType, Tlv(der::set, paddedType), Tlv(der::set, unfinishedType)}) {
            EXPECT_FALSE(list.Parse(DecodedValue(other).get(), asName)) << Hex(other);
            EXPECT_TRUE(list.isEmpty());
        }
    }
    const Bytes nothingInside = Tlv(der::sequence, {OidTlv("2.5.29.15"), Tlv(der::octetString, Bytes())});
    EXPECT_TRUE(list.Parse(DecodedValue(nothingInside).get(), false));
    EXPECT_TRUE(list.values().at(0)->content().isEmpty());
    EXPECT_TRUE(list.Parse(nullptr, true));
    EXPECT_EQ(HexOf(list.GetDerEncodedElement()), "3000");
}

namespace {

struct TimeCase {
    const char* name;
    std::uint8_t identifier;
    const char* text;
    const char* time; ///< empty for no time
    bool fractions = false;
};

class ReadsX509Time : public ::testing::TestWithParam<TimeCase> {};

} // namespace

TEST_P(ReadsX509Time, ByRfc5280)
{
    const Bytes octets = Tlv(GetParam().identifier, TextBytes(GetParam().text));
    const CCryptoDateTime time = ReadX509Time(DerCursor(octets).read(), GetParam().fractions);
    EXPECT_EQ(time.isValid(), *GetParam().time != '\0');
    if (time.isValid()) {
        EXPECT_EQ(time.format("yyyy-MM-dd HH:mm:ss.fff"), GetParam().time);
        EXPECT_TRUE(time.isUtc());
    }
    EXPECT_EQ(ReadX509Time(DecodedValue(octets).get(), GetParam().fractions).isValid(), time.isValid());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadsX509Time,
    ::testing::Values(
        TimeCase{"first year of 20xx", der::utcTime, "000101000000Z", "2000-01-01 00:00:00.000"},
        TimeCase{"last year of 20xx", der::utcTime, "491231235959Z", "2049-12-31 23:59:59.000"},
        TimeCase{"first year of 19xx", der::utcTime, "500101000000Z", "1950-01-01 00:00:00.000"},
        TimeCase{"last year of 19xx", der::utcTime, "991231235959Z", "1999-12-31 23:59:59.000"},
        TimeCase{"four digits", der::generalizedTime, "20500101000000Z", "2050-01-01 00:00:00.000"},
        TimeCase{"the end of time", der::generalizedTime, "99991231235959Z", "9999-12-31 23:59:59.000"},
        TimeCase{"no seconds", der::utcTime, "0001010000Z", ""}, TimeCase{"no Z", der::utcTime, "000101000000", ""},
        TimeCase{"a small Z", der::utcTime, "000101000000z", ""}, TimeCase{"a zone", der::utcTime, "000101000000+0200", ""},
        TimeCase{"four digits in a UTCTime", der::utcTime, "20000101000000Z", ""},
        TimeCase{"two digits in a GeneralizedTime", der::generalizedTime, "000101000000Z", ""},
        TimeCase{"a letter", der::utcTime, "00010100000xZ", ""}, TimeCase{"leap second", der::utcTime, "161231235960Z", ""},
        TimeCase{"no such day", der::utcTime, "230229000000Z", ""}, TimeCase{"hour 24", der::utcTime, "230228240000Z", ""},
        TimeCase{"another type", der::utf8String, "000101000000Z", ""}, TimeCase{"another class", 0x97, "000101000000Z", ""},
        TimeCase{"nothing", der::utcTime, "", ""},
        TimeCase{"a fraction that is not allowed", der::generalizedTime, "20200101000000.5Z", ""},
        TimeCase{"a fraction", der::generalizedTime, "20200101000000.5Z", "2020-01-01 00:00:00.500", true},
        TimeCase{"a long fraction", der::generalizedTime, "20200101000000.123456789Z", "2020-01-01 00:00:00.123", true},
        TimeCase{"a period alone", der::generalizedTime, "20200101000000.Z", "", true},
        TimeCase{"a comma", der::generalizedTime, "20200101000000,5Z", "", true},
        TimeCase{"a fraction of letters", der::generalizedTime, "20200101000000.5xZ", "", true},
        TimeCase{"a fraction in a UTCTime", der::utcTime, "200101000000.5Z", "", true}));

TEST(X509Time, IsWrittenByItsYear)
{
    const struct {
        const char* time;
        const char* word;
        const char* text;
    } cases[] = {{"19491231235959Z", "GeneralizedType", "19491231235959Z"},
                 {"19500101000000Z", "UTCTime", "500101000000Z"},
                 {"20491231235959Z", "UTCTime", "491231235959Z"},
                 {"20500101000000Z", "GeneralizedType", "20500101000000Z"}};
    for (const auto& entry : cases) {
        const CCryptoDateTime time(entry.time);
        EXPECT_STREQ(X509TimeTypeWord(time), entry.word);
        EXPECT_EQ(X509TimeText(time), entry.text);
    }
    EXPECT_TRUE(X509TimeText(CCryptoDateTime()).isEmpty());
}
