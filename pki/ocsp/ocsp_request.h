#pragma once

#include "pki/ocsp/cert_id.h"

#include <memory>
#include <vector>

namespace CCryptoOCSP {

/// Request: one certificate that is asked about.
class CRequest : public CStructure {
public:
    CRequest();
    explicit CRequest(const elementNode* node);

    bool ParseNode() override;
    bool SetTemplateValues() override;

    CCertID certID;
    CCrypto_X509_ValueList extensions;

protected:
    void ClearFields() override;
};

/// TBSRequest: what is asked, by whom.
class CTBSRequest : public CStructure {
public:
    CTBSRequest();
    explicit CTBSRequest(const elementNode* node);

    bool ParseNode() override;
    bool SetTemplateValues() override;

    element requestorName; ///< GeneralName, DER; empty when there is none
    std::vector<std::unique_ptr<CRequest>> requestList;
    CCrypto_X509_ValueList extensions;

protected:
    void ClearFields() override;
};

/// OCSPRequest. Signatures of requests are kept and not looked at: responders that answer the public do not ask for them.
class COCSPRequest : public CStructure {
public:
    COCSPRequest();
    explicit COCSPRequest(const elementNode* node);

    /// One request, whole. \return false, logged, the object empty, for anything else: "value is empty", "Loading failed!", …
    [[nodiscard]] bool LoadRequest(const element& der);
    /// Asks about the certificate with this serial number, as its INTEGER's octets, that `issuer` issued.
    /// \param hash SHA-1, which every responder knows, or SHA-2. \return false, logged, the request unchanged.
    [[nodiscard]] bool Ask(const CCrypto_X509_Certificate& issuer, const element& serialNumber,
                           ccrypto::algorithm::Id hash = ccrypto::algorithm::sha1);
    /// Adds a nonce of 32 random bytes (RFC 9654, 2.1), after which nonce() gives it. \return false, logged, when the random source
    /// fails.
    [[nodiscard]] bool AddNonce();
    /// The octets of the nonce; empty when there is none, or one that is malformed.
    [[nodiscard]] element nonce() const;

    bool ParseNode() override;
    bool SetTemplateValues() override;

    CTBSRequest tbsRequest;
    element signature; ///< the tagged Signature, DER; empty when there is none

protected:
    void ClearFields() override;
};

} // namespace CCryptoOCSP
