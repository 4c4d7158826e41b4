#include "crypto/ec/eddsa.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/base/cpu_features.h"
#include "crypto/ec/edwards_points.h"
#include "crypto/ec/field25519_adx.h"
#include "crypto/ec/field448.h"
#include "crypto/hash/hash.h"
#include "crypto/hash/shake.h"

#include <algorithm>

namespace ccrypto {

namespace internal {

using Octets = std::span<const std::uint8_t>;
using Target = std::span<std::uint8_t>;
using Pieces = std::initializer_list<Octets>;

/// The operations of Ed25519 or of Ed448; lengths are right already.
class EddsaScheme {
public:
    virtual ~EddsaScheme() = default;

    virtual algorithm::Id id() const = 0;
    virtual const char* name() const = 0;
    /// Of seeds and public keys; signatures are twice as long.
    virtual std::size_t keyBytes() const = 0;
    /// \return false after a fault: the point is computed twice.
    [[nodiscard]] virtual bool makePublic(Target publicKey, Octets seed) const = 0;
    /// Whether the bytes are the exact encoding of a point that is not of low order.
    virtual bool isPublic(Octets publicKey) const = 0;
    virtual void sign(Target signature, Octets seed, Octets publicKey, Octets message, const EddsaMode& mode) const = 0;
    /// What verify() says of a signature of the owner of the key, who finds it out in a third of the time.
    [[nodiscard]] virtual bool isOwnSignature(Octets signature, Octets seed, Octets publicKey, Octets message,
                                              const EddsaMode& mode) const = 0;
    [[nodiscard]] virtual bool verify(Octets signature, Octets publicKey, Octets message, const EddsaMode& mode) const = 0;
};

} // namespace internal

namespace {

using namespace internal;

constexpr std::size_t maxContextBytes = 255;

/// The prefix of what is hashed: the scheme's text, how the message is taken, and the context (RFC 8032, 2).
element DomainOf(std::string_view text, const EddsaMode& mode)
{
    element domain(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()));
    domain.append(static_cast<std::uint8_t>(mode.prehash ? 1 : 0));
    domain.append(static_cast<std::uint8_t>(mode.context.size()));
    domain.append(mode.context.data(), static_cast<std::uint32_t>(mode.context.size()));
    return domain;
}

/// RFC 8032, 5.1, with a field of that prime.
template <typename PrimeField>
struct Ed25519 {
    static constexpr algorithm::Id id = algorithm::ed25519;
    static constexpr const char* name = "Ed25519";
    static constexpr std::size_t N = 4;
    using Field = PrimeField;
    static constexpr bool aIsOne = false;
    static constexpr std::size_t pointBytes = 32;
    static constexpr Modulus<N> order{fixed_limbs::FromHex<N>("1000000000000000000000000000000014DEF9DEA2F79CD65812631A5CF5D3ED")};
    static constexpr Limbs<N> d = fixed_limbs::FromHex<N>("52036CEE2B6FFE738CC740797779E89800700A4D4141D8AB75EB4DCA135978A3");
    static constexpr Limbs<N> x = fixed_limbs::FromHex<N>("216936D3CD6E53FEC0A4E231FDD6DC5C692CC7609525A7B2C9562D608F25D51A");
    static constexpr Limbs<N> y = fixed_limbs::FromHex<N>("6666666666666666666666666666666666666666666666666666666666666658");

    static void hash(Target digest, Pieces pieces)
    {
        const std::unique_ptr<ICryptoHash> sha512 = ICryptoHash::Create(algorithm::sha512);
        for (const Octets& piece : pieces)
            sha512->update(piece);
        sha512->final(digest.data());
    }
    /// Ed25519 itself came before there were prefixes.
    static element domain(const EddsaMode& mode)
    {
        return mode.prehash || !mode.context.empty() ? DomainOf("SigEd25519 no Ed25519 collisions", mode) : element();
    }
    static void clamp(Target scalar)
    {
        scalar[0] &= 0xF8;
        scalar[31] = static_cast<std::uint8_t>((scalar[31] & 0x7F) | 0x40);
    }
};

/// RFC 8032, 5.2
struct Ed448 {
    static constexpr algorithm::Id id = algorithm::ed448;
    static constexpr const char* name = "Ed448";
    static constexpr std::size_t N = 7;
    using Field = Field448;
    static constexpr bool aIsOne = true;
    static constexpr std::size_t pointBytes = 57;
    static constexpr Modulus<N> order{fixed_limbs::FromHex<N>("3FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
                                                              "7CCA23E9C44EDB49AED63690216CC2728DC58F552378C292AB5844F3")};
    static constexpr Limbs<N> d = fixed_limbs::FromHex<N>("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFE"
                                                          "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF6756");
    static constexpr Limbs<N> x = fixed_limbs::FromHex<N>("4F1970C66BED0DED221D15A622BF36DA9E146570470F1767EA6DE324"
                                                          "A3D3A46412AE1AF72AB66511433B80E18B00938E2626A82BC70CC05E");
    static constexpr Limbs<N> y = fixed_limbs::FromHex<N>("693F46716EB6BC248876203756C9C7624BEA73736CA3984087789C1E"
                                                          "05A0C2D73AD3FF1CE67C39C4FDBD132C4ED7C8AD9808795BF230FA14");

    static void hash(Target digest, Pieces pieces)
    {
        CCryptoSHAKE shake(CCryptoSHAKE::Kind::shake256);
        for (const Octets& piece : pieces)
            shake.update(piece);
        shake.squeeze(digest);
    }
    static element domain(const EddsaMode& mode) { return DomainOf("SigEd448", mode); }
    static void clamp(Target scalar)
    {
        scalar[0] &= 0xFC;
        scalar[55] |= 0x80;
        scalar[56] = 0;
    }
};

template <typename Curve>
class EddsaSchemeOf final : public EddsaScheme {
public:
    algorithm::Id id() const override { return Curve::id; }
    const char* name() const override { return Curve::name; }
    std::size_t keyBytes() const override { return length; }

    bool makePublic(Target publicKey, Octets seed) const override
    {
        const Private key(seed);
        const Wiped<Number> scalar{reduced(key.scalar())};
        Encoded encoded;
        multiplyBase(encoded, scalar);
        std::ranges::copy(encoded, publicKey.begin());
        Wiped<Number> opposite;
        fixed_limbs::Subtract(opposite, Curve::order.value, scalar);
        return isOpposite(encoded, opposite);
    }

    bool isPublic(Octets publicKey) const override
    {
        Point point;
        return EdwardsPoints<Curve>::decode(point, encodedOf(publicKey)) && !EdwardsPoints<Curve>::isOfLowOrder(point);
    }

    void sign(Target signature, Octets seed, Octets publicKey, Octets message, const EddsaMode& mode) const override
    {
        const Private key(seed);
        const element domain = Curve::domain(mode);
        std::array<std::uint8_t, 64> prehashed;
        const Octets text = taken(message, mode, prehashed);

        Wiped<Digest> digest;
        Curve::hash(digest, {domain.bytes(), key.prefix(), text});
        const Wiped<Number> nonce{reduced(digest)};
        Encoded commitment;
        multiplyBase(commitment, nonce);

        const Number challenge = challengeOf(domain, commitment, publicKey, text);
        const Wiped<Number> scalar{reduced(key.scalar())};
        Number response =
            order_.leave(order_.add(order_.multiply(order_.enter(challenge), order_.enter(scalar)), order_.enter(nonce)));
        constant_time::DeclassifyBytes(&response, sizeof response);
        std::ranges::copy(commitment, signature.begin());
        std::ranges::fill(signature.subspan(length), std::uint8_t{0});
        std::memcpy(signature.data() + length, response.data(), std::min(length, sizeof response));
    }

    /// [k a - S]B is -R, which other entries of the table add up to than R in sign().
    bool isOwnSignature(Octets signature, Octets seed, Octets publicKey, Octets message, const EddsaMode& mode) const override
    {
        Number response;
        if (!takeResponse(response, signature.subspan(length)))
            return false;
        const Encoded commitment = encodedOf(signature.first(length));
        std::array<std::uint8_t, 64> prehashed;
        const Number challenge = challengeOf(Curve::domain(mode), commitment, publicKey, taken(message, mode, prehashed));
        const Private key(seed);
        const Wiped<Number> scalar{reduced(key.scalar())};
        const Wiped<Number> opposite{
            order_.leave(order_.subtract(order_.multiply(order_.enter(challenge), order_.enter(scalar)), order_.enter(response)))};
        return isOpposite(commitment, opposite);
    }

    bool verify(Octets signature, Octets publicKey, Octets message, const EddsaMode& mode) const override
    {
        const Encoded commitment = encodedOf(signature.first(length));
        Number response;
        if (!takeResponse(response, signature.subspan(length)))
            return false;
        Point point;
        if (!EdwardsPoints<Curve>::decode(point, encodedOf(publicKey)))
            return false;

        std::array<std::uint8_t, 64> prehashed;
        const Octets text = taken(message, mode, prehashed);
        const Number challenge = challengeOf(Curve::domain(mode), commitment, publicKey, text);
        Encoded expected;
        EdwardsPoints<Curve>::encode(expected, points_.multiplyAndSubtract(response, point, challenge));
        return expected == commitment;
    }

private:
    static constexpr std::size_t length = Curve::pointBytes;
    using Number = Limbs<Curve::N>;
    using Point = typename EdwardsPoints<Curve>::Point;
    using Encoded = typename EdwardsPoints<Curve>::Encoded;
    using Digest = std::array<std::uint8_t, 2 * length>;

    /// What a seed is expanded to: the scalar, clamped, and the prefix of what nonces are made of.
    class Private {
    public:
        explicit Private(Octets seed)
        {
            Curve::hash(bytes_, {seed});
            Curve::clamp(std::span(bytes_).first(length));
        }
        Octets scalar() const { return std::span(bytes_).first(length); }
        Octets prefix() const { return std::span(bytes_).subspan(length); }

    private:
        Wiped<Digest> bytes_;
    };

    static Encoded encodedOf(Octets bytes)
    {
        Encoded encoded;
        std::ranges::copy(bytes, encoded.begin());
        return encoded;
    }

    /// S, a little-endian number. \return false when it is not below the order.
    static bool takeResponse(Number& response, Octets bytes)
    {
        response = {};
        std::memcpy(response.data(), bytes.data(), std::min(length, sizeof response));
        Number difference;
        return (length <= sizeof response || bytes.back() == 0) &&
               fixed_limbs::Subtract(difference, response, Curve::order.value) != 0;
    }

    /// The message, or its hash.
    static Octets taken(Octets message, const EddsaMode& mode, std::array<std::uint8_t, 64>& prehashed)
    {
        if (!mode.prehash)
            return message;
        Curve::hash(prehashed, {message});
        return prehashed;
    }

    /// A little-endian number of any length modulo the order.
    Number reduced(Octets bytes) const
    {
        constexpr std::size_t step = sizeof(Number);
        Wiped<Number> sum{};
        for (std::size_t begin = (bytes.size() - 1) / step * step;; begin -= step) {
            Wiped<Number> part{};
            const Octets piece = bytes.subspan(begin).first(std::min(step, bytes.size() - begin));
            std::memcpy(part.data(), piece.data(), piece.size());
            // The sum so far stands a step higher, that is R times what it was.
            static_cast<Number&>(sum) = order_.add(order_.multiply(sum, Curve::order.square), order_.enter(part));
            if (begin == 0)
                return order_.leave(sum);
        }
    }

    Number challengeOf(const element& domain, const Encoded& commitment, Octets publicKey, Octets text) const
    {
        Digest digest;
        Curve::hash(digest, {domain.bytes(), commitment, publicKey, text});
        return reduced(digest);
    }

    void multiplyBase(Encoded& result, const Number& scalar) const
    {
        Wiped<Point> point;
        points_.multiplyBase(point, scalar);
        EdwardsPoints<Curve>::encode(result, point);
        constant_time::DeclassifyBytes(result.data(), result.size());
    }

    /// Whether scalar times the base point is the opposite of a point whose x is not 0. The answer is public.
    [[nodiscard]] bool isOpposite(const Encoded& point, const Number& scalar) const
    {
        Encoded opposite;
        multiplyBase(opposite, scalar);
        opposite.back() ^= 0x80;
        return opposite == point;
    }

    MontgomeryField<Curve::N> order_{Curve::order};
    EdwardsPoints<Curve> points_;
};

template <typename Curve>
const EddsaScheme& SchemeWith()
{
    static const EddsaSchemeOf<Curve> scheme;
    return scheme;
}

using SchemeCall = const EddsaScheme& (*)();

constexpr Variant<SchemeCall> variantsOfEd25519[] = {
    {"portable", cpu::none, SchemeWith<Ed25519<Field25519>>},
    {"adx", cpu::adx, SchemeWith<Ed25519<Field25519Adx>>},
};

/// Null for an id of another algorithm.
const EddsaScheme* SchemeOf(algorithm::Id curve)
{
    static const auto& ed25519 = ChooseVariant(std::span<const Variant<SchemeCall>>(variantsOfEd25519));
    switch (curve) {
    case algorithm::ed25519:
        return &ed25519.calls();
    case algorithm::ed448:
        return &SchemeWith<Ed448>();
    default:
        return nullptr;
    }
}

using KeyPointer = std::unique_ptr<EddsaKey>;

} // namespace

KeyPointer EddsaKey::Generate(algorithm::Id curve, ICryptoRandom& random)
{
    CCryptoAutoLogger logger("EddsaKey::Generate");
    const EddsaScheme* scheme = SchemeOf(curve);
    if (scheme == nullptr)
        return logger.fail(KeyPointer(), "Not a curve of EdDSA: %u", static_cast<unsigned>(curve));
    Wiped<Padded> seed{};
    const auto drawn = std::span(seed).first(scheme->keyBytes());
    if (!random.generate(drawn))
        return logger.fail(KeyPointer(), "No random bytes for a private key");
    logger.setResult(true);
    return FromSeed(curve, drawn);
}

KeyPointer EddsaKey::FromSeed(algorithm::Id curve, std::span<const std::uint8_t> seed)
{
    CCryptoAutoLogger logger("EddsaKey::FromSeed");
    const EddsaScheme* scheme = SchemeOf(curve);
    if (scheme == nullptr)
        return logger.fail(KeyPointer(), "Not a curve of EdDSA: %u", static_cast<unsigned>(curve));
    if (seed.size() != scheme->keyBytes())
        return logger.fail(KeyPointer(), "A private key of %s has %zu bytes, not %zu", scheme->name(), scheme->keyBytes(),
                           seed.size());
    KeyPointer key(new EddsaKey(*scheme));
    std::ranges::copy(seed, key->seed_.begin());
    std::ranges::copy(seed, key->seedCopy_.begin());
    key->hasSeed_ = true;
    if (!scheme->makePublic(key->public_, seed))
        return logger.fail(KeyPointer(), "Public key cannot be computed: a fault in memory or in the processor");
    key->publicCopy_ = key->public_;
    logger.setResult(true);
    return key;
}

KeyPointer EddsaKey::FromPublic(algorithm::Id curve, std::span<const std::uint8_t> publicKey)
{
    CCryptoAutoLogger logger("EddsaKey::FromPublic");
    const EddsaScheme* scheme = SchemeOf(curve);
    if (scheme == nullptr)
        return logger.fail(KeyPointer(), "Not a curve of EdDSA: %u", static_cast<unsigned>(curve));
    if (publicKey.size() != scheme->keyBytes() || !scheme->isPublic(publicKey))
        return logger.fail(KeyPointer(), "Not a public key of %s", scheme->name());
    KeyPointer key(new EddsaKey(*scheme));
    std::ranges::copy(publicKey, key->public_.begin());
    logger.setResult(true);
    return key;
}

algorithm::Id EddsaKey::curve() const
{
    return scheme_.id();
}

const char* EddsaKey::name() const
{
    return scheme_.name();
}

std::span<const std::uint8_t> EddsaKey::publicBytes() const
{
    return std::span(public_).first(scheme_.keyBytes());
}

element EddsaKey::publicKey() const
{
    return element(public_.data(), static_cast<std::uint32_t>(scheme_.keyBytes()));
}

element EddsaKey::seed() const
{
    return hasSeed_ ? element(seed_.data(), static_cast<std::uint32_t>(scheme_.keyBytes())) : element();
}

element EddsaKey::sign(std::span<const std::uint8_t> message, const EddsaMode& mode) const
{
    CCryptoAutoLogger logger("EddsaKey::sign");
    if (!hasSeed_)
        return logger.fail(element(), "No private key");
    if (mode.context.size() > maxContextBytes)
        return logger.fail(element(), "A context has %zu bytes at most, not %zu", maxContextBytes, mode.context.size());
    element signature;
    signature.resize(static_cast<std::uint32_t>(2 * scheme_.keyBytes()));
    scheme_.sign({signature.data(), signature.length()}, std::span(seed_).first(scheme_.keyBytes()), publicBytes(), message, mode);
    const std::size_t length = scheme_.keyBytes();
    if (!scheme_.isOwnSignature(signature.bytes(), std::span(seedCopy_).first(length), std::span(publicCopy_).first(length),
                                message, mode))
        return logger.fail(element(), "Signature does not verify: a fault in memory or in the processor");
    logger.setResult(true);
    return signature;
}

bool EddsaKey::verify(std::span<const std::uint8_t> message, std::span<const std::uint8_t> signature, const EddsaMode& mode) const
{
    CCryptoAutoLogger logger("EddsaKey::verify");
    if (mode.context.size() > maxContextBytes)
        return logger.fail(false, "A context has %zu bytes at most, not %zu", maxContextBytes, mode.context.size());
    if (signature.size() != 2 * scheme_.keyBytes())
        return logger.fail(false, "A signature of %s has %zu bytes, not %zu", scheme_.name(), 2 * scheme_.keyBytes(),
                           signature.size());
    if (!scheme_.verify(signature, publicBytes(), message, mode))
        return logger.fail(false, "Signature is not the key's");
    return logger.setResult(true);
}

} // namespace ccrypto
