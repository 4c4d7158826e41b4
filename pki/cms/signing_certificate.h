#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"
#include "pki/cms/attributes.h"

#include <optional>
#include <vector>

class CCrypto_X509_Certificate;

namespace ccrypto {

/// Which certificate a signer says is meant (RFC 5035, 4): by its hash and, where it is given, by its issuer and serial number.
struct CertificateReference {
    algorithm::Id hash = algorithm::none; ///< none for one that is not SHA-1 or SHA-2
    element digest;
    std::vector<element> issuers; ///< directory names, DER; empty when the issuer is not given
    element serialNumber;

    [[nodiscard]] bool hasIssuer() const { return !serialNumber.isEmpty(); }
    [[nodiscard]] bool means(const CCrypto_X509_Certificate& certificate) const;
};
/// The signer's first; those that follow are of its path.
using CertificateReferences = std::vector<CertificateReference>;

/// Of the attributes signing certificate (RFC 2634, 5.4), whose hash is SHA-1, and signing certificate v2 (RFC 5035, 3), whose hash
/// is SHA-256 when none is given.
/// \return none for an attribute that is not exactly one value of DER, with at least one certificate.
[[nodiscard]] std::optional<CertificateReferences> ReadSigningCertificate(const CCryptoPKCS7Attribute& attribute);

} // namespace ccrypto
