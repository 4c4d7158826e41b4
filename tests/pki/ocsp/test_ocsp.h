#pragma once

#include "asn1/der/der_cursor.h"
#include "crypto/hash/hash.h"
#include "pki/ocsp/ocsp_response.h"
#include "pki/x509/certificate.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

// OCSP by hand: whatever a test asks for is written, sense or not.

namespace ccrypto {

constexpr std::string_view ocspNonceOid = "1.3.6.1.5.5.7.48.1.2";
constexpr std::string_view ocspSigningOid = "1.3.6.1.5.5.7.3.9";

inline CCryptoDateTime OcspTime(std::string_view generalized)
{
    return CCryptoDateTime(CCryptoString(generalized));
}

inline CertificatePtr LoadedCertificate(const Bytes& der)
{
    CertificatePtr certificate = LoadCertificate(der);
    EXPECT_NE(certificate, nullptr);
    return certificate;
}

inline Bytes OcspDigest(algorithm::Id hash, const Bytes& bytes)
{
    return BytesOf(ICryptoHash::Create(hash)->digestOf(std::span<const std::uint8_t>(bytes)));
}

/// A CertID. Without further words of serial number 7 with SHA-1 and NULL.
struct TestCertId {
    TestIssuer issuer;
    Bytes serial = {7};
    std::string_view hashOid = "1.3.14.3.2.26";
    algorithm::Id hash = algorithm::sha1;
    Bytes parameters = {der::null, 0};

    [[nodiscard]] Bytes build() const
    {
        return Tlv(der::sequence,
                   {Tlv(der::sequence, {OidTlv(hashOid), parameters}), Tlv(der::octetString, OcspDigest(hash, issuer.name)),
                    Tlv(der::octetString, OcspDigest(hash, TestKeyBits(*issuer.key))), Tlv(der::integer, serial)});
    }
};

inline Bytes TestOcspTime(std::string_view text)
{
    return Tlv(der::generalizedTime, TextBytes(text));
}

inline Bytes TestNonce(const Bytes& octets)
{
    return TestExtension(ocspNonceOid, Tlv(der::octetString, octets));
}

constexpr std::string_view ocspNow = "20260602000000Z";

/// A response. Without further words: good for serial number 7 from the day before ocspNow on for a week, by the key of who signs.
struct TestOcspResponse {
    explicit TestOcspResponse(const TestIssuer& issuer) : certId{.issuer = issuer} {}

    TestCertId certId;
    Bytes certIdDer; ///< in its place
    Bytes status = {0x80, 0};
    Bytes thisUpdate = TestOcspTime("20260601000000Z");
    Bytes nextUpdate = TestOcspTime("20260608000000Z"); ///< empty for none
    Bytes producedAt = TestOcspTime("20260601000000Z");
    Bytes singleExtensions;
    Bytes singleEnd; ///< whatever follows in it
    Bytes moreResponses;
    Bytes responder; ///< empty for the key of who signs
    Bytes extensions;
    std::vector<Bytes> certs;
    Bytes algorithm;
    std::string_view type = "1.3.6.1.5.5.7.48.1.1";
    std::uint8_t responseStatus = 0;

    static Bytes tagged(std::uint8_t number, const Bytes& content)
    {
        return content.empty() ? Bytes() : Tlv(der::Context(number), content);
    }
    static Bytes taggedList(std::uint8_t number, const Bytes& items)
    {
        return items.empty() ? Bytes() : tagged(number, Tlv(der::sequence, items));
    }
    [[nodiscard]] Bytes single() const
    {
        return Tlv(der::sequence, {certIdDer.empty() ? certId.build() : certIdDer, status, thisUpdate, tagged(0, nextUpdate),
                                   taggedList(1, singleExtensions), singleEnd});
    }
    [[nodiscard]] Bytes data(const TestIssuer& signer) const
    {
        const Bytes byKey = tagged(2, Tlv(der::octetString, OcspDigest(algorithm::sha1, TestKeyBits(*signer.key))));
        return Tlv(der::sequence, {responder.empty() ? byKey : responder, producedAt, Tlv(der::sequence, {single(), moreResponses}),
                                   taggedList(1, extensions)});
    }
    [[nodiscard]] Bytes basic(const TestIssuer& signer) const
    {
        Bytes fields = TestSigned(data(signer), signer, algorithm);
        const auto value = OnlyValue(fields, der::sequence).value();
        Bytes all;
        for (const Bytes& certificate : certs)
            all = Joined({all, certificate});
        return Tlv(der::sequence, {Bytes(value.begin(), value.end()), taggedList(0, all)});
    }
    [[nodiscard]] Bytes wrap(const Bytes& basicDer) const
    {
        return Tlv(der::sequence, {Tlv(der::enumerated, Bytes{responseStatus}),
                                   tagged(0, Tlv(der::sequence, {OidTlv(type), Tlv(der::octetString, basicDer)}))});
    }
    [[nodiscard]] Bytes build(const TestIssuer& signer) const { return wrap(basic(signer)); }
};

} // namespace ccrypto
