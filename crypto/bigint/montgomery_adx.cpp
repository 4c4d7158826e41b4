#include "crypto/bigint/montgomery_calls.h"

using namespace ccrypto;

// Products of 8 limbs by 8 limbs, in registers: r8 to r15 hold a window of the sum that moves up one limb a row. A row adds one
// limb (rdx) times eight others (at rsi) to it, low halves along the carry flag, high halves along the overflow flag, which ADCX
// and ADOX keep apart. A register that gave its limb away takes the one on top.
//
// A number of more blocks is multiplied block by block, upwards: what the window holds after a block, with what lies in memory
// there, begins the next one. That sum may be one bit longer than the window: the bit waits in memory (as all ones, none in it as
// zero) until the window has moved there.
//
// The functions keep the System V calling convention on both systems.

using limbs::Limb;

extern "C" {
[[gnu::sysv_abi]] void CryptoMontgomeryMultiplyAdx(Limb* product, const Limb* left, const Limb* right, std::size_t count);
[[gnu::sysv_abi]] void CryptoMontgomerySquareAdx(Limb* product, const Limb* number, std::size_t count);
[[gnu::sysv_abi]] void CryptoMontgomeryReduceAdx(Limb* result, Limb* product, const Limb* modulus, Limb negativeInverse,
                                                 std::size_t count);
}

asm(R"(
.text

.macro CryptoEnter
    push %rbx
    push %rbp
    push %r12
    push %r13
    push %r14
    push %r15
    sub $136, %rsp
.endm

.macro CryptoLeave
    add $136, %rsp
    pop %r15
    pop %r14
    pop %r13
    pop %r12
    pop %rbp
    pop %rbx
    ret
.endm

# The frame: 0 bit that waits, 8 blocks left in the row of blocks, 16 rows of blocks left, 24 to 56 arguments, 64 to 127 limbs.

# 0 to the eight limbs of the window.
.macro CryptoClearWindow
    xor %r8d, %r8d
    xor %r9d, %r9d
    xor %r10d, %r10d
    xor %r11d, %r11d
    xor %r12d, %r12d
    xor %r13d, %r13d
    xor %r14d, %r14d
    xor %r15d, %r15d
.endm

# The carry flag as the word at \from, of all ones or zeros, says.
.macro CryptoCarryFrom from
    mov \from, %rax
    add %rax, %rax
.endm

.macro CryptoCarryTo target
    sbb %rax, %rax
    mov %rax, \target
.endm

.macro CryptoAddMemoryToWindow
    adc 0(%rdi), %r8
    adc 8(%rdi), %r9
    adc 16(%rdi), %r10
    adc 24(%rdi), %r11
    adc 32(%rdi), %r12
    adc 40(%rdi), %r13
    adc 48(%rdi), %r14
    adc 56(%rdi), %r15
.endm

.macro CryptoAddCarryToWindow
    adc $0, %r8
    adc $0, %r9
    adc $0, %r10
    adc $0, %r11
    adc $0, %r12
    adc $0, %r13
    adc $0, %r14
    adc $0, %r15
.endm

.macro CryptoStoreWindow
    mov %r8, 0(%rdi)
    mov %r9, 8(%rdi)
    mov %r10, 16(%rdi)
    mov %r11, 24(%rdi)
    mov %r12, 32(%rdi)
    mov %r13, 40(%rdi)
    mov %r14, 48(%rdi)
    mov %r15, 56(%rdi)
.endm

# \low and \high += rdx * the limb at \from(%rsi)
.macro CryptoStep from, low, high
    mulx \from(%rsi), %rax, %rbx
    adcx %rax, \low
    adox %rbx, \high
.endm

# \low += ..., \top = the limb above it
.macro CryptoLastStep from, low, top
    mulx \from(%rsi), %rax, %rbx
    adcx %rax, \low
    mov %rbp, \top
    adox %rbx, \top
    adcx %rbp, \top
.endm

# The registers += rdx times the limbs from \from(%rsi) up to the eighth one; the last register is the limb on top.
.macro CryptoSteps from, low, high, more:vararg
.ifb \more
    CryptoLastStep \from, \low, \high
.else
    CryptoStep \from, \low, \high
    CryptoSteps \from+8, \high, \more
.endif
.endm

.macro CryptoRow factor, w0, w1, w2, w3, w4, w5, w6, w7
    mov \factor(%rcx), %rdx
    xor %ebp, %ebp
    CryptoStep 0, \w0, \w1
    mov \w0, \factor(%rdi)
    CryptoSteps 8, \w1, \w2, \w3, \w4, \w5, \w6, \w7, \w0
.endm

# A limb of the block at rsi times those above it.
.macro CryptoRowAbove factor, window:vararg
    mov \factor(%rsi), %rdx
    xor %ebp, %ebp
    CryptoSteps \factor+8, \window
.endm

# The block at rdi becomes the low half of: itself, the window, the bit that waits, and the product of the blocks at rsi and rcx.
.macro CryptoBlock
    CryptoCarryFrom 0(%rsp)
    CryptoAddMemoryToWindow
    CryptoCarryTo 0(%rsp)
    CryptoRow 0, %r8, %r9, %r10, %r11, %r12, %r13, %r14, %r15
    CryptoRow 8, %r9, %r10, %r11, %r12, %r13, %r14, %r15, %r8
    CryptoRow 16, %r10, %r11, %r12, %r13, %r14, %r15, %r8, %r9
    CryptoRow 24, %r11, %r12, %r13, %r14, %r15, %r8, %r9, %r10
    CryptoRow 32, %r12, %r13, %r14, %r15, %r8, %r9, %r10, %r11
    CryptoRow 40, %r13, %r14, %r15, %r8, %r9, %r10, %r11, %r12
    CryptoRow 48, %r14, %r15, %r8, %r9, %r10, %r11, %r12, %r13
    CryptoRow 56, %r15, %r8, %r9, %r10, %r11, %r12, %r13, %r14
.endm

# One row of Montgomery's reduction: the factor makes the lowest limb of the window zero.
.macro CryptoReduceRow index, w0, w1, w2, w3, w4, w5, w6, w7
    mov \w0, %rdx
    imul %rcx, %rdx
    xor %ebp, %ebp
    mov %rdx, 64+\index(%rsp)
    CryptoSteps 0, \w0, \w1, \w2, \w3, \w4, \w5, \w6, \w7, \w0
.endm

# rcx limbs, a multiple of 8, at rdi become 0. Changes rax.
.macro CryptoClearLimbs
    xor %eax, %eax
1:
    mov %rax, -8(%rdi,%rcx,8)
    mov %rax, -16(%rdi,%rcx,8)
    mov %rax, -24(%rdi,%rcx,8)
    mov %rax, -32(%rdi,%rcx,8)
    mov %rax, -40(%rdi,%rcx,8)
    mov %rax, -48(%rdi,%rcx,8)
    mov %rax, -56(%rdi,%rcx,8)
    mov %rax, -64(%rdi,%rcx,8)
    sub $8, %rcx
    jnz 1b
.endm

.p2align 5
.globl CryptoMontgomeryMultiplyAdx
CryptoMontgomeryMultiplyAdx:
    CryptoEnter
    mov %rsi, 24(%rsp)
    mov %rcx, %r8
    shr $3, %r8
    mov %r8, 16(%rsp)
    mov %r8, 32(%rsp)
    CryptoClearLimbs
    mov %rdx, %rcx
    .p2align 4
2:
    mov 24(%rsp), %rsi
    mov 32(%rsp), %rax
    mov %rax, 8(%rsp)
    movq $0, 0(%rsp)
    CryptoClearWindow
    .p2align 4
3:
    CryptoBlock
    lea 64(%rsi), %rsi
    lea 64(%rdi), %rdi
    decq 8(%rsp)
    jnz 3b
    CryptoCarryFrom 0(%rsp)
    CryptoAddCarryToWindow
    CryptoStoreWindow
    mov 32(%rsp), %rax
    dec %rax
    shl $6, %rax
    sub %rax, %rdi
    lea 64(%rcx), %rcx
    decq 16(%rsp)
    jnz 2b
    CryptoLeave

.p2align 5
.globl CryptoMontgomerySquareAdx
CryptoMontgomerySquareAdx:
    CryptoEnter
    mov %rdi, 24(%rsp)
    mov %rsi, 32(%rsp)
    mov %rdx, 40(%rsp)
    mov %rdx, %rcx
    shr $3, %rdx
    mov %rdx, 16(%rsp)
    CryptoClearLimbs
    .p2align 4
2:
    # Beside the diagonal of the block with itself.
    mov 0(%rsi), %rdx
    xor %ebp, %ebp
    mulx 8(%rsi), %r9, %r10
    mulx 16(%rsi), %rax, %r11
    adcx %rax, %r10
    mulx 24(%rsi), %rax, %r12
    adcx %rax, %r11
    mulx 32(%rsi), %rax, %r13
    adcx %rax, %r12
    mulx 40(%rsi), %rax, %r14
    adcx %rax, %r13
    mulx 48(%rsi), %rax, %r15
    adcx %rax, %r14
    mulx 56(%rsi), %rax, %r8
    adcx %rax, %r15
    adcx %rbp, %r8
    mov %r9, 72(%rsp)
    mov %r10, 80(%rsp)

    CryptoRowAbove 8, %r11, %r12, %r13, %r14, %r15, %r8, %r9
    mov %r11, 88(%rsp)
    mov %r12, 96(%rsp)
    CryptoRowAbove 16, %r13, %r14, %r15, %r8, %r9, %r10
    mov %r13, 104(%rsp)
    mov %r14, 112(%rsp)
    CryptoRowAbove 24, %r15, %r8, %r9, %r10, %r11
    mov %r15, 120(%rsp)
    CryptoRowAbove 32, %r9, %r10, %r11, %r12
    CryptoRowAbove 40, %r11, %r12, %r13
    CryptoRowAbove 48, %r13, %r14
    xor %r15d, %r15d

    # The low half goes to memory, the high half is the window.
    mov 72(%rsp), %rax
    add %rax, 8(%rdi)
    mov 80(%rsp), %rax
    adc %rax, 16(%rdi)
    mov 88(%rsp), %rax
    adc %rax, 24(%rdi)
    mov 96(%rsp), %rax
    adc %rax, 32(%rdi)
    mov 104(%rsp), %rax
    adc %rax, 40(%rdi)
    mov 112(%rsp), %rax
    adc %rax, 48(%rdi)
    mov 120(%rsp), %rax
    adc %rax, 56(%rdi)
    CryptoCarryTo 0(%rsp)
    mov %rsi, %rcx
    lea 64(%rsi), %rsi
    lea 64(%rdi), %rdi
    mov 16(%rsp), %rax
    dec %rax
    mov %rax, 8(%rsp)
    jz 4f
    .p2align 4
3:
    CryptoBlock
    lea 64(%rsi), %rsi
    lea 64(%rdi), %rdi
    decq 8(%rsp)
    jnz 3b
4:
    CryptoCarryFrom 0(%rsp)
    CryptoAddCarryToWindow
    CryptoStoreWindow
    # The next block, and twice as far the place of its square.
    lea 64(%rcx), %rsi
    mov 16(%rsp), %rax
    sub $2, %rax
    shl $6, %rax
    sub %rax, %rdi
    decq 16(%rsp)
    jnz 2b

    # All of that twice, and the squares of the limbs.
    mov 24(%rsp), %rdi
    mov 32(%rsp), %rsi
    mov 40(%rsp), %rcx
    xor %eax, %eax
    .p2align 4
5:
    .irp index, 0, 8, 16, 24, 32, 40, 48, 56
    mov \index(%rsi), %rdx
    mulx %rdx, %rax, %rbx
    mov 2*\index(%rdi), %r8
    mov 2*\index+8(%rdi), %r9
    adcx %r8, %r8
    adox %rax, %r8
    mov %r8, 2*\index(%rdi)
    adcx %r9, %r9
    adox %rbx, %r9
    mov %r9, 2*\index+8(%rdi)
    .endr
    lea 64(%rsi), %rsi
    lea 128(%rdi), %rdi
    lea -8(%rcx), %rcx
    jrcxz 6f
    jmp 5b
6:
    CryptoLeave

.p2align 5
.globl CryptoMontgomeryReduceAdx
CryptoMontgomeryReduceAdx:
    CryptoEnter
    mov %rdi, 24(%rsp)
    mov %rdx, 32(%rsp)
    mov %rcx, 40(%rsp)
    shr $3, %r8
    mov %r8, 16(%rsp)
    mov %r8, 48(%rsp)
    movq $0, 56(%rsp)
    mov %rsi, %rdi
    .p2align 4
2:
    mov 40(%rsp), %rcx
    mov 32(%rsp), %rsi
    mov 0(%rdi), %r8
    mov 8(%rdi), %r9
    mov 16(%rdi), %r10
    mov 24(%rdi), %r11
    mov 32(%rdi), %r12
    mov 40(%rdi), %r13
    mov 48(%rdi), %r14
    mov 56(%rdi), %r15
    CryptoReduceRow 0, %r8, %r9, %r10, %r11, %r12, %r13, %r14, %r15
    CryptoReduceRow 8, %r9, %r10, %r11, %r12, %r13, %r14, %r15, %r8
    CryptoReduceRow 16, %r10, %r11, %r12, %r13, %r14, %r15, %r8, %r9
    CryptoReduceRow 24, %r11, %r12, %r13, %r14, %r15, %r8, %r9, %r10
    CryptoReduceRow 32, %r12, %r13, %r14, %r15, %r8, %r9, %r10, %r11
    CryptoReduceRow 40, %r13, %r14, %r15, %r8, %r9, %r10, %r11, %r12
    CryptoReduceRow 48, %r14, %r15, %r8, %r9, %r10, %r11, %r12, %r13
    CryptoReduceRow 56, %r15, %r8, %r9, %r10, %r11, %r12, %r13, %r14
    lea 64(%rsi), %rsi
    lea 64(%rdi), %rdi
    lea 64(%rsp), %rcx
    movq $0, 0(%rsp)
    mov 48(%rsp), %rax
    dec %rax
    mov %rax, 8(%rsp)
    jz 4f
    .p2align 4
3:
    CryptoBlock
    lea 64(%rsi), %rsi
    lea 64(%rdi), %rdi
    decq 8(%rsp)
    jnz 3b
4:
    CryptoCarryFrom 0(%rsp)
    CryptoAddCarryToWindow
    CryptoCarryFrom 56(%rsp)
    CryptoAddMemoryToWindow
    CryptoCarryTo 56(%rsp)
    CryptoStoreWindow
    mov 48(%rsp), %rax
    dec %rax
    shl $6, %rax
    sub %rax, %rdi
    decq 16(%rsp)
    jnz 2b

    # The high half, or what is left of it without the modulus when there is enough of it.
    mov 24(%rsp), %rsi
    mov 32(%rsp), %rdx
    mov 48(%rsp), %rcx
    xor %ebp, %ebp
    .p2align 4
5:
    .irp index, 0, 8, 16, 24, 32, 40, 48, 56
    mov \index(%rdi,%rbp), %rax
    sbb \index(%rdx,%rbp), %rax
    mov %rax, \index(%rsi,%rbp)
    .endr
    lea 64(%rbp), %rbp
    dec %rcx
    jnz 5b
    # All ones: the modulus was more, and no carry lies above.
    sbb %rax, %rax
    mov 56(%rsp), %rbx
    not %rbx
    and %rax, %rbx
    mov 48(%rsp), %rcx
    .p2align 4
6:
    .irp index, 0, 8, 16, 24, 32, 40, 48, 56
    mov \index(%rsi), %rax
    test %rbx, %rbx
    cmovnz \index(%rdi), %rax
    mov %rax, \index(%rsi)
    .endr
    lea 64(%rsi), %rsi
    lea 64(%rdi), %rdi
    dec %rcx
    jnz 6b
    CryptoLeave
)");

namespace {

void Multiply(Limb* product, const Limb* left, const Limb* right, std::size_t count)
{
    CryptoMontgomeryMultiplyAdx(product, left, right, count);
}

void Square(Limb* product, const Limb* number, std::size_t count)
{
    CryptoMontgomerySquareAdx(product, number, count);
}

void Reduce(Limb* result, Limb* product, const Limb* modulus, Limb negativeInverse, std::size_t count)
{
    CryptoMontgomeryReduceAdx(result, product, modulus, negativeInverse, count);
}

} // namespace

namespace ccrypto {

const MontgomeryCalls montgomeryAdx = {Multiply, Square, Reduce};

} // namespace ccrypto
