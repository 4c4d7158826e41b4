#include "crypto/hash/shake.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/hmac.h"
#include "tests/crypto/secrets/marked.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ccrypto;

// No byte of a message, key or password decides a branch or an address: run where what is marked secret counts as undefined.

namespace {

using KDF = CCryptoKeyDerivation;

/// True when `found` holds anything but zeros, which may be known now.
bool HasResult(const element& found)
{
    return std::ranges::any_of(Known(found), [](std::uint8_t byte) { return byte != 0; });
}

TEST(HashSecrets, MessagesAndKeys)
{
    for (const char* name : {"md4", "md5", "sha1", "sha224", "sha256", "sha384", "sha512", "md5sha1", "sha3-256"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(HasResult(ICryptoHash::CreateByName(name)->digestOf(Secret(300))));
        const auto mac = CCryptoHMAC::CreateByName(name);
        for (const std::size_t length : {16u, 200u}) {
            mac->setKey(Secret(length));
            EXPECT_TRUE(HasResult(mac->macOf(Secret(300))));
            mac->update(Secret(10));
            EXPECT_FALSE(mac->verify(Secret(mac->macSize())));
        }
    }
}

TEST(HashSecrets, ExtendableOutput)
{
    CCryptoSHAKE shake(CCryptoSHAKE::Kind::shake256);
    EXPECT_TRUE(HasResult(shake.outputOf(Secret(300), 300)));
}

TEST(HashSecrets, Derivation)
{
    for (const algorithm::Id id :
         {algorithm::sha1, algorithm::md5, algorithm::sha256, algorithm::sha384, algorithm::sha512, algorithm::sha224}) {
        SCOPED_TRACE(id);
        const Bytes salt(8, 1);
        for (const std::size_t length : {8u, 200u}) {
            EXPECT_TRUE(HasResult(KDF::PBKDF1(id, Secret(length), salt, 3, 16)));
            EXPECT_TRUE(HasResult(KDF::PBKDF2(id, Secret(length), salt, 3, 100)));
            EXPECT_TRUE(HasResult(KDF::PKCS12(id, KDF::PKCS12Use::key, Secret(length), salt, 3, 100)));
            EXPECT_TRUE(HasResult(KDF::HKDF(id, salt, Secret(length), salt, 100)));
            EXPECT_TRUE(HasResult(KDF::X963(id, Secret(length), salt, 100)));
        }
    }
    const Bytes salt(8, 1);
    EXPECT_TRUE(HasResult(KDF::PBKDF2(algorithm::sha3_256, Secret(200), salt, 3, 100)));
    EXPECT_TRUE(HasResult(KDF::HKDF(algorithm::sha3_256, salt, Secret(200), salt, 100)));
}

} // namespace
