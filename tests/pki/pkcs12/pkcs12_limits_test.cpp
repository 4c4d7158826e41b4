#include "pki/cms/encrypted_data.h"
#include "tests/pki/pkcs12/store_files.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string_view>

namespace ccrypto {

struct StoreCase {
    const char* name;
    Bytes file;
    PKCS12Outcome outcome;
};

void PrintTo(const StoreCase& test, std::ostream* stream)
{
    *stream << test.name;
}

class PKCS12Files : public ::testing::TestWithParam<StoreCase> {};

TEST_P(PKCS12Files, AreReadWithinTheirLimits)
{
    EXPECT_EQ(OutcomeOf(GetParam().file), GetParam().outcome);
}

namespace {

/// Each bag takes three levels of the 128.
Bytes NestedBags(std::size_t depth)
{
    Bytes bag = SecretBagOf(1);
    for (; depth != 0; --depth)
        bag = StoreBag("6", Tlv(der::sequence, bag));
    return bag;
}

/// The same element with an indefinite length, its octets in two pieces when it is an OCTET STRING.
Bytes Indefinite(std::uint8_t identifier, const Bytes& content)
{
    const auto middle = content.begin() + static_cast<std::ptrdiff_t>(content.size() / 2);
    const bool isString = identifier == der::octetString;
    const Bytes inside =
        isString
            ? Joined({Tlv(der::octetString, Bytes(content.begin(), middle)), Tlv(der::octetString, Bytes(middle, content.end()))})
            : content;
    return Joined({{static_cast<std::uint8_t>(isString ? 0x24 : identifier), 0x80}, inside, {0, 0}});
}

Bytes BrowserFile()
{
    const Bytes bags = Indefinite(der::sequence, SecretBagOf(1));
    const auto info = [](const Bytes& octets) {
        return Indefinite(der::sequence, Joined({OidTlv("1.2.840.113549.1.7.1"),
                                                 Indefinite(der::Context(0), Indefinite(der::octetString, octets))}));
    };
    return Indefinite(der::sequence, Joined({Tlv(der::integer, Bytes{3}), info(Indefinite(der::sequence, info(bags)))}));
}

/// Contents that are encrypted with one iteration.
Bytes EncryptedInfo(const Bytes& contents, const char* type = "1.2.840.113549.1.7.1", const char* password = "secret")
{
    CCryptoPKCS7encryptedDataObject data;
    EXPECT_TRUE(data.Encrypt({.iterations = 1}, password, contents));
    EXPECT_TRUE(data.encryptedContentInfo.SetContentOID(Oid::FromDotted(type)));
    return ContentInfo("1.2.840.113549.1.7.6", BytesOf(data.BuildDer()));
}

Bytes Repeated(const Bytes& octets, std::size_t count)
{
    Bytes all;
    for (; count != 0; --count)
        all.insert(all.end(), octets.begin(), octets.end());
    return all;
}

Bytes FileOfContents(const Bytes& info)
{
    return Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), DataInfo(Tlv(der::sequence, info))});
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Limits, PKCS12Files,
    ::testing::Values(
        StoreCase{"no octets", {}, PKCS12Outcome::malformed},
        StoreCase{"10,000 bags", PlainFile(Repeated(SecretBagOf(1), 10'000)), PKCS12Outcome::opened},
        StoreCase{"10,001 bags", PlainFile(Repeated(SecretBagOf(1), 10'001)), PKCS12Outcome::malformed},
        StoreCase{"bags 40 deep", PlainFile(NestedBags(40)), PKCS12Outcome::opened},
        StoreCase{"bags 43 deep", PlainFile(NestedBags(43)), PKCS12Outcome::malformed},
        StoreCase{"BER in pieces", BrowserFile(), PKCS12Outcome::opened},
        StoreCase{"version 2", PlainFile(SecretBagOf(1), 2), PKCS12Outcome::malformed},
        StoreCase{"octets after the last bag", PlainFile(Joined({SecretBagOf(1), {5}})), PKCS12Outcome::malformed},
        StoreCase{"a bag with more than attributes",
                  PlainFile(StoreBag("5", Joined({Tlv(der::null, Bytes{}), Tlv(der::null, Bytes{})}))), PKCS12Outcome::malformed},
        StoreCase{"50,000,001 iterations", PlainFile(CostlyKey(50'000'001)), PKCS12Outcome::unsupported},
        StoreCase{"two keys of 30,000,000 iterations", PlainFile(Repeated(CostlyKey(30'000'000), 2)), PKCS12Outcome::unsupported},
        StoreCase{"a key that is none", PlainFile(StoreBag("1", Tlv(der::sequence, NumberTlv(0)))), PKCS12Outcome::malformed},
        StoreCase{
            "signed contents",
            Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), ContentInfo("1.2.840.113549.1.7.2", Tlv(der::sequence, Bytes{}))}),
            PKCS12Outcome::unsupported},
        StoreCase{"contents under another password beside a costly key",
                  FileOfContents(Joined({EncryptedInfo(Tlv(der::sequence, SecretBagOf(1)), "1.2.840.113549.1.7.1", "other"),
                                         DataInfo(Tlv(der::sequence, CostlyKey(50'000'000)))})),
                  PKCS12Outcome::unsupported},
        StoreCase{"a costly key where it is encrypted", FileOfContents(EncryptedInfo(Tlv(der::sequence, CostlyKey(50'000'000)))),
                  PKCS12Outcome::unsupported},
        StoreCase{"encrypted contents", FileOfContents(EncryptedInfo(Tlv(der::sequence, SecretBagOf(1)))), PKCS12Outcome::opened},
        StoreCase{"encrypted contents that are no bags", FileOfContents(EncryptedInfo(Tlv(der::sequence, Tlv(der::null, Bytes{})))),
                  PKCS12Outcome::wrongPassword},
        StoreCase{"encrypted contents of another type",
                  FileOfContents(EncryptedInfo(Tlv(der::sequence, SecretBagOf(1)), "1.2.840.113549.1.7.2")),
                  PKCS12Outcome::malformed},
        StoreCase{"10,000 contents", FileOfContents(Repeated(DataInfo(Tlv(der::sequence, Bytes{})), 10'000)),
                  PKCS12Outcome::opened},
        StoreCase{"10,001 contents", FileOfContents(Repeated(DataInfo(Tlv(der::sequence, Bytes{})), 10'001)),
                  PKCS12Outcome::malformed},
        StoreCase{"contents that are no octets",
                  FileOfContents(ContentInfo("1.2.840.113549.1.7.1", Tlv(der::sequence, Tlv(der::sequence, SecretBagOf(1))))),
                  PKCS12Outcome::malformed},
        StoreCase{"a file that is no octets",
                  Tlv(der::sequence, {Tlv(der::integer, Bytes{3}),
                                      ContentInfo("1.2.840.113549.1.7.1",
                                                  Tlv(der::sequence, Tlv(der::sequence, DataInfo(Tlv(der::sequence, Bytes{})))))}),
                  PKCS12Outcome::malformed},
        StoreCase{
            "two elements as contents",
            FileOfContents(ContentInfo("1.2.840.113549.1.7.1", Repeated(Tlv(der::octetString, Tlv(der::sequence, Bytes{})), 2))),
            PKCS12Outcome::malformed},
        StoreCase{"5,001 bags in each of two contents",
                  FileOfContents(Repeated(DataInfo(Tlv(der::sequence, Repeated(SecretBagOf(1), 5'001))), 2)),
                  PKCS12Outcome::malformed},
        StoreCase{"10,001 bags of no bags", PlainFile(Repeated(StoreBag("6", Tlv(der::sequence, Bytes{})), 10'001)),
                  PKCS12Outcome::malformed},
        StoreCase{"bags that are none", PlainFile(StoreBag("6", Tlv(der::null, Bytes{}))), PKCS12Outcome::malformed},
        StoreCase{"a secret of two values",
                  PlainFile(StoreBag("5", Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::Context(0), Repeated(NumberTlv(1), 2))}))),
                  PKCS12Outcome::malformed},
        StoreCase{"a secret with more than its value",
                  PlainFile(StoreBag("5", Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::Context(0), NumberTlv(1)), NumberTlv(1)}))),
                  PKCS12Outcome::malformed},
        StoreCase{"an element after the attributes",
                  PlainFile(Tlv(der::sequence,
                                {OidTlv("1.2.3"), Tlv(der::Context(0), NumberTlv(1)), Tlv(der::set, Bytes{}), NumberTlv(1)})),
                  PKCS12Outcome::malformed},
        StoreCase{"an attribute with more than values",
                  PlainFile(StoreBag("9", NumberTlv(1),
                                     Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::set, NumberTlv(1)), NumberTlv(1)}))),
                  PKCS12Outcome::malformed},
        StoreCase{"contents for a public key", FileOfContents(ContentInfo("1.2.840.113549.1.7.3", Tlv(der::sequence, Bytes{}))),
                  PKCS12Outcome::opened}));

namespace {

struct MacCase {
    const char* name;
    Bytes algorithm;
    Bytes iterations; ///< INTEGER of the MAC, or none
    std::size_t digest = 32;
    PKCS12Outcome outcome = PKCS12Outcome::unsupported;
    Bytes after = {}; ///< the MAC
};

Bytes AlgorithmOf(std::string_view oid, const Bytes& parameters = {})
{
    return Tlv(der::sequence, {OidTlv(oid), parameters});
}

constexpr std::string_view sha256Oid = "2.16.840.1.101.3.4.2.1";
constexpr std::string_view hmacSha256Oid = "1.2.840.113549.2.9";

Bytes Pbmac1(const Bytes& iterations, std::string_view prf = hmacSha256Oid, std::string_view mac = hmacSha256Oid,
             const Bytes& parameters = {})
{
    const Bytes derivation =
        Tlv(der::sequence, {Tlv(der::octetString, TextBytes("saltsalt")), iterations, NumberTlv(32), AlgorithmOf(prf, parameters)});
    return AlgorithmOf("1.2.840.113549.1.5.14",
                       Tlv(der::sequence, {AlgorithmOf("1.2.840.113549.1.5.12", derivation), AlgorithmOf(mac, parameters)}));
}

} // namespace

TEST(PKCS12, ChecksTheNumbersOfAMac)
{
    const Bytes one = NumberTlv(1);
    const Bytes null = Tlv(der::null, Bytes{});
    const MacCase cases[] = {
        {"HMAC", AlgorithmOf(sha256Oid, null), one, 32, PKCS12Outcome::wrongPassword},
        {"without NULL and iterations", AlgorithmOf(sha256Oid), {}, 32, PKCS12Outcome::wrongPassword},
        {"PBMAC1", Pbmac1(one), one, 32, PKCS12Outcome::wrongPassword},
        {"an element after it", AlgorithmOf(sha256Oid), one, 32, PKCS12Outcome::malformed, one},
        {"a short digest", AlgorithmOf(sha256Oid), one, 31},
        {"a hash with parameters", AlgorithmOf(sha256Oid, one), one},
        {"no iterations", AlgorithmOf(sha256Oid), NumberTlv(0)},
        {"a negative number of iterations", AlgorithmOf(sha256Oid), Tlv(der::integer, Bytes{0xFF})},
        {"a number of iterations of 5 octets", AlgorithmOf(sha256Oid), Tlv(der::integer, Bytes{1, 0, 0, 0, 1})},
        {"50,000,001 iterations", AlgorithmOf(sha256Oid), NumberTlv(50'000'001)},
        {"one iteration more than a costly key leaves", AlgorithmOf(sha256Oid), NumberTlv(2)},
        {"MD5", AlgorithmOf("1.2.840.113549.2.5"), one, 16},
        {"PBMAC1, no iterations", Pbmac1(NumberTlv(0)), one},
        {"PBMAC1, a hash in place of the prf", Pbmac1(one, sha256Oid), one},
        {"PBMAC1, a hash in place of the HMAC", Pbmac1(one, hmacSha256Oid, sha256Oid), one},
        {"PBMAC1, HMACs with parameters", Pbmac1(one, hmacSha256Oid, hmacSha256Oid, one), one},
    };
    const Bytes contents = DataInfo(Tlv(der::sequence, DataInfo(Tlv(der::sequence, CostlyKey(49'999'999)))));
    for (const MacCase& test : cases) {
        const Bytes mac = Tlv(der::sequence, {Tlv(der::sequence, {test.algorithm, Tlv(der::octetString, Bytes(test.digest))}),
                                              Tlv(der::octetString, TextBytes("saltsalt")), test.iterations});
        EXPECT_EQ(OutcomeOf(Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), contents, mac, test.after})), test.outcome)
            << test.name;
    }
    // A right one is spent, too, before a key that only its password shows.
    const Bytes hidden = Tlv(der::sequence, EncryptedInfo(Tlv(der::sequence, CostlyKey(49'999'999))));
    CCryptoPKCS12MacData mac;
    mac.set(algorithm::sha1, 1, element("salt"), false);
    ASSERT_TRUE(mac.sign("secret", hidden));
    EXPECT_EQ(OutcomeOf(Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), DataInfo(hidden), BytesOf(mac.BuildDer())})),
              PKCS12Outcome::unsupported);
}

} // namespace ccrypto
