#pragma once

// Pieces of inline assembly for products with MULX, ADCX and ADOX, whose two carry chains run side by side. Text for an asm
// statement with the operands a, b (pointers to limbs), lo and hi (scratch registers) and the registers t of the product; RDX is
// clobbered. The compiler needs no flag for them, so nothing else in such a file depends on the processor.

/// t0 to t4 = a * b[0], four limbs.
#define ADX_FIRST_ROW_4(t0, t1, t2, t3, t4)                                                                                        \
    "movq 0(%[b]), %%rdx\n\t"                                                                                                      \
    "mulxq 0(%[a]), %[" #t0 "], %[" #t1 "]\n\t"                                                                                    \
    "mulxq 8(%[a]), %[lo], %[" #t2 "]\n\t"                                                                                         \
    "addq %[lo], %[" #t1 "]\n\t"                                                                                                   \
    "mulxq 16(%[a]), %[lo], %[" #t3 "]\n\t"                                                                                        \
    "adcq %[lo], %[" #t2 "]\n\t"                                                                                                   \
    "mulxq 24(%[a]), %[lo], %[" #t4 "]\n\t"                                                                                        \
    "adcq %[lo], %[" #t3 "]\n\t"                                                                                                   \
    "adcq $0, %[" #t4 "]\n\t"

/// low += lo, high += hi, of the product of RDX and a limb of a.
#define ADX_STEP(offset, low, high)                                                                                                \
    "mulxq " #offset "(%[a]), %[lo], %[hi]\n\t"                                                                                    \
    "adcxq %[lo], %[" #low "]\n\t"                                                                                                 \
    "adoxq %[hi], %[" #high "]\n\t"

/// t0 to t4 += a * b[offset / 8], where t4 was nothing.
#define ADX_ROW_4(offset, t0, t1, t2, t3, t4)                                                                                      \
    "movq " #offset "(%[b]), %%rdx\n\t"                                                                                            \
    "xorl %k[" #t4 "], %k[" #t4 "]\n\t" ADX_STEP(0, t0, t1) ADX_STEP(8, t1, t2) ADX_STEP(16, t2, t3)                               \
        ADX_STEP(24, t3, t4) "movl $0, %k[lo]\n\t"                                                                                 \
                             "adcxq %[lo], %[" #t4 "]\n\t"

/// The square of a in t0 to t7, four limbs.
#define ADX_SQUARE_4                                                                                                               \
    "movq 0(%[a]), %%rdx\n\t"                                                                                                      \
    "mulxq 8(%[a]), %[t1], %[t2]\n\t"                                                                                              \
    "mulxq 16(%[a]), %[lo], %[t3]\n\t"                                                                                             \
    "addq %[lo], %[t2]\n\t"                                                                                                        \
    "mulxq 24(%[a]), %[lo], %[t4]\n\t"                                                                                             \
    "adcq %[lo], %[t3]\n\t"                                                                                                        \
    "adcq $0, %[t4]\n\t"                                                                                                           \
    "movq 8(%[a]), %%rdx\n\t"                                                                                                      \
    "xorl %k[t5], %k[t5]\n\t" ADX_STEP(16, t3, t4) ADX_STEP(24, t4, t5) "movl $0, %k[lo]\n\t"                                      \
                                                                        "adcxq %[lo], %[t5]\n\t"                                   \
                                                                        "movq 16(%[a]), %%rdx\n\t"                                 \
                                                                        "mulxq 24(%[a]), %[lo], %[t6]\n\t"                         \
                                                                        "addq %[lo], %[t5]\n\t"                                    \
                                                                        "adcq $0, %[t6]\n\t"                                       \
                                                                        "movq 0(%[a]), %%rdx\n\t"                                  \
                                                                        "xorl %k[t7], %k[t7]\n\t"                                  \
                                                                        "mulxq %%rdx, %[t0], %[hi]\n\t"                            \
                                                                        "adcxq %[t1], %[t1]\n\t"                                   \
                                                                        "adoxq %[hi], %[t1]\n\t"                                   \
                                                                        "movq 8(%[a]), %%rdx\n\t"                                  \
                                                                        "mulxq %%rdx, %[lo], %[hi]\n\t"                            \
                                                                        "adcxq %[t2], %[t2]\n\t"                                   \
                                                                        "adoxq %[lo], %[t2]\n\t"                                   \
                                                                        "adcxq %[t3], %[t3]\n\t"                                   \
                                                                        "adoxq %[hi], %[t3]\n\t"                                   \
                                                                        "movq 16(%[a]), %%rdx\n\t"                                 \
                                                                        "mulxq %%rdx, %[lo], %[hi]\n\t"                            \
                                                                        "adcxq %[t4], %[t4]\n\t"                                   \
                                                                        "adoxq %[lo], %[t4]\n\t"                                   \
                                                                        "adcxq %[t5], %[t5]\n\t"                                   \
                                                                        "adoxq %[hi], %[t5]\n\t"                                   \
                                                                        "movq 24(%[a]), %%rdx\n\t"                                 \
                                                                        "mulxq %%rdx, %[lo], %[hi]\n\t"                            \
                                                                        "adcxq %[t6], %[t6]\n\t"                                   \
                                                                        "adoxq %[lo], %[t6]\n\t"                                   \
                                                                        "adcxq %[t7], %[t7]\n\t"                                   \
                                                                        "adoxq %[hi], %[t7]\n\t"
