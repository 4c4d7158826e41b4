#include "crypto/dsa/dsa.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"

#include <algorithm>

using namespace ccrypto;

namespace {

/// Enough for the largest number and some leading zeros.
constexpr std::uint32_t maxDSANumber = CCryptoDSA::maxBits / 8 + 8;

bool IsAllowedOrder(std::uint32_t bits)
{
    return bits == 160 || bits == 224 || bits == 256;
}

} // namespace

bool CCryptoDSA::isOfOrder(const CCryptoBigInteger& number) const
{
    const CCryptoBigInteger one(1);
    return number > one && number < p_ && number.modPower(q_, p_) == one;
}

/// \return what is wrong; null for a key.
const char* CCryptoDSA::wrongNumbers() const
{
    if (p_.bits() < minBits || p_.bits() > maxBits)
        return "the prime's length is not allowed";
    if (!IsAllowedOrder(q_.bits()))
        return "the order's length is not allowed";
    if (!p_.isOdd() || !q_.isOdd() || !((p_ - CCryptoBigInteger(1)) % q_).isZero())
        return "prime and order do not belong together";
    if (!isOfOrder(g_))
        return "the generator is not of the order";
    if (!isOfOrder(y_))
        return "the public value is not a power of the generator";
    return nullptr;
}

std::unique_ptr<CCryptoDSA> CCryptoDSA::FromPublic(const CCryptoDSANumbers& numbers)
{
    CCryptoAutoLogger logger("CCryptoDSA::FromPublic");

    for (const element* number : {&numbers.prime, &numbers.order, &numbers.generator, &numbers.publicValue})
        if (number->length() > maxDSANumber)
            return logger.fail(std::unique_ptr<CCryptoDSA>(), "A number is too long: %u bytes", number->length());
    std::unique_ptr<CCryptoDSA> key(new CCryptoDSA);
    key->p_ = CCryptoBigInteger::FromBytes(numbers.prime.bytes());
    key->q_ = CCryptoBigInteger::FromBytes(numbers.order.bytes());
    key->g_ = CCryptoBigInteger::FromBytes(numbers.generator.bytes());
    key->y_ = CCryptoBigInteger::FromBytes(numbers.publicValue.bytes());
    if (const char* const wrong = key->wrongNumbers())
        return logger.fail(std::unique_ptr<CCryptoDSA>(), "Not a DSA key: %s", wrong);
    logger.setResult(true);
    return key;
}

CCryptoDSANumbers CCryptoDSA::numbers() const
{
    return {p_.toBytes(), q_.toBytes(), g_.toBytes(), y_.toBytes()};
}

bool CCryptoDSA::verifyHash(std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature, SignatureForm form) const
{
    CCryptoAutoLogger logger("CCryptoDSA::verifyHash");

    if (digest.empty() || digest.size() > maxDigestSize)
        return logger.fail(false, "No digest has %zu bytes", digest.size());
    const std::uint32_t length = orderBytes();
    const element pair = SignaturePair(signature, form, length);
    if (pair.isEmpty())
        return logger.fail(false, "Signature is malformed");

    // FIPS 186-4, 4.7.
    const CCryptoBigInteger r = CCryptoBigInteger::FromBytes(pair.bytes().first(length));
    const CCryptoBigInteger s = CCryptoBigInteger::FromBytes(pair.bytes().subspan(length));
    if (r.isZero() || s.isZero() || r >= q_ || s >= q_)
        return logger.fail(false, "Signature is out of range");
    const CCryptoBigInteger w = s.modInverse(q_);
    const CCryptoBigInteger z = CCryptoBigInteger::FromBytes(digest.first(std::min<std::size_t>(digest.size(), length)));
    const CCryptoBigInteger u1 = (z * w).modulo(q_);
    const CCryptoBigInteger u2 = (r * w).modulo(q_);
    const CCryptoBigInteger v = (g_.modPower(u1, p_) * y_.modPower(u2, p_)).modulo(p_).modulo(q_);
    return v == r ? logger.setResult(true) : logger.fail(false, "Signature is not the key's");
}
