#include "crypto/bigint/adx_rows.h"
#include "crypto/ec/jacobian_points.h"
#include "crypto/ec/prime_curves.h"

namespace ccrypto {

namespace {

// p is 2^256 - 2^224 + 2^192 + 2^96 - 1, so -1 / p is 1 modulo 2^64: adding t0 * p to a number whose lowest limb is t0 makes that
// limb zero and adds t0 * 2^96 and t0 * 2^192 times p's highest limb. The register `top`, whose operand has done its work when it
// is needed, holds that limb.

#define LOAD_TOP(top) "movabsq $0xFFFFFFFF00000001, %[" #top "]\n\t"

/// t1 to t3 and the limb above += what t0 gives. The limb above is t0's own register, since t0 is done with.
#define REDUCE_LIMB(top, t0, t1, t2, t3)                                                                                           \
    "movq %[" #t0 "], %%rdx\n\t"                                                                                                   \
    "movq %[" #t0 "], %[lo]\n\t"                                                                                                   \
    "shlq $32, %[lo]\n\t"                                                                                                          \
    "shrq $32, %[" #t0 "]\n\t"                                                                                                     \
    "addq %[lo], %[" #t1 "]\n\t"                                                                                                   \
    "adcq %[" #t0 "], %[" #t2 "]\n\t"                                                                                              \
    "mulxq %[" #top "], %[lo], %[" #t0 "]\n\t"                                                                                     \
    "adcq %[lo], %[" #t3 "]\n\t"                                                                                                   \
    "adcq $0, %[" #t0 "]\n\t"

/// t4 to t7, with the limb `over` above them, less p if that is not negative.
#define SUBTRACT_PRIME(top, over)                                                                                                  \
    "movl $0xFFFFFFFF, %k[lo]\n\t"                                                                                                 \
    "movq %[t4], %[t0]\n\t"                                                                                                        \
    "movq %[t5], %[t1]\n\t"                                                                                                        \
    "movq %[t6], %[t2]\n\t"                                                                                                        \
    "movq %[t7], %[t3]\n\t"                                                                                                        \
    "subq $-1, %[t0]\n\t"                                                                                                          \
    "sbbq %[lo], %[t1]\n\t"                                                                                                        \
    "sbbq $0, %[t2]\n\t"                                                                                                           \
    "sbbq %[" #top "], %[t3]\n\t"                                                                                                  \
    "sbbq $0, %[" #over "]\n\t"                                                                                                    \
    "cmovncq %[t0], %[t4]\n\t"                                                                                                     \
    "cmovncq %[t1], %[t5]\n\t"                                                                                                     \
    "cmovncq %[t2], %[t6]\n\t"                                                                                                     \
    "cmovncq %[t3], %[t7]\n\t"

/// t0 to t7 / R, below p, in t4 to t7.
#define REDUCE(top)                                                                                                                \
    LOAD_TOP(top)                                                                                                                  \
    REDUCE_LIMB(top, t0, t1, t2, t3)                                                                                               \
    REDUCE_LIMB(top, t1, t2, t3, t0)                                                                                               \
    REDUCE_LIMB(top, t2, t3, t0, t1)                                                                                               \
    REDUCE_LIMB(top, t3, t0, t1, t2)                                                                                               \
    "xorl %k[hi], %k[hi]\n\t"                                                                                                      \
    "addq %[t0], %[t4]\n\t"                                                                                                        \
    "adcq %[t1], %[t5]\n\t"                                                                                                        \
    "adcq %[t2], %[t6]\n\t"                                                                                                        \
    "adcq %[t3], %[t7]\n\t"                                                                                                        \
    "adcq $0, %[hi]\n\t" SUBTRACT_PRIME(top, hi)

#define LOAD_NUMBER(from)                                                                                                          \
    "movq 0(%[" #from "]), %[t4]\n\t"                                                                                              \
    "movq 8(%[" #from "]), %[t5]\n\t"                                                                                              \
    "movq 16(%[" #from "]), %[t6]\n\t"                                                                                             \
    "movq 24(%[" #from "]), %[t7]\n\t"

#define FOUR_LIMBS(operation, next, from)                                                                                          \
    operation " 0(%[" #from "]), %[t4]\n\t" next " 8(%[" #from "]), %[t5]\n\t" next " 16(%[" #from "]), %[t6]\n\t" next            \
              " 24(%[" #from "]), %[t7]\n\t"

#define ADD_NUMBERS                                                                                                                \
    LOAD_NUMBER(a)                                                                                                                 \
    "xorl %k[hi], %k[hi]\n\t" FOUR_LIMBS("addq", "adcq", b) "adcq $0, %[hi]\n\t" LOAD_TOP(b) SUBTRACT_PRIME(b, hi)

/// The mask is p's second limb twice over when the difference is negative, and p is added then.
#define SUBTRACT_NUMBERS                                                                                                           \
    LOAD_NUMBER(a)                                                                                                                 \
    FOUR_LIMBS("subq", "sbbq", b)                                                                                                  \
    "sbbq %[mask], %[mask]\n\t" LOAD_TOP(b) "andq %[mask], %[b]\n\t"                                                               \
                                            "movl %k[mask], %k[lo]\n\t"                                                            \
                                            "addq %[mask], %[t4]\n\t"                                                              \
                                            "adcq %[lo], %[t5]\n\t"                                                                \
                                            "adcq $0, %[t6]\n\t"                                                                   \
                                            "adcq %[b], %[t7]\n\t"

/// Numbers modulo p, below it. Where the compiler may inline the assembly, the memory that it reads through its pointers is an
/// operand, too: without that, two pieces with the same pointers would be one to it.
struct Field : MontgomeryForm<curve_domains::prime256v1> {

    [[gnu::noinline]] static Element multiply(const Element& x, const Element& y)
    {
        const std::uint64_t* a = x.data();
        const std::uint64_t* b = y.data();
        Element r;
        std::uint64_t t0, t1, t2, t3, lo, hi;
        asm(ADX_FIRST_ROW_4(t0, t1, t2, t3, t4) ADX_ROW_4(8, t1, t2, t3, t4, t5) ADX_ROW_4(16, t2, t3, t4, t5, t6)
                ADX_ROW_4(24, t3, t4, t5, t6, t7) REDUCE(b)
            : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(r[0]), [t5] "=&r"(r[1]), [t6] "=&r"(r[2]),
              [t7] "=&r"(r[3]), [lo] "=&r"(lo), [hi] "=&r"(hi), [a] "+&r"(a), [b] "+&r"(b)
            :
            : "rdx", "cc", "memory");
        return r;
    }

    [[gnu::noinline]] static Element square(const Element& x)
    {
        const std::uint64_t* a = x.data();
        Element r;
        std::uint64_t t0, t1, t2, t3, lo, hi;
        asm(ADX_SQUARE_4 REDUCE(a)
            : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(r[0]), [t5] "=&r"(r[1]), [t6] "=&r"(r[2]),
              [t7] "=&r"(r[3]), [lo] "=&r"(lo), [hi] "=&r"(hi), [a] "+&r"(a)
            :
            : "rdx", "cc", "memory");
        return r;
    }

    static Element add(const Element& x, const Element& y)
    {
        const std::uint64_t* a = x.data();
        const std::uint64_t* b = y.data();
        Element r;
        std::uint64_t t0, t1, t2, t3, lo, hi;
        asm(ADD_NUMBERS
            : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(r[0]), [t5] "=&r"(r[1]), [t6] "=&r"(r[2]),
              [t7] "=&r"(r[3]), [lo] "=&r"(lo), [hi] "=&r"(hi), [a] "+&r"(a), [b] "+&r"(b)
            : "m"(x), "m"(y)
            : "cc");
        return r;
    }

    static Element twice(const Element& x) { return add(x, x); }

    static Element subtract(const Element& x, const Element& y)
    {
        const std::uint64_t* a = x.data();
        const std::uint64_t* b = y.data();
        Element r;
        std::uint64_t mask, lo;
        asm(SUBTRACT_NUMBERS
            : [t4] "=&r"(r[0]), [t5] "=&r"(r[1]), [t6] "=&r"(r[2]), [t7] "=&r"(r[3]), [mask] "=&r"(mask), [lo] "=&r"(lo),
              [a] "+&r"(a), [b] "+&r"(b)
            : "m"(x), "m"(y)
            : "cc");
        return r;
    }
};

} // namespace

const PointMultiples<4>& Prime256Adx()
{
    static const JacobianPoints<Field, curve_domains::prime256v1, 6> points;
    return points;
}

} // namespace ccrypto
