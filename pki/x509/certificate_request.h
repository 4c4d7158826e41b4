#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "core/base/algorithm.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/keys/key_pair.h"
#include "pki/x509/x509_base.h"

#include <memory>
#include <span>
#include <vector>

/// A certification request (PKCS#10, RFC 2986): a name, a key and wishes for extensions, signed with that key.
class CCryptoCertificateRequest : public CCrypto_X509_Base {
public:
    CCryptoCertificateRequest() = default;

    /// \param der one request. \return false, logged, the object empty and failure() set, as for a certificate.
    bool LoadRequest(const element& der);
    /// A request for `key`, signed with it. \param extensions for the attribute extensionRequest (RFC 2985, 5.4.2), which is left
    /// out when there are none. \return DER; empty, logged, when the key cannot sign or a value cannot be written.
    [[nodiscard]] static element BuildRequest(ICryptoKeyPair& key, ccrypto::algorithm::Id hash,
                                              const CCrypto_X509_ValueList& subject, const CCrypto_X509_ValueList& extensions);

    [[nodiscard]] const CCrypto_X509_ValueList& subject() const { return subject_; }
    /// SubjectPublicKeyInfo, DER.
    [[nodiscard]] const element& publicKeyInfo() const { return publicKeyInfo_; }
    [[nodiscard]] const element& publicKeyBits() const { return publicKeyBits_; }
    /// Never null once loaded.
    [[nodiscard]] const std::shared_ptr<ICryptoKeyPair>& publicKey() const { return publicKey_; }
    /// The identifiers of all attributes, in their order.
    [[nodiscard]] const std::vector<ccrypto::Oid>& attributes() const { return attributes_; }

    /// Whether the owner of the key in it signed it.
    [[nodiscard]] ccrypto::SignatureResult verifySignature() const;

private:
    bool readFields(CCryptoAutoLogger& logger);
    bool readKey(CCryptoAutoLogger& logger, const elementNode* node);
    bool readAttributes(CCryptoAutoLogger& logger, const elementNode* first);
    bool readExtensions(const elementNode* set);
    void clear();

    CCrypto_X509_ValueList subject_;
    element publicKeyInfo_;
    element publicKeyBits_;
    std::shared_ptr<ICryptoKeyPair> publicKey_;
    std::vector<ccrypto::Oid> attributes_;
};
