#pragma once

#include "pki/keys/key_file.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/input/secret_input.h"

#include <memory>
#include <string>

namespace ccrypto {

/// A key that a file holds.
struct KeyInput {
    std::unique_ptr<ICryptoKeyPair> key;
    KeyForm form = KeyForm::publicKeyInfo;
};

/// Reads a key of any form, DER, PEM, base64 or hexadecimal; of one that is encrypted, the password comes from the options of
/// passwordSecret. \return exitDone, or the exit code after the reason was printed.
int ReadKey(Invocation& invocation, const std::string& file, KeyInput& input);

} // namespace ccrypto
