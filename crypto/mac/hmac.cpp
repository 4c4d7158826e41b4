#include "crypto/mac/hmac.h"

#include "core/base/algorithm.h"
#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace ccrypto;

namespace {

using KeyBlock = Wiped<std::array<std::uint8_t, maxHashBlockSize>>;
using Digest = Wiped<std::array<std::uint8_t, maxDigestSize>>;

constexpr std::uint8_t innerPad = 0x36;
constexpr std::uint8_t outerPad = 0x5C;

void TakeKeyBlock(ICryptoHash& hash, KeyBlock& block, std::uint8_t pad)
{
    for (std::uint8_t& byte : block)
        byte ^= pad;
    hash.reset();
    hash.update(block.data(), hash.blockSize());
}

struct MACId {
    algorithm::Id mac;
    algorithm::Id hash;
};

constexpr MACId macIds[] = {
    {algorithm::hmacSha1, algorithm::sha1},         {algorithm::hmacSha224, algorithm::sha224},
    {algorithm::hmacSha256, algorithm::sha256},     {algorithm::hmacSha384, algorithm::sha384},
    {algorithm::hmacSha512, algorithm::sha512},     {algorithm::hmacSha3_224, algorithm::sha3_224},
    {algorithm::hmacSha3_256, algorithm::sha3_256}, {algorithm::hmacSha3_384, algorithm::sha3_384},
    {algorithm::hmacSha3_512, algorithm::sha3_512},
};

std::unique_ptr<CCryptoHMAC> MACOver(std::unique_ptr<ICryptoHash> hash)
{
    if (hash == nullptr)
        return nullptr;
    if (!hash->isExtendable())
        return std::make_unique<CCryptoHMAC>(std::move(hash));
    CCryptoAutoLogger logger("CCryptoHMAC::Create");
    return logger.fail(std::unique_ptr<CCryptoHMAC>(), "Unsupported hash function: %d", static_cast<int>(hash->algorithmId()));
}

std::string_view WithoutHMAC(std::string_view name)
{
    constexpr std::string_view start = "hmac-";
    return SameInAnyCase(name.substr(0, start.size()), start) ? name.substr(start.size()) : name;
}

} // namespace

namespace ccrypto {

algorithm::Id HashOfHMAC(algorithm::Id id)
{
    const auto* const row = std::ranges::find(macIds, id, &MACId::mac);
    return row != std::end(macIds) ? row->hash : id;
}

} // namespace ccrypto

std::unique_ptr<CCryptoHMAC> CCryptoHMAC::Create(algorithm::Id id)
{
    return MACOver(ICryptoHash::Create(HashOfHMAC(id)));
}

std::unique_ptr<CCryptoHMAC> CCryptoHMAC::CreateByName(std::string_view name)
{
    return MACOver(ICryptoHash::CreateByName(WithoutHMAC(name)));
}

CCryptoHMAC::CCryptoHMAC(std::unique_ptr<ICryptoHash> hash)
    : inner_(hash->clone()), outer_(hash->clone()), running_(std::move(hash))
{
}

bool CCryptoHMAC::setKey(std::span<const std::uint8_t> key)
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
    hasKey_ = true;
    reset();
    return true;
}

void CCryptoHMAC::reset()
{
    running_->assign(*inner_);
}

bool CCryptoHMAC::final(std::uint8_t* mac)
{
    if (!hasKey_) {
        CCryptoAutoLogger logger("CCryptoHMAC::final");
        return logger.fail(false, "There is no key");
    }
    Digest digest;
    running_->final(digest.data());
    running_->assign(*outer_);
    running_->update(digest.data(), macSize());
    running_->final(mac);
    reset();
    return true;
}
