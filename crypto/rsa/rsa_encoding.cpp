#include "crypto/rsa/rsa_encoding.h"

#include "core/base/algorithm.h"
#include "core/log/log_writers.h"
#include "core/platform/secure_wipe.h"
#include "crypto/hash/hash.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ccrypto::rsa_encoding {

using constant_time::Mask;

namespace {

/// DER of DigestInfo up to the digest (RFC 8017, 9.2, note 1).
struct Prefix {
    algorithm::Id hash;
    std::uint8_t length;
    std::uint8_t bytes[19];
};
constexpr Prefix prefixes[] = {
    {algorithm::sha1, 15, {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2b, 0x0e, 0x03, 0x02, 0x1a, 0x05, 0x00, 0x04, 0x14}},
    {algorithm::md5,
     18,
     {0x30, 0x20, 0x30, 0x0c, 0x06, 0x08, 0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 0x02, 0x05, 0x05, 0x00, 0x04, 0x10}},
    {algorithm::sha256,
     19,
     {0x30, 0x31, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x01, 0x05, 0x00, 0x04, 0x20}},
    {algorithm::sha384,
     19,
     {0x30, 0x41, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x02, 0x05, 0x00, 0x04, 0x30}},
    {algorithm::sha512,
     19,
     {0x30, 0x51, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x03, 0x05, 0x00, 0x04, 0x40}},
    {algorithm::sha224,
     19,
     {0x30, 0x2d, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x04, 0x05, 0x00, 0x04, 0x1c}},
    {algorithm::sha3_224,
     19,
     {0x30, 0x2d, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x07, 0x05, 0x00, 0x04, 0x1c}},
    {algorithm::sha3_256,
     19,
     {0x30, 0x31, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x08, 0x05, 0x00, 0x04, 0x20}},
    {algorithm::sha3_384,
     19,
     {0x30, 0x41, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x09, 0x05, 0x00, 0x04, 0x30}},
    {algorithm::sha3_512,
     19,
     {0x30, 0x51, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x0a, 0x05, 0x00, 0x04, 0x40}},
    {algorithm::md5Sha1, 0, {}},
};
constexpr std::uint32_t digestOfMD5AndSha1 = 36;

bool Refuse(const char* reason)
{
    WriteErrorEx_G("RSA padding: %s", reason);
    return false;
}

/// The bytes of the digest that the prefix ends with.
std::size_t DigestSize(const Prefix& prefix)
{
    return prefix.length == 0 ? digestOfMD5AndSha1 : prefix.bytes[prefix.length - 1];
}

/// MGF1 (RFC 8017, B.2.1): xors the mask that `seed` gives to `target`.
void MaskWith(ICryptoHash& hash, std::span<const std::uint8_t> seed, std::span<std::uint8_t> target)
{
    std::uint8_t digest[maxDigestSize];
    for (std::uint32_t counter = 0; !target.empty(); ++counter) {
        const std::uint8_t counterBytes[4] = {static_cast<std::uint8_t>(counter >> 24), static_cast<std::uint8_t>(counter >> 16),
                                              static_cast<std::uint8_t>(counter >> 8), static_cast<std::uint8_t>(counter)};
        hash.update(seed);
        hash.update(counterBytes);
        hash.final(digest);
        const std::size_t count = std::min<std::size_t>(target.size(), hash.digestSize());
        for (std::size_t i = 0; i < count; ++i)
            target[i] ^= digest[i];
        target = target.subspan(count);
    }
    platform::SecureWipe(digest);
}

/// The two hashes of OAEP and PSS.
struct Hashes {
    explicit Hashes(const CCryptoRSAPadding& padding)
    {
        const algorithm::Id mask = padding.maskHash == algorithm::none ? padding.hash : padding.maskHash;
        if (padding.hash == algorithm::md5Sha1 || mask == algorithm::md5Sha1)
            return;
        message = ICryptoHash::Create(padding.hash);
        masking = ICryptoHash::Create(mask);
    }
    bool there() const { return isUsable(message) && isUsable(masking); }
    static bool isUsable(const std::unique_ptr<ICryptoHash>& hash) { return hash != nullptr && !hash->isExtendable(); }

    std::unique_ptr<ICryptoHash> message;
    std::unique_ptr<ICryptoHash> masking;
};

/// H of PSS (RFC 8017, 9.1.1, steps 5 and 6).
void HashForPSS(ICryptoHash& hash, std::span<const std::uint8_t> digest, std::span<const std::uint8_t> salt, std::uint8_t* result)
{
    constexpr std::uint8_t zeros[8] = {};
    hash.update(zeros);
    hash.update(digest);
    hash.update(salt);
    hash.final(result);
}

/// The encoded message of PSS in its block, which has one bit less than the modulus.
struct PSSBlock {
    PSSBlock(std::span<std::uint8_t> block, std::uint32_t bits, std::size_t digestSize)
        : unusedBits((8 - (bits - 1) % 8) % 8), encoded(block.last((bits + 6) / 8)), tooShort(encoded.size() < digestSize + 2)
    {
        if (tooShort)
            return;
        data = encoded.first(encoded.size() - digestSize - 1);
        hash = encoded.subspan(data.size(), digestSize);
    }

    std::uint32_t unusedBits;
    std::span<std::uint8_t> encoded;
    bool tooShort;
    std::span<std::uint8_t> data;
    std::span<std::uint8_t> hash;
};

constexpr std::uint8_t trailerOfPSS = 0xbc;

/// \return false, logged, unless the hashes exist, the digest is one of theirs and the salt's length is `minSaltLength` or more.
bool AreParametersOfPSS(const Hashes& hashes, const CCryptoRSAPadding& padding, std::span<const std::uint8_t> digest,
                        std::int32_t minSaltLength)
{
    if (!hashes.there())
        return Refuse("unsupported hash function");
    if (digest.size() != hashes.message->digestSize())
        return Refuse("the digest's length is not the hash function's");
    return padding.saltLength >= minSaltLength || Refuse("the length of the salt is not allowed");
}

/// EMSA-PKCS1-v1_5 (RFC 8017, 9.2) over a DigestInfo in two parts.
bool EncodeDigestInfoParts(std::span<std::uint8_t> block, std::span<const std::uint8_t> prefix,
                           std::span<const std::uint8_t> digest)
{
    const std::size_t tail = prefix.size() + digest.size();
    if (block.size() < overheadOfPKCS1 || tail > block.size() - overheadOfPKCS1)
        return Refuse("the key is too short for the digest");
    std::fill(block.begin(), block.end(), std::uint8_t{0xff});
    block[0] = 0;
    block[1] = 1;
    block[block.size() - tail - 1] = 0;
    std::ranges::copy(prefix, block.end() - static_cast<std::ptrdiff_t>(tail));
    std::ranges::copy(digest, block.end() - static_cast<std::ptrdiff_t>(digest.size()));
    return true;
}

} // namespace

bool EncodePKCS1Signature(std::span<std::uint8_t> block, algorithm::Id hash, std::span<const std::uint8_t> digest)
{
    const Prefix* prefix = std::find_if(std::begin(prefixes), std::end(prefixes), [&](const Prefix& p) { return p.hash == hash; });
    if (prefix == std::end(prefixes))
        return Refuse("unsupported hash function");
    if (digest.size() != DigestSize(*prefix))
        return Refuse("the digest's length is not the hash function's");
    return EncodeDigestInfoParts(block, {prefix->bytes, prefix->length}, digest);
}

bool EncodeDigestInfo(std::span<std::uint8_t> block, std::span<const std::uint8_t> digestInfo)
{
    return digestInfo.empty() ? Refuse("the DigestInfo is empty") : EncodeDigestInfoParts(block, {}, digestInfo);
}

bool EncodePSS(std::span<std::uint8_t> block, std::uint32_t bits, const CCryptoRSAPadding& padding,
               std::span<const std::uint8_t> digest, ICryptoRandom& random)
{
    const Hashes hashes(padding);
    if (!AreParametersOfPSS(hashes, padding, digest, CCryptoRSAPadding::saltAsLongAsDigest))
        return false;
    const PSSBlock parts(block, bits, digest.size());
    const std::size_t saltLength = padding.saltLength < 0 ? digest.size() : static_cast<std::size_t>(padding.saltLength);
    if (parts.tooShort || parts.data.size() < saltLength + 1)
        return Refuse("the key is too short for the digest and the salt");

    std::fill(block.begin(), block.end(), std::uint8_t{0});
    const std::span<std::uint8_t> salt = parts.data.last(saltLength);
    if (!random.generate(salt))
        return Refuse("no random bytes");
    HashForPSS(*hashes.message, digest, salt, parts.hash.data());
    parts.data[parts.data.size() - saltLength - 1] = 1;
    MaskWith(*hashes.masking, parts.hash, parts.data);
    parts.encoded.front() &= static_cast<std::uint8_t>(0xff >> parts.unusedBits);
    parts.encoded.back() = trailerOfPSS;
    return true;
}

bool VerifyPSS(std::span<std::uint8_t> block, std::uint32_t bits, const CCryptoRSAPadding& padding,
               std::span<const std::uint8_t> digest)
{
    const Hashes hashes(padding);
    if (!AreParametersOfPSS(hashes, padding, digest, CCryptoRSAPadding::saltOfAnyLength))
        return false;
    const PSSBlock parts(block, bits, digest.size());
    if (parts.tooShort)
        return Refuse("the key is too short for the digest");
    const std::uint8_t unused = static_cast<std::uint8_t>(~(0xff >> parts.unusedBits));
    if ((parts.encoded.size() < block.size() && block.front() != 0) || parts.encoded.back() != trailerOfPSS ||
        (parts.encoded.front() & unused) != 0)
        return false;
    MaskWith(*hashes.masking, parts.hash, parts.data);
    parts.data.front() &= static_cast<std::uint8_t>(~unused);
    const auto one = std::find_if(parts.data.begin(), parts.data.end(), [](std::uint8_t byte) { return byte != 0; });
    if (one == parts.data.end() || *one != 1)
        return false;
    const std::span<const std::uint8_t> salt(one + 1, parts.data.end());
    const std::size_t wanted = padding.saltLength < 0 ? digest.size() : static_cast<std::size_t>(padding.saltLength);
    const bool isAnyLength = padding.saltLength == CCryptoRSAPadding::saltOfAnyLength;
    if (isAnyLength ? std::cmp_less(salt.size(), padding.minSaltLength) : salt.size() != wanted)
        return false;
    std::uint8_t expected[maxDigestSize];
    HashForPSS(*hashes.message, digest, salt, expected);
    return std::memcmp(expected, parts.hash.data(), digest.size()) == 0;
}

bool EncodePKCS1Message(std::span<std::uint8_t> block, std::span<const std::uint8_t> message, ICryptoRandom& random)
{
    if (block.size() < overheadOfPKCS1 || message.size() > block.size() - overheadOfPKCS1)
        return Refuse("the message is too long for the key");
    const std::span<std::uint8_t> padding = block.subspan(2, block.size() - message.size() - 3);
    if (!random.generate(padding))
        return Refuse("no random bytes");
    for (std::uint8_t& byte : padding)
        while (constant_time::Declassify(byte == 0))
            if (!random.generate({&byte, 1}))
                return Refuse("no random bytes");
    block[0] = 0;
    block[1] = 2;
    block[block.size() - message.size() - 1] = 0;
    std::copy(message.begin(), message.end(), block.end() - static_cast<std::ptrdiff_t>(message.size()));
    return true;
}

Mask DecodePKCS1Message(std::span<const std::uint8_t> block, std::uint64_t& length)
{
    length = 0;
    if (block.size() < overheadOfPKCS1)
        return Mask::False();
    Mask found = Mask::False();
    std::uint64_t separator = 0;
    for (std::size_t i = 2; i < block.size(); ++i) {
        const Mask zero = Mask::IsZero(block[i]);
        separator = (zero & ~found).select<std::uint64_t>(i, separator);
        found |= zero;
    }
    constexpr std::uint64_t firstSeparator = overheadOfPKCS1 - 1;
    const Mask good = Mask::IsZero(block[0]) & Mask::Equal(block[1], 2) & found & ~Mask::Less(separator, firstSeparator);
    length = good.select<std::uint64_t>(block.size() - 1 - separator, 0);
    return good;
}

bool EncodeOAEP(std::span<std::uint8_t> block, const CCryptoRSAPadding& padding, std::span<const std::uint8_t> message,
                ICryptoRandom& random)
{
    const Hashes hashes(padding);
    if (!hashes.there())
        return Refuse("unsupported hash function");
    const std::size_t digestSize = hashes.message->digestSize();
    if (block.size() < 2 * digestSize + 2 || message.size() > block.size() - 2 * digestSize - 2)
        return Refuse("the message is too long for the key");
    const std::span<std::uint8_t> seed = block.subspan(1, digestSize);
    const std::span<std::uint8_t> data = block.subspan(1 + digestSize);
    std::fill(block.begin(), block.end(), std::uint8_t{0});
    if (!random.generate(seed))
        return Refuse("no random bytes");
    hashes.message->update(padding.label);
    hashes.message->final(data.data());
    data[data.size() - message.size() - 1] = 1;
    std::copy(message.begin(), message.end(), data.end() - static_cast<std::ptrdiff_t>(message.size()));
    MaskWith(*hashes.masking, seed, data);
    MaskWith(*hashes.masking, data, seed);
    return true;
}

bool DecodeOAEP(std::span<std::uint8_t> block, const CCryptoRSAPadding& padding, Mask& good, std::uint64_t& length)
{
    length = 0;
    const Hashes hashes(padding);
    if (!hashes.there())
        return Refuse("unsupported hash function");
    const std::size_t digestSize = hashes.message->digestSize();
    if (block.size() < 2 * digestSize + 2)
        return Refuse("the key is too short for the hash function");
    const std::span<std::uint8_t> seed = block.subspan(1, digestSize);
    const std::span<std::uint8_t> data = block.subspan(1 + digestSize);
    MaskWith(*hashes.masking, data, seed);
    MaskWith(*hashes.masking, seed, data);
    std::uint8_t labelDigest[maxDigestSize];
    hashes.message->update(padding.label);
    hashes.message->final(labelDigest);

    // Zeros, a one, the message.
    Mask found = Mask::False();
    Mask wrong = Mask::False();
    std::uint64_t separator = 0;
    for (std::size_t i = digestSize; i < data.size(); ++i) {
        const Mask one = Mask::Equal(data[i], 1);
        const Mask zero = Mask::IsZero(data[i]);
        separator = (one & ~found).select<std::uint64_t>(i, separator);
        wrong |= ~found & ~zero & ~one;
        found |= one;
    }
    good = Mask::IsZero(block[0]) & constant_time::EqualBytes(labelDigest, data.data(), digestSize) & found & ~wrong;
    length = good.select<std::uint64_t>(data.size() - 1 - separator, 0);
    return true;
}

} // namespace ccrypto::rsa_encoding
