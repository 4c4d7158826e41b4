#pragma once

#include "crypto/cipher/aes_variants.h"

namespace ccrypto::gcm {

/// What GHASH works with. `powers` is in a form that only the variant that made it understands.
struct HashKey {
    alignas(32) std::uint8_t powers[16 * 32];
};

/// The calls of one variant. The hash is 16 bytes as SP 800-38D writes them. The counter is the last four bytes of the counter
/// block, big-endian, and wraps there; it is left one past the last that was used. `out` and `in` are the same bytes or do not
/// overlap.
struct Calls {
    const aes::Calls* cipher;
    /// From the hash subkey, 16 bytes.
    void (*expandHashKey)(HashKey& key, const std::uint8_t* subkey);
    /// Takes whole blocks into the hash.
    void (*hash)(const HashKey& key, std::uint8_t* hash, const std::uint8_t* in, std::size_t blocks);
    /// Encrypts or decrypts whole blocks, and takes the cipher text into the hash.
    void (*encrypt)(const aes::Key& cipherKey, const HashKey& key, std::uint8_t* hash, std::uint8_t* counter, std::uint8_t* out,
                    const std::uint8_t* in, std::size_t blocks);
    void (*decrypt)(const aes::Key& cipherKey, const HashKey& key, std::uint8_t* hash, std::uint8_t* counter, std::uint8_t* out,
                    const std::uint8_t* in, std::size_t blocks);
};

/// "portable", "pclmul", "vaes".
std::span<const Variant<Calls>> Variants();

extern const Calls portableCalls;
extern const Calls pclmulCalls;
/// Understands the hash keys of pclmulCalls.
extern const Calls vaesCalls;

} // namespace ccrypto::gcm
