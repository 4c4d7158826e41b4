#include "crypto/bigint/montgomery_digits.h"

#include "core/memory/wiped.h"

#include <algorithm>

namespace ccrypto {

using constant_time::Mask;
using limbs::Limb;

namespace {

/// The numbers of powers that are raised side by side.
class SideBySide {
public:
    SideBySide(const DigitCalls& calls, std::span<const MontgomeryPower> powers)
        : calls_(calls), powers_(powers), inverses_(calls.moduli), indexes_(calls.moduli), doubled_(calls.limbs + 1),
          numbers_((setsBeforeTable + DigitCalls::tableEntries) * calls.moduli * stride())
    {
        for (std::size_t p = 0; p < calls_.moduli; ++p) {
            inverses_[p] = powers_[p].negativeInverse & ((Limb{1} << DigitCalls::bitsOfDigit) - 1);
            toDigits(modulus(), p, powers_[p].modulus);
        }
    }

    void raise(std::size_t exponentBits)
    {
        fillTable();
        std::size_t index = exponentBits == 0 ? 0 : (exponentBits - 1) / DigitCalls::windowBits * DigitCalls::windowBits;
        gather(result(), index);
        while (index > 0) {
            index -= DigitCalls::windowBits;
            for (std::size_t i = 0; i < DigitCalls::windowBits; ++i)
                multiply(result(), result(), result());
            gather(other(), index);
            multiply(result(), result(), other());
        }
        // Back to R: times R mod m, divided by R'.
        for (std::size_t p = 0; p < calls_.moduli; ++p)
            toDigits(other(), p, powers_[p].one);
        multiply(result(), result(), other());
        for (std::size_t p = 0; p < calls_.moduli; ++p)
            fromDigits(powers_[p], result() + p * stride());
    }

private:
    static constexpr std::size_t setsBeforeTable = 3;

    std::size_t stride() const { return DigitCalls::Vectors(calls_.limbs) * DigitCalls::digitsOfVector; }
    Limb* set(std::size_t index) { return numbers_.data() + index * calls_.moduli * stride(); }
    Limb* modulus() { return set(0); }
    Limb* result() { return set(1); }
    Limb* other() { return set(2); }
    Limb* table(std::size_t entry) { return set(setsBeforeTable + entry); }

    void multiply(Limb* product, const Limb* left, const Limb* right)
    {
        calls_.multiply(product, left, right, modulus(), inverses_.data());
    }

    void gather(Limb* target, std::size_t index)
    {
        for (std::size_t p = 0; p < calls_.moduli; ++p)
            indexes_[p] = limbs::BitsAt(powers_[p].exponent, index, DigitCalls::windowBits);
        calls_.gather(target, table(0), indexes_.data());
    }

    /// Number `p` of a set.
    void toDigits(Limb* target, std::size_t p, const Limb* number)
    {
        for (std::size_t i = 0; i < stride(); ++i)
            target[p * stride() + i] = limbs::BitsAt({number, calls_.limbs}, i * DigitCalls::bitsOfDigit, DigitCalls::bitsOfDigit);
    }

    /// The digits' number is below twice the modulus.
    void fromDigits(const MontgomeryPower& power, const Limb* number)
    {
        std::fill_n(doubled_.data(), doubled_.size(), 0);
        for (std::size_t i = 0; i < DigitCalls::Digits(calls_.limbs); ++i) {
            const std::size_t limb = i * DigitCalls::bitsOfDigit / limbs::bitsOfLimb;
            const std::size_t shift = i * DigitCalls::bitsOfDigit % limbs::bitsOfLimb;
            doubled_[limb] |= number[i] << shift;
            if (shift + DigitCalls::bitsOfDigit > limbs::bitsOfLimb && limb < calls_.limbs)
                doubled_[limb + 1] |= number[i] >> (limbs::bitsOfLimb - shift);
        }
        reduceOnce(doubled_.data(), doubled_[calls_.limbs], power.modulus);
        std::copy_n(doubled_.data(), calls_.limbs, power.result);
    }

    void reduceOnce(Limb* number, Limb top, const Limb* m) const
    {
        limbs::SubtractIf(Mask::IsNotZero(top) | ~limbs::Less(number, m, calls_.limbs), number, m, calls_.limbs);
    }

    /// The powers 0 to 31 of the bases, with R' in place of R.
    void fillTable()
    {
        // R'^2 / R mod m: R mod m, doubled.
        for (std::size_t p = 0; p < calls_.moduli; ++p) {
            std::copy_n(powers_[p].one, calls_.limbs, doubled_.data());
            for (std::size_t bit = 2 * limbs::bitsOfLimb * calls_.limbs;
                 bit < 2 * DigitCalls::bitsOfDigit * DigitCalls::Digits(calls_.limbs); ++bit)
                reduceOnce(doubled_.data(), limbs::Double(doubled_.data(), calls_.limbs), powers_[p].modulus);
            toDigits(other(), p, doubled_.data());
            toDigits(table(0), p, powers_[p].one);
            toDigits(table(1), p, powers_[p].base);
        }
        multiply(table(0), table(0), other());
        multiply(table(1), table(1), other());
        for (std::size_t i = 2; i < DigitCalls::tableEntries; ++i)
            multiply(table(i), table(i / 2), table((i + 1) / 2));
    }

    const DigitCalls& calls_;
    std::span<const MontgomeryPower> powers_;
    WipedArray<Limb> inverses_;
    WipedArray<Limb> indexes_;
    WipedArray<Limb> doubled_; ///< a number below twice a modulus
    WipedArray<Limb> numbers_; ///< sets: the moduli, the results, another one, the table
};

} // namespace

std::span<const Variant<std::span<const DigitCalls>>> DigitVariants()
{
    static const Variant<std::span<const DigitCalls>> variants[] = {
        {"none", cpu::none, {}},
        {"ifma", cpu::ifma, digitsWithIfma},
    };
    return variants;
}

const DigitCalls* FindDigitCalls(std::span<const DigitCalls> variant, std::size_t limbs, std::size_t moduli)
{
    const auto found =
        std::ranges::find_if(variant, [=](const DigitCalls& calls) { return calls.limbs == limbs && calls.moduli == moduli; });
    return found == variant.end() ? nullptr : &*found;
}

void RaiseWithDigits(const DigitCalls& calls, std::span<const MontgomeryPower> powers, std::size_t exponentBits)
{
    SideBySide(calls, powers).raise(exponentBits);
}

} // namespace ccrypto
