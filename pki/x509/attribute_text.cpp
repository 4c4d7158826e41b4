#include "pki/x509/attribute_text.h"

#include "asn1/text/unicode_text.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <array>

namespace ccrypto {

namespace {

constexpr std::uint32_t space = 0x20;
constexpr std::uint32_t firstSurrogate = 0xD800;
constexpr std::uint32_t afterSurrogates = 0xE000;
constexpr std::uint32_t firstSupplementary = 0x10000;

struct CodePointRange {
    std::uint32_t first;
    std::uint32_t last;
};

constexpr CodePointRange ignoredCharacters[] = {
    {0x0000, 0x0008}, {0x000E, 0x001F}, {0x007F, 0x0084},   {0x0086, 0x009F},   {0x00AD, 0x00AD},
    {0x034F, 0x034F}, {0x06DD, 0x06DD}, {0x070F, 0x070F},   {0x1806, 0x1806},   {0x180B, 0x180E},
    {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x2063},   {0x206A, 0x206F},   {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFC}, {0x1D173, 0x1D17A}, {0xE0001, 0xE0001}, {0xE0020, 0xE007F},
};
constexpr CodePointRange blankCharacters[] = {
    {0x0009, 0x000D}, {0x0020, 0x0020}, {0x0085, 0x0085}, {0x00A0, 0x00A0}, {0x1680, 0x1680},
    {0x2000, 0x200A}, {0x2028, 0x2029}, {0x202F, 0x202F}, {0x205F, 0x205F}, {0x3000, 0x3000},
};

/// Capital letters, and how far their small letters are from them. In an alternating range each second one is a capital.
struct FoldedRange {
    std::uint32_t first;
    std::uint32_t last;
    std::int32_t distance;
    bool isAlternating;
};
constexpr FoldedRange foldedRanges[] = {
    {0x0041, 0x005A, 32, false},                             // Latin
    {0x00B5, 0x00B5, 775, false},                            // micro sign
    {0x00C0, 0x00D6, 32, false},                             // Latin-1
    {0x00D8, 0x00DE, 32, false},  {0x0100, 0x012F, 1, true}, // Latin Extended-A
    {0x0132, 0x0137, 1, true},    {0x0139, 0x0148, 1, true},     {0x014A, 0x0177, 1, true},   {0x0178, 0x0178, -121, false},
    {0x0179, 0x017E, 1, true},    {0x017F, 0x017F, -268, false}, // long s
    {0x0386, 0x0386, 38, false},                                 // Greek
    {0x0388, 0x038A, 37, false},  {0x038C, 0x038C, 64, false},   {0x038E, 0x038F, 63, false}, {0x0391, 0x03A1, 32, false},
    {0x03A3, 0x03AB, 32, false},  {0x03C2, 0x03C2, 1, false}, // final sigma
    {0x0400, 0x040F, 80, false},                              // Cyrillic
    {0x0410, 0x042F, 32, false},  {0x0460, 0x0481, 1, true},     {0x048A, 0x04BF, 1, true},   {0x04C0, 0x04C0, 15, false},
    {0x04C1, 0x04CE, 1, true},    {0x04D0, 0x052F, 1, true},     {0x0531, 0x0556, 48, false}, // Armenian
    {0x1E00, 0x1E95, 1, true},                                                                // Latin Extended Additional
    {0x1EA0, 0x1EFF, 1, true},    {0xFF21, 0xFF3A, 32, false},                                // full-width Latin
};

/// Letters that fold to several.
struct FoldedLetter {
    std::uint32_t letter;
    std::array<std::uint32_t, 3> folded;
};
constexpr FoldedLetter foldedLetters[] = {
    {0x00DF, {'s', 's', 0}},
    {0x0130, {'i', 0x0307, 0}},
    {0x0149, {0x02BC, 'n', 0}},
    {0x0390, {0x03B9, 0x0308, 0x0301}},
    {0x03B0, {0x03C5, 0x0308, 0x0301}},
    {0x1E9E, {'s', 's', 0}},
};

/// The ranges are in order.
bool Contains(std::span<const CodePointRange> ranges, std::uint32_t codePoint)
{
    const auto range = std::ranges::lower_bound(ranges, codePoint, {}, &CodePointRange::last);
    return range != ranges.end() && codePoint >= range->first;
}

void AppendCharacter(element& text, std::uint32_t codePoint)
{
    EncodeUtf8(codePoint, text);
}

void AppendFolded(element& text, std::uint32_t codePoint)
{
    const auto range = std::ranges::lower_bound(foldedRanges, codePoint, {}, &FoldedRange::last);
    const bool isInRange = range != std::end(foldedRanges) && codePoint >= range->first;
    if (const auto letter = std::ranges::find(foldedLetters, codePoint, &FoldedLetter::letter); letter != std::end(foldedLetters)) {
        for (const std::uint32_t part : letter->folded) {
            if (part != 0)
                AppendCharacter(text, part);
        }
    } else if (isInRange && (!range->isAlternating || (codePoint - range->first) % 2 == 0)) {
        AppendCharacter(text, static_cast<std::uint32_t>(static_cast<std::int32_t>(codePoint) + range->distance));
    } else {
        AppendCharacter(text, codePoint);
    }
}

CCryptoString TextOf(std::span<const std::uint8_t> octets)
{
    return CCryptoString(std::string_view(reinterpret_cast<const char*>(octets.data()), octets.size()));
}

std::optional<CCryptoString> TextOfLatin1(std::span<const std::uint8_t> octets)
{
    element text;
    for (const std::uint8_t octet : octets)
        AppendCharacter(text, octet);
    return CCryptoString(text.view());
}

/// Characters of two or four octets, the most significant first.
std::optional<CCryptoString> TextOfWide(std::span<const std::uint8_t> octets, std::size_t width)
{
    if (octets.size() % width != 0)
        return std::nullopt;
    element text;
    std::uint32_t high = 0; ///< a surrogate that waits for its partner
    for (; !octets.empty(); octets = octets.subspan(width)) {
        std::uint32_t unit = 0;
        for (std::size_t index = 0; index < width; ++index)
            unit = unit << 8 | octets[index];
        if (width == 2 && high == 0 && IsHighSurrogate(unit)) {
            high = unit;
            continue;
        }
        if (high != 0) {
            if (!IsLowSurrogate(unit))
                return std::nullopt;
            unit = firstSupplementary + ((high - firstSurrogate) << 10) + (unit & 0x3FF);
            high = 0;
        }
        if ((unit >= firstSurrogate && unit < afterSurrogates) || unit > maxCodePoint)
            return std::nullopt;
        AppendCharacter(text, unit);
    }
    if (high != 0)
        return std::nullopt;
    return CCryptoString(text.view());
}

} // namespace

std::optional<CCryptoString> AttributeText(ElementType type, std::span<const std::uint8_t> octets)
{
    const std::string_view bytes(reinterpret_cast<const char*>(octets.data()), octets.size());
    switch (type) {
    case ElementType::printableString:
    case ElementType::numericString:
    case ElementType::ia5String:
    case ElementType::visibleString:
        return IsAscii(bytes) ? std::optional(TextOf(octets)) : std::nullopt;
    case ElementType::utf8String:
        return IsUtf8(bytes) ? std::optional(TextOf(octets)) : std::nullopt;
    case ElementType::teletexString:
        return TextOfLatin1(octets);
    case ElementType::bmpString:
        return TextOfWide(octets, 2);
    case ElementType::universalString:
        return TextOfWide(octets, 4);
    default:
        return std::nullopt;
    }
}

CCryptoString PreparedText(const CCryptoString& text)
{
    element prepared;
    prepared.reserve(text.length());
    bool isBlankDue = false;
    for (std::span<const std::uint8_t> rest = text.data().bytes(); !rest.empty();) {
        std::uint32_t codePoint = 0;
        const std::uint32_t taken = DecodeUtf8(rest, codePoint);
        if (taken == 0)
            return text;
        rest = rest.subspan(taken);
        if (Contains(blankCharacters, codePoint)) {
            isBlankDue = !prepared.isEmpty();
        } else if (!Contains(ignoredCharacters, codePoint)) {
            if (isBlankDue)
                AppendCharacter(prepared, space);
            isBlankDue = false;
            AppendFolded(prepared, codePoint);
        }
    }
    return CCryptoString(prepared.view());
}

} // namespace ccrypto
