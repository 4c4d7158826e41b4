#include "core/base/ascii.h"
#include "pki/ocsp/response_verification.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/ocsp/test_ocsp.h"

#include <fstream>
#include <functional>
#include <iterator>

using namespace ccrypto;
using CCryptoOCSP::COCSPResponse;

namespace {

/// An issuer, the certificate it is asked about, and those who may answer.
struct OcspWorld {
    TestIssuer root = {.name = TestName("C=FI,CN=Root"), .key = TestKey(1)};
    TestIssuer responder = {.name = TestName("C=FI,CN=Responder"), .key = TestKey(2)};
    TestIssuer stranger = {.name = TestName("C=FI,CN=Stranger"), .key = TestKey(3)};
    CertificatePtr rootCertificate = LoadedCertificate(TestCertificate(root).authority().build(root));
    CertificatePtr leaf = LoadedCertificate(TestCertificate("CN=Leaf", TestKey(4)).serial(7).build(root));
    CertificatePtr strangerCertificate = LoadedCertificate(TestCertificate(stranger).build(stranger));

    [[nodiscard]] TestCertificate responderCertificate() const
    {
        return TestCertificate("C=FI,CN=Responder", responder.key).serial(9);
    }
    [[nodiscard]] Bytes entitled() const
    {
        return responderCertificate().extension(TestExtendedKeyUsage({ocspSigningOid})).build(root);
    }
};

const OcspWorld& World()
{
    static const OcspWorld world;
    return world;
}

OcspVerdict Judge(const Bytes& der, const OcspOptions& options)
{
    COCSPResponse response;
    static_cast<void>(response.LoadResponse(ElementOf(der)));
    return VerifyOcspResponse(response, *World().leaf, *World().rootCertificate, options);
}

OcspOptions OptionsNow()
{
    OcspOptions options;
    options.at = OcspTime(ocspNow);
    return options;
}

std::string Outcome(const OcspVerdict& verdict)
{
    std::string text(OcspStatusWord(verdict.status));
    if (verdict.failure != OcspFailure::none)
        text += ": " + std::string(OcspFailureWord(verdict.failure));
    return text;
}

template <typename Case>
std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    std::string name = info.param.name;
    for (char& letter : name)
        letter = IsAsciiLetter(letter) || IsDigit(letter) ? letter : '_';
    return name;
}

/// What a case changes of a good response by the issuer, and of how it is judged.
struct OcspCase {
    const char* name;
    std::string outcome;
    void (*change)(TestOcspResponse& response, OcspOptions& options);
};

class OcspVerification : public ::testing::TestWithParam<OcspCase> {};

TEST_P(OcspVerification, ByTheIssuer)
{
    TestOcspResponse made(World().root);
    OcspOptions options = OptionsNow();
    GetParam().change(made, options);
    EXPECT_EQ(Outcome(Judge(made.build(World().root), options)), GetParam().outcome);
}

const Bytes keyCompromise = Tlv(0xA1, {TestOcspTime("20260501000000Z"), {0xA0, 3, 10, 1, 1}});
const Bytes onHold = Tlv(0xA1, {TestOcspTime("20260501000000Z"), {0xA0, 3, 10, 1, 6}});

/// Adds what was said of the certificate a month before.
void AddOld(TestOcspResponse& made, const Bytes& status)
{
    TestOcspResponse old = made;
    old.status = status;
    old.thisUpdate = TestOcspTime("20260501000000Z");
    old.nextUpdate = TestOcspTime("20260508000000Z");
    made.moreResponses = old.single();
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Status, OcspVerification,
    ::testing::Values(
        OcspCase{"good", "good", [](TestOcspResponse&, OcspOptions&) {}},
        OcspCase{"revoked", "revoked",
                 [](TestOcspResponse& made, OcspOptions&) { made.status = Tlv(0xA1, TestOcspTime("20260501000000Z")); }},
        OcspCase{"revoked with a reason", "revoked", [](TestOcspResponse& made, OcspOptions&) { made.status = keyCompromise; }},
        OcspCase{"unknown", "unknown",
                 [](TestOcspResponse& made, OcspOptions&) {
                     made.status = {0x82, 0};
                 }},
        OcspCase{"the worst of several counts", "revoked",
                 [](TestOcspResponse& made, OcspOptions&) {
                     made.moreResponses = made.single();
                     made.status = keyCompromise;
                     made.moreResponses = Joined({made.moreResponses, made.single()});
                     made.status = {0x82, 0};
                 }},
        OcspCase{"one of this time counts", "good",
                 [](TestOcspResponse& made, OcspOptions&) {
                     made.moreResponses = made.single();
                     made.thisUpdate = TestOcspTime("20250101000000Z");
                     made.nextUpdate = TestOcspTime("20250102000000Z");
                 }},
        OcspCase{"revoked before, and good now", "revoked",
                 [](TestOcspResponse& made, OcspOptions&) { AddOld(made, keyCompromise); }},
        OcspCase{"on hold before, and good now", "good", [](TestOcspResponse& made, OcspOptions&) { AddOld(made, onHold); }},
        OcspCase{"what cannot be understood beside good", "bad: critical-extension",
                 [](TestOcspResponse& made, OcspOptions&) {
                     made.moreResponses = made.single();
                     made.singleExtensions = TestExtension("1.2.3", {5, 0}, true);
                 }},
        OcspCase{"not successful", "bad: not-successful", [](TestOcspResponse& made, OcspOptions&) { made.responseStatus = 3; }},
        OcspCase{"another type", "bad: malformed",
                 [](TestOcspResponse& made, OcspOptions&) { made.type = "1.3.6.1.5.5.7.48.1.3"; }},
        OcspCase{"an algorithm that nobody knows", "bad: unsupported-algorithm",
                 [](TestOcspResponse& made, OcspOptions&) { made.algorithm = Tlv(der::sequence, OidTlv("1.2.3.4")); }},
        OcspCase{"no time to judge at", "bad: malformed", [](TestOcspResponse&, OcspOptions& options) { options.at = {}; }}),
    CaseName<OcspCase>);

INSTANTIATE_TEST_SUITE_P(
    Time, OcspVerification,
    ::testing::Values(OcspCase{"end with skew", "good",
                               [](TestOcspResponse&, OcspOptions& options) { options.at = OcspTime("20260608000500Z"); }},
                      OcspCase{"after the end with skew", "stale",
                               [](TestOcspResponse&, OcspOptions& options) { options.at = OcspTime("20260608000501Z"); }},
                      OcspCase{"start with skew", "good",
                               [](TestOcspResponse&, OcspOptions& options) { options.at = OcspTime("20260531235500Z"); }},
                      OcspCase{"before the start with skew", "stale",
                               [](TestOcspResponse&, OcspOptions& options) { options.at = OcspTime("20260531235459Z"); }},
                      OcspCase{"another skew", "stale",
                               [](TestOcspResponse&, OcspOptions& options) {
                                   options.at = OcspTime("20260608000001Z");
                                   options.clockSkewSeconds = 0;
                               }},
                      OcspCase{"made in the future", "stale",
                               [](TestOcspResponse& made, OcspOptions&) { made.producedAt = TestOcspTime("20260602000501Z"); }},
                      OcspCase{"made within the skew", "good",
                               [](TestOcspResponse& made, OcspOptions&) { made.producedAt = TestOcspTime("20260602000500Z"); }},
                      OcspCase{"stale though revoked", "stale",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.status = keyCompromise;
                                   options.at = OcspTime("20270101000000Z");
                               }},
                      OcspCase{"nextUpdate first", "bad: malformed",
                               [](TestOcspResponse& made, OcspOptions&) { made.nextUpdate = TestOcspTime("20260531235959Z"); }},
                      OcspCase{"a day without nextUpdate", "good",
                               [](TestOcspResponse& made, OcspOptions&) { made.nextUpdate.clear(); }},
                      OcspCase{"more than a day without nextUpdate", "stale",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.nextUpdate.clear();
                                   options.at = OcspTime("20260602000001Z");
                               }},
                      OcspCase{"an age given", "good",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.nextUpdate.clear();
                                   options.at = OcspTime("20260603000000Z");
                                   options.maxAgeSeconds = 172800;
                               }},
                      OcspCase{"any age and skew", "good",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.nextUpdate.clear();
                                   options.at = OcspTime("99991231235959Z");
                                   options.maxAgeSeconds = options.clockSkewSeconds = INT64_MAX;
                               }},
                      OcspCase{"an age does not shorten nextUpdate", "good",
                               [](TestOcspResponse&, OcspOptions& options) { options.maxAgeSeconds = 1; }}),
    CaseName<OcspCase>);

INSTANTIATE_TEST_SUITE_P(
    Request, OcspVerification,
    ::testing::Values(OcspCase{"its nonce", "good",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.extensions = TestNonce({1, 2, 3});
                                   options.nonce = ElementOf({1, 2, 3});
                                   options.requireNonce = true;
                               }},
                      OcspCase{"another nonce", "bad: wrong-nonce",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.extensions = TestNonce({1, 2, 4});
                                   options.nonce = ElementOf({1, 2, 3});
                               }},
                      OcspCase{"the beginning of the nonce", "bad: wrong-nonce",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.extensions = TestNonce({1, 2});
                                   options.nonce = ElementOf({1, 2, 3});
                               }},
                      OcspCase{"a malformed nonce", "bad: wrong-nonce",
                               [](TestOcspResponse& made, OcspOptions&) { made.extensions = TestNonce({}); }},
                      OcspCase{"no nonce", "good", [](TestOcspResponse&, OcspOptions& options) { options.nonce = ElementOf({1}); }},
                      OcspCase{"no nonce where one is required", "bad: missing-nonce",
                               [](TestOcspResponse&, OcspOptions& options) {
                                   options.nonce = ElementOf({1});
                                   options.requireNonce = true;
                               }},
                      OcspCase{"a nonce nobody sent", "good",
                               [](TestOcspResponse& made, OcspOptions&) { made.extensions = TestNonce({1}); }},
                      OcspCase{"a nonce required that nobody sent", "bad: missing-nonce",
                               [](TestOcspResponse& made, OcspOptions& options) {
                                   made.extensions = TestNonce({1});
                                   options.requireNonce = true;
                               }},
                      OcspCase{"an extension", "good",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.extensions = TestExtension("1.2.3", {5, 0});
                               }},
                      OcspCase{"an extension twice", "bad: malformed",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   const Bytes extension = TestExtension("1.2.3", {5, 0});
                                   made.extensions = Joined({extension, TestNonce({1}), extension});
                               }},
                      OcspCase{"an extension of one twice", "bad: malformed",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   const Bytes extension = TestExtension("1.2.3", {5, 0});
                                   made.singleExtensions = Joined({extension, extension});
                               }},
                      OcspCase{"a critical extension", "bad: critical-extension",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.extensions = TestExtension("1.2.3", {5, 0}, true);
                               }},
                      OcspCase{"a critical extension of one", "bad: critical-extension",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.singleExtensions = TestExtension("1.2.3", {5, 0}, true);
                               }},
                      OcspCase{"a critical archive cutoff", "good",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.singleExtensions =
                                       TestExtension("1.3.6.1.5.5.7.48.1.6", TestOcspTime("20200101000000Z"), true);
                               }}),
    CaseName<OcspCase>);

INSTANTIATE_TEST_SUITE_P(
    CertId, OcspVerification,
    ::testing::Values(OcspCase{"another serial number", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) { made.certId.serial = {8}; }},
                      OcspCase{"a longer serial number", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.certId.serial = {7, 7};
                               }},
                      OcspCase{"another name", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) { made.certId.issuer.name = TestName("CN=Other"); }},
                      OcspCase{"another key", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) { made.certId.issuer.key = TestKey(5); }},
                      OcspCase{"no NULL", "good", [](TestOcspResponse& made, OcspOptions&) { made.certId.parameters.clear(); }},
                      OcspCase{"other parameters", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.certId.parameters = {2, 1, 0};
                               }},
                      OcspCase{"SHA-256", "good",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.certId.hashOid = "2.16.840.1.101.3.4.2.1";
                                   made.certId.hash = algorithm::sha256;
                               }},
                      OcspCase{"SHA-384", "good",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.certId.hashOid = "2.16.840.1.101.3.4.2.2";
                                   made.certId.hash = algorithm::sha384;
                               }},
                      OcspCase{"SHA-512", "good",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.certId.hashOid = "2.16.840.1.101.3.4.2.3";
                                   made.certId.hash = algorithm::sha512;
                               }},
                      OcspCase{"MD5", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) {
                                   made.certId.hashOid = "1.2.840.113549.2.5";
                                   made.certId.hash = algorithm::md5;
                               }},
                      OcspCase{"the hash of another", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) { made.certId.hashOid = "2.16.840.1.101.3.4.2.1"; }},
                      OcspCase{"a hash that nobody knows", "bad: wrong-certificate",
                               [](TestOcspResponse& made, OcspOptions&) { made.certId.hashOid = "1.2.3.4"; }}),
    CaseName<OcspCase>);

namespace {

/// Who signs, with which certificates.
struct ResponderCase {
    const char* name;
    std::string outcome;
    Bytes (*make)(const OcspWorld& world, TestOcspResponse& response, OcspOptions& options);
};

class OcspResponderRight : public ::testing::TestWithParam<ResponderCase> {};

TEST_P(OcspResponderRight, IsTheIssuersOrNamed)
{
    TestOcspResponse made(World().root);
    OcspOptions options = OptionsNow();
    const Bytes der = GetParam().make(World(), made, options);
    EXPECT_EQ(Outcome(Judge(der, options)), GetParam().outcome);
}

/// A response by the responder, whose certificate is in it.
Bytes BuildWith(const OcspWorld& world, TestOcspResponse& made, const Bytes& certificate)
{
    made.certs = {certificate};
    return made.build(world.responder);
}

/// A response by a responder named in advance whose key is short.
Bytes BuildWithShortKey(TestOcspResponse& made, OcspOptions& options)
{
    const TestIssuer issuer = {.name = World().stranger.name, .key = KeyOf(algorithm::rsaEncryption)};
    EXPECT_EQ(issuer.key->keySize(), 1024u);
    options.namedResponders = {LoadedCertificate(TestCertificate(issuer).build(issuer))};
    return made.build(issuer);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(By, OcspResponderRight,
                         ::testing::Values(
                             ResponderCase{"the issuer by name", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.responder = Tlv(0xA1, world.root.name);
                                               return made.build(world.root);
                                           }},
                             ResponderCase{"the issuer by another name", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.responder = Tlv(0xA1, world.stranger.name);
                                               return made.build(world.root);
                                           }},
                             ResponderCase{"a stranger by the issuer's name", "bad: bad-signature",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.responder = Tlv(0xA1, world.root.name);
                                               return made.build(world.stranger);
                                           }},
                             ResponderCase{"a stranger", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.certs = {BytesOf(world.strangerCertificate->der())};
                                               return made.build(world.stranger);
                                           }},
                             ResponderCase{"a stranger named in advance", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions& options) {
                                               options.namedResponders = {world.strangerCertificate};
                                               return made.build(world.stranger);
                                           }},
                             ResponderCase{"another than was named", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions& options) {
                                               options.namedResponders = {world.leaf};
                                               return made.build(world.stranger);
                                           }},
                             ResponderCase{"one named that is no longer valid", "bad: responder-not-valid",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions& options) {
                                               const TestCertificate old =
                                                   TestCertificate(world.stranger).validity("20200101000000Z", "20260601000000Z");
                                               options.namedResponders = {LoadedCertificate(old.build(world.stranger))};
                                               return made.build(world.stranger);
                                           }},
                             ResponderCase{"one that the issuer entitled", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               return BuildWith(world, made, world.entitled());
                                           }},
                             ResponderCase{"one entitled, by name", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.responder = Tlv(0xA1, world.responder.name);
                                               return BuildWith(world, made, world.entitled());
                                           }},
                             ResponderCase{"one entitled whose certificate is elsewhere", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions& options) {
                                               options.candidates = {world.leaf, LoadedCertificate(world.entitled())};
                                               return made.build(world.responder);
                                           }},
                             ResponderCase{"one entitled whose certificate is missing", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               return made.build(world.responder);
                                           }},
                             ResponderCase{
                                 "one entitled, with a digital signature", "good",
                                 [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                     TestCertificate certificate = world.responderCertificate().extension(TestKeyUsage(0x80));
                                     certificate.extension(TestExtendedKeyUsage({"1.3.6.1.5.5.7.3.1", ocspSigningOid}, true));
                                     return BuildWith(world, made, certificate.build(world.root));
                                 }},
                             ResponderCase{"a key that does not sign", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate =
                                                   world.responderCertificate().extension(TestKeyUsage(0x20));
                                               certificate.extension(TestExtendedKeyUsage({ocspSigningOid}));
                                               return BuildWith(world, made, certificate.build(world.root));
                                           }},
                             ResponderCase{"one without OCSPSigning", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               return BuildWith(world, made, world.responderCertificate().build(world.root));
                                           }},
                             ResponderCase{"one with any purpose", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(TestExtendedKeyUsage({"2.5.29.37.0"}));
                                               return BuildWith(world, made, certificate.build(world.root));
                                           }},
                             ResponderCase{"one with a critical extension", "bad: critical-extension",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(TestExtendedKeyUsage({ocspSigningOid}))
                                                   .extension(TestExtension("1.2.3", {5, 0}, true));
                                               return BuildWith(world, made, certificate.build(world.root));
                                           }},
                             ResponderCase{"one with purposes twice", "bad: malformed",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               const Bytes purpose = TestExtendedKeyUsage({ocspSigningOid});
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(purpose).extension(purpose);
                                               return BuildWith(world, made, certificate.build(world.root));
                                           }},
                             ResponderCase{"one that has ended", "bad: responder-not-valid",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(TestExtendedKeyUsage({ocspSigningOid}))
                                                   .validity("20250101000000Z", "20260601235959Z");
                                               return BuildWith(world, made, certificate.build(world.root));
                                           }},
                             ResponderCase{"one of another issuer", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(TestExtendedKeyUsage({ocspSigningOid}));
                                               return BuildWith(world, made, certificate.build(world.stranger));
                                           }},
                             ResponderCase{"one of the issuer's name and another key", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(TestExtendedKeyUsage({ocspSigningOid}));
                                               return BuildWith(
                                                   world, made,
                                                   certificate.build({.name = world.root.name, .key = world.stranger.key}));
                                           }},
                             ResponderCase{"one of another name and the issuer's key", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(TestExtendedKeyUsage({ocspSigningOid}));
                                               return BuildWith(
                                                   world, made,
                                                   certificate.build({.name = world.stranger.name, .key = world.root.key}));
                                           }},
                             ResponderCase{"one entitled with SHA-1", "bad: weak-algorithm",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestCertificate certificate = world.responderCertificate();
                                               certificate.extension(TestExtendedKeyUsage({ocspSigningOid}));
                                               TestIssuer weak = world.root;
                                               weak.hash = algorithm::sha1;
                                               return BuildWith(world, made, certificate.build(weak));
                                           }},
                             ResponderCase{"SHA-1", "bad: weak-algorithm",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               TestIssuer weak = world.root;
                                               weak.hash = algorithm::sha1;
                                               return made.build(weak);
                                           }},
                             ResponderCase{"SHA-1 where it is allowed", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions& options) {
                                               TestIssuer weak = world.root;
                                               weak.hash = algorithm::sha1;
                                               options.allowWeak = true;
                                               return made.build(weak);
                                           }},
                             ResponderCase{"MD5 where what is weak is allowed", "bad: weak-algorithm",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions& options) {
                                               const TestIssuer rsa = {
                                                   .name = world.stranger.name, .key = TestRsaKey(), .hash = algorithm::md5};
                                               const TestIssuer itself = {.name = rsa.name, .key = rsa.key};
                                               options.namedResponders = {LoadedCertificate(TestCertificate(itself).build(itself))};
                                               options.allowWeak = true;
                                               return made.build(rsa);
                                           }},
                             ResponderCase{"RSA of 1024 bits", "bad: weak-algorithm",
                                           [](const OcspWorld&, TestOcspResponse& made, OcspOptions& options) {
                                               return BuildWithShortKey(made, options);
                                           }},
                             ResponderCase{"RSA of 1024 bits where it is allowed", "good",
                                           [](const OcspWorld&, TestOcspResponse& made, OcspOptions& options) {
                                               options.allowWeak = true;
                                               return BuildWithShortKey(made, options);
                                           }},
                             ResponderCase{"one entitled by octets that are not DER", "bad: not-der",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions& options) {
                                               Bytes certificate = world.entitled();
                                               certificate[1] = 0x83;
                                               certificate.insert(certificate.begin() + 2, 0);
                                               options.candidates = {LoadedCertificate(certificate)};
                                               return made.build(world.responder);
                                           }},
                             ResponderCase{"the eighth of its name", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.responder = Tlv(0xA1, world.responder.name);
                                               made.certs.assign(
                                                   7, TestCertificate("C=FI,CN=Responder", TestKey(6)).build(world.stranger));
                                               made.certs.push_back(world.entitled());
                                               return made.build(world.responder);
                                           }},
                             ResponderCase{"the ninth of its name", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.responder = Tlv(0xA1, world.responder.name);
                                               made.certs.assign(
                                                   8, TestCertificate("C=FI,CN=Responder", TestKey(6)).build(world.stranger));
                                               made.certs.push_back(world.entitled());
                                               return made.build(world.responder);
                                           }},
                             ResponderCase{"one after 99 others", "good",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.certs.assign(99, Bytes{0x30, 0});
                                               made.certs.push_back(world.entitled());
                                               return made.build(world.responder);
                                           }},
                             ResponderCase{"one after 100 others", "bad: wrong-responder",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               made.certs.assign(100, Bytes{0x30, 0});
                                               made.certs.push_back(world.entitled());
                                               return made.build(world.responder);
                                           }},
                             ResponderCase{"octets that are not DER", "bad: not-der",
                                           [](const OcspWorld& world, TestOcspResponse& made, OcspOptions&) {
                                               return Joined({made.build(world.root), {0}});
                                           }},
                             ResponderCase{"nothing", "bad: malformed",
                                           [](const OcspWorld&, TestOcspResponse&, OcspOptions&) { return Bytes(); }}),
                         CaseName<ResponderCase>);

TEST(OcspVerdict, SaysWhatIsKnown)
{
    TestOcspResponse made(World().root);
    made.status = keyCompromise;
    const Bytes responder = World().entitled();
    made.certs = {responder};
    const OcspVerdict verdict = Judge(made.build(World().responder), OptionsNow());
    EXPECT_EQ(verdict.status, OcspStatus::revoked);
    EXPECT_STREQ(verdict.detail.c_str(), "keyCompromise since 2026-05-01 00:00:00Z");
    EXPECT_EQ(verdict.revocationReason, RevocationReason::keyCompromise);
    EXPECT_EQ(verdict.revocationTime, OcspTime("20260501000000Z"));
    EXPECT_EQ(verdict.thisUpdate, OcspTime("20260601000000Z"));
    EXPECT_EQ(verdict.nextUpdate, OcspTime("20260608000000Z"));
    EXPECT_EQ(verdict.signatures, 2u);
    ASSERT_NE(verdict.responder, nullptr);
    EXPECT_EQ(BytesOf(verdict.responder->der()), responder);
}

TEST(OcspVerdict, NoFlippedBitIsGood)
{
    TestOcspResponse made(World().root);
    made.extensions = TestNonce({1, 2, 3});
    TestOcspResponse entitled(World().root);
    entitled.certs = {World().entitled()};
    for (const Bytes& der : {made.build(World().root), entitled.build(World().responder)}) {
        ASSERT_EQ(Outcome(Judge(der, OptionsNow())), "good");
        for (std::size_t at = 0; at < der.size(); ++at) {
            Bytes flipped = der;
            flipped[at] = static_cast<std::uint8_t>(flipped[at] ^ (1u << at % 8));
            EXPECT_EQ(Judge(flipped, OptionsNow()).status, OcspStatus::bad) << "octet " << at;
        }
    }
}

TEST(OcspVerdict, OfWhatOpensslSigned)
{
    const auto fixture = [](const std::string& name) {
        std::ifstream file(VECTOR_DIR "/../asn1/" + name + ".der", std::ios::binary);
        return Bytes{std::istreambuf_iterator<char>(file), {}};
    };
    const CertificatePtr issuer = LoadedCertificate(fixture("certificate_ca"));
    struct Expected {
        const char* name;
        Bytes serial;
        OcspStatus status;
    };
    for (const Expected& expected : {Expected{"ocsp_leaf", {0, 200}, OcspStatus::good},
                                     {"ocsp_revoked", {0, 201}, OcspStatus::revoked},
                                     {"ocsp_compromised", {0, 202}, OcspStatus::revoked},
                                     {"ocsp_unknown", {0x12, 0x67}, OcspStatus::unknown}}) {
        COCSPResponse response;
        ASSERT_TRUE(response.LoadResponse(ElementOf(fixture(expected.name))));
        OcspOptions options;
        options.at = response.basicResponse().tbsResponseData.producedAt;
        const OcspVerdict verdict = VerifyOcspResponse(response, ElementOf(expected.serial), *issuer, options);
        EXPECT_EQ(verdict.status, expected.status) << expected.name << ": " << verdict.detail.c_str();
        EXPECT_EQ(Judge(fixture(expected.name), options).failure, OcspFailure::wrongResponder) << "for another issuer";
    }
}
