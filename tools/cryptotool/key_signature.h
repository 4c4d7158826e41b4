#pragma once

#include "crypto/key_pair.h"
#include "tools/cryptotool/invocation.h"

// What signing and verifying have in common.

constexpr Option hashOption = {OptionKind::text, 0, "hash", "ALG",
                               "the hash function: sha256 (as without it), sha384, sha512, sha224, sha1,\nmd5 or md5-sha1"};
constexpr Option pssOption = {OptionKind::flag, 0, "pss", "", "of RSA keys: RSASSA-PSS instead of PKCS#1 v1.5"};

/// What is signed, and how.
struct SignedDigest {
    std::uint32_t hash = 0;
    element digest;
    SCryptoPadding padding;
};

/// Reads the padding from the options, and whether a key signs so. \param key the file of the key, for messages. \return exitDone,
/// or the exit code after the reason was printed.
int ReadPadding(Invocation& invocation, const ICryptoKeyPair& pair, const std::string& key, SignedDigest& what);

/// Hashes a file of any length, with a bar on a terminal. \return exitDone, or the exit code after the reason was printed.
int HashFile(Invocation& invocation, const std::string& file, SignedDigest& what);
