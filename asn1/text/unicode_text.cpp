#include "asn1/text/unicode_text.h"

#include "core/text/utf8.h"

#include <algorithm>
#include <span>

namespace ccrypto {

namespace {

struct CharacterRange {
    std::uint32_t first;
    std::uint32_t last;
};

/// XML 1.0, 2.3, NameStartChar.
constexpr CharacterRange nameStarts[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},         {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},   {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};

/// What NameChar adds.
constexpr CharacterRange nameContinuations[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

bool IsIn(std::span<const CharacterRange> ranges, std::uint32_t codePoint)
{
    return std::ranges::any_of(
        ranges, [codePoint](const CharacterRange& range) { return codePoint >= range.first && codePoint <= range.last; });
}

} // namespace

std::size_t ReadCharacter(std::string_view text, std::uint32_t& codePoint)
{
    if (text.empty())
        return 0;
    codePoint = static_cast<std::uint8_t>(text[0]);
    if (codePoint < 0x80)
        return 1;
    const std::string_view window = text.substr(0, 4);
    const std::uint32_t taken = DecodeUtf8({reinterpret_cast<const std::uint8_t*>(window.data()), window.size()}, codePoint);
    const bool isSurrogate = IsHighSurrogate(codePoint) || IsLowSurrogate(codePoint);
    const bool isCharacter = taken > 1 && taken == Utf8Length(codePoint) && !isSurrogate && codePoint <= maxCodePoint;
    return isCharacter ? taken : 0;
}

bool IsUtf8(std::string_view text)
{
    std::uint32_t codePoint = 0;
    while (!text.empty()) {
        const std::size_t taken = ReadCharacter(text, codePoint);
        if (taken == 0)
            return false;
        text.remove_prefix(taken);
    }
    return true;
}

bool IsAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char character) { return static_cast<std::uint8_t>(character) < 0x80; });
}

bool IsXmlCharacter(std::uint32_t codePoint)
{
    if (codePoint < 0x20)
        return codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
    return codePoint < 0xD800 || (codePoint >= 0xE000 && codePoint <= maxCodePoint && codePoint != 0xFFFE && codePoint != 0xFFFF);
}

bool IsXmlText(std::string_view text)
{
    std::uint32_t codePoint = 0;
    while (!text.empty()) {
        const std::size_t taken = ReadCharacter(text, codePoint);
        if (taken == 0 || !IsXmlCharacter(codePoint))
            return false;
        text.remove_prefix(taken);
    }
    return true;
}

std::size_t XmlNameLength(std::string_view text)
{
    std::size_t length = 0;
    std::uint32_t codePoint = 0;
    while (const std::size_t taken = ReadCharacter(text.substr(length), codePoint)) {
        if (!IsIn(nameStarts, codePoint) && (length == 0 || !IsIn(nameContinuations, codePoint)))
            break;
        length += taken;
    }
    return length;
}

bool IsXmlName(std::string_view text)
{
    return !text.empty() && XmlNameLength(text) == text.size();
}

bool IsXmlBlank(std::string_view text)
{
    return std::ranges::all_of(text, [](char character) { return IsXmlBlank(character); });
}

} // namespace ccrypto
