#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// The continuous test of a source of entropy (NIST SP 800-90B, 4.4.1, the repetition count): a source that gives the same block of
/// 8 bytes twice in a row has failed, for good. Good random bytes do that once in 2^64 blocks.
class SeedHealth {
public:
    static constexpr std::size_t blockBytes = 8;

    ~SeedHealth();

    /// Looks at whole blocks, one after the other, from one call to the next. \return false once the source has failed.
    bool check(std::span<const std::uint8_t> seed);

private:
    std::uint8_t last_[blockBytes] = {};
    bool any_ = false;
    bool failed_ = false;
};

/// The known answer of the generator, computed once in a process. \return whether it was right.
bool GeneratorGivesKnownAnswer();
