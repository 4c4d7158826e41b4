#pragma once

#include "crypto/random/random.h"

#include <algorithm>
#include <cstdint>
#include <random>

namespace ccrypto {

/// Bytes that look random and are the same in every run.
class SequenceRandom final : public ICryptoRandom {
public:
    explicit SequenceRandom(std::uint64_t seed) : engine_(seed) {}

    bool generate(std::span<std::uint8_t> bytes) override
    {
        std::ranges::generate(bytes, [this] { return static_cast<std::uint8_t>(engine_() >> 24); });
        return true;
    }

private:
    std::mt19937_64 engine_;
};

/// One and the same byte on and on.
class ConstantRandom final : public ICryptoRandom {
public:
    explicit ConstantRandom(std::uint8_t byte) : byte_(byte) {}

    bool generate(std::span<std::uint8_t> bytes) override
    {
        std::ranges::fill(bytes, byte_);
        return true;
    }

private:
    std::uint8_t byte_;
};

/// A source that has run dry.
class NoRandom final : public ICryptoRandom {
public:
    bool generate(std::span<std::uint8_t> bytes) override
    {
        std::ranges::fill(bytes, std::uint8_t{0});
        return false;
    }
};

} // namespace ccrypto
