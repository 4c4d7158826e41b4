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

/// As long as the order.
Bytes Filled(const Bytes& number, std::size_t length)
{
    Bytes filled(length - number.size(), 0);
    filled.insert(filled.end(), number.begin(), number.end());
    return filled;
}

/// A vector that is valid, its key and what was signed.
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
            return;
        }
    }

    CCryptoDSANumbers numbers;
    std::unique_ptr<CCryptoDSA> key;
    Bytes digest;
    Bytes r;
    Bytes s;
};

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
    const auto plusQ = [&](const Bytes& number) {
        const auto sum = CCryptoBigInteger::FromBytes(number) + CCryptoBigInteger::FromBytes(q);
        Bytes bytes(good.r.size());
        return sum.toBytes(bytes) ? bytes : q;
    };
    const Bytes wrong[] = {Joined({zero, good.s}),
                           Joined({good.r, zero}),
                           Joined({q, good.s}),
                           Joined({good.r, q}),
                           Joined({plusQ(good.r), good.s}),
                           Joined({good.r, plusQ(good.s)}),
                           Joined({good.s, good.r}),
                           Joined({good.r, good.s, {0}}),
                           good.r,
                           {}};
    for (const Bytes& signature : wrong)
        EXPECT_FALSE(good.key->verifyHash(good.digest, signature, SignatureForm::pair)) << Hex(signature);
    EXPECT_FALSE(good.key->verifyHash(good.digest, Joined({good.r, good.s}), SignatureForm::der));
    EXPECT_FALSE(good.key->verifyHash({}, Joined({good.r, good.s}), SignatureForm::pair));
    EXPECT_FALSE(good.key->verifyHash(Bytes(65, 1), Joined({good.r, good.s}), SignatureForm::pair));
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
        {"a short prime", &CCryptoDSANumbers::prime, [](const Number& n, const Number&) { return n >> 8; }},
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
    CCryptoDSANumbers withZero = good.numbers;
    withZero.prime = ElementOf(Joined({{0}, BytesOf(good.numbers.prime)}));
    const auto key = CCryptoDSA::FromPublic(withZero);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->numbers().prime, good.numbers.prime);
}
