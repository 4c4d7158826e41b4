#include "crypto/bigint/limbs.h"
#include "crypto/bigint/montgomery_calls.h"
#include "crypto/rsa/rsa.h"
#include "tests/crypto/secrets/marked.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// No number of a private key, nothing it decrypts and no random byte that a key is made of decides a branch or an address.

namespace {

/// A new key whose numbers are secret from their first byte on.
const CCryptoRSA& SecretKey()
{
    static SecretRandom random(ICryptoRandom::Instance());
    static const std::unique_ptr<CCryptoRSA> key = CCryptoRSA::Generate(1024, 65537, {}, random);
    return *key;
}

Bytes PublicCiphertext(const Bytes& block)
{
    return Known(SecretKey().publicOperation(block));
}

} // namespace

TEST(RSASecrets, GenerateAKeyAndSign)
{
    const CCryptoRSA& key = SecretKey();
    const Bytes digest(32, 7);
    EXPECT_TRUE(key.verifyPKCS1(algorithm::sha256, digest, Known(key.signPKCS1(algorithm::sha256, digest))));
    EXPECT_TRUE(key.verifyDigestInfo(digest, Known(key.signDigestInfo(digest))));
    EXPECT_TRUE(key.verifyPSS({}, digest, Known(key.signPSS({}, digest))));
}

TEST(RSASecrets, TakeAPrivateKey)
{
    CCryptoRSANumbers numbers = SecretKey().numbers();
    for (element* number :
         {&numbers.privateExponent, &numbers.prime1, &numbers.prime2, &numbers.exponent1, &numbers.exponent2, &numbers.coefficient})
        constant_time::ClassifyBytes(number->data(), number->length());
    EXPECT_NE(CCryptoRSA::FromPrivate(numbers), nullptr);
}

TEST(RSASecrets, DecryptWithRightAndWrongPadding)
{
    const CCryptoRSA& key = SecretKey();
    const Bytes message(20, 9);
    element found;
    ASSERT_TRUE(key.decryptPKCS1(Known(key.encryptPKCS1(message)), found));
    EXPECT_EQ(Known(found), message);
    ASSERT_TRUE(key.unwrapPKCS1(Known(key.encryptPKCS1(message)), 20, found));
    EXPECT_EQ(Known(found), message);
    ASSERT_TRUE(key.decryptOAEP({}, Known(key.encryptOAEP({}, message)), found));
    EXPECT_EQ(Known(found), message);
    for (const std::uint8_t first : Bytes{2, 1}) {
        Bytes block(128, 0x55);
        block[0] = 0;
        block[1] = first;
        ASSERT_TRUE(key.decryptPKCS1(PublicCiphertext(block), found));
        ASSERT_TRUE(key.unwrapPKCS1(PublicCiphertext(block), 20, found));
        EXPECT_NE(Known(found), message);
        EXPECT_FALSE(key.decryptOAEP({}, PublicCiphertext(block), found));
    }
}

TEST(RSASecrets, MultiplyInEveryWay)
{
    constexpr std::size_t count = 16;
    limbs::Limb number[count];
    limbs::Limb modulus[count];
    for (std::size_t i = 0; i < count; ++i) {
        number[i] = 0x0123456789abcdef * (i + 1);
        modulus[i] = 0xfedcba9876543211 * (i + 1) | 1;
    }
    modulus[count - 1] = ~limbs::Limb{0};
    constant_time::ClassifyBytes(number, sizeof number);
    constant_time::ClassifyBytes(modulus, sizeof modulus);
    std::vector<std::uint64_t> results;
    for (const Variant<MontgomeryCalls>& variant : MontgomeryVariants()) {
        if ((variant.needs & ~cpu::PresentFeatures()) != 0)
            continue;
        limbs::Limb product[2 * count];
        limbs::Limb result[count];
        variant.calls.square(product, number, count);
        variant.calls.multiply(product, number, modulus, count);
        variant.calls.reduce(result, product, modulus, 0 - limbs::InverseModuloLimb(modulus[0]), count);
        results.push_back(constant_time::Declassify(result[0]));
    }
    for (const std::uint64_t result : results)
        EXPECT_EQ(result, results.front());
}
