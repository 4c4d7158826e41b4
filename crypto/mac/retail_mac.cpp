#include "crypto/mac/retail_mac.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/cipher/padding.h"

#include <algorithm>

using namespace ccrypto;

bool CCryptoRetailMAC::setKey(std::span<const std::uint8_t> key)
{
    CCryptoAutoLogger logger("CCryptoRetailMAC::setKey");

    reset();
    hasKey_ = key.size() == keyBytes && chaining_.setKey(key.first(8)) && ending_.setKey(key.last(8));
    if (hasKey_)
        return logger.setResult(true);
    chaining_.clearKey();
    ending_.clearKey();
    return logger.fail(false, "A retail MAC has no keys of %zu bytes", key.size());
}

void CCryptoRetailMAC::reset()
{
    platform::SecureWipe(chain_.data(), chain_.size());
    platform::SecureWipe(pending_.data(), pending_.size());
    pendingCount_ = 0;
}

void CCryptoRetailMAC::update(const void* bytes, std::size_t length)
{
    const auto* in = static_cast<const std::uint8_t*>(bytes);
    while (length > 0) {
        const std::size_t count = std::min(length, pending_.size() - pendingCount_);
        std::copy_n(in, count, pending_.begin() + static_cast<std::ptrdiff_t>(pendingCount_));
        pendingCount_ += count;
        in += count;
        length -= count;
        if (pendingCount_ == pending_.size()) {
            chaining_.encryptCbc(pending_.data(), pending_.data(), 1, chain_.data());
            pendingCount_ = 0;
        }
    }
}

bool CCryptoRetailMAC::final(std::uint8_t* mac)
{
    if (!hasKey_) {
        CCryptoAutoLogger logger("CCryptoRetailMAC::final");
        reset();
        return logger.fail(false, "There is no key");
    }
    ccrypto::iso9797::Pad(pending_, pendingCount_);
    chaining_.encryptCbc(pending_.data(), pending_.data(), 1, chain_.data());
    ending_.decrypt(chain_.data(), chain_.data(), 1);
    chaining_.encrypt(mac, chain_.data(), 1);
    reset();
    return true;
}
