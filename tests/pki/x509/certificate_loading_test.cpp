#include "asn1/der/der_cursor.h"
#include "pki/x509/certificate.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/certificate_fields.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ccrypto {
namespace {

Bytes WithVersion1Field(std::size_t index, const Bytes& field)
{
    std::vector<Bytes> fields = FieldsOfVersion1();
    fields.at(index) = field;
    return SignedFields(JoinedFields(fields));
}

Bytes PublicKeyOf(const Bytes& algorithm, const Bytes& bitString)
{
    return Tlv(der::sequence, {Tlv(der::sequence, algorithm), Tlv(der::bitString, bitString)});
}

Bytes NameOfMany(std::size_t attributes)
{
    const Bytes one = Tlv(der::set, Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::utf8String, TextBytes("x"))}));
    Bytes all;
    for (std::size_t count = 0; count < attributes; ++count)
        all.insert(all.end(), one.begin(), one.end());
    return Tlv(der::sequence, all);
}

Bytes OneExtension(const Bytes& parts)
{
    return Tlv(der::Context(3), Tlv(der::sequence, Tlv(der::sequence, parts)));
}

Bytes WithUniqueIdentifier(const Bytes& bitString)
{
    return LeafCertificate().extensionsDer(Tlv(der::Context(1, false), bitString)).build(CertificateRoot());
}

/// A certificate whose signature field is this one.
Bytes WithSignatureField(const Bytes& bitString)
{
    return Tlv(der::sequence, {LeafCertificate().tbs(CertificateRoot()), TestAlgorithm(CertificateRoot()), bitString});
}

constexpr std::uint8_t derTruth = 0xFF;

struct LoadCase {
    const char* name;
    Bytes (*make)();
    const char* reason = ""; ///< empty for a certificate that loads
    LoadFailure failure = LoadFailure::malformed;
};

class LoadsCertificate : public ::testing::TestWithParam<LoadCase> {};

const LoadCase loadCases[] = {
    {"version 1", [] { return SignedFields(JoinedFields(FieldsOfVersion1())); }},
    {"version 3 without extensions", [] { return LeafCertificate().extensionsDer({}).build(CertificateRoot()); }},
    {"unique identifiers",
     [] {
         return LeafCertificate()
             .extensionsDer(Joined({Tlv(der::Context(1, false), {0, 1}), Tlv(der::Context(2, false), {0, 2}),
                                    OneExtension(Joined({OidTlv("2.5.29.15"), Tlv(der::octetString, {3, 2, 7, 0x80})}))}))
             .build(CertificateRoot());
     }},
    {"a unique identifier of no octets", [] { return WithUniqueIdentifier({}); }, "Invalid unique identifier"},
    {"a unique identifier with nine unused bits",
     [] {
         return WithUniqueIdentifier({9, 0x78});
     },
     "Invalid unique identifier"},
    {"a unique identifier with unused bits of none", [] { return WithUniqueIdentifier({1}); }, "Invalid unique identifier"},
    {"version 2", [] { return LeafCertificate().version(0x101).build(CertificateRoot()); }, "Invalid version: 2"},
    {"version 4", [] { return LeafCertificate().version(0x103).build(CertificateRoot()); }, "Invalid version: 4"},
    {"a version that fills 32 bits",
     [] {
         return SignedFields(
             Joined({Tlv(der::Context(0), Tlv(der::integer, {0x7F, 0xFF, 0xFF, 0xFF})), JoinedFields(FieldsOfVersion1())}));
     },
     "Invalid version: 0"},
    {"a version with a zero too many",
     [] {
         return SignedFields(Joined({Tlv(der::Context(0), Tlv(der::integer, {0, 2})), JoinedFields(FieldsOfVersion1())}));
     },
     "Invalid version: 0"},
    {"a version below zero",
     [] {
         return SignedFields(Joined({Tlv(der::Context(0), Tlv(der::integer, {0xFE})), JoinedFields(FieldsOfVersion1())}));
     },
     "Invalid version: 0"},
    {"version 1 that is written out", [] { return LeafCertificate().version(0x100).build(CertificateRoot()); },
     "Not a certificate"},
    {"nothing", [] { return Bytes(); }, "value is empty"},
    {"no DER",
     [] {
         return Bytes{0x30, 0x05, 0x02};
     },
     "Loading failed!"},
    {"another structure", [] { return Tlv(der::sequence, NumberTlv(1)); }, "Not a certificate"},
    {"no key, extensions",
     [] {
         std::vector<Bytes> fields = FieldsOfVersion1();
         fields.back() = OneExtension(Joined({OidTlv("2.5.29.15"), Tlv(der::octetString, {3, 2, 7, 0x80})}));
         return SignedFields(Joined({Tlv(der::Context(0), NumberTlv(2)), JoinedFields(fields)}));
     },
     "Public key not found"},
    {"no key, and no issuer",
     [] {
         std::vector<Bytes> fields = FieldsOfVersion1();
         fields[2] = Tlv(der::sequence, Tlv(der::set, Bytes()));
         fields.pop_back();
         return SignedFields(JoinedFields(fields));
     },
     "Invalid issuer"},
    {"no key, no more", [] { return WithVersion1Field(5, {}); }, "Public key not found"},
    {"a key of another structure", [] { return WithVersion1Field(5, Tlv(der::sequence, NumberTlv(1))); }, "Key loading failed"},
    {"a key of an unknown algorithm",
     [] {
         return WithVersion1Field(5, PublicKeyOf(OidTlv("1.2.3.4"), {0, 1}));
     },
     "Key loading failed", LoadFailure::unsupportedKey},
    {"a key with a field after it",
     [] {
         const Bytes info = BytesOf(TestKey(2)->publicKeyInfo());
         const auto fields = OnlyValue(info, der::sequence).value();
         return WithVersion1Field(5, Tlv(der::sequence, {Bytes(fields.begin(), fields.end()), NumberTlv(1)}));
     },
     "Key loading failed"},
    {"a key off the curve",
     [] {
         Bytes info = BytesOf(TestKey(2)->publicKeyInfo());
         info.back() ^= 1;
         return WithVersion1Field(5, info);
     },
     "Key loading failed", LoadFailure::unsupportedKey},
    {"a key with an unused bit",
     [] {
         Bytes info = BytesOf(TestKey(2)->publicKeyInfo());
         info.at(info.size() - 66) = 1;
         return WithVersion1Field(5, info);
     },
     "Key loading failed"},
    {"a serial number of 64 bytes", [] { return WithVersion1Field(0, Tlv(der::integer, Bytes(64, 0x11))); }},
    {"a serial number of 65 bytes", [] { return WithVersion1Field(0, Tlv(der::integer, Bytes(65, 0x11))); },
     "The serial number is longer than 64 bytes"},
    {"a serial number below zero",
     [] {
         return WithVersion1Field(0, Tlv(der::integer, {0xFF, 0x01}));
     }},
    {"a serial number of no octets", [] { return WithVersion1Field(0, Tlv(der::integer, Bytes())); }, "Invalid serial number"},
    {"a serial number with a zero too many",
     [] {
         return WithVersion1Field(0, Tlv(der::integer, {0, 1}));
     },
     "Invalid serial number"},
    {"a serial number with a sign too many",
     [] {
         return WithVersion1Field(0, Tlv(der::integer, {0xFF, 0x81}));
     },
     "Invalid serial number"},
    {"an algorithm that is no SEQUENCE", [] { return WithVersion1Field(1, OidTlv("1.2.840.10045.4.3.2")); },
     "Invalid signature algorithm"},
    {"an algorithm with two parameters",
     [] {
         return WithVersion1Field(1, Tlv(der::sequence, {OidTlv("1.2.840.10045.4.3.2"), NumberTlv(1), NumberTlv(1)}));
     },
     "Invalid signature algorithm"},
    {"an unknown algorithm", [] { return WithVersion1Field(1, Tlv(der::sequence, OidTlv("1.2.3.4"))); }},
    {"an issuer of octets", [] { return WithVersion1Field(2, Tlv(der::octetString, {})); }, "Not a certificate"},
    {"an empty issuer", [] { return WithVersion1Field(2, Tlv(der::sequence, Bytes())); }},
    {"an empty relative name", [] { return WithVersion1Field(2, Tlv(der::sequence, Tlv(der::set, Bytes()))); }, "Invalid issuer"},
    {"a name of extensions",
     [] {
         return WithVersion1Field(4, Tlv(der::sequence, Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::octetString, {1})})));
     },
     "Invalid subject"},
    {"an attribute without a value",
     [] { return WithVersion1Field(4, Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, OidTlv("2.5.4.3"))))); },
     "Invalid subject"},
    {"an attribute of two values",
     [] {
         return WithVersion1Field(
             4, Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, {OidTlv("2.5.4.3"), NumberTlv(1), NumberTlv(1)}))));
     },
     "Invalid subject"},
    {"an attribute that is a BOOLEAN",
     [] {
         return WithVersion1Field(
             4, Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::boolean, {derTruth})}))));
     }},
    {"a name of 10000 values", [] { return WithVersion1Field(4, NameOfMany(10000)); }},
    {"a name of 10001 values", [] { return WithVersion1Field(4, NameOfMany(10001)); }, "Invalid subject"},
    {"a day that no month has",
     [] {
         return WithVersion1Field(3,
                                  Tlv(der::sequence, {Tlv(der::utcTime, TextBytes("260230000000Z")), TestTime("20300101000000Z")}));
     },
     "Invalid time"},
    {"a time without seconds",
     [] {
         return WithVersion1Field(3,
                                  Tlv(der::sequence, {TestTime("20200101000000Z"), Tlv(der::utcTime, TextBytes("2601010000Z"))}));
     },
     "Invalid time"},
    {"a third time",
     [] {
         return WithVersion1Field(3, Tlv(der::sequence, {TestTime("20200101000000Z"), TestTime("20200101000000Z"), NumberTlv(1)}));
     },
     "Data follows the last field"},
    {"no list of extensions in [3]",
     [] { return LeafCertificate().extensionsDer(Tlv(der::Context(3), Bytes())).build(CertificateRoot()); }, "Not a certificate"},
    {"no extension in the list",
     [] { return LeafCertificate().extensionsDer(Tlv(der::Context(3), Tlv(der::sequence, Bytes()))).build(CertificateRoot()); },
     "Invalid extensions"},
    {"two lists of extensions",
     [] {
         const Bytes list = Tlv(der::sequence, TestKeyUsage(0x80));
         return LeafCertificate().extensionsDer(Tlv(der::Context(3), {list, list})).build(CertificateRoot());
     },
     "Data follows the last field"},
    {"an extension whose flag is not DER",
     [] {
         return LeafCertificate()
             .extensionsDer(OneExtension(Joined({OidTlv("2.5.29.15"), Tlv(der::boolean, {1}), Tlv(der::octetString, {5, 0})})))
             .build(CertificateRoot());
     },
     "Invalid extensions"},
    {"an extension with a flag and no value",
     [] {
         return LeafCertificate()
             .extensionsDer(OneExtension(Joined({OidTlv("2.5.29.15"), Tlv(der::boolean, {derTruth})})))
             .build(CertificateRoot());
     },
     "Invalid extensions"},
    {"an extension that is no OCTET STRING",
     [] {
         return LeafCertificate()
             .extensionsDer(OneExtension(Joined({OidTlv("2.5.29.15"), Tlv(der::utf8String, {5, 0})})))
             .build(CertificateRoot());
     },
     "Invalid extensions"},
    {"an extension in pieces",
     [] {
         return LeafCertificate()
             .extensionsDer(OneExtension(Joined({OidTlv("2.5.29.15"), Tlv(0x24, Tlv(der::octetString, {5, 0}))})))
             .build(CertificateRoot());
     },
     "Invalid extensions"},
    {"an extension with octets after its value",
     [] {
         return LeafCertificate()
             .extensionsDer(OneExtension(Joined({OidTlv("2.5.29.15"), Tlv(der::octetString, {5, 0}), NumberTlv(1)})))
             .build(CertificateRoot());
     },
     "Invalid extensions"},
    {"an extension whose identifier has no octets",
     [] {
         return LeafCertificate()
             .extensionsDer(OneExtension(Joined({Tlv(der::oid, Bytes()), Tlv(der::octetString, {5, 0})})))
             .build(CertificateRoot());
     },
     "Invalid extensions"},
    {"an extension in a relative name",
     [] {
         return LeafCertificate()
             .extensionsDer(Tlv(der::Context(3), Tlv(der::sequence, Tlv(der::set, TestKeyUsage(0x80)))))
             .build(CertificateRoot());
     },
     "Invalid extensions"},
    {"a field after the extensions",
     [] {
         return LeafCertificate()
             .extensionsDer(Joined({Tlv(der::Context(3), Tlv(der::sequence, TestKeyUsage(0x80))), NumberTlv(1)}))
             .build(CertificateRoot());
     },
     "Data follows the last field"},
    {"a field after the signature",
     [] {
         return Tlv(der::sequence, {LeafCertificate().tbs(CertificateRoot()), TestAlgorithm(CertificateRoot()),
                                    Tlv(der::bitString, {0, 1}), NumberTlv(1)});
     },
     "Data follows the last field"},
    {"an element after the certificate",
     [] {
         return Joined({LeafCertificate().build(CertificateRoot()), NumberTlv(1)});
     },
     "Data follows the last field"},
    {"a signature without bits", [] { return WithSignatureField(Tlv(der::bitString, Bytes{0})); }, "Invalid signature"},
    {"a signature without octets", [] { return WithSignatureField(Tlv(der::bitString, Bytes())); }, "Not a certificate"},
    {"a signature in pieces",
     [] {
         return WithSignatureField(Tlv(0x23, Tlv(der::bitString, {0, 1})));
     },
     "Not a certificate"},
};

TEST_P(LoadsCertificate, OrSaysWhyNot)
{
    SCOPED_TRACE(GetParam().name);
    const Bytes der = GetParam().make();
    CCrypto_X509_Certificate certificate;
    ASSERT_TRUE(certificate.LoadCertificate(ElementOf(LeafCertificate().build(CertificateRoot()))));
    ForgetFailure();
    const bool isLoaded = certificate.LoadCertificate(ElementOf(der));
    if (isLoaded) {
        EXPECT_STREQ(GetParam().reason, "");
        EXPECT_EQ(certificate.failure(), LoadFailure::none);
        EXPECT_EQ(certificate.GetCertificate(), ElementOf(der));
        return;
    }
    EXPECT_THAT(ReasonOfFailure(), ::testing::StartsWith(GetParam().reason));
    EXPECT_STRNE(GetParam().reason, "");
    EXPECT_EQ(certificate.failure(), GetParam().failure);
    // Nothing of the one before is left.
    EXPECT_FALSE(certificate.isLoaded());
    EXPECT_TRUE(certificate.serialNumber().isEmpty() && certificate.subject().isEmpty() && certificate.issuer().isEmpty());
    EXPECT_TRUE(certificate.extensions().isEmpty() && certificate.signature().isEmpty() && certificate.signedOctets().empty());
    EXPECT_TRUE(certificate.publicKey() == nullptr && certificate.publicKeyInfo().isEmpty() && !certificate.validFrom().isValid());
}

INSTANTIATE_TEST_SUITE_P(Structures, LoadsCertificate, ::testing::ValuesIn(loadCases));

} // namespace
} // namespace ccrypto
