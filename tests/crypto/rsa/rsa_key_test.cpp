#include "crypto/bigint/big_integer.h"
#include "crypto/bigint/primality.h"
#include "crypto/rsa/rsa.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/rsa/rsa_vectors.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace ccrypto;

namespace {

CCryptoBigInteger Big(const element& bytes)
{
    return CCryptoBigInteger::FromBytes(bytes.bytes());
}

CCryptoRSANumbers Numbers()
{
    return AnyKey().numbers();
}

element Plus(const element& number, std::int64_t difference)
{
    return (Big(number) + difference).toBytes();
}

} // namespace

TEST(RSAKey, RefusesPublicNumbersThatMakeNoKey)
{
    const element n = Numbers().modulus;
    const element e(65537u);
    element huge = element(Bytes(12500, 0xFF).data(), 12500);
    element shortest = Plus((CCryptoBigInteger(1) << 1022).toBytes(), 1);
    const Bytes nine = {1, 0, 0, 0, 0, 0, 0, 0, 1};
    const struct {
        const char* name;
        element modulus;
        element exponent;
    } cases[] = {
        {"nothing", {}, {}},
        {"no modulus", {}, e},
        {"a modulus of zeros", ElementOf(Bytes(128, 0)), e},
        {"an even modulus", Plus(n, 1), e},
        {"1023 bits", shortest, e},
        {"8193 bits", Plus((CCryptoBigInteger(1) << 8192).toBytes(), 1), e},
        {"100000 bits", huge, e},
        {"no exponent", n, {}},
        {"exponent 0", n, element(0u)},
        {"exponent 1", n, element(1u)},
        {"an even exponent", n, element(65536u)},
        {"an exponent of 65 bits", n, ElementOf(nine)},
        {"an exponent as long as the modulus", n, n},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CCryptoRSA::FromPublic(c.modulus, c.exponent), nullptr) << c.name;

    for (const std::uint32_t bits : {1024u, 8192u})
        EXPECT_NE(CCryptoRSA::FromPublic(Plus((CCryptoBigInteger(1) << (bits - 1)).toBytes(), 1), e), nullptr) << bits;
    EXPECT_NE(CCryptoRSA::FromPublic(ElementOf(Bytes(1024, 0xFF)), e), nullptr) << "the largest number of 8192 bits";

    Bytes padded = BytesOf(n);
    padded.insert(padded.begin(), 3, 0);
    const auto key = CCryptoRSA::FromPublic(ElementOf(padded), ElementOf({0, 3}));
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->modulus(), n);
    EXPECT_EQ(BytesOf(key->publicExponent()), Bytes{3});
    EXPECT_FALSE(key->isPrivate());
    EXPECT_TRUE(key->privateOperation(Bytes{2}).isEmpty());
    EXPECT_TRUE(CCryptoRSA::FromPublic(n, ElementOf(Bytes(8, 0xFF))) != nullptr);
}

TEST(RSAKey, RefusesPrivateNumbersThatDoNotBelongTogether)
{
    using Spoil = void (*)(CCryptoRSANumbers&);
    const CCryptoRSANumbers right = Numbers();
    const struct {
        const char* name;
        Spoil spoil;
    } cases[] = {
        {"n", [](CCryptoRSANumbers& k) { k.modulus = Plus(k.modulus, 2); }},
        {"e", [](CCryptoRSANumbers& k) { k.publicExponent = element(3u); }},
        {"d", [](CCryptoRSANumbers& k) { k.privateExponent = Plus(k.privateExponent, 2); }},
        {"no d", [](CCryptoRSANumbers& k) { k.privateExponent = {}; }},
        {"d for p alone",
         [](CCryptoRSANumbers& k) {
             k.privateExponent = (Big(k.privateExponent) + Big(k.prime1) - 1).toBytes();
             k.exponent1 = k.exponent2 = {};
         }},
        {"d for q alone",
         [](CCryptoRSANumbers& k) {
             k.privateExponent = (Big(k.privateExponent) + Big(k.prime2) - 1).toBytes();
             k.exponent1 = k.exponent2 = {};
         }},
        {"d above n, congruent to the right one",
         [](CCryptoRSANumbers& k) {
             const CCryptoBigInteger p1 = Big(k.prime1) - 1;
             const CCryptoBigInteger q1 = Big(k.prime2) - 1;
             CCryptoBigInteger d = Big(k.privateExponent);
             while (d < Big(k.modulus))
                 d += p1 * q1 / CCryptoBigInteger::Gcd(p1, q1);
             k.privateExponent = d.toBytes();
         }},
        {"d as large as n", [](CCryptoRSANumbers& k) { k.privateExponent = k.modulus; }},
        {"d longer than n", [](CCryptoRSANumbers& k) { k.privateExponent = element(Bytes(5000, 7).data(), 5000); }},
        {"p", [](CCryptoRSANumbers& k) { k.prime1 = Plus(k.prime1, 2); }},
        {"p even", [](CCryptoRSANumbers& k) { k.prime1 = Plus(k.prime1, 1); }},
        {"no p", [](CCryptoRSANumbers& k) { k.prime1 = {}; }},
        {"p as long as n", [](CCryptoRSANumbers& k) { k.prime1 = k.modulus; }},
        {"p = n, q = 1", [](CCryptoRSANumbers& k) { k.prime1 = k.modulus, k.prime2 = element(1u); }},
        {"q", [](CCryptoRSANumbers& k) { k.prime2 = Plus(k.prime2, -2); }},
        {"q = 0", [](CCryptoRSANumbers& k) { k.prime2 = element(0u); }},
        {"p twice",
         [](CCryptoRSANumbers& k) {
             k.prime2 = k.prime1;
             k.modulus = (Big(k.prime1) * Big(k.prime1)).toBytes();
             k.privateExponent = Big(k.privateExponent).modulo(Big(k.prime1) - 1).toBytes();
             k.exponent1 = k.exponent2 = k.coefficient = {};
         }},
        {"primes in the other order, the rest not",
         [](CCryptoRSANumbers& k) { std::swap(k.prime1, k.prime2), k.exponent1 = {}, k.exponent2 = {}; }},
        {"d mod p - 1", [](CCryptoRSANumbers& k) { k.exponent1 = Plus(k.exponent1, 1); }},
        {"d mod p - 1 not reduced", [](CCryptoRSANumbers& k) { k.exponent1 = k.privateExponent; }},
        {"d mod q - 1", [](CCryptoRSANumbers& k) { k.exponent2 = k.exponent1; }},
        {"coefficient", [](CCryptoRSANumbers& k) { k.coefficient = Plus(k.coefficient, -1); }},
        {"coefficient longer than p", [](CCryptoRSANumbers& k) { k.coefficient = k.modulus; }},
    };
    for (const auto& c : cases) {
        CCryptoRSANumbers numbers = right;
        c.spoil(numbers);
        EXPECT_EQ(CCryptoRSA::FromPrivate(numbers), nullptr) << c.name;
    }

    CCryptoRSANumbers fewer = right;
    std::swap(fewer.prime1, fewer.prime2);
    fewer.exponent1 = fewer.exponent2 = fewer.coefficient = element();
    const auto swapped = CCryptoRSA::FromPrivate(fewer);
    ASSERT_NE(swapped, nullptr);
    EXPECT_EQ(swapped->numbers().exponent1, right.exponent2);
    EXPECT_EQ(swapped->numbers().exponent2, right.exponent1);
    const Bytes digest(32, 1);
    EXPECT_EQ(swapped->signPKCS1(algorithm::sha256, digest), AnyKey().signPKCS1(algorithm::sha256, digest));
}

TEST(RSAKey, TakesPrimesOfDifferentLengths)
{
    // 607 and 521 bits of primes everybody knows.
    const CCryptoBigInteger p = (CCryptoBigInteger(1) << 607) - 1;
    const CCryptoBigInteger q = (CCryptoBigInteger(1) << 521) - 1;
    const CCryptoBigInteger d = CCryptoBigInteger(65537).modInverse((p - 1) * (q - 1));
    for (const bool shorterFirst : {false, true}) {
        CCryptoRSANumbers numbers{(p * q).toBytes(), element(65537u), d.toBytes(), p.toBytes(), q.toBytes(), {}, {}, {}};
        if (shorterFirst)
            std::swap(numbers.prime1, numbers.prime2);
        const auto key = CCryptoRSA::FromPrivate(numbers);
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(key->bits(), 1128u);
        const Bytes input(140, 0xA5);
        const element output = key->privateOperation(input);
        EXPECT_EQ(Big(output), CCryptoBigInteger::FromBytes(input).modPower(d, p * q));
        EXPECT_EQ(Big(key->publicOperation(output.bytes())), CCryptoBigInteger::FromBytes(input));
    }
}

TEST(RSAKey, OperatesOnNumbersBelowTheModulusAlone)
{
    const CCryptoRSA& key = AnyKey();
    const CCryptoBigInteger n = Big(key.modulus());
    for (const CCryptoBigInteger& input : {CCryptoBigInteger(0), CCryptoBigInteger(1), CCryptoBigInteger(2), n - 1}) {
        const element bytes = input.toBytes();
        const element output = key.privateOperation(bytes.bytes());
        ASSERT_EQ(output.length(), key.bytes());
        EXPECT_EQ(Big(output), input.modPower(Big(key.numbers().privateExponent), n));
        EXPECT_EQ(Big(key.publicOperation(output.bytes())), input);
    }
    for (const element& tooLarge : {n.toBytes(), (n + 1).toBytes(), element(Bytes(129, 0).data(), 129)}) {
        EXPECT_TRUE(key.privateOperation(tooLarge.bytes()).isEmpty());
        EXPECT_TRUE(key.publicOperation(tooLarge.bytes()).isEmpty());
    }
}

TEST(RSAKey, ServesManyThreadsAtOnce)
{
    // More operations than a blinding lasts.
    constexpr int operations = 100;
    const Bytes digest(32, 9);
    const element expected = AnyKey().signPKCS1(algorithm::sha256, digest);
    const auto key = CCryptoRSA::FromPrivate(Numbers());
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            for (int operation = 0; operation < operations; ++operation)
                right += key->signPKCS1(algorithm::sha256, digest) == expected ? 1 : 0;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 3 * operations);
}

TEST(RSAKey, IsGeneratedByTheRules)
{
    for (const std::uint32_t bits : {1024u, 1030u, 1536u}) {
        const std::uint32_t exponent = bits == 1030 ? 0xFFFFFFFFu : 65537u; // the larger one is no prime
        const auto key = CCryptoRSA::Generate(bits, exponent);
        ASSERT_NE(key, nullptr);
        const CCryptoRSANumbers numbers = key->numbers();
        const CCryptoBigInteger p = Big(numbers.prime1);
        const CCryptoBigInteger q = Big(numbers.prime2);
        const CCryptoBigInteger d = Big(numbers.privateExponent);
        const CCryptoBigInteger least = (p - 1) * (q - 1) / CCryptoBigInteger::Gcd(p - 1, q - 1);
        EXPECT_EQ(key->bits(), bits);
        EXPECT_EQ(p * q, Big(numbers.modulus));
        EXPECT_TRUE(IsProbablePrime(p) && IsProbablePrime(q));
        EXPECT_GT(p, q);
        EXPECT_EQ(q.bits(), bits / 2);
        EXPECT_GT((p - q).bits(), bits / 2 - 100);
        EXPECT_GT(q * q, CCryptoBigInteger(1) << (bits - 1));
        EXPECT_EQ((d * CCryptoBigInteger::FromWord(exponent)).modulo(least), CCryptoBigInteger(1));
        EXPECT_LT(d, least);
        EXPECT_GT(d.bits(), bits / 2);
        EXPECT_EQ(Big(numbers.exponent1), d.modulo(p - 1));
        EXPECT_EQ(Big(numbers.exponent2), d.modulo(q - 1));
        EXPECT_EQ((Big(numbers.coefficient) * q).modulo(p), CCryptoBigInteger(1));

        const auto publicKey = key->publicKey();
        EXPECT_FALSE(publicKey->isPrivate());
        EXPECT_TRUE(publicKey->numbers().prime1.isEmpty() && publicKey->numbers().privateExponent.isEmpty());
        const Bytes digest(20, 3);
        EXPECT_TRUE(publicKey->verifyPKCS1(algorithm::sha1, digest, key->signPKCS1(algorithm::sha1, digest).bytes()));
    }
}

TEST(RSAKey, IsNotGeneratedFromWrongParametersOrWithoutRandomBytes)
{
    for (const std::uint32_t bits : {0u, 512u, 1022u, 1025u, 2049u, 8194u, 100000u, 0xFFFFFFFEu})
        EXPECT_EQ(CCryptoRSA::Generate(bits), nullptr) << bits;
    for (const std::uint32_t exponent : {0u, 1u, 2u, 3u, 17u, 65535u, 65536u, 65538u})
        EXPECT_EQ(CCryptoRSA::Generate(1024, exponent), nullptr) << exponent;
    std::uint32_t last = 0;
    EXPECT_EQ(CCryptoRSA::Generate(1024, 65537, [&](std::uint32_t candidates) { return last = candidates, false; }), nullptr);
    EXPECT_GT(last, 0u);
    ToldBytes few(Bytes(500, 0x77));
    EXPECT_EQ(CCryptoRSA::Generate(1024, 65537, {}, few), nullptr);
}

TEST(RSAKey, HasPrimesOfAQuarterOfTheModulusOrMore)
{
    using Number = CCryptoBigInteger;
    const Number e(65537);
    for (const std::uint32_t bits : {200u, 255u, 256u, 257u, 512u}) {
        SCOPED_TRACE(bits);
        // They need not be primes to be taken for them.
        const Number p = (Number(3) << (bits - 2)) + Number(1);
        const Number q = (Number(3) << (1024 - bits - 2)) + Number(5);
        const Number lessOnes = (p - Number(1)) * (q - Number(1));
        CCryptoRSANumbers numbers;
        numbers.modulus = (p * q).toBytes();
        numbers.publicExponent = e.toBytes();
        numbers.privateExponent = e.modInverse(lessOnes).toBytes();
        numbers.prime1 = p.toBytes();
        numbers.prime2 = q.toBytes();
        ASSERT_EQ((p * q).bits(), 1024u);
        EXPECT_EQ(CCryptoRSA::FromPrivate(numbers) != nullptr, bits >= 256);
        std::swap(numbers.prime1, numbers.prime2);
        EXPECT_EQ(CCryptoRSA::FromPrivate(numbers) != nullptr, bits >= 256);
    }
}
