#pragma once

#include "core/containers/critical_section.h"
#include "crypto/bigint/montgomery.h"
#include "crypto/rsa/rsa.h"

#include <optional>

namespace ccrypto {

/// The numbers of a private key in the form that computations use.
struct RSAPrivateNumbers {
    using Limb = limbs::Limb;

    /// One prime and what belongs to it.
    struct Prime {
        explicit Prime(std::span<const Limb> prime) : modulus(prime), lessOne(modulus.limbs()), exponent(modulus.limbs()) {}

        MontgomeryModulus modulus;
        WipedArray<Limb> lessOne;  ///< p - 1
        WipedArray<Limb> exponent; ///< d mod (p - 1)
    };

    RSAPrivateNumbers(std::span<const Limb> primeP, std::span<const Limb> primeQ)
        : p(primeP), q(primeQ), coefficient(p.modulus.limbs())
    {
    }

    Prime p;
    Prime q;
    WipedArray<Limb> coefficient; ///< q^-1 mod p
};

/// r^e and r^-1 modulo n for a random r. The pair is squared from use to use, and renewed after 64 uses.
class RSABlinding {
public:
    using Limb = limbs::Limb;

    explicit RSABlinding(const MontgomeryModulus& n) : factor_(n.limbs()), remover_(n.limbs()) {}

    /// The next pair, both in Montgomery's form. \return false when there are no random bytes.
    bool next(const MontgomeryModulus& n, std::uint64_t publicExponent, Limb* factor, Limb* remover);

private:
    bool renew(const MontgomeryModulus& n, std::uint64_t publicExponent);

    static constexpr std::uint32_t maxUses = 64;

    CCryptoCS lock_{"RSA blinding"};
    WipedArray<Limb> factor_;
    WipedArray<Limb> remover_;
    std::uint32_t usesLeft_ = 0;
};

} // namespace ccrypto

struct CCryptoRSA::Key {
    using Limb = ccrypto::limbs::Limb;

    explicit Key(std::span<const Limb> modulus) : n(modulus) {}

    /// result = number^d mod n, both limbs() of n long, number < n. \return false, logged, without random bytes or when the result
    /// is wrong; it is then wiped.
    bool privateOperation(Limb* result, const Limb* number);

    CCryptoRSANumbers numbers;
    ccrypto::MontgomeryModulus n;
    std::uint64_t e = 0;
    std::optional<ccrypto::RSAPrivateNumbers> secret;
    std::optional<ccrypto::RSABlinding> blinding;
};
