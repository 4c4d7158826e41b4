#pragma once

#include "core/base/algorithm.h"
#include "pki/keys/key_pair.h"
#include "pki/ocsp/response_data.h"
#include "pki/x509/certificate.h"
#include "pki/x509/signature.h"

#include <cstdint>
#include <span>
#include <vector>

namespace CCryptoOCSP {

/// BasicOCSPResponse: what a responder says, signed.
class CBasicOCSPResponse : public CStructure {
public:
    CBasicOCSPResponse();
    /// What is read of a tree has no octets, so its signature cannot be verified; see LoadResponse.
    explicit CBasicOCSPResponse(const elementNode* node);

    /// One response, whole; its octets are kept. \return false, logged, the object empty, for anything else: "value is empty",
    /// "Loading failed!", …
    [[nodiscard]] bool LoadResponse(const element& der);

    bool ParseNode() override;
    bool SetTemplateValues() override;

    [[nodiscard]] bool isEmpty() const { return signature.isEmpty(); }
    /// The octets, as they were loaded or signed; empty for what was read of a tree.
    [[nodiscard]] const element& der() const { return der_; }
    /// Whether these are DER. Of others nothing may be verified: what a signature covers is not what was understood.
    [[nodiscard]] bool isDer() const { return isDer_; }
    /// What the signature covers, within der(): the octets of tbsResponseData. Empty for octets that are not DER.
    [[nodiscard]] std::span<const std::uint8_t> signedOctets() const;

    /// Fills the signature algorithm and the signature over the DER of tbsResponseData. A responder that is not given is given by
    /// its key, a time of the response that is not given is the present. \return false, logged: "Invalid responder certificate" for
    /// one that is not loaded, has another key or is not the one that the response names, "Unsupported hash function",
    /// "Signature operation failed".
    [[nodiscard]] bool SignResponse(const CCrypto_X509_Certificate& responder, ICryptoKeyPair& key, ccrypto::algorithm::Id hash);
    /// Whether the owner of the certificate signed the octets. Nothing is said of who that is: see VerifyOcspResponse().
    /// \return false, logged as "Failed to verify:" and "Responder certificate:" with the details.
    [[nodiscard]] bool VerifySignature(const CCrypto_X509_Certificate& responder) const;

    /// Those of `certs` that load, in their order.
    [[nodiscard]] std::vector<ccrypto::CertificatePtr> certificates() const;
    /// Whether the certificate is the one that the responder is given by: its name, or its key.
    [[nodiscard]] bool isResponder(const CCrypto_X509_Certificate& certificate) const;

    CTBSResponseData tbsResponseData;
    CCryptoAlgorithmIdentifier signatureAlgorithm;
    element signature;          ///< whole bytes
    std::vector<element> certs; ///< DER, each one certificate

protected:
    void ClearFields() override;

private:
    bool readCertificates();

    element der_;
    bool isDer_ = false;
};

} // namespace CCryptoOCSP
