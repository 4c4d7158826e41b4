#include "crypto/mac/hmac.h"

#include "core/base/algorithm.h"
#include "core/base/any_case.h"
#include "core/memory/wiped.h"
#include "crypto/base/constant_time.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

using KeyBlock = Wiped<std::array<std::uint8_t, longestHashBlock>>;
using Digest = Wiped<std::array<std::uint8_t, longestDigest>>;

constexpr std::uint8_t innerPad = 0x36;
constexpr std::uint8_t outerPad = 0x5C;

void TakeKeyBlock(ICryptoHash& hash, KeyBlock& block, std::uint8_t pad)
{
    for (std::uint8_t& byte : block)
        byte ^= pad;
    hash.reset();
    hash.update(block.data(), hash.blockSize());
}

std::string_view WithoutHMAC(std::string_view name)
{
    constexpr std::string_view start = "hmac-";
    return SameInAnyCase(name.substr(0, start.size()), start) ? name.substr(start.size()) : name;
}

} // namespace

std::uint32_t HashOfHMAC(std::uint32_t id)
{
    switch (id) {
    case algorithm::hmacSha1:
        return algorithm::sha1;
    case algorithm::hmacSha224:
        return algorithm::sha224;
    case algorithm::hmacSha256:
        return algorithm::sha256;
    case algorithm::hmacSha384:
        return algorithm::sha384;
    case algorithm::hmacSha512:
        return algorithm::sha512;
    default:
        return id;
    }
}

std::unique_ptr<CCryptoHMAC> CCryptoHMAC::Create(std::uint32_t id)
{
    auto hash = ICryptoHash::Create(HashOfHMAC(id));
    return hash == nullptr ? nullptr : std::make_unique<CCryptoHMAC>(std::move(hash));
}

std::unique_ptr<CCryptoHMAC> CCryptoHMAC::CreateByName(std::string_view name)
{
    auto hash = ICryptoHash::CreateByName(WithoutHMAC(name));
    return hash == nullptr ? nullptr : std::make_unique<CCryptoHMAC>(std::move(hash));
}

CCryptoHMAC::CCryptoHMAC(std::unique_ptr<ICryptoHash> hash)
    : inner_(hash->clone()), outer_(hash->clone()), running_(std::move(hash))
{
    setKey({});
}

void CCryptoHMAC::setKey(std::span<const std::uint8_t> key)
{
    KeyBlock block{};
    if (key.size() > blockSize()) {
        running_->reset();
        running_->update(key);
        running_->final(block.data());
    } else if (!key.empty()) {
        std::memcpy(block.data(), key.data(), key.size());
    }
    TakeKeyBlock(*inner_, block, innerPad);
    TakeKeyBlock(*outer_, block, innerPad ^ outerPad);
    reset();
}

void CCryptoHMAC::reset()
{
    running_->assign(*inner_);
}

void CCryptoHMAC::final(std::uint8_t* mac)
{
    Digest digest;
    running_->final(digest.data());
    running_->assign(*outer_);
    running_->update(digest.data(), digestSize());
    running_->final(mac);
    reset();
}

element CCryptoHMAC::final()
{
    element mac;
    mac.resize(digestSize());
    final(mac.data());
    return mac;
}

element CCryptoHMAC::macOf(std::span<const std::uint8_t> bytes)
{
    reset();
    update(bytes);
    return final();
}

bool CCryptoHMAC::verify(std::span<const std::uint8_t> mac)
{
    Digest own;
    final(own.data());
    return mac.size() == digestSize() && constant_time::Declassify(constant_time::EqualBytes(own.data(), mac.data(), mac.size()));
}
