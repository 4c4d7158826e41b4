#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"
#include "crypto/rsa/rsa.h"

#include <cstdint>
#include <span>

class ICryptoKeyPair;

/// How an RSA key pads what it signs or encrypts (RFC 8017). Keys on curves ignore it.
struct SCryptoPadding {
    enum class Scheme {
        pkcs1, ///< RSASSA-PKCS1-v1_5 and RSAES-PKCS1-v1_5
        masked ///< RSASSA-PSS and RSAES-OAEP, with `masking`
    };

    Scheme scheme = Scheme::pkcs1;
    CCryptoRSAPadding masking = {};
};

// What keys can do. A key pair gives these by ICryptoKeyPair::signer(), decrypter() and agreement(). What needs the private half
// fails without it. It may have to ask a card, or the person in front of it, so it may take long and may fail for reasons that have
// nothing to do with its input. All failures are logged and give false or an empty element.

/// Signs and verifies.
class ICryptoSigner {
public:
    /// The length of every signature, in bytes; for ECDSA, whose length varies, the maximum.
    [[nodiscard]] virtual std::uint32_t signatureSize() const = 0;
    /// Whether the input of sign() and verify() is the whole message, instead of its digest.
    [[nodiscard]] virtual bool signsMessages() const = 0;

    /// \param hash the hash function of the digest `input`; none when signsMessages(). \return the octets of RSA, or
    /// for a key on a curve the DER of an ECDSA signature (RFC 3279, 2.2.3).
    [[nodiscard]] virtual element sign(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> input,
                                       const SCryptoPadding& padding = {}) = 0;
    /// True when the signature is this key's over the input. Needs only the public half.
    [[nodiscard]] virtual bool verify(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> input,
                                      std::span<const std::uint8_t> signature, const SCryptoPadding& padding = {}) const = 0;

protected:
    ~ICryptoSigner() = default;
};

/// Encrypts short texts, usually keys of other algorithms, and decrypts them: RSA.
class ICryptoDecrypter {
public:
    /// Needs only the public half.
    [[nodiscard]] virtual element encrypt(std::span<const std::uint8_t> text, const SCryptoPadding& padding = {}) const = 0;
    /// With PKCS#1 padding a wrong ciphertext gives a substitute, as CCryptoRSA::decryptPKCS1 says.
    [[nodiscard]] virtual bool decrypt(std::span<const std::uint8_t> ciphertext, element& text,
                                       const SCryptoPadding& padding = {}) = 0;
    /// The same for a key that was encrypted with PKCS#1 padding and whose length is known: always gives `length` bytes.
    [[nodiscard]] virtual bool unwrap(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& text) = 0;

protected:
    ~ICryptoDecrypter() = default;
};

/// Agrees on secrets: ECDH, X25519 and X448.
class ICryptoKeyAgreement {
public:
    /// The secret shared with the owner of `peer`, a key on the same curve. Secret, and not evenly distributed: derive a key from
    /// it.
    [[nodiscard]] virtual element agree(const ICryptoKeyPair& peer) = 0;

protected:
    ~ICryptoKeyAgreement() = default;
};
