#include "asn1/der/der_cursor.h"
#include "asn1/der/der_parser.h"
#include "crypto/hash/hash.h"
#include "pki/keys/dsa_key_pair.h"
#include "pki/keys/key_encoding.h"
#include "pki/keys/rsa_key_pair.h"
#include "pki/x509/signature.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/test_der.h"

#include <algorithm>

using namespace ccrypto;

namespace {

using SignatureKind = SignatureAlgorithm::Kind;

/// The three fields of what a signature covers.
struct SignedParts {
    Bytes octets;
    Bytes algorithm;
    Bytes signature;
};

SignedParts SignedPartsOf(const Bytes& certificate)
{
    DerCursor fields(OnlyValue(certificate, der::sequence).value());
    const auto next = [&fields] {
        const std::span<const std::uint8_t> octets = fields.read().octets;
        return Bytes(octets.begin(), octets.end());
    };
    SignedParts parts = {next(), next(), {}};
    const std::span<const std::uint8_t> bits = fields.read(der::bitString).value.subspan(1);
    parts.signature.assign(bits.begin(), bits.end());
    return parts;
}

std::vector<std::unique_ptr<ICryptoKeyPair>> KeysOfSignatures()
{
    std::vector<std::unique_ptr<ICryptoKeyPair>> keys;
    Bytes last;
    for (const TestVector& vector : ReadVectors("signatures.txt"))
        if (const Bytes info = vector.bytes("PublicKeyInfo"); std::exchange(last, info) != info)
            keys.push_back(Load(info));
    return keys;
}

SignatureResult Verify(ICryptoKeyPair& key, const SignedParts& parts)
{
    const auto algorithm = ReadSignatureAlgorithm(parts.algorithm);
    return algorithm ? VerifySignature(key, *algorithm, parts.octets, parts.signature) : SignatureResult::unsupportedAlgorithm;
}

Bytes WithFlippedBit(Bytes bytes, std::size_t at)
{
    bytes.at(at) ^= 1;
    return bytes;
}

algorithm::Id HashNamed(const std::string& name)
{
    return ICryptoHash::CreateByName(name)->algorithmId();
}

Bytes Identifier(std::string_view oid, const Bytes& parameters = {})
{
    return Tlv(der::sequence, {OidTlv(oid), parameters});
}

const Bytes nullParameter = {der::null, 0};
const Bytes sha256Hash = Identifier("2.16.840.1.101.3.4.2.1", nullParameter);

Bytes Mgf1(const Bytes& hash)
{
    return Identifier("1.2.840.113549.1.1.8", hash);
}

Bytes Pss(std::initializer_list<Bytes> fields)
{
    return Identifier("1.2.840.113549.1.1.10", Tlv(der::sequence, fields));
}

} // namespace

TEST(Signatures, OfEveryAlgorithmVerify)
{
    for (const TestVector& vector : ReadVectors("signatures.txt")) {
        SCOPED_TRACE(vector.text("Name"));
        const std::unique_ptr<ICryptoKeyPair> key = Load(vector.bytes("PublicKeyInfo"));
        ASSERT_NE(key, nullptr);
        const SignedParts parts = SignedPartsOf(vector.bytes("Certificate"));
        const auto algorithm = ReadSignatureAlgorithm(parts.algorithm);
        ASSERT_TRUE(algorithm.has_value());

        const bool isMd5 = vector.text("Hash") == "md5";
        const bool isEddsa = algorithm->kind == SignatureKind::eddsa;
        EXPECT_EQ(algorithm->hash, isEddsa ? algorithm::none : HashNamed(vector.text("Hash")));
        EXPECT_EQ(algorithm->isBroken(), isMd5);
        EXPECT_EQ(algorithm->isWeak(), isMd5 || vector.text("Hash") == "sha1");
        EXPECT_EQ(Verify(*key, parts), isMd5 ? SignatureResult::unsupportedAlgorithm : SignatureResult::good);
        if (isMd5)
            continue;
        for (const std::size_t at : {std::size_t{0}, parts.signature.size() / 2, parts.signature.size() - 1})
            EXPECT_EQ(Verify(*key, {parts.octets, parts.algorithm, WithFlippedBit(parts.signature, at)}), SignatureResult::bad);
        EXPECT_EQ(Verify(*key, {WithFlippedBit(parts.octets, 9), parts.algorithm, parts.signature}), SignatureResult::bad);
        EXPECT_EQ(Verify(*key, {parts.octets, parts.algorithm, {}}), SignatureResult::bad);

        const Bytes digest =
            isEddsa ? Bytes(64)
                    : BytesOf(ICryptoHash::Create(algorithm->hash)->digestOf(std::span<const std::uint8_t>(parts.octets)));
        EXPECT_EQ(VerifyDigest(*key, *algorithm, digest, parts.signature),
                  isEddsa ? SignatureResult::unsupportedAlgorithm : SignatureResult::good);
        if (!isEddsa) {
            EXPECT_EQ(VerifyDigest(*key, *algorithm, Bytes(digest.begin(), digest.end() - 1), parts.signature),
                      SignatureResult::bad);
        }

        for (const std::unique_ptr<ICryptoKeyPair>& other : KeysOfSignatures())
            EXPECT_EQ(Verify(*other, parts) == SignatureResult::unsupportedAlgorithm, other->algorithmId() != key->algorithmId())
                << other->name();
    }
}

TEST(Signatures, KeysForAgreementVerifyNothing)
{
    const SignedParts parts = {{1}, Identifier("1.2.840.10045.4.3.2"), {1}};
    EXPECT_EQ(Verify(*KeyOf(algorithm::x25519), parts), SignatureResult::unsupportedAlgorithm);
    EXPECT_EQ(Verify(*KeyOf(algorithm::x25519), {{1}, Identifier("1.3.101.112"), Bytes(64)}),
              SignatureResult::unsupportedAlgorithm);
}

TEST(Signatures, AlgorithmsHaveTheirParametersAlone)
{
    constexpr std::string_view rsa = "1.2.840.113549.1.1.11";
    constexpr std::string_view ecdsa = "1.2.840.10045.4.3.2";
    const Bytes sha384 = Identifier("2.16.840.1.101.3.4.2.2");
    const Bytes hash = Tlv(der::Context(0), sha256Hash);
    const Bytes mask = Tlv(der::Context(1), Mgf1(sha256Hash));
    const Bytes salt = Tlv(der::Context(2), NumberTlv(32));
    const auto saltOf = [](const Bytes& number) { return Pss({Tlv(der::Context(2), Tlv(der::integer, number))}); };
    const struct {
        const char* name;
        Bytes der;
        bool isRead;
    } cases[] = {
        {"RSA with NULL", Identifier(rsa, nullParameter), true},
        {"RSA without parameters", Identifier(rsa), true},
        {"RSA with another parameter", Identifier(rsa, NumberTlv(1)), false},
        {"RSA with a NULL that has a value", Identifier(rsa, Tlv(der::null, {0})), false},
        {"RSA with two parameters", Identifier(rsa, Joined({nullParameter, nullParameter})), false},
        {"RSA with octets after the parameters", Identifier(rsa, {der::null, 0, 0}), false},
        {"ECDSA without parameters", Identifier(ecdsa), true},
        {"ECDSA with NULL", Identifier(ecdsa, nullParameter), false},
        {"ECDSA with a curve", Identifier(ecdsa, OidTlv("1.2.840.10045.3.1.7")), false},
        {"Ed25519 with NULL", Identifier("1.3.101.112", nullParameter), false},
        {"Ed448 without parameters", Identifier("1.3.101.113"), true},
        {"DSA with NULL", Identifier("1.2.840.10040.4.3", nullParameter), false},
        {"RSA with SHA-512/256", Identifier("1.2.840.113549.1.1.16", nullParameter), false},
        {"the key's algorithm", Identifier("1.2.840.113549.1.1.1", nullParameter), false},
        {"a number of the OID with a leading zero", Tlv(der::sequence, {{der::oid, 4, 0x2B, 0x80, 0x65, 0x70}}), false},
        {"the same without it", Tlv(der::sequence, {{der::oid, 3, 0x2B, 0x65, 0x70}}), true},
        {"a SET", Tlv(der::set, OidTlv(ecdsa)), false},
        {"no OID", Tlv(der::sequence, {nullParameter}), false},
        {"nothing", {}, false},
        {"two identifiers", Joined({Identifier(ecdsa), Identifier(ecdsa)}), false},
        {"PSS without parameters", Identifier("1.2.840.113549.1.1.10"), false},
        {"PSS with NULL", Identifier("1.2.840.113549.1.1.10", nullParameter), false},
        {"PSS with the defaults", Pss({}), true},
        {"PSS with the defaults written out",
         Pss({Tlv(der::Context(0), Identifier("1.3.14.3.2.26", nullParameter)),
              Tlv(der::Context(1), Mgf1(Identifier("1.3.14.3.2.26", nullParameter))), Tlv(der::Context(2), NumberTlv(20)),
              Tlv(der::Context(3), NumberTlv(1))}),
         true},
        {"PSS with SHA-256", Pss({hash, mask, salt}), true},
        {"PSS with a mask of SHA-384 without NULL", Pss({hash, Tlv(der::Context(1), Mgf1(sha384)), salt}), true},
        {"PSS with the fields in another order", Pss({mask, hash, salt}), false},
        {"PSS with a field twice", Pss({hash, hash}), false},
        {"PSS with another field", Pss({hash, Tlv(der::Context(4), NumberTlv(1))}), false},
        {"PSS with another trailer", Pss({Tlv(der::Context(3), NumberTlv(2))}), false},
        {"PSS with the trailer 256 + 1", Pss({Tlv(der::Context(3), NumberTlv(257))}), false},
        {"PSS with SHA-3", Pss({Tlv(der::Context(0), Identifier("2.16.840.1.101.3.4.2.8"))}), false},
        {"PSS with a mask of MD5", Pss({Tlv(der::Context(1), Mgf1(Identifier("1.2.840.113549.2.5", nullParameter)))}), false},
        {"PSS with a hash that has parameters", Pss({Tlv(der::Context(0), Identifier("2.16.840.1.101.3.4.2.1", NumberTlv(1)))}),
         false},
        {"PSS with another mask", Pss({Tlv(der::Context(1), Identifier("1.2.840.113549.1.1.9", sha256Hash))}), false},
        {"PSS with a mask without hash", Pss({Tlv(der::Context(1), Identifier("1.2.840.113549.1.1.8"))}), false},
        {"a salt below zero", saltOf({0xFF}), false},
        {"a salt of 0", saltOf({0}), true},
        {"a salt of 128", saltOf({0, 0x80}), true},
        {"a salt in more octets than it takes", saltOf({0, 0x20}), false},
        {"a salt without octets", saltOf({}), false},
        {"a salt of 32 bits", saltOf({1, 0, 0, 0x20}), false},
        {"two numbers for the salt", Pss({Tlv(der::Context(2), Joined({NumberTlv(20), NumberTlv(20)}))}), false},
    };
    for (const auto& test : cases)
        EXPECT_EQ(ReadSignatureAlgorithm(test.der).has_value(), test.isRead) << test.name;
}

TEST(Signatures, DefaultsOfPssCount)
{
    const auto algorithm = ReadSignatureAlgorithm(Pss({}));
    ASSERT_TRUE(algorithm.has_value());
    EXPECT_EQ(algorithm->hash, algorithm::sha1);
    EXPECT_EQ(algorithm->padding.masking.maskHash, algorithm::sha1);
    EXPECT_EQ(algorithm->padding.masking.saltLength, 20);
}

TEST(Signatures, BrokenHashesAreNamed)
{
    for (const char* const oid : {"1.2.840.113549.1.1.2", "1.2.840.113549.1.1.3", "1.2.840.113549.1.1.4"}) {
        const auto algorithm = ReadSignatureAlgorithm(Identifier(oid, nullParameter));
        ASSERT_TRUE(algorithm.has_value()) << oid;
        EXPECT_TRUE(algorithm->isBroken() && algorithm->isWeak()) << oid;
        EXPECT_EQ(VerifyDigest(*KeyOf(algorithm::rsaEncryption), *algorithm, Bytes(16), Bytes(128)),
                  SignatureResult::unsupportedAlgorithm);
    }
}

TEST(Signatures, ThatAreMadeVerify)
{
    std::vector<std::unique_ptr<ICryptoKeyPair>> keys = KeysOfEveryClass();
    keys.push_back(KeyOf(algorithm::secp384r1));
    keys.push_back(Load(ReadVectors("rsa_pss_keys.txt").front().bytes("PrivateKeyInfo")));
    const Bytes text = TextBytes("what is signed");
    for (const std::unique_ptr<ICryptoKeyPair>& key : keys) {
        for (const algorithm::Id hash :
             {algorithm::md5, algorithm::sha1, algorithm::sha224, algorithm::sha256, algorithm::sha384}) {
            SCOPED_TRACE(std::string(key->name()) + " " + std::to_string(hash));
            const bool isEddsa = key->algorithmId() == algorithm::ed25519;
            const bool signs = key->signer() != nullptr && (isEddsa || (hash != algorithm::md5 && hash != algorithm::sha1));
            const element identifier = SignatureAlgorithmFor(*key, hash);
            const element signature = SignOctets(*key, hash, text);
            ASSERT_EQ(!identifier.isEmpty(), signs);
            ASSERT_EQ(!signature.isEmpty(), signs);
            if (!signs)
                continue;
            EXPECT_EQ(Verify(*key, {text, BytesOf(identifier), BytesOf(signature)}), SignatureResult::good);
            CCryptoAlgorithmIdentifier object;
            ASSERT_TRUE(object.ParseDer(identifier));
            const auto read = ReadSignatureAlgorithm(object);
            ASSERT_TRUE(read.has_value());
            EXPECT_EQ(read->hash, isEddsa ? algorithm::none : hash);
            EXPECT_TRUE(SignOctets(*key->publicHalf(), hash, text).isEmpty()) << "without the private half";
        }
    }
    EXPECT_EQ(HexOf(SignatureAlgorithmFor(*keys.front(), algorithm::sha384)), "300d06092a864886f70d01010c0500");
}

TEST(Signatures, IdentifiersThatWereNotReadAreUnderstood)
{
    EXPECT_TRUE(ReadSignatureAlgorithm(CCryptoAlgorithmIdentifier(algorithm::sha256WithRsa, true)).has_value());
    EXPECT_FALSE(ReadSignatureAlgorithm(CCryptoAlgorithmIdentifier(algorithm::ecdsaWithSha256, true)).has_value());
    EXPECT_FALSE(ReadSignatureAlgorithm(CCryptoAlgorithmIdentifier()).has_value());
}

TEST(Signatures, KeysForPssTakeNothingElse)
{
    const std::unique_ptr<ICryptoKeyPair> key = Load(ReadVectors("rsa_pss_keys.txt").front().bytes("PrivateKeyInfo"));
    const auto* const rsa = dynamic_cast<const CCryptoRSAKeyPair*>(key.get());
    ASSERT_NE(rsa, nullptr);
    const Bytes text = {1, 2, 3};
    const element digest = ICryptoHash::Create(algorithm::sha256)->digestOf(std::span<const std::uint8_t>(text));
    const element signature = rsa->key().signPKCS1(algorithm::sha256, digest.bytes());
    EXPECT_EQ(Verify(*key, {text, Identifier("1.2.840.113549.1.1.11", nullParameter), BytesOf(signature)}), SignatureResult::bad);
}

TEST(DSAKeys, InheritParameters)
{
    std::vector<std::unique_ptr<ICryptoKeyPair>> keys = KeysOfSignatures();
    const auto dsa = std::ranges::find(keys, algorithm::dsa, [](const auto& key) { return key->algorithmId(); });
    ASSERT_NE(dsa, keys.end());
    const std::shared_ptr<ICryptoKeyPair> whole = std::move(*dsa);
    const element info = whole->publicKeyInfo();
    EXPECT_EQ(whole->publicHalf()->publicKeyInfo(), info);
    ASSERT_EQ(whole->publicNumbers().size(), 4u);

    CCryptoDSANumbers numbers;
    numbers.publicValue = whole->publicNumbers()[3].value;
    const element inheriting = PublicKeyInfoOf(numbers);
    const std::shared_ptr<ICryptoKeyPair> key = LoadPublicKeyInfo(inheriting);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->publicKeyInfo(), inheriting);
    EXPECT_EQ(key->publicHalf()->publicKeyInfo(), inheriting);
    EXPECT_EQ(key->signer(), nullptr);
    EXPECT_EQ(key->keySize(), 0u);
    EXPECT_EQ(key->publicNumbers().size(), 1u);

    const std::shared_ptr<ICryptoKeyPair> completed = WithInheritedParameters(key, *whole);
    ASSERT_NE(completed, nullptr);
    EXPECT_EQ(completed->publicKeyInfo(), info);
    EXPECT_EQ(WithInheritedParameters(completed, *keys.front()), completed) << "it has its own";
    EXPECT_EQ(WithInheritedParameters(key, *key), nullptr);
    EXPECT_EQ(WithInheritedParameters(key, *keys.front()), nullptr) << keys.front()->name();

    // A value that is not a power of the generator.
    numbers.publicValue = element(std::uint32_t{2});
    EXPECT_EQ(WithInheritedParameters(LoadPublicKeyInfo(PublicKeyInfoOf(numbers)), *whole), nullptr);
}

TEST(DSAKeys, ThatAreMalformedAreRefused)
{
    constexpr std::string_view dsa = "1.2.840.10040.4.1";
    const auto info = [](const Bytes& identifier, const Bytes& key) {
        return ElementOf(Tlv(der::sequence, {identifier, Tlv(der::bitString, Joined({{0}, key}))}));
    };
    EXPECT_NE(LoadPublicKeyInfo(info(Identifier(dsa), NumberTlv(5))), nullptr);
    const std::pair<const char*, element> cases[] = {
        {"NULL for parameters", info(Identifier(dsa, nullParameter), NumberTlv(5))},
        {"two parameters", info(Identifier(dsa, Tlv(der::sequence, {NumberTlv(7), NumberTlv(3)})), NumberTlv(5))},
        {"numbers of no key", info(Identifier(dsa, Tlv(der::sequence, {NumberTlv(7), NumberTlv(3), NumberTlv(2)})), NumberTlv(5))},
        {"a value below zero", info(Identifier(dsa), Tlv(der::integer, {0x80}))},
        {"no value", info(Identifier(dsa), {})},
        {"no number", info(Identifier(dsa), nullParameter)},
        {"two values", info(Identifier(dsa), Joined({NumberTlv(5), NumberTlv(5)}))},
        {"a value that is too long", info(Identifier(dsa), Tlv(der::integer, Bytes(386, 1)))},
    };
    for (const auto& [name, der] : cases)
        EXPECT_EQ(LoadPublicKeyInfo(der), nullptr) << name;
}

TEST(DSAKeys, OnlyVerify)
{
    const Bytes identifier = Identifier("1.2.840.10040.4.1", Tlv(der::sequence, {NumberTlv(7), NumberTlv(3), NumberTlv(2)}));
    EXPECT_EQ(Load(Tlv(der::sequence, {NumberTlv(0), identifier, Tlv(der::octetString, NumberTlv(2))})), nullptr);
    EXPECT_NE(ReasonOfFailure().find("DSA only verifies"), std::string::npos);

    const std::vector<std::unique_ptr<ICryptoKeyPair>> keys = KeysOfSignatures();
    ICryptoKeyPair& key = *keys.back();
    ASSERT_EQ(key.algorithmId(), algorithm::dsa);
    EXPECT_TRUE(key.privateKeyInfo().isEmpty());
    EXPECT_TRUE(SignatureAlgorithmFor(key, algorithm::sha256).isEmpty());
    EXPECT_TRUE(SignOctets(key, algorithm::sha256, Bytes{1}).isEmpty());
}
