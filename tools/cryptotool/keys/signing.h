#pragma once

#include "pki/keys/key_pair.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/keys/key_input.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// What signing and verifying have in common.

namespace ccrypto {

constexpr Option hashOption = {
    OptionKind::text, 0, "hash", "ALG",
    "the hash function: sha256 (the default), sha384, sha512, sha224, sha3-224 to sha3-512, sha1, md5 or md5-sha1"};
constexpr Option pssOption = {OptionKind::flag, 0, "pss", "", "for RSA keys: RSASSA-PSS instead of PKCS#1 v1.5"};

/// What is signed, with what, and how.
struct Signing {
    std::unique_ptr<ICryptoKeyPair> key;
    algorithm::Id hash = algorithm::none;
    element input; ///< the digest, or the message when the key signs messages
    SCryptoPadding padding;
};

/// Reads the padding from the options and then the key from the first of `files`, as ReadKey() does, and sees that the key signs
/// so. \return exitDone, or the exit code after the reason was printed.
int StartSigning(Invocation& invocation, const std::vector<std::string>& files, KeyHalf half, Signing& signing);

/// Hashes a file of any length, with a bar on a terminal; reads it when the key signs messages. \return exitDone, or the exit code
/// after the reason was printed.
int ReadSigned(Invocation& invocation, const std::string& file, Signing& signing);

} // namespace ccrypto
