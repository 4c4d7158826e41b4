#pragma once

#include "core/diagnostics/failure.h"
#include "pki/keys/eddsa_key_pair.h"
#include "pki/keys/key_file.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ccrypto {

inline std::string ReasonOfFailure()
{
    const std::optional<Failure> failure = LastFailure();
    return failure ? failure->text : std::string();
}

inline std::unique_ptr<ICryptoKeyPair> Load(const Bytes& bytes)
{
    return CCryptoKeyFile().Load(bytes);
}

/// A key of the data file by the id of its algorithm or curve.
inline std::unique_ptr<ICryptoKeyPair> KeyOf(algorithm::Id kind)
{
    for (const TestVector& vector : ReadVectors("key_files.txt"))
        if (vector.number("Kind") == kind)
            return Load(vector.bytes("PrivateKeyInfo"));
    ADD_FAILURE() << "no key of kind " << kind;
    return nullptr;
}

/// A key of each class of keys.
inline std::vector<std::unique_ptr<ICryptoKeyPair>> KeysOfEveryClass()
{
    std::vector<std::unique_ptr<ICryptoKeyPair>> keys;
    for (const algorithm::Id kind : {algorithm::rsaEncryption, algorithm::prime256v1, algorithm::x25519})
        keys.push_back(KeyOf(kind));
    keys.push_back(std::make_unique<CCryptoEddsaKeyPair>(EddsaKey::Generate(algorithm::ed25519)));
    return keys;
}

} // namespace ccrypto
