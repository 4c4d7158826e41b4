#include "core/text/utf8.h"

#include <cstring>

namespace ccrypto {

std::uint32_t EncodeUtf8(std::uint32_t codePoint, std::uint8_t* bytes)
{
    if (codePoint < 0x80) {
        bytes[0] = static_cast<std::uint8_t>(codePoint);
        return 1;
    }
    const std::uint32_t continuations = Utf8Length(codePoint) - 1;
    constexpr std::uint8_t leads[] = {0, 0xC0, 0xE0, 0xF0};
    bytes[0] = static_cast<std::uint8_t>(leads[continuations] | codePoint >> (6 * continuations));
    for (std::uint32_t index = 1; index <= continuations; ++index)
        bytes[index] = static_cast<std::uint8_t>(0x80 | (codePoint >> (6 * (continuations - index)) & 0x3F));
    return continuations + 1;
}

std::string_view Utf8Prefix(std::string_view text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes)
        return text;
    std::size_t end = maxBytes;
    while (end > 0 && maxBytes - end < 3 && IsUtf8Continuation(static_cast<std::uint8_t>(text[end])))
        --end;
    // More continuation bytes than a character has belong to none.
    return text.substr(0, IsUtf8Continuation(static_cast<std::uint8_t>(text[end])) ? maxBytes : end);
}

std::uint64_t Utf8Length(std::u16string_view units)
{
    std::uint64_t length = units.size();
    for (const char16_t unit : units)
        length += (unit >= 0x80 ? 1u : 0u) + (unit >= 0x800 ? 1u : 0u);
    // A pair takes four bytes, its halves by themselves three each.
    for (std::size_t index = 1; index < units.size(); ++index) {
        if (IsHighSurrogate(units[index - 1]) && IsLowSurrogate(units[index]))
            length -= 2;
    }
    return length;
}

void EncodeUtf8(std::u16string_view units, std::uint8_t* bytes)
{
    constexpr std::uint64_t aboveAscii = 0xFF80FF80FF80FF80;
    std::size_t index = 0;
    while (index < units.size()) {
        // Four units of ASCII at a time: names are mostly that.
        for (std::uint64_t four = 0; index + 4 <= units.size(); index += 4) {
            std::memcpy(&four, units.data() + index, sizeof four);
            if ((four & aboveAscii) != 0)
                break;
            for (std::size_t unit = 0; unit < 4; ++unit)
                *bytes++ = static_cast<std::uint8_t>(units[index + unit]);
        }
        if (index == units.size())
            return;
        std::uint32_t codePoint = units[index++];
        if (IsHighSurrogate(codePoint) && index < units.size() && IsLowSurrogate(units[index]))
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (units[index++] - 0xDC00u);
        bytes += EncodeUtf8(codePoint, bytes);
    }
}

bool EncodeUtf8(std::uint32_t codePoint, element& target)
{
    if (codePoint > maxUtf8CodePoint)
        return false;
    std::uint8_t bytes[4];
    target.append(bytes, EncodeUtf8(codePoint, bytes));
    return true;
}

std::uint32_t DecodeUtf8(std::span<const std::uint8_t> bytes, std::uint32_t& codePoint)
{
    if (bytes.empty())
        return 0;
    const std::uint8_t lead = bytes[0];
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    const std::uint32_t continuations = Utf8ContinuationCount(lead);
    if (continuations == 0 || bytes.size() <= continuations)
        return 0;
    std::uint32_t value = lead & (0x3Fu >> continuations);
    for (std::uint32_t index = 1; index <= continuations; ++index) {
        if (!IsUtf8Continuation(bytes[index]))
            return 0;
        value = value << 6 | (bytes[index] & 0x3Fu);
    }
    codePoint = value;
    return continuations + 1;
}

} // namespace ccrypto
