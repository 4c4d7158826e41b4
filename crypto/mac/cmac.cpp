#include "crypto/mac/cmac.h"

#include "core/base/algorithm.h"
#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/base/block_bytes.h"
#include "crypto/base/constant_time.h"
#include "crypto/cipher/aes.h"
#include "crypto/cipher/des.h"

#include <algorithm>
#include <cstring>

using namespace ccrypto;

namespace {

struct CmacCipher {
    const char* name;
    algorithm::Id firstId;
    algorithm::Id lastId;
    std::size_t minKey;
    std::size_t maxKey;
    std::unique_ptr<ICryptoBlockCipher> (*make)();
};

template <typename Cipher>
std::unique_ptr<ICryptoBlockCipher> Make()
{
    return std::make_unique<Cipher>();
}

constexpr CmacCipher ciphers[] = {
    {"aes-128", algorithm::aes128Ecb, algorithm::aes128Cfb, 16, 16, Make<CCryptoAES>},
    {"aes-192", algorithm::aes192Ecb, algorithm::aes192Cfb, 24, 24, Make<CCryptoAES>},
    {"aes-256", algorithm::aes256Ecb, algorithm::aes256Cfb, 32, 32, Make<CCryptoAES>},
    {"des-ede3", algorithm::tripleDesCbc, algorithm::tripleDesCbc, 16, 24, Make<CCryptoDES>},
};

std::unique_ptr<CCryptoCMAC> MakeCmac(const CmacCipher& cipher)
{
    return std::make_unique<CCryptoCMAC>(cipher.name, cipher.make(), cipher.minKey, cipher.maxKey);
}

} // namespace

std::unique_ptr<CCryptoCMAC> CCryptoCMAC::Create(algorithm::Id id)
{
    CCryptoAutoLogger logger("CCryptoCMAC::Create");

    for (const CmacCipher& cipher : ciphers)
        if (id >= cipher.firstId && id <= cipher.lastId)
            return logger.succeed(MakeCmac(cipher));
    return logger.fail(std::unique_ptr<CCryptoCMAC>(), "Unsupported cipher: %d", static_cast<int>(id));
}

std::unique_ptr<CCryptoCMAC> CCryptoCMAC::CreateByName(std::string_view name)
{
    CCryptoAutoLogger logger("CCryptoCMAC::CreateByName");

    constexpr std::string_view prefix = "cmac-";
    if (SameInAnyCase(name.substr(0, prefix.size()), prefix))
        name.remove_prefix(prefix.size());
    for (const CmacCipher& cipher : ciphers)
        if (SameInAnyCase(name, cipher.name))
            return logger.succeed(MakeCmac(cipher));
    return logger.fail(std::unique_ptr<CCryptoCMAC>(), "Unsupported cipher name");
}

CCryptoCMAC::CCryptoCMAC(const char* cipherName, std::unique_ptr<ICryptoBlockCipher> cipher, std::size_t minKey, std::size_t maxKey)
    : cipherName_(cipherName), cipher_(std::move(cipher)), minKey_(minKey), maxKey_(maxKey)
{
}

/// Times x in the field of the blocks (SP 800-38B, 6.1).
void CCryptoCMAC::doubled(Block& block) const
{
    const std::size_t size = cipher_->blockSize();
    const std::uint32_t polynomial = size == 16 ? 0x87 : 0x1B;
    std::uint32_t carry = polynomial & (0u - constant_time::Barrier(std::uint32_t{block[0]} >> 7));
    for (std::size_t i = size; i-- > 0;) {
        const std::uint32_t next = std::uint32_t{block[i]} >> 7;
        block[i] = static_cast<std::uint8_t>(std::uint32_t{block[i]} << 1 ^ carry);
        carry = next;
    }
}

bool CCryptoCMAC::setKey(std::span<const std::uint8_t> key)
{
    CCryptoAutoLogger logger("CCryptoCMAC::setKey");

    hasKey_ = false;
    reset();
    cipher_->clearKey();
    platform::SecureWipe(whole_.data(), whole_.size());
    platform::SecureWipe(padded_.data(), padded_.size());
    if (key.size() < minKey_ || key.size() > maxKey_)
        return logger.fail(false, "%s has no keys of %zu bytes", cipherName_, key.size());
    if (!cipher_->setKey(key))
        return logger.setResult(false);
    whole_.fill(0);
    cipher_->encrypt(whole_.data(), whole_.data(), 1);
    doubled(whole_);
    padded_ = whole_;
    doubled(padded_);
    hasKey_ = true;
    return logger.setResult(true);
}

void CCryptoCMAC::reset()
{
    platform::SecureWipe(chain_.data(), chain_.size());
    platform::SecureWipe(pending_.data(), pending_.size());
    pendingCount_ = 0;
}

void CCryptoCMAC::update(const void* bytes, std::size_t length)
{
    const std::size_t size = cipher_->blockSize();
    const auto* in = static_cast<const std::uint8_t*>(bytes);
    while (length > 0) {
        if (pendingCount_ == size) {
            block_bytes::Xor(chain_.data(), chain_.data(), pending_.data(), size);
            cipher_->encrypt(chain_.data(), chain_.data(), 1);
            pendingCount_ = 0;
        }
        const std::size_t count = std::min(length, size - pendingCount_);
        std::memcpy(pending_.data() + pendingCount_, in, count);
        pendingCount_ += count;
        in += count;
        length -= count;
    }
}

bool CCryptoCMAC::final(std::uint8_t* mac)
{
    if (!hasKey_) {
        CCryptoAutoLogger logger("CCryptoCMAC::final");
        reset();
        return logger.fail(false, "There is no key");
    }
    const std::size_t size = cipher_->blockSize();
    const bool isWhole = pendingCount_ == size;
    if (!isWhole) {
        pending_[pendingCount_] = 0x80;
        std::fill(pending_.begin() + static_cast<std::ptrdiff_t>(pendingCount_) + 1, pending_.end(), std::uint8_t{0});
    }
    block_bytes::Xor(chain_.data(), chain_.data(), pending_.data(), size);
    block_bytes::Xor(chain_.data(), chain_.data(), (isWhole ? whole_ : padded_).data(), size);
    cipher_->encrypt(mac, chain_.data(), 1);
    reset();
    return true;
}
