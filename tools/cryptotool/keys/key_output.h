#pragma once

#include "pki/keys/key_file.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/output/output.h"

#include <optional>

// The options that say how a private key is written.

namespace ccrypto {

constexpr Option privateFormOption = {OptionKind::choice, 0, "form", "pkcs8|pkcs1|sec1|encrypted",
                                      "PKCS#8 (pkcs8), RSAPrivateKey, ECPrivateKey, or PKCS#8 encrypted with a password"};
constexpr Option keyEncodingOption = {OptionKind::choice, 0, "outform", "pem|der", "PEM (pem), or DER, which is binary"};
constexpr Option keyCipherOption = {OptionKind::text, 0, "cipher", "NAME",
                                    "for encrypted: aes-128-cbc, aes-192-cbc, aes-256-cbc (the default) or des-ede3-cbc"};
constexpr Option keyIterationsOption = {OptionKind::number, 0, "iterations", "N",
                                        "for encrypted: iterations of PBKDF2, 1000 to 50000000 (600000)"};
constexpr Option keySchemeOption = {
    OptionKind::text, 0, "scheme", "NAME",
    "for encrypted: an old, weak scheme of PKCS#12, for programs that read nothing newer: sha1-3des, "
    "sha1-2des, sha1-rc2-128, sha1-rc2-40, sha1-rc4-128 or sha1-rc4-40"};

/// The password of a key that is written where another one is read.
constexpr SecretKind newPasswordSecret = {
    "new password",
    true,
    {OptionKind::text, 0, "new-password-file", "FILE", "as --password-file, for the key that is written"},
    {OptionKind::number, 0, "new-password-fd", "N", "as --password-fd, for the key that is written"},
};

/// Where a key goes: the place that the options of an invocation name, as PEM or DER; a private key's file is for its owner alone.
class KeyOutput {
public:
    KeyOutput(Invocation& invocation, KeyForm form);

    /// \return exitDone, or the exit code after the reason was printed.
    int open();
    /// All of it: `der` is a key in the form. \return as open().
    int write(const element& der);

private:
    Invocation& invocation_;
    KeyForm form_;
    bool isDer_;
    Output output_;
};

/// How the options of an invocation want a private key written.
class PrivateKeyTarget {
public:
    /// \param secret the password of a key that is encrypted. \return exitDone, or exitUsage after the reason was printed.
    int read(Invocation& invocation, const SecretKind& secret);
    /// Whether a key of this kind (algorithm::Id of the kind or the curve) has the form. \return exitDone, or exitUsage after the
    /// reason was printed.
    int check(Invocation& invocation, std::uint32_t kind) const;
    /// Asks for the password when there is to be one. \return the exit code.
    int askPassword(Invocation& invocation);
    /// Opens what the key goes to, ahead of making one that could not be kept. \return the exit code.
    int open(Invocation& invocation);
    /// After open(). `source` is for messages. \return the exit code.
    int write(Invocation& invocation, const ICryptoKeyPair& key, std::string_view source);

private:
    int readEncryption(Invocation& invocation);

    KeyForm form_ = KeyForm::privateKeyInfo;
    const SecretKind* secret_ = nullptr;
    SCryptoPasswordEncryption encryption_;
    element password_;
    std::optional<KeyOutput> output_;
};

} // namespace ccrypto
