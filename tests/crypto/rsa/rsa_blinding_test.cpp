#include "crypto/bigint/big_integer.h"
#include "crypto/hash/hash.h"
#include "crypto/rsa/rsa_encoding.h"
#include "crypto/rsa/rsa_key.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/rsa/rsa_vectors.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// What protects a private key while it is used. Keys whose first "prime" is composite show it: their numbers belong together, so
// they load, but raising to the private exponent does not undo raising to the public one.

namespace {

CCryptoBigInteger Number(const char* digits)
{
    return CCryptoBigInteger::FromHex(digits);
}

/// The private key of p and q as if both were prime; p - 1 and q - 1 have no factor in common with e.
std::unique_ptr<CCryptoRSA> KeyOf(const CCryptoBigInteger& p, const CCryptoBigInteger& q, std::int64_t e)
{
    const CCryptoBigInteger one(1);
    const CCryptoBigInteger order = (p - one) * (q - one) / CCryptoBigInteger::Gcd(p - one, q - one);
    CCryptoRSANumbers numbers;
    numbers.modulus = (p * q).toBytes();
    numbers.publicExponent = CCryptoBigInteger(e).toBytes();
    numbers.privateExponent = CCryptoBigInteger(e).modInverse(order).toBytes();
    numbers.prime1 = p.toBytes();
    numbers.prime2 = q.toBytes();
    return CCryptoRSA::FromPrivate(numbers);
}

CCryptoBigInteger Prime()
{
    return Number("efcd705297386321d450eb8a43a9d7f66debfc9b52c20e129501b4be7ed6e63c34b6ffa212dc7cbd0cd82a57ce2b1609abf290288739ffe6"
                  "58c97e76350b767d");
}

Bytes BytesWithLast(const CCryptoRSA& key, std::uint8_t last)
{
    Bytes input(key.bytes(), 0);
    input.back() = last;
    return input;
}

std::vector<limbs::Limb> LimbsOf(const element& number)
{
    std::vector<limbs::Limb> limbs((number.length() + 7) / 8);
    limbs::FromBytes(limbs.data(), limbs.size(), number.bytes());
    return limbs;
}

/// A pair of a blinding as plain numbers.
struct Pair {
    CCryptoBigInteger factor;
    CCryptoBigInteger remover;
};

class Blinding {
public:
    explicit Blinding(const CCryptoRSA& key) : n_(LimbsOf(key.modulus())), e_(key.publicExponent().bytes().back()), blinding_(n_)
    {
        EXPECT_EQ(key.publicExponent().length(), 1u);
    }

    Pair next()
    {
        std::vector<limbs::Limb> factor(n_.limbs());
        std::vector<limbs::Limb> remover(n_.limbs());
        EXPECT_TRUE(blinding_.next(n_, e_, factor.data(), remover.data()));
        return {plain(factor), plain(remover)};
    }
    std::uint64_t e() const { return e_; }

private:
    CCryptoBigInteger plain(std::vector<limbs::Limb>& number) const
    {
        MontgomeryModulus::Scratch scratch(n_);
        n_.leave(number.data(), number.data(), scratch);
        Bytes bytes(number.size() * sizeof(limbs::Limb));
        limbs::ToBytes(bytes, number.data(), number.size());
        return CCryptoBigInteger::FromBytes(bytes);
    }

    MontgomeryModulus n_;
    std::uint64_t e_;
    RSABlinding blinding_;
};

} // namespace

TEST(RSAPrivateOperation, GivesNothingWhenItsResultIsWrong)
{
    const CCryptoBigInteger p = Number("d8b1cf13b88d9e00061540a984198a56b855c438f2e9d9153a2c8cfc776d8e37") *
                                Number("d2a8c1d0a0a9c025706f4bfc53d99a8319e19b1e2859a5a426f3bb55b9b26379");
    const auto key = KeyOf(p, Prime(), 7);
    ASSERT_NE(key, nullptr);
    // 1 stays 1 whatever it is raised to; once it is blinded the fault shows.
    for (const std::uint8_t input : Bytes{1, 2, 3, 0x55})
        EXPECT_TRUE(key->privateOperation(BytesWithLast(*key, input)).isEmpty()) << int{input};
    EXPECT_TRUE(key->signPKCS1(algorithm::sha256, Bytes(32, 7)).isEmpty());
    EXPECT_TRUE(key->signPSS({}, Bytes(32, 7)).isEmpty());
    element message;
    EXPECT_FALSE(key->decryptPKCS1(BytesOf(key->encryptPKCS1(Bytes(16, 7))), message));
    EXPECT_TRUE(message.isEmpty());
}

// p = r s with s = 2 r - 1, and e, are chosen so that the result is right for d modulo p - 1; for that with an odd multiple of p -
// 1 added it is wrong when the input, like 5, is no square modulo s. (All but the first of the factors of a blinding are squares.)
TEST(RSAPrivateOperation, AddsARandomMultipleToTheExponents)
{
    const CCryptoBigInteger r = Number("e3870a03d8794715fe33a05d7568c501560156d3d51b8eb60ceb59ad3cc178dd");
    const auto key = KeyOf(r * (r + r - CCryptoBigInteger(1)), Prime(), 7);
    ASSERT_NE(key, nullptr);
    int right = 0;
    constexpr int tries = 100;
    for (int i = 0; i < tries; ++i)
        right += key->privateOperation(BytesWithLast(*key, 5)).isEmpty() ? 0 : 1;
    // A half is expected.
    EXPECT_GT(right, 0);
    EXPECT_LT(right, tries);
}

TEST(RSABlindingPairs, BelongTogetherAndChange)
{
    const auto key = KeyOf(Number("d8b1cf13b88d9e00061540a984198a56b855c438f2e9d9153a2c8cfc776d8e37") *
                               Number("d2a8c1d0a0a9c025706f4bfc53d99a8319e19b1e2859a5a426f3bb55b9b26379"),
                           Prime(), 7);
    ASSERT_NE(key, nullptr);
    const CCryptoBigInteger n = CCryptoBigInteger::FromBytes(key->modulus().bytes());
    const CCryptoBigInteger one(1);
    Blinding blinding(*key);
    const CCryptoBigInteger e(static_cast<std::int64_t>(blinding.e()));
    Pair last = blinding.next();
    int renewed = 0;
    for (int i = 0; i < 200; ++i) {
        const Pair pair = blinding.next();
        ASSERT_TRUE(pair.factor != last.factor && pair.remover != last.remover && pair.factor != one) << i;
        ASSERT_TRUE((pair.factor * pair.remover.modPower(e, n)).modulo(n) == one) << i;
        renewed += (last.factor * last.factor).modulo(n) == pair.factor ? 0 : 1;
        last = pair;
    }
    EXPECT_EQ(renewed, 3);
    EXPECT_TRUE(Blinding(*key).next().factor != Blinding(*key).next().factor);
}

// A modulus of 8 k + 1 bits has an octet more than the encoded message.
TEST(RSAEncoding, PSSWantsAZeroInTheOctetBeforeTheMessage)
{
    SequenceRandom random(1);
    const Bytes digest(32, 7);
    Bytes block(129);
    ASSERT_TRUE(rsa_encoding::EncodePSS(block, 1025, {}, digest, random));
    Bytes copy = block;
    EXPECT_TRUE(rsa_encoding::VerifyPSS(copy, 1025, {}, digest));
    for (const std::uint8_t first : Bytes{1, 0x80}) {
        copy = block;
        copy.front() = first;
        EXPECT_FALSE(rsa_encoding::VerifyPSS(copy, 1025, {}, digest));
    }
}

// The encoded message has one bit less than the modulus: the bits above it are zero.
TEST(RSAEncoding, PSSWantsZerosAboveTheMessage)
{
    SequenceRandom random(1);
    const Bytes digest(32, 7);
    for (std::uint32_t bits = 1018; bits <= 1024; ++bits) {
        Bytes block(128);
        ASSERT_TRUE(rsa_encoding::EncodePSS(block, bits, {}, digest, random));
        for (std::uint32_t bit = (bits - 1) % 8; bit < 8; ++bit) {
            Bytes copy = block;
            copy.front() ^= static_cast<std::uint8_t>(1u << bit);
            EXPECT_FALSE(rsa_encoding::VerifyPSS(copy, bits, {}, digest)) << bits << ", bit " << bit;
        }
        EXPECT_TRUE(rsa_encoding::VerifyPSS(block, bits, {}, digest));
    }
}

namespace {

/// MGF1 with SHA-256 (RFC 8017, B.2.1), added to `target`.
void AddMask(std::span<const std::uint8_t> seed, std::span<std::uint8_t> target)
{
    const auto hash = ICryptoHash::CreateByName("sha256");
    for (std::size_t i = 0; i < target.size(); ++i) {
        Bytes input(seed.begin(), seed.end());
        input.insert(input.end(), {0, 0, 0, static_cast<std::uint8_t>(i / 32)});
        target[i] ^= BytesOf(hash->digestOf(input))[i % 32];
    }
}

} // namespace

TEST(RSAEncoding, OAEPWantsZerosAndAOneBeforeTheMessage)
{
    SequenceRandom random(1);
    Bytes encoded(128);
    ASSERT_TRUE(rsa_encoding::EncodeOAEP(encoded, {}, Bytes(20), random));
    constexpr std::size_t one = 128 - 33 - 21;
    const struct {
        std::size_t place;
        std::uint8_t value;
        bool good;
    } cases[] = {{32, 0, true}, {32, 2, false}, {32, 0x80, false}, {one, 1, true}, {one, 0, false}, {one, 3, false}};
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::Message() << row.place << ": " << int{row.value});
        Bytes block = encoded;
        const std::span<std::uint8_t> seed = std::span(block).subspan(1, 32);
        const std::span<std::uint8_t> data = std::span(block).subspan(33);
        AddMask(data, seed);
        AddMask(seed, data);
        data[row.place] = row.value;
        AddMask(seed, data);
        AddMask(data, seed);
        constant_time::Mask good = constant_time::Mask::False();
        std::uint64_t length = 0;
        ASSERT_TRUE(rsa_encoding::DecodeOAEP(block, {}, good, length));
        EXPECT_EQ(constant_time::Declassify(good), row.good);
        EXPECT_EQ(length, row.good ? 20u : 0u);
    }
}
