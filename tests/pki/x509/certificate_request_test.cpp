#include "asn1/der/der_cursor.h"
#include "pki/x509/certificate_request.h"
#include "pki/x509/name.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/x509/test_authority.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace ccrypto;

namespace {

const char* const extensionRequestOid = "1.2.840.113549.1.9.14";

const TestIssuer& Requester()
{
    static const TestIssuer requester = {.name = TestName("C=FI,CN=Asks"), .key = TestKey(1)};
    return requester;
}

Bytes CertificateRequestOf(const Bytes& version, const Bytes& attributes, const Bytes& subject = Requester().name,
                           const Bytes& key = BytesOf(Requester().key->publicKeyInfo()))
{
    return TestSigned(Tlv(der::sequence, {version, subject, key, attributes}), Requester());
}

Bytes RequestWithAttributes(const std::vector<Bytes>& attributes)
{
    Bytes all;
    for (const Bytes& attribute : attributes)
        all = Joined({all, attribute});
    return CertificateRequestOf(NumberTlv(0), Tlv(der::Context(0), all));
}

Bytes RequestAttribute(const char* oid, const Bytes& values)
{
    return Tlv(der::sequence, {OidTlv(oid), Tlv(der::set, values)});
}

Bytes WantedExtensions()
{
    return Tlv(der::sequence, {TestBasicConstraints(true, 0), TestKeyUsage(0x04)});
}

struct RequestCase {
    const char* name;
    Bytes (*make)();
    const char* reason = ""; ///< empty for a request that loads
    std::size_t extensions = 0;
    std::size_t attributes = 0;
    LoadFailure failure = LoadFailure::malformed; ///< for a request that does not load
};

class LoadsRequest : public ::testing::TestWithParam<RequestCase> {};

const RequestCase requestCases[] = {
    {"without attributes", [] { return RequestWithAttributes({}); }},
    {"with the set left out", [] { return CertificateRequestOf(NumberTlv(0), {}); }},
    {"with extensions", [] { return RequestWithAttributes({RequestAttribute(extensionRequestOid, WantedExtensions())}); }, "", 2,
     1},
    {"with another attribute before them",
     [] {
         return RequestWithAttributes({RequestAttribute("1.2.840.113549.1.9.7", Tlv(der::utf8String, TextBytes("challenge"))),
                                       RequestAttribute(extensionRequestOid, WantedExtensions())});
     },
     "", 2, 2},
    {"extensions twice",
     [] {
         return RequestWithAttributes({RequestAttribute(extensionRequestOid, WantedExtensions()),
                                       RequestAttribute(extensionRequestOid, WantedExtensions())});
     },
     "Invalid extensions"},
    {"two lists of extensions",
     [] {
         return RequestWithAttributes({RequestAttribute(extensionRequestOid, Joined({WantedExtensions(), WantedExtensions()}))});
     },
     "Invalid extensions"},
    {"an attribute without values", [] { return RequestWithAttributes({RequestAttribute("1.2.3", {})}); }, "Invalid attribute"},
    {"an empty list of extensions",
     [] { return RequestWithAttributes({RequestAttribute(extensionRequestOid, Tlv(der::sequence, Bytes()))}); },
     "Invalid extensions"},
    {"a name in place of extensions",
     [] { return RequestWithAttributes({RequestAttribute(extensionRequestOid, TestName("CN=x"))}); }, "Invalid extensions"},
    {"a SET in place of extensions",
     [] { return RequestWithAttributes({RequestAttribute(extensionRequestOid, Tlv(der::set, TestKeyUsage(0x04)))}); },
     "Invalid extensions"},
    {"10,001 attributes", [] { return RequestWithAttributes(std::vector(10'001, RequestAttribute("1.2.3", NumberTlv(1)))); },
     "There are more than 10000 values"},
    {"an attribute without a type",
     [] {
         return RequestWithAttributes({Tlv(der::sequence, {Tlv(der::oid, Bytes()), Tlv(der::set, NumberTlv(1))})});
     },
     "Invalid attribute"},
    {"a subject that is none", [] { return CertificateRequestOf(NumberTlv(0), {}, Tlv(der::sequence, NumberTlv(1))); },
     "Invalid subject"},
    {"a key of another algorithm",
     [] {
         return CertificateRequestOf(NumberTlv(0), {}, Requester().name,
                                     Tlv(der::sequence, {Tlv(der::sequence, OidTlv("1.2.3")), Tlv(der::bitString, Bytes{0, 1})}));
     },
     "Key loading failed", 0, 0, LoadFailure::unsupportedKey},
    {"an attribute that is none", [] { return RequestWithAttributes({NumberTlv(1)}); }, "Invalid attribute"},
    {"an attribute with more than values",
     [] {
         return RequestWithAttributes({Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::set, NumberTlv(1)), NumberTlv(1)})});
     },
     "Invalid attribute"},
    {"version 2", [] { return CertificateRequestOf(NumberTlv(1), {}); }, "The version of the request is not 1"},
    {"a field after the attributes",
     [] {
         return CertificateRequestOf(NumberTlv(0), Joined({Tlv(der::Context(0), Bytes()), NumberTlv(1)}));
     },
     "Data follows the last field"},
    {"an element after the request",
     [] {
         return Joined({RequestWithAttributes({}), NumberTlv(1)});
     },
     "Data follows the last field"},
    {"another structure", [] { return TestCertificate(Requester()).build(Requester()); }, "Not a certification request"},
    {"nothing", [] { return Bytes(); }, "value is empty"},
    {"no DER",
     [] {
         return Bytes{0x30, 5};
     },
     "Loading failed!"},
};

} // namespace

TEST_P(LoadsRequest, OrSaysWhyNot)
{
    SCOPED_TRACE(GetParam().name);
    CCryptoCertificateRequest request;
    ASSERT_TRUE(request.LoadRequest(ElementOf(RequestWithAttributes({RequestAttribute(extensionRequestOid, WantedExtensions())}))));
    ForgetFailure();
    const bool isLoaded = request.LoadRequest(ElementOf(GetParam().make()));
    ASSERT_EQ(isLoaded, *GetParam().reason == '\0') << ReasonOfFailure();
    EXPECT_THAT(ReasonOfFailure(), ::testing::StartsWith(GetParam().reason));
    EXPECT_EQ(request.extensions().values().size(), GetParam().extensions);
    EXPECT_EQ(request.attributes().size(), GetParam().attributes);
    EXPECT_EQ(request.failure(), isLoaded ? LoadFailure::none : GetParam().failure);
    EXPECT_EQ(request.publicKey() != nullptr, isLoaded);
    EXPECT_EQ(NameText(request.subject()), isLoaded ? "CN=Asks, C=FI" : "");
    EXPECT_EQ(request.verifySignature(), isLoaded ? SignatureResult::good : SignatureResult::bad);
}

INSTANTIATE_TEST_SUITE_P(Structures, LoadsRequest, ::testing::ValuesIn(requestCases));

TEST(CertificateRequest, IsBuiltForEveryKindOfKey)
{
    CCrypto_X509_ValueList subject;
    ASSERT_TRUE(BuildName({.country = "FI", .commonName = "Asks"}, subject));
    CCryptoCertificateRequest model;
    ASSERT_TRUE(model.LoadRequest(ElementOf(RequestWithAttributes({RequestAttribute(extensionRequestOid, WantedExtensions())}))));
    for (const TestKeyPtr& key : {TestKey(1), TestRsaKey(), TestEd25519Key()}) {
        const element der = CCryptoCertificateRequest::BuildRequest(*key, algorithm::sha256, subject, model.extensions());
        CCryptoCertificateRequest request;
        ASSERT_TRUE(request.LoadRequest(der)) << key->name();
        EXPECT_EQ(request.verifySignature(), SignatureResult::good);
        EXPECT_EQ(request.publicKeyInfo(), key->publicKeyInfo());
        EXPECT_EQ(request.subject().GetDerEncodedElement(), subject.GetDerEncodedElement());
        EXPECT_EQ(request.extensions().GetDerEncodedElement(), model.extensions().GetDerEncodedElement());
    }
    // As RFC 2986 has it: an empty set, not none.
    const element der = CCryptoCertificateRequest::BuildRequest(*TestKey(1), algorithm::sha256, subject, {});
    EXPECT_THAT(HexOf(der), ::testing::HasSubstr("a000" + Hex(TestAlgorithm(Requester()))));
    EXPECT_TRUE(CCryptoCertificateRequest::BuildRequest(*TestKey(1), algorithm::sha1, subject, {}).isEmpty());
    EXPECT_TRUE(CCryptoCertificateRequest::BuildRequest(*TestKey(1)->publicHalf(), algorithm::sha256, subject, {}).isEmpty());
}

TEST(CertificateRequest, ReadsThoseOfOpenssl)
{
    for (const TestVector& vector : ReadVectors("requests.txt")) {
        CCryptoCertificateRequest request;
        ASSERT_TRUE(request.LoadRequest(ElementOf(vector.bytes("Request")))) << vector.text("Name");
        EXPECT_EQ(request.verifySignature(), SignatureResult::good) << vector.text("Name");
        EXPECT_EQ(NameText(request.subject()), vector.text("Subject").c_str());
        EXPECT_EQ(request.extensions().values().size(), vector.number("Extensions"));
        EXPECT_EQ(request.attributes().size(), vector.number("Attributes"));
    }
}

TEST(CertificateRequest, OfASignatureWithAnUnusedBitIsReadAndDoesNotVerify)
{
    Bytes der = RequestWithAttributes({});
    DerCursor fields(*OnlyValue(der, der::sequence));
    ASSERT_TRUE(fields.read(der::sequence) && fields.read(der::sequence));
    der[der.size() - fields.read(der::bitString).value.size()] = 1;
    CCryptoCertificateRequest request;
    ASSERT_TRUE(request.LoadRequest(ElementOf(der)));
    EXPECT_EQ(request.verifySignature(), SignatureResult::bad);
}

TEST(CertificateRequest, NoFlippedBitVerifies)
{
    const Bytes der = RequestWithAttributes({});
    // Nor what was signed when it was not DER: a length of more octets than it takes.
    CCryptoCertificateRequest notDer;
    ASSERT_TRUE(notDer.LoadRequest(ElementOf(CertificateRequestOf({2, 0x81, 1, 0}, {}))));
    EXPECT_NE(notDer.verifySignature(), SignatureResult::good);
    for (std::size_t index = 0; index < der.size(); ++index) {
        Bytes changed = der;
        changed[index] ^= static_cast<std::uint8_t>(1u << (index % 8));
        CCryptoCertificateRequest request;
        if (request.LoadRequest(ElementOf(changed))) {
            EXPECT_NE(request.verifySignature(), SignatureResult::good) << index;
        }
    }
}
