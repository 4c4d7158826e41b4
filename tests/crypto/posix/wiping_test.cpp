#include "crypto/cipher/cipher.h"
#include "crypto/hash/hash.h"
#include "tests/crypto/base/test_bytes.h"

#include <gtest/gtest.h>
#include <malloc.h>

using namespace ccrypto;

// What objects hold that only their factories know the size of.

namespace {

template <typename Object>
bool HoldsOnHeap(const Object& object, const Bytes& bytes)
{
    const void* const whole = dynamic_cast<const void*>(&object);
    const auto* const first = static_cast<const std::uint8_t*>(whole);
    const std::size_t size = malloc_usable_size(const_cast<void*>(whole));
    return std::search(first, first + size, bytes.begin(), bytes.end()) != first + size;
}

const Bytes secretText = {0xC0, 0xFF, 0xEE, 0x15, 0x5E, 0xC2, 0xE7, 0x01};

TEST(Wiping, HashesForgetTheMessage)
{
    for (const char* const name : {"md4", "md5", "sha1", "sha256", "sha512", "md5-sha1", "sha3-256", "shake128"}) {
        SCOPED_TRACE(name);
        const auto hash = ICryptoHash::CreateByName(name);
        hash->update(secretText);
        EXPECT_TRUE(HoldsOnHeap(*hash, secretText));
        hash->reset();
        EXPECT_FALSE(HoldsOnHeap(*hash, secretText));
        hash->update(secretText);
        EXPECT_EQ(hash->final().length(), hash->digestSize());
        EXPECT_FALSE(HoldsOnHeap(*hash, secretText));
    }
}

TEST(Wiping, CiphersForgetTheTextAndTheVector)
{
    for (const char* const name : {"aes-128-cbc", "aes-128-cfb", "aes-128-ofb", "des-ede3-cbc"}) {
        SCOPED_TRACE(name);
        const auto cipher = ICryptoCipher::CreateByName(name);
        const Bytes iv(cipher->ivSize(), 0x3C);
        const Bytes key(cipher->keySize(), 1);
        ASSERT_TRUE(cipher->start(CipherDirection::encrypt, key, iv));
        EXPECT_TRUE(HoldsOnHeap(*cipher, iv));
        // A start that is refused, and the end of a text.
        EXPECT_FALSE(cipher->start(CipherDirection::encrypt, Bytes(), iv));
        EXPECT_FALSE(HoldsOnHeap(*cipher, iv));
    }
    const auto cipher = ICryptoCipher::CreateByName("aes-128-cbc");
    const Bytes begun(secretText.begin(), secretText.begin() + 5);
    element out;
    ASSERT_TRUE(cipher->start(CipherDirection::encrypt, Bytes(16, 1), Bytes(16, 2)) && cipher->update(begun, out));
    EXPECT_TRUE(HoldsOnHeap(*cipher, begun));
    ASSERT_TRUE(cipher->final(out));
    EXPECT_FALSE(HoldsOnHeap(*cipher, begun));
}

} // namespace
