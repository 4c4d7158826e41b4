#pragma once

#include "crypto/base/cpu_features.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto::aes {

constexpr std::size_t blockSize = 16;
/// Round keys of AES-256, the first included.
constexpr std::size_t maxRoundKeys = 15;

/// An expanded key, in a form that only the variant that made it understands.
struct Key {
    alignas(16) std::uint8_t schedule[maxRoundKeys * 64];
    std::uint32_t rounds; ///< 10, 12 or 14
};

/// The calls of one variant; shapes as in ICryptoBlockCipher. A null one has no better way than the general one over blocks.
struct Calls {
    /// `length` is 16, 24 or 32.
    void (*expandKey)(Key& key, const std::uint8_t* bytes, std::size_t length);
    void (*encrypt)(const Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks);
    void (*decrypt)(const Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks);
    void (*encryptCbc)(const Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain);
    void (*decryptCbc)(const Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain);
    void (*applyCounter)(const Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* counter);
};

/// "portable", "aesni", "vaes".
std::span<const Variant<Calls>> Variants();

extern const Calls bitslicedCalls;
extern const Calls aesniCalls;
/// Understands the keys of aesniCalls.
extern const Calls vaesCalls;

} // namespace ccrypto::aes
