#pragma once

#include "pki/pkcs12/pkcs12.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/input/secret_input.h"

#include <string>

namespace ccrypto {

/// Whether a PKCS#12 file is opened, or only looked at, which takes no password.
enum class StoreAccess { open, outline };

/// Reads a file of DER, BER, base64 or hexadecimal text. The password comes from the options of passwordSecret. \return exitDone,
/// or the exit code after the reason was printed.
int ReadStore(Invocation& invocation, const std::string& name, StoreAccess access, CCryptoPKCS12& file);

} // namespace ccrypto
