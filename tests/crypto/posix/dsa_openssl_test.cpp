#include "crypto/dsa/dsa.h"
#include "crypto/hash/hash.h"
#include "tests/crypto/posix/openssl_command.h"

#include <gtest/gtest.h>

using namespace ccrypto;

// What the openssl command signs, its keys as SubjectPublicKeyInfo.

namespace {

/// Every INTEGER in DER with lengths below 65536, through SEQUENCE and BIT STRING.
void CollectNumbers(std::span<const std::uint8_t> der, std::vector<element>& numbers)
{
    while (der.size() >= 2) {
        const std::uint8_t tag = der[0];
        const std::size_t lengthBytes = der[1] < 0x80 ? 0 : der[1] & 0x7F;
        std::size_t length = lengthBytes == 0 ? der[1] : 0;
        for (std::size_t i = 0; i < lengthBytes; ++i)
            length = length << 8 | der[2 + i];
        const auto content = der.subspan(2 + lengthBytes, length);
        if (tag == 0x02)
            numbers.emplace_back(content.data(), static_cast<std::uint32_t>(content.size()));
        if (tag == 0x30 || tag == 0x03)
            CollectNumbers(content.subspan(tag == 0x03 ? 1 : 0), numbers);
        der = der.subspan(2 + lengthBytes + length);
    }
}

} // namespace

TEST(DSABesideOpenSSL, VerifiesItsSignatures)
{
    const TemporaryDirectory folder;
    const auto openssl = [&](const std::string& arguments) {
        return std::system(("cd " + folder.path().string() + " && openssl " + arguments + " >/dev/null 2>&1").c_str()) == 0;
    };
    const Bytes message(100, 0x41);
    WriteBytes(folder / u8"message", message);
    for (const char* lengths : {"bits:1024 -pkeyopt dsa_paramgen_q_bits:160", "bits:1024 -pkeyopt dsa_paramgen_q_bits:256"}) {
        SCOPED_TRACE(lengths);
        ASSERT_TRUE(openssl(std::string("genpkey -genparam -algorithm DSA -out parameters.pem -pkeyopt dsa_paramgen_") + lengths));
        ASSERT_TRUE(openssl("genpkey -paramfile parameters.pem -out key.pem"));
        ASSERT_TRUE(openssl("pkey -in key.pem -pubout -outform DER -out public.der"));
        std::vector<element> numbers;
        CollectNumbers(ReadBytes(folder / u8"public.der"), numbers);
        ASSERT_EQ(numbers.size(), 4u);
        const auto key = CCryptoDSA::FromPublic({numbers[0], numbers[1], numbers[2], numbers[3]});
        ASSERT_NE(key, nullptr);
        for (const char* hash : {"sha1", "sha256", "sha512"}) {
            ASSERT_TRUE(openssl(std::string("dgst -") + hash + " -sign key.pem -out signature message"));
            Bytes digest = BytesOf(ICryptoHash::CreateByName(hash)->digestOf(message));
            const Bytes signature = ReadBytes(folder / u8"signature");
            EXPECT_TRUE(key->verifyHash(digest, signature, SignatureForm::der)) << hash;
            digest[0] ^= 1;
            EXPECT_FALSE(key->verifyHash(digest, signature, SignatureForm::der)) << hash;
        }
    }
}
