#pragma once

#include "core/text/string.h"
#include "pki/keys/key_pair.h"
#include "pki/keys/password_encryption.h"

#include <functional>
#include <memory>
#include <span>
#include <string_view>

/// Keys in DER and PEM.
class CCryptoKeyFile {
public:
    /// Asked for the password, once, when the key turns out to be encrypted, in a way that is supported. \return false when there
    /// is none.
    using PasswordSource = std::function<bool(element& password)>;

    /// A key in whatever form: DER, or PEM (RFC 7468), of which the first block that is a key counts.
    /// \return null, with the reason in the log and in ccrypto::LastFailure(), which begins empty.
    [[nodiscard]] std::unique_ptr<ICryptoKeyPair> Load(std::span<const std::uint8_t> bytes, const PasswordSource& password = {});

    /// The form of the key that was loaded last.
    ccrypto::KeyForm form() const { return form_; }

    /// A key in a form; encryptedPrivateKey needs `password` and `encryption`.
    /// \return DER; empty, with the reason as above, when the key does not have the form.
    [[nodiscard]] element Save(const ICryptoKeyPair& key, ccrypto::KeyForm form, std::string_view password = {},
                               const SCryptoPasswordEncryption& encryption = {});

    /// The label of the form's PEM block.
    static const char* Label(ccrypto::KeyForm form);
    /// PEM of what Save() gave.
    [[nodiscard]] static CCryptoString ToPem(ccrypto::KeyForm form, const element& der);

private:
    ccrypto::KeyForm form_ = ccrypto::KeyForm::publicKeyInfo;
};
