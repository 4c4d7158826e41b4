#include "crypto/bigint/montgomery.h"

#include "crypto/bigint/montgomery_calls.h"
#include "crypto/bigint/montgomery_digits.h"

#include <emmintrin.h>

#include <algorithm>

namespace ccrypto {

using constant_time::Mask;
using limbs::bitsOfLimb;
using limbs::Limb;

namespace {

constexpr std::size_t limbsOfBlock = 8;

/// The calls with digits of 52 bits for moduli of so many limbs, so many side by side; null when this processor has none.
const DigitCalls* DigitCallsFor(std::size_t limbs, std::size_t moduli)
{
    static const std::span<const DigitCalls> chosen = ChooseVariant<std::span<const DigitCalls>>(DigitVariants()).calls;
    return FindDigitCalls(chosen, limbs, moduli);
}

const MontgomeryCalls& Calls()
{
    static const MontgomeryCalls& chosen = ChooseVariant<MontgomeryCalls>(MontgomeryVariants()).calls;
    return chosen;
}

/// 5 bits of the exponent are raised to at a time: for 512 to 4096 bits the fewest multiplications.
constexpr std::size_t windowBits = 5;
constexpr std::size_t tableEntries = std::size_t{1} << windowBits;

/// Entry `index` of the table; all of them are read.
void Gather(Limb* result, const Limb* table, Limb index, std::size_t count)
{
    __m128i masks[tableEntries];
    for (std::size_t entry = 0; entry < tableEntries; ++entry)
        masks[entry] = _mm_set1_epi64x(static_cast<long long>(Mask::Equal(entry, index).word()));
    for (std::size_t i = 0; i < count; i += 4) {
        __m128i low = _mm_setzero_si128();
        __m128i high = _mm_setzero_si128();
        const Limb* from = table + i;
        for (std::size_t entry = 0; entry < tableEntries; ++entry, from += count) {
            low = _mm_or_si128(low, _mm_and_si128(masks[entry], _mm_loadu_si128(reinterpret_cast<const __m128i*>(from))));
            high = _mm_or_si128(high, _mm_and_si128(masks[entry], _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 2))));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(result + i), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(result + i + 2), high);
    }
}

} // namespace

std::span<const Variant<MontgomeryCalls>> MontgomeryVariants()
{
    static const Variant<MontgomeryCalls> variants[] = {
        {"portable", cpu::none, montgomeryPortable},
        {"adx", cpu::adx, montgomeryAdx},
    };
    return variants;
}

MontgomeryModulus::MontgomeryModulus(std::span<const Limb> modulus)
    : limbs_((modulus.size() + limbsOfBlock - 1) / limbsOfBlock * limbsOfBlock),
      bits_(constant_time::Declassify(limbs::BitLength(modulus.data(), modulus.size()))),
      negativeInverse_(0 - limbs::InverseModuloLimb(modulus[0])), numbers_(2 * limbs_), squareOfR_(limbs_)
{
    Limb* const m = numbers_.data();
    Limb* const one = m + limbs_;
    std::copy(modulus.begin(), modulus.end(), m);

    // From the highest power of two below m up to R.
    one[(bits_ - 1) / bitsOfLimb] = Limb{1} << (bits_ - 1) % bitsOfLimb;
    for (std::size_t i = bits_ - 1; i < limbs_ * bitsOfLimb; ++i)
        add(one, one, one);
}

const MontgomeryModulus::Limb* MontgomeryModulus::squareOfR() const
{
    std::call_once(squareOfROnce_, [this] { computeSquareOfR(); });
    return squareOfR_.data();
}

void MontgomeryModulus::computeSquareOfR() const
{
    Limb* const squareOfR = squareOfR_.data();
    // 2^c R, 2^2c R, 2^4c R, ... R R.
    std::size_t odd = limbs_ * bitsOfLimb;
    std::size_t squarings = 0;
    for (; odd % 2 == 0; odd /= 2)
        ++squarings;
    std::copy_n(one(), limbs_, squareOfR);
    for (std::size_t i = 0; i < odd; ++i)
        add(squareOfR, squareOfR, squareOfR);
    Scratch scratch(*this);
    for (std::size_t i = 0; i < squarings; ++i)
        square(squareOfR, squareOfR, scratch);
}

void MontgomeryModulus::multiply(Limb* result, const Limb* left, const Limb* right, Scratch& scratch) const
{
    Calls().multiply(scratch.limbs_.data(), left, right, limbs_);
    Calls().reduce(result, scratch.limbs_.data(), modulus(), negativeInverse_, limbs_);
}

void MontgomeryModulus::square(Limb* result, const Limb* number, Scratch& scratch) const
{
    Calls().square(scratch.limbs_.data(), number, limbs_);
    Calls().reduce(result, scratch.limbs_.data(), modulus(), negativeInverse_, limbs_);
}

void MontgomeryModulus::enter(Limb* result, const Limb* number, Scratch& scratch) const
{
    multiply(result, number, squareOfR(), scratch);
}

void MontgomeryModulus::leave(Limb* result, const Limb* number, Scratch& scratch) const
{
    Limb* const product = scratch.limbs_.data();
    std::copy_n(number, limbs_, product);
    std::fill_n(product + limbs_, limbs_, 0);
    Calls().reduce(result, product, modulus(), negativeInverse_, limbs_);
}

void MontgomeryModulus::add(Limb* result, const Limb* left, const Limb* right) const
{
    const Limb carry = limbs::Add(result, left, right, limbs_);
    const Mask enough = Mask::FromBit(carry) | ~limbs::Less(result, modulus(), limbs_);
    limbs::SubtractIf(enough, result, modulus(), limbs_);
}

void MontgomeryModulus::subtract(Limb* result, const Limb* left, const Limb* right) const
{
    const Limb borrow = limbs::Subtract(result, left, right, limbs_);
    limbs::AddIf(Mask::FromBit(borrow), result, modulus(), limbs_);
}

void MontgomeryModulus::enterWide(Limb* result, std::span<const Limb> number, Scratch& scratch) const
{
    // Horner's rule with digits of limbs_ limbs: each step multiplies by R.
    WipedArray<Limb> digit(limbs_);
    std::fill_n(result, limbs_, 0);
    for (std::size_t end = (number.size() + limbs_ - 1) / limbs_ * limbs_; end > 0; end -= limbs_) {
        enter(result, result, scratch);
        const std::span<const Limb> from = number.subspan(end - limbs_, std::min(limbs_, number.size() - (end - limbs_)));
        std::fill_n(digit.data(), limbs_, 0);
        std::copy(from.begin(), from.end(), digit.data());
        enter(digit.data(), digit.data(), scratch);
        add(result, result, digit.data());
    }
}

void MontgomeryModulus::powerMontgomery(Limb* result, const Limb* base, std::span<const Limb> exponent,
                                        std::size_t exponentBits) const
{
    if (const DigitCalls* const digits = DigitCallsFor(limbs_, 1)) {
        const MontgomeryPower power = powerOf(result, base, exponent);
        RaiseWithDigits(*digits, {&power, 1}, exponentBits);
        return;
    }
    Scratch scratch(*this);
    WipedArray<Limb> table(tableEntries * limbs_);
    WipedArray<Limb> entry(limbs_);
    const auto at = [&](std::size_t index) { return table.data() + index * limbs_; };
    std::copy_n(one(), limbs_, at(0));
    std::copy_n(base, limbs_, at(1));
    for (std::size_t i = 2; i < tableEntries; i += 2) {
        square(at(i), at(i / 2), scratch);
        multiply(at(i + 1), at(i), base, scratch);
    }
    std::size_t index = exponentBits == 0 ? 0 : (exponentBits - 1) / windowBits * windowBits;
    Gather(entry.data(), table.data(), limbs::BitsAt(exponent, index, windowBits), limbs_);
    std::copy_n(entry.data(), limbs_, result);
    while (index > 0) {
        index -= windowBits;
        for (std::size_t i = 0; i < windowBits; ++i)
            square(result, result, scratch);
        Gather(entry.data(), table.data(), limbs::BitsAt(exponent, index, windowBits), limbs_);
        multiply(result, result, entry.data(), scratch);
    }
}

MontgomeryPower MontgomeryModulus::powerOf(Limb* result, const Limb* base, std::span<const Limb> exponent) const
{
    return {result, base, exponent, modulus(), one(), negativeInverse_};
}

void MontgomeryModulus::PowerBothMontgomery(const Power& first, const Power& second, std::size_t exponentBits)
{
    const DigitCalls* const digits =
        first.modulus->limbs_ == second.modulus->limbs_ ? DigitCallsFor(first.modulus->limbs_, 2) : nullptr;
    if (digits == nullptr) {
        for (const Power* power : {&first, &second})
            power->modulus->powerMontgomery(power->result, power->base, power->exponent, exponentBits);
        return;
    }
    const MontgomeryPower powers[] = {first.modulus->powerOf(first.result, first.base, first.exponent),
                                      second.modulus->powerOf(second.result, second.base, second.exponent)};
    RaiseWithDigits(*digits, powers, exponentBits);
}

void MontgomeryModulus::power(Limb* result, const Limb* base, std::span<const Limb> exponent) const
{
    Scratch scratch(*this);
    WipedArray<Limb> entered(limbs_);
    enter(entered.data(), base, scratch);
    powerMontgomery(result, entered.data(), exponent, exponent.size() * bitsOfLimb);
    leave(result, result, scratch);
}

void MontgomeryModulus::powerPublic(Limb* result, const Limb* base, std::uint64_t exponent) const
{
    Scratch scratch(*this);
    WipedArray<Limb> plain(limbs_);
    WipedArray<Limb> entered(limbs_);
    std::copy_n(base, limbs_, plain.data());
    enter(entered.data(), base, scratch);
    std::copy_n(entered.data(), limbs_, result);
    int bit = 63;
    while ((exponent >> bit & 1) == 0)
        --bit;
    while (bit-- > 0) {
        square(result, result, scratch);
        if ((exponent >> bit & 1) == 0)
            continue;
        // The last multiplication of an odd exponent leaves Montgomery's form on the way.
        multiply(result, result, bit == 0 ? plain.data() : entered.data(), scratch);
    }
    if (exponent == 1 || (exponent & 1) == 0)
        leave(result, result, scratch);
}

bool MontgomeryModulus::invert(Limb* result, const Limb* number) const
{
    return constant_time::Declassify(limbs::Invert(result, number, modulus(), limbs_));
}

} // namespace ccrypto
