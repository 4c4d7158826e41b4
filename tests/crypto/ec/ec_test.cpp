#include "core/base/algorithm.h"
#include "crypto/bigint/big_integer.h"
#include "crypto/ec/curve_arithmetic.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/ecdsa_nonce.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/crypto/ec/domain_numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

using namespace ccrypto;

namespace {

struct Limits {
    algorithm::Id id;
    Bytes order;
    Bytes prime;
};

std::vector<Limits> AllLimits()
{
    std::vector<Limits> all;
    for (const DomainNumbers& domain : AllDomains()) {
        const CurveFacts& facts = *FindCurve(domain.id);
        Limits& limits = all.emplace_back(domain.id, Bytes(facts.orderBytes), Bytes(facts.fieldBytes));
        EXPECT_TRUE(domain.order.toBytes(limits.order) && domain.p.toBytes(limits.prime));
    }
    return all;
}

/// Big-endian; none of the numbers here is so near to a multiple of 256 that a carry would arise.
Bytes Plus(Bytes number, int more)
{
    number.back() = static_cast<std::uint8_t>(number.back() + more);
    return number;
}

/// Of two numbers of one length; empty when the sum is longer.
Bytes Added(const Bytes& a, const Bytes& b)
{
    Bytes sum(a.size());
    unsigned carry = 0;
    for (std::size_t i = a.size(); i-- > 0; carry >>= 8) {
        carry += unsigned{a[i]} + b[i];
        sum[i] = static_cast<std::uint8_t>(carry);
    }
    return carry == 0 ? sum : Bytes();
}

class EveryCurve : public ::testing::TestWithParam<CurveFacts> {};
class EverySigningCurve : public ::testing::TestWithParam<CurveFacts> {};

std::vector<CurveFacts> SigningCurves()
{
    std::vector<CurveFacts> curves(Curves().begin(), Curves().end());
    std::erase_if(curves, [](const CurveFacts& facts) { return !facts.signs; });
    return curves;
}

} // namespace

TEST_P(EveryCurve, BothSidesAgree)
{
    SequenceRandom random(GetParam().id);
    for (int i = 0; i < 2; ++i) {
        const auto one = CCryptoEC::Generate(GetParam().id, random);
        const auto other = CCryptoEC::Generate(GetParam().id, random);
        ASSERT_TRUE(one != nullptr && other != nullptr);
        EXPECT_FALSE(one->samePublic(*other));
        const Bytes secret = BytesOf(one->agree(other->publicPoint().bytes()));
        EXPECT_EQ(secret.size(), GetParam().fieldBytes);
        EXPECT_EQ(Hex(secret), Hex(BytesOf(other->agree(one->publicPoint(true).bytes()))));
        EXPECT_TRUE(one->publicHalf()->agree(other->publicPoint().bytes()).isEmpty());
        const auto again = CCryptoEC::FromPrivate(GetParam().id, one->privateScalar().bytes(), one->publicPoint().bytes());
        ASSERT_NE(again, nullptr);
        EXPECT_TRUE(again->samePublic(*one));
        EXPECT_EQ(CCryptoEC::FromPrivate(GetParam().id, one->privateScalar().bytes(), other->publicPoint().bytes()), nullptr);
    }
}

TEST_P(EveryCurve, VerifiesWhatItSigns)
{
    SequenceRandom random(GetParam().id);
    const auto key = CCryptoEC::Generate(GetParam().id, random);
    ASSERT_NE(key, nullptr);
    for (const std::size_t length : {1, 20, 32, 64}) {
        SCOPED_TRACE(length);
        Bytes digest(length);
        ASSERT_TRUE(random.generate(digest));
        const element pair = key->signHash(digest, SignatureForm::pair, random);
        const element der = key->signHash(digest, SignatureForm::der, random);
        EXPECT_EQ(pair.isEmpty(), !GetParam().signs);
        EXPECT_EQ(der.isEmpty(), !GetParam().signs);
        const auto half = key->publicHalf();
        EXPECT_EQ(half->verifyHash(digest, pair.bytes(), SignatureForm::pair), GetParam().signs);
        EXPECT_EQ(half->verifyHash(digest, der.bytes(), SignatureForm::der), GetParam().signs);
        EXPECT_TRUE(half->signHash(digest, SignatureForm::pair, random).isEmpty());
        // Fresh bytes, another nonce.
        EXPECT_TRUE(!GetParam().signs || !(pair == key->signHash(digest, SignatureForm::pair, random)));

        // The first and the last bit of both numbers count, and so do those of the digest.
        for (std::size_t bit = 0; bit < 8 && GetParam().signs && length == 32; bit += 7) {
            for (const std::size_t at : {std::size_t{0}, pair.length() / 2 - std::size_t{1}, pair.length() - std::size_t{1}}) {
                Bytes changed = BytesOf(pair);
                changed[at] ^= static_cast<std::uint8_t>(1u << bit);
                EXPECT_FALSE(half->verifyHash(digest, changed, SignatureForm::pair)) << at << ", bit " << bit;
            }
            Bytes changed = digest;
            changed[0] ^= static_cast<std::uint8_t>(1u << bit);
            EXPECT_FALSE(half->verifyHash(changed, pair.bytes(), SignatureForm::pair)) << bit;
        }
    }
    EXPECT_TRUE(key->signHash({}, SignatureForm::pair, random).isEmpty());
    EXPECT_TRUE(key->signHash(Bytes(65), SignatureForm::pair, random).isEmpty());
    NoRandom dry;
    EXPECT_TRUE(key->signHash(Bytes(32, 1), SignatureForm::pair, dry).isEmpty());
}

TEST_P(EverySigningCurve, SignsNothingAfterAFault)
{
    const Bytes digest(32, 1);
    SequenceRandom random(GetParam().id);
    const auto key = CCryptoEC::Generate(GetParam().id, random);
    const Bytes scalar = BytesOf(key->privateScalar());

    // The key as it lies in memory, one bit of a copy of the scalar another.
    std::span<std::uint8_t> memory(reinterpret_cast<std::uint8_t*>(key.get()), sizeof *key);
    int copies = 0;
    for (auto place = std::ranges::search(memory, scalar); !place.empty(); place = std::ranges::search(memory, scalar)) {
        place.back() ^= 2;
        EXPECT_TRUE(key->signHash(digest, SignatureForm::pair, random).isEmpty());
        EXPECT_TRUE(key->signHashDeterministically(digest, SignatureForm::der, algorithm::sha256).isEmpty());
        place.back() ^= 2;
        EXPECT_FALSE(key->signHash(digest, SignatureForm::pair, random).isEmpty());
        memory = {place.end(), memory.end()};
        ++copies;
    }
    EXPECT_EQ(copies, 2);
}

TEST_P(EverySigningCurve, NoticesEachKindOfFault)
{
    using Number = CCryptoBigInteger;
    const Number& order = DomainOf(GetParam().id).order;
    const CurveArithmetic& arithmetic = *CurveArithmetic::Of(GetParam().id);
    const std::size_t length = GetParam().orderBytes;
    const auto bytesOf = [&](const Number& number) {
        Bytes bytes(length);
        EXPECT_TRUE(number.modulo(order).toBytes(bytes));
        return bytes;
    };

    SequenceRandom random(GetParam().id);
    const auto key = CCryptoEC::Generate(GetParam().id, random);
    struct Parts {
        Bytes digest, r, s, key, nonce;
    };
    Parts good = {Bytes(length, 0x21), Bytes(length), Bytes(length), BytesOf(key->privateScalar()),
                  BytesOf(CCryptoEC::Generate(GetParam().id, random)->privateScalar())};
    good.digest[0] = 0;
    ASSERT_TRUE(arithmetic.sign(good.r, good.s, good.digest, good.key, good.nonce));
    const auto check = [&](const Parts& parts) {
        return arithmetic.isOwnSignature(parts.digest, parts.r, parts.s, parts.key, parts.nonce);
    };
    EXPECT_TRUE(check(good));

    // What s = (digest + r * key) / nonce is after a fault: the same nonce and another r, or the same r and another nonce.
    Bytes number(length);
    arithmetic.digestToNumber(number, good.digest);
    const auto response = [&](const Bytes& r, const Bytes& nonce) {
        const Number sum = Number::FromBytes(number) + Number::FromBytes(r) * Number::FromBytes(good.key);
        return bytesOf(sum * Number::FromBytes(nonce).modInverse(order));
    };
    EXPECT_EQ(response(good.r, good.nonce), good.s);
    const auto more = [&](const Bytes& bytes) { return bytesOf(Number::FromBytes(bytes) + Number(1)); };
    const Bytes opposite = bytesOf(order - Number::FromBytes(good.nonce));
    struct Case {
        const char* what;
        Bytes Parts::*part;
        Bytes wrong;
        Bytes s;
    } const cases[] = {
        {"another digest", &Parts::digest, Joined({{1}, Bytes(length - 1, 0x21)}), good.s},
        {"another key", &Parts::key, more(good.key), good.s},
        {"another r", &Parts::r, more(good.r), good.s},
        {"another s", &Parts::s, more(good.s), more(good.s)},
        {"another nonce", &Parts::nonce, more(good.nonce), good.s},
        {"no nonce", &Parts::nonce, Bytes(length), good.s},
        {"r is 0", &Parts::r, Bytes(length), response(Bytes(length), good.nonce)},
        {"s is 0", &Parts::s, Bytes(length), Bytes(length)},
        {"the x of another point, and s made of it", &Parts::r, more(good.r), response(more(good.r), good.nonce)},
        {"the point of another nonce than that of s", &Parts::nonce, more(good.nonce), response(good.r, more(good.nonce))},
    };
    for (const Case& row : cases) {
        Parts parts = good;
        parts.s = row.s;
        parts.*row.part = row.wrong;
        EXPECT_FALSE(check(parts)) << row.what;
    }
    // The opposite nonce and s make as good a signature.
    Parts turned = good;
    turned.nonce = opposite;
    turned.s = bytesOf(order - Number::FromBytes(good.s));
    EXPECT_TRUE(check(turned));
}

TEST_P(EverySigningCurve, MakesNoSignatureOfWhichOneNumberIsZero)
{
    using Number = CCryptoBigInteger;
    const Number& order = DomainOf(GetParam().id).order;
    const CurveArithmetic& arithmetic = *CurveArithmetic::Of(GetParam().id);
    const std::size_t length = GetParam().orderBytes;
    SequenceRandom random(GetParam().id);
    const Bytes key = BytesOf(CCryptoEC::Generate(GetParam().id, random)->privateScalar());
    const Bytes nonce = BytesOf(CCryptoEC::Generate(GetParam().id, random)->privateScalar());
    Bytes r(length);
    Bytes s(length);
    ASSERT_TRUE(arithmetic.sign(r, s, Bytes(length, 1), key, nonce));
    // s is 0 for the digest -r * key, whose bits begin at the highest one of its bytes.
    const Number number = (order - (Number::FromBytes(r) * Number::FromBytes(key)).modulo(order))
                          << static_cast<std::uint32_t>(8 * length - order.bits());
    Bytes digest(length);
    ASSERT_TRUE(number.toBytes(digest));
    EXPECT_FALSE(arithmetic.sign(r, s, digest, key, nonce));
    digest[0] ^= 1;
    EXPECT_TRUE(arithmetic.sign(r, s, digest, key, nonce));
}

TEST(EcdsaNonce, IsWipedAtTheEnd)
{
    // One step makes all bits of a nonce of prime256v1.
    const Bytes number(32, 5);
    auto nonces = std::make_unique<EcdsaNonce>(CCryptoHMAC::Create(algorithm::sha256), *CurveArithmetic::Of(algorithm::prime256v1),
                                               number, number, Bytes());
    Bytes nonce(32);
    nonces->next(nonce);
    EXPECT_TRUE(Holds(*nonces, Hex(nonce)));
    EXPECT_FALSE(HoldsAfterItsEnd(std::move(nonces), nonce));
}

TEST_P(EveryCurve, IsWipedAtTheEnd)
{
    SequenceRandom random(GetParam().id);
    auto key = CCryptoEC::Generate(GetParam().id, random);
    const Bytes scalar = BytesOf(key->privateScalar());
    EXPECT_TRUE(Holds(*key, Hex(scalar)));
    EXPECT_FALSE(HoldsAfterItsEnd(std::move(key), scalar));
}

TEST_P(EveryCurve, RefusesLengthsOffByOne)
{
    SequenceRandom random(GetParam().id);
    const auto key = CCryptoEC::Generate(GetParam().id, random);
    for (const bool compressed : {false, true}) {
        const Bytes point = BytesOf(key->publicPoint(compressed));
        Bytes longer = point;
        longer.push_back(0);
        for (const Bytes& wrong : {Bytes(point.begin(), point.end() - 1), longer, Bytes(), Bytes{0}, Bytes{4}}) {
            EXPECT_EQ(CCryptoEC::FromPublic(GetParam().id, wrong), nullptr) << wrong.size();
            EXPECT_TRUE(key->agree(wrong).isEmpty()) << wrong.size();
        }
    }
    const Bytes scalar = BytesOf(key->privateScalar());
    Bytes longer = scalar;
    longer.insert(longer.begin(), 0);
    EXPECT_EQ(CCryptoEC::FromPrivate(GetParam().id, longer), nullptr);
    EXPECT_EQ(CCryptoEC::FromPrivate(GetParam().id, std::span(scalar).subspan(1)), nullptr);
    EXPECT_EQ(CCryptoEC::FromPrivate(GetParam().id, {}), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Table, EveryCurve, ::testing::ValuesIn(Curves().begin(), Curves().end()),
                         [](const auto& curve) { return std::string(curve.param.name); });

INSTANTIATE_TEST_SUITE_P(Table, EverySigningCurve, ::testing::ValuesIn(SigningCurves()),
                         [](const auto& curve) { return std::string(curve.param.name); });

TEST(EllipticCurves, RefuseNumbersOutOfRange)
{
    int congruent = 0;
    for (const Limits& limits : AllLimits()) {
        SCOPED_TRACE(FindCurve(limits.id)->name);
        const Bytes zero(limits.order.size());
        EXPECT_EQ(CCryptoEC::FromPrivate(limits.id, zero), nullptr);
        EXPECT_EQ(CCryptoEC::FromPrivate(limits.id, limits.order), nullptr);
        EXPECT_EQ(CCryptoEC::FromPrivate(limits.id, Plus(limits.order, 1)), nullptr);
        EXPECT_EQ(CCryptoEC::FromPrivate(limits.id, Bytes(limits.order.size(), 0xFF)), nullptr);
        const auto one = CCryptoEC::FromPrivate(limits.id, Plus(zero, 1));
        const auto last = CCryptoEC::FromPrivate(limits.id, Plus(limits.order, -1));
        ASSERT_TRUE(one != nullptr && last != nullptr);
        // The points of 1 and -1 differ in the sign of y alone.
        Bytes opposite = BytesOf(one->publicPoint(true));
        opposite[0] ^= 1;
        EXPECT_EQ(Hex(opposite), Hex(BytesOf(last->publicPoint(true))));

        const Bytes digest(20, 7);
        const Bytes signature = BytesOf(one->signHashDeterministically(digest, SignatureForm::pair, algorithm::sha1));
        const Bytes r(signature.begin(), signature.begin() + static_cast<std::ptrdiff_t>(zero.size()));
        const Bytes s(signature.begin() + static_cast<std::ptrdiff_t>(zero.size()), signature.end());
        for (const Bytes& wrong : {zero, limits.order, Bytes(zero.size(), 0xFF)}) {
            for (const bool first : {true, false}) {
                const Bytes pair = first ? Joined({wrong, s}) : Joined({r, wrong});
                EXPECT_FALSE(one->verifyHash(digest, pair, SignatureForm::pair));
                EXPECT_FALSE(one->verifyHash(digest, EcdsaPairToDer(pair).bytes(), SignatureForm::der));
            }
        }

        // A number with the order added stands for the same one and is refused, too, where it fits.
        for (const Bytes& pair : {Joined({Added(r, limits.order), s}), Joined({r, Added(s, limits.order)})}) {
            EXPECT_FALSE(one->verifyHash(digest, pair, SignatureForm::pair));
            congruent += pair.size() == signature.size() ? 1 : 0;
        }

        // So does a coordinate with the prime added: of the point with the smallest x, so that it fits.
        Bytes x(limits.prime.size());
        while (CCryptoEC::FromPublic(limits.id, Joined({{2}, x})) == nullptr)
            x = Plus(x, 1);
        const Bytes small = BytesOf(CCryptoEC::FromPublic(limits.id, Joined({{2}, x}))->publicPoint());
        const Bytes y(small.end() - static_cast<std::ptrdiff_t>(x.size()), small.end());
        ASSERT_NE(CCryptoEC::FromPublic(limits.id, Joined({{4}, x, y})), nullptr);
        const Bytes above = Added(x, limits.prime);
        ASSERT_FALSE(above.empty());
        EXPECT_EQ(CCryptoEC::FromPublic(limits.id, Joined({{2}, above})), nullptr);
        EXPECT_EQ(CCryptoEC::FromPublic(limits.id, Joined({{4}, above, y})), nullptr);
        EXPECT_EQ(CCryptoEC::FromPublic(limits.id, Joined({{4}, x, Added(y, limits.prime)})), nullptr);
        // Other forms: hybrid, and none at all.
        for (const int form : {0, 1, 2, 3, 5, 6, 7, 0x84}) {
            Bytes other = BytesOf(one->publicPoint());
            other[0] = static_cast<std::uint8_t>(form);
            EXPECT_EQ(CCryptoEC::FromPublic(limits.id, other), nullptr) << form;
        }
        Bytes off = BytesOf(one->publicPoint());
        off.back() ^= 1;
        EXPECT_EQ(CCryptoEC::FromPublic(limits.id, off), nullptr);
        EXPECT_TRUE(one->agree(off).isEmpty());
    }
    // The orders of secp160r1 and secp521r1 leave bits of their bytes free.
    EXPECT_GE(congruent, 4);
}

TEST(EllipticCurves, RefuseUnknownCurvesAndBrokenSources)
{
    NoRandom dry;
    SequenceRandom random(1);
    for (const algorithm::Id id : {algorithm::none, algorithm::sha1, algorithm::reserved1102, static_cast<algorithm::Id>(1114)}) {
        EXPECT_EQ(CCryptoEC::Generate(id, random), nullptr);
        EXPECT_EQ(CCryptoEC::FromPrivate(id, Bytes(32, 1)), nullptr);
        EXPECT_EQ(CCryptoEC::FromPublic(id, Bytes(65, 4)), nullptr);
    }
    EXPECT_EQ(CCryptoEC::Generate(algorithm::prime256v1, dry), nullptr);
    for (const std::uint8_t byte : {std::uint8_t{0}, std::uint8_t{0xFF}}) {
        ConstantRandom stuck(byte);
        EXPECT_EQ(CCryptoEC::Generate(algorithm::prime256v1, stuck), nullptr);
    }
    EXPECT_EQ(FindCurve("p-256")->id, algorithm::prime256v1);
    EXPECT_EQ(FindCurve("x25519")->id, algorithm::x25519);
    EXPECT_EQ(FindCurve("P-255"), nullptr);
}

TEST(MontgomeryCurves, RefusePointsOfLowOrder)
{
    struct {
        algorithm::Id id;
        std::string text;
    } const cases[] = {
        {algorithm::x25519, "00" + std::string(62, '0')},
        {algorithm::x25519, "01" + std::string(62, '0')},
        {algorithm::x25519, "e0eb7a7c3b41b8ae1656e3faf19fc46ada098deb9c32b1fd866205165f49b800"},
        {algorithm::x25519, "5f9c95bca3508c24b1d0b1559c83ef5b04445cc4581c8e86d8224eddd09f1157"},
        {algorithm::x25519, "ec" + std::string(60, 'f') + "7f"},
        {algorithm::x25519, "ed" + std::string(60, 'f') + "7f"},
        {algorithm::x25519, "ee" + std::string(60, 'f') + "7f"},
        {algorithm::x25519, "ee" + std::string(62, 'f')},
        {algorithm::x448, "00" + std::string(110, '0')},
        {algorithm::x448, "01" + std::string(110, '0')},
        {algorithm::x448, "fe" + std::string(54, 'f') + "fe" + std::string(54, 'f')},
        {algorithm::x448, "ff" + std::string(54, 'f') + "fe" + std::string(54, 'f')},
        {algorithm::x448, std::string(56, '0') + std::string(56, 'f')},
    };
    SequenceRandom random(2);
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text);
        Bytes point;
        for (std::size_t i = 0; i < row.text.size(); i += 2)
            point.push_back(static_cast<std::uint8_t>(std::stoul(row.text.substr(i, 2), nullptr, 16)));
        EXPECT_EQ(CCryptoEC::FromPublic(row.id, point), nullptr);
        EXPECT_TRUE(CCryptoEC::Generate(row.id, random)->agree(point).isEmpty());
    }
}

TEST(EcdsaSignature, IsReadAsStrictDer)
{
    struct {
        const char* why;
        Bytes der;
        const char* pair;
    } const cases[] = {
        {"plain", {0x30, 6, 2, 1, 1, 2, 1, 2}, "00010002"},
        {"zero", {0x30, 6, 2, 1, 0, 2, 1, 0x7F}, "0000007f"},
        {"a zero that keeps the sign", {0x30, 8, 2, 2, 0, 0x80, 2, 2, 0, 0xFF}, "008000ff"},
        {"as long as the order", {0x30, 9, 2, 2, 0x7F, 0xFF, 2, 3, 0, 0xFF, 0xFF}, "7fffffff"},
        {"nothing", {}, ""},
        {"a tag alone", {0x30}, ""},
        {"negative", {0x30, 6, 2, 1, 0x80, 2, 1, 2}, ""},
        {"a zero too many", {0x30, 7, 2, 2, 0, 1, 2, 1, 2}, ""},
        {"an INTEGER of no bytes", {0x30, 5, 2, 0, 2, 1, 2}, ""},
        {"a long form for a short length", {0x30, 0x81, 6, 2, 1, 1, 2, 1, 2}, ""},
        {"an indefinite length", {0x30, 0x80, 2, 1, 1, 2, 1, 2, 0, 0}, ""},
        {"a length of two bytes", {0x30, 0x82, 0, 6, 2, 1, 1, 2, 1, 2}, ""},
        {"a byte after it", {0x30, 6, 2, 1, 1, 2, 1, 2, 0}, ""},
        {"a byte after the numbers", {0x30, 7, 2, 1, 1, 2, 1, 2, 0}, ""},
        {"one number", {0x30, 3, 2, 1, 1}, ""},
        {"three numbers", {0x30, 9, 2, 1, 1, 2, 1, 2, 2, 1, 3}, ""},
        {"cut", {0x30, 6, 2, 1, 1, 2, 1}, ""},
        {"a number past the end", {0x30, 6, 2, 1, 1, 2, 2, 2}, ""},
        {"longer than the order", {0x30, 8, 2, 3, 1, 0, 0, 2, 1, 2}, ""},
        {"a SET", {0x31, 6, 2, 1, 1, 2, 1, 2}, ""},
        {"an OCTET STRING", {0x30, 6, 4, 1, 1, 2, 1, 2}, ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        const Bytes pair = BytesOf(EcdsaDerToPair(row.der, 2));
        EXPECT_EQ(Hex(pair), row.pair);
        if (!pair.empty()) {
            EXPECT_EQ(Hex(BytesOf(EcdsaPairToDer(pair))), Hex(row.der));
        }
    }

    // The longest of all, whose SEQUENCE needs a longer length.
    const Bytes pair(132, 0xFF);
    const Bytes der = BytesOf(EcdsaPairToDer(pair));
    EXPECT_EQ(der[1], 0x81);
    EXPECT_EQ(Hex(BytesOf(EcdsaDerToPair(der, 66))), Hex(pair));
    EXPECT_TRUE(EcdsaPairToDer(Bytes(3)).isEmpty());
    EXPECT_TRUE(EcdsaPairToDer({}).isEmpty());
    EXPECT_TRUE(EcdsaPairToDer(Bytes(146)).isEmpty());
}
