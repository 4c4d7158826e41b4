#pragma once

#include "pki/cms/content_info.h"
#include "pki/cms/signer_info.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace ccrypto {
enum class SignedDataForm;
}

/// SignedData (RFC 5652, 5.1) of versions 1, 3, 4 and 5; version 1 is written, over content of the type data.
class CCryptoPKCS7SignedDataObject : public CCryptoASN1Object {
public:
    static constexpr std::uint32_t maxCertificates = 10'000; ///< and lists, signers and digest algorithms

    CCryptoPKCS7SignedDataObject();
    explicit CCryptoPKCS7SignedDataObject(const elementNode* node);

    bool BuildNode() override;
    /// Logs "Invalid version" for another version.
    bool ParseNode() override;

    /// A ContentInfo with it, DER; empty, logged, where BuildNode fails.
    [[nodiscard]] element GetMessage() const;

    std::uint32_t version = 1;
    std::vector<std::unique_ptr<CCryptoAlgorithmIdentifier>> digestAlgorithms;
    ccrypto::Oid contentType; ///< what a reader finds in the content
    bool hasContent = false;  ///< false when it is detached
    element content;
    /// DER, in the order of the message. Attribute certificates, certificates of obsolete forms and others are ignored.
    std::vector<element> certificates;
    std::vector<element> crls;
    /// OCSPResponse, DER, that stand among the lists (RFC 5940, 2.1). Other forms of status are ignored.
    std::vector<element> ocspResponses;
    std::vector<std::unique_ptr<CCryptoPKCS7SignerInfo>> signerInfos;

protected:
    void ClearFields() override;

private:
    bool readAlgorithms();
    bool readContent();
    bool readCertificates();
    bool readStatus();
    bool readSigners();
    element write(ccrypto::SignedDataForm form) const;
};
