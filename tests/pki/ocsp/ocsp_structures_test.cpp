#include "pki/ocsp/ocsp_extensions.h"
#include "pki/ocsp/ocsp_request.h"
#include "tests/pki/ocsp/test_ocsp.h"
#include "tests/support/captured_log.h"

#include <algorithm>
#include <fstream>
#include <iterator>

using namespace ccrypto;
using namespace CCryptoOCSP;

namespace {

element OcspFixture(const std::string& name)
{
    std::ifstream file(VECTOR_DIR "/../asn1/" + name + ".der", std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT_FALSE(bytes.empty()) << name;
    return ElementOf(bytes);
}

const TestIssuer& Authority()
{
    static const TestIssuer issuer = {.name = TestName("C=FI,CN=Root"), .key = TestKey(1)};
    return issuer;
}

bool IsLogged(const CapturedLog& log, std::string_view text)
{
    return std::ranges::any_of(log.texts(), [text](const std::string& line) { return line.find(text) != std::string::npos; });
}

bool Loads(const Bytes& response)
{
    return COCSPResponse().LoadResponse(ElementOf(response));
}

Bytes ManyOf(const Bytes& item, std::size_t count)
{
    Bytes all;
    all.reserve(item.size() * count);
    for (; count != 0; --count)
        all.insert(all.end(), item.begin(), item.end());
    return all;
}

} // namespace

TEST(OcspStructures, WhatOpensslWroteIsReadAndWrittenAgain)
{
    struct Expected {
        const char* name;
        CCertStatus::Kind kind;
        std::optional<RevocationReason> reason;
        bool byName;
    };
    for (const Expected& expected : {Expected{"ocsp_leaf", CCertStatus::Kind::good, {}, true},
                                     {"ocsp_revoked", CCertStatus::Kind::revoked, {}, true},
                                     {"ocsp_compromised", CCertStatus::Kind::revoked, RevocationReason::keyCompromise, true},
                                     {"ocsp_unknown", CCertStatus::Kind::unknown, {}, false}}) {
        SCOPED_TRACE(expected.name);
        const element der = OcspFixture(expected.name);
        COCSPResponse response;
        ASSERT_TRUE(response.LoadResponse(der));
        EXPECT_TRUE(response.isDer());
        EXPECT_TRUE(response.VerifySignature());
        const CTBSResponseData& data = response.basicResponse().tbsResponseData;
        ASSERT_EQ(data.responses.size(), 1u);
        EXPECT_EQ(data.responses[0]->certStatus.kind, expected.kind);
        EXPECT_EQ(data.responses[0]->certStatus.revocationReason, expected.reason);
        EXPECT_NE(data.responderName.isEmpty(), expected.byName);
        EXPECT_EQ(ReadOcspNonce(data.extensions).state == OcspNonce::State::present, expected.byName);
        // Of the fields, not of the octets that were kept.
        response.responseBytes.response = response.basicResponse().BuildDer();
        EXPECT_EQ(response.responseBytes.response, response.basicResponse().der());
        EXPECT_EQ(response.BuildDer(), der);
    }

    const element der = OcspFixture("ocsp_request");
    COCSPRequest request;
    ASSERT_TRUE(request.LoadRequest(der));
    EXPECT_FALSE(request.signature.isEmpty());
    EXPECT_FALSE(request.tbsRequest.requestorName.isEmpty());
    EXPECT_EQ(request.tbsRequest.requestList.at(0)->certID.serialNumber, ElementOf({0, 200}));
    EXPECT_FALSE(request.nonce().isEmpty());
    EXPECT_EQ(request.BuildDer(), der);
}

struct StatusCase {
    const char* name;
    Bytes octets;
    CCertStatus::Kind kind; ///< none: not read
    Bytes written = {};     ///< empty: the same octets
};

class OcspCertStatus : public ::testing::TestWithParam<StatusCase> {};

TEST_P(OcspCertStatus, IsOneAlternative)
{
    const StatusCase& status = GetParam();
    CCertStatus read;
    ASSERT_EQ(read.ParseDer(ElementOf(status.octets)), status.kind != CCertStatus::Kind::none);
    EXPECT_EQ(read.kind, status.kind);
    const Bytes written = status.written.empty() ? status.octets : status.written;
    EXPECT_EQ(BytesOf(read.BuildDer()), status.kind != CCertStatus::Kind::none ? written : Bytes());
}

const Bytes revokedTime = TestOcspTime("20260102030405Z");

INSTANTIATE_TEST_SUITE_P(
    Octets, OcspCertStatus,
    ::testing::Values(
        StatusCase{"good", {0x80, 0}, CCertStatus::Kind::good},
        StatusCase{"good, explicit", {0xA0, 2, 5, 0}, CCertStatus::Kind::good, {0x80, 0}},
        StatusCase{"good, constructed and empty", {0xA0, 0}, CCertStatus::Kind::none},
        StatusCase{"good with a value", {0x80, 1, 0}, CCertStatus::Kind::none},
        StatusCase{"good with two", {0xA0, 4, 5, 0, 5, 0}, CCertStatus::Kind::none},
        StatusCase{"revoked", Tlv(0xA1, revokedTime), CCertStatus::Kind::revoked},
        StatusCase{"revoked, reason", Tlv(0xA1, {revokedTime, {0xA0, 3, 10, 1, 4}}), CCertStatus::Kind::revoked},
        StatusCase{"revoked, reason without a name", Tlv(0xA1, {revokedTime, {0xA0, 3, 10, 1, 0x7F}}), CCertStatus::Kind::revoked},
        StatusCase{"revoked, reason below zero", Tlv(0xA1, {revokedTime, {0xA0, 3, 10, 1, 0x80}}), CCertStatus::Kind::none},
        StatusCase{"revoked, empty reason", Tlv(0xA1, {revokedTime, {0xA0, 2, 10, 0}}), CCertStatus::Kind::none},
        StatusCase{"revoked, reason of two bytes", Tlv(0xA1, {revokedTime, {0xA0, 4, 10, 2, 1, 4}}), CCertStatus::Kind::none},
        StatusCase{"revoked, two reasons", Tlv(0xA1, {revokedTime, {0xA0, 3, 10, 1, 4, 0xA0, 3, 10, 1, 1}}),
                   CCertStatus::Kind::none},
        StatusCase{"revoked, another tag", Tlv(0xA1, {revokedTime, {0xA1, 3, 10, 1, 4}}), CCertStatus::Kind::none},
        StatusCase{"revoked, UTCTime", Tlv(0xA1, Tlv(der::utcTime, TextBytes("260102030405Z"))), CCertStatus::Kind::none},
        StatusCase{"revoked, 30 February", Tlv(0xA1, TestOcspTime("20260230000000Z")), CCertStatus::Kind::none},
        StatusCase{"revoked, fraction", Tlv(0xA1, TestOcspTime("20260102030405.5Z")), CCertStatus::Kind::none},
        StatusCase{"revoked, nothing inside", {0xA1, 0}, CCertStatus::Kind::none},
        StatusCase{"unknown", {0x82, 0}, CCertStatus::Kind::unknown},
        StatusCase{"unknown, explicit", {0xA2, 2, 5, 0}, CCertStatus::Kind::unknown, {0x82, 0}},
        StatusCase{"unknown with a value", {0x82, 1, 0}, CCertStatus::Kind::none},
        StatusCase{"another tag", {0x83, 0}, CCertStatus::Kind::none}, StatusCase{"no tag", {5, 0}, CCertStatus::Kind::none}));

TEST(OcspStructures, OneAlternativeIsWritten)
{
    CCertStatus status;
    EXPECT_TRUE(status.BuildDer().isEmpty()) << "none";
    status.kind = CCertStatus::Kind::revoked;
    EXPECT_TRUE(status.BuildDer().isEmpty()) << "revoked without a time";
    status.kind = CCertStatus::Kind::good;
    status.revocationReason = RevocationReason::superseded;
    EXPECT_TRUE(status.BuildDer().isEmpty()) << "good and revoked";
    status.kind = CCertStatus::Kind::revoked;
    status.revocationTime = OcspTime(ocspNow);
    status.revocationReason = static_cast<RevocationReason>(0x80);
    EXPECT_TRUE(status.BuildDer().isEmpty()) << "a reason that is not read again";
    status.kind = CCertStatus::Kind::unknown;
    status.revocationReason.reset();
    status.revocationTime = OcspTime(ocspNow);
    EXPECT_TRUE(status.BuildDer().isEmpty()) << "unknown and revoked";
}

struct ResponseCase {
    const char* name;
    Bytes (*make)(TestOcspResponse&);
    bool loads = false;
};

class OcspResponseForm : public ::testing::TestWithParam<ResponseCase> {};

TEST_P(OcspResponseForm, IsReadOrRefused)
{
    TestOcspResponse made(Authority());
    const Bytes der = GetParam().make(made);
    COCSPResponse response;
    EXPECT_EQ(response.LoadResponse(ElementOf(der)), GetParam().loads);
    if (!GetParam().loads) {
        EXPECT_TRUE(response.der().isEmpty());
        EXPECT_TRUE(response.basicResponse().isEmpty());
        EXPECT_TRUE(response.basicResponse().tbsResponseData.responses.empty());
    }
}

const Bytes& ByName()
{
    static const Bytes name = Tlv(0xA1, Authority().name);
    return name;
}

INSTANTIATE_TEST_SUITE_P(
    Octets, OcspResponseForm,
    ::testing::Values(ResponseCase{"plain", [](TestOcspResponse& made) { return made.build(Authority()); }, true},
                      ResponseCase{"name and extensions, both [1]",
                                   [](TestOcspResponse& made) {
                                       made.responder = ByName();
                                       made.extensions = TestNonce({1, 2, 3});
                                       return made.build(Authority());
                                   },
                                   true},
                      ResponseCase{"version 1 written out",
                                   [](TestOcspResponse& made) {
                                       made.responder = Joined({{0xA0, 3, 2, 1, 0}, ByName()});
                                       return made.build(Authority());
                                   },
                                   true},
                      ResponseCase{"version 2",
                                   [](TestOcspResponse& made) {
                                       made.responder = Joined({{0xA0, 3, 2, 1, 1}, ByName()});
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"two versions",
                                   [](TestOcspResponse& made) {
                                       made.responder = Joined({{0xA0, 6, 2, 1, 0, 2, 1, 0}, ByName()});
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"name and key",
                                   [](TestOcspResponse& made) {
                                       made.responder = Joined({ByName(), {0xA2, 3, 4, 1, 0}});
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"neither name nor key",
                                   [](TestOcspResponse& made) {
                                       made.responder = Bytes{0xA0, 3, 2, 1, 0};
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"two names",
                                   [](TestOcspResponse& made) {
                                       made.responder = Tlv(0xA1, {Authority().name, Authority().name});
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"an empty key hash",
                                   [](TestOcspResponse& made) {
                                       made.responder = Bytes{0xA2, 2, 4, 0};
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"local time",
                                   [](TestOcspResponse& made) {
                                       made.producedAt = TestOcspTime("20260601000000");
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"thisUpdate is a UTCTime",
                                   [](TestOcspResponse& made) {
                                       made.thisUpdate = Tlv(der::utcTime, TextBytes("260601000000Z"));
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"two of nextUpdate",
                                   [](TestOcspResponse& made) {
                                       made.nextUpdate = Joined({made.nextUpdate, made.nextUpdate});
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"two alternatives of a status",
                                   [](TestOcspResponse& made) {
                                       made.status = {0x80, 0, 0x82, 0};
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"an element after the last of a single response",
                                   [](TestOcspResponse& made) {
                                       made.singleEnd = {0xA2, 2, 5, 0};
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"no extension in the list",
                                   [](TestOcspResponse& made) {
                                       made.singleEnd = {0xA1, 2, 0x30, 0};
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"a serial number of 64 bytes",
                                   [](TestOcspResponse& made) {
                                       made.certId.serial = Bytes(64, 1);
                                       return made.build(Authority());
                                   },
                                   true},
                      ResponseCase{"a serial number of 65 bytes",
                                   [](TestOcspResponse& made) {
                                       made.certId.serial = Bytes(65, 1);
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"a serial number with an octet too many",
                                   [](TestOcspResponse& made) {
                                       made.certId.serial = {0, 7};
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"another element after the certificates",
                                   [](TestOcspResponse& made) {
                                       Bytes basic = made.basic(Authority());
                                       const auto fields = OnlyValue(basic, der::sequence).value();
                                       return made.wrap(Tlv(der::sequence, {Bytes(fields.begin(), fields.end()), {0xA1, 2, 5, 0}}));
                                   }},
                      ResponseCase{"octets after the basic response",
                                   [](TestOcspResponse& made) {
                                       return made.wrap(Joined({made.basic(Authority()), {5, 0}}));
                                   }},
                      ResponseCase{"octets after the response",
                                   [](TestOcspResponse& made) {
                                       return Joined({made.build(Authority()), {5, 0}});
                                   }},
                      ResponseCase{"a signature with unused bits",
                                   [](TestOcspResponse& made) {
                                       const Bytes data = made.data(Authority());
                                       return made.wrap(Tlv(der::sequence, {data, TestAlgorithm(Authority()), {3, 2, 1, 0xFE}}));
                                   }},
                      ResponseCase{"no signature",
                                   [](TestOcspResponse& made) {
                                       const Bytes data = made.data(Authority());
                                       return made.wrap(Tlv(der::sequence, {data, TestAlgorithm(Authority()), {3, 1, 0}}));
                                   }},
                      ResponseCase{"a status without a name",
                                   [](TestOcspResponse& made) {
                                       made.responseStatus = 4;
                                       return made.build(Authority());
                                   }},
                      ResponseCase{"a status of two bytes", [](TestOcspResponse&) { return Bytes{0x30, 4, 10, 2, 0, 1}; }},
                      ResponseCase{"a signature of another algorithm",
                                   [](TestOcspResponse& made) {
                                       made.algorithm = Tlv(der::sequence, OidTlv("1.2.3.4"));
                                       return made.build(Authority());
                                   },
                                   true},
                      ResponseCase{"nothing", [](TestOcspResponse&) { return Bytes(); }}));

TEST(OcspStructures, ResponseWithoutBytesHasAnEmptyBasicResponse)
{
    for (const auto& [status, name] : {std::pair<std::uint8_t, const char*>{1, "malformedRequest"},
                                       {2, "internalError"},
                                       {3, "tryLater"},
                                       {5, "sigRequired"},
                                       {6, "unauthorized"},
                                       {0, "successful"}}) {
        const element der = ElementOf({0x30, 3, 10, 1, status});
        COCSPResponse response;
        ASSERT_TRUE(response.LoadResponse(der));
        EXPECT_STREQ(ResponseStatusName(response.responseStatus), name);
        EXPECT_TRUE(response.basicResponse().isEmpty());
        EXPECT_FALSE(response.VerifySignature());
        EXPECT_EQ(response.BuildDer(), der);
    }
}

TEST(OcspStructures, ResponseTypes)
{
    TestOcspResponse made(Authority());
    for (const std::string_view type : {"1.3.6.1.5.5.7.48.1.2", "1.3.6.1.5.5.7.48.1.3", "1.3.6.1.5.5.7.48.1.5"}) {
        made.type = type;
        COCSPResponse response;
        ASSERT_TRUE(response.LoadResponse(ElementOf(made.wrap({1, 2, 3}))));
        EXPECT_TRUE(response.basicResponse().isEmpty());
        EXPECT_EQ(response.responseBytes.response, ElementOf({1, 2, 3}));
        EXPECT_EQ(response.BuildDer(), response.der());
    }
    for (const std::string_view type : {"1.3.6.1.5.5.7.48.1.4", "1.3.6.1.5.5.7.48.1", "1.2.3"}) {
        made.type = type;
        const CapturedLog log;
        EXPECT_FALSE(Loads(made.build(Authority())));
        EXPECT_TRUE(IsLogged(log, "Unsupported response type"));
    }
}

TEST(OcspStructures, WhatIsNotDerSaysSo)
{
    TestOcspResponse made(Authority());
    const Bytes basic = made.basic(Authority());
    Bytes longLength = basic;
    ASSERT_EQ(longLength[1], 0x81);
    longLength[1] = 0x82;
    longLength.insert(longLength.begin() + 2, 0);
    // The second hides in an octet string that the outer decoder does not open.
    for (const Bytes& der : {Joined({made.wrap(basic), {0}}), made.wrap(longLength), made.wrap(Joined({basic, {0, 0}}))}) {
        COCSPResponse response;
        ASSERT_TRUE(response.LoadResponse(ElementOf(der)));
        EXPECT_FALSE(response.isDer());
    }
}

TEST(OcspStructures, SignatureOverWhatIsNotDerIsNone)
{
    const CertificatePtr issuer = LoadedCertificate(TestCertificate(Authority()).authority().build(Authority()));
    TestOcspResponse made(Authority());
    made.singleEnd = {0, 0}; // the decoder ends the level here, so what follows would be signed and not read
    COCSPResponse response;
    ASSERT_TRUE(response.LoadResponse(ElementOf(made.build(Authority()))));
    EXPECT_FALSE(response.isDer());
    EXPECT_FALSE(response.VerifySignature(*issuer));
}

TEST(OcspStructures, MembersHaveALimit)
{
    constexpr std::size_t limit = CStructure::maxMembers;
    TestOcspResponse made(Authority());
    made.certs = {ManyOf({0x30, 0}, limit)};
    EXPECT_TRUE(Loads(made.build(Authority())));

    const CapturedLog log;
    made.certs = {ManyOf({0x30, 0}, limit + 1)};
    EXPECT_FALSE(Loads(made.build(Authority())));
    made.certs.clear();
    made.moreResponses = ManyOf(made.single(), limit);
    EXPECT_FALSE(Loads(made.build(Authority())));
    const Bytes requests = Tlv(der::sequence, ManyOf(Tlv(der::sequence, made.certId.build()), limit + 1));
    EXPECT_FALSE(COCSPRequest().LoadRequest(ElementOf(Tlv(der::sequence, Tlv(der::sequence, requests)))));
    EXPECT_EQ(std::ranges::count(log.texts(), "ERROR: More than 10000 in one object"), 3);
}

struct NonceCase {
    const char* name;
    Bytes extensions;
    OcspNonce::State state;
};

class OcspNonceForm : public ::testing::TestWithParam<NonceCase> {};

TEST_P(OcspNonceForm, HasOneTo128Bytes)
{
    TestOcspResponse made(Authority());
    made.extensions = GetParam().extensions;
    COCSPResponse response;
    ASSERT_TRUE(response.LoadResponse(ElementOf(made.build(Authority()))));
    EXPECT_EQ(ReadOcspNonce(response.basicResponse().tbsResponseData.extensions).state, GetParam().state);
}

INSTANTIATE_TEST_SUITE_P(
    Extensions, OcspNonceForm,
    ::testing::Values(NonceCase{"absent", TestExtension("1.2.3", {5, 0}), OcspNonce::State::absent},
                      NonceCase{"one byte", TestNonce({1}), OcspNonce::State::present},
                      NonceCase{"128 bytes", TestNonce(Bytes(128, 1)), OcspNonce::State::present},
                      NonceCase{"129 bytes", TestNonce(Bytes(129, 1)), OcspNonce::State::malformed},
                      NonceCase{"no byte", TestNonce({}), OcspNonce::State::malformed},
                      NonceCase{"bare octets", TestExtension(ocspNonceOid, {1, 2, 3}), OcspNonce::State::malformed},
                      NonceCase{"twice", Joined({TestNonce({1}), TestNonce({1})}), OcspNonce::State::malformed}));

TEST(OcspStructures, RequestAsksForSeveralWithItsOwnNonce)
{
    const CertificatePtr issuer = LoadedCertificate(TestCertificate(Authority()).authority().build(Authority()));
    COCSPRequest request;
    ASSERT_TRUE(request.Ask(*issuer, ElementOf({7})));
    ASSERT_TRUE(request.Ask(*issuer, ElementOf({0, 0x80}), algorithm::sha256));
    EXPECT_FALSE(request.Ask(*issuer, ElementOf({7}), algorithm::md5));
    ASSERT_TRUE(request.AddNonce());
    EXPECT_EQ(request.nonce().length(), 32u);
    const TestCertId first{.issuer = Authority()};
    const TestCertId second{
        .issuer = Authority(), .serial = {0, 0x80}, .hashOid = "2.16.840.1.101.3.4.2.1", .hash = algorithm::sha256};
    const Bytes list = Tlv(der::sequence, {Tlv(der::sequence, first.build()), Tlv(der::sequence, second.build())});
    const Bytes extensions = Tlv(0xA2, Tlv(der::sequence, TestNonce(BytesOf(request.nonce()))));
    EXPECT_EQ(BytesOf(request.BuildDer()), Tlv(der::sequence, Tlv(der::sequence, {list, extensions})));

    COCSPRequest other;
    ASSERT_TRUE(other.Ask(*issuer, ElementOf({7})) && other.AddNonce());
    EXPECT_NE(HexOf(other.nonce()), HexOf(request.nonce()));
}

TEST(OcspStructures, WhatFollowsARequestIsASignature)
{
    const Bytes tbs = Tlv(der::sequence, Tlv(der::sequence, Bytes()));
    EXPECT_TRUE(COCSPRequest().LoadRequest(ElementOf(Tlv(der::sequence, tbs))));
    EXPECT_TRUE(COCSPRequest().LoadRequest(ElementOf(Tlv(der::sequence, {tbs, {0xA0, 2, 0x30, 0}}))));
    EXPECT_FALSE(COCSPRequest().LoadRequest(ElementOf(Tlv(der::sequence, {tbs, {0xA1, 2, 0x30, 0}}))));
    EXPECT_FALSE(COCSPRequest().LoadRequest(ElementOf(Tlv(der::sequence, {tbs, {5, 0}}))));
}
