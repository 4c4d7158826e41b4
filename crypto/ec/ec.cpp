#include "crypto/ec/ec.h"

#include "core/base/algorithm.h"
#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/base/constant_time.h"
#include "crypto/ec/curve_arithmetic.h"
#include "crypto/ec/curve_point.h"
#include "crypto/ec/ecdsa_nonce.h"
#include "crypto/ec/x25519.h"
#include "crypto/ec/x448.h"

#include <algorithm>
#include <cstring>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;
using KeyPointer = std::unique_ptr<CCryptoEC>;

constexpr CurveFacts curves[] = {
    {algorithm::secp112r1, "secp112r1", 112, 14, 14, true},
    {algorithm::secp160r1, "secp160r1", 160, 20, 21, true},
    {algorithm::prime192v1, "prime192v1", 192, 24, 24, true},
    {algorithm::prime256v1, "prime256v1", 256, 32, 32, true},
    {algorithm::secp384r1, "secp384r1", 384, 48, 48, true},
    {algorithm::secp521r1, "secp521r1", 521, 66, 66, true},
    {algorithm::brainpoolP160r1, "brainpoolP160r1", 160, 20, 20, true},
    {algorithm::brainpoolP256r1, "brainpoolP256r1", 256, 32, 32, true},
    {algorithm::brainpoolP384r1, "brainpoolP384r1", 384, 48, 48, true},
    {algorithm::x25519, "X25519", 255, 32, 32, false},
    {algorithm::x448, "X448", 448, 56, 56, false},
    {algorithm::secp224r1, "secp224r1", 224, 28, 28, true},
    {algorithm::secp256k1, "secp256k1", 256, 32, 32, true},
    {algorithm::brainpoolP224r1, "brainpoolP224r1", 224, 28, 28, true},
    {algorithm::brainpoolP320r1, "brainpoolP320r1", 320, 40, 40, true},
    {algorithm::brainpoolP384t1, "brainpoolP384t1", 384, 48, 48, true},
    {algorithm::brainpoolP512r1, "brainpoolP512r1", 512, 64, 64, true},
};

struct OtherName {
    std::string_view name;
    algorithm::Id id;
};

constexpr OtherName otherNames[] = {
    {"secp192r1", algorithm::prime192v1}, {"P-192", algorithm::prime192v1},   {"nistp192", algorithm::prime192v1},
    {"secp256r1", algorithm::prime256v1}, {"P-256", algorithm::prime256v1},   {"nistp256", algorithm::prime256v1},
    {"P-224", algorithm::secp224r1},      {"nistp224", algorithm::secp224r1}, {"P-384", algorithm::secp384r1},
    {"nistp384", algorithm::secp384r1},   {"P-521", algorithm::secp521r1},    {"nistp521", algorithm::secp521r1},
    {"curve25519", algorithm::x25519},    {"curve448", algorithm::x448},
};

constexpr std::uint8_t uncompressedForm = 4;
constexpr std::uint8_t compressedForm = 2; // 3 when y is odd

/// X25519 or X448.
bool MontgomeryLadder(const CurveFacts& facts, std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point)
{
    return facts.id == algorithm::x25519 ? X25519(result, scalar, point) : X448(result, scalar, point);
}

/// The hash that signHash() makes its nonces with: as strong as the curve.
algorithm::Id NonceHash(const CurveFacts& facts)
{
    return facts.bits <= 256 ? algorithm::sha256 : algorithm::sha512;
}

constexpr std::uint32_t freshBytes = 32;
// Of a sound source, each one fits with a probability of a half or more.
constexpr int maxDraws = 256;

element Joined(Bytes first, Bytes second)
{
    element whole(first.data(), static_cast<std::uint32_t>(first.size()));
    whole.append(second.data(), static_cast<std::uint32_t>(second.size()));
    return whole;
}

} // namespace

namespace ccrypto {

std::span<const CurveFacts> Curves()
{
    return curves;
}

const CurveFacts* FindCurve(algorithm::Id id)
{
    const auto* const found = std::ranges::find(curves, id, &CurveFacts::id);
    return found == std::end(curves) ? nullptr : found;
}

const CurveFacts* FindCurve(std::string_view name)
{
    for (const CurveFacts& facts : curves)
        if (SameInAnyCase(facts.name, name))
            return &facts;
    for (const OtherName& other : otherNames)
        if (SameInAnyCase(other.name, name))
            return FindCurve(other.id);
    return nullptr;
}

} // namespace ccrypto

KeyPointer CCryptoEC::Generate(algorithm::Id curve, ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoEC::Generate");
    const CurveFacts* facts = FindCurve(curve);
    if (facts == nullptr)
        return logger.fail(KeyPointer(), "Unsupported curve: %u", curve);

    const CurveArithmetic* arithmetic = CurveArithmetic::Of(curve);
    Wiped<std::array<std::uint8_t, maxBytes>> drawn{};
    const std::span<std::uint8_t> scalar = std::span(drawn).first(facts->orderBytes);
    for (int draws = 0; draws < maxDraws; ++draws) {
        if (!random.generate(scalar))
            return logger.fail(KeyPointer(), "No random bytes for a private key");
        // Bits above the order's would only make most draws useless.
        if (curve == algorithm::secp521r1 || curve == algorithm::secp160r1)
            scalar[0] &= 1;
        if (arithmetic == nullptr || arithmetic->isScalar(scalar)) {
            logger.setResult(true);
            return FromPrivate(curve, scalar);
        }
    }
    return logger.fail(KeyPointer(), "Random bytes do not look random");
}

KeyPointer CCryptoEC::FromPrivate(algorithm::Id curve, Bytes scalar)
{
    CCryptoAutoLogger logger("CCryptoEC::FromPrivate");
    const CurveFacts* facts = FindCurve(curve);
    if (facts == nullptr)
        return logger.fail(KeyPointer(), "Unsupported curve: %u", curve);
    if (scalar.size() != facts->orderBytes)
        return logger.fail(KeyPointer(), "A private scalar of %s has %u bytes, not %zu", facts->name, facts->orderBytes,
                           scalar.size());
    KeyPointer key(new CCryptoEC(*facts));
    if (!key->setScalar(scalar))
        return logger.fail(KeyPointer(), "Private scalar of %s is 0 or not below the order", facts->name);
    logger.setResult(true);
    return key;
}

KeyPointer CCryptoEC::FromPrivate(algorithm::Id curve, Bytes scalar, Bytes point)
{
    CCryptoAutoLogger logger("CCryptoEC::FromPrivate");
    KeyPointer key = FromPrivate(curve, scalar);
    const KeyPointer given = key == nullptr ? nullptr : FromPublic(curve, point);
    if (given == nullptr || !key->samePublic(*given))
        return logger.fail(KeyPointer(), "Public point is not the private scalar's");
    logger.setResult(true);
    return key;
}

KeyPointer CCryptoEC::FromPublic(algorithm::Id curve, Bytes point)
{
    CCryptoAutoLogger logger("CCryptoEC::FromPublic");
    const CurveFacts* facts = FindCurve(curve);
    if (facts == nullptr)
        return logger.fail(KeyPointer(), "Unsupported curve: %u", curve);
    KeyPointer key(new CCryptoEC(*facts));
    if (!key->setPoint(point))
        return logger.fail(KeyPointer(), "Public point is not on %s", facts->name);
    if (!facts->signs) {
        // Any scalar that RFC 7748 clamps finds out points of low order.
        Wiped<Padded> result{};
        constexpr Padded anyScalar{};
        if (!MontgomeryLadder(*facts, result.data(), anyScalar.data(), key->x_.data()))
            return logger.fail(KeyPointer(), "Public point of %s is of low order", facts->name);
    }
    logger.setResult(true);
    return key;
}

bool CCryptoEC::setPoint(std::span<const std::uint8_t> point)
{
    const std::size_t length = facts_.fieldBytes;
    if (!facts_.signs) {
        if (point.size() != length)
            return false;
        std::ranges::copy(point, x_.begin());
        return true;
    }

    const std::optional<ccrypto::CurvePoint> valid = ccrypto::CurvePoint::FromBytes(facts_.id, point);
    if (!valid.has_value())
        return false;
    std::ranges::copy(valid->x(), x_.begin());
    std::ranges::copy(valid->y(), y_.begin());
    return true;
}

bool CCryptoEC::setScalar(std::span<const std::uint8_t> scalar)
{
    std::ranges::copy(scalar, scalar_.begin());
    std::ranges::copy(scalar, scalarCopy_.begin());
    if (facts_.id == algorithm::x25519) {
        X25519Public(x_.data(), scalar_.data());
    } else if (facts_.id == algorithm::x448) {
        X448Public(x_.data(), scalar_.data());
    } else {
        const CurveArithmetic& arithmetic = *CurveArithmetic::Of(facts_.id);
        if (!arithmetic.isScalar(scalar))
            return false;
        arithmetic.multiplyBase(std::span(x_).first(facts_.fieldBytes), std::span(y_).first(facts_.fieldBytes), scalar);
    }
    constant_time::DeclassifyBytes(x_.data(), x_.size());
    constant_time::DeclassifyBytes(y_.data(), y_.size());
    hasPrivate_ = true;
    return true;
}

element CCryptoEC::publicPoint(bool compressed) const
{
    const auto x = std::span(x_).first(facts_.fieldBytes);
    const auto y = std::span(y_).first(facts_.fieldBytes);
    if (!facts_.signs)
        return Joined(x, {});
    const auto form = static_cast<std::uint8_t>(compressed ? compressedForm | (y.back() & 1) : uncompressedForm);
    element point = Joined({&form, 1}, x);
    if (!compressed)
        point.append(y.data(), facts_.fieldBytes);
    return point;
}

element CCryptoEC::privateScalar() const
{
    return hasPrivate_ ? Joined(std::span(scalar_).first(facts_.orderBytes), {}) : element();
}

KeyPointer CCryptoEC::publicHalf() const
{
    KeyPointer half(new CCryptoEC(facts_));
    half->x_ = x_;
    half->y_ = y_;
    return half;
}

bool CCryptoEC::samePublic(const CCryptoEC& other) const
{
    return facts_.id == other.facts_.id && x_ == other.x_ && y_ == other.y_;
}

element CCryptoEC::signHash(std::span<const std::uint8_t> digest, SignatureForm form, ICryptoRandom& random) const
{
    CCryptoAutoLogger logger("CCryptoEC::signHash");
    Wiped<std::array<std::uint8_t, freshBytes>> fresh{};
    if (!random.generate(fresh))
        return logger.fail(element(), "No random bytes for a nonce");
    element signature = sign(digest, form, NonceHash(facts_), fresh);
    logger.setResult(!signature.isEmpty());
    return signature;
}

element CCryptoEC::signHashDeterministically(std::span<const std::uint8_t> digest, SignatureForm form, algorithm::Id hash) const
{
    CCryptoAutoLogger logger("CCryptoEC::signHashDeterministically");
    const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(hash);
    if (function == nullptr || digest.size() != function->digestSize())
        return logger.fail(element(), "No digest of hash %u has %zu bytes", hash, digest.size());
    element signature = sign(digest, form, hash, {});
    logger.setResult(!signature.isEmpty());
    return signature;
}

element CCryptoEC::sign(std::span<const std::uint8_t> digest, SignatureForm form, algorithm::Id hash,
                        std::span<const std::uint8_t> fresh) const
{
    CCryptoAutoLogger logger("CCryptoEC::sign");
    if (!facts_.signs || !hasPrivate_)
        return logger.fail(element(), "No private key of ECDSA");
    if (digest.empty() || digest.size() > maxDigestSize)
        return logger.fail(element(), "No digest has %zu bytes", digest.size());
    std::unique_ptr<CCryptoHMAC> mac = CCryptoHMAC::Create(hash);
    if (mac == nullptr)
        return logger.fail(element(), "No hash for the nonce");

    const CurveArithmetic& arithmetic = *CurveArithmetic::Of(facts_.id);
    const std::uint32_t length = facts_.orderBytes;
    const auto scalar = std::span(scalar_).first(length);
    Wiped<Padded> number{};
    arithmetic.digestToNumber(std::span(number).first(length), digest);
    EcdsaNonce nonces(std::move(mac), arithmetic, scalar, std::span(number).first(length), fresh);

    Wiped<Padded> nonce{};
    element pair;
    pair.resize(2 * length);
    const std::span<std::uint8_t> both(pair.data(), pair.length());
    do
        nonces.next(std::span(nonce).first(length));
    while (!arithmetic.sign(both.first(length), both.subspan(length), digest, scalar, std::span(nonce).first(length)));
    // A signature that a fault has spoilt, or one by a spoilt key, can give the key away. The other copy of the scalar would not be
    // spoilt in the same way.
    if (!arithmetic.isOwnSignature(digest, both.first(length), both.subspan(length), std::span(scalarCopy_).first(length),
                                   std::span(nonce).first(length)))
        return logger.fail(element(), "Signature does not verify: a fault in memory or in the processor");
    logger.setResult(true);
    return form == SignatureForm::pair ? pair : EcdsaPairToDer(pair.bytes());
}

bool CCryptoEC::verifyHash(std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature, SignatureForm form) const
{
    CCryptoAutoLogger logger("CCryptoEC::verifyHash");
    const std::uint32_t length = facts_.orderBytes;
    if (!facts_.signs)
        return logger.fail(false, "%s does not sign", facts_.name);
    if (digest.empty() || digest.size() > maxDigestSize)
        return logger.fail(false, "No digest has %zu bytes", digest.size());

    const element pair = SignaturePair(signature, form, length);
    if (pair.isEmpty())
        return logger.fail(false, "Signature is malformed");
    const std::uint32_t coordinate = facts_.fieldBytes;
    if (!CurveArithmetic::Of(facts_.id)->verify(digest, pair.bytes().first(length), pair.bytes().subspan(length),
                                                std::span(x_).first(coordinate), std::span(y_).first(coordinate)))
        return logger.fail(false, "Signature is not the key's");
    return logger.setResult(true);
}

element CCryptoEC::agree(std::span<const std::uint8_t> point) const
{
    CCryptoAutoLogger logger("CCryptoEC::agree");
    if (!hasPrivate_)
        return logger.fail(element(), "No private key");
    CCryptoEC peer(facts_);
    if (!peer.setPoint(point))
        return logger.fail(element(), "Public point is not on %s", facts_.name);

    Wiped<Padded> x{};
    Wiped<Padded> y{};
    const std::uint32_t length = facts_.fieldBytes;
    if (!facts_.signs) {
        if (!MontgomeryLadder(facts_, x.data(), scalar_.data(), peer.x_.data()))
            return logger.fail(element(), "Public point of %s is of low order", facts_.name);
    } else {
        CurveArithmetic::Of(facts_.id)->multiply(std::span(x).first(length), std::span(y).first(length),
                                                 std::span(peer.x_).first(length), std::span(peer.y_).first(length),
                                                 std::span(scalar_).first(facts_.orderBytes));
    }
    logger.setResult(true);
    return Joined(std::span(x).first(length), {});
}
