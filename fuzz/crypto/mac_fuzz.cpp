#include "crypto/mac/cmac.h"
#include "crypto/mac/hmac.h"
#include "crypto/mac/retail_mac.h"
#include "fuzz/require.h"

#include <algorithm>
#include <span>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;

/// The MAC of a message in two pieces is that of the whole, and its beginnings of allowed lengths verify, others do not.
void Authenticate(ICryptoMAC& mac, Bytes key, Bytes message, std::size_t split, std::size_t length)
{
    Require(mac.setKey(key));
    const element whole = mac.macOf(message);
    Require(whole.length() == mac.macSize());
    mac.update(message.first(split));
    mac.update(message.subspan(split));
    Require(mac.final() == whole);

    length %= whole.length() + std::size_t{2};
    element beginning(whole.data(), static_cast<std::uint32_t>(std::min<std::size_t>(length, whole.length())));
    mac.update(message);
    Require(mac.verify(beginning.bytes(), length) == (length >= minTruncatedMAC && length <= whole.length()));
    if (beginning.isEmpty())
        return;
    beginning.data()[split % beginning.length()] ^= static_cast<std::uint8_t>(1u << split % 8);
    mac.update(message);
    Require(!mac.verify(beginning.bytes(), length));
}

} // namespace

/// The first byte picks a MAC, the next two where the message is split and how much of the MAC counts; a key follows.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t keyLength = 16;
    if (size < 3 + keyLength)
        return 0;
    const Bytes key(data + 3, keyLength);
    const Bytes message(data + 3 + keyLength, size - 3 - keyLength);
    const std::size_t split = std::min<std::size_t>(data[1], message.size());
    constexpr const char* hashes[] = {"md5", "sha1", "sha256", "sha512", "sha3-256", "sha3-512"};
    const std::size_t kind = data[0] % (std::size(hashes) + 3);
    if (kind < std::size(hashes)) {
        Authenticate(*CCryptoHMAC::CreateByName(hashes[kind]), key, message, split, data[2]);
    } else if (kind == std::size(hashes)) {
        CCryptoRetailMAC mac;
        Authenticate(mac, key, message, split, data[2]);
    } else {
        const bool isAes = kind == std::size(hashes) + 1;
        Authenticate(*CCryptoCMAC::CreateByName(isAes ? "aes-128" : "des-ede3"), key, message, split, data[2]);
    }
    return 0;
}
