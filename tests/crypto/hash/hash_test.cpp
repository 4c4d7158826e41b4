#include "crypto/hash/hash.h"
#include "tests/crypto/base/vector_file.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr std::array hashNames = {"MD4", "MD5", "SHA-1", "SHA-224", "SHA-256", "SHA-384", "SHA-512", "MD5-SHA-1"};

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
                                           "hash_sha512.txt"));

class EveryHash : public ::testing::TestWithParam<const char*> {
protected:
    std::unique_ptr<ICryptoHash> hash_ = ICryptoHash::CreateByName(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Names, EveryHash, ::testing::ValuesIn(hashNames));

TEST_P(EveryHash, TakesAMessageInAnyPieces)
{
    const Bytes message = Counting(3 * longestHashBlock + 5);
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

struct IdCase {
    std::uint32_t id;
    const char* name;
    std::uint32_t digestSize;
    std::uint32_t blockSize;
};

TEST(Hash, IsMadeByIdAndByName)
{
    constexpr IdCase cases[] = {
        {0, "md4", 16, 64},       {100, "Sha-1", 20, 64},    {101, "MD5", 16, 64},     {102, "sha256", 32, 64},
        {103, "SHA384", 48, 128}, {104, "sha-512", 64, 128}, {105, "sHA-224", 28, 64}, {106, "md5-sha1", 36, 64},
    };
    for (const IdCase& row : cases) {
        SCOPED_TRACE(row.name);
        auto hash = ICryptoHash::CreateByName(row.name);
        ASSERT_NE(hash, nullptr);
        EXPECT_EQ(hash->algorithmId(), row.id);
        EXPECT_EQ(hash->digestSize(), row.digestSize);
        EXPECT_EQ(hash->blockSize(), row.blockSize);
        EXPECT_EQ(ICryptoHash::CreateByName(hash->name())->algorithmId(), row.id);
        if (row.id != 0) {
            hash = ICryptoHash::Create(row.id);
            ASSERT_NE(hash, nullptr);
            EXPECT_EQ(hash->algorithmId(), row.id);
        }
    }
    for (const std::uint32_t id : {0u, 99u, 107u, 600u, 0xFFFFFFFFu})
        EXPECT_EQ(ICryptoHash::Create(id), nullptr) << id;
    for (const char* name : {"", "-", "sha", "sha-2", "sha2560", "sha256 ", "hmac-sha256", "md5sha"})
        EXPECT_EQ(ICryptoHash::CreateByName(name), nullptr) << name;
    EXPECT_EQ(ICryptoHash::CreateByName(std::string(100000, '-') + "md5"), nullptr);
    EXPECT_EQ(ICryptoHash::CreateByName("sha256" + std::string(26, '-') + "0"), nullptr);
}

TEST(Hash, MD5AndSHA1StandBehindEachOther)
{
    const Bytes message = Counting(1000);
    Bytes both = DigestOf(*ICryptoHash::CreateByName("md5"), message);
    const Bytes sha1 = DigestOf(*ICryptoHash::CreateByName("sha1"), message);
    both.insert(both.end(), sha1.begin(), sha1.end());
    EXPECT_EQ(DigestOf(*ICryptoHash::Create(106), message), both);
}

} // namespace
