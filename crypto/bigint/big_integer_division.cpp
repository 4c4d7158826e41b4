#include "core/platform/secure_wipe.h"
#include "crypto/bigint/big_integer.h"
#include "crypto/bigint/limbs.h"
#include "crypto/bigint/montgomery.h"

#include <algorithm>
#include <bit>

using namespace ccrypto;

using limbs::bitsOfLimb;
using limbs::Limb;

namespace {

/// Two limbs divided by one above the higher of them.
Limb DivideTwoLimbs(Limb high, Limb low, Limb divisor, Limb& remainder)
{
    Limb quotient;
    asm("divq %4" : "=a"(quotient), "=d"(remainder) : "0"(low), "1"(high), "r"(divisor) : "cc");
    return quotient;
}

/// number /= divisor. \return the remainder.
Limb DivideByWord(std::vector<Limb>& number, Limb divisor)
{
    Limb remainder = 0;
    for (std::size_t i = number.size(); i-- > 0;)
        number[i] = DivideTwoLimbs(remainder, number[i], divisor, remainder);
    return remainder;
}

/// The digit of the quotient, or one more, that the three highest limbs of the rest and the two highest of the divisor suggest
/// (Knuth, The Art of Computer Programming 2, 4.3.1, step D3).
Limb SuggestDigit(const Limb* restTop, Limb divisorTop, Limb divisorNext)
{
    if (restTop[0] >= divisorTop)
        return ~Limb{0};
    Limb left = 0;
    Limb digit = DivideTwoLimbs(restTop[0], restTop[-1], divisorTop, left);
    limbs::DoubleLimb over = limbs::DoubleLimb{digit} * divisorNext;
    while (over > (limbs::DoubleLimb{left} << bitsOfLimb | restTop[-2])) {
        --digit;
        over -= divisorNext;
        left += divisorTop;
        if (left < divisorTop)
            break;
    }
    return digit;
}

/// Algorithm D. The divisor has two limbs or more, its highest bit is set; `rest` has more limbs, the highest below the divisor's.
/// Leaves the remainder in `rest`.
std::vector<Limb> DivideLong(std::vector<Limb>& rest, const std::vector<Limb>& divisor)
{
    const std::size_t count = divisor.size();
    std::vector<Limb> quotient(rest.size() - count);
    for (std::size_t i = quotient.size(); i-- > 0;) {
        Limb digit = SuggestDigit(&rest[i + count], divisor[count - 1], divisor[count - 2]);
        const Limb borrow = limbs::SubtractProduct(&rest[i], divisor.data(), count, digit);
        Limb& top = rest[i + count];
        bool below = top < borrow;
        top -= borrow;
        // One too large, seldom; a digit suggested as all ones even two.
        while (below) {
            --digit;
            top += limbs::Add(&rest[i], &rest[i], divisor.data(), count);
            below = top != 0;
        }
        quotient[i] = digit;
    }
    return quotient;
}

} // namespace

bool CCryptoBigInteger::Divide(const CCryptoBigInteger& dividend, const CCryptoBigInteger& divisor, CCryptoBigInteger& quotient,
                               CCryptoBigInteger& remainder)
{
    if (!dividend.valid_ || !divisor.valid_ || divisor.isZero()) {
        quotient = divisor.isZero() ? Refuse("division by zero") : Invalid();
        remainder = Invalid();
        return false;
    }
    const bool negative = dividend.negative_;
    const bool differ = dividend.negative_ != divisor.negative_;
    if (dividend.limbs_.size() < divisor.limbs_.size()) {
        remainder = dividend;
        quotient = {};
        return true;
    }
    if (divisor.limbs_.size() == 1) {
        const Limb word = divisor.limbs_[0];
        Limbs result = dividend.limbs_;
        const Limb rest = DivideByWord(result, word);
        quotient = CCryptoBigInteger(std::move(result), differ);
        remainder = CCryptoBigInteger(Limbs{rest}, negative);
        return true;
    }
    // Shifted so that the divisor's highest bit is set.
    const auto shift = static_cast<std::uint32_t>(std::countl_zero(divisor.limbs_.back()));
    const std::size_t count = divisor.limbs_.size();
    Limbs scaled(count);
    Limbs rest(dividend.limbs_.size() + 1);
    const auto shiftInto = [shift](Limbs& target, const Limbs& source) {
        for (std::size_t i = 0; i < target.size(); ++i) {
            const Limb low = i < source.size() ? source[i] << shift : 0;
            target[i] = shift != 0 && i != 0 ? low | source[i - 1] >> (bitsOfLimb - shift) : low;
        }
    };
    shiftInto(scaled, divisor.limbs_);
    shiftInto(rest, dividend.limbs_);
    Limbs result = DivideLong(rest, scaled);
    rest.resize(count);
    quotient = CCryptoBigInteger(std::move(result), differ);
    remainder = CCryptoBigInteger(std::move(rest), negative) >> shift;
    platform::SecureWipe(scaled.data(), scaled.size() * sizeof(Limb));
    return true;
}

CCryptoBigInteger CCryptoBigInteger::operator/(const CCryptoBigInteger& divisor) const
{
    CCryptoBigInteger quotient;
    CCryptoBigInteger remainder;
    Divide(*this, divisor, quotient, remainder);
    return quotient;
}

CCryptoBigInteger CCryptoBigInteger::operator%(const CCryptoBigInteger& divisor) const
{
    CCryptoBigInteger quotient;
    CCryptoBigInteger remainder;
    Divide(*this, divisor, quotient, remainder);
    return remainder;
}

CCryptoBigInteger CCryptoBigInteger::modulo(const CCryptoBigInteger& modulus) const
{
    if (modulus.isNegative())
        return Refuse("the modulus is negative");
    CCryptoBigInteger rest = *this % modulus;
    return rest.isNegative() ? rest + modulus : rest;
}

CCryptoBigInteger CCryptoBigInteger::Gcd(const CCryptoBigInteger& left, const CCryptoBigInteger& right)
{
    CCryptoBigInteger larger = left.absolute();
    CCryptoBigInteger smaller = right.absolute();
    if (!larger.valid_ || !smaller.valid_)
        return Invalid();
    while (!smaller.isZero()) {
        CCryptoBigInteger rest = larger % smaller;
        larger = std::move(smaller);
        smaller = std::move(rest);
    }
    return larger;
}

CCryptoBigInteger CCryptoBigInteger::modInverse(const CCryptoBigInteger& modulus) const
{
    if (!valid_ || !modulus.valid_)
        return Invalid();
    if (modulus <= CCryptoBigInteger(1))
        return Refuse("a modulus below 2 has no inverses");
    // high = coefficient * this, low = next * this, both modulo the modulus.
    CCryptoBigInteger high = modulus;
    CCryptoBigInteger low = modulo(modulus);
    CCryptoBigInteger coefficient;
    CCryptoBigInteger next = 1;
    while (!low.isZero()) {
        CCryptoBigInteger quotient;
        CCryptoBigInteger rest;
        Divide(high, low, quotient, rest);
        high = std::move(low);
        low = std::move(rest);
        CCryptoBigInteger following = coefficient - quotient * next;
        coefficient = std::move(next);
        next = std::move(following);
    }
    if (high != CCryptoBigInteger(1))
        return Refuse("the inverse does not exist");
    return coefficient.modulo(modulus);
}

CCryptoBigInteger CCryptoBigInteger::modPower(const CCryptoBigInteger& exponent, const CCryptoBigInteger& modulus) const
{
    if (!valid_ || !exponent.valid_ || !modulus.valid_)
        return Invalid();
    if (modulus <= CCryptoBigInteger() || exponent.isNegative())
        return Refuse("a power needs a modulus above zero and an exponent that is not negative");
    if (modulus.bits() > MontgomeryModulus::maxBits)
        return Refuse("the modulus of a power is too long");
    const CCryptoBigInteger base = modulo(modulus);
    if (modulus.isOdd() && modulus.bits() > 1) {
        const MontgomeryModulus montgomery(modulus.limbs_);
        Limbs result(montgomery.limbs());
        std::copy(base.limbs_.begin(), base.limbs_.end(), result.begin());
        montgomery.power(result.data(), result.data(), exponent.limbs_);
        return CCryptoBigInteger(std::move(result), false);
    }
    CCryptoBigInteger result = CCryptoBigInteger(1).modulo(modulus);
    for (std::uint32_t i = exponent.bits(); i-- > 0;) {
        result = (result * result).modulo(modulus);
        if (exponent.bit(i))
            result = (result * base).modulo(modulus);
    }
    return result;
}
