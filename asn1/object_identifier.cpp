#include "asn1/object_identifier.h"

#include "core/log_writers.h"

#include <charconv>

namespace {

constexpr std::uint8_t moreFollows = 0x80;
constexpr std::uint8_t groupMask = 0x7F;
constexpr std::uint32_t firstArcFactor = 40;

/// The subidentifier at the start of `octets`, which is shortened by it.
bool ReadSubidentifier(std::span<const std::uint8_t>& octets, std::uint64_t& arc)
{
    if (octets[0] == moreFollows)
        return false;
    arc = 0;
    for (std::size_t index = 0; index < octets.size(); ++index) {
        if (arc >> 57 != 0)
            return false;
        arc = arc << 7 | (octets[index] & groupMask);
        if ((octets[index] & moreFollows) == 0) {
            octets = octets.subspan(index + 1);
            return true;
        }
    }
    return false;
}

void AppendSubidentifier(std::uint64_t arc, element& octets)
{
    std::uint8_t groups[10];
    std::size_t start = sizeof groups;
    groups[--start] = static_cast<std::uint8_t>(arc & groupMask);
    while ((arc >>= 7) != 0)
        groups[--start] = static_cast<std::uint8_t>(moreFollows | (arc & groupMask));
    octets.append(groups + start, static_cast<std::uint32_t>(sizeof groups - start));
}

/// The arc at the start of `dotted`, which is shortened by it and the dot behind it.
bool ReadArc(std::string_view& dotted, std::uint64_t& arc)
{
    // Nineteen digits always fit; more are left to the library.
    constexpr std::size_t safeDigits = 19;
    std::size_t count = 0;
    arc = 0;
    while (count < dotted.size() && dotted[count] >= '0' && dotted[count] <= '9')
        arc = arc * 10 + static_cast<std::uint64_t>(dotted[count++] - '0');
    if (count == 0 || (count < dotted.size() && (dotted[count] != '.' || count + 1 == dotted.size())))
        return false;
    if (count > safeDigits && std::from_chars(dotted.data(), dotted.data() + count, arc).ec != std::errc())
        return false;
    dotted.remove_prefix(count + (count < dotted.size() ? 1 : 0));
    return true;
}

bool EncodeArcs(std::string_view dotted, element& octets)
{
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    if (!ReadArc(dotted, first) || dotted.empty() || !ReadArc(dotted, second))
        return false;
    if (first > 6 || second >= (first == 6 ? 16 : firstArcFactor))
        return false;
    octets.append(static_cast<std::uint8_t>(firstArcFactor * first + second));
    while (!dotted.empty()) {
        std::uint64_t arc = 0;
        if (!ReadArc(dotted, arc))
            return false;
        AppendSubidentifier(arc, octets);
    }
    return true;
}

} // namespace

bool DottedFromDer(std::span<const std::uint8_t> octets, element& dotted)
{
    dotted = element(ElementType::text);
    if (octets.empty())
        return false;
    // Twenty digits and a dot for each subidentifier are never exceeded; most fit the first chunk.
    char text[128];
    char* const end = text + sizeof text;
    char* next = std::to_chars(text, end, octets[0] / firstArcFactor).ptr;
    *next++ = '.';
    next = std::to_chars(next, end, octets[0] % firstArcFactor).ptr;
    for (octets = octets.subspan(1); !octets.empty();) {
        std::uint64_t arc = 0;
        if (!ReadSubidentifier(octets, arc))
            return false;
        if (end - next < 22) {
            dotted.append(text, static_cast<std::uint32_t>(next - text));
            next = text;
        }
        *next++ = '.';
        next = std::to_chars(next, end, arc).ptr;
    }
    dotted.append(text, static_cast<std::uint32_t>(next - text));
    return true;
}

bool DerFromDotted(std::string_view dotted, element& octets)
{
    octets.clear();
    if (EncodeArcs(dotted, octets))
        return true;
    octets.clear();
    WriteErrorEx_G("\"%.*s\" is no object identifier", static_cast<int>(dotted.size() < 100 ? dotted.size() : 100), dotted.data());
    return false;
}
