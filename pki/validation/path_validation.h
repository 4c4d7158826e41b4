#pragma once

#include "asn1/types/oid.h"
#include "core/system/date_time.h"
#include "core/text/string.h"
#include "pki/ocsp/ocsp_response.h"
#include "pki/validation/certificate_pool.h"
#include "pki/validation/verdict.h"
#include "pki/x509/crl.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ccrypto {

/// What a caller asks of a certificate.
struct ValidationOptions {
    enum class Status { none, leaf, chain };

    CCryptoDateTime at; ///< UTC; must be valid
    Status status = Status::none;
    std::int64_t clockSkewSeconds = 300;       ///< of thisUpdate, and after nextUpdate
    std::int64_t maxAgeSeconds = 24 * 60 * 60; ///< of status without nextUpdate
    std::vector<Oid> policies;                 ///< the user's; empty for any
    bool explicitPolicy = false;
    bool inhibitAnyPolicy = false;
    bool inhibitMapping = false;
    std::vector<Oid> extendedKeyUsages; ///< all of them
    std::uint16_t keyUsage = 0;         ///< KeyUsageBit, all of them
    std::string host;
    std::string ipAddress; ///< text
    std::string email;
    std::optional<std::uint32_t> maxDepth; ///< intermediates, those that issued themselves not counted
    bool strict = false;
    bool allowWeak = false;
};

/// What says whether certificates are revoked.
struct StatusSources {
    std::vector<CrlPtr> crls;
    std::vector<std::shared_ptr<const CCryptoOCSP::COCSPResponse>> responses;
};

/// Builds paths from certificates to anchors and validates them (RFC 5280, section 6): what is tried is bounded by 1,000 steps,
/// 200 signatures and 64 certificates, whatever the pool holds, for all certificates together that one object validates.
///
/// Each pair of certificate and issuer is checked once. What it is given must live as long.
class CertificateValidator {
public:
    CertificateValidator(const CertificatePool& pool, const StatusSources& sources, const ValidationOptions& options);
    ~CertificateValidator();
    CertificateValidator(const CertificateValidator&) = delete;
    CertificateValidator& operator=(const CertificateValidator&) = delete;

    [[nodiscard]] PathVerdict validate(const CertificatePtr& subject);

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

/// Validates one certificate.
[[nodiscard]] PathVerdict ValidateCertificate(const CertificatePtr& subject, const CertificatePool& pool,
                                              const StatusSources& sources, const ValidationOptions& options);

} // namespace ccrypto
