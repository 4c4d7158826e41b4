#include "crypto/dsa/dsa.h"
#include "crypto/hash/hash.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

CCryptoDSANumbers DSANumbersOf(const TestVector& vector)
{
    const auto number = [&](const char* name) { return ElementOf(vector.bytes(name)); };
    return {number("P"), number("Q"), number("G"), number("Y")};
}

// A group that is whole but for the prime's length, 1016 bits.
constexpr const char* shortPrime =
    "a4eebb06eac9c293c9210f20829b592a90743dc5ca4a4f7efb2d58dcccd97f9b8ca16a65ba1199afdccc48ca2e06fc71d6579f55"
    "eb9e40fd0651044b558c758124051f22b76de757eb490ba108b03fb647f45506e4de73d607a745a48240ad59d354b3c7615cfd89"
    "7408979297f84160e8e03597adac4471cbbcc9e52fe815";
constexpr const char* orderOfShortPrime = "d685d62404fcd5555daf106db8dee081179a071f";
constexpr const char* generatorOfShortPrime =
    "2137e3778faaa04c55a231dece7667cd10c8a485e39dd4286f02777704dabec42d5e7d970df02a44467c0a2b074dc72286cdeef8"
    "49f77773dabb1a6b3ab3eefbdb0e8315a8f64629f97fceaf44673c86c06e2dbe8f7c6ddcf3c8afd0b6c7f937d4dd057962d20e99"
    "768a8f1c2ef298c2dcaacebb587362d6f853a168b77556";

/// As long as the order.
Bytes Filled(const Bytes& number, std::size_t length)
{
    Bytes filled(length - number.size(), 0);
    filled.insert(filled.end(), number.begin(), number.end());
    return filled;
}

/// number + q in as many bytes; empty when it does not fit.
Bytes PlusOrder(const Bytes& number, const CCryptoDSANumbers& numbers)
{
    Bytes bytes(numbers.order.length());
    const auto sum = CCryptoBigInteger::FromBytes(number) + CCryptoBigInteger::FromBytes(numbers.order.bytes());
    return sum.toBytes(bytes) ? bytes : Bytes();
}

/// A vector that is valid, its key and what was signed; both numbers of the signature can have the order added.
struct Signed {
    Signed()
    {
        for (const TestVector& vector : ReadVectors("dsa_verify.txt")) {
            if (!vector.valid())
                continue;
            numbers = DSANumbersOf(vector);
            key = CCryptoDSA::FromPublic(numbers);
            digest = BytesOf(ICryptoHash::CreateByName(vector.text("Hash"))->digestOf(vector.bytes("Msg")));
            r = Filled(vector.bytes("R"), key->orderBytes());
            s = Filled(vector.bytes("S"), key->orderBytes());
            if (!PlusOrder(r, numbers).empty() && !PlusOrder(s, numbers).empty())
                return;
        }
    }

    CCryptoDSANumbers numbers;
    std::unique_ptr<CCryptoDSA> key;
    Bytes digest;
    Bytes r;
    Bytes s;
};

/// The numbers with p times `factor` in place of p, an order that divides that less 1, and a generator that is 1 modulo the factor:
/// all that a key has to fulfil but the lengths.
CCryptoDSANumbers Stretched(const CCryptoDSANumbers& numbers, const CCryptoBigInteger& factor, const CCryptoBigInteger& order)
{
    const CCryptoBigInteger one(1);
    const auto p = CCryptoBigInteger::FromBytes(numbers.prime.bytes());
    const auto g = CCryptoBigInteger::FromBytes(numbers.generator.bytes());
    const element generator = (one + factor * ((g - one) * factor.modInverse(p)).modulo(p)).toBytes();
    return {(p * factor).toBytes(), order.toBytes(), generator, generator};
}

} // namespace

TEST(DSA, VerifiesAsTheVectorsSay)
{
    for (const TestVector& vector : ReadVectors("dsa_verify.txt")) {
        SCOPED_TRACE(vector.place());
        const auto key = CCryptoDSA::FromPublic(DSANumbersOf(vector));
        // Where the vectors changed the public value it is mostly no power of the generator any more.
        if (key == nullptr) {
            EXPECT_FALSE(vector.valid());
            continue;
        }
        const element digest = ICryptoHash::CreateByName(vector.text("Hash"))->digestOf(vector.bytes("Msg"));
        const Bytes pair = Joined({Filled(vector.bytes("R"), key->orderBytes()), Filled(vector.bytes("S"), key->orderBytes())});
        EXPECT_EQ(key->verifyHash(digest.bytes(), pair, SignatureForm::pair), vector.valid());
        EXPECT_EQ(key->verifyHash(digest.bytes(), EcdsaPairToDer(pair).bytes(), SignatureForm::der), vector.valid());
    }
}

TEST(DSA, RefusesSignaturesOutOfRange)
{
    const Signed good;
    ASSERT_TRUE(good.key->verifyHash(good.digest, Joined({good.r, good.s}), SignatureForm::pair));
    const Bytes zero(good.r.size(), 0);
    const Bytes q = BytesOf(good.numbers.order);
    const Bytes largeR = PlusOrder(good.r, good.numbers);
    const Bytes largeS = PlusOrder(good.s, good.numbers);
    ASSERT_TRUE(largeR.size() == q.size() && largeS.size() == q.size());
    const Bytes wrong[] = {Joined({zero, good.s}),
                           Joined({good.r, zero}),
                           Joined({q, good.s}),
                           Joined({good.r, q}),
                           Joined({largeR, good.s}),
                           Joined({good.r, largeS}),
                           Joined({good.s, good.r}),
                           Joined({good.r, good.s, {0}}),
                           good.r,
                           {}};
    for (const Bytes& signature : wrong)
        EXPECT_FALSE(good.key->verifyHash(good.digest, signature, SignatureForm::pair)) << Hex(signature);
    EXPECT_FALSE(good.key->verifyHash(good.digest, Joined({good.r, good.s}), SignatureForm::der));
    EXPECT_FALSE(good.key->verifyHash({}, Joined({good.r, good.s}), SignatureForm::pair));
    // Of a digest the first bytes count, as many as the order has; but no digest has 65.
    ASSERT_GE(good.digest.size(), good.r.size());
    Bytes longer = good.digest;
    longer.resize(maxDigestSize);
    EXPECT_TRUE(good.key->verifyHash(longer, Joined({good.r, good.s}), SignatureForm::pair));
    longer.push_back(0);
    EXPECT_FALSE(good.key->verifyHash(longer, Joined({good.r, good.s}), SignatureForm::pair));
}

TEST(DSA, RefusesNumbersThatMakeNoKey)
{
    const Signed good;
    struct Case {
        const char* name;
        element CCryptoDSANumbers::*number;
        CCryptoBigInteger (*change)(const CCryptoBigInteger& number, const CCryptoBigInteger& p);
    };
    using Number = CCryptoBigInteger;
    const Case cases[] = {
        {"a long prime", &CCryptoDSANumbers::prime, [](const Number& n, const Number&) { return (n << 2049) + Number(1); }},
        {"an enormous prime", &CCryptoDSANumbers::prime, [](const Number& n, const Number&) { return (n << 8000) + Number(1); }},
        {"an even prime", &CCryptoDSANumbers::prime, [](const Number& n, const Number&) { return n - Number(1); }},
        {"an order of 159 bits", &CCryptoDSANumbers::order, [](const Number& n, const Number&) { return n >> 1; }},
        {"an order that does not divide", &CCryptoDSANumbers::order, [](const Number& n, const Number&) { return n + Number(2); }},
        {"no generator", &CCryptoDSANumbers::generator, [](const Number&, const Number&) { return Number(); }},
        {"generator 1", &CCryptoDSANumbers::generator, [](const Number&, const Number&) { return Number(1); }},
        {"a generator of another order", &CCryptoDSANumbers::generator,
         [](const Number& n, const Number&) { return n + Number(1); }},
        {"a generator of order 2", &CCryptoDSANumbers::generator, [](const Number&, const Number& p) { return p - Number(1); }},
        {"a generator above the prime", &CCryptoDSANumbers::generator, [](const Number& n, const Number& p) { return n + p; }},
        {"public value 1", &CCryptoDSANumbers::publicValue, [](const Number&, const Number&) { return Number(1); }},
        {"a public value of another order", &CCryptoDSANumbers::publicValue,
         [](const Number& n, const Number&) { return n + Number(1); }},
        {"a public value above the prime", &CCryptoDSANumbers::publicValue, [](const Number& n, const Number& p) { return n + p; }},
    };
    for (const Case& row : cases) {
        CCryptoDSANumbers numbers = good.numbers;
        numbers.*row.number =
            row.change(Number::FromBytes((numbers.*row.number).bytes()), Number::FromBytes(numbers.prime.bytes())).toBytes();
        EXPECT_EQ(CCryptoDSA::FromPublic(numbers), nullptr) << row.name;
    }
    // An order that is no prime: its divisor 3 is the order of the generator, but it does not divide p - 1.
    CCryptoDSANumbers composite = good.numbers;
    const Number p = Number::FromBytes(good.numbers.prime.bytes());
    const Number third = (p - Number(1)) / Number(3);
    const Number generator = Number(2).modPower(third, p);
    ASSERT_TRUE(generator != Number(1) && generator.modPower(Number(3), p) == Number(1));
    Number order = Number::FromBytes(good.numbers.order.bytes());
    while (!(order % Number(3)).isZero())
        order += Number(2);
    composite.order = order.toBytes();
    composite.generator = generator.toBytes();
    composite.publicValue = composite.generator;
    EXPECT_EQ(CCryptoDSA::FromPublic(composite), nullptr);

    const element shortGenerator = Number::FromHex(generatorOfShortPrime).toBytes();
    EXPECT_EQ(CCryptoDSA::FromPublic({Number::FromHex(shortPrime).toBytes(), Number::FromHex(orderOfShortPrime).toBytes(),
                                      shortGenerator, shortGenerator}),
              nullptr);

    // Lengths alone: 1 modulo the order are q 2^k + 1, and p times its inverse.
    const Number q = Number::FromBytes(good.numbers.order.bytes());
    const std::uint32_t room = CCryptoDSA::maxBits - p.bits() - q.bits();
    EXPECT_NE(CCryptoDSA::FromPublic(Stretched(good.numbers, (q << (room - 1)) + Number(1), q)), nullptr);
    EXPECT_EQ(CCryptoDSA::FromPublic(Stretched(good.numbers, (q << (room + 1)) + Number(1), q)), nullptr) << "a long prime";
    const Number longOrder = q * Number(7);
    const Number inverse = p.modInverse(longOrder);
    EXPECT_EQ(CCryptoDSA::FromPublic(Stretched(good.numbers, inverse.isOdd() ? inverse : inverse + longOrder, longOrder)), nullptr)
        << "a long order";

    CCryptoDSANumbers withZero = good.numbers;
    withZero.prime = ElementOf(Joined({{0}, BytesOf(good.numbers.prime)}));
    const auto key = CCryptoDSA::FromPublic(withZero);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->numbers().prime, good.numbers.prime);
}
