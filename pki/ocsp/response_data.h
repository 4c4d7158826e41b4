#pragma once

#include "pki/ocsp/cert_id.h"
#include "pki/ocsp/cert_status.h"

#include <memory>
#include <vector>

namespace CCryptoOCSP {

/// SingleResponse: the status of one certificate.
class CSingleResponse : public CStructure {
public:
    CSingleResponse();
    explicit CSingleResponse(const elementNode* node);

    bool ParseNode() override;
    bool SetTemplateValues() override;

    CCertID certID;
    CCertStatus certStatus;
    CCryptoDateTime thisUpdate;
    CCryptoDateTime nextUpdate; ///< invalid when there is none
    CCrypto_X509_ValueList singleExtensions;

protected:
    void ClearFields() override;
};

/// ResponseData: what a responder signs.
class CTBSResponseData : public CStructure {
public:
    CTBSResponseData();
    explicit CTBSResponseData(const elementNode* node);

    bool ParseNode() override;
    bool SetTemplateValues() override;

    // The responder by one of the two.
    element responderName;    ///< Name, DER; empty when the responder is given by its key
    element responderKeyHash; ///< SHA-1 of the bits of the key; empty when the responder is given by its name
    CCryptoDateTime producedAt;
    std::vector<std::unique_ptr<CSingleResponse>> responses;
    CCrypto_X509_ValueList extensions;

protected:
    void ClearFields() override;
};

} // namespace CCryptoOCSP
