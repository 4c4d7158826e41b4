#pragma once

#include "crypto/bigint/adx_rows.h"
#include "crypto/ec/field25519.h"

#include <cstring>

namespace ccrypto::internal {

/// t0 to t3 plus 38 times the limb t4 above them, which 2^256 = 38 stands for; t4 is small, so the sum passes 2^256 by little, if
/// it does.
#define FIELD25519_FOLD_LIMB                                                                                                       \
    "imulq $38, %[t4], %[t4]\n\t"                                                                                                  \
    "addq %[t4], %[t0]\n\t"                                                                                                        \
    "adcq $0, %[t1]\n\t"                                                                                                           \
    "adcq $0, %[t2]\n\t"                                                                                                           \
    "adcq $0, %[t3]\n\t"                                                                                                           \
    "sbbq %[t4], %[t4]\n\t"                                                                                                        \
    "andl $38, %k[t4]\n\t"                                                                                                         \
    "addq %[t4], %[t0]\n\t"

/// t0 to t3 += factor * (t4 to t7), that is 38.
#define FIELD25519_FOLD                                                                                                            \
    "movl $38, %%edx\n\t"                                                                                                          \
    "xorl %k[lo], %k[lo]\n\t"                                                                                                      \
    "mulxq %[t4], %[lo], %[hi]\n\t"                                                                                                \
    "adcxq %[lo], %[t0]\n\t"                                                                                                       \
    "adoxq %[hi], %[t1]\n\t"                                                                                                       \
    "mulxq %[t5], %[lo], %[hi]\n\t"                                                                                                \
    "adcxq %[lo], %[t1]\n\t"                                                                                                       \
    "adoxq %[hi], %[t2]\n\t"                                                                                                       \
    "mulxq %[t6], %[lo], %[hi]\n\t"                                                                                                \
    "adcxq %[lo], %[t2]\n\t"                                                                                                       \
    "adoxq %[hi], %[t3]\n\t"                                                                                                       \
    "mulxq %[t7], %[lo], %[t4]\n\t"                                                                                                \
    "adcxq %[lo], %[t3]\n\t"                                                                                                       \
    "movl $0, %k[lo]\n\t"                                                                                                          \
    "adoxq %[lo], %[t4]\n\t"                                                                                                       \
    "adcxq %[lo], %[t4]\n\t" FIELD25519_FOLD_LIMB

/// Numbers modulo 2^255 - 19 in four limbs: any below 2^256. The pieces of assembly read their operands through pointers; that the
/// memory itself is an operand, too, keeps the compiler from taking two of them with the same pointers for the same.
struct Field25519Adx {
    using Element = ccrypto::Limbs<4>;
    static constexpr const ccrypto::Modulus<4>& prime = Field25519::prime;
    static constexpr std::size_t bits = Field25519::bits;
    static constexpr std::size_t bytes = Field25519::bytes;
    static constexpr std::uint64_t a24 = Field25519::a24;

    [[gnu::always_inline]] static Element multiply(const Element& x, const Element& y)
    {
        Element r;
        std::uint64_t t4, t5, t6, t7, lo, hi;
        asm(ADX_FIRST_ROW_4(t0, t1, t2, t3, t4) ADX_ROW_4(8, t1, t2, t3, t4, t5) ADX_ROW_4(16, t2, t3, t4, t5, t6)
                ADX_ROW_4(24, t3, t4, t5, t6, t7) FIELD25519_FOLD
            : [t0] "=&r"(r[0]), [t1] "=&r"(r[1]), [t2] "=&r"(r[2]), [t3] "=&r"(r[3]), [t4] "=&r"(t4), [t5] "=&r"(t5),
              [t6] "=&r"(t6), [t7] "=&r"(t7), [lo] "=&r"(lo), [hi] "=&r"(hi)
            : [a] "r"(x.data()), [b] "r"(y.data()), "m"(x), "m"(y)
            : "rdx", "cc");
        return r;
    }

    [[gnu::always_inline]] static Element square(const Element& x)
    {
        Element r;
        std::uint64_t t4, t5, t6, t7, lo, hi;
        asm(ADX_SQUARE_4 FIELD25519_FOLD
            : [t0] "=&r"(r[0]), [t1] "=&r"(r[1]), [t2] "=&r"(r[2]), [t3] "=&r"(r[3]), [t4] "=&r"(t4), [t5] "=&r"(t5),
              [t6] "=&r"(t6), [t7] "=&r"(t7), [lo] "=&r"(lo), [hi] "=&r"(hi)
            : [a] "r"(x.data()), "m"(x)
            : "rdx", "cc");
        return r;
    }

    [[gnu::always_inline]] static Element multiplyAdd(const Element& x, std::uint64_t factor, const Element& y)
    {
        Element r;
        std::uint64_t t4, lo;
        asm("mulxq 0(%[a]), %[t0], %[t1]\n\t"
            "mulxq 8(%[a]), %[lo], %[t2]\n\t"
            "addq %[lo], %[t1]\n\t"
            "mulxq 16(%[a]), %[lo], %[t3]\n\t"
            "adcq %[lo], %[t2]\n\t"
            "mulxq 24(%[a]), %[lo], %[t4]\n\t"
            "adcq %[lo], %[t3]\n\t"
            "adcq $0, %[t4]\n\t"
            "addq 0(%[b]), %[t0]\n\t"
            "adcq 8(%[b]), %[t1]\n\t"
            "adcq 16(%[b]), %[t2]\n\t"
            "adcq 24(%[b]), %[t3]\n\t"
            "adcq $0, %[t4]\n\t" FIELD25519_FOLD_LIMB
            : [t0] "=&r"(r[0]), [t1] "=&r"(r[1]), [t2] "=&r"(r[2]), [t3] "=&r"(r[3]), [t4] "=&r"(t4), [lo] "=&r"(lo)
            : [a] "r"(x.data()), [b] "r"(y.data()), "m"(x), "m"(y), "d"(factor)
            : "cc");
        return r;
    }

    [[gnu::always_inline]] static Element add(const Element& x, const Element& y)
    {
        Element r;
        std::uint64_t over;
        asm("movq 0(%[a]), %[t0]\n\t"
            "movq 8(%[a]), %[t1]\n\t"
            "movq 16(%[a]), %[t2]\n\t"
            "movq 24(%[a]), %[t3]\n\t"
            "addq 0(%[b]), %[t0]\n\t"
            "adcq 8(%[b]), %[t1]\n\t"
            "adcq 16(%[b]), %[t2]\n\t"
            "adcq 24(%[b]), %[t3]\n\t"
            "sbbq %[over], %[over]\n\t"
            "andl $38, %k[over]\n\t"
            "addq %[over], %[t0]\n\t"
            "adcq $0, %[t1]\n\t"
            "adcq $0, %[t2]\n\t"
            "adcq $0, %[t3]\n\t"
            "sbbq %[over], %[over]\n\t"
            "andl $38, %k[over]\n\t"
            "addq %[over], %[t0]\n\t"
            : [t0] "=&r"(r[0]), [t1] "=&r"(r[1]), [t2] "=&r"(r[2]), [t3] "=&r"(r[3]), [over] "=&r"(over)
            : [a] "r"(x.data()), [b] "r"(y.data()), "m"(x), "m"(y)
            : "cc");
        return r;
    }

    [[gnu::always_inline]] static Element subtract(const Element& x, const Element& y)
    {
        Element r;
        std::uint64_t under;
        asm("movq 0(%[a]), %[t0]\n\t"
            "movq 8(%[a]), %[t1]\n\t"
            "movq 16(%[a]), %[t2]\n\t"
            "movq 24(%[a]), %[t3]\n\t"
            "subq 0(%[b]), %[t0]\n\t"
            "sbbq 8(%[b]), %[t1]\n\t"
            "sbbq 16(%[b]), %[t2]\n\t"
            "sbbq 24(%[b]), %[t3]\n\t"
            "sbbq %[under], %[under]\n\t"
            "andl $38, %k[under]\n\t"
            "subq %[under], %[t0]\n\t"
            "sbbq $0, %[t1]\n\t"
            "sbbq $0, %[t2]\n\t"
            "sbbq $0, %[t3]\n\t"
            "sbbq %[under], %[under]\n\t"
            "andl $38, %k[under]\n\t"
            "subq %[under], %[t0]\n\t"
            : [t0] "=&r"(r[0]), [t1] "=&r"(r[1]), [t2] "=&r"(r[2]), [t3] "=&r"(r[3]), [under] "=&r"(under)
            : [a] "r"(x.data()), [b] "r"(y.data()), "m"(x), "m"(y)
            : "cc");
        return r;
    }

    static Element load(const std::uint8_t* from)
    {
        Element f;
        std::memcpy(f.data(), from, bytes);
        return f;
    }
    static Element canonical(const Element& f)
    {
        // Below 2^256, that is 2p + 38.
        return ccrypto::fixed_limbs::ReduceOnce(ccrypto::fixed_limbs::ReduceOnce(f, 0, prime.value), 0, prime.value);
    }
    static void store(std::uint8_t* to, const Element& f) { std::memcpy(to, canonical(f).data(), bytes); }
    static Element invert(const Element& f) { return ccrypto::ModularInverse<4>(canonical(f), prime.value, prime.negative); }
};

} // namespace ccrypto::internal
