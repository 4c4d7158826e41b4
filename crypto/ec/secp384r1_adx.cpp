#include "crypto/ec/jacobian_points.h"
#include "crypto/ec/prime_curves.h"

namespace ccrypto {

namespace {

// p is 2^384 - 2^128 - 2^96 + 2^32 - 1, so -1 / p is 2^32 + 1 modulo 2^64: with m = t0 * (2^32 + 1), adding m * p to a number whose
// lowest limb is t0 makes that limb zero, adds m six limbs up and takes m * (2^128 + 2^96 - 2^32 + 1) - t0 off.

/// t0 to t6 += a * b[offset / 8], with the limb t7 above them, which was nothing, six limbs of a.
#define ROW(offset, t0, t1, t2, t3, t4, t5, t6, t7)                                                                                \
    "movq " #offset "(%[b]), %%rdx\n\t"                                                                                            \
    "xorl %k[" #t7 "], %k[" #t7 "]\n\t" STEP(0, t0, t1) STEP(8, t1, t2) STEP(16, t2, t3) STEP(24, t3, t4) STEP(32, t4, t5)         \
        STEP(40, t5, t6) "movl $0, %k[lo]\n\t"                                                                                     \
                         "adcxq %[lo], %[" #t6 "]\n\t"                                                                             \
                         "adoxq %[lo], %[" #t7 "]\n\t"                                                                             \
                         "adcxq %[lo], %[" #t7 "]\n\t"

#define STEP(offset, low, high)                                                                                                    \
    "mulxq " #offset "(%[a]), %[lo], %[hi]\n\t"                                                                                    \
    "adcxq %[lo], %[" #low "]\n\t"                                                                                                 \
    "adoxq %[hi], %[" #high "]\n\t"

/// Makes t0 zero in that way. With x and y the halves of m * 2^32 and c the carry of t0 + t0 * 2^32, what comes off from t1 on is
/// x - y - c and, a limb higher, m + y.
#define REDUCE_LIMB(t0, t1, t2, t3, t4, t5, t6, t7)                                                                                \
    "movq %[" #t0 "], %[lo]\n\t"                                                                                                   \
    "movq %[" #t0 "], %%rdx\n\t"                                                                                                   \
    "shlq $32, %[lo]\n\t"                                                                                                          \
    "addq %[lo], %%rdx\n\t"                                                                                                        \
    "rorxq $32, %%rdx, %[hi]\n\t"                                                                                                  \
    "movl %k[hi], %k[hi]\n\t"                                                                                                      \
    "sbbq %[hi], %[lo]\n\t"                                                                                                        \
    "movq %%rdx, %[" #t0 "]\n\t"                                                                                                   \
    "sbbq $0, %[" #t0 "]\n\t"                                                                                                      \
    "addq %[hi], %[" #t0 "]\n\t"                                                                                                   \
    "movl $0, %k[hi]\n\t"                                                                                                          \
    "adcq $0, %[hi]\n\t"                                                                                                           \
    "subq %[lo], %[" #t1 "]\n\t"                                                                                                   \
    "sbbq %[" #t0 "], %[" #t2 "]\n\t"                                                                                              \
    "sbbq %[hi], %[" #t3 "]\n\t"                                                                                                   \
    "sbbq $0, %[" #t4 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t5 "]\n\t"                                                                                                      \
    "sbbq $0, %%rdx\n\t"                                                                                                           \
    "addq %%rdx, %[" #t6 "]\n\t"                                                                                                   \
    "adcq $0, %[" #t7 "]\n\t"

#define ROUND(offset, t0, t1, t2, t3, t4, t5, t6, t7)                                                                              \
    ROW(offset, t0, t1, t2, t3, t4, t5, t6, t7) REDUCE_LIMB(t0, t1, t2, t3, t4, t5, t6, t7)

/// Numbers modulo p, below it.
struct Field : MontgomeryForm<curve_domains::secp384r1> {
    static constexpr const Element& prime = curve_domains::secp384r1.p.value;

    [[gnu::noinline]] static Element multiply(const Element& x, const Element& y)
    {
        const std::uint64_t* a = x.data();
        const std::uint64_t* b = y.data();
        std::uint64_t t0 = 0, t1 = 0, t2 = 0, t3 = 0, t4 = 0, t5 = 0, t6 = 0, t7, lo, hi;
        asm(ROUND(0, t0, t1, t2, t3, t4, t5, t6, t7) ROUND(8, t1, t2, t3, t4, t5, t6, t7, t0)
                ROUND(16, t2, t3, t4, t5, t6, t7, t0, t1) ROUND(24, t3, t4, t5, t6, t7, t0, t1, t2)
                    ROUND(32, t4, t5, t6, t7, t0, t1, t2, t3) ROUND(40, t5, t6, t7, t0, t1, t2, t3, t4)
            : [t0] "+&r"(t0), [t1] "+&r"(t1), [t2] "+&r"(t2), [t3] "+&r"(t3), [t4] "+&r"(t4), [t5] "+&r"(t5), [t6] "+&r"(t6),
              [t7] "=&r"(t7), [lo] "=&r"(lo), [hi] "=&r"(hi), [a] "+&r"(a), [b] "+&r"(b)
            :
            : "rdx", "cc", "memory");
        return fixed_limbs::ReduceOnce(Element{t6, t7, t0, t1, t2, t3}, t4, prime);
    }

    static Element square(const Element& x) { return multiply(x, x); }

    static Element add(const Element& x, const Element& y)
    {
        Element sum;
        const std::uint64_t carry = fixed_limbs::Add(sum, x, y);
        return fixed_limbs::ReduceOnce(sum, carry, prime);
    }

    static Element twice(const Element& x) { return add(x, x); }

    static Element subtract(const Element& x, const Element& y)
    {
        Element difference;
        const std::uint64_t mask = fixed_limbs::Opaque(0 - fixed_limbs::Subtract(difference, x, y));
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < limbCount; ++i)
            difference[i] = fixed_limbs::AddCarry(difference[i], prime[i] & mask, carry);
        return difference;
    }
};

} // namespace

const PointMultiples<6>& Prime384Adx()
{
    static const JacobianPoints<Field, curve_domains::secp384r1, 5> points;
    return points;
}

} // namespace ccrypto
