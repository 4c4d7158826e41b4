#include "crypto/ec/jacobian_points.h"
#include "crypto/ec/prime_curves.h"
#include "crypto/ec/secp521r1_field.h"

namespace ccrypto {

namespace {

// Nine registers hold the limbs of a sum that moves up: of each row of a product the lowest limb is done, goes to memory (`done`),
// and its register becomes the highest limb.

#define STEP(offset, low, high)                                                                                                    \
    "mulxq " #offset "(%[a]), %[lo], %[hi]\n\t"                                                                                    \
    "adcxq %[lo], %[" #low "]\n\t"                                                                                                 \
    "adoxq %[hi], %[" #high "]\n\t"

/// The highest limb of a, whose product begins the limb `top`.
#define LAST_STEP(high, top)                                                                                                       \
    "mulxq 64(%[a]), %[lo], %[" #top "]\n\t"                                                                                       \
    "adcxq %[lo], %[" #high "]\n\t"                                                                                                \
    "movl $0, %k[lo]\n\t"                                                                                                          \
    "adoxq %[lo], %[" #top "]\n\t"                                                                                                 \
    "adcxq %[lo], %[" #top "]\n\t"

/// t0 to t8 and, in t0 again, the limb above = a * b[0].
#define FIRST_ROW                                                                                                                  \
    "movq 0(%[b]), %%rdx\n\t"                                                                                                      \
    "mulxq 0(%[a]), %[t0], %[t1]\n\t"                                                                                              \
    "movq %[t0], %[done0]\n\t"                                                                                                     \
    "mulxq 8(%[a]), %[lo], %[t2]\n\t"                                                                                              \
    "addq %[lo], %[t1]\n\t"                                                                                                        \
    "mulxq 16(%[a]), %[lo], %[t3]\n\t"                                                                                             \
    "adcq %[lo], %[t2]\n\t"                                                                                                        \
    "mulxq 24(%[a]), %[lo], %[t4]\n\t"                                                                                             \
    "adcq %[lo], %[t3]\n\t"                                                                                                        \
    "mulxq 32(%[a]), %[lo], %[t5]\n\t"                                                                                             \
    "adcq %[lo], %[t4]\n\t"                                                                                                        \
    "mulxq 40(%[a]), %[lo], %[t6]\n\t"                                                                                             \
    "adcq %[lo], %[t5]\n\t"                                                                                                        \
    "mulxq 48(%[a]), %[lo], %[t7]\n\t"                                                                                             \
    "adcq %[lo], %[t6]\n\t"                                                                                                        \
    "mulxq 56(%[a]), %[lo], %[t8]\n\t"                                                                                             \
    "adcq %[lo], %[t7]\n\t"                                                                                                        \
    "mulxq 64(%[a]), %[lo], %[t0]\n\t"                                                                                             \
    "adcq %[lo], %[t8]\n\t"                                                                                                        \
    "adcq $0, %[t0]\n\t"

/// t0 to t8 += a * b[offset / 8], of which t0 is done, and t0 = the limb above.
#define ROW(offset, done, t0, t1, t2, t3, t4, t5, t6, t7, t8)                                                                      \
    "movq " #offset "(%[b]), %%rdx\n\t"                                                                                            \
    "xorl %k[lo], %k[lo]\n\t" STEP(0, t0, t1) "movq %[" #t0 "], %[" #done "]\n\t" STEP(8, t1, t2) STEP(16, t2, t3)                 \
        STEP(24, t3, t4) STEP(32, t4, t5) STEP(40, t5, t6) STEP(48, t6, t7) STEP(56, t7, t8) LAST_STEP(t8, t0)

/// What a square begins with: a[i], and both chains of carries empty.
#define OF_LIMB(offset)                                                                                                            \
    "movq " #offset "(%[a]), %%rdx\n\t"                                                                                            \
    "xorl %k[lo], %k[lo]\n\t"

#define DONE(limb, done) "movq %[" #limb "], %[" #done "]\n\t"

/// The products of different limbs, the first one from t0 on: limbs 1 to 8 of the sum in memory and the others, up to 16, in t8 and
/// t0 to t6.
#define CROSS_PRODUCTS                                                                                                             \
    "movq 0(%[a]), %%rdx\n\t"                                                                                                      \
    "mulxq 8(%[a]), %[t0], %[t1]\n\t"                                                                                              \
    "mulxq 16(%[a]), %[lo], %[t2]\n\t"                                                                                             \
    "addq %[lo], %[t1]\n\t"                                                                                                        \
    "mulxq 24(%[a]), %[lo], %[t3]\n\t"                                                                                             \
    "adcq %[lo], %[t2]\n\t"                                                                                                        \
    "mulxq 32(%[a]), %[lo], %[t4]\n\t"                                                                                             \
    "adcq %[lo], %[t3]\n\t"                                                                                                        \
    "mulxq 40(%[a]), %[lo], %[t5]\n\t"                                                                                             \
    "adcq %[lo], %[t4]\n\t"                                                                                                        \
    "mulxq 48(%[a]), %[lo], %[t6]\n\t"                                                                                             \
    "adcq %[lo], %[t5]\n\t"                                                                                                        \
    "mulxq 56(%[a]), %[lo], %[t7]\n\t"                                                                                             \
    "adcq %[lo], %[t6]\n\t"                                                                                                        \
    "mulxq 64(%[a]), %[lo], %[t8]\n\t"                                                                                             \
    "adcq %[lo], %[t7]\n\t"                                                                                                        \
    "adcq $0, %[t8]\n\t" DONE(t0, done1) DONE(t1, done2) OF_LIMB(8) STEP(16, t2, t3) STEP(24, t3, t4) STEP(32, t4, t5)             \
        STEP(40, t5, t6) STEP(48, t6, t7) STEP(56, t7, t8) LAST_STEP(t8, t0) DONE(t2, done3) DONE(t3, done4) OF_LIMB(16)           \
            STEP(24, t4, t5) STEP(32, t5, t6) STEP(40, t6, t7) STEP(48, t7, t8) STEP(56, t8, t0) LAST_STEP(t0, t1) DONE(t4, done5) \
                DONE(t5, done6) OF_LIMB(24) STEP(32, t6, t7) STEP(40, t7, t8) STEP(48, t8, t0) STEP(56, t0, t1) LAST_STEP(t1, t2)  \
                    DONE(t6, done7) DONE(t7, done8) OF_LIMB(32) STEP(40, t8, t0) STEP(48, t0, t1) STEP(56, t1, t2)                 \
                        LAST_STEP(t2, t3) OF_LIMB(40) STEP(48, t1, t2) STEP(56, t2, t3) LAST_STEP(t3, t4) OF_LIMB(48)              \
                            STEP(56, t3, t4) LAST_STEP(t4, t5) OF_LIMB(56) LAST_STEP(t5, t6)

/// A limb of the sum twice and, added to it, a limb of a square.
#define DOUBLE_AND_ADD(limb, part)                                                                                                 \
    "adcxq %[" #limb "], %[" #limb "]\n\t"                                                                                         \
    "adoxq %[" #part "], %[" #limb "]\n\t"

#define DOUBLE_AND_ADD_IN_MEMORY(done, part) "movq %[" #done "], %[t7]\n\t" DOUBLE_AND_ADD(t7, part) "movq %[t7], %[" #done "]\n\t"

#define SQUARE_OF_LIMB(offset)                                                                                                     \
    "movq " #offset "(%[a]), %%rdx\n\t"                                                                                            \
    "mulxq %%rdx, %[lo], %[hi]\n\t"

/// The cross products twice and the squares of the limbs.
#define SQUARES                                                                                                                    \
    "xorl %k[lo], %k[lo]\n\t" SQUARE_OF_LIMB(0) DONE(lo, done0) DOUBLE_AND_ADD_IN_MEMORY(done1, hi) SQUARE_OF_LIMB(8)              \
        DOUBLE_AND_ADD_IN_MEMORY(done2, lo) DOUBLE_AND_ADD_IN_MEMORY(done3, hi) SQUARE_OF_LIMB(16)                                 \
            DOUBLE_AND_ADD_IN_MEMORY(done4, lo) DOUBLE_AND_ADD_IN_MEMORY(done5, hi) SQUARE_OF_LIMB(24)                             \
                DOUBLE_AND_ADD_IN_MEMORY(done6, lo) DOUBLE_AND_ADD_IN_MEMORY(done7, hi) SQUARE_OF_LIMB(32)                         \
                    DOUBLE_AND_ADD_IN_MEMORY(done8, lo) DOUBLE_AND_ADD(t8, hi) SQUARE_OF_LIMB(40) DOUBLE_AND_ADD(t0, lo)           \
                        DOUBLE_AND_ADD(t1, hi) SQUARE_OF_LIMB(48) DOUBLE_AND_ADD(t2, lo) DOUBLE_AND_ADD(t3, hi) SQUARE_OF_LIMB(56) \
                            DOUBLE_AND_ADD(t4, lo) DOUBLE_AND_ADD(t5, hi) SQUARE_OF_LIMB(64) DOUBLE_AND_ADD(t6, lo)

/// limb = its bits from 9 on and the 9 bits of the next limb above them.
#define SHIFT(limb, next)                                                                                                          \
    "shrq $9, %[" #limb "]\n\t"                                                                                                    \
    "movq %[" #next "], %[hi]\n\t"                                                                                                 \
    "shlq $55, %[hi]\n\t"                                                                                                          \
    "orq %[hi], %[" #limb "]\n\t"

/// lo and t0 to t7 -= 1 unless their bit 521 is set, which goes.
#define TAKE_BIT_521(t0, t1, t2, t3, t4, t5, t6, t7)                                                                               \
    "movq %[" #t7 "], %[hi]\n\t"                                                                                                   \
    "shrq $9, %[hi]\n\t"                                                                                                           \
    "andl $511, %k[" #t7 "]\n\t"                                                                                                   \
    "subq $1, %[hi]\n\t" BORROW(t0, t1, t2, t3, t4, t5, t6, t7)

#define BORROW(t0, t1, t2, t3, t4, t5, t6, t7)                                                                                     \
    "sbbq $0, %[lo]\n\t"                                                                                                           \
    "sbbq $0, %[" #t0 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t1 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t2 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t3 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t4 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t5 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t6 "]\n\t"                                                                                                      \
    "sbbq $0, %[" #t7 "]\n\t"

/// The product whose limbs 0 to 8 are in memory and whose limbs 9 to 16 are t0 to t7, modulo p, in lo and t0 to t7: the sum of its
/// halves and 1, which goes again unless the sum is p or more.
#define FOLD(t0, t1, t2, t3, t4, t5, t6, t7)                                                                                       \
    "movq %[done8], %[lo]\n\t"                                                                                                     \
    "andq $511, %[done8]\n\t" SHIFT(lo, t0) SHIFT(t0, t1) SHIFT(t1, t2) SHIFT(t2, t3) SHIFT(t3, t4) SHIFT(t4, t5) SHIFT(t5, t6)    \
        SHIFT(t6, t7) "shrq $9, %[" #t7 "]\n\t"                                                                                    \
                      "stc\n\t"                                                                                                    \
                      "adcq %[done0], %[lo]\n\t"                                                                                   \
                      "adcq %[done1], %[" #t0 "]\n\t"                                                                              \
                      "adcq %[done2], %[" #t1 "]\n\t"                                                                              \
                      "adcq %[done3], %[" #t2 "]\n\t"                                                                              \
                      "adcq %[done4], %[" #t3 "]\n\t"                                                                              \
                      "adcq %[done5], %[" #t4 "]\n\t"                                                                              \
                      "adcq %[done6], %[" #t5 "]\n\t"                                                                              \
                      "adcq %[done7], %[" #t6 "]\n\t"                                                                              \
                      "adcq %[done8], %[" #t7 "]\n\t" TAKE_BIT_521(t0, t1, t2, t3, t4, t5, t6, t7)

#define LOAD_A                                                                                                                     \
    "movq 0(%[a]), %[lo]\n\t"                                                                                                      \
    "movq 8(%[a]), %[t0]\n\t"                                                                                                      \
    "movq 16(%[a]), %[t1]\n\t"                                                                                                     \
    "movq 24(%[a]), %[t2]\n\t"                                                                                                     \
    "movq 32(%[a]), %[t3]\n\t"                                                                                                     \
    "movq 40(%[a]), %[t4]\n\t"                                                                                                     \
    "movq 48(%[a]), %[t5]\n\t"                                                                                                     \
    "movq 56(%[a]), %[t6]\n\t"                                                                                                     \
    "movq 64(%[a]), %[t7]\n\t"

#define WITH_B(operation)                                                                                                          \
    operation " 0(%[b]), %[lo]\n\t" operation " 8(%[b]), %[t0]\n\t" operation " 16(%[b]), %[t1]\n\t" operation                     \
              " 24(%[b]), %[t2]\n\t" operation " 32(%[b]), %[t3]\n\t" operation " 40(%[b]), %[t4]\n\t" operation                   \
              " 48(%[b]), %[t5]\n\t" operation " 56(%[b]), %[t6]\n\t" operation " 64(%[b]), %[t7]\n\t"

#define DONE_LIMBS                                                                                                                 \
    [done0] "=m"(done[0]), [done1] "=m"(done[1]), [done2] "=m"(done[2]), [done3] "=m"(done[3]), [done4] "=m"(done[4]),             \
        [done5] "=m"(done[5]), [done6] "=m"(done[6]), [done7] "=m"(done[7]), [done8] "=m"(done[8])

/// The sanitizer would want a register for the limbs in memory, and there is none left.
#define NO_SANITIZER __attribute__((no_sanitize("address", "undefined")))

struct Field : Prime521Field {
    [[gnu::noinline]] NO_SANITIZER static Element multiply(const Element& x, const Element& y)
    {
        std::uint64_t done[9];
        std::uint64_t t0, t1, t2, t3, t4, t5, t6, t7, t8, lo, hi;
        asm(FIRST_ROW ROW(8, done1, t1, t2, t3, t4, t5, t6, t7, t8, t0) ROW(16, done2, t2, t3, t4, t5, t6, t7, t8, t0, t1)
                ROW(24, done3, t3, t4, t5, t6, t7, t8, t0, t1, t2) ROW(32, done4, t4, t5, t6, t7, t8, t0, t1, t2, t3)
                    ROW(40, done5, t5, t6, t7, t8, t0, t1, t2, t3, t4) ROW(48, done6, t6, t7, t8, t0, t1, t2, t3, t4, t5)
                        ROW(56, done7, t7, t8, t0, t1, t2, t3, t4, t5, t6) ROW(64, done8, t8, t0, t1, t2, t3, t4, t5, t6, t7)
                            FOLD(t0, t1, t2, t3, t4, t5, t6, t7)
            : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(t4), [t5] "=&r"(t5), [t6] "=&r"(t6),
              [t7] "=&r"(t7), [t8] "=&r"(t8), [lo] "=&r"(lo), [hi] "=&r"(hi), DONE_LIMBS
            : [a] "r"(x.data()), [b] "r"(y.data())
            : "rdx", "cc", "memory");
        return {lo, t0, t1, t2, t3, t4, t5, t6, t7};
    }

    [[gnu::noinline]] NO_SANITIZER static Element square(const Element& x)
    {
        std::uint64_t done[9];
        std::uint64_t t0, t1, t2, t3, t4, t5, t6, t7, t8, lo, hi;
        asm(CROSS_PRODUCTS SQUARES FOLD(t8, t0, t1, t2, t3, t4, t5, t6)
            : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(t4), [t5] "=&r"(t5), [t6] "=&r"(t6),
              [t7] "=&r"(t7), [t8] "=&r"(t8), [lo] "=&r"(lo), [hi] "=&r"(hi), DONE_LIMBS
            : [a] "r"(x.data())
            : "rdx", "cc", "memory");
        return {lo, t8, t0, t1, t2, t3, t4, t5, t6};
    }

    static Element add(const Element& x, const Element& y)
    {
        std::uint64_t t0, t1, t2, t3, t4, t5, t6, t7, lo, hi;
        asm(LOAD_A "stc\n\t" WITH_B("adcq") TAKE_BIT_521(t0, t1, t2, t3, t4, t5, t6, t7)
            : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(t4), [t5] "=&r"(t5), [t6] "=&r"(t6),
              [t7] "=&r"(t7), [lo] "=&r"(lo), [hi] "=&r"(hi)
            : [a] "r"(x.data()), [b] "r"(y.data()), "m"(x), "m"(y)
            : "cc");
        return {lo, t0, t1, t2, t3, t4, t5, t6, t7};
    }

    static Element twice(const Element& x) { return add(x, x); }

    static Element subtract(const Element& x, const Element& y)
    {
        std::uint64_t t0, t1, t2, t3, t4, t5, t6, t7, lo, hi;
        asm(LOAD_A "clc\n\t" WITH_B("sbbq") "sbbq %[hi], %[hi]\n\t"
                                            "andl $511, %k[t7]\n\t"
                                            "addq %[hi], %[hi]\n\t" BORROW(t0, t1, t2, t3, t4, t5, t6, t7)
            : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(t4), [t5] "=&r"(t5), [t6] "=&r"(t6),
              [t7] "=&r"(t7), [lo] "=&r"(lo), [hi] "=&r"(hi)
            : [a] "r"(x.data()), [b] "r"(y.data()), "m"(x), "m"(y)
            : "cc");
        return {lo, t0, t1, t2, t3, t4, t5, t6, t7};
    }
};

} // namespace

const PointMultiples<9>& Prime521Adx()
{
    static const JacobianPoints<Field, curve_domains::secp521r1, 5, 4> points;
    return points;
}

} // namespace ccrypto
