#pragma once

#include "core/system/date_time.h"
#include "core/text/string.h"
#include "pki/x509/certificate.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace ccrypto {

enum class Verdict { valid, invalid, undecided };

/// Why a certificate is not valid, or not known to be. These and no others.
enum class Reason {
    none,
    malformed,            ///< a certificate or an extension that means something to the verdict does not have its structure
    notDer,               ///< octets that DER writes otherwise
    unsupportedAlgorithm, ///< of a signature or a key
    weakAlgorithm,        ///< SHA-1, RSA below 2048 bits; MD5
    badSignature,
    expired,
    notYetValid,
    noPath,
    notACa,
    pathLength,
    keyUsage,
    extendedKeyUsage,
    criticalExtension,
    nameConstraints,
    policy,
    name,    ///< of the host, address or e-mail asked for
    profile, ///< RFC 5280, section 4, when strict
    revoked,
    statusUnknown,
    statusStale,
    limit, ///< 1,000 steps, 200 signatures, 64 certificates
};
/// "malformed", "not-der", … as the command line prints them; empty for none.
[[nodiscard]] std::string_view ReasonWord(Reason reason);

/// What one check of a certificate found: nothing, or what it breaks.
struct Finding {
    Reason reason = Reason::none;
    CCryptoString detail;

    [[nodiscard]] bool passed() const { return reason == Reason::none; }
};

enum class CertificateStatus { notChecked, good, revoked, unknown, stale, anchor };
/// "good", "revoked", "unknown", "stale", "not-checked", "anchor".
[[nodiscard]] std::string_view StatusWord(CertificateStatus status);

/// What is known of one certificate of a path.
struct StatusInformation {
    enum class Source { none, crl, ocsp };
    CertificateStatus status = CertificateStatus::notChecked;
    Source source = Source::none;
    CCryptoString detail; ///< "CRL 7", "keyCompromise since 2026-11-02 08:00:00Z", …
    CCryptoDateTime thisUpdate;
    CCryptoDateTime nextUpdate; ///< invalid when it is not given
};

struct PathStep {
    CertificatePtr certificate;
    StatusInformation status;
};

/// The outcome of a validation.
struct PathVerdict {
    Verdict verdict = Verdict::invalid;
    Reason reason = Reason::none;
    std::uint32_t certificate = 0; ///< the one at fault, counted from the subject, 0
    CCryptoString detail;          ///< what the reason is about, in words
    CCryptoDateTime at;
    std::vector<PathStep> path; ///< from the subject to the anchor, as far as it came
    std::vector<Oid> policies;  ///< the user-constrained policies of a valid path
    struct {
        std::uint32_t steps = 0;
        std::uint32_t signatures = 0;
    } work;
};

} // namespace ccrypto
