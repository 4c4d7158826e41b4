#pragma once

#include "pki/cms/signed_attributes.h"
#include "pki/keys/key_pair.h"
#include "pki/x509/certificate.h"

#include <optional>
#include <span>
#include <vector>

/// What CCryptoPKCS7::ComputeSignature signs, with what, and what it adds.
struct SCryptoSignature {
    ccrypto::CertificatePtr signer;
    /// RSA with PKCS#1 padding, a curve that signs with ECDSA, Ed25519 or Ed448.
    ICryptoKeyPair* key = nullptr;
    /// SHA-224 to SHA-512 with RSA, SHA-256 to SHA-512 with ECDSA, SHA-512 with Ed25519 and SHAKE256 with Ed448 (RFC 8419).
    ccrypto::algorithm::Id hash = ccrypto::algorithm::sha256;
    /// The digest of the document. May be empty when the content is here.
    element documentDigest;
    /// To be embedded; none for a detached signature.
    std::optional<std::span<const std::uint8_t>> content;
    std::vector<ccrypto::CertificatePtr> extraCertificates;

    element crl;          ///< DER; empty for none
    element ocspResponse; ///< OCSPResponse, DER; empty for none; goes before the list
    ccrypto::RevocationEmbedding embedding = ccrypto::RevocationEmbedding::none;

    bool addsSigningTime = false;
    bool addsAlgorithmProtection = false;
    /// Invalid for the present.
    CCryptoDateTime now;
};

/// Signatures over documents: PKCS#7, or CMS (RFC 5652).
class CCryptoPKCS7 {
public:
    /// A ContentInfo with signed data of one signer, DER. The signer's certificate is embedded, and must be valid, the key's and
    /// fit to sign. \return empty, logged: "Invalid subject certificate", "VerifyCertificate: %s", "Unknown key type?",
    /// "Unsupported hash function", "signHash: %s", … Nothing is left of a signature whose key failed.
    [[nodiscard]] static element ComputeSignature(const SCryptoSignature& signature);
};
