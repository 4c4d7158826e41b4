#include "tools/cryptotool/asn1/outline_text.h"

#include "asn1/oid/oid_names.h"
#include "tools/cryptotool/asn1/time_and_address.h"
#include "tools/cryptotool/asn1/value_text.h"
#include "tools/text/safe_text.h"

#include <algorithm>
#include <cstdio>

namespace ccrypto {

namespace {

using Kind = OutlineElement::Kind;

constexpr std::uint32_t maxIndent = 40;

/// The dotted text of an OBJECT_IDENTIFIER; empty for other elements and broken octets.
std::string DottedText(const OutlineElement& line)
{
    const bool isOid = line.kind == Kind::element && !line.isOpen && line.header.type() == ElementType::objectIdentifier;
    return isOid ? StandardDotted(line.value) : std::string();
}

bool HasValue(const OutlineElement& line)
{
    return !line.isOpen && !line.value.empty();
}

/// On one line, cut; of a BIT STRING without the octet that counts unused bits.
std::string ShortValue(const OutlineElement& line)
{
    if (line.kind == Kind::notDecoded)
        return ValueText(ElementType::bitString, line.value, shortText, shortHex);
    const ElementType type = line.header.type();
    if (type != ElementType::bitString)
        return ValueText(type, line.value, shortText, shortHex);
    const std::string bits = ValueText(type, line.value.subspan(1), shortText, shortHex);
    const unsigned unused = line.value[0];
    return unused == 0 ? bits : bits + " (" + std::to_string(unused) + " unused bits)";
}

struct NamesExtension {
    std::string_view octets;
    bool hasRanges = false; ///< an address comes with a mask
};

/// The extensions with GeneralNames (RFC 5280, 4.2 and 5.2).
constexpr NamesExtension namesExtensions[] = {
    {"\x55\x1D\x11"},                     // subjectAltName
    {"\x55\x1D\x12"},                     // issuerAltName
    {"\x55\x1D\x1C"},                     // issuingDistributionPoint
    {"\x55\x1D\x1E", true},               // nameConstraints
    {"\x55\x1D\x1F"},                     // cRLDistributionPoints
    {"\x55\x1D\x23"},                     // authorityKeyIdentifier
    {"\x55\x1D\x2E"},                     // freshestCRL
    {"\x2B\x06\x01\x05\x05\x07\x01\x01"}, // authorityInfoAccess
    {"\x2B\x06\x01\x05\x05\x07\x01\x0B"}, // subjectInfoAccess
};

/// The address in an iPAddress of a GeneralName; empty for other elements.
std::string AddressOf(const OutlineElement& line)
{
    constexpr std::uint32_t ipAddressTag = 7;
    if (line.isOpen || line.header.type() != ElementType::contextSpecific || line.header.tagNumber() != ipAddressTag)
        return {};
    const std::string_view octets(reinterpret_cast<const char*>(line.extension.data()), line.extension.size());
    const auto found = std::ranges::find(namesExtensions, octets, &NamesExtension::octets);
    return found != std::end(namesExtensions) ? AddressText(line.value, found->hasRanges) : std::string();
}

std::string TimeOf(const OutlineElement& line)
{
    if (line.kind != Kind::element || line.isOpen || line.isCut())
        return {};
    return TimeText(line.header.type(), {reinterpret_cast<const char*>(line.value.data()), line.value.size()});
}

bool HasTagNumber(const OutlineElement& line)
{
    return line.kind == Kind::element && (IsTagClass(line.header.type()) || line.header.type() == ElementType::none);
}

const char* Form(const OutlineElement& line)
{
    return line.kind == Kind::notDecoded ? "-" : line.header.constructed() ? "cons" : "prim";
}

} // namespace

std::string OutlineHeading()
{
    return " offset  header   length  form  element\n";
}

std::string OutlineLine(const OutlineElement& line, const Paint& paint)
{
    char numbers[64];
    const std::string length = line.header.indefinite ? "inf" : std::to_string(line.header.length);
    std::snprintf(numbers, sizeof numbers, "%7u  %6u  %7s  %-4s  ", line.header.start, line.headerLength(), length.c_str(),
                  Form(line));
    std::string text = numbers + std::string(std::size_t{2} * std::min(line.depth, maxIndent), ' ');
    const std::string tag = HasTagNumber(line) ? "[" + std::to_string(line.header.tagNumber()) + "]" : std::string();
    text += paint(Color::name, std::string(line.typeName()) + tag);
    const std::string dotted = DottedText(line);
    if (!dotted.empty()) {
        const std::string named = NamedOid(dotted);
        text += " " + dotted + paint(Color::good, named.substr(dotted.size()));
    } else if (HasValue(line)) {
        text += " " + ShortValue(line);
    }
    if (const std::string time = TimeOf(line); !time.empty())
        text += paint(Color::note, " (" + ReadableTime(time) + ")");
    if (const std::string address = AddressOf(line); !address.empty())
        text += paint(Color::note, " (" + address + ")");
    if (line.isCut())
        text += " (cut short: " + std::to_string(line.value.size()) + " of " + std::to_string(line.header.length) + " bytes)";
    return text + "\n";
}

std::string OutlineJson(const OutlineElement& line)
{
    std::string json = "{\"offset\":" + std::to_string(line.header.start) +
                       ",\"headerLength\":" + std::to_string(line.headerLength()) +
                       ",\"length\":" + (line.header.indefinite ? "null" : std::to_string(line.header.length)) +
                       ",\"depth\":" + std::to_string(line.depth) + ",\"type\":" + JsonString(line.typeName());
    if (line.kind != Kind::notDecoded) {
        json += ",\"class\":" + JsonString(line.className()) + ",\"tag\":" + std::to_string(line.header.tagNumber());
        json += line.header.constructed() ? ",\"constructed\":true" : ",\"constructed\":false";
    }
    const std::string dotted = DottedText(line);
    if (!dotted.empty()) {
        const char* const name = FindOidName(dotted);
        json += ",\"oid\":" + JsonString(dotted) + ",\"name\":" + (name != nullptr ? JsonString(name) : "null");
    } else if (HasValue(line)) {
        json += ",\"value\":" + JsonString(ShortValue(line));
    }
    if (const std::string time = TimeOf(line); !time.empty())
        json += ",\"time\":\"" + time + "\"";
    if (const std::string address = AddressOf(line); !address.empty())
        json += ",\"address\":\"" + address + "\"";
    if (line.isCut())
        json += ",\"present\":" + std::to_string(line.value.size());
    return json + "}";
}

} // namespace ccrypto
