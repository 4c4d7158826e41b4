#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/name_constraints.h"
#include "pki/validation/path_validation.h"
#include "pki/validation/verdict.h"

#include <cstdint>
#include <vector>

// What RFC 5280, 6.1, asks of the certificates of one path, but for signatures and status.

namespace ccrypto {

/// From the subject to the anchor.
using CertificatePath = std::vector<const KnownCertificate*>;

/// What a check of a path found, and in which certificate, counted from the subject.
struct PathFinding {
    Finding finding;
    std::uint32_t certificate = 0;

    [[nodiscard]] bool passed() const { return finding.passed(); }
};

/// Whether the signature of the certificate may be verified at all. Of an anchor, whose own signature does not count, the octets
/// alone are checked.
[[nodiscard]] Finding CheckOctets(const KnownCertificate& certificate, bool isAnchor, const ValidationOptions& options);
/// Whether the key is strong enough.
[[nodiscard]] Finding CheckKey(const ICryptoKeyPair& key, const ValidationOptions& options);
/// What can be said of the certificate whatever path it is in. An anchor may leave out the basic constraints of a CA that
/// `issues` must have; what it has counts.
[[nodiscard]] Finding CheckCertificate(const KnownCertificate& certificate, bool issues, bool isAnchor,
                                       const ValidationOptions& options);

/// What can be said of the subject of a validation whatever its path is: the above, and what the caller asks of it.
[[nodiscard]] Finding CheckSubject(const KnownCertificate& subject, bool isAnchor, const ValidationOptions& options);

/// Checks the certificates from the anchor to the subject, which must have passed CheckSubject(). \param policies becomes the
/// user-constrained policies.
[[nodiscard]] PathFinding CheckPath(const CertificatePath& path, const ValidationOptions& options, NameWork& work,
                                    std::vector<Oid>& policies);

/// "2026-12-01 00:00:00Z".
[[nodiscard]] CCryptoString TimeText(const CCryptoDateTime& time);

} // namespace ccrypto
