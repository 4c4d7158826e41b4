#pragma once

#include "crypto/ec/montgomery_field.h"

#include <array>
#include <cstring>

namespace ccrypto::internal {

/// Numbers modulo 2^255 - 19 in five limbs of 51 bits and a little: what products leave is below 2^52, sums and differences are
/// below 2^54.
struct Field25519 {
    using Element = ccrypto::Limbs<5>;
    static constexpr ccrypto::Modulus<4> prime{
        ccrypto::fixed_limbs::FromHex<4>("7FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFED")};
    static constexpr std::size_t bits = 255;
    static constexpr std::size_t bytes = 32;
    static constexpr std::uint64_t a24 = 121665;
    static constexpr std::uint64_t low51 = (std::uint64_t{1} << 51) - 1;

    static Element carried(std::array<ccrypto::Word128, 5>& c)
    {
        Element r;
        for (std::size_t i = 0; i < 4; ++i) {
            c[i + 1] += c[i] >> 51;
            r[i] = static_cast<std::uint64_t>(c[i]) & low51;
        }
        r[4] = static_cast<std::uint64_t>(c[4]) & low51;
        // 2^255 is 19.
        const ccrypto::Word128 first = (c[4] >> 51) * 19 + r[0];
        r[0] = static_cast<std::uint64_t>(first) & low51;
        r[1] += static_cast<std::uint64_t>(first >> 51);
        return r;
    }
    static Element multiply(const Element& f, const Element& g)
    {
        std::array<ccrypto::Word128, 5> c{};
        for (std::size_t i = 0; i < 5; ++i)
            for (std::size_t j = 0; j < 5; ++j)
                c[(i + j) % 5] += ccrypto::Word128{f[i]} * (i + j >= 5 ? g[j] * 19 : g[j]);
        return carried(c);
    }
    static Element square(const Element& f)
    {
        std::array<ccrypto::Word128, 5> c = {
            ccrypto::Word128{f[0]} * f[0] + ccrypto::Word128{f[1] * 38} * f[4] + ccrypto::Word128{f[2] * 38} * f[3],
            ccrypto::Word128{f[0] * 2} * f[1] + ccrypto::Word128{f[2] * 38} * f[4] + ccrypto::Word128{f[3] * 19} * f[3],
            ccrypto::Word128{f[0] * 2} * f[2] + ccrypto::Word128{f[1]} * f[1] + ccrypto::Word128{f[3] * 38} * f[4],
            ccrypto::Word128{f[0] * 2} * f[3] + ccrypto::Word128{f[1] * 2} * f[2] + ccrypto::Word128{f[4] * 19} * f[4],
            ccrypto::Word128{f[0] * 2} * f[4] + ccrypto::Word128{f[1] * 2} * f[3] + ccrypto::Word128{f[2]} * f[2],
        };
        return carried(c);
    }
    static Element multiplyAdd(const Element& f, std::uint64_t factor, const Element& g)
    {
        std::array<ccrypto::Word128, 5> c;
        for (std::size_t i = 0; i < 5; ++i)
            c[i] = ccrypto::Word128{f[i]} * factor + g[i];
        return carried(c);
    }
    static Element add(const Element& f, const Element& g)
    {
        Element r;
        for (std::size_t i = 0; i < 5; ++i)
            r[i] = f[i] + g[i];
        return r;
    }
    static Element subtract(const Element& f, const Element& g)
    {
        // Four times the prime, to stay positive.
        Element r;
        for (std::size_t i = 0; i < 5; ++i)
            r[i] = f[i] + (i == 0 ? 4 * (low51 - 18) : 4 * low51) - g[i];
        return r;
    }
    static Element load(const std::uint8_t* from)
    {
        const auto word = [from](std::size_t offset) {
            std::uint64_t value;
            std::memcpy(&value, from + offset, sizeof value);
            return value;
        };
        return {word(0) & low51, word(6) >> 3 & low51, word(12) >> 6 & low51, word(19) >> 1 & low51, word(24) >> 12 & low51};
    }
    /// Below 2^256.
    static ccrypto::Limbs<4> joined(const Element& f)
    {
        Element t = f;
        for (int round = 0; round < 2; ++round) {
            for (std::size_t i = 0; i < 4; ++i) {
                t[i + 1] += t[i] >> 51;
                t[i] &= low51;
            }
            if (round == 0) {
                t[0] += (t[4] >> 51) * 19;
                t[4] &= low51;
            }
        }
        return {t[0] | t[1] << 51, t[1] >> 13 | t[2] << 38, t[2] >> 26 | t[3] << 25, t[3] >> 39 | t[4] << 12};
    }
    static ccrypto::Limbs<4> canonical(const Element& f)
    {
        return ccrypto::fixed_limbs::ReduceOnce(ccrypto::fixed_limbs::ReduceOnce(joined(f), 0, prime.value), 0, prime.value);
    }
    static void store(std::uint8_t* to, const Element& f) { std::memcpy(to, canonical(f).data(), bytes); }
    static Element invert(const Element& f)
    {
        const ccrypto::Limbs<4> inverse = ccrypto::ModularInverse<4>(canonical(f), prime.value, prime.negative);
        return load(reinterpret_cast<const std::uint8_t*>(inverse.data()));
    }
};

} // namespace ccrypto::internal
