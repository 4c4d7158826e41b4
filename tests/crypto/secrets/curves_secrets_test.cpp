#include "core/base/algorithm.h"
#include "crypto/base/constant_time.h"
#include "crypto/bigint/fixed_limbs.h"
#include "crypto/ec/curve_domains.h"
#include "crypto/ec/curve_point.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/eddsa.h"
#include "crypto/ec/montgomery_field.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/secrets/marked.h"

#include <gtest/gtest.h>

using namespace ccrypto;

using constant_time::ClassifyBytes;
using constant_time::DeclassifyBytes;

namespace {

class CurveSecrets : public ::testing::TestWithParam<CurveFacts> {};

} // namespace

TEST_P(CurveSecrets, DecideNothing)
{
    SequenceRandom source(3);
    SecretRandom random(source);
    const auto key = CCryptoEC::Generate(GetParam().id, random);
    const auto other = CCryptoEC::Generate(GetParam().id, random);
    ASSERT_TRUE(key != nullptr && other != nullptr);
    if (GetParam().signs) {
        // A point that is as secret as the scalars it comes of.
        const auto base = ccrypto::MultiplyBase(GetParam().id, key->privateScalar().bytes());
        const auto sum = ccrypto::Add(*base, *ccrypto::Multiply(*base, other->privateScalar().bytes()));
        ASSERT_TRUE(sum.has_value());
        const auto product = ccrypto::Multiply(*sum, key->privateScalar().bytes());
        EXPECT_NE(CCryptoEC::FromPublic(GetParam().id, Known(product->bytes())), nullptr);
    }
    const Bytes ours = Known(key->agree(other->publicPoint().bytes()));
    const Bytes theirs = Known(other->agree(key->publicPoint().bytes()));
    EXPECT_EQ(ours, theirs);
    if (!GetParam().signs)
        return;
    const std::array<std::uint8_t, 32> digest = {1, 2, 3};
    const Bytes signature = Known(key->signHash(digest, SignatureForm::der, random));
    EXPECT_TRUE(key->verifyHash(digest, signature, SignatureForm::der));
}

INSTANTIATE_TEST_SUITE_P(Table, CurveSecrets, ::testing::ValuesIn(Curves().begin(), Curves().end()),
                         [](const auto& curve) { return std::string(curve.param.name); });

TEST(EddsaSecrets, DecideNothing)
{
    for (const algorithm::Id curve : {algorithm::ed25519, algorithm::ed448}) {
        SequenceRandom source(3);
        SecretRandom random(source);
        const auto key = ccrypto::EddsaKey::Generate(curve, random);
        ASSERT_NE(key, nullptr);
        const std::array<std::uint8_t, 32> message = {1, 2, 3};
        const Bytes signature = Known(key->sign(message));
        EXPECT_TRUE(key->verify(message, signature));
    }
}

TEST(InversionSecrets, DecideNothing)
{
    const MontgomeryField<4> field(curve_domains::prime256v1.n);
    Limbs<4> number = {5, 6, 7, 8};
    ClassifyBytes(&number, sizeof number);
    Limbs<4> product = field.leave(field.multiply(field.invert(number), number));
    DeclassifyBytes(&product, sizeof product);
    EXPECT_EQ(product, Limbs<4>{1});
}
