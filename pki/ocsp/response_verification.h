#pragma once

#include "core/system/date_time.h"
#include "core/text/string.h"
#include "pki/ocsp/ocsp_response.h"
#include "pki/x509/certificate.h"
#include "pki/x509/crl.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ccrypto {

/// How an OCSP response is judged.
struct OcspOptions {
    CCryptoDateTime at;                  ///< UTC; must be valid
    std::int64_t clockSkewSeconds = 300; ///< of thisUpdate and producedAt, and after nextUpdate
    /// How long a status without nextUpdate holds after thisUpdate.
    std::int64_t maxAgeSeconds = std::int64_t{24} * 60 * 60;
    element nonce;             ///< the one that was sent; empty when none was
    bool requireNonce = false; ///< otherwise a response without a nonce answers any request
    /// Responders that are trusted for this whatever issued them.
    std::vector<CertificatePtr> namedResponders;
    /// Where certificates of responders are looked for beside those in the response. They are trusted no more than those.
    std::vector<CertificatePtr> candidates;
    bool allowWeak = false; ///< SHA-1, RSA below 2048 bits; MD5 never
};

enum class OcspStatus {
    good,
    revoked,
    unknown, ///< the responder does not know the certificate
    stale,   ///< it said something that is not of this time
    bad,     ///< nothing is known: see OcspFailure
};
/// "good", "revoked", "unknown", "stale", "bad".
[[nodiscard]] std::string_view OcspStatusWord(OcspStatus status);

/// Why a response is bad.
enum class OcspFailure {
    none,
    malformed,            ///< not a basic response, or what it says makes no sense
    notSuccessful,        ///< "tryLater" and the like
    notDer,               ///< octets that DER writes otherwise
    unsupportedAlgorithm, ///< of the signature
    weakAlgorithm,        ///< of the signature, or of that of the responder's certificate
    wrongResponder,       ///< not the issuer, named in advance, nor entitled by the issuer's key
    responderNotValid,    ///< entitled by a certificate that is not valid at the time
    badSignature,
    wrongNonce,       ///< another than was sent, or malformed
    missingNonce,     ///< and one is required
    wrongCertificate, ///< no response is about the certificate
    criticalExtension,
};
/// "malformed", "not-successful", …; empty for none.
[[nodiscard]] std::string_view OcspFailureWord(OcspFailure failure);

/// What a response says of one certificate.
struct OcspVerdict {
    OcspStatus status = OcspStatus::bad;
    OcspFailure failure = OcspFailure::none;
    CCryptoString detail;           ///< in words: "keyCompromise since 2026-11-02 08:00:00Z", "nextUpdate was 2026-…"
    CCryptoDateTime revocationTime; ///< when revoked, and when stale where that is what was said
    std::optional<RevocationReason> revocationReason;
    CCryptoDateTime producedAt;
    CCryptoDateTime thisUpdate;
    CCryptoDateTime nextUpdate;   ///< invalid when it is not given
    CertificatePtr responder;     ///< who signed; null when it is the issuer
    std::uint32_t signatures = 0; ///< how many were checked
};

/// What the response says of `subject`, issued by `issuer`. The issuer itself is not judged here.
///
/// The responder is the issuer, or a certificate that the issuer's key issued for OCSPSigning and that is valid at the time, or one
/// of those named. Whether an entitled responder is itself revoked is not looked up here: StatusFinder does, where it has lists. At
/// most 8 certificates are tried, among the first 100 of the response.
///
/// Where the response says several things of the certificate, the worst counts: revoked, what cannot be understood, unknown, good.
/// A revocation of another time counts beside what is of this time, unless it was a hold; alone it is stale.
[[nodiscard]] OcspVerdict VerifyOcspResponse(const CCryptoOCSP::COCSPResponse& response, const CCrypto_X509_Certificate& subject,
                                             const CCrypto_X509_Certificate& issuer, const OcspOptions& options);
/// The same for a serial number, as its INTEGER's octets.
[[nodiscard]] OcspVerdict VerifyOcspResponse(const CCryptoOCSP::COCSPResponse& response, const element& serialNumber,
                                             const CCrypto_X509_Certificate& issuer, const OcspOptions& options);

/// Whether the response gives the status of other certificates alone, so that its signature need not be checked.
[[nodiscard]] bool IsAboutOthers(const CCryptoOCSP::COCSPResponse& response, const CCrypto_X509_Certificate& subject,
                                 const CCrypto_X509_Certificate& issuer);

} // namespace ccrypto
