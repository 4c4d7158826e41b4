#pragma once

#include "core/base/algorithm.h"

#include <cstdint>

/// The loops of key derivation on the words of the hash functions themselves. They are those of
/// MD5, SHA-1 and SHA-2; for any other id nothing changes and the result is false.
namespace ccrypto::digest_chain {

[[nodiscard]] bool Knows(algorithm::Id hashId);

/// Replaces `digest` by its digest, `times` times.
bool Rehash(algorithm::Id hashId, std::uint8_t* digest, std::uint32_t times);

/// The chain of PBKDF2 (RFC 8018, 5.2): takes the HMAC of `digest` under the key, then that of the result, `times` times, and xors
/// each of them to `sum`, which is as long as a digest. \param key at most a block of the hash.
bool SumOfMACs(algorithm::Id hashId, const std::uint8_t* key, std::uint32_t keyLength, const std::uint8_t* digest,
               std::uint8_t* sum, std::uint32_t times);

} // namespace ccrypto::digest_chain
