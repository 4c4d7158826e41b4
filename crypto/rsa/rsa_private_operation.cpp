#include "core/log/log_writers.h"
#include "core/platform/secure_wipe.h"
#include "crypto/rsa/rsa_key.h"

#include <algorithm>

using namespace ccrypto;

using constant_time::Mask;
using limbs::Limb;

namespace {

/// Bits of the random multiple of p - 1 that is added to an exponent.
constexpr std::size_t exponentBlindingBits = 32;

bool RandomBits(Limb& bits, std::size_t count)
{
    std::uint8_t bytes[sizeof bits];
    const bool there = ICryptoRandom::Instance().generate(bytes);
    std::copy_n(bytes, sizeof bits, reinterpret_cast<std::uint8_t*>(&bits));
    bits >>= limbs::bitsOfLimb - count;
    constant_time::ClassifyBytes(&bits, sizeof bits);
    platform::SecureWipe(bytes);
    return there;
}

/// A random number modulo n, in Montgomery's form: 64 bits more than n has are reduced.
bool RandomBelow(Limb* result, const MontgomeryModulus& n, MontgomeryModulus::Scratch& scratch)
{
    WipedArray<Limb> bits(n.limbs() + 1);
    if (!ICryptoRandom::Instance().generate({reinterpret_cast<std::uint8_t*>(bits.data()), bits.size() * sizeof(Limb)}))
        return false;
    constant_time::ClassifyBytes(bits.data(), bits.size() * sizeof(Limb));
    n.enterWide(result, {bits.data(), bits.size()}, scratch);
    return true;
}

/// What is raised modulo one of the primes: a number of any length to d, blinded.
class BlindedPower {
public:
    explicit BlindedPower(const RSAPrivateNumbers::Prime& prime)
        : prime_(prime), exponent_(prime.modulus.limbs() + 1), base_(prime.modulus.limbs())
    {
    }

    /// \return false without random bytes.
    bool prepare(std::span<const Limb> number)
    {
        const MontgomeryModulus& p = prime_.modulus;
        Limb multiple = 0;
        if (!RandomBits(multiple, exponentBlindingBits))
            return false;
        std::copy_n(prime_.exponent.data(), p.limbs(), exponent_.data());
        exponent_[p.limbs()] = limbs::AddProduct(exponent_.data(), prime_.lessOne.data(), p.limbs(), multiple);
        platform::SecureWipe(&multiple, sizeof multiple);
        MontgomeryModulus::Scratch scratch(p);
        p.enterWide(base_.data(), number, scratch);
        return true;
    }

    /// The power is in Montgomery form.
    MontgomeryModulus::Power to(Limb* result) const
    {
        return {&prime_.modulus, result, base_.data(), {exponent_.data(), exponent_.size()}};
    }

private:
    const RSAPrivateNumbers::Prime& prime_;
    WipedArray<Limb> exponent_;
    WipedArray<Limb> base_;
};

/// The result from those modulo p and q (RFC 8017, 5.1.2). `result` has as many limbs as p and q together.
bool RaiseByPrimes(Limb* result, std::span<const Limb> number, const RSAPrivateNumbers& secret)
{
    const MontgomeryModulus& p = secret.p.modulus;
    const MontgomeryModulus& q = secret.q.modulus;
    WipedArray<Limb> byP(p.limbs());
    WipedArray<Limb> byQ(q.limbs());
    WipedArray<Limb> other(p.limbs());
    BlindedPower powerOfP(secret.p);
    BlindedPower powerOfQ(secret.q);
    if (!powerOfP.prepare(number) || !powerOfQ.prepare(number))
        return false;
    MontgomeryModulus::PowerBothMontgomery(powerOfP.to(byP.data()), powerOfQ.to(byQ.data()),
                                           std::max(p.bits(), q.bits()) + exponentBlindingBits);
    MontgomeryModulus::Scratch scratchP(p);
    MontgomeryModulus::Scratch scratchQ(q);
    q.leave(byQ.data(), byQ.data(), scratchQ);
    p.enterWide(other.data(), {byQ.data(), byQ.size()}, scratchP);
    p.subtract(byP.data(), byP.data(), other.data());
    p.multiply(byP.data(), byP.data(), secret.coefficient.data(), scratchP); // the coefficient is plain, and so is the product
    limbs::Multiply(result, byP.data(), p.limbs(), q.modulus(), q.limbs());
    const Limb carry = limbs::Add(result, result, byQ.data(), q.limbs());
    limbs::AddWord(result + q.limbs(), p.limbs(), carry);
    return true;
}

} // namespace

namespace ccrypto {

bool RSABlinding::renew(const MontgomeryModulus& n, std::uint64_t publicExponent)
{
    MontgomeryModulus::Scratch scratch(n);
    if (!RandomBelow(factor_.data(), n, scratch))
        return false;
    n.leave(factor_.data(), factor_.data(), scratch);
    if (!n.invert(remover_.data(), factor_.data()))
        return false;
    n.enter(remover_.data(), remover_.data(), scratch);
    n.powerPublic(factor_.data(), factor_.data(), publicExponent);
    n.enter(factor_.data(), factor_.data(), scratch);
    usesLeft_ = maxUses;
    return true;
}

bool RSABlinding::next(const MontgomeryModulus& n, std::uint64_t publicExponent, Limb* factor, Limb* remover)
{
    const CCryptoCSLock lock(&lock_, LockMode::quiet);
    if (usesLeft_ == 0) {
        if (!renew(n, publicExponent))
            return false;
    } else {
        MontgomeryModulus::Scratch scratch(n);
        n.square(factor_.data(), factor_.data(), scratch);
        n.square(remover_.data(), remover_.data(), scratch);
    }
    --usesLeft_;
    std::copy_n(factor_.data(), n.limbs(), factor);
    std::copy_n(remover_.data(), n.limbs(), remover);
    return true;
}

} // namespace ccrypto

bool CCryptoRSA::Key::privateOperation(Limb* result, const Limb* number)
{
    const std::size_t count = n.limbs();
    MontgomeryModulus::Scratch scratch(n);
    WipedArray<Limb> factor(count);
    WipedArray<Limb> remover(count);
    WipedArray<Limb> blinded(count);
    WipedArray<Limb> raised(std::max(count, secret->p.modulus.limbs() + secret->q.modulus.limbs()));
    if (!blinding->next(n, e, factor.data(), remover.data())) {
        WriteErrorEx_G("RSA: no random bytes for blinding");
        return false;
    }
    n.multiply(blinded.data(), number, factor.data(), scratch);
    if (!RaiseByPrimes(raised.data(), {blinded.data(), count}, *secret)) {
        WriteErrorEx_G("RSA: no random bytes for blinding");
        return false;
    }
    n.multiply(raised.data(), raised.data(), remover.data(), scratch);

    // A faulty result would reveal the primes.
    n.powerPublic(blinded.data(), raised.data(), e);
    if (!constant_time::Declassify(limbs::Equal(blinded.data(), number, count))) {
        WriteErrorEx_G("RSA: the result of a private operation is wrong, and is not given away");
        return false;
    }
    std::copy_n(raised.data(), count, result);
    return true;
}
