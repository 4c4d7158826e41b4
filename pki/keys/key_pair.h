#pragma once

#include "core/text/element.h"
#include "crypto/rsa/rsa.h"

#include <cstdint>
#include <memory>
#include <span>

/// How an RSA key pads what it signs or enciphers (RFC 8017). Keys on curves have no use for it.
struct SCryptoPadding {
    enum class Scheme {
        pkcs1, ///< RSASSA-PKCS1-v1_5 and RSAES-PKCS1-v1_5
        masked ///< RSASSA-PSS and RSAES-OAEP, with `masking`
    };

    Scheme scheme = Scheme::pkcs1;
    CCryptoRSAPadding masking = {};
};

/// A key of a public-key algorithm: its public half and, in memory, on a card or not at all, its private half.
///
/// What works with the private half may have to ask a card, or the person before it, so it may take long and may fail for reasons
/// that have nothing to do with its input. All failures are logged and give false or an empty element.
class ICryptoKeyPair {
public:
    virtual ~ICryptoKeyPair() = default;

    /// The kind of key by the algorithm table: rsaEncryption (1100), ecPublicKey (1101), x25519 (1112) or x448 (1113).
    virtual std::uint32_t algorithmId() const = 0;
    /// The curve by the algorithm table; 0 for RSA.
    virtual std::uint32_t curveId() const = 0;
    /// "RSA", "prime256v1", ...
    virtual const char* name() const = 0;
    /// Bits of the modulus, or of the curve's prime.
    virtual std::uint32_t keySize() const = 0;
    /// The length of every signature as the key makes it, in bytes; of ECDSA, whose length varies, the most. 0 for keys that do not
    /// sign.
    virtual std::uint32_t signatureSize() const = 0;
    /// Whether there is a private half to be asked, wherever it is.
    virtual bool hasPrivate() const = 0;

    /// SubjectPublicKeyInfo (RFC 5280, 4.1.2.7), DER.
    virtual element publicKeyInfo() const = 0;
    /// PrivateKeyInfo (RFC 5958), DER; secret. Empty, logged, when there is no private half or it cannot leave its place.
    virtual element privateKeyInfo() const = 0;
    /// The public half by itself. Owned by the caller.
    virtual std::unique_ptr<ICryptoKeyPair> publicHalf() const = 0;

    /// The signature of a digest, `hash` being the id of its function, 100 to 106: RSA's octets, or for a key on a curve the DER of
    /// an ECDSA signature (RFC 3279, 2.2.3).
    virtual element signHash(std::uint32_t hash, std::span<const std::uint8_t> digest, const SCryptoPadding& padding = {}) = 0;
    /// True when the signature is this key's over the digest.
    virtual bool verifyHash(std::uint32_t hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                            const SCryptoPadding& padding = {}) const = 0;

    /// RSA alone.
    virtual element encrypt(std::span<const std::uint8_t> text, const SCryptoPadding& padding = {}) const = 0;
    /// RSA alone. With PKCS#1 padding a wrong ciphertext gives a substitute, as CCryptoRSA::decryptPKCS1 says.
    virtual bool decrypt(std::span<const std::uint8_t> ciphertext, element& text, const SCryptoPadding& padding = {}) = 0;
    /// The same for a key that was enciphered with PKCS#1 padding and whose length is known: always gives `length` bytes.
    virtual bool unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text) = 0;

    /// The secret shared with the owner of `peer`, a key on the same curve: ECDH, X25519 or X448. Secret, and not evenly
    /// distributed: a key is derived from it.
    virtual element agree(const ICryptoKeyPair& peer) = 0;

protected:
    ICryptoKeyPair() = default;
    ICryptoKeyPair(const ICryptoKeyPair&) = default;
    ICryptoKeyPair& operator=(const ICryptoKeyPair&) = default;
};
