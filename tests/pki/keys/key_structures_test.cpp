#include "asn1/der/der_parser.h"
#include "asn1/parser/parser.h"
#include "asn1/types/algorithm_table.h"
#include "asn1/types/asn1_values.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/key_encoding.h"
#include "pki/keys/key_objects.h"
#include "pki/keys/password_objects.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/test_der.h"

#include <algorithm>

using namespace ccrypto;

// Numbers and versions in the structures of keys, at the edges of what is allowed.

namespace {

constexpr std::uint8_t integerTag = 0x02;
constexpr std::uint8_t octetStringTag = 0x04;
constexpr std::uint8_t sequenceTag = 0x30;

Bytes AlgorithmOidTlv(algorithm::Id id)
{
    return BytesOf(CCryptoASN1ObjectIdentifier(CCryptoString(OidOfAlgorithm(id))).BuildDer());
}

struct PBES2Case {
    const char* name;
    Bytes iterations = {0x03, 0xE8};
    Bytes keyLength = {}; ///< left out when empty
    algorithm::Id cipher = algorithm::aes256Cbc;
    Bytes rc2Version = {};
    bool isRead = true;
    bool isUnderstood = true;
};

Bytes PBES2Der(const PBES2Case& test)
{
    const Bytes keyLength = test.keyLength.empty() ? Bytes() : Tlv(integerTag, test.keyLength);
    const Bytes derivation =
        Tlv(sequenceTag, Joined({Tlv(octetStringTag, Bytes(8, 1)), Tlv(integerTag, test.iterations), keyLength}));
    const bool isRc2 = test.cipher == algorithm::rc2Cbc;
    const Bytes iv = Tlv(octetStringTag, Bytes(isRc2 ? 8 : 16, 2));
    const Bytes parameters = isRc2 ? Tlv(sequenceTag, Joined({Tlv(integerTag, test.rc2Version), iv})) : iv;
    return Tlv(sequenceTag, Joined({Tlv(sequenceTag, Joined({AlgorithmOidTlv(algorithm::pbkdf2), derivation})),
                                    Tlv(sequenceTag, Joined({AlgorithmOidTlv(test.cipher), parameters}))}));
}

} // namespace

TEST(KeyStructures, NumbersOfPBES2AreInBounds)
{
    const PBES2Case cases[] = {
        {.name = "as usual"},
        {.name = "a key length", .keyLength = {32}},
        {.name = "a key length of another cipher", .keyLength = {16}, .isUnderstood = false},
        {.name = "a key length of zero", .keyLength = {0}, .isRead = false},
        {.name = "iterations below zero", .iterations = {0xFF}, .isRead = false},
        {.name = "iterations of 32 bits", .iterations = {0, 0xFF, 0xFF, 0xFF, 0xFF}, .isUnderstood = false},
        {.name = "iterations of 33 bits", .iterations = {1, 0, 0, 0, 1}, .isRead = false},
        {.name = "no iteration", .iterations = {0}, .isUnderstood = false},
        {.name = "RC2", .keyLength = {0, 128}, .cipher = algorithm::rc2Cbc, .rc2Version = {58}},
        {.name = "RC2 with a long key",
         .keyLength = {0, 129},
         .cipher = algorithm::rc2Cbc,
         .rc2Version = {58},
         .isUnderstood = false},
        {.name = "an unknown version of RC2", .cipher = algorithm::rc2Cbc, .rc2Version = {59}, .isUnderstood = false},
    };
    for (const PBES2Case& test : cases) {
        SCOPED_TRACE(test.name);
        const element der = ElementOf(PBES2Der(test));
        const bool isRc2 = test.cipher == algorithm::rc2Cbc;
        CCryptoPBES2Parameters parameters(isRc2 ? CCryptoPBES2Parameters::Form::rc2 : CCryptoPBES2Parameters::Form::plain);
        EXPECT_EQ(parameters.ParseDer(der), test.isRead);
        CCryptoAlgorithmIdentifier identifier(algorithm::pbes2, false);
        identifier.setParameters(CCryptoDERParser().Decode(der.bytes()).get());
        EXPECT_EQ(CCryptoPasswordEncryption::Understands(identifier), test.isRead && test.isUnderstood);
    }
}

TEST(KeyStructures, VersionsOfRC2StandForEffectiveBits)
{
    // RFC 8018, B.2.3.
    const std::pair<Bytes, std::uint32_t> versions[] = {{{0, 160}, 40}, {{120}, 64}, {{58}, 128},   {{1, 0}, 256},
                                                        {{4, 0}, 1024}, {{4, 1}, 0}, {{0, 255}, 0}, {{1}, 0}};
    for (const auto& [version, bits] : versions) {
        CCryptoPBES2Parameters parameters(CCryptoPBES2Parameters::Form::rc2);
        ASSERT_TRUE(parameters.ParseDer(ElementOf(PBES2Der({.name = "", .cipher = algorithm::rc2Cbc, .rc2Version = version}))))
            << Hex(version);
        EXPECT_EQ(parameters.rc2EffectiveBits, bits) << Hex(version);
    }
}

TEST(KeyStructures, KeysOfOtherVersionsAreRefused)
{
    const std::unique_ptr<ICryptoKeyPair> rsa = KeyOf(algorithm::rsaEncryption);
    const std::unique_ptr<ICryptoKeyPair> ec = KeyOf(algorithm::prime256v1);
    ASSERT_TRUE(rsa != nullptr && ec != nullptr);
    const struct {
        const char* name;
        element der;
        std::vector<std::uint8_t> right;
    } forms[] = {
        {"PrivateKeyInfo", rsa->privateKeyInfo(), {0, 1}},
        {"RSAPrivateKey", rsa->ownForm(KeyForm::rsaPrivateKey), {0}},
        {"ECPrivateKey", ec->ownForm(KeyForm::ecPrivateKey), {1}},
    };
    for (const auto& form : forms) {
        for (const std::uint8_t version : Bytes{0, 1, 2, 3, 0xFF}) {
            // The version comes first: SEQUENCE, its length, INTEGER 1 byte.
            Bytes der = BytesOf(form.der);
            const std::size_t at = der[1] == 0x82 ? 6 : der[1] == 0x81 ? 5 : 4;
            ASSERT_EQ(der[at - 2], integerTag);
            der[at] = version;
            EXPECT_EQ(Load(der) != nullptr, std::ranges::find(form.right, version) != form.right.end())
                << form.name << ' ' << int{version};
        }
    }
}

TEST(KeyStructures, NumbersOfRSABelowZeroAreRefused)
{
    const std::vector<SCryptoKeyNumber> numbers = KeyOf(algorithm::rsaEncryption)->publicNumbers();
    const Bytes modulus = BytesOf(numbers[0].value);
    ASSERT_GE(modulus[0], 0x80);
    const Bytes exponent = Tlv(integerTag, BytesOf(numbers[1].value));
    EXPECT_NE(Load(Tlv(sequenceTag, Joined({Tlv(integerTag, Joined({Bytes{0}, modulus})), exponent}))), nullptr);
    EXPECT_EQ(Load(Tlv(sequenceTag, Joined({Tlv(integerTag, modulus), exponent}))), nullptr);
}

TEST(KeyStructures, TheCurveInAKeyIsThatOfItsAlgorithm)
{
    for (const algorithm::Id inner : {algorithm::prime256v1, algorithm::brainpoolP256r1}) {
        CCryptoPrivateKeyInfo info;
        ASSERT_TRUE(info.ParseDer(KeyOf(algorithm::prime256v1)->privateKeyInfo()));
        info.privateKey = KeyOf(inner)->ownForm(KeyForm::ecPrivateKey);
        EXPECT_EQ(LoadPrivateKeyInfo(info.BuildDer()) != nullptr, inner == algorithm::prime256v1);
    }
}

TEST(KeyStructures, AFileIsNotLongerThanAnyKey)
{
    const std::unique_ptr<ICryptoKeyPair> key = KeyOf(algorithm::x25519);
    CCryptoString pem = CCryptoKeyFile::ToPem(KeyForm::privateKeyInfo, key->privateKeyInfo());
    const std::string line = std::string(63, 'x') + "\n";
    CCryptoKeyFile file;
    const auto load = [&] { return file.Load({reinterpret_cast<const std::uint8_t*>(pem.c_str()), pem.length()}); };
    EXPECT_EQ(file.Load(Bytes{1}), nullptr);
    EXPECT_NE(load(), nullptr);
    EXPECT_FALSE(LastFailure().has_value()) << "what failed before is forgotten";
    while (pem.length() + line.size() <= 1 << 20)
        pem.append(line);
    EXPECT_NE(load(), nullptr);
    pem.append(line);
    EXPECT_EQ(load(), nullptr);
    EXPECT_STREQ(ReasonOfFailure().c_str(), "it is longer than any key");
}
