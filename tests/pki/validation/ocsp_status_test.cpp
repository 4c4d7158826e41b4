#include "pki/validation/validation_work.h"
#include "tests/pki/ocsp/test_ocsp.h"
#include "tests/pki/validation/status_cases.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace ccrypto {
namespace {

using W = TestWorld;
using L = TestCrl;

void AddOcspBy(W& world, const TestOcspResponse& response, const TestIssuer& signer)
{
    const Bytes der = response.build(signer);
    auto loaded = std::make_shared<CCryptoOCSP::COCSPResponse>();
    ASSERT_TRUE(loaded->LoadResponse(element(der.data(), static_cast<std::uint32_t>(der.size()))));
    world.sources.responses.push_back(std::move(loaded));
}

void AddOcsp(W& world, const TestOcspResponse& response, const char* signer)
{
    AddOcspBy(world, response, W::Who(signer));
}

void AddWeakOcsp(W& world, const TestOcspResponse& response)
{
    TestIssuer sub = W::Who("Sub");
    sub.hash = algorithm::sha1;
    AddOcspBy(world, response, sub);
}

TestOcspResponse OcspOfLeaf()
{
    TestOcspResponse response(W::Who("Sub"));
    response.certId.serial = {7};
    response.thisUpdate = response.producedAt = TestOcspTime("20261120000000Z");
    response.nextUpdate = TestOcspTime("20261201000000Z");
    return response;
}

Bytes RevokedStatus()
{
    return Tlv(der::Context(1), TestOcspTime("20261101000000Z"));
}

/// What a responder of Sub says, of serial number 9.
void AddOcspOfResponder(W& world, const TestOcspResponse& response)
{
    world.plain("Responder", "Sub", [](TestCertificate& c) { c.serial(9).extension(TestExtendedKeyUsage({ocspSigningOid})); });
    AddOcsp(world, response, "Responder");
}

/// Revoked for a reason by a response that holds no longer.
TestOcspResponse OldOcspOfLeaf(std::uint8_t reason)
{
    TestOcspResponse response = OcspOfLeaf();
    response.status = Tlv(der::Context(1), {TestOcspTime("20261101000000Z"), {0xA0, 3, 10, 1, reason}});
    response.nextUpdate = TestOcspTime("20261121000000Z");
    return response;
}

/// Revoked at that time by a response that does not hold yet.
void AddLaterOcsp(W& world, const char* revoked)
{
    TestOcspResponse response = OcspOfLeaf();
    response.status = Tlv(der::Context(1), TestOcspTime(revoked));
    response.thisUpdate = response.producedAt = TestOcspTime("20261130000000Z");
    AddOcsp(world, response, "Sub");
}

INSTANTIATE_TEST_SUITE_P(
    Responses, StatusCases,
    ::testing::Values(WorldCase{"good", [](W& w) { AddOcsp(w, OcspOfLeaf(), "Sub"); }, "VALID"},
                      WorldCase{"revoked",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = RevokedStatus();
                                    AddOcsp(w, r, "Sub");
                                },
                                "revoked 0"},
                      WorldCase{"revoked, though a list says good",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = RevokedStatus();
                                    AddOcsp(w, r, "Sub");
                                    w.list("Sub");
                                },
                                "revoked 0"},
                      WorldCase{"good, though a list says revoked",
                                [](W& w) {
                                    AddOcsp(w, OcspOfLeaf(), "Sub");
                                    w.list("Sub", [](L& l) { l.entry(7); });
                                },
                                "revoked 0"},
                      WorldCase{"unknown",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = {0x82, 0};
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"unknown, though a list says good",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = {0x82, 0};
                                    AddOcsp(w, r, "Sub");
                                    w.list("Sub");
                                },
                                "VALID"},
                      WorldCase{"too old",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.nextUpdate = TestOcspTime("20261121000000Z");
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-stale 0 ?"},
                      WorldCase{"revoked long ago, though a list says good",
                                [](W& w) {
                                    AddOcsp(w, OldOcspOfLeaf(1), "Sub");
                                    w.list("Sub");
                                },
                                "revoked 0"},
                      WorldCase{"put on hold long ago", [](W& w) { AddOcsp(w, OldOcspOfLeaf(6), "Sub"); }, "status-stale 0 ?"},
                      WorldCase{"put on hold long ago, though a list says good",
                                [](W& w) {
                                    AddOcsp(w, OldOcspOfLeaf(6), "Sub");
                                    w.list("Sub");
                                },
                                "VALID"},
                      WorldCase{"revoked, as a later one says", [](W& w) { AddLaterOcsp(w, "20261123120000Z"); }, "revoked 0"},
                      WorldCase{"not yet revoked, as a later one says",
                                [](W& w) {
                                    AddLaterOcsp(w, "20261123120001Z");
                                    w.list("Sub");
                                },
                                "VALID"},
                      WorldCase{"any age and skew",
                                [](W& w) {
                                    w.options.clockSkewSeconds = INT64_MAX;
                                    w.options.maxAgeSeconds = INT64_MAX;
                                    w.list("Sub", [](L& l) { l.nextUpdate(""); });
                                },
                                "VALID"},
                      WorldCase{"after many of other certificates",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.certId.serial = {8};
                                    AddOcsp(w, r, "Sub");
                                    w.sources.responses.resize(ValidationWork::maxSignatures, w.sources.responses.front());
                                    AddOcsp(w, OcspOfLeaf(), "Sub");
                                },
                                "VALID"},
                      WorldCase{"too old, but not by the skew that is allowed",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.nextUpdate = TestOcspTime("20261123110000Z");
                                    AddOcsp(w, r, "Sub");
                                    w.options.clockSkewSeconds = 3600;
                                },
                                "VALID"},
                      WorldCase{"days old without next update",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.nextUpdate = {};
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-stale 0 ?"},
                      WorldCase{"as many days old as are allowed",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.nextUpdate = {};
                                    AddOcsp(w, r, "Sub");
                                    w.options.maxAgeSeconds = 4 * 86400;
                                },
                                "VALID"},
                      WorldCase{"SHA-1", [](W& w) { AddWeakOcsp(w, OcspOfLeaf()); }, "status-unknown 0 ?"},
                      WorldCase{"SHA-1 where it is allowed",
                                [](W& w) {
                                    AddWeakOcsp(w, OcspOfLeaf());
                                    w.options.allowWeak = true;
                                },
                                "VALID"},
                      WorldCase{"after more bad ones than are verified",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.responder = Tlv(der::Context(1), W::Who("Sub").name);
                                    AddOcsp(w, r, "Sub/2");
                                    w.sources.responses.resize(ValidationWork::maxSignatures, w.sources.responses.front());
                                    AddOcsp(w, OcspOfLeaf(), "Sub");
                                },
                                "limit 0"},
                      WorldCase{"of another certificate",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.certId.serial = {8};
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"signed by another key", [](W& w) { AddOcsp(w, OcspOfLeaf(), "Sub/2"); }, "status-unknown 0 ?"},
                      WorldCase{"signed by a responder among the candidates", [](W& w) { AddOcspOfResponder(w, OcspOfLeaf()); },
                                "VALID"},
                      WorldCase{"revoked, by a responder who is revoked",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = RevokedStatus();
                                    AddOcspOfResponder(w, r);
                                    w.list("Sub", [](L& l) { l.entry(9); });
                                },
                                "VALID"},
                      WorldCase{"good, by a responder whom a response of the issuer revokes",
                                [](W& w) {
                                    AddOcspOfResponder(w, OcspOfLeaf());
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.certId.serial = {9};
                                    r.status = RevokedStatus();
                                    AddOcsp(w, r, "Sub");
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"good, by a responder revoked at its distribution point, after what another one does not know",
                                [](W& w) {
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.status = Tlv(der::Context(2, false), Bytes());
                                    AddOcspOfResponder(w, r);
                                    const Bytes point = Tlv(der::Context(0), Tlv(der::Context(0), TestUri("http://a/")));
                                    w.plain("Other", "Sub", [&](TestCertificate& c) {
                                        c.serial(10).extension(TestExtendedKeyUsage({ocspSigningOid}));
                                        c.extension(TestExtension("2.5.29.31", Tlv(der::sequence, Tlv(der::sequence, point))));
                                    });
                                    AddOcsp(w, OcspOfLeaf(), "Other");
                                    w.list("Sub", [&](L& l) { l.entry(10).extension(TestIssuingDistributionPoint(point)); });
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"good, by a responder who says that it is revoked",
                                [](W& w) {
                                    AddOcspOfResponder(w, OcspOfLeaf());
                                    TestOcspResponse r = OcspOfLeaf();
                                    r.certId.serial = {9};
                                    r.status = RevokedStatus();
                                    AddOcsp(w, r, "Responder");
                                },
                                "status-unknown 0 ?"},
                      WorldCase{"good, by a responder who was revoked long ago",
                                [](W& w) {
                                    AddOcspOfResponder(w, OcspOfLeaf());
                                    w.list("Sub", [](L& l) { l.entry(9).nextUpdate("20261101000000Z"); });
                                },
                                "status-stale 0 ?"}),
    NameOfStatusCase);

} // namespace
} // namespace ccrypto
