#pragma once

#include "core/system/date_time.h"
#include "pki/keys/key_pair.h"
#include "pki/x509/crl.h"
#include "pki/x509/x509_value.h"

#include <cstdint>
#include <vector>

// Issues certificates and revocation lists: the issuer's key signs what the fields say. Only what RFC 5280 allows an issuer is
// written, so fields that make no certificate or list give an empty element, logged with the reason; so does a key that fails.

namespace ccrypto {

/// A new serial number of 16 random bytes, the first of them 0x40 to 0x7F; empty, logged, without random bytes.
[[nodiscard]] element NewSerialNumber();

struct CertificateFields {
    std::uint32_t version = 3; ///< or 1, which has no extensions
    /// As the octets of the INTEGER are, not negative, at most 20. Without any 0 is written, with a warning in the log.
    element serialNumber;
    element issuer; ///< the SEQUENCE of the name, DER; not an empty name
    CCryptoDateTime validFrom;
    CCryptoDateTime validTo; ///< not before validFrom
    element subject;         ///< as issuer, but may be an empty name
    element publicKeyInfo;   ///< SubjectPublicKeyInfo, DER
    CCrypto_X509_ValueList extensions;
};

/// The DER of a certificate. \param hash as SignatureAlgorithmFor() takes it.
[[nodiscard]] element IssueCertificate(const CertificateFields& fields, ICryptoKeyPair& issuerKey, algorithm::Id hash);

struct RevocationListFields {
    std::uint32_t version = 2; ///< or 1, which has no extensions, its entries neither
    element issuer;            ///< as of a certificate
    CCryptoDateTime thisUpdate;
    CCryptoDateTime nextUpdate; ///< invalid when it is left out; else not before thisUpdate
    /// hasUnknownCritical is ignored. The reason `unspecified` is not written (RFC 5280, 5.3.1).
    std::vector<RevokedEntry> entries;
    CCrypto_X509_ValueList extensions;
};

/// The DER of a revocation list.
[[nodiscard]] element IssueRevocationList(const RevocationListFields& fields, ICryptoKeyPair& issuerKey, algorithm::Id hash);

} // namespace ccrypto
