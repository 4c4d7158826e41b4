#pragma once

#include "crypto/ec/montgomery_field.h"

#include <array>
#include <cstring>

namespace ccrypto::internal {

/// Numbers modulo 2^448 - 2^224 - 1 in eight limbs of 56 bits and a little (below 2^57).
struct Field448 {
    using Element = ccrypto::Limbs<8>;
    using Half = std::array<ccrypto::Word128, 7>;
    static constexpr ccrypto::Modulus<7> prime{
        ccrypto::fixed_limbs::FromHex<7>("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFE"
                                         "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF")};
    static constexpr std::size_t bits = 448;
    static constexpr std::size_t bytes = 56;
    static constexpr std::uint64_t a24 = 39081;
    static constexpr std::uint64_t low56 = (std::uint64_t{1} << 56) - 1;

    template <typename Word>
    static Element carried(std::array<Word, 8>& c)
    {
        Element r;
        for (std::size_t i = 0; i < 7; ++i) {
            c[i + 1] += c[i] >> 56;
            r[i] = static_cast<std::uint64_t>(c[i]) & low56;
        }
        r[7] = static_cast<std::uint64_t>(c[7]) & low56;
        // 2^448 is 2^224 + 1.
        const Word over = c[7] >> 56;
        const Word first = over + r[0];
        const Word middle = over + r[4];
        r[0] = static_cast<std::uint64_t>(first) & low56;
        r[1] += static_cast<std::uint64_t>(first >> 56);
        r[4] = static_cast<std::uint64_t>(middle) & low56;
        r[5] += static_cast<std::uint64_t>(middle >> 56);
        return r;
    }
    [[gnu::always_inline]] static Half product(const std::uint64_t* f, const std::uint64_t* g)
    {
        Half c{};
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = 0; j < 4; ++j)
                c[i + j] += ccrypto::Word128{f[i]} * g[j];
        return c;
    }
    /// With f = f0 + 2^224 f1 and 2^448 = 2^224 + 1, f * g is f0 g0 + f1 g1 + 2^224 ((f0 + f1) (g0 + g1) - f0 g0).
    static Element multiply(const Element& f, const Element& g)
    {
        std::array<std::uint64_t, 4> fSum;
        std::array<std::uint64_t, 4> gSum;
        for (std::size_t i = 0; i < 4; ++i) {
            fSum[i] = f[i] + f[i + 4];
            gSum[i] = g[i] + g[i + 4];
        }
        const Half low = product(f.data(), g.data());
        const Half high = product(f.data() + 4, g.data() + 4);
        const Half both = product(fSum.data(), gSum.data());
        std::array<ccrypto::Word128, 8> c{};
        for (std::size_t i = 0; i < 7; ++i)
            c[i] = low[i] + high[i];
        for (std::size_t i = 0; i < 4; ++i)
            c[i + 4] += both[i] - low[i];
        for (std::size_t i = 4; i < 7; ++i) {
            c[i - 4] += both[i] - low[i];
            c[i] += both[i] - low[i];
        }
        return carried(c);
    }
    static Element square(const Element& f) { return multiply(f, f); }
    static Element multiplyAdd(const Element& f, std::uint64_t factor, const Element& g)
    {
        std::array<ccrypto::Word128, 8> c;
        for (std::size_t i = 0; i < 8; ++i)
            c[i] = ccrypto::Word128{f[i]} * factor + g[i];
        return carried(c);
    }
    static Element add(const Element& f, const Element& g)
    {
        std::array<std::uint64_t, 8> r;
        for (std::size_t i = 0; i < 8; ++i)
            r[i] = f[i] + g[i];
        return carried(r);
    }
    static Element subtract(const Element& f, const Element& g)
    {
        // Four times the prime, to stay positive.
        std::array<std::uint64_t, 8> r;
        for (std::size_t i = 0; i < 8; ++i)
            r[i] = f[i] + (i == 4 ? 4 * (low56 - 1) : 4 * low56) - g[i];
        return carried(r);
    }
    static Element load(const std::uint8_t* from)
    {
        Element f{};
        for (std::size_t i = 0; i < 8; ++i)
            std::memcpy(&f[i], from + 7 * i, 7);
        return f;
    }
    static ccrypto::Limbs<7> canonical(const Element& f)
    {
        std::array<std::uint64_t, 8> c = f;
        for (int round = 0; round < 2; ++round)
            c = carried(c);
        for (std::size_t i = 0; i < 7; ++i) {
            c[i + 1] += c[i] >> 56;
            c[i] &= low56;
        }
        // The last carry is 0: after two rounds only a number just above a power of two has one left on its way, and not so far.
        ccrypto::Limbs<7> number{};
        for (std::size_t i = 0; i < 8; ++i)
            std::memcpy(reinterpret_cast<std::uint8_t*>(number.data()) + 7 * i, &c[i], 7);
        return ccrypto::fixed_limbs::ReduceOnce(number, 0, prime.value);
    }
    static void store(std::uint8_t* to, const Element& f) { std::memcpy(to, canonical(f).data(), bytes); }
    static Element invert(const Element& f)
    {
        const ccrypto::Limbs<7> inverse = ccrypto::ModularInverse<7>(canonical(f), prime.value, prime.negative);
        return load(reinterpret_cast<const std::uint8_t*>(inverse.data()));
    }
};

} // namespace ccrypto::internal
