#pragma once

#include "crypto/bigint/big_integer.h"
#include "crypto/bigint/limbs.h"
#include "crypto/bigint/montgomery.h"
#include "crypto/random/random.h"

#include <cstdint>

namespace ccrypto {

/// Whether a number from an untrusted source is prime: division by small primes, then 64 rounds of the test of Miller and Rabin
/// with random bases. A composite number chosen to pass does so with a chance of 2^-128. Not for secrets. \return false, also,
/// without random bytes, and for numbers of more than 16384 bits.
[[nodiscard]] bool IsProbablePrime(const CCryptoBigInteger& number, ICryptoRandom& random = ICryptoRandom::Instance());

/// The parts of it for a secret candidate. Their time may reveal a rejected candidate, which is harmless; of an accepted
/// one it reveals how many zeros its predecessor ends with, about two bits.
namespace primality {

/// True when one of the odd primes below 8192 divides the number. Takes time that depends on the count of limbs.
[[nodiscard]] constant_time::Mask HasSmallDivisor(const limbs::Limb* number, std::size_t count);

enum class Verdict { prime, composite, noRandomBytes };

/// FIPS 186-5, B.3.1, for an odd number above 3.
[[nodiscard]] Verdict MillerRabin(const MontgomeryModulus& number, std::uint32_t rounds, ICryptoRandom& random);

/// Rounds that leave a random candidate of so many bits a chance below 2^-112 to be composite (FIPS 186-5, table B.1, and more for
/// primes shorter than any there).
[[nodiscard]] std::uint32_t RoundsFor(std::size_t bits);

} // namespace primality

} // namespace ccrypto
