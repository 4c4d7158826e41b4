#include "tools/cryptotool/sums/mac_algorithms.h"

#include "core/base/algorithm.h"
#include "core/base/ascii.h"
#include "crypto/mac/cmac.h"
#include "crypto/mac/hmac.h"

#include <algorithm>

namespace ccrypto {

namespace {

std::unique_ptr<ICryptoMAC> NewHMAC(std::string_view name, std::span<const std::uint8_t> key, std::string&)
{
    auto mac = CCryptoHMAC::CreateByName(name);
    mac->setKey(key);
    return mac;
}

bool IsHMAC(std::string_view name)
{
    constexpr std::string_view prefix = "hmac-";
    return SameInAnyCase(name.substr(0, prefix.size()), prefix) && CCryptoHMAC::CreateByName(name) != nullptr;
}

bool IsCMAC(std::string_view name)
{
    return SameInAnyCase(name, "aes-cmac");
}

/// The length of the key says which AES it is.
std::unique_ptr<ICryptoMAC> NewCMAC(std::string_view, std::span<const std::uint8_t> key, std::string& reason)
{
    for (const algorithm::Id id : {algorithm::aes128Cbc, algorithm::aes192Cbc, algorithm::aes256Cbc}) {
        auto mac = CCryptoCMAC::Create(id);
        if (mac != nullptr && mac->keySize() == key.size() && mac->setKey(key))
            return mac;
    }
    reason = "it has " + std::to_string(key.size()) + " bytes, not 16, 24 or 32";
    return nullptr;
}

constexpr MACAlgorithm algorithms[] = {
    {IsHMAC, NewHMAC},
    {IsCMAC, NewCMAC},
};

} // namespace

const MACAlgorithm* FindMACAlgorithm(std::string_view name)
{
    const auto found = std::ranges::find_if(algorithms, [=](const MACAlgorithm& algorithm) { return algorithm.isNamed(name); });
    return found != std::end(algorithms) ? &*found : nullptr;
}

} // namespace ccrypto
