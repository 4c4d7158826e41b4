#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "pki/cms/attributes.h"
#include "pki/cms/certificate_identifier.h"

#include <cstdint>
#include <optional>

/// SignerInfo (RFC 5652, 5.3): who signed, how, and what besides the content. Of version 1, with issuer and serial number, and of
/// version 3, with a subject key identifier; version 1 is written.
class CCryptoPKCS7SignerInfo : public CCryptoASN1Object {
public:
    CCryptoPKCS7SignerInfo();
    explicit CCryptoPKCS7SignerInfo(const elementNode* node);

    bool BuildNode() override;
    /// Logs "Invalid version" for another version, or one that is not that of the identifier.
    bool ParseNode() override;

    std::uint32_t version = 1;
    ccrypto::CertificateIdentifier signer;
    CCryptoAlgorithmIdentifier digestAlgorithm;
    CCryptoAlgorithmIdentifier signatureAlgorithm;
    element signature;
    /// Null when there are none.
    std::unique_ptr<CCryptoPKCS7Attributes> signedAttributes;
    std::unique_ptr<CCryptoPKCS7Attributes> unsignedAttributes;

protected:
    void ClearFields() override;

private:
    bool readAttributes(const char* placeholder, std::unique_ptr<CCryptoPKCS7Attributes>& attributes);
};
