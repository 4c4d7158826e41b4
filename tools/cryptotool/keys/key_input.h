#pragma once

#include "pki/keys/key_file.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/input/secret_input.h"

#include <memory>
#include <string>
#include <vector>

namespace ccrypto {

/// A key that a file holds.
struct KeyInput {
    std::unique_ptr<ICryptoKeyPair> key;
    KeyForm form = KeyForm::publicKeyInfo;
    bool isOfCertificate = false; ///< the file holds a certificate, and the key is its public key
};

/// Which half of a key a command works with.
enum class KeyHalf { any, privateHalf };

/// Reads a key of any form, or of a certificate, in DER, PEM, base64 or hexadecimal, from the first of `files`, which are all that
/// the command reads: at most one of them, and of the passwords, may be standard input. The password of a key that is encrypted
/// comes from the options of passwordSecret. \return exitDone, or the exit code after the reason was printed.
int ReadKey(Invocation& invocation, const std::vector<std::string>& files, KeyHalf half, KeyInput& input);
/// The same for the public key of somebody else, for which no password is asked.
int ReadPeerKey(Invocation& invocation, const std::string& file, KeyInput& input);

} // namespace ccrypto
