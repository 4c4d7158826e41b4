#pragma once

#include <cstdint>

/// What key derivation repeats thousands of times, on the words of the hash functions themselves. The ids are those of hash
/// functions (100 to 105); any other one is not known, changes nothing and gives false.
namespace ccrypto::digest_chain {

bool Knows(std::uint32_t hashId);

/// Replaces `digest` by its digest, and this by its own, `times` times.
bool Rehash(std::uint32_t hashId, std::uint8_t* digest, std::uint32_t times);

/// A step of PBKDF2's chain: `digest` is replaced by its HMAC under the key, and that by its own, `times` times, and each of them
/// is xor-ed to `sum`, a digest long, too. \param key at most a block of the hash.
bool SumOfMACs(std::uint32_t hashId, const std::uint8_t* key, std::uint32_t keyLength, const std::uint8_t* digest,
               std::uint8_t* sum, std::uint32_t times);

} // namespace ccrypto::digest_chain
