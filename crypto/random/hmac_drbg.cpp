#include "crypto/random/hmac_drbg.h"

#include "core/base/algorithm.h"
#include "core/log/log_writers.h"
#include "core/platform/secure_wipe.h"

#include <algorithm>
#include <cstring>

using namespace ccrypto;

namespace {

constexpr std::size_t minEntropy = 16;

bool Refuse(const char* reason)
{
    WriteErrorEx_G("HMAC_DRBG: %s", reason);
    return false;
}

} // namespace

void CCryptoHMACDRBG::setKey()
{
    mac_->setKey(key_);
}

// SP 800-90A, 10.1.2.2; the provided data come in three parts.
void CCryptoHMACDRBG::update(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second,
                             std::span<const std::uint8_t> third)
{
    const bool data = !first.empty() || !second.empty() || !third.empty();
    for (std::uint8_t round = 0; round < (data ? 2 : 1); ++round) {
        mac_->update(value_);
        mac_->update(&round, 1);
        mac_->update(first);
        mac_->update(second);
        mac_->update(third);
        mac_->final(key_);
        setKey();
        mac_->update(value_);
        mac_->final(value_);
    }
}

bool CCryptoHMACDRBG::instantiate(std::span<const std::uint8_t> entropy, std::span<const std::uint8_t> nonce,
                                  std::span<const std::uint8_t> personalization)
{
    uninstantiate();
    if (entropy.size() < minEntropy || entropy.size() + nonce.size() < seedBytes)
        return Refuse("too little entropy");
    if (entropy.size() > maxInput || nonce.size() > maxInput || personalization.size() > maxInput)
        return Refuse("the input is too long");
    mac_ = CCryptoHMAC::Create(algorithm::sha256);
    if (mac_ == nullptr)
        return Refuse("SHA-256 is missing");
    std::memset(key_, 0, sizeof key_);
    std::memset(value_, 1, sizeof value_);
    setKey();
    update(entropy, nonce, personalization);
    requests_ = 0;
    return true;
}

bool CCryptoHMACDRBG::reseed(std::span<const std::uint8_t> entropy, std::span<const std::uint8_t> additional)
{
    if (!isInstantiated())
        return Refuse("not instantiated");
    if (entropy.size() < minEntropy)
        return Refuse("too little entropy");
    if (entropy.size() > maxInput || additional.size() > maxInput)
        return Refuse("the input is too long");
    update(entropy, additional);
    requests_ = 0;
    return true;
}

bool CCryptoHMACDRBG::generate(std::span<std::uint8_t> bytes, std::span<const std::uint8_t> additional)
{
    const char* wrong = nullptr;
    if (!isInstantiated())
        wrong = "not instantiated";
    else if (additional.size() > maxInput)
        wrong = "the input is too long";
    const std::span<std::uint8_t> all = bytes;
    while (wrong == nullptr && !bytes.empty()) {
        if (requests_ >= maxRequests) {
            wrong = "it must be reseeded";
            break;
        }
        ++requests_;
        std::span<std::uint8_t> request = bytes.first(std::min(bytes.size(), maxBytesOfRequest));
        bytes = bytes.subspan(request.size());
        if (!additional.empty())
            update(additional);
        while (!request.empty()) {
            mac_->update(value_);
            mac_->final(value_);
            const std::size_t count = std::min(request.size(), digestBytes);
            std::copy_n(value_, count, request.begin());
            request = request.subspan(count);
        }
        update(additional);
    }
    if (wrong == nullptr)
        return true;
    platform::SecureWipe(all.data(), all.size());
    return Refuse(wrong);
}

void CCryptoHMACDRBG::uninstantiate()
{
    mac_.reset();
    platform::SecureWipe(key_);
    platform::SecureWipe(value_);
    requests_ = 0;
}
