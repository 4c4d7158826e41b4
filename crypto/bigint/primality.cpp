#include "crypto/bigint/primality.h"

#include "core/memory/wiped.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace ccrypto {

using constant_time::Declassify;
using constant_time::Mask;
using limbs::Limb;

namespace {

constexpr std::uint32_t sieveLimit = 8192;
constexpr std::uint32_t roundsForAnyNumber = 64;

/// Small primes whose product fits a limb.
struct PrimeGroup {
    struct Divisor {
        Limb inverse; ///< modulo 2^64
        Limb largest; ///< the largest quotient
    };

    Limb product = 1;
    Limb inverse = 1;
    std::vector<Divisor> divisors;
};

std::vector<PrimeGroup> MakeGroups()
{
    std::vector<bool> composite(sieveLimit);
    std::vector<PrimeGroup> groups(1);
    for (std::uint32_t prime = 3; prime < sieveLimit; prime += 2) {
        if (composite[prime])
            continue;
        for (std::uint32_t multiple = prime * prime; multiple < sieveLimit; multiple += 2 * prime)
            composite[multiple] = true;
        if (groups.back().product > ~Limb{0} / prime)
            groups.emplace_back();
        PrimeGroup& group = groups.back();
        group.product *= prime;
        group.inverse = limbs::InverseModuloLimb(group.product);
        group.divisors.push_back({limbs::InverseModuloLimb(prime), ~Limb{0} / prime});
    }
    return groups;
}

/// r with number = -r 2^(64 count) modulo `modulus`: divided from the low end, which takes products alone.
Limb RemainderFromBelow(const Limb* number, std::size_t count, Limb modulus, Limb inverse)
{
    Limb rest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const limbs::DoubleLimb difference = limbs::DoubleLimb{number[i]} - rest;
        const Limb quotient = static_cast<Limb>(difference) * inverse;
        rest = static_cast<Limb>(limbs::DoubleLimb{quotient} * modulus >> limbs::bitsOfLimb) +
               (static_cast<Limb>(difference >> limbs::bitsOfLimb) & 1);
    }
    return rest;
}

/// A base from 2 to n - 2, in Montgomery's form.
bool DrawBase(Limb* base, const MontgomeryModulus& n, const Limb* minusOne, MontgomeryModulus::Scratch& scratch,
              ICryptoRandom& random)
{
    WipedArray<Limb> bits(n.limbs() + 1);
    for (;;) {
        if (!random.generate({reinterpret_cast<std::uint8_t*>(bits.data()), bits.size() * sizeof(Limb)}))
            return false;
        n.enterWide(base, {bits.data(), bits.size()}, scratch);
        const Mask useless =
            limbs::IsZero(base, n.limbs()) | limbs::Equal(base, n.one(), n.limbs()) | limbs::Equal(base, minusOne, n.limbs());
        if (!Declassify(useless))
            return true;
    }
}

} // namespace

namespace primality {

Mask HasSmallDivisor(const Limb* number, std::size_t count)
{
    static const std::vector<PrimeGroup> groups = MakeGroups();
    Mask found = Mask::False();
    for (const PrimeGroup& group : groups) {
        const Limb rest = RemainderFromBelow(number, count, group.product, group.inverse);
        // A multiple divides to its quotient modulo 2^64; any other number, to something larger than all quotients.
        for (const PrimeGroup::Divisor& divisor : group.divisors)
            found |= ~Mask::Less(divisor.largest, rest * divisor.inverse);
    }
    return found;
}

Verdict MillerRabin(const MontgomeryModulus& number, std::uint32_t rounds, ICryptoRandom& random)
{
    const std::size_t count = number.limbs();
    MontgomeryModulus::Scratch scratch(number);
    WipedArray<Limb> minusOne(count);
    WipedArray<Limb> power(count);
    number.subtract(minusOne.data(), minusOne.data(), number.one());

    // n - 1 = 2^twos odd
    WipedArray<Limb> odd(count);
    std::copy_n(number.modulus(), count, odd.data());
    odd[0] ^= 1;
    std::size_t twos = 0;
    while (Declassify(odd[0] & 1) == 0) {
        limbs::HalveWith(0, odd.data(), count);
        ++twos;
    }
    for (std::uint32_t round = 0; round < rounds; ++round) {
        if (!DrawBase(power.data(), number, minusOne.data(), scratch, random))
            return Verdict::noRandomBytes;
        number.powerMontgomery(power.data(), power.data(), {odd.data(), count}, number.bits());
        Mask passed = limbs::Equal(power.data(), number.one(), count) | limbs::Equal(power.data(), minusOne.data(), count);
        for (std::size_t i = 1; i < twos; ++i) {
            number.square(power.data(), power.data(), scratch);
            passed |= limbs::Equal(power.data(), minusOne.data(), count);
        }
        if (!Declassify(passed))
            return Verdict::composite;
    }
    return Verdict::prime;
}

std::uint32_t RoundsFor(std::size_t bits)
{
    if (bits >= 1536)
        return 4;
    return bits >= 1024 ? 5 : 9;
}

} // namespace primality

bool IsProbablePrime(const CCryptoBigInteger& number, ICryptoRandom& random)
{
    if (!number.isValid() || number.isNegative() || number.bits() > MontgomeryModulus::maxBits)
        return false;
    if (number < CCryptoBigInteger(sieveLimit)) {
        const std::uint64_t small = number.toWord();
        for (std::uint64_t divisor = 2; divisor * divisor <= small; ++divisor)
            if (small % divisor == 0)
                return false;
        return small > 1;
    }
    if (!number.isOdd())
        return false;
    const element bytes = number.toBytes();
    WipedArray<Limb> value(limbs::CountFor(number.bits()));
    limbs::FromBytes(value.data(), value.size(), bytes.bytes());
    if (Declassify(primality::HasSmallDivisor(value.data(), value.size())))
        return false;
    const MontgomeryModulus modulus(std::span<const Limb>(value.data(), value.size()));
    return primality::MillerRabin(modulus, roundsForAnyNumber, random) == primality::Verdict::prime;
}

} // namespace ccrypto
