#include "core/utf8.h"

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

bool EncodeUtf8(std::uint32_t codePoint, element& target)
{
    if (codePoint > largestUtf8CodePoint)
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
