#include "pki/ocsp/ocsp_extensions.h"
#include "pki/ocsp/ocsp_request.h"
#include "pki/ocsp/responder.h"
#include "pki/ocsp/response_verification.h"
#include "tests/pki/ocsp/test_ocsp.h"
#include "tests/support/captured_log.h"

#include <algorithm>

using namespace ccrypto;
using namespace CCryptoOCSP;

namespace {

const TestIssuer& Root()
{
    static const TestIssuer issuer = {.name = TestName("C=FI,CN=Root"), .key = TestKey(1)};
    return issuer;
}

/// A responder with its list: 5 is revoked, 6 with a reason.
struct RespondingAuthority {
    CertificatePtr issuer = LoadedCertificate(TestCertificate(Root()).authority().build(Root()));
    CertificatePtr certificate = LoadedCertificate(
        TestCertificate("CN=Responder", TestKey(2)).extension(TestExtendedKeyUsage({ocspSigningOid})).build(Root()));
    CCrypto_X509_CRL list;

    explicit RespondingAuthority(TestCrl made = TestCrl(), const TestIssuer& by = Root())
    {
        made.thisUpdate("20260601000000Z").nextUpdate("20260608000000Z").entry(5).entry(6, 1, "20260501000000Z");
        EXPECT_TRUE(list.LoadCRL(ElementOf(made.build(by))));
    }

    [[nodiscard]] OcspResponder responder() const { return {.issuer = *issuer, .certificate = *certificate, .key = *TestKey(2)}; }
    [[nodiscard]] element answer(const Bytes& request) const
    {
        return AnswerFromCrl(ElementOf(request), list, responder(), OcspTime(ocspNow));
    }
    [[nodiscard]] element answer(COCSPRequest& request) const { return answer(BytesOf(request.BuildDer())); }
};

Bytes RequestOf(const Bytes& requests, const Bytes& extensions = {})
{
    const Bytes tagged = extensions.empty() ? Bytes() : Tlv(0xA2, Tlv(der::sequence, extensions));
    return Tlv(der::sequence, Tlv(der::sequence, {Tlv(der::sequence, requests), tagged}));
}

std::string LoggedAs(const std::function<bool()>& operation)
{
    const CapturedLog log;
    EXPECT_FALSE(operation());
    for (const std::string& text : log.texts())
        for (const char* expected : {"Invalid responder certificate", "Unsupported hash function", "Signature operation failed"})
            if (text == std::string("ERROR: ") + expected)
                return expected;
    return "nothing";
}

/// A key that is on a card which was pulled.
class PulledCard : public ICryptoKeyPair {
public:
    explicit PulledCard(const ICryptoKeyPair& key) : public_(key.publicHalf()) {}

    [[nodiscard]] algorithm::Id algorithmId() const override { return public_->algorithmId(); }
    [[nodiscard]] algorithm::Id curveId() const override { return public_->curveId(); }
    [[nodiscard]] const char* name() const override { return public_->name(); }
    [[nodiscard]] std::uint32_t keySize() const override { return public_->keySize(); }
    [[nodiscard]] bool hasPrivate() const override { return true; }
    [[nodiscard]] std::vector<SCryptoKeyNumber> publicNumbers() const override { return public_->publicNumbers(); }
    [[nodiscard]] std::vector<SCryptoKeyNumber> privateNumbers() const override { return {}; }
    [[nodiscard]] element publicKeyInfo() const override { return public_->publicKeyInfo(); }
    [[nodiscard]] element privateKeyInfo() const override { return {}; }
    [[nodiscard]] element ownForm(KeyForm form) const override { return public_->ownForm(form); }
    [[nodiscard]] std::unique_ptr<ICryptoKeyPair> publicHalf() const override { return public_->publicHalf(); }
    [[nodiscard]] ICryptoSigner* signer() override { return public_->signer(); }
    [[nodiscard]] ICryptoDecrypter* decrypter() override { return nullptr; }
    [[nodiscard]] ICryptoKeyAgreement* agreement() override { return nullptr; }

private:
    std::unique_ptr<ICryptoKeyPair> public_;
};

} // namespace

TEST(OcspResponder, AnswersEachCertificateOfTheRequest)
{
    const RespondingAuthority authority;
    const CertificatePtr other = LoadedCertificate(TestCertificate("CN=Other", TestKey(8)).build(Root()));
    COCSPRequest request;
    ASSERT_TRUE(request.Ask(*authority.issuer, ElementOf({4})) &&
                request.Ask(*authority.issuer, ElementOf({5}), algorithm::sha256) &&
                request.Ask(*authority.issuer, ElementOf({6})) && request.Ask(*other, ElementOf({5})) && request.AddNonce());
    COCSPResponse response;
    ASSERT_TRUE(response.LoadResponse(authority.answer(request)));
    EXPECT_TRUE(response.isDer());
    ASSERT_EQ(response.basicResponse().tbsResponseData.responses.size(), 4u);
    for (std::size_t index = 0; index < 4; ++index)
        EXPECT_EQ(response.basicResponse().tbsResponseData.responses[index]->certID.BuildDer(),
                  request.tbsRequest.requestList[index]->certID.BuildDer());

    OcspOptions options;
    options.at = OcspTime(ocspNow);
    options.nonce = request.nonce();
    options.requireNonce = true;
    const auto judge = [&](std::uint8_t serial, const CertificatePtr& issuer) {
        return VerifyOcspResponse(response, ElementOf({serial}), *issuer, options);
    };
    EXPECT_EQ(judge(4, authority.issuer).status, OcspStatus::good);
    EXPECT_STREQ(judge(5, authority.issuer).detail.c_str(), "since 2026-01-01 00:00:00Z");
    EXPECT_STREQ(judge(6, authority.issuer).detail.c_str(), "keyCompromise since 2026-05-01 00:00:00Z");
    EXPECT_EQ(judge(7, authority.issuer).failure, OcspFailure::wrongCertificate);
    EXPECT_EQ(judge(4, authority.issuer).nextUpdate, OcspTime("20260608000000Z"));
    EXPECT_EQ(judge(4, authority.issuer).producedAt, OcspTime(ocspNow));
    EXPECT_EQ(response.basicResponse().tbsResponseData.responses[3]->certStatus.kind, CCertStatus::Kind::unknown);
}

TEST(OcspResponder, IsGivenAsAsked)
{
    const RespondingAuthority authority;
    const Bytes request = RequestOf(Tlv(der::sequence, TestCertId{.issuer = Root()}.build()));
    OcspResponder responder = authority.responder();
    responder.byName = true;
    responder.embedsCertificate = false;
    COCSPResponse response;
    ASSERT_TRUE(response.LoadResponse(AnswerFromCrl(ElementOf(request), authority.list, responder, OcspTime(ocspNow))));
    EXPECT_EQ(BytesOf(response.basicResponse().tbsResponseData.responderName), TestName("CN=Responder"));
    EXPECT_TRUE(response.basicResponse().certs.empty());
    EXPECT_EQ(ReadOcspNonce(response.basicResponse().tbsResponseData.extensions).state, OcspNonce::State::absent);

    const OcspResponder itself = {.issuer = *authority.issuer, .certificate = *authority.issuer, .key = *Root().key};
    ASSERT_TRUE(response.LoadResponse(AnswerFromCrl(ElementOf(request), authority.list, itself, OcspTime(ocspNow))));
    EXPECT_TRUE(response.basicResponse().certs.empty()) << "who asks has the issuer's certificate";
    EXPECT_TRUE(response.VerifySignature(*authority.issuer));
}

TEST(OcspResponder, MalformedRequestsAreAnsweredSo)
{
    const RespondingAuthority authority;
    const Bytes one = TestCertId{.issuer = Root()}.build();
    const Bytes padded = TestCertId{.issuer = Root(), .serial = {0, 5}}.build();
    const Bytes critical = TestExtension("1.2.3", {5, 0}, true);
    const Bytes malformed[] = {
        {},
        {0x30, 0},
        RequestOf({}),
        RequestOf(Tlv(der::sequence, padded)),
        RequestOf(Tlv(der::sequence, one), TestNonce({})),
        RequestOf(Tlv(der::sequence, one), TestNonce(Bytes(129, 1))),
        RequestOf(Tlv(der::sequence, one), critical),
        RequestOf(Tlv(der::sequence, one), Joined({TestExtension("1.2.3", {5, 0}), TestExtension("1.2.3", {5, 0})})),
        RequestOf(Tlv(der::sequence, {one, Tlv(0xA0, Tlv(der::sequence, critical))})),
    };
    for (const Bytes& request : malformed)
        EXPECT_EQ(BytesOf(authority.answer(request)), (Bytes{0x30, 3, 10, 1, 1})) << Hex(request);
}

TEST(OcspResponder, ListMustBeCompleteAndTheIssuers)
{
    const Bytes request = RequestOf(Tlv(der::sequence, TestCertId{.issuer = Root()}.build()));
    EXPECT_FALSE(RespondingAuthority().answer(request).isEmpty());
    EXPECT_TRUE(RespondingAuthority(TestCrl().delta(1)).answer(request).isEmpty());
    EXPECT_TRUE(RespondingAuthority(TestCrl().extension(TestIssuingDistributionPoint({0x81, 1, 0xFF}))).answer(request).isEmpty());
    for (const char* partial : {"2.5.29.27", "2.5.29.28"})
        EXPECT_TRUE(RespondingAuthority(TestCrl().extension(TestExtension(partial, {0x30, 0}))).answer(request).isEmpty())
            << "not critical: " << partial;
    EXPECT_TRUE(RespondingAuthority(TestCrl().extension(TestExtension("1.2.3", {5, 0}, true))).answer(request).isEmpty());
    EXPECT_TRUE(RespondingAuthority(TestCrl(), {.name = Root().name, .key = TestKey(9)}).answer(request).isEmpty());
    EXPECT_TRUE(RespondingAuthority(TestCrl(), {.name = TestName("CN=Other"), .key = Root().key}).answer(request).isEmpty());
    const Bytes issuer = TestExtension("2.5.29.29", Tlv(der::sequence, Tlv(0xA4, TestName("CN=Other"))), true);
    for (const TestCrl& strange : {TestCrl().entry(7, {}, "20260101000000Z", {TestExtension("1.2.3", {5, 0}, true)}),
                                   TestCrl().entry(7, 8), TestCrl().entry(7, {}, "20260101000000Z", {issuer})})
        EXPECT_TRUE(RespondingAuthority(strange).answer(request).isEmpty()) << Hex(strange.tbs(Root()));
}

TEST(OcspResponder, WeakListIsUsedWhereItIsAllowed)
{
    const Bytes request = RequestOf(Tlv(der::sequence, TestCertId{.issuer = Root()}.build()));
    for (const algorithm::Id hash : {algorithm::sha1, algorithm::md5}) {
        const TestIssuer weak = {.name = Root().name, .key = Root().key, .hash = hash};
        const RespondingAuthority authority(TestCrl(), weak);
        OcspResponder responder = authority.responder();
        EXPECT_TRUE(authority.answer(request).isEmpty());
        responder.allowWeak = true;
        EXPECT_EQ(AnswerFromCrl(ElementOf(request), authority.list, responder, OcspTime(ocspNow)).isEmpty(),
                  hash != algorithm::sha1);
    }
}

TEST(OcspResponder, EntryForGoodSpeaksBeforeAHold)
{
    const RespondingAuthority authority(TestCrl().entry(7, 6).entry(7, 1, "20260301000000Z").entry(7, 6));
    COCSPResponse response;
    ASSERT_TRUE(response.LoadResponse(authority.answer(RequestOf(Tlv(der::sequence, TestCertId{.issuer = Root()}.build())))));
    EXPECT_EQ(response.basicResponse().tbsResponseData.responses[0]->certStatus.revocationReason, RevocationReason::keyCompromise);
}

TEST(OcspSignature, FailsWithItsMessages)
{
    const RespondingAuthority authority;
    const TestIssuer rsa = {.name = TestName("CN=Rsa"), .key = TestRsaKey()};
    const CertificatePtr rsaCertificate = LoadedCertificate(TestCertificate(rsa).build(rsa));
    CBasicOCSPResponse response;
    PulledCard card(*TestKey(2));
    EXPECT_EQ(LoggedAs([&] { return response.SignResponse(CCrypto_X509_Certificate(), *TestKey(2), algorithm::sha256); }),
              "Invalid responder certificate");
    EXPECT_EQ(LoggedAs([&] { return response.SignResponse(*authority.certificate, *TestKey(3), algorithm::sha256); }),
              "Invalid responder certificate");
    EXPECT_EQ(LoggedAs([&] { return response.SignResponse(*rsaCertificate, *rsa.key, algorithm::sha384); }),
              "Unsupported hash function");
    EXPECT_EQ(LoggedAs([&] { return response.SignResponse(*rsaCertificate, *rsa.key, algorithm::sha1); }),
              "Unsupported hash function");
    EXPECT_EQ(LoggedAs([&] { return response.SignResponse(*authority.certificate, *TestKey(2), algorithm::sha224); }),
              "Unsupported hash function");
    EXPECT_EQ(LoggedAs([&] { return response.SignResponse(*authority.certificate, card, algorithm::sha256); }),
              "Signature operation failed");
    response.tbsResponseData.responderKeyHash = {};
    response.tbsResponseData.responderName = ElementOf(TestName("CN=Somebody"));
    EXPECT_EQ(LoggedAs([&] { return response.SignResponse(*authority.certificate, *TestKey(2), algorithm::sha256); }),
              "Invalid responder certificate")
        << "of another responder than the response names";
    EXPECT_TRUE(response.isEmpty());
    EXPECT_TRUE(response.BuildDer().isEmpty());
}

TEST(OcspSignature, OfEveryKeyVerifies)
{
    const auto signedWith = [](const TestKeyPtr& key, algorithm::Id hash) {
        const TestIssuer issuer = {.name = TestName("CN=Signer"), .key = key};
        const CertificatePtr certificate = LoadedCertificate(TestCertificate(issuer).build(issuer));
        CBasicOCSPResponse response;
        EXPECT_TRUE(response.SignResponse(*certificate, *key, hash));
        EXPECT_EQ(BytesOf(response.tbsResponseData.responderKeyHash), TestKeyIdentifier(*key));
        EXPECT_TRUE(response.tbsResponseData.producedAt.isValid());
        CBasicOCSPResponse read;
        EXPECT_TRUE(read.LoadResponse(response.der()));
        return response.VerifySignature(*certificate) && read.VerifySignature(*certificate);
    };
    EXPECT_TRUE(signedWith(TestKey(2), algorithm::sha384));
    EXPECT_TRUE(signedWith(TestRsaKey(), algorithm::sha512));
    EXPECT_TRUE(signedWith(TestEd25519Key(), algorithm::none));
}

TEST(OcspSignature, FailureSaysWhoseItShouldBe)
{
    const RespondingAuthority authority;
    TestOcspResponse made(Root());
    CBasicOCSPResponse response;
    ASSERT_TRUE(response.LoadResponse(ElementOf(made.basic(Root()))));
    EXPECT_TRUE(response.VerifySignature(*authority.issuer));
    const CapturedLog log;
    EXPECT_FALSE(response.VerifySignature(*authority.certificate));
    const std::vector<std::string> texts = log.texts();
    EXPECT_TRUE(std::ranges::any_of(texts, [](const std::string& text) { return text.starts_with("Failed to verify: the sig"); }));
    EXPECT_TRUE(std::ranges::count(texts, "Responder certificate: CN=Responder") == 1);
}

TEST(OcspSignature, IsOverTheOctetsReceived)
{
    // The same fields are written otherwise: good as A0 02 05 00 becomes 80 00.
    const RespondingAuthority authority;
    TestOcspResponse made(Root());
    made.status = {0xA0, 2, 5, 0};
    COCSPResponse response;
    ASSERT_TRUE(response.LoadResponse(ElementOf(made.build(Root()))));
    EXPECT_NE(HexOf(response.responseBytes.basicResponse.tbsResponseData.BuildDer()), Hex(made.data(Root())));
    EXPECT_TRUE(response.VerifySignature(*authority.issuer));

    CBasicOCSPResponse ofTree;
    ASSERT_TRUE(ofTree.ParseDer(response.basicResponse().der()));
    EXPECT_FALSE(ofTree.VerifySignature(*authority.issuer)) << "its octets are not known";
}
