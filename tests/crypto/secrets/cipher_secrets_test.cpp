#include "core/base/algorithm.h"
#include "crypto/cipher/gcm.h"
#include "crypto/cipher/key_wrap.h"
#include "crypto/cipher/padding.h"
#include "crypto/mac/cmac.h"
#include "tests/crypto/secrets/marked.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// No byte of a key or a text decides a branch or an address: run where what is marked secret counts as undefined. DES, 3DES, RC2
// and RC4 are not among these ciphers.

namespace {

TEST(CipherSecrets, AesInEveryMode)
{
    for (const char* const name : ICryptoCipher::Names()) {
        if (!std::string_view(name).starts_with("aes"))
            continue;
        SCOPED_TRACE(name);
        const auto cipher = ICryptoCipher::CreateByName(name);
        const Bytes iv(cipher->ivSize(), 3);
        for (const std::size_t length : {0u, 1u, 16u, 100u, 700u}) {
            element sealed;
            ASSERT_TRUE(cipher->encrypt(Secret(cipher->keySize()), iv, Secret(length), sealed));
            const Bytes text = Known(sealed);
            element back;
            ASSERT_TRUE(cipher->decrypt(Secret(cipher->keySize()), iv, text, back));
            EXPECT_EQ(Known(back), Bytes(length, 0x5A));
            if (cipher->blockSize() != 1 || !std::string_view(name).ends_with("gcm"))
                continue;
            Bytes changed = text;
            changed[0] ^= 1;
            EXPECT_FALSE(cipher->decrypt(Secret(cipher->keySize()), iv, changed, back));
        }
    }
}

TEST(CipherSecrets, EveryWayToDoAesAndGcm)
{
    for (const Variant<gcm::Calls>& variant : gcm::Variants()) {
        SCOPED_TRACE(variant.name);
        // What valgrind knows of the processor.
        if ((variant.needs & ~cpu::PresentFeatures()) != 0)
            continue;
        CCryptoGCM gcm("aes-256-gcm", algorithm::aes256Gcm, 32, variant);
        const Bytes iv(17, 3);
        element sealed;
        ASSERT_TRUE(gcm.encrypt(Secret(32), iv, Secret(1000), sealed));
        const Bytes text = Known(sealed);
        element back;
        ASSERT_TRUE(gcm.startCheck(Secret(32), iv) && gcm.update(text, back) && gcm.final(back) && gcm.startChecked());
        ASSERT_TRUE(gcm.update(text, back) && gcm.final(back));
        EXPECT_EQ(Known(back), Bytes(1000, 0x5A));
    }
}

TEST(CipherSecrets, Unpadding)
{
    for (unsigned last = 0; last < 256; ++last) {
        Bytes block(16, static_cast<std::uint8_t>(last));
        constant_time::ClassifyBytes(block.data(), block.size());
        constant_time::Mask good = constant_time::Mask::False();
        const std::size_t length = constant_time::Declassify(pkcs7::TextLength(block.data(), block.size(), good));
        const bool fits = last >= 1 && last <= 16;
        EXPECT_EQ(constant_time::Declassify(good), fits);
        EXPECT_EQ(length, fits ? 16 - last : 0);
    }
}

TEST(CipherSecrets, Iso9797Unpadding)
{
    for (unsigned last = 0; last < 256; ++last) {
        Bytes block(16, static_cast<std::uint8_t>(last));
        constant_time::ClassifyBytes(block.data(), block.size());
        constant_time::Mask good = constant_time::Mask::False();
        const std::size_t length = constant_time::Declassify(ccrypto::iso9797::TextLength(block, block.size(), good));
        EXPECT_EQ(constant_time::Declassify(good), last == 0x80);
        EXPECT_EQ(length, last == 0x80 ? 15u : 0u);
    }
}

TEST(CipherSecrets, KeyWrap)
{
    for (const std::size_t length : {16u, 32u}) {
        const Bytes wrapped = Known(CCryptoKeyWrap::Wrap(Secret(32), Secret(length)));
        EXPECT_EQ(Known(CCryptoKeyWrap::Unwrap(Secret(32), wrapped)), Bytes(length, 0x5A));
        EXPECT_TRUE(CCryptoKeyWrap::Unwrap(Secret(24), wrapped).isEmpty());
    }
    for (const std::size_t length : {1u, 8u, 21u}) {
        const Bytes wrapped = Known(CCryptoKeyWrap::WrapPadded(Secret(16), Secret(length)));
        EXPECT_EQ(Known(CCryptoKeyWrap::UnwrapPadded(Secret(16), wrapped)), Bytes(length, 0x5A));
        EXPECT_TRUE(CCryptoKeyWrap::UnwrapPadded(Secret(24), wrapped).isEmpty());
    }
}

TEST(CipherSecrets, Cmac)
{
    const auto cmac = CCryptoCMAC::CreateByName("aes-192");
    ASSERT_TRUE(cmac->setKey(Secret(24)));
    for (const std::size_t length : {0u, 16u, 41u})
        EXPECT_EQ(Known(cmac->macOf(Secret(length))).size(), 16u);
    cmac->update(Secret(5));
    EXPECT_FALSE(cmac->verify(Secret(16)));
    EXPECT_FALSE(cmac->verify(Secret(8), 8));
}

} // namespace
