#pragma once

#include "core/base/algorithm.h"
#include "pki/cms/certificate_identifier.h"
#include "pki/cms/encrypted_content.h"
#include "pki/keys/key_pair.h"
#include "pki/x509/certificate.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ccrypto {

/// KeyTransRecipientInfo (RFC 5652, 6.2.1): the key of the content, encrypted for one recipient.
struct KeyRecipient {
    CertificateIdentifier recipient;
    element keyEncryptionAlgorithm; ///< AlgorithmIdentifier, DER
    element encryptedKey;
};

} // namespace ccrypto

/// EnvelopedData (RFC 5652, 6.1): content encrypted for recipients.
class CCryptoPKCS7EnvelopedDataObject : public CCryptoASN1Object {
public:
    static constexpr std::uint32_t maxRecipients = 10'000;

    CCryptoPKCS7EnvelopedDataObject();

    bool BuildNode() override;
    /// Logs "Invalid version" for versions other than 0, 2, 3 and 4. Recipients of other kinds than key transport are counted, not
    /// read.
    bool ParseNode() override;

    std::vector<ccrypto::KeyRecipient> recipients;
    std::uint32_t otherRecipients = 0; ///< of key agreement, passwords, …
    CCryptoPKCS7encryptedContentObject encryptedContent;

protected:
    void ClearFields() override;

private:
    bool readRecipient(const elementNode& node);
};

namespace ccrypto {

/// How a message is encrypted.
struct EnvelopeOptions {
    algorithm::Id cipher = algorithm::aes256Cbc;                       ///< AES in cipher block chaining
    SCryptoPadding::Scheme keyPadding = SCryptoPadding::Scheme::pkcs1; ///< or OAEP (RFC 8017, 7.1) without a label
    algorithm::Id maskingHash = algorithm::sha256;                     ///< of OAEP and its MGF1: SHA-1 to SHA-512
};

/// A message of enveloped data, DER, that the owners of these certificates can open. Their keys are RSA keys; a key usage, where
/// there is one, allows key encipherment. One that is given twice is written once. \return empty, logged, otherwise.
[[nodiscard]] element EncryptForRecipients(std::span<const std::uint8_t> content, std::span<const CertificatePtr> recipients,
                                           const EnvelopeOptions& options = {});

/// Opens a message, DER or BER, with the private key of one recipient. A key that was encrypted otherwise, or damaged, gives a
/// random one in its place, so that all that is wrong with a message ends with the same text.
/// \param contentType set, where it is given, to what the message says of the content, which need not be data.
/// \return false, logged, `content` empty.
[[nodiscard]] bool DecryptAsRecipient(std::span<const std::uint8_t> message, const CCrypto_X509_Certificate& certificate,
                                      ICryptoKeyPair& key, element& content, Oid* contentType = nullptr);

} // namespace ccrypto
