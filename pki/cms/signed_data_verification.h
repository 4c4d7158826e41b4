#pragma once

#include "pki/cms/signer_signature.h"
#include "pki/validation/path_validation.h"

#include <vector>

namespace ccrypto {

/// What a caller asks of every signer.
struct SignedDataOptions {
    ValidationOptions validation; ///< of the signer's certificate
    /// A signed attribute that says which certificate is the signer's (CAdES), even where there are no attributes at all.
    bool requiresSigningCertificate = false;
};

/// What the caller trusts and knows; the message adds its own certificates and proofs of status.
struct SignedDataTrust {
    std::vector<CertificatePtr> anchors;
    std::vector<CertificatePtr> candidates;
    StatusSources status;
};

struct SignerVerdict {
    Verdict verdict = Verdict::invalid;
    Reason reason = Reason::none;
    CCryptoString detail;
    CertificatePtr certificate;  ///< null when it was not found
    PathVerdict path;            ///< of the certificate, when it came to that
    const char* digestName = ""; ///< "SHA-256"
    CCryptoString keyText;       ///< "RSA 2048", "prime256v1"
    CCryptoDateTime signingTime; ///< by the signer's own word; invalid when it is not given
    AttributeOrder order = AttributeOrder::none;
    bool namesCertificate = false; ///< a signed attribute says which certificate it is
};

struct SignedDataVerdict {
    /// Valid when every signer is, and there is one; else the first that is invalid speaks, then the first that is undecided.
    Verdict verdict = Verdict::invalid;
    Reason reason = Reason::none;
    CCryptoString detail;
    std::vector<SignerVerdict> signers; ///< in the order of the message
};

/// Verifies every signer of a message: signature, attributes, certificate and its path.
///
/// Lists and OCSP responses of the message count beside those of the caller, whatever status is required: a revocation that is
/// verified refuses always. What is tried is bounded over all signers: 100,000 certificates that claim to be a signer's, 2,000
/// signatures of signers, and one CertificateValidator; beyond it the reason is limit.
/// \param content of a detached signature, or what embedded content must be: where both are there and are not the same octets,
/// every signer is refused. Null for the embedded content.
[[nodiscard]] SignedDataVerdict VerifySignedData(const CCryptoPKCS7SignedDataObject& data, SignedContent* content,
                                                 const SignedDataTrust& trust, const SignedDataOptions& options);

} // namespace ccrypto
