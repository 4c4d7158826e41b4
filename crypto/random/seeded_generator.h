#pragma once

#include "crypto/random/hmac_drbg.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace ccrypto {

/// The continuous test of a source of entropy (NIST SP 800-90B, 4.4.1, the repetition count): a source that gives the same block of
/// 8 bytes twice in a row has failed permanently. Good random bytes do that once in 2^64 blocks.
class SeedHealth {
public:
    static constexpr std::size_t blockBytes = 8;

    ~SeedHealth();

    /// Looks at whole blocks, one after the other, from one call to the next. \return false once the source has failed.
    [[nodiscard]] bool check(std::span<const std::uint8_t> seed);

private:
    std::uint8_t last_[blockBytes] = {};
    bool any_ = false;
    bool failed_ = false;
};

/// The known answer of the generator, computed once in a process. \return whether it was right.
[[nodiscard]] bool GeneratorGivesKnownAnswer();

} // namespace ccrypto

namespace ccrypto::internal {

/// HMAC_DRBG with prediction resistance (NIST SP 800-90A, 9.3): every request first takes 32 bytes from the source. So the copies
/// of one generator, in a virtual machine that was cloned or restored as well as in a forked child, give different bytes from their
/// next request on. Not for use by two threads at once.
class SeededGenerator final : public ICryptoRandom {
public:
    /// Fills the bytes with entropy. \return false when it cannot.
    using Source = std::function<bool(std::span<std::uint8_t>)>;

    explicit SeededGenerator(Source source) : source_(std::move(source)) {}

    /// \return false, logged, with the bytes wiped, when the source gives nothing or repeats itself.
    [[nodiscard]] bool generate(std::span<std::uint8_t> bytes) override;

private:
    [[nodiscard]] bool takeSeed();

    Source source_;
    CCryptoHMACDRBG generator_;
    ccrypto::SeedHealth health_;
    std::uint64_t fork_ = 0;
};

} // namespace ccrypto::internal
