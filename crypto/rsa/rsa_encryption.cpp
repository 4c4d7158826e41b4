#include "core/base/algorithm.h"
#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"
#include "core/platform/secure_wipe.h"
#include "crypto/base/constant_time.h"
#include "crypto/hash/hash.h"
#include "crypto/mac/hmac.h"
#include "crypto/rsa/rsa.h"
#include "crypto/rsa/rsa_encoding.h"

#include <algorithm>
#include <bit>
#include <string_view>

using namespace ccrypto;

using constant_time::Declassify;
using constant_time::Mask;

namespace {

constexpr std::size_t sha256Size = 32;

element LastBytes(std::span<const std::uint8_t> block, std::size_t count)
{
    return element(block.data() + block.size() - count, static_cast<std::uint32_t>(count));
}

/// What a ciphertext with a wrong padding decrypts to: bytes, and a length, that the private key and the ciphertext determine.
class Substitute {
public:
    Substitute(const CCryptoRSA& key, std::span<const std::uint8_t> ciphertext) : message_(ciphertext.size())
    {
        const std::unique_ptr<CCryptoHMAC> mac = CCryptoHMAC::Create(algorithm::sha256);
        const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(algorithm::sha256);
        if (mac == nullptr || hash == nullptr)
            return;
        const CCryptoRSANumbers numbers = key.numbers();
        WipedArray<std::uint8_t> secret(ciphertext.size());
        const std::size_t length = numbers.privateExponent.length();
        std::copy_n(numbers.privateExponent.data(), length, secret.data() + secret.size() - length);
        std::uint8_t digest[sha256Size];
        hash->update(secret);
        hash->final(digest);
        mac->setKey(digest);
        mac->update(ciphertext);
        mac->final(digest);
        mac->setKey(digest);
        platform::SecureWipe(digest);

        Expand(*mac, "message", message_);
        chooseLength(*mac);
        there_ = true;
    }

    bool there() const { return there_; }
    const WipedArray<std::uint8_t>& message() const { return message_; }
    /// Of the bytes at the end of message() that are the substitute; secret.
    std::uint64_t length() const { return length_; }

private:
    /// HMACs of a counter, the label and the length in bits.
    static void Expand(CCryptoHMAC& mac, std::string_view label, std::span<std::uint8_t> output)
    {
        const std::size_t bits = 8 * output.size();
        std::uint8_t digest[sha256Size];
        for (std::uint32_t counter = 0; !output.empty(); ++counter) {
            const std::uint8_t head[2] = {static_cast<std::uint8_t>(counter >> 8), static_cast<std::uint8_t>(counter)};
            const std::uint8_t tail[2] = {static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits)};
            mac.update(head);
            mac.update(label.data(), label.size());
            mac.update(tail);
            mac.final(digest);
            const std::size_t count = std::min(output.size(), sizeof digest);
            std::copy_n(digest, count, output.data());
            output = output.subspan(count);
        }
        platform::SecureWipe(digest);
    }

    /// The last of 128 random numbers that is a length a message can have: all of them are looked at.
    void chooseLength(CCryptoHMAC& mac)
    {
        constexpr std::size_t tries = 128;
        WipedArray<std::uint8_t> numbers(2 * tries);
        Expand(mac, "length", numbers);
        const std::uint64_t longest = message_.size() - rsa_encoding::overheadOfPKCS1;
        const std::uint64_t below = std::bit_ceil(longest + 1);
        for (std::size_t i = 0; i < tries; ++i) {
            const std::uint64_t candidate = (std::uint64_t{numbers[2 * i]} << 8 | numbers[2 * i + 1]) & (below - 1);
            length_ = Mask::Less(longest, candidate).select(length_, candidate);
        }
    }

    WipedArray<std::uint8_t> message_;
    std::uint64_t length_ = 0;
    bool there_ = false;
};

} // namespace

element CCryptoRSA::encryptPKCS1(std::span<const std::uint8_t> message, ICryptoRandom& random) const
{
    CCryptoAutoLogger logger("CCryptoRSA::encryptPKCS1");

    WipedArray<std::uint8_t> block(bytes());
    if (!rsa_encoding::EncodePKCS1Message(block, message, random))
        return logger.fail(element(), "The message cannot be encrypted");
    element ciphertext = publicOperation(block);
    logger.setResult(!ciphertext.isEmpty());
    return ciphertext;
}

bool CCryptoRSA::decryptPKCS1(std::span<const std::uint8_t> ciphertext, element& message) const
{
    CCryptoAutoLogger logger("CCryptoRSA::decryptPKCS1");

    message = element();
    if (ciphertext.size() != bytes())
        return logger.fail(false, "The ciphertext's length is not the key's");
    element block = privateOperation(ciphertext);
    const Substitute substitute(*this, ciphertext);
    if (block.isEmpty() || !substitute.there())
        return logger.fail(false, "The ciphertext cannot be decrypted");
    std::uint64_t length = 0;
    const Mask good = rsa_encoding::DecodePKCS1Message(block.bytes(), length);
    constant_time::CopyBytesIf(~good, block.data(), substitute.message().data(), block.length());
    // Of the message or of the substitute: which one stays secret.
    length = Declassify(good.select(length, substitute.length()));
    message = LastBytes(block.bytes(), length);
    return logger.setResult(true);
}

bool CCryptoRSA::unwrapPKCS1(std::span<const std::uint8_t> ciphertext, std::uint32_t length, element& message) const
{
    CCryptoAutoLogger logger("CCryptoRSA::unwrapPKCS1");

    message = element();
    if (ciphertext.size() != bytes())
        return logger.fail(false, "The ciphertext's length is not the key's");
    if (length > bytes() - rsa_encoding::overheadOfPKCS1)
        return logger.fail(false, "The key is too short for such a message");
    element block = privateOperation(ciphertext);
    const Substitute substitute(*this, ciphertext);
    if (block.isEmpty() || !substitute.there())
        return logger.fail(false, "The ciphertext cannot be decrypted");
    std::uint64_t found = 0;
    Mask good = rsa_encoding::DecodePKCS1Message(block.bytes(), found);
    good &= Mask::Equal(found, length);
    constant_time::CopyBytesIf(~good, block.data(), substitute.message().data(), block.length());
    message = LastBytes(block.bytes(), length);
    return logger.setResult(true);
}

element CCryptoRSA::encryptOAEP(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> message,
                                ICryptoRandom& random) const
{
    CCryptoAutoLogger logger("CCryptoRSA::encryptOAEP");

    WipedArray<std::uint8_t> block(bytes());
    if (!rsa_encoding::EncodeOAEP(block, padding, message, random))
        return logger.fail(element(), "The message cannot be encrypted");
    element ciphertext = publicOperation(block);
    logger.setResult(!ciphertext.isEmpty());
    return ciphertext;
}

bool CCryptoRSA::decryptOAEP(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> ciphertext, element& message) const
{
    CCryptoAutoLogger logger("CCryptoRSA::decryptOAEP");

    message = element();
    if (ciphertext.size() != bytes())
        return logger.fail(false, "The ciphertext's length is not the key's");
    element block = privateOperation(ciphertext);
    Mask good = Mask::False();
    std::uint64_t length = 0;
    if (block.isEmpty() || !rsa_encoding::DecodeOAEP({block.data(), block.length()}, padding, good, length) || !Declassify(good))
        return logger.fail(false, "The ciphertext cannot be decrypted");
    message = LastBytes(block.bytes(), Declassify(length));
    return logger.setResult(true);
}
