#include "pki/cms/signed_content.h"

#include "asn1/der/der_cursor.h"
#include "crypto/hash/hash.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::uint8_t attributesTag = 0x31;
constexpr std::uint8_t attributeTag = 0x30;
constexpr std::uint8_t attributeTypeTag = 0x06;

bool IsAttribute(std::span<const std::uint8_t> value)
{
    DerCursor cursor(value);
    return cursor.read(attributeTypeTag) && cursor.read(attributesTag) && cursor.atEnd();
}

} // namespace

const element& SignedContent::digest(algorithm::Id hash)
{
    element& digest = digests_[hash];
    if (digest.isEmpty() && octets_) {
        if (const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(hash))
            digest = function->digestOf(*octets_);
    }
    return digest;
}

bool SignedContent::isMadeOf(std::span<const std::uint8_t> octets) const
{
    if (octets_)
        return std::ranges::equal(*octets_, octets);
    return std::ranges::all_of(digests_, [&](const auto& entry) {
        const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(entry.first);
        return entry.second.isEmpty() || (function != nullptr && function->digestOf(octets) == entry.second);
    });
}

bool SignedContent::isSetOfAttributes() const
{
    const auto set = octets_ ? OnlyValue(*octets_, attributesTag) : std::nullopt;
    if (!set)
        return false;
    for (DerCursor cursor(*set); !cursor.atEnd();) {
        const DerItem item = cursor.read(attributeTag);
        if (!item || !IsAttribute(item.value))
            return false;
    }
    return true;
}

} // namespace ccrypto
