#pragma once

#include "pki/cms/encrypted_content.h"
#include "pki/keys/password_encryption.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// EncryptedData (RFC 5652, 8): content that is encrypted with a password.
class CCryptoPKCS7encryptedDataObject : public CCryptoASN1Object {
public:
    CCryptoPKCS7encryptedDataObject();

    bool BuildNode() override;
    /// Logs "Invalid version" for versions other than 0 and, with attributes that are not protected, 2; and "Invalid contentData".
    /// Content in pieces is joined; the attributes are ignored.
    bool ParseNode() override;

    /// As CCryptoPKCS7encryptedContentObject has them.
    [[nodiscard]] bool Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                               std::span<const std::uint8_t> content, ICryptoRandom& random = ICryptoRandom::Instance());
    [[nodiscard]] bool Decrypt(std::optional<std::string_view> password, element& content) const;

    CCryptoPKCS7encryptedContentObject encryptedContentInfo;

protected:
    void ClearFields() override { encryptedContentInfo.clear(); }
};
