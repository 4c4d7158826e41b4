#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"
#include "crypto/base/constant_time.h"
#include "crypto/bigint/primality.h"
#include "crypto/rsa/rsa.h"

#include <algorithm>
#include <bit>
#include <optional>

using namespace ccrypto;

using constant_time::Declassify;
using constant_time::Mask;
using limbs::bitsOfLimb;
using limbs::Limb;

namespace {

/// The square root of 2, times 2^63, rounded up: no prime begins with less, so that the product has all its bits.
constexpr Limb minTopLimb = 0xB504F333F9DE6485;
/// FIPS 186-5, A.1.3: the primes differ by more than 2^(bits / 2 - 100).
constexpr std::size_t maxEqualBits = 100;
/// Candidates looked at before the generator must be taken for broken: A.1.3 gives the second prime more than the first.
constexpr std::uint32_t candidatesPerBit = 20;

/// The search for the two primes of a key, and what follows from them. Every number has limbs for a prime, `count`.
class Generation {
public:
    Generation(std::uint32_t bits, std::uint32_t publicExponent, const CCryptoRSA::Progress& progress, ICryptoRandom& random)
        : bits_(bits / 2), count_(limbs::CountFor(bits_)), e_(publicExponent), progress_(progress), random_(random), p_(count_),
          q_(count_)
    {
    }

    /// \return false, with the reason set, when there will be no key.
    bool run()
    {
        do {
            if (!findPrime(p_, nullptr) || !findPrime(q_, &p_))
                return false;
        } while (!findPrivateExponent());
        return true;
    }

    const char* reason() const { return reason_; }

    CCryptoRSANumbers numbers() const
    {
        CCryptoRSANumbers numbers;
        WipedArray<Limb> modulus(2 * count_);
        limbs::Multiply(modulus.data(), p_.data(), count_, q_.data(), count_);
        numbers.modulus = toElement(modulus.data(), modulus.size(), 2 * bits_);
        numbers.publicExponent = element(static_cast<std::uint32_t>(e_));
        numbers.privateExponent = toElement(d_->data(), d_->size(), 2 * bits_);
        numbers.prime1 = toElement(p_.data(), count_, bits_);
        numbers.prime2 = toElement(q_.data(), count_, bits_);
        return numbers;
    }

private:
    static element toElement(const Limb* number, std::size_t count, std::size_t bits)
    {
        element bytes;
        bytes.resize(static_cast<std::uint32_t>((bits + 7) / 8));
        limbs::ToBytes({bytes.data(), bytes.length()}, number, count);
        return bytes;
    }

    bool stop(const char* reason)
    {
        reason_ = reason;
        return false;
    }

    bool findPrime(WipedArray<Limb>& prime, const WipedArray<Limb>* other)
    {
        for (std::uint32_t tries = 0; tries < candidatesPerBit * bits_; ++tries) {
            if (!drawCandidate(prime))
                return stop("no random bytes");
            if (other != nullptr && isClose(prime, *other))
                continue;
            ++candidates_;
            if (Declassify(primality::HasSmallDivisor(prime.data(), count_)) || !suitsExponent(prime))
                continue;
            if (progress_ && !progress_(candidates_))
                return stop("it was cancelled");
            const MontgomeryModulus modulus(std::span<const Limb>(prime.data(), count_));
            switch (primality::MillerRabin(modulus, primality::RoundsFor(bits_), random_)) {
            case primality::Verdict::prime:
                return true;
            case primality::Verdict::composite:
                break;
            case primality::Verdict::noRandomBytes:
                return stop("no random bytes");
            }
        }
        return stop("no prime was found");
    }

    /// An odd number of bits_ bits, above the square root of 2^(2 bits_ - 1).
    bool drawCandidate(WipedArray<Limb>& candidate)
    {
        const std::size_t shift = count_ * bitsOfLimb - bits_;
        for (;;) {
            if (!random_.generate({reinterpret_cast<std::uint8_t*>(candidate.data()), count_ * sizeof(Limb)}))
                return false;
            // The highest limb decides while it is full.
            Limb& top = candidate[count_ - 1];
            top |= Limb{1} << 63;
            const bool taken = !Declassify(Mask::Less(top, minTopLimb));
            for (std::size_t i = 0; i < shift; ++i)
                limbs::HalveWith(0, candidate.data(), count_);
            candidate[0] |= 1;
            if (taken)
                return true;
        }
    }

    bool isClose(const WipedArray<Limb>& left, const WipedArray<Limb>& right) const
    {
        WipedArray<Limb> distance(count_);
        WipedArray<Limb> opposite(count_);
        const Limb below = limbs::Subtract(distance.data(), left.data(), right.data(), count_);
        limbs::Subtract(opposite.data(), right.data(), left.data(), count_);
        limbs::CopyIf(Mask::FromBit(below), distance.data(), opposite.data(), count_);
        return Declassify(limbs::BitLength(distance.data(), count_) <= bits_ - maxEqualBits);
    }

    /// Whether p - 1 and e have no divisor in common.
    bool suitsExponent(const WipedArray<Limb>& prime) const
    {
        WipedArray<Limb> lessOne(count_);
        std::copy_n(prime.data(), count_, lessOne.data());
        lessOne[0] ^= 1;
        Limb rest = 0;
        limbs::Reduce(&rest, lessOne.data(), count_, &e_, 1);
        Limb divisor = 0;
        limbs::Gcd(&divisor, &rest, &e_, 1);
        return Declassify(divisor) == 1;
    }

    /// d = e^-1 modulo the least common multiple m of p - 1 and q - 1. \return false when the primes are of no use.
    bool findPrivateExponent()
    {
        limbs::SwapIf(limbs::Less(p_.data(), q_.data(), count_), p_.data(), q_.data(), count_);
        WipedArray<Limb> p1(count_);
        WipedArray<Limb> q1(count_);
        std::copy_n(p_.data(), count_, p1.data());
        std::copy_n(q_.data(), count_, q1.data());
        p1[0] ^= 1;
        q1[0] ^= 1;
        WipedArray<Limb> common(count_);
        limbs::Gcd(common.data(), p1.data(), q1.data(), count_);
        // What divides p - 1 and q - 1 divides n - 1, too, and is small: it may be known.
        if (!Declassify(limbs::IsZero(common.data() + 1, count_ - 1)))
            return false;
        const Limb divisor = Declassify(common[0]);
        const int twos = std::countr_zero(divisor);
        for (int i = 0; i < twos; ++i)
            limbs::HalveWith(0, p1.data(), count_);
        limbs::DivideExactly(p1.data(), count_, divisor >> twos);
        WipedArray<Limb> multiple(2 * count_);
        limbs::Multiply(multiple.data(), p1.data(), count_, q1.data(), count_);

        // d e = 1 + k m, with k = -m^-1 modulo e.
        Limb rest = 0;
        Limb inverse = 0;
        limbs::Reduce(&rest, multiple.data(), 2 * count_, &e_, 1);
        if (!Declassify(limbs::Invert(&inverse, &rest, &e_, 1)))
            return false;
        d_.emplace(2 * count_ + 1);
        (*d_)[2 * count_] = limbs::AddProduct(d_->data(), multiple.data(), 2 * count_, e_ - inverse);
        limbs::AddWord(d_->data(), 2 * count_ + 1, 1);
        limbs::DivideExactly(d_->data(), 2 * count_ + 1, e_);
        return Declassify(limbs::BitLength(d_->data(), 2 * count_ + 1) > bits_);
    }

    std::size_t bits_;
    std::size_t count_;
    Limb e_;
    const CCryptoRSA::Progress& progress_;
    ICryptoRandom& random_;
    WipedArray<Limb> p_;
    WipedArray<Limb> q_;
    std::optional<WipedArray<Limb>> d_;
    std::uint32_t candidates_ = 0;
    const char* reason_ = "";
};

} // namespace

std::unique_ptr<CCryptoRSA> CCryptoRSA::Generate(std::uint32_t bits, std::uint32_t publicExponent, const Progress& progress,
                                                 ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoRSA::Generate", ccrypto::LoggerMode::resultExpected, "%u bits", bits);

    const auto refuse = [&](const char* reason) {
        return logger.fail(std::unique_ptr<CCryptoRSA>(), "No RSA key was generated: %s", reason);
    };
    if (bits < minBits || bits > maxBits || bits % 2 != 0)
        return refuse("the size is not allowed");
    if (publicExponent <= 65536 || publicExponent % 2 == 0)
        return refuse("the public exponent is not allowed");
    Generation generation(bits, publicExponent, progress, random);
    if (!generation.run())
        return refuse(generation.reason());
    std::unique_ptr<CCryptoRSA> key = FromPrivate(generation.numbers());
    // FIPS 186-5, A.1.1: the two halves of a new pair are tried together; a private operation checks its own result.
    constexpr std::uint8_t two[] = {2};
    if (key == nullptr || key->privateOperation(two).isEmpty())
        return refuse("the new key does not work");
    logger.setResult(true);
    return key;
}
