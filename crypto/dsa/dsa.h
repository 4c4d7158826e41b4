#pragma once

#include "core/text/element.h"
#include "crypto/bigint/big_integer.h"
#include "crypto/ec/ecdsa_signature.h"

#include <cstdint>
#include <memory>
#include <span>

/// The numbers of a DSA public key (FIPS 186-4, 4.1; RFC 3279, 2.3.2), big-endian.
struct CCryptoDSANumbers {
    element prime;       ///< p
    element order;       ///< q
    element generator;   ///< g
    element publicValue; ///< y
};

/// A DSA public key (FIPS 186-4, 4), to verify existing signatures; this library does not sign with DSA. p has 1024 to 3072 bits, q
/// 160, 224 or 256. All values are public: the time depends on them. Keys do not change; any thread may use one at any time.
class CCryptoDSA {
public:
    static constexpr std::uint32_t minBits = 1024;
    static constexpr std::uint32_t maxBits = 3072;

    /// Leading zero bytes are ignored. It is checked that p and q are odd and of an allowed length, that q divides p - 1, and that
    /// g and y are powers of order q: 1 < g < p, g^q = 1 modulo p, and the same of y. That p and q are primes is not checked.
    /// \return null, logged, otherwise.
    [[nodiscard]] static std::unique_ptr<CCryptoDSA> FromPublic(const CCryptoDSANumbers& numbers);

    /// Of p: minBits to maxBits.
    [[nodiscard]] std::uint32_t bits() const { return p_.bits(); }
    /// The length of q, and so of each of the two numbers of a signature: 20, 28 or 32 bytes.
    [[nodiscard]] std::uint32_t orderBytes() const { return q_.bits() / 8; }
    [[nodiscard]] CCryptoDSANumbers numbers() const;

    /// \param digest 1 to 64 bytes, of which the first orderBytes() count. \return false, logged, for a signature that is malformed
    /// or not the key's.
    [[nodiscard]] bool verifyHash(std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                                  ccrypto::SignatureForm form) const;

private:
    CCryptoDSA() = default;

    const char* wrongNumbers() const;
    bool isOfOrder(const CCryptoBigInteger& number) const;

    CCryptoBigInteger p_;
    CCryptoBigInteger q_;
    CCryptoBigInteger g_;
    CCryptoBigInteger y_;
};
