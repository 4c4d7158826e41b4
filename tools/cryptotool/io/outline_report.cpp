#include "tools/cryptotool/io/outline_report.h"

#include "asn1/oid/oid_names.h"
#include "tools/cryptotool/cli/safe_text.h"
#include "tools/cryptotool/io/value_text.h"

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

std::string OutlineLine(const OutlineElement& line)
{
    char numbers[64];
    const std::string length = line.header.indefinite ? "inf" : std::to_string(line.header.length);
    std::snprintf(numbers, sizeof numbers, "%7u  %6u  %7s  %-4s  ", line.header.start, line.headerLength(), length.c_str(),
                  Form(line));
    std::string text = numbers + std::string(std::size_t{2} * std::min(line.depth, maxIndent), ' ');
    text += line.typeName();
    if (HasTagNumber(line))
        text += "[" + std::to_string(line.header.tagNumber()) + "]";
    const std::string dotted = DottedText(line);
    if (!dotted.empty())
        text += " " + NamedOid(dotted);
    else if (HasValue(line))
        text += " " + ShortValue(line);
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
    if (line.isCut())
        json += ",\"present\":" + std::to_string(line.value.size());
    return json + "}";
}

} // namespace ccrypto
