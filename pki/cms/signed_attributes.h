#pragma once

#include "core/base/algorithm.h"
#include "core/system/date_time.h"
#include "pki/x509/certificate.h"

namespace ccrypto {

/// Where a signature carries what proves that its certificate was not revoked.
enum class RevocationEmbedding {
    none = 0,
    pdf = 1,  ///< a signed attribute of PDF files (PDF 2.0, 12.8.3.3.2), with the whole OCSPResponse
    etsi = 2, ///< an unsigned one of CAdES (ETSI TS 101 733, 6.3.4), with its BasicOCSPResponse
};

/// What the attributes of a signer are made of.
struct SignerAttributes {
    const CCrypto_X509_Certificate* signer = nullptr;
    algorithm::Id hash = algorithm::none;
    element digestAlgorithm; ///< AlgorithmIdentifier of the hash, DER
    element messageDigest;
    CCryptoDateTime signingTime;         ///< invalid: no such attribute
    element protectedSignatureAlgorithm; ///< AlgorithmIdentifier; empty: no attribute of algorithm protection
    RevocationEmbedding embedding = RevocationEmbedding::none;
    element ocspResponse; ///< OCSPResponse, DER; goes before the list
    element crl;          ///< DER
};

/// The SET of the signed attributes, DER, in the order in which they are signed; it is that of DER, too. Empty, logged, for
/// attributes of which it would not be, since verifiers that sort a set before they hash it would refuse the signature, and for a
/// time after 2049, which a UTCTime cannot say.
[[nodiscard]] element BuildSignedAttributes(const SignerAttributes& attributes);

/// The BasicOCSPResponse inside a successful OCSPResponse, both DER; empty for anything else.
[[nodiscard]] element BasicResponseOf(const element& ocspResponse);

/// The SET of the unsigned ones, DER; empty for none. \return false, logged, for an OCSP response without a basic response.
[[nodiscard]] bool BuildUnsignedAttributes(const SignerAttributes& attributes, element& built);

} // namespace ccrypto
