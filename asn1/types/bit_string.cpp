#include "asn1/types/bit_string.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr const char* bitStringTemplate = "BIT_STRING{ unusedBits, value }";

constexpr std::uint8_t MaskOf(std::uint32_t bit)
{
    return static_cast<std::uint8_t>(1 << (7 - bit % 8));
}

bool HasOnlyUsableBits(const element& bits, std::uint32_t unusedBits)
{
    return unusedBits <= 7 && (unusedBits == 0 || !bits.isEmpty());
}

} // namespace

bitString::bitString() : CCryptoASN1Object(bitStringTemplate) {}

bitString::bitString(const elementNode* node) : bitString()
{
    construct(node);
}

bitString::bitString(const element& bits, std::uint32_t unusedBits) : bitString()
{
    bits_ = bits;
    bits_.setType(ElementType::bytes);
    unusedBits_ = unusedBits;
}

bool bitString::BuildNode()
{
    const auto unused = static_cast<std::uint8_t>(unusedBits_);
    return HasOnlyUsableBits(bits_, unusedBits_) && builder().fill("unusedBits", element(&unused, 1)) &&
           builder().fill("value", bits_);
}

bool bitString::ParseNode()
{
    unusedBits_ = findNumber("unusedBits");
    const elementNode* const value = find("value");
    bits_ = value != nullptr && IsAsn1Type(value->type()) ? CCryptoParser::ToDer(value) : findBytes("value");
    return HasOnlyUsableBits(bits_, unusedBits_);
}

void bitString::ClearFields()
{
    bits_ = {};
    unusedBits_ = 0;
}

void bitString::SetBit(std::uint32_t bit, bool value)
{
    const std::uint32_t byte = bit / 8;
    if (byte >= bits_.length())
        bits_.resize(byte + 1);
    if (byte + 1 == bits_.length())
        unusedBits_ = std::min(unusedBits_, 7 - bit % 8);
    const std::uint8_t mask = MaskOf(bit);
    std::uint8_t& target = bits_.data()[byte];
    target = static_cast<std::uint8_t>(value ? target | mask : target & ~mask);
}

bool bitString::GetBit(std::uint32_t bit) const
{
    return bit / 8 < bits_.length() && (bits_.data()[bit / 8] & MaskOf(bit)) != 0;
}

} // namespace ccrypto
