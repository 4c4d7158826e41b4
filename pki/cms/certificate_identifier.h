#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/element.h"
#include "core/text/string.h"

class CCrypto_X509_Certificate;

namespace ccrypto {

/// By what a message says whose certificate is meant: of a signer (RFC 5652, 5.3) or of a recipient (RFC 5652, 6.2.1).
struct CertificateIdentifier {
    element issuer;        ///< the SEQUENCE of the name, DER
    element serialNumber;  ///< as the octets of the INTEGER are
    element keyIdentifier; ///< instead of these two

    /// \param node IssuerAndSerialNumber, or [0] with a subject key identifier. \return false for anything else.
    [[nodiscard]] bool read(const elementNode* node);
    [[nodiscard]] bool isByKey() const { return !keyIdentifier.isEmpty(); }

    /// Names are compared by their octets: nothing that is signed says which certificate is meant, so that a name written otherwise
    /// is a change. A key identifier is that of the extension.
    [[nodiscard]] bool means(const CCrypto_X509_Certificate& certificate) const;
};

} // namespace ccrypto
