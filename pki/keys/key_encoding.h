#pragma once

#include "crypto/dsa/dsa.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/eddsa.h"
#include "crypto/rsa/rsa.h"
#include "pki/keys/key_pair.h"

#include <memory>

// The DER forms of keys. What is loaded is hostile: each gives null, logged with the reason, for DER that does not have the form,
// for algorithms and curves that the algorithm table lacks, for curves that are given by parameters instead of their names, and for
// numbers that do not make a valid key (see CCryptoRSA and CCryptoEC). What is written is empty, logged, when there is no such form
// of the key or no private half to write.

namespace ccrypto {

/// SubjectPublicKeyInfo (RFC 5280, 4.1.2.7; curves by RFC 5480 and RFC 8410, RSA by RFC 8017 and, for keys limited to PSS, RFC
/// 4055; DSA by RFC 3279, 2.3.2, where a key without parameters is one that inherits them: see CCryptoDSAKeyPair).
[[nodiscard]] std::unique_ptr<ICryptoKeyPair> LoadPublicKeyInfo(const element& der);
/// \param algorithm the AlgorithmIdentifier, DER; null for rsaEncryption.
[[nodiscard]] element PublicKeyInfoOf(const CCryptoRSA& key, const element* algorithm = nullptr);
[[nodiscard]] element PublicKeyInfoOf(const CCryptoEC& key);
[[nodiscard]] element PublicKeyInfoOf(const EddsaKey& key);
/// Without parameters when these are empty.
[[nodiscard]] element PublicKeyInfoOf(const CCryptoDSANumbers& numbers);

/// PrivateKeyInfo (RFC 5958), not encrypted. Attributes are ignored; a public key beside the private one must belong to it.
[[nodiscard]] std::unique_ptr<ICryptoKeyPair> LoadPrivateKeyInfo(const element& der);
[[nodiscard]] element PrivateKeyInfoOf(const CCryptoRSA& key, const element* algorithm = nullptr);
[[nodiscard]] element PrivateKeyInfoOf(const CCryptoEC& key);
[[nodiscard]] element PrivateKeyInfoOf(const EddsaKey& key);

/// RSAPublicKey and RSAPrivateKey (RFC 8017, A.1): PKCS#1.
[[nodiscard]] std::unique_ptr<ICryptoKeyPair> LoadRSAPublicKey(const element& der);
[[nodiscard]] std::unique_ptr<ICryptoKeyPair> LoadRSAPrivateKey(const element& der);
[[nodiscard]] element RSAPublicKeyOf(const CCryptoRSA& key);
[[nodiscard]] element RSAPrivateKeyOf(const CCryptoRSA& key);

/// ECPrivateKey (RFC 5915): SEC1. The curve must be named in it, and X25519 and X448 do not have the form. A scalar may lack its
/// leading zero bytes when read, and has them when written.
[[nodiscard]] std::unique_ptr<ICryptoKeyPair> LoadECPrivateKey(const element& der);
[[nodiscard]] element ECPrivateKeyOf(const CCryptoEC& key);

} // namespace ccrypto
