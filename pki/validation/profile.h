#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/verdict.h"

namespace ccrypto {

/// The place of a certificate in a path.
enum class CertificateRole {
    endEntity, ///< the subject of the validation, also when it is a CA
    ca,        ///< issued the certificate before it; the anchor's own certificate has to keep the same rules
};

/// Whether the certificate keeps what RFC 5280, section 4, asks of conforming CAs beyond what section 6 needs for validation:
/// serial numbers, names, times, key identifiers, criticality, and extensions that are allowed in certificates of CAs alone.
/// \param issuer the certificate after it in the path, whose key identifier it has to name; null when that is not known.
/// \return the reason `profile` and the first rule that is broken.
[[nodiscard]] Finding CheckProfile(const KnownCertificate& certificate, CertificateRole role,
                                   const KnownCertificate* issuer = nullptr);

} // namespace ccrypto
