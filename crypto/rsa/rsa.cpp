#include "crypto/rsa/rsa.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/rsa/rsa_key.h"

#include <algorithm>

using namespace ccrypto;

using constant_time::Declassify;
using constant_time::Mask;
using limbs::Limb;

namespace {

/// A prime shorter than a quarter of the modulus is no prime of a key that anybody made in earnest.
constexpr std::size_t minPrimePart = 4;

std::span<const std::uint8_t> WithoutZeros(const element& number)
{
    std::span<const std::uint8_t> bytes = number.bytes();
    while (!bytes.empty() && Declassify(bytes.front()) == 0)
        bytes = bytes.subspan(1);
    return bytes;
}

/// Bits of a number whose length is public.
std::size_t BitsOf(std::span<const std::uint8_t> number)
{
    if (number.empty())
        return 0;
    const Limb top = number.front();
    return 8 * (number.size() - 1) + Declassify(limbs::BitLength(&top, 1));
}

element ToElement(std::span<const std::uint8_t> bytes)
{
    return element(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

/// A number in as few bytes as it takes; how many is public.
element Shortest(const Limb* number, std::size_t count)
{
    element bytes;
    bytes.resize(static_cast<std::uint32_t>((Declassify(limbs::BitLength(number, count)) + 7) / 8));
    limbs::ToBytes({bytes.data(), bytes.length()}, number, count);
    return bytes;
}

const char* WrongPublicNumbers(std::span<const std::uint8_t> n, std::span<const std::uint8_t> e)
{
    if (BitsOf(n) < CCryptoRSA::minBits)
        return "the modulus is too short";
    if (BitsOf(n) > CCryptoRSA::maxBits)
        return "the modulus is too long";
    if ((n.back() & 1) == 0)
        return "the modulus is even";
    if (e.size() > sizeof(std::uint64_t))
        return "the public exponent is too long";
    if (e.empty() || (e.back() & 1) == 0 || (e.size() == 1 && e.front() == 1))
        return "the public exponent is even or 1";
    return nullptr;
}

/// lessOne and exponent from d. \return true when they fit e: exponent * e = 1 modulo p - 1.
Mask FillPrime(RSAPrivateNumbers::Prime& prime, std::span<const Limb> d, std::uint64_t e)
{
    const std::size_t count = prime.modulus.limbs();
    std::copy_n(prime.modulus.modulus(), count, prime.lessOne.data());
    limbs::SubtractWord(prime.lessOne.data(), count, 1);
    limbs::Reduce(prime.exponent.data(), d.data(), d.size(), prime.lessOne.data(), count);

    WipedArray<Limb> product(count + 1);
    product[count] = limbs::AddProduct(product.data(), prime.exponent.data(), count, e);
    WipedArray<Limb> rest(count);
    limbs::Reduce(rest.data(), product.data(), product.size(), prime.lessOne.data(), count);
    return Mask::Equal(rest[0], 1) & limbs::IsZero(rest.data() + 1, count - 1);
}

/// Whether an optional number of the caller's is the one computed.
bool IsSame(const element& given, const WipedArray<Limb>& computed)
{
    const std::span<const std::uint8_t> bytes = WithoutZeros(given);
    if (bytes.empty())
        return true;
    if (bytes.size() > computed.size() * sizeof(Limb))
        return false;
    WipedArray<Limb> number(computed.size());
    limbs::FromBytes(number.data(), number.size(), bytes);
    return Declassify(limbs::Equal(number.data(), computed.data(), number.size()));
}

/// Fills `secret` from numbers whose lengths are right. \return null, or what does not belong together.
const char* Assemble(RSAPrivateNumbers& secret, const CCryptoRSANumbers& numbers, const MontgomeryModulus& n, std::uint64_t e)
{
    const MontgomeryModulus& p = secret.p.modulus;
    const MontgomeryModulus& q = secret.q.modulus;
    const std::size_t count = p.limbs() + q.limbs();
    WipedArray<Limb> product(std::max(count, n.limbs()));
    limbs::Multiply(product.data(), p.modulus(), p.limbs(), q.modulus(), q.limbs());
    WipedArray<Limb> modulus(product.size());
    std::copy_n(n.modulus(), n.limbs(), modulus.data());
    if (!Declassify(limbs::Equal(product.data(), modulus.data(), modulus.size())))
        return "the modulus is not the product of the primes";

    WipedArray<Limb> d(n.limbs());
    limbs::FromBytes(d.data(), d.size(), WithoutZeros(numbers.privateExponent));
    if (!Declassify(limbs::Less(d.data(), n.modulus(), n.limbs())))
        return "the private exponent is not below the modulus";
    const Mask fitsP = FillPrime(secret.p, {d.data(), d.size()}, e);
    const Mask fitsQ = FillPrime(secret.q, {d.data(), d.size()}, e);
    if (!Declassify(fitsP & fitsQ))
        return "the exponents are not each other's inverse";

    MontgomeryModulus::Scratch scratch(p);
    WipedArray<Limb> qModuloP(p.limbs());
    p.enterWide(qModuloP.data(), {q.modulus(), q.limbs()}, scratch);
    p.leave(qModuloP.data(), qModuloP.data(), scratch);
    if (!p.invert(secret.coefficient.data(), qModuloP.data()))
        return "the primes have a divisor in common";

    if (!IsSame(numbers.exponent1, secret.p.exponent) || !IsSame(numbers.exponent2, secret.q.exponent))
        return "an exponent for a prime is not the private exponent's";
    if (!IsSame(numbers.coefficient, secret.coefficient))
        return "the coefficient is not the second prime's inverse";
    return nullptr;
}

const char* WrongLengths(const CCryptoRSANumbers& numbers, std::size_t bits)
{
    const auto p = WithoutZeros(numbers.prime1);
    const auto q = WithoutZeros(numbers.prime2);
    const auto d = WithoutZeros(numbers.privateExponent);
    if (p.empty() || q.empty() || d.empty())
        return "a private number is missing";
    if (BitsOf(d) > bits)
        return "the private exponent is not below the modulus";
    const std::size_t sum = BitsOf(p) + BitsOf(q);
    if (sum < bits || sum > bits + 1)
        return "the modulus is not the product of the primes";
    if (std::min(BitsOf(p), BitsOf(q)) < bits / minPrimePart)
        return "a prime is too short";
    if (Declassify(static_cast<std::uint8_t>(p.back() & q.back() & 1)) == 0)
        return "a prime is even";
    return nullptr;
}

} // namespace

CCryptoRSA::CCryptoRSA(std::unique_ptr<Key> key) : key_(std::move(key)) {}
CCryptoRSA::~CCryptoRSA() = default;

std::unique_ptr<CCryptoRSA> CCryptoRSA::FromPublic(const element& modulus, const element& publicExponent)
{
    CCryptoAutoLogger logger("CCryptoRSA::FromPublic");

    const auto n = WithoutZeros(modulus);
    const auto e = WithoutZeros(publicExponent);
    // Of a new key, it was computed from secrets.
    constant_time::DeclassifyBytes(n.data(), n.size());
    if (const char* wrong = WrongPublicNumbers(n, e))
        return logger.fail(std::unique_ptr<CCryptoRSA>(), "Not an RSA key: %s", wrong);
    WipedArray<Limb> limbsOfN(limbs::CountFor(8 * n.size()));
    limbs::FromBytes(limbsOfN.data(), limbsOfN.size(), n);
    auto key = std::make_unique<Key>(std::span<const Limb>(limbsOfN.data(), limbsOfN.size()));
    limbs::FromBytes(&key->e, 1, e);
    key->numbers.modulus = ToElement(n);
    key->numbers.publicExponent = ToElement(e);
    logger.setResult(true);
    return std::unique_ptr<CCryptoRSA>(new CCryptoRSA(std::move(key)));
}

std::unique_ptr<CCryptoRSA> CCryptoRSA::FromPrivate(const CCryptoRSANumbers& numbers)
{
    CCryptoAutoLogger logger("CCryptoRSA::FromPrivate");

    std::unique_ptr<CCryptoRSA> result = FromPublic(numbers.modulus, numbers.publicExponent);
    if (result == nullptr)
        return logger.fail(std::unique_ptr<CCryptoRSA>(), "Not an RSA key");
    Key& key = *result->key_;
    if (const char* wrong = WrongLengths(numbers, key.n.bits()))
        return logger.fail(std::unique_ptr<CCryptoRSA>(), "Not an RSA key: %s", wrong);

    const auto p = WithoutZeros(numbers.prime1);
    const auto q = WithoutZeros(numbers.prime2);
    WipedArray<Limb> limbsOfP(limbs::CountFor(8 * p.size()));
    WipedArray<Limb> limbsOfQ(limbs::CountFor(8 * q.size()));
    limbs::FromBytes(limbsOfP.data(), limbsOfP.size(), p);
    limbs::FromBytes(limbsOfQ.data(), limbsOfQ.size(), q);
    RSAPrivateNumbers& secret = key.secret.emplace(std::span<const Limb>(limbsOfP.data(), limbsOfP.size()),
                                                   std::span<const Limb>(limbsOfQ.data(), limbsOfQ.size()));
    if (const char* wrong = Assemble(secret, numbers, key.n, key.e))
        return logger.fail(std::unique_ptr<CCryptoRSA>(), "Not an RSA key: %s", wrong);
    key.blinding.emplace(key.n);
    key.numbers.privateExponent = ToElement(WithoutZeros(numbers.privateExponent));
    key.numbers.prime1 = ToElement(p);
    key.numbers.prime2 = ToElement(q);
    key.numbers.exponent1 = Shortest(secret.p.exponent.data(), secret.p.exponent.size());
    key.numbers.exponent2 = Shortest(secret.q.exponent.data(), secret.q.exponent.size());
    key.numbers.coefficient = Shortest(secret.coefficient.data(), secret.coefficient.size());
    logger.setResult(true);
    return result;
}

std::uint32_t CCryptoRSA::bits() const
{
    return static_cast<std::uint32_t>(key_->n.bits());
}

bool CCryptoRSA::isPrivate() const
{
    return key_->secret.has_value();
}

const element& CCryptoRSA::modulus() const
{
    return key_->numbers.modulus;
}

const element& CCryptoRSA::publicExponent() const
{
    return key_->numbers.publicExponent;
}

CCryptoRSANumbers CCryptoRSA::numbers() const
{
    return key_->numbers;
}

std::unique_ptr<CCryptoRSA> CCryptoRSA::publicKey() const
{
    return FromPublic(modulus(), publicExponent());
}

namespace {

/// \return false when it is not below the modulus, which becomes public.
bool TakeNumber(WipedArray<Limb>& number, const MontgomeryModulus& n, std::span<const std::uint8_t> input)
{
    if (input.size() > (n.bits() + 7) / 8)
        return false;
    limbs::FromBytes(number.data(), number.size(), input);
    return Declassify(limbs::Less(number.data(), n.modulus(), n.limbs()));
}

element GiveNumber(const WipedArray<Limb>& number, std::uint32_t length)
{
    element output;
    output.resize(length);
    limbs::ToBytes({output.data(), length}, number.data(), number.size());
    return output;
}

} // namespace

element CCryptoRSA::publicOperation(std::span<const std::uint8_t> input) const
{
    CCryptoAutoLogger logger("CCryptoRSA::publicOperation");

    WipedArray<Limb> number(key_->n.limbs());
    if (!TakeNumber(number, key_->n, input))
        return logger.fail(element(), "The input is not below the modulus");
    key_->n.powerPublic(number.data(), number.data(), key_->e);
    logger.setResult(true);
    return GiveNumber(number, bytes());
}

element CCryptoRSA::privateOperation(std::span<const std::uint8_t> input) const
{
    CCryptoAutoLogger logger("CCryptoRSA::privateOperation");

    if (!isPrivate())
        return logger.fail(element(), "The key is public");
    WipedArray<Limb> number(key_->n.limbs());
    if (!TakeNumber(number, key_->n, input))
        return logger.fail(element(), "The input is not below the modulus");
    WipedArray<Limb> result(key_->n.limbs());
    if (!key_->privateOperation(result.data(), number.data()))
        return logger.fail(element(), "The private operation failed");
    logger.setResult(true);
    return GiveNumber(result, bytes());
}
