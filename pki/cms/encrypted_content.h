#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "pki/cms/content_info.h"

/// EncryptedContentInfo (RFC 5652, 6.1): what is encrypted, how, and the encrypted octets.
class CCryptoPKCS7encryptedContentObject : public CCryptoPKCS7contentBase {
public:
    CCryptoPKCS7encryptedContentObject();

    /// The same as Parse for content in pieces, too, as messages written in one pass have it: the template takes one piece.
    bool ParseContent(const elementNode* node);

    bool BuildNode() override;
    /// Logs "Invalid contentData" for a message without encrypted content.
    bool ParseNode() override;

    CCryptoAlgorithmIdentifier contentEncryptionAlgorithm;
    element encryptedContent;

protected:
    void ClearFields() override;
};
