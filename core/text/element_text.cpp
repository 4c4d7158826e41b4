#include "core/log/log_writers.h"
#include "core/memory/out_of_memory.h"
#include "core/platform/secure_wipe.h"
#include "core/text/element.h"
#include "core/text/string.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <cstdio>

using namespace ccrypto;

namespace {

/// Decimal conversion takes time that grows with the square of the length; longer numbers are nothing that people read.
constexpr std::uint32_t maxDecimalBytes = 512;

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

element HexOf(std::span<const std::uint8_t> bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    element text(ElementType::text);
    if (bytes.size() > UINT32_MAX / 2)
        EndOutOfMemory();
    text.resize(static_cast<std::uint32_t>(bytes.size() * 2));
    std::uint8_t* next = text.data();
    for (const std::uint8_t byte : bytes) {
        *next++ = static_cast<std::uint8_t>(digits[byte >> 4]);
        *next++ = static_cast<std::uint8_t>(digits[byte & 15]);
    }
    return text;
}

/// The magnitude of a number whose bytes are two's complement.
element Negated(std::span<const std::uint8_t> bytes)
{
    element magnitude(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    std::uint32_t carry = 1;
    for (std::uint32_t index = magnitude.length(); index-- > 0;) {
        std::uint8_t& byte = magnitude.data()[index];
        carry += static_cast<std::uint8_t>(~byte);
        byte = static_cast<std::uint8_t>(carry);
        carry >>= 8;
    }
    return magnitude;
}

/// The digits of at most `maxDecimalBytes` bytes. Limbs of nine digits, the lowest first.
element DecimalOf(std::span<const std::uint8_t> magnitude)
{
    constexpr std::uint32_t limbBase = 1000000000;
    constexpr std::size_t maxLimbs = maxDecimalBytes * 8 / 29 + 1;
    std::uint32_t limbs[maxLimbs];
    limbs[0] = 0;
    std::size_t count = 1;
    for (const std::uint8_t byte : magnitude) {
        std::uint64_t carry = byte;
        for (std::size_t limb = 0; limb < count; ++limb) {
            carry += static_cast<std::uint64_t>(limbs[limb]) << 8;
            limbs[limb] = static_cast<std::uint32_t>(carry % limbBase);
            carry /= limbBase;
        }
        if (carry != 0)
            limbs[count++] = static_cast<std::uint32_t>(carry);
    }
    element text(ElementType::text);
    char digits[12];
    for (std::size_t limb = count; limb-- > 0;) {
        const int length = std::snprintf(digits, sizeof digits, limb + 1 == count ? "%u" : "%09u", limbs[limb]);
        text.append(digits, static_cast<std::uint32_t>(length));
    }
    // The value may be a key.
    platform::SecureWipe(digits, sizeof digits);
    platform::SecureWipe(limbs, count * sizeof limbs[0]);
    return text;
}

CCryptoString IntegerText(const element& number)
{
    const bool twosComplement = number.negative() && !number.isEmpty() && number.data()[0] >= 0x80;
    const element magnitude = twosComplement ? Negated(number.bytes()) : number;
    const bool isZero = std::ranges::none_of(number.bytes(), [](std::uint8_t byte) { return byte != 0; });
    const bool isLong = number.length() > maxDecimalBytes;
    const element digits = isLong ? HexOf(magnitude.bytes()) : DecimalOf(magnitude.bytes());
    CCryptoString text(isZero || !number.negative() ? "" : "-");
    return text.append(isLong ? "0x" : "").append(digits.view());
}

/// The decimal number at the start of a text, after blanks and a sign, as far as 64 bits hold it.
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
        const auto value = static_cast<std::uint64_t>(digit - '0');
        if (number.magnitude > (UINT64_MAX - value) / 10) {
            number.magnitude = UINT64_MAX;
            break;
        }
        number.magnitude = number.magnitude * 10 + value;
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
    if (type() == ElementType::none || IsText(type()))
        return CCryptoString(view());
    if (type() == ElementType::truth)
        return toTruth() ? "TRUE" : "FALSE";
    if (type() == ElementType::integer)
        return IntegerText(*this);
    if (const char* token = TokenText(type()))
        return token;
    return CCryptoString(HexOf(bytes()).view());
}

std::uint64_t element::toWord64() const
{
    if (!IsText(type()))
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
    if (!negative_ || IsText(type()))
        return static_cast<std::int32_t>(word);
    const bool twosComplement = length_ != 0 && data_[0] >= 0x80;
    if (!twosComplement)
        return static_cast<std::int32_t>(0 - word);
    const std::uint32_t signBits = length_ < 4 ? ~0u << (8 * length_) : 0;
    return static_cast<std::int32_t>(word | signBits);
}

std::optional<std::int64_t> element::exactInt64() const
{
    const bool text = IsText(type());
    const ParsedNumber parsed = text ? ParseDecimal(view()) : ParsedNumber{.negative = negative_};
    const bool twosComplement = !text && negative_ && length_ != 0 && data_[0] >= 0x80;
    const element magnitude = twosComplement ? Negated(bytes()) : element();
    const std::span<const std::uint8_t> octets = twosComplement ? magnitude.bytes() : bytes();
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    if (!text && octets.size() > 8 && !std::ranges::all_of(octets.first(octets.size() - 8), isZero))
        return std::nullopt;
    const std::uint64_t size = text ? parsed.magnitude : LastBytes(octets);
    if (size > INT64_MAX)
        return std::nullopt;
    const auto value = static_cast<std::int64_t>(size);
    return parsed.negative ? -value : value;
}

std::optional<std::uint32_t> element::exactWord32() const
{
    const std::optional<std::int64_t> value = exactInt64();
    if (!value || *value < 0 || *value > UINT32_MAX)
        return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

std::optional<std::int32_t> element::exactInt() const
{
    const std::optional<std::int64_t> value = exactInt64();
    if (!value || *value < INT32_MIN || *value > INT32_MAX)
        return std::nullopt;
    return static_cast<std::int32_t>(*value);
}

bool element::toTruth() const
{
    if (IsText(type()))
        return view() == "TRUE" || view() == "true" || toWord64() != 0;
    return std::ranges::any_of(bytes(), [](std::uint8_t byte) { return byte != 0; });
}

element element::FromUtf16(const char16_t* units, std::uint32_t count)
{
    element text(ElementType::text);
    if (units == nullptr)
        return text;
    const std::uint64_t length = Utf8Length({units, count});
    if (length > count)
        text.setType(ElementType::utf8Text);
    text.reserve(LengthOf(length));
    EncodeUtf8({units, count}, text.data());
    text.lengthen(static_cast<std::uint32_t>(length));
    return text;
}

bool element::toUtf16(element& units) const
{
    element converted;
    converted.reserve(length_ < 0x10000000 ? (length_ + 1) * 2 : 0);
    bool valid = true;
    for (std::uint32_t index = 0; index < length_ && valid;) {
        std::uint32_t codePoint = data_[index];
        const std::uint32_t taken = type() == ElementType::utf8Text ? DecodeUtf8(bytes().subspan(index), codePoint) : 1;
        // An overlong form may hide a zero or a separator from whoever looks at the bytes.
        const bool decoded = taken == 1 || (taken != 0 && taken == Utf8Length(codePoint));
        valid = decoded && codePoint <= maxCodePoint;
        if (!valid)
            WriteErrorEx_G("%s", decoded ? "Character encoding failed!" : "Character decoding failed!");
        index += taken;
        if (codePoint >= 0x10000) {
            AppendUnit(converted, 0xD800 + ((codePoint - 0x10000) >> 10));
            codePoint = 0xDC00 + (codePoint & 0x3FF);
        }
        AppendUnit(converted, codePoint);
    }
    if (!valid)
        converted.clear();
    const std::uint32_t length = converted.length();
    AppendUnit(converted, 0);
    converted.length_ = length;
    units = std::move(converted);
    return valid;
}
