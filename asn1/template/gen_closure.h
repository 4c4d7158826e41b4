#pragma once

#include "core/text/element_type.h"

#include <cstdint>
#include <initializer_list>

/// The tokens at which a nested parse stops.
class CCryptoGENClosure {
public:
    constexpr CCryptoGENClosure(std::initializer_list<ccrypto::ElementType> types)
    {
        for (const ccrypto::ElementType type : types)
            bits_[wordOf(type)] |= bitOf(type);
    }

    constexpr bool contains(ccrypto::ElementType type) const
    {
        return static_cast<std::uint32_t>(type) < 128 && (bits_[wordOf(type)] & bitOf(type)) != 0;
    }

private:
    static constexpr std::size_t wordOf(ccrypto::ElementType type) { return static_cast<std::uint32_t>(type) / 64 % 2; }
    static constexpr std::uint64_t bitOf(ccrypto::ElementType type)
    {
        return std::uint64_t{1} << static_cast<std::uint32_t>(type) % 64;
    }

    std::uint64_t bits_[2] = {};
};
