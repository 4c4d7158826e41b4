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
constexpr Option keyCipherOption = {
    OptionKind::text, 0, "cipher", "NAME",
    "encryption with a password: aes-128-cbc, aes-192-cbc, aes-256-cbc (the default) or des-ede3-cbc"};
constexpr Option keyIterationsOption = {OptionKind::number, 0, "iterations", "N",
                                        "encryption with a password: iterations of PBKDF2, 1000 to 50000000 (600000)"};
constexpr Option keySchemeOption = {
    OptionKind::text, 0, "scheme", "NAME",
    "encryption with a password: an old, weak scheme of PKCS#12, for programs that read nothing newer: sha1-3des, "
    "sha1-2des, sha1-rc2-128, sha1-rc2-40, sha1-rc4-128 or sha1-rc4-40"};

/// Reads keyCipherOption, keyIterationsOption and keySchemeOption, and warns of a weak scheme. \return exitDone, or exitUsage after
/// the reason was printed.
int ReadPasswordEncryption(Invocation& invocation, SCryptoPasswordEncryption& encryption);

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
    /// Reads the options. \param secret the password of a key that is encrypted. \return exitDone, or exitUsage after the reason
    /// was printed.
    int read(Invocation& invocation, const SecretKind& secret);
    /// Sees that a key of this kind (the id of the curve, or rsaEncryption) has the form, asks for the password when there is to be
    /// one, and opens what the key goes to, ahead of making one that could not be kept. \return the exit code.
    int prepare(Invocation& invocation, algorithm::Id kind);
    /// After prepare(). `source` is for messages. \return the exit code.
    int write(Invocation& invocation, const ICryptoKeyPair& key, std::string_view source);

private:
    KeyForm form_ = KeyForm::privateKeyInfo;
    const SecretKind* secret_ = nullptr;
    SCryptoPasswordEncryption encryption_;
    element password_;
    std::optional<KeyOutput> output_;
};

} // namespace ccrypto
