#pragma once

#include "crypto/base/cpu_features.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto::des {

constexpr std::size_t rounds = 16;
constexpr std::size_t maxPasses = 3;

/// Round keys in the order in which they are used, eight groups of six bits, one to a byte, that of the first S-box in the highest.
struct Schedule {
    std::uint64_t keys[maxPasses * rounds];
    /// What the rounds of a single block add, so that no key is added on the chain from one round to the next: the sum of the keys
    /// of the round before and the round after.
    std::uint64_t between[maxPasses * rounds];
    /// The same between two passes, after the last pass for a next block.
    std::uint64_t turn[maxPasses];
    std::size_t passes; ///< 1 or 3
};

/// Many blocks at once as bit planes, without tables.
struct Calls {
    std::size_t parallel; ///< so many blocks
    void (*transform)(const Schedule& schedule, std::uint8_t* out, const std::uint8_t* in);
};

/// "portable" (64 blocks), "avx2" (256).
std::span<const Variant<Calls>> Variants();

extern const Calls portableCalls;
extern const Calls avx2Calls;

} // namespace ccrypto::des
