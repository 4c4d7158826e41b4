#pragma once

#include "crypto/random/random.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <span>
#include <utility>
#include <vector>

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

/// "Random" bytes from a vector, each once; after that it fails.
class ToldBytes final : public ICryptoRandom {
public:
    explicit ToldBytes(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

    bool generate(std::span<std::uint8_t> bytes) override
    {
        if (bytes.size() > bytes_.size() - used_)
            return false;
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(used_), bytes.size(), bytes.begin());
        used_ += bytes.size();
        return true;
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t used_ = 0;
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
