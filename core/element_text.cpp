#include "core/element.h"
#include "core/log_writers.h"
#include "core/string.h"
#include "core/utf8.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

/// Decimal conversion takes time that grows with the square of the length; longer numbers are nothing that people read.
constexpr std::uint32_t longestDecimal = 512;

bool IsText(ElementType type)
{
    switch (type) {
    case ElementType::identifier:
    case ElementType::text:
    case ElementType::quotedText:
    case ElementType::utf8Text:
    case ElementType::characterData:
        return true;
    default:
        return false;
    }
}

std::string HexOf(std::span<const std::uint8_t> bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

/// The magnitude of a number whose bytes are two's complement.
std::vector<std::uint8_t> Negated(std::span<const std::uint8_t> bytes)
{
    std::vector<std::uint8_t> magnitude(bytes.begin(), bytes.end());
    std::uint32_t carry = 1;
    for (auto byte = magnitude.rbegin(); byte != magnitude.rend(); ++byte) {
        carry += static_cast<std::uint8_t>(~*byte);
        *byte = static_cast<std::uint8_t>(carry);
        carry >>= 8;
    }
    return magnitude;
}

/// Limbs of nine decimal digits, the lowest first.
std::string DecimalOf(std::span<const std::uint8_t> magnitude)
{
    constexpr std::uint32_t limbBase = 1000000000;
    std::vector<std::uint32_t> limbs{0};
    for (const std::uint8_t byte : magnitude) {
        std::uint64_t carry = byte;
        for (std::uint32_t& limb : limbs) {
            carry += static_cast<std::uint64_t>(limb) << 8;
            limb = static_cast<std::uint32_t>(carry % limbBase);
            carry /= limbBase;
        }
        if (carry != 0)
            limbs.push_back(static_cast<std::uint32_t>(carry));
    }
    std::string text = std::to_string(limbs.back());
    for (auto limb = limbs.rbegin() + 1; limb != limbs.rend(); ++limb) {
        const std::string digits = std::to_string(*limb);
        text.append(9 - digits.size(), '0').append(digits);
    }
    return text;
}

std::string IntegerText(const element& number)
{
    const bool twosComplement = number.negative() && !number.isEmpty() && number.data()[0] >= 0x80;
    if (number.length() > longestDecimal)
        return "0x" + HexOf(number.bytes());
    const std::string digits = twosComplement ? DecimalOf(Negated(number.bytes())) : DecimalOf(number.bytes());
    return number.negative() ? "-" + digits : digits;
}

/// The decimal number at the start of a text, behind blanks and a sign, as far as 64 bits hold it.
struct ParsedNumber {
    bool negative = false;
    std::uint64_t magnitude = 0;
};

ParsedNumber ParseDecimal(std::string_view text)
{
    ParsedNumber number;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
        number.negative = text[0] == '-';
        text.remove_prefix(1);
    }
    for (const char digit : text) {
        if (digit < '0' || digit > '9')
            break;
        if (number.magnitude > (UINT64_MAX - 9) / 10) {
            number.magnitude = UINT64_MAX;
            break;
        }
        number.magnitude = number.magnitude * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    return number;
}

std::uint64_t LastBytes(std::span<const std::uint8_t> bytes)
{
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes.last(std::min<std::size_t>(bytes.size(), 8)))
        value = value << 8 | byte;
    return value;
}

void AppendUnit(element& units, std::uint32_t unit)
{
    const auto value = static_cast<char16_t>(unit);
    units.append(&value, sizeof value);
}

} // namespace

CCryptoString element::toString() const
{
    if (type_ == ElementType::none || IsText(type_))
        return CCryptoString(view());
    if (type_ == ElementType::truth)
        return toTruth() ? "TRUE" : "FALSE";
    if (type_ == ElementType::integer)
        return CCryptoString(IntegerText(*this));
    if (const char* token = TokenText(type_))
        return token;
    return CCryptoString(HexOf(bytes()));
}

std::uint64_t element::toWord64() const
{
    if (!IsText(type_))
        return LastBytes(bytes());
    const ParsedNumber number = ParseDecimal(view());
    return number.negative ? 0 - number.magnitude : number.magnitude;
}

std::uint32_t element::toWord32() const
{
    return static_cast<std::uint32_t>(toWord64());
}

std::int32_t element::toInt() const
{
    const std::uint32_t word = toWord32();
    if (!negative_ || IsText(type_))
        return static_cast<std::int32_t>(word);
    const bool twosComplement = length_ != 0 && data_[0] >= 0x80;
    if (!twosComplement)
        return static_cast<std::int32_t>(0 - word);
    const std::uint32_t signBits = length_ < 4 ? ~0u << (8 * length_) : 0;
    return static_cast<std::int32_t>(word | signBits);
}

bool element::toTruth() const
{
    if (IsText(type_))
        return view() == "TRUE" || view() == "true" || toWord64() != 0;
    return std::ranges::any_of(bytes(), [](std::uint8_t byte) { return byte != 0; });
}

element element::FromUtf16(const char16_t* units, std::uint32_t count)
{
    element text(ElementType::text);
    text.reserve(count);
    for (std::uint32_t index = 0; index < count; ++index) {
        std::uint32_t codePoint = units[index];
        if (IsHighSurrogate(codePoint) && index + 1 < count && IsLowSurrogate(units[index + 1]))
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (units[++index] - 0xDC00u);
        EncodeUtf8(codePoint, text);
        if (codePoint >= 0x80)
            text.setType(ElementType::utf8Text);
    }
    return text;
}

bool element::toUtf16(element& units) const
{
    units.clear();
    units.reserve(length_ < 0x10000000 ? (length_ + 1) * 2 : 0);
    for (std::uint32_t index = 0; index < length_;) {
        std::uint32_t codePoint = data_[index];
        const std::uint32_t taken = type_ == ElementType::utf8Text ? DecodeUtf8(bytes().subspan(index), codePoint) : 1;
        if (taken == 0 || codePoint > largestCodePoint) {
            WriteErrorEx_G(taken == 0 ? "Character decoding failed!" : "Character encoding failed!");
            units.clear();
            return false;
        }
        index += taken;
        if (codePoint >= 0x10000) {
            AppendUnit(units, 0xD800 + ((codePoint - 0x10000) >> 10));
            codePoint = 0xDC00 + (codePoint & 0x3FF);
        }
        AppendUnit(units, codePoint);
    }
    const std::uint32_t length = units.length();
    AppendUnit(units, 0);
    units.length_ = length;
    return true;
}
