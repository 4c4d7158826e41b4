#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "pki/cms/content_info.h"
#include "pki/keys/password_encryption.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// EncryptedContentInfo (RFC 5652, 6.1): what is encrypted, how, and the encrypted octets.
class CCryptoPKCS7encryptedContentObject : public CCryptoPKCS7contentBase {
public:
    CCryptoPKCS7encryptedContentObject();

    /// The same as Parse for content in pieces, too, as messages written in one pass have it: the template takes one piece.
    bool ParseContent(const elementNode* node);

    bool BuildNode() override;
    /// Logs "Invalid contentData" for a message without encrypted content.
    bool ParseNode() override;

    /// Content of the type data, encrypted with a password (RFC 8018; RFC 7292, appendix C). \return false, logged: "Unsupported
    /// prf algorithm", "Unsupported encryption algorithm", or why CCryptoPasswordEncryption::Encrypt failed.
    [[nodiscard]] bool Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                               std::span<const std::uint8_t> content, ICryptoRandom& random = ICryptoRandom::Instance());
    /// \param password none for no password at all; see CCryptoPasswordEncryption::Decrypt. \return false, logged, `content` empty:
    /// "Unsupported prf algorithm", "Unsupported decryption algorithm", and "Invalid contentData" for a wrong password, as far as
    /// the padding shows.
    [[nodiscard]] bool Decrypt(std::optional<std::string_view> password, element& content) const;

    CCryptoAlgorithmIdentifier contentEncryptionAlgorithm;
    element encryptedContent;

protected:
    void ClearFields() override;
};
