#include "crypto/hash/hash.h"
#include "crypto/hash/shake.h"
#include "tests/crypto/base/vector_file.h"

#include <gtest/gtest.h>

#include <array>

using namespace ccrypto;

namespace {

constexpr std::array hashNames = {"MD4",       "MD5",      "SHA-1",    "SHA-224",  "SHA-256",  "SHA-384",  "SHA-512",
                                  "MD5-SHA-1", "SHA3-224", "SHA3-256", "SHA3-384", "SHA3-512", "SHAKE128", "SHAKE256"};

Bytes DigestOf(ICryptoHash& hash, const Bytes& message)
{
    const element digest = hash.digestOf(message);
    return {digest.data(), digest.data() + digest.length()};
}

Bytes Counting(std::size_t length)
{
    Bytes bytes(length);
    for (std::size_t i = 0; i < length; ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    return bytes;
}

class HashVectors : public ::testing::TestWithParam<const char*> {};

TEST_P(HashVectors, GiveTheirDigests)
{
    for (const TestVector& vector : ReadVectors(GetParam())) {
        SCOPED_TRACE(vector.place());
        const auto hash = ICryptoHash::CreateByName(vector.text("Hash"));
        ASSERT_NE(hash, nullptr);
        EXPECT_EQ(Hex(DigestOf(*hash, vector.bytes("Msg"))), vector.text("Digest"));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, HashVectors,
                         ::testing::Values("hash_md.txt", "hash_sha1.txt", "hash_sha224.txt", "hash_sha256.txt", "hash_sha384.txt",
                                           "hash_sha512.txt", "hash_sha3.txt"));

class EveryHash : public ::testing::TestWithParam<const char*> {
protected:
    std::unique_ptr<ICryptoHash> hash_ = ICryptoHash::CreateByName(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Names, EveryHash, ::testing::ValuesIn(hashNames));

TEST_P(EveryHash, TakesAMessageInAnyPieces)
{
    const Bytes message = Counting(3 * maxHashBlockSize + 5);
    const Bytes whole = DigestOf(*hash_, message);
    for (std::size_t first = 0; first <= message.size(); ++first) {
        for (const std::size_t piece : {std::size_t{1}, std::size_t{63}, std::size_t{128}, message.size()}) {
            hash_->update(message.data(), first);
            hash_->update(nullptr, 0);
            for (std::size_t from = first; from < message.size(); from += piece)
                hash_->update(message.data() + from, std::min(piece, message.size() - from));
            Bytes digest(hash_->digestSize());
            hash_->final(digest.data());
            ASSERT_EQ(digest, whole) << first << ", then pieces of " << piece;
        }
    }
}

TEST_P(EveryHash, IsAsNewAfterADigestAndAReset)
{
    const Bytes message = Counting(100);
    const Bytes digest = DigestOf(*hash_, message);
    hash_->update(message);
    hash_->reset();
    hash_->update(message);
    EXPECT_EQ(hash_->final(), element(digest.data(), static_cast<std::uint32_t>(digest.size())));
    EXPECT_EQ(DigestOf(*hash_, message), digest);
}

TEST_P(EveryHash, CopiesGoTheirOwnWays)
{
    const Bytes message = Counting(200);
    const Bytes digest = DigestOf(*hash_, message);
    hash_->update(message.data(), 150);
    const auto copy = hash_->clone();
    const auto assigned = ICryptoHash::CreateByName(GetParam());
    assigned->update(message);
    ASSERT_TRUE(assigned->assign(*hash_));
    hash_->update(message.data(), 1);
    for (ICryptoHash* each : {copy.get(), assigned.get()}) {
        each->update(message.data() + 150, 50);
        EXPECT_EQ(each->final(), element(digest.data(), static_cast<std::uint32_t>(digest.size())));
    }
    for (const char* other : hashNames)
        EXPECT_EQ(assigned->assign(*ICryptoHash::CreateByName(other)), std::string(other) == GetParam()) << other;
}

// NIST's Monte Carlo test: a digest of the last three, a thousand times over.
TEST(HashVectors, ChainsOfThreeThousandDigests)
{
    for (const TestVector& vector : ReadVectors("hash_monte.txt")) {
        SCOPED_TRACE(vector.place());
        const auto hash = ICryptoHash::CreateByName(vector.text("Hash"));
        Bytes seed = vector.bytes("Seed");
        for (const char* name : {"Digest0", "Digest1", "Digest2"}) {
            std::array<Bytes, 3> last = {seed, seed, seed};
            for (int i = 0; i < 1000; ++i) {
                for (const Bytes& digest : last)
                    hash->update(digest);
                last[0] = last[1];
                last[1] = last[2];
                hash->final(last[2].data());
            }
            seed = last[2];
            EXPECT_EQ(Hex(seed), vector.text(name));
        }
    }
}

// NIST's Monte Carlo test of SHA-3: a digest of the last one, a thousand times over.
TEST(HashVectors, ChainsOfThreeThousandSHA3Digests)
{
    for (const TestVector& vector : ReadVectors("hash_monte_sha3.txt")) {
        SCOPED_TRACE(vector.place());
        const auto hash = ICryptoHash::CreateByName(vector.text("Hash"));
        Bytes digest = vector.bytes("Seed");
        for (const char* name : {"Digest0", "Digest1", "Digest2"}) {
            for (int i = 0; i < 1000; ++i) {
                hash->update(digest);
                hash->final(digest.data());
            }
            EXPECT_EQ(Hex(digest), vector.text(name));
        }
    }
}

class SHAKE : public ::testing::TestWithParam<CCryptoSHAKE::Kind> {};

INSTANTIATE_TEST_SUITE_P(Hash, SHAKE, ::testing::Values(CCryptoSHAKE::Kind::shake128, CCryptoSHAKE::Kind::shake256));

TEST(HashVectors, SHAKEOutputsOfAnyLength)
{
    for (const TestVector& vector : ReadVectors("shake.txt")) {
        SCOPED_TRACE(vector.place());
        const bool is128 = vector.text("Function") == "shake128";
        CCryptoSHAKE shake(is128 ? CCryptoSHAKE::Kind::shake128 : CCryptoSHAKE::Kind::shake256);
        const Bytes expected = vector.bytes("Output");
        const element output = shake.outputOf(vector.bytes("Msg"), static_cast<std::uint32_t>(expected.size()));
        EXPECT_EQ(Bytes(output.data(), output.data() + output.length()), expected);
        // The digest is the beginning of the output.
        Bytes digest = DigestOf(*ICryptoHash::CreateByName(vector.text("Function")), vector.bytes("Msg"));
        const std::size_t common = std::min(digest.size(), expected.size());
        EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(common), digest.begin()));
    }
}

TEST_P(SHAKE, TakesAndGivesAnyPieces)
{
    const Bytes message = Counting(400);
    CCryptoSHAKE shake(GetParam());
    Bytes whole(600);
    shake.update(message);
    shake.squeeze(whole);
    for (const std::size_t piece : {1u, 7u, 135u, 136u, 137u, 168u, 169u, 600u}) {
        // After a squeeze this is a new message.
        for (std::size_t from = 0; from < message.size(); from += piece)
            shake.update(message.data() + from, std::min(piece, message.size() - from));
        Bytes output(whole.size());
        for (std::size_t from = 0; from < output.size(); from += piece)
            shake.squeeze(std::span(output).subspan(from, std::min(piece, output.size() - from)));
        EXPECT_EQ(output, whole) << piece;
    }
    // A copy and the original each go on with the same bytes; an abandoned message leaves nothing.
    shake.update(message);
    shake.reset();
    shake.update(message);
    shake.squeeze(std::span(whole).first(100));
    CCryptoSHAKE copy = shake;
    Bytes rest(500);
    for (CCryptoSHAKE* each : {&shake, &copy}) {
        each->squeeze(rest);
        EXPECT_TRUE(std::equal(rest.begin(), rest.end(), whole.begin() + 100));
    }
}

struct IdCase {
    algorithm::Id id;
    const char* name;
    std::uint32_t digestSize;
    std::uint32_t blockSize;
};

TEST(Hash, IsMadeByIdAndByName)
{
    constexpr IdCase cases[] = {
        {algorithm::none, "md4", 16, 64},
        {algorithm::sha1, "Sha-1", 20, 64},
        {algorithm::md5, "MD5", 16, 64},
        {algorithm::sha256, "sha256", 32, 64},
        {algorithm::sha384, "SHA384", 48, 128},
        {algorithm::sha512, "sha-512", 64, 128},
        {algorithm::sha224, "sHA-224", 28, 64},
        {algorithm::md5Sha1, "md5-sha1", 36, 64},
        {algorithm::sha3_224, "sha3-224", 28, 144},
        {algorithm::sha3_256, "SHA3-256", 32, 136},
        {algorithm::sha3_384, "sha3384", 48, 104},
        {algorithm::sha3_512, "Sha3-512", 64, 72},
        {algorithm::shake128, "shake128", 32, 168},
        {algorithm::shake256, "SHAKE-256", 64, 136},
    };
    for (const IdCase& row : cases) {
        SCOPED_TRACE(row.name);
        auto hash = ICryptoHash::CreateByName(row.name);
        ASSERT_NE(hash, nullptr);
        EXPECT_EQ(hash->algorithmId(), row.id);
        EXPECT_EQ(hash->digestSize(), row.digestSize);
        EXPECT_EQ(hash->blockSize(), row.blockSize);
        EXPECT_EQ(ICryptoHash::CreateByName(hash->name())->algorithmId(), row.id);
        if (row.id != algorithm::none) {
            hash = ICryptoHash::Create(row.id);
            ASSERT_NE(hash, nullptr);
            EXPECT_EQ(hash->algorithmId(), row.id);
        }
    }
    for (const std::uint32_t id : {0u, 99u, 107u, 109u, 116u, 600u, 0xFFFFFFFFu})
        EXPECT_EQ(ICryptoHash::Create(static_cast<algorithm::Id>(id)), nullptr) << id;
    for (const char* name : {"", "-", "sha", "sha-2", "sha3", "shake", "sha2560", "sha256 ", "hmac-sha256", "md5sha"})
        EXPECT_EQ(ICryptoHash::CreateByName(name), nullptr) << name;
    EXPECT_EQ(ICryptoHash::CreateByName(std::string(100000, '-') + "md5"), nullptr);
    EXPECT_NE(ICryptoHash::CreateByName("sha256" + std::string(26, '-')), nullptr);
    EXPECT_EQ(ICryptoHash::CreateByName("sha256" + std::string(27, '-')), nullptr);
}

TEST(Hash, MD5AndSHA1FollowEachOther)
{
    const Bytes message = Counting(1000);
    Bytes both = DigestOf(*ICryptoHash::CreateByName("md5"), message);
    const Bytes sha1 = DigestOf(*ICryptoHash::CreateByName("sha1"), message);
    both.insert(both.end(), sha1.begin(), sha1.end());
    EXPECT_EQ(DigestOf(*ICryptoHash::Create(algorithm::md5Sha1), message), both);
}

} // namespace
