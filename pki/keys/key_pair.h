#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"
#include "pki/keys/key_abilities.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace ccrypto {

/// The forms in which keys are kept in files.
enum class KeyForm {
    publicKeyInfo,       ///< SubjectPublicKeyInfo, "PUBLIC KEY"
    rsaPublicKey,        ///< PKCS#1, "RSA PUBLIC KEY"
    privateKeyInfo,      ///< PKCS#8, "PRIVATE KEY"
    encryptedPrivateKey, ///< PKCS#8, "ENCRYPTED PRIVATE KEY"
    rsaPrivateKey,       ///< PKCS#1, "RSA PRIVATE KEY"
    ecPrivateKey,        ///< SEC1, "EC PRIVATE KEY"
};

} // namespace ccrypto

/// One of the numbers that a key is made of: its name as the key's standard spells it, and its value, big-endian or in the encoding
/// of that standard.
struct SCryptoKeyNumber {
    const char* name;
    element value;
};

/// A key of a public-key algorithm: its public half and, in memory, on a card or not at all, its private half.
class ICryptoKeyPair {
public:
    virtual ~ICryptoKeyPair() = default;

    /// The kind of key: rsaEncryption, ecPublicKey, dsa, or the id of a curve that is an algorithm by itself: x25519, x448,
    /// ed25519, ed448.
    [[nodiscard]] virtual ccrypto::algorithm::Id algorithmId() const = 0;
    /// none for RSA and DSA.
    [[nodiscard]] virtual ccrypto::algorithm::Id curveId() const = 0;
    /// "RSA", "RSA-PSS", "prime256v1", ...
    [[nodiscard]] virtual const char* name() const = 0;
    /// Bits of the modulus, or of the curve's prime.
    [[nodiscard]] virtual std::uint32_t keySize() const = 0;
    /// Whether there is a private half, wherever it is.
    [[nodiscard]] virtual bool hasPrivate() const = 0;

    /// The numbers of the public half: "modulus" and "publicExponent" (RFC 8017, A.1.1), "publicPoint" (SEC 1, 2.3.3; RFC 7748, 5),
    /// "publicKey" (RFC 8032, 5.1.5), or "p", "q", "g" and "y" (RFC 3279, 2.3.2), of which those that are inherited are left out.
    [[nodiscard]] virtual std::vector<SCryptoKeyNumber> publicNumbers() const = 0;
    /// Those of the private half, secret: "privateExponent" to "coefficient" (RFC 8017, A.1.2), "privateScalar" or "seed" (RFC
    /// 8032, 5.1.5). Empty when there is no private half or it cannot leave its place.
    [[nodiscard]] virtual std::vector<SCryptoKeyNumber> privateNumbers() const = 0;

    /// SubjectPublicKeyInfo (RFC 5280, 4.1.2.7), DER.
    [[nodiscard]] virtual element publicKeyInfo() const = 0;
    /// PrivateKeyInfo (RFC 5958), DER; secret. Empty, logged, when there is no private half or it cannot leave its place.
    [[nodiscard]] virtual element privateKeyInfo() const = 0;
    /// The form of the key's own algorithm: rsaPublicKey, rsaPrivateKey or ecPrivateKey, DER; secret when it is private. Empty for
    /// a form that the key does not have.
    [[nodiscard]] virtual element ownForm(ccrypto::KeyForm form) const = 0;
    /// The public half by itself. Owned by the caller.
    [[nodiscard]] virtual std::unique_ptr<ICryptoKeyPair> publicHalf() const = 0;

    // The abilities, null for those that the key does not have. They live as long as the key.
    [[nodiscard]] virtual ICryptoSigner* signer() = 0;
    [[nodiscard]] virtual ICryptoDecrypter* decrypter() = 0;
    [[nodiscard]] virtual ICryptoKeyAgreement* agreement() = 0;

protected:
    ICryptoKeyPair() = default;
    ICryptoKeyPair(const ICryptoKeyPair&) = default;
    ICryptoKeyPair& operator=(const ICryptoKeyPair&) = default;
};

namespace ccrypto {

/// Whether two keys have the same public half, however each was written. A key that is limited to PSS is not the same without that
/// limit: its owner must not use it otherwise.
[[nodiscard]] inline bool IsSameKey(const ICryptoKeyPair& one, const ICryptoKeyPair& other)
{
    const element info = one.publicKeyInfo();
    return !info.isEmpty() && info == other.publicKeyInfo();
}

} // namespace ccrypto
