#include "crypto/bigint/big_integer.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/eddsa.h"
#include "crypto/rsa/rsa.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/posix/openssl_command.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

// Signatures at the edges of what is allowed, made here of sound ones: ours and the openssl command's verdict are the same.

namespace {

/// Runs openssl in a folder of its own, where it finds keys and signatures.
class SecondOpinion {
public:
    void write(const std::string& name, const Bytes& bytes) const { WriteBytes((folder_.path() / name).string(), bytes); }
    Bytes read(const std::string& name) const { return ReadBytes((folder_.path() / name).string()); }
    bool run(const std::string& arguments) const
    {
        return std::system(("cd " + folder_.path().string() + " && openssl " + arguments + " >/dev/null 2>&1").c_str()) == 0;
    }
    /// A key in "key" and its SubjectPublicKeyInfo in "public".
    bool newKey(const std::string& kind) const
    {
        return run("genpkey " + kind + " -out key") && run("pkey -in key -pubout -outform DER -out public");
    }
    /// What the last bytes of "public" are: the bits of the key.
    Bytes lastOfPublic(std::size_t count) const
    {
        const Bytes whole = read("public");
        return {whole.end() - static_cast<std::ptrdiff_t>(count), whole.end()};
    }
    bool verifies(const Bytes& text, const Bytes& signature, const std::string& options) const
    {
        write("text", text);
        write("signature", signature);
        return run("pkeyutl -verify -pubin -keyform DER -inkey public -in text -sigfile signature " + options);
    }

private:
    TemporaryDirectory folder_;
};

Bytes Part(const Bytes& bytes, std::size_t begin, std::size_t count)
{
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(begin);
    return {first, first + static_cast<std::ptrdiff_t>(count)};
}

Bytes Sized(const CCryptoBigInteger& number, std::size_t length)
{
    Bytes bytes(length);
    EXPECT_TRUE(number.toBytes(bytes));
    return bytes;
}

/// TAG LENGTH CONTENT, for contents below 256 bytes.
Bytes Tagged(std::uint8_t tag, const Bytes& content)
{
    Bytes der = {tag};
    if (content.size() >= 0x80)
        der.push_back(0x81);
    der.push_back(static_cast<std::uint8_t>(content.size()));
    return Joined({der, content});
}

/// An INTEGER in as few bytes as it takes, after `surplus`.
Bytes Integer(const CCryptoBigInteger& number, const Bytes& surplus = {})
{
    Bytes bytes = BytesOf(number.toBytes());
    if (bytes.empty() || bytes[0] >= 0x80)
        bytes.insert(bytes.begin(), 0);
    return Tagged(2, Joined({surplus, bytes}));
}

} // namespace

TEST(RefusalsBesideOpenSSL, OfECDSA)
{
    const SecondOpinion openssl;
    ASSERT_TRUE(openssl.newKey("-algorithm EC -pkeyopt ec_paramgen_curve:P-256"));
    const auto key = CCryptoEC::FromPublic(algorithm::prime256v1, openssl.lastOfPublic(65));
    ASSERT_NE(key, nullptr);
    const Bytes digest(32, 0x42);
    openssl.write("text", digest);
    ASSERT_TRUE(openssl.run("pkeyutl -sign -inkey key -in text -out signature"));
    const Bytes pair = BytesOf(EcdsaDerToPair(openssl.read("signature"), 32));
    ASSERT_EQ(pair.size(), 64u);
    const CCryptoBigInteger r = CCryptoBigInteger::FromBytes(Part(pair, 0, 32));
    const CCryptoBigInteger s = CCryptoBigInteger::FromBytes(Part(pair, 32, 32));
    const CCryptoBigInteger n = CCryptoBigInteger::FromHex("FFFFFFFF00000000FFFFFFFFFFFFFFFFBCE6FAADA7179E84F3B9CAC2FC632551");
    const auto der = [](const Bytes& first, const Bytes& second) { return Tagged(0x30, Joined({first, second})); };
    const auto minus = [](const CCryptoBigInteger& number) {
        // The two's complement of a number below 2^256.
        return Tagged(2, Joined({{0xFF}, Sized((CCryptoBigInteger(1) << 256) - number, 32)}));
    };
    Bytes longForm = der(Integer(r), Integer(s));
    longForm.insert(longForm.begin() + 1, 0x81);
    struct {
        const char* what;
        Bytes signature;
        bool valid;
    } const rows[] = {
        {"as it is", der(Integer(r), Integer(s)), true},
        {"n - s, which is as good", der(Integer(r), Integer(n - s)), true},
        {"r is 0", der(Integer(CCryptoBigInteger()), Integer(s)), false},
        {"s is 0", der(Integer(r), Integer(CCryptoBigInteger())), false},
        {"both are 0", der(Integer(CCryptoBigInteger()), Integer(CCryptoBigInteger())), false},
        {"r is 1, s is 1", der(Integer(CCryptoBigInteger(1)), Integer(CCryptoBigInteger(1))), false},
        {"r is n", der(Integer(n), Integer(s)), false},
        {"s is n", der(Integer(r), Integer(n)), false},
        {"r is n + 1", der(Integer(n + CCryptoBigInteger(1)), Integer(s)), false},
        {"s is n + 1", der(Integer(r), Integer(n + CCryptoBigInteger(1))), false},
        {"r + n", der(Integer(r + n), Integer(s)), false},
        {"s + n", der(Integer(r), Integer(s + n)), false},
        {"r - n, negative", der(minus(n - r), Integer(s)), false},
        {"-s", der(Integer(r), minus(s)), false},
        {"exchanged", der(Integer(s), Integer(r)), false},
        {"a zero too many before r", der(Integer(r, {0, 0}), Integer(s)), false},
        {"a zero too many before s", der(Integer(r), Integer(s, {0, 0})), false},
        {"bytes after s", Joined({der(Integer(r), Integer(s)), {0}}), false},
        {"a third number", der(Joined({Integer(r), Integer(s)}), Integer(s)), false},
        {"a length in the long form", longForm, false},
        {"r alone", Tagged(0x30, Integer(r)), false},
        {"an empty SEQUENCE", {0x30, 0}, false},
        {"nothing", {}, false},
        {"a pair without DER", pair, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(key->verifyHash(digest, row.signature, SignatureForm::der), row.valid) << row.what;
        EXPECT_EQ(openssl.verifies(digest, row.signature, ""), row.valid) << row.what;
    }
}

TEST(RefusalsBesideOpenSSL, OfEdDSA)
{
    struct {
        const char* name;
        algorithm::Id curve;
        std::size_t length;
        const char* order;
    } const curves[] = {
        {"ED25519", algorithm::ed25519, 32, "1000000000000000000000000000000014DEF9DEA2F79CD65812631A5CF5D3ED"},
        {"ED448", algorithm::ed448, 57,
         "3FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF7CCA23E9C44EDB49AED63690216CC2728DC58F552378C292AB5844F3"},
    };
    for (const auto& curve : curves) {
        SCOPED_TRACE(curve.name);
        const SecondOpinion openssl;
        ASSERT_TRUE(openssl.newKey(std::string("-algorithm ") + curve.name));
        const auto key = EddsaKey::FromPublic(curve.curve, openssl.lastOfPublic(curve.length));
        ASSERT_NE(key, nullptr);
        const Bytes message(100, 0x42);
        openssl.write("text", message);
        ASSERT_TRUE(openssl.run("pkeyutl -sign -rawin -inkey key -in text -out signature"));
        const Bytes signature = openssl.read("signature");
        ASSERT_EQ(signature.size(), 2 * curve.length);
        const Bytes point = Part(signature, 0, curve.length);
        const Bytes response = Part(signature, curve.length, curve.length);
        const auto littleEndian = [&](const CCryptoBigInteger& number) {
            Bytes bytes = Sized(number, curve.length);
            std::ranges::reverse(bytes);
            return bytes;
        };
        const CCryptoBigInteger s = CCryptoBigInteger::FromBytes(Bytes(response.rbegin(), response.rend()));
        const CCryptoBigInteger order = CCryptoBigInteger::FromHex(curve.order);
        const auto changed = [](Bytes bytes, std::size_t at, std::uint8_t bits) {
            bytes[at] ^= bits;
            return bytes;
        };
        Bytes one(curve.length);
        one[0] = 1;
        const std::size_t last = curve.length - 1;
        struct {
            const char* what;
            Bytes signature;
            bool valid;
        } const rows[] = {
            {"as it is", signature, true},
            {"S is S + L", Joined({point, littleEndian(s + order)}), false},
            {"S is S + 2 L", Joined({point, littleEndian(s + order + order)}), false},
            {"S is L", Joined({point, littleEndian(order)}), false},
            {"S is L - 1", Joined({point, littleEndian(order - CCryptoBigInteger(1))}), false},
            {"S is L - S", Joined({point, littleEndian(order - s)}), false},
            {"S is 0", Joined({point, Bytes(curve.length)}), false},
            {"S is all ones", Joined({point, Bytes(curve.length, 0xFF)}), false},
            {"the highest bit of S", changed(signature, signature.size() - 1, 0x80), false},
            {"the lowest bit of S", changed(signature, curve.length, 1), false},
            {"the sign of R", changed(signature, last, 0x80), false},
            {"R is the neutral point", Joined({one, response}), false},
            {"R is the neutral point, S is 0", Joined({one, Bytes(curve.length)}), false},
            {"R is no point", Joined({Bytes(curve.length, 0xFF), response}), false},
            {"halves exchanged", Joined({response, point}), false},
            {"a byte less", Part(signature, 0, signature.size() - 1), false},
            {"a byte more", Joined({signature, {0}}), false},
            {"half of it", point, false},
            {"nothing", {}, false},
        };
        for (const auto& row : rows) {
            EXPECT_EQ(key->verify(message, row.signature), row.valid) << row.what;
            EXPECT_EQ(openssl.verifies(message, row.signature, "-rawin"), row.valid) << row.what;
        }
    }
}

TEST(RefusalsBesideOpenSSL, OfBlocksOfRSA)
{
    const SecondOpinion openssl;
    const auto key = CCryptoRSA::Generate(1024);
    ASSERT_NE(key, nullptr);
    const Bytes numbers = Joined({Integer(CCryptoBigInteger::FromBytes(key->modulus().bytes())), {2, 3, 1, 0, 1}});
    openssl.write("pkcs1", Tagged(0x30, numbers));
    ASSERT_TRUE(openssl.run("rsa -RSAPublicKey_in -inform DER -in pkcs1 -pubout -outform DER -out public"));

    const Bytes digest(32, 0x42);
    const Bytes algorithmWithNull = {0x30, 0x0D, 6, 9, 0x60, 0x86, 0x48, 1, 0x65, 3, 4, 2, 1, 5, 0};
    const Bytes algorithmAlone = {0x30, 0x0B, 6, 9, 0x60, 0x86, 0x48, 1, 0x65, 3, 4, 2, 1};
    const Bytes algorithmOfSha1 = {0x30, 9, 6, 5, 0x2B, 0x0E, 3, 2, 0x1A, 5, 0};
    const auto digestInfo = [&](const Bytes& algorithm) { return Tagged(0x30, Joined({algorithm, Tagged(4, digest)})); };
    const Bytes info = digestInfo(algorithmWithNull);
    // 128 bytes: `start`, as many bytes FF as there is space for, `tail`.
    const auto block = [](const Bytes& start, const Bytes& tail) {
        return Joined({start, Bytes(128 - start.size() - tail.size(), 0xFF), tail});
    };
    struct {
        const char* what;
        Bytes block;
        bool valid;
    } const rows[] = {
        {"as it should be", block({0, 1}, Joined({{0}, info})), true},
        {"type 2", block({0, 2}, Joined({{0}, info})), false},
        {"type 0", block({0, 0}, Joined({{0}, info})), false},
        {"no zero after the padding", block({0, 1}, Joined({{0xFF}, info})), false},
        {"another byte in the padding", block({0, 1, 0xFF, 0xFE}, Joined({{0}, info})), false},
        {"eight bytes of padding, the rest after the digest",
         Joined({{0, 1}, Bytes(8, 0xFF), {0}, info, Bytes(128 - 11 - info.size())}), false},
        {"a byte of padding less, and one after the digest", block({0, 1}, Joined({{0}, info, {0}})), false},
        {"an algorithm without NULL", block({0, 1}, Joined({{0}, digestInfo(algorithmAlone)})), false},
        {"another algorithm", block({0, 1}, Joined({{0}, digestInfo(algorithmOfSha1)})), false},
        {"the digest alone", block({0, 1}, Joined({{0}, digest})), false},
        {"a digest of another message", block({0, 1}, Joined({{0}, Part(info, 0, info.size() - 1), {0}})), false},
        {"no digest", block({0, 1}, {0}), false},
        {"zeros", Bytes(128), false},
    };
    for (const auto& row : rows) {
        const Bytes signature = BytesOf(key->privateOperation(row.block));
        EXPECT_EQ(key->verifyPKCS1(algorithm::sha256, digest, signature), row.valid) << row.what;
        EXPECT_EQ(openssl.verifies(digest, signature, "-pkeyopt digest:sha256"), row.valid) << row.what;
    }

    // A salt of n bytes for one of m bytes; 128 - 32 - 2 is the longest.
    struct {
        std::int32_t made;
        std::int32_t wanted;
        bool valid;
    } const salts[] = {{0, 0, true},   {0, 1, false},   {1, 0, false},  {1, 1, true},
                       {32, 32, true}, {32, 31, false}, {94, 94, true}, {94, 93, false}};
    const std::string pss = "-pkeyopt digest:sha256 -pkeyopt rsa_padding_mode:pss -pkeyopt rsa_pss_saltlen:";
    for (const auto& row : salts) {
        SCOPED_TRACE(testing::Message() << row.made << " for " << row.wanted);
        const Bytes signature = BytesOf(key->signPSS({.hash = algorithm::sha256, .saltLength = row.made}, digest));
        EXPECT_EQ(key->verifyPSS({.hash = algorithm::sha256, .saltLength = row.wanted}, digest, signature), row.valid);
        EXPECT_EQ(openssl.verifies(digest, signature, pss + std::to_string(row.wanted)), row.valid);
        EXPECT_TRUE(
            key->verifyPSS({.hash = algorithm::sha256, .saltLength = CCryptoRSAPadding::saltOfAnyLength}, digest, signature));
    }
    EXPECT_TRUE(key->signPSS({.hash = algorithm::sha256, .saltLength = 95}, digest).isEmpty());
}

TEST(RefusalsBesideOpenSSL, OfPointsThatAgreeOnZeros)
{
    // The prefix of SubjectPublicKeyInfo says which curve (RFC 8410, 4).
    struct {
        const char* name;
        algorithm::Id curve;
        Bytes prefix;
        std::size_t length;
    } const curves[] = {
        {"X25519", algorithm::x25519, {0x30, 0x2A, 0x30, 5, 6, 3, 0x2B, 0x65, 0x6E, 3, 0x21, 0}, 32},
        {"X448", algorithm::x448, {0x30, 0x42, 0x30, 5, 6, 3, 0x2B, 0x65, 0x6F, 3, 0x39, 0}, 56},
    };
    SequenceRandom random(7);
    for (const auto& curve : curves) {
        SCOPED_TRACE(curve.name);
        const SecondOpinion openssl;
        ASSERT_TRUE(openssl.newKey(std::string("-algorithm ") + curve.name));
        const auto key = CCryptoEC::Generate(curve.curve, random);
        Bytes minusOne(curve.length, 0xFF);
        minusOne[0] = curve.curve == algorithm::x25519 ? 0xEC : 0xFE;
        (curve.curve == algorithm::x25519 ? minusOne.back() : minusOne[28]) ^= curve.curve == algorithm::x25519 ? 0x80 : 1;
        Bytes one(curve.length);
        one[0] = 1;
        Bytes four(curve.length);
        four[0] = 4;
        struct {
            const char* what;
            Bytes point;
            bool valid;
        } const rows[] = {
            {"0", Bytes(curve.length), false},
            {"1", one, false},
            {"the prime less 1", minusOne, false},
            {"4", four, true},
        };
        for (const auto& row : rows) {
            EXPECT_EQ(!key->agree(row.point).isEmpty(), row.valid) << row.what;
            openssl.write("peer", Joined({curve.prefix, row.point}));
            EXPECT_EQ(openssl.run("pkeyutl -derive -inkey key -peerform DER -peerkey peer -out secret"), row.valid) << row.what;
        }
    }
}
