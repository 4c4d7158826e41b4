#include "asn1/der/object_identifier.h"

#include "core/log/log_writers.h"

#include <charconv>

namespace ccrypto {

namespace {

constexpr std::uint8_t moreFollows = 0x80;
constexpr std::uint8_t groupMask = 0x7F;
constexpr std::uint32_t firstArcFactor = 40;
/// Of 64 bits.
constexpr std::ptrdiff_t maxArcOctets = 10;
constexpr std::ptrdiff_t maxArcDigits = 20;

/// The subidentifier at the start of `octets`, which is shortened by it.
bool ReadSubidentifier(std::span<const std::uint8_t>& octets, std::uint64_t& arc)
{
    if (octets[0] == moreFollows)
        return false;
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < octets.size(); ++index) {
        if (value >> 57 != 0)
            return false;
        value = value << 7 | (octets[index] & groupMask);
        if ((octets[index] & moreFollows) == 0) {
            octets = octets.subspan(index + 1);
            arc = value;
            return true;
        }
    }
    return false;
}

std::uint8_t* WriteSubidentifier(std::uint64_t arc, std::uint8_t* to)
{
    std::uint32_t groups = 1;
    for (std::uint64_t rest = arc >> 7; rest != 0; rest >>= 7)
        ++groups;
    while (--groups > 0)
        *to++ = static_cast<std::uint8_t>(moreFollows | (arc >> (7 * groups)));
    *to++ = static_cast<std::uint8_t>(arc & groupMask);
    return to;
}

char* WriteArc(std::uint64_t arc, char* to)
{
    if (arc < 10) {
        *to = static_cast<char>('0' + arc);
        return to + 1;
    }
    return std::to_chars(to, to + maxArcDigits, arc).ptr;
}

/// The arc at the start of `dotted`, which is shortened by it and the dot after it.
bool ReadArc(std::string_view& dotted, std::uint64_t& arc)
{
    // Nineteen digits always fit; more are left to the library.
    constexpr std::size_t safeDigits = 19;
    const char* const begin = dotted.data();
    const char* const end = begin + dotted.size();
    const char* next = begin;
    std::uint64_t value = 0;
    for (; next != end && *next >= '0' && *next <= '9'; ++next)
        value = value * 10 + static_cast<std::uint64_t>(*next - '0');
    if (next == begin || (next != end && (*next != '.' || next + 1 == end)))
        return false;
    if (static_cast<std::size_t>(next - begin) > safeDigits && std::from_chars(begin, next, value).ec != std::errc())
        return false;
    arc = value;
    dotted.remove_prefix(static_cast<std::size_t>(next - begin) + (next != end ? 1 : 0));
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
    std::uint8_t encoded[64];
    std::uint8_t* const end = encoded + sizeof encoded;
    std::uint8_t* next = encoded;
    *next++ = static_cast<std::uint8_t>(firstArcFactor * first + second);
    while (!dotted.empty()) {
        std::uint64_t arc = 0;
        if (!ReadArc(dotted, arc))
            return false;
        if (end - next < maxArcOctets) {
            octets.append(encoded, static_cast<std::uint32_t>(next - encoded));
            next = encoded;
        }
        next = WriteSubidentifier(arc, next);
    }
    octets.append(encoded, static_cast<std::uint32_t>(next - encoded));
    return true;
}

} // namespace

bool DottedFromDer(std::span<const std::uint8_t> octets, element& dotted)
{
    dotted = element(ElementType::text);
    if (octets.empty())
        return false;
    char text[128];
    char* const end = text + sizeof text;
    char* next = WriteArc(octets[0] / firstArcFactor, text);
    *next++ = '.';
    next = WriteArc(octets[0] % firstArcFactor, next);
    for (octets = octets.subspan(1); !octets.empty();) {
        std::uint64_t arc = 0;
        if (!ReadSubidentifier(octets, arc))
            return false;
        if (end - next <= maxArcDigits) {
            dotted.append(text, static_cast<std::uint32_t>(next - text));
            next = text;
        }
        *next++ = '.';
        next = WriteArc(arc, next);
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
    WriteErrorEx_G("\"%.*s\" is not an object identifier", static_cast<int>(dotted.size() < 100 ? dotted.size() : 100),
                   dotted.data());
    return false;
}

} // namespace ccrypto
