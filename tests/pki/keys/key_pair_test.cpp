#include "crypto/hash/hash.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/eddsa_key_pair.h"
#include "pki/keys/rsa_key_pair.h"
#include "tests/pki/keys/test_keys.h"

#include <map>
#include <string_view>
#include <vector>

using namespace ccrypto;

namespace {

/// The key made anew from its numbers; null when they are not those of a key.
std::unique_ptr<ICryptoKeyPair> Remade(const ICryptoKeyPair& key)
{
    std::map<std::string_view, element> numbers;
    for (const SCryptoKeyNumber& number : key.publicNumbers())
        numbers[number.name] = number.value;
    for (const SCryptoKeyNumber& number : key.privateNumbers())
        numbers[number.name] = number.value;
    switch (key.algorithmId()) {
    case algorithm::rsaEncryption:
        return std::make_unique<CCryptoRSAKeyPair>(
            CCryptoRSA::FromPrivate({numbers["modulus"], numbers["publicExponent"], numbers["privateExponent"], numbers["prime1"],
                                     numbers["prime2"], numbers["exponent1"], numbers["exponent2"], numbers["coefficient"]}));
    case algorithm::ed25519:
        return std::make_unique<CCryptoEddsaKeyPair>(EddsaKey::FromSeed(key.curveId(), numbers["seed"].bytes()));
    default:
        return std::make_unique<CCryptoECKeyPair>(
            CCryptoEC::FromPrivate(key.curveId(), numbers["privateScalar"].bytes(), numbers["publicPoint"].bytes()));
    }
}

} // namespace

TEST(KeyPair, SignsVerifiesAndRefusesWhatItIsNotFor)
{
    Bytes digest(32, 0x5A);
    for (const algorithm::Id kind : {algorithm::rsaEncryption, algorithm::prime256v1, algorithm::secp521r1}) {
        SCOPED_TRACE(kind);
        const std::unique_ptr<ICryptoKeyPair> key = KeyOf(kind);
        ASSERT_NE(key, nullptr);
        const std::unique_ptr<ICryptoKeyPair> half = key->publicHalf();
        ASSERT_NE(half, nullptr);
        for (const auto scheme : {SCryptoPadding::Scheme::pkcs1, SCryptoPadding::Scheme::masked}) {
            SCryptoPadding padding;
            padding.scheme = scheme;
            element signature = key->signer()->sign(algorithm::sha256, digest, padding);
            ASSERT_FALSE(signature.isEmpty());
            EXPECT_LE(signature.length(), key->signer()->signatureSize());
            EXPECT_TRUE(half->signer()->verify(algorithm::sha256, digest, signature.bytes(), padding));
            signature.data()[signature.length() - 1] ^= 1;
            EXPECT_FALSE(half->signer()->verify(algorithm::sha256, digest, signature.bytes(), padding));
        }
        EXPECT_TRUE(half->signer()->sign(algorithm::sha256, digest).isEmpty());
        for (const algorithm::Id other : {algorithm::none, algorithm::sha1, algorithm::sha384, algorithm::sha512}) {
            EXPECT_TRUE(key->signer()->sign(other, digest).isEmpty()) << other;
            EXPECT_FALSE(half->signer()->verify(other, digest, key->signer()->sign(algorithm::sha256, digest).bytes())) << other;
        }
        EXPECT_TRUE(half->privateKeyInfo().isEmpty());
    }
}

TEST(KeyPair, OfRSADecryptsWithBothPaddings)
{
    const std::unique_ptr<ICryptoKeyPair> key = KeyOf(algorithm::rsaEncryption);
    ASSERT_NE(key, nullptr);
    const Bytes text(16, 7);
    for (const auto scheme : {SCryptoPadding::Scheme::pkcs1, SCryptoPadding::Scheme::masked}) {
        SCryptoPadding padding;
        padding.scheme = scheme;
        const element ciphertext = key->publicHalf()->decrypter()->encrypt(text, padding);
        element plain;
        ASSERT_TRUE(key->decrypter()->decrypt(ciphertext.bytes(), plain, padding));
        EXPECT_EQ(HexOf(plain), Hex(text));
        EXPECT_FALSE(key->publicHalf()->decrypter()->decrypt(ciphertext.bytes(), plain, padding));
        EXPECT_TRUE(plain.isEmpty());
    }
}

TEST(KeyPair, OfEddsaSignsWholeMessages)
{
    for (const TestVector& vector : ReadVectors("eddsa_keys.txt")) {
        SCOPED_TRACE(vector.place());
        CCryptoKeyFile file;
        const std::unique_ptr<ICryptoKeyPair> key = file.Load(vector.bytes("PrivateKeyInfo"));
        const std::unique_ptr<ICryptoKeyPair> half = file.Load(vector.bytes("PublicKeyInfo"));
        ASSERT_TRUE(key != nullptr && half != nullptr) << ReasonOfFailure().c_str();
        EXPECT_EQ(key->algorithmId(), vector.number("Kind"));
        EXPECT_TRUE(key->hasPrivate() && !half->hasPrivate() && !key->publicHalf()->hasPrivate());
        EXPECT_EQ(HexOf(file.Save(*key, KeyForm::privateKeyInfo)), vector.text("PrivateKeyInfo"));
        EXPECT_EQ(HexOf(file.Save(*key, KeyForm::publicKeyInfo)), vector.text("PublicKeyInfo"));
        EXPECT_EQ(HexOf(key->publicHalf()->publicKeyInfo()), vector.text("PublicKeyInfo"));
        EXPECT_TRUE(file.Save(*half, KeyForm::privateKeyInfo).isEmpty());
        EXPECT_TRUE(file.Save(*key, KeyForm::ecPrivateKey).isEmpty());
        EXPECT_TRUE(key->decrypter() == nullptr && key->agreement() == nullptr);
        if (vector.has("OneAsymmetricKey")) {
            const std::unique_ptr<ICryptoKeyPair> whole = file.Load(vector.bytes("OneAsymmetricKey"));
            ASSERT_NE(whole, nullptr) << ReasonOfFailure().c_str();
            EXPECT_EQ(HexOf(whole->privateKeyInfo()), vector.text("PrivateKeyInfo"));
        }
        if (!vector.has("Signature"))
            continue;
        const Bytes message = vector.bytes("Message");
        const Bytes signature = vector.bytes("Signature");
        EXPECT_TRUE(key->signer()->signsMessages());
        EXPECT_EQ(key->signer()->signatureSize(), signature.size());
        EXPECT_EQ(HexOf(key->signer()->sign(algorithm::none, message)), vector.text("Signature"));
        EXPECT_TRUE(half->signer()->verify(algorithm::none, message, signature));
        EXPECT_FALSE(half->signer()->verify(algorithm::none, Bytes(7, 1), signature));
        EXPECT_TRUE(half->signer()->sign(algorithm::none, message).isEmpty());
        // A digest is not taken for the message.
        EXPECT_TRUE(key->signer()->sign(algorithm::sha256, Bytes(32, 1)).isEmpty());
        EXPECT_FALSE(half->signer()->verify(algorithm::sha256, message, signature));
    }
}

TEST(KeyPair, HasTheAbilitiesOfItsAlgorithm)
{
    const struct {
        algorithm::Id kind;
        bool signs;
        bool decrypts;
        bool agrees;
    } cases[] = {
        {algorithm::rsaEncryption, true, true, false},
        {algorithm::prime256v1, true, false, true},
        {algorithm::x25519, false, false, true},
        {algorithm::x448, false, false, true},
    };
    for (const auto& test : cases) {
        const std::unique_ptr<ICryptoKeyPair> key = KeyOf(test.kind);
        ASSERT_NE(key, nullptr);
        const std::unique_ptr<ICryptoKeyPair> publicHalf = key->publicHalf();
        ASSERT_NE(publicHalf, nullptr);
        for (ICryptoKeyPair* const half : {key.get(), publicHalf.get()}) {
            EXPECT_EQ(half->signer() != nullptr, test.signs) << half->name();
            EXPECT_EQ(half->decrypter() != nullptr, test.decrypts) << half->name();
            EXPECT_EQ(half->agreement() != nullptr, test.agrees) << half->name();
        }
    }
}

TEST(KeyPair, OfRSAWorksWithTheLongestModuli)
{
    for (const TestVector& vector : ReadVectors("rsa_long_keys.txt")) {
        SCOPED_TRACE(vector.place());
        const std::unique_ptr<ICryptoKeyPair> key = Load(vector.bytes("PrivateKeyInfo"));
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(key->keySize(), vector.number("Size"));
        EXPECT_EQ(HexOf(key->publicKeyInfo()), vector.text("PublicKeyInfo"));
        EXPECT_EQ(HexOf(key->privateKeyInfo()), vector.text("PrivateKeyInfo"));

        const element digest = ICryptoHash::Create(algorithm::sha256)->digestOf(vector.bytes("Message"));
        EXPECT_EQ(HexOf(key->signer()->sign(algorithm::sha256, digest.bytes())), vector.text("Signature"));
        SCryptoPadding masked;
        masked.scheme = SCryptoPadding::Scheme::masked;
        masked.masking.saltLength = static_cast<std::int32_t>(key->keySize() / 8 - 32 - 2);
        EXPECT_TRUE(key->signer()->verify(algorithm::sha256, digest.bytes(), vector.bytes("SignaturePSS"), masked));
        element plain;
        EXPECT_TRUE(key->decrypter()->decrypt(vector.bytes("Ciphertext"), plain, masked));
        EXPECT_EQ(HexOf(plain), Hex(vector.bytes("Plain")));
        EXPECT_TRUE(key->decrypter()->decrypt(vector.bytes("CiphertextPKCS1"), plain));
        EXPECT_EQ(HexOf(plain), Hex(vector.bytes("Plain")));
    }
}

TEST(KeyPair, BothSidesAgreeOnOneSecret)
{
    for (const CurveFacts& curve : Curves()) {
        SCOPED_TRACE(curve.name);
        CCryptoECKeyPair ours(CCryptoEC::Generate(curve.id));
        CCryptoECKeyPair theirs(CCryptoEC::Generate(curve.id));
        const element secret = ours.agree(*theirs.publicHalf());
        EXPECT_EQ(secret.length(), curve.fieldBytes);
        EXPECT_TRUE(secret == theirs.agree(*ours.publicHalf()));
        const std::unique_ptr<ICryptoKeyPair> other =
            KeyOf(curve.id == algorithm::secp384r1 ? algorithm::brainpoolP384r1 : algorithm::secp384r1);
        EXPECT_TRUE(ours.agree(*other).isEmpty()) << "of another curve";
    }
}

TEST(KeyPair, OfX25519AgreesWithNoKeyForSignatures)
{
    // Both have 32 bytes that could be taken for a point.
    CCryptoECKeyPair ours(CCryptoEC::Generate(algorithm::x25519));
    const CCryptoEddsaKeyPair other(EddsaKey::Generate(algorithm::ed25519));
    EXPECT_TRUE(ours.agree(other).isEmpty());
    EXPECT_FALSE(ours.agree(ours).isEmpty());
}

TEST(KeyPair, OfACurveKnowsTheLengthOfItsLongestSignature)
{
    // SEQUENCE and two INTEGERs, each with a leading zero byte (RFC 3279, 2.2.3).
    const std::pair<algorithm::Id, std::uint32_t> sizes[] = {
        {algorithm::prime256v1, 72}, {algorithm::secp384r1, 104}, {algorithm::secp521r1, 141}};
    for (const auto& [curve, size] : sizes)
        EXPECT_EQ(KeyOf(curve)->signer()->signatureSize(), size) << curve;
}

TEST(KeyPair, IsMadeOfItsNumbers)
{
    for (const auto& key : KeysOfEveryClass()) {
        ASSERT_NE(key, nullptr);
        SCOPED_TRACE(key->name());
        EXPECT_EQ(HexOf(Remade(*key)->privateKeyInfo()), HexOf(key->privateKeyInfo()));
        const std::unique_ptr<ICryptoKeyPair> half = key->publicHalf();
        EXPECT_TRUE(half->privateNumbers().empty());
        const std::vector<SCryptoKeyNumber> numbers = key->publicNumbers();
        const std::vector<SCryptoKeyNumber> ofHalf = half->publicNumbers();
        ASSERT_EQ(numbers.size(), ofHalf.size());
        for (std::size_t i = 0; i < numbers.size(); ++i)
            EXPECT_EQ(HexOf(numbers[i].value), HexOf(ofHalf[i].value)) << numbers[i].name;
    }
}
