#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/path_validation.h"
#include "pki/validation/verdict.h"
#include "pki/x509/crl.h"

#include <vector>

namespace ccrypto {

/// Whether a revocation list is its issuer's, and of the time asked for.
struct ListVerdict {
    Verdict verdict = Verdict::invalid; ///< undecided for a list that is too old
    Reason reason = Reason::none;
    CCryptoString detail;
    CertificatePtr signer;      ///< null when nobody's signature was found
    std::vector<PathStep> path; ///< of the signer; empty where none was asked for
};

/// Verifies the signature of a list with the certificate of its issuer, which must allow cRLSign where it has a key usage.
///
/// Of `options` the time, clock skew, age, strict and allowWeak count; the status of certificates is not looked for.
/// \param issuer the certificate that must have signed; null to look for it in `pool` by name, those with the key identifier that
/// the list names first. \param needsPath whether it must be valid itself, with a path to an anchor of `pool`.
[[nodiscard]] ListVerdict VerifyList(const CrlPtr& list, const CertificatePtr& issuer, const CertificatePool& pool, bool needsPath,
                                     const ValidationOptions& options);

} // namespace ccrypto
