#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"
#include "crypto/random/random.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

/// The numbers of an RSA key, with the names of RFC 8017, A.1.2: big-endian, without leading zero bytes. A public key has only the
/// first two.
struct CCryptoRSANumbers {
    element modulus;         ///< n
    element publicExponent;  ///< e
    element privateExponent; ///< d
    element prime1;          ///< p
    element prime2;          ///< q
    element exponent1;       ///< d mod (p - 1)
    element exponent2;       ///< d mod (q - 1)
    element coefficient;     ///< q^-1 mod p
};

/// The parameters of the two paddings that mask with a hash, OAEP and PSS (RFC 8017, 7.1 and 8.1). Hashes are MD5, SHA-1, SHA-2 and
/// SHA-3.
struct CCryptoRSAPadding {
    static constexpr std::int32_t saltAsLongAsDigest = -1;
    static constexpr std::int32_t saltOfAnyLength = -2; ///< only when verifying

    ccrypto::algorithm::Id hash = ccrypto::algorithm::sha256;
    ccrypto::algorithm::Id maskHash = ccrypto::algorithm::none; ///< of MGF1; none for the same as `hash`
    std::int32_t saltLength = saltAsLongAsDigest;               ///< PSS; bytes
    std::int32_t minSaltLength = 0;                             ///< PSS, verifying a salt of any length; bytes
    std::span<const std::uint8_t> label = {};                   ///< OAEP; not owned: it must outlive the call
};

/// An RSA key, public or private (RFC 8017, FIPS 186-5), of 1024 to 8192 bits, its public exponent odd, from 3 to 2^64 - 1.
///
/// Every object passed the checks of FromPublic() or FromPrivate(), which do not include that p and q are primes. A private key
/// whose "primes" are composite computes wrong results, which the check below keeps back. Keys do not change; any thread may use
/// one at any time.
///
/// Operations with the private key take time that depends on the lengths of the numbers and on public values only; they are blinded
/// (base and exponents), use the two primes, and their result is checked with the public exponent before it leaves. Public
/// operations (verify, encrypt) make no secret of their input.
///
/// A failed operation gives false or an empty element, logged.
class CCryptoRSA {
public:
    static constexpr std::uint32_t minBits = 1024;
    static constexpr std::uint32_t maxBits = 8192;

    /// \return null, logged, when these are not the numbers of a public key: modulus even, too short or too long, exponent even, 1
    /// or above 2^64 - 1. Leading zero bytes are ignored.
    [[nodiscard]] static std::unique_ptr<CCryptoRSA> FromPublic(const element& modulus, const element& publicExponent);
    /// All numbers must belong together: p q = n, d e = 1 modulo p - 1 and q - 1, and so on; `exponent1`, `exponent2` and
    /// `coefficient` may be empty and are then computed. That p and q are primes is not tested. \return null, logged, otherwise.
    [[nodiscard]] static std::unique_ptr<CCryptoRSA> FromPrivate(const CCryptoRSANumbers& numbers);

    /// Called now and then with the count of candidates for primes looked at so far, from the thread that generates. False ends the
    /// generation.
    using Progress = std::function<bool(std::uint32_t candidates)>;
    /// A new private key. `bits` is even, 1024 to 8192; `publicExponent` is odd, above 2^16 and below 2^32 (FIPS 186-5, A.1.1 asks
    /// for no less). The primes are found as A.1.3 describes. \return null, logged, when the parameters are not allowed, there are
    /// no random bytes or `progress` ended it.
    [[nodiscard]] static std::unique_ptr<CCryptoRSA> Generate(std::uint32_t bits, std::uint32_t publicExponent = 65537,
                                                              const Progress& progress = {},
                                                              ICryptoRandom& random = ICryptoRandom::Instance());

    ~CCryptoRSA();
    CCryptoRSA(const CCryptoRSA&) = delete;
    CCryptoRSA& operator=(const CCryptoRSA&) = delete;

    /// Of the modulus: minBits to maxBits.
    [[nodiscard]] std::uint32_t bits() const;
    /// Of the modulus, and so of every signature and ciphertext.
    [[nodiscard]] std::uint32_t bytes() const { return (bits() + 7) / 8; }
    [[nodiscard]] bool isPrivate() const;
    [[nodiscard]] const element& modulus() const;
    [[nodiscard]] const element& publicExponent() const;
    /// Secret, when the key is private; without the private numbers when it is public.
    [[nodiscard]] CCryptoRSANumbers numbers() const;
    /// A key of the two public numbers. Owned by the caller.
    [[nodiscard]] std::unique_ptr<CCryptoRSA> publicKey() const;

    /// input^e mod n and input^d mod n (RFC 8017, 5.1), without padding. `input` is big-endian and at most bytes() long; the result
    /// is bytes() long. \return empty, logged, when the input is not below the modulus, and of privateOperation() for a public key,
    /// without random bytes and when the result is wrong.
    [[nodiscard]] element publicOperation(std::span<const std::uint8_t> input) const;
    [[nodiscard]] element privateOperation(std::span<const std::uint8_t> input) const;

    /// RSASSA-PKCS1-v1_5 (RFC 8017, 8.2). `hash` is the function `digest` comes from: its prefix is put before the digest, except
    /// for md5Sha1, which has none. \return the signature; empty, logged, for another hash, a digest of another length, a key that
    /// is too short for both, and as privateOperation().
    [[nodiscard]] element signPKCS1(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest) const;
    /// True when `signature` is the one that signPKCS1 would make: what the signature encodes is compared, never parsed.
    [[nodiscard]] bool verifyPKCS1(ccrypto::algorithm::Id hash, std::span<const std::uint8_t> digest,
                                   std::span<const std::uint8_t> signature) const;
    /// The same over a DigestInfo that is ready, whatever it contains: at most bytes() - 11 bytes.
    [[nodiscard]] element signDigestInfo(std::span<const std::uint8_t> digestInfo) const;
    [[nodiscard]] bool verifyDigestInfo(std::span<const std::uint8_t> digestInfo, std::span<const std::uint8_t> signature) const;

    /// RSASSA-PSS (RFC 8017, 8.1). \return empty or false, logged, for hashes other than those above, a digest of another length,
    /// and a salt that the key has no space for.
    [[nodiscard]] element signPSS(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> digest,
                                  ICryptoRandom& random = ICryptoRandom::Instance()) const;
    [[nodiscard]] bool verifyPSS(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> digest,
                                 std::span<const std::uint8_t> signature) const;

    /// RSAES-PKCS1-v1_5 (RFC 8017, 7.2); at most bytes() - 11 bytes.
    [[nodiscard]] element encryptPKCS1(std::span<const std::uint8_t> message,
                                       ICryptoRandom& random = ICryptoRandom::Instance()) const;
    /// The message; for a ciphertext with a wrong padding, a message that the key and the ciphertext determine and that is random
    /// to anybody without the key, in the same time (implicit rejection). So the answer does not say whether the padding was right.
    /// `message` may be empty after success. \return false, logged, when the ciphertext is not bytes() long or not below the
    /// modulus, which are public, and as privateOperation().
    [[nodiscard]] bool decryptPKCS1(std::span<const std::uint8_t> ciphertext, element& message) const;
    /// For a wrapped key whose length is known: always gives `length` bytes, of the message when the padding is right and the
    /// message is that long, else those of a substitute, in the same time. \return false as decryptPKCS1, and for a length that no
    /// message can have.
    [[nodiscard]] bool unwrapPKCS1(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& message) const;

    /// RSAES-OAEP (RFC 8017, 7.1); at most bytes() - 2 - 2 * digest size bytes.
    [[nodiscard]] element encryptOAEP(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> message,
                                      ICryptoRandom& random = ICryptoRandom::Instance()) const;
    /// \return false, `message` empty, for a ciphertext that does not decode; neither time nor log says why.
    [[nodiscard]] bool decryptOAEP(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> ciphertext,
                                   element& message) const;

private:
    struct Key;

    explicit CCryptoRSA(std::unique_ptr<Key> key);

    std::unique_ptr<Key> key_;
};
