#include "pki/x509/name.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/der/der_cursor.h"
#include "core/text/hex.h"
#include "core/text/utf8.h"
#include "pki/x509/attribute_text.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/field_reading.h"

#include <algorithm>
#include <iterator>

namespace ccrypto {

namespace {

/// One attribute as octets.
struct AttributeOctets {
    std::span<const std::uint8_t> oid;
    DerItem value;
};

/// The attributes of each relative name.
using NameOctets = std::vector<std::vector<AttributeOctets>>;

std::optional<NameOctets> ReadNameOctets(std::span<const std::uint8_t> der)
{
    const auto name = OnlyValue(der, der_tag::sequence);
    if (!name)
        return std::nullopt;
    NameOctets relativeNames;
    std::size_t count = 0;
    for (DerCursor sets(*name); !sets.atEnd();) {
        const DerItem set = sets.read(der_tag::set);
        DerCursor attributes(set.value);
        if (!set || attributes.atEnd())
            return std::nullopt;
        auto& relativeName = relativeNames.emplace_back();
        while (!attributes.atEnd()) {
            const DerItem attribute = attributes.read(der_tag::sequence);
            DerCursor parts(attribute.value);
            const DerItem oid = parts.read(der_tag::objectIdentifier);
            const DerItem value = parts.read();
            if (!IsIdentifierContent(oid.value) || !value || !parts.atEnd() || ++count > CCrypto_X509_ValueList::maxValues)
                return std::nullopt;
            relativeName.push_back({oid.value, value});
        }
    }
    return relativeNames;
}

std::optional<CCryptoString> TextOfItem(const DerItem& item)
{
    if ((item.identifier & (derClassMask | derConstructedBit)) != 0)
        return std::nullopt;
    return AttributeText(UniversalType(item.identifier), item.value);
}

/// The string types that are compared as text. What is in others has no case.
bool IsComparedAsText(std::uint8_t identifier)
{
    switch (UniversalType(identifier)) {
    case ElementType::printableString:
    case ElementType::utf8String:
    case ElementType::teletexString:
    case ElementType::bmpString:
    case ElementType::universalString:
    case ElementType::ia5String:
        return true;
    default:
        return false;
    }
}

void AppendWithLength(std::string& target, std::string_view part)
{
    for (std::uint32_t shift = 32; shift != 0; shift -= 8)
        target += static_cast<char>(part.size() >> (shift - 8) & 0xFF);
    target += part;
}

std::string_view ViewOf(std::span<const std::uint8_t> octets)
{
    return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}

/// Unambiguous octets, the same for attributes that are compared as equal.
std::string ComparableAttribute(const AttributeOctets& attribute)
{
    std::string comparable;
    AppendWithLength(comparable, ViewOf(attribute.oid));
    const auto text = IsComparedAsText(attribute.value.identifier) ? TextOfItem(attribute.value) : std::nullopt;
    // No element begins with 00.
    if (text)
        comparable += '\0';
    AppendWithLength(comparable, text ? PreparedText(*text).view() : ViewOf(attribute.value.octets));
    return comparable;
}

struct ShortName {
    std::string_view dotted;
    const char* name;
};

// The first nine are those of RFC 4514, 3.
constexpr ShortName shortNames[] = {
    {"2.5.4.3", "CN"},
    {"2.5.4.7", "L"},
    {"2.5.4.8", "ST"},
    {"2.5.4.10", "O"},
    {"2.5.4.11", "OU"},
    {"2.5.4.6", "C"},
    {"2.5.4.9", "STREET"},
    {"0.9.2342.19200300.100.1.25", "DC"},
    {"0.9.2342.19200300.100.1.1", "UID"},
    {"2.5.4.4", "SN"},
    {"2.5.4.5", "serialNumber"},
    {"2.5.4.12", "title"},
    {"2.5.4.13", "description"},
    {"2.5.4.15", "businessCategory"},
    {"2.5.4.16", "postalAddress"},
    {"2.5.4.17", "postalCode"},
    {"2.5.4.18", "postOfficeBox"},
    {"2.5.4.20", "telephoneNumber"},
    {"2.5.4.41", "name"},
    {"2.5.4.42", "GN"},
    {"2.5.4.43", "initials"},
    {"2.5.4.44", "generationQualifier"},
    {"2.5.4.45", "x500UniqueIdentifier"},
    {"2.5.4.46", "dnQualifier"},
    {"2.5.4.65", "pseudonym"},
    {"2.5.4.72", "role"},
    {"2.5.4.97", "organizationIdentifier"},
    {"1.2.840.113549.1.9.1", "emailAddress"},
    {"1.2.840.113549.1.9.2", "unstructuredName"},
    {"1.2.840.113549.1.9.8", "unstructuredAddress"},
    {"1.3.6.1.4.1.311.60.2.1.1", "jurisdictionL"},
    {"1.3.6.1.4.1.311.60.2.1.2", "jurisdictionST"},
    {"1.3.6.1.4.1.311.60.2.1.3", "jurisdictionC"},
};

struct ShownRange {
    std::uint32_t first;
    std::uint32_t last;
};

/// Characters that a terminal or a text view may act upon, or that show nothing: controls, marks and overrides of direction, line
/// and paragraph separators, joiners, invisible operators, byte order marks and annotations, tags, and what is not a character.
constexpr ShownRange unshownCharacters[] = {
    {0x0000, 0x001F},   {0x007F, 0x009F},   {0x00AD, 0x00AD},    {0x034F, 0x034F}, {0x061C, 0x061C}, {0x115F, 0x1160},
    {0x17B4, 0x17B5},   {0x180B, 0x180F},   {0x200B, 0x200F},    {0x2028, 0x202E}, {0x2060, 0x206F}, {0x3164, 0x3164},
    {0xD800, 0xF8FF},   {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},    {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB}, {0xFFFE, 0xFFFF},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}, {0xF0000, 0x1FFFFF},
};

bool IsShown(std::uint32_t codePoint)
{
    const auto range = std::ranges::lower_bound(unshownCharacters, codePoint, {}, &ShownRange::last);
    return range == std::end(unshownCharacters) || codePoint < range->first;
}

void AppendEscaped(CCryptoString& target, std::span<const std::uint8_t> octets)
{
    for (const std::uint8_t octet : octets)
        target.append("\\").append(HexText(std::span(&octet, 1)).view());
}

/// RFC 4514, 2.4.
CCryptoString EscapedText(const CCryptoString& text)
{
    constexpr std::string_view special = "\"+,;<>\\";
    CCryptoString escaped;
    const std::span<const std::uint8_t> octets = text.data().bytes();
    std::size_t position = 0;
    while (position < octets.size()) {
        std::uint32_t codePoint = 0;
        const std::uint32_t taken = DecodeUtf8(octets.subspan(position), codePoint);
        const auto character = octets.subspan(position, std::max<std::uint32_t>(taken, 1));
        const bool isFirst = position == 0;
        position += character.size();
        const bool isLast = position == octets.size();
        const bool isBlankAtEnd = codePoint == ' ' && (isFirst || isLast);
        const bool isSpecial = codePoint < 0x80 && special.find(static_cast<char>(codePoint)) != std::string_view::npos;
        if (taken == 0 || !IsShown(codePoint)) {
            AppendEscaped(escaped, character);
            continue;
        }
        if (isSpecial || isBlankAtEnd || (isFirst && codePoint == '#'))
            escaped.append("\\");
        escaped.append(ViewOf(character));
    }
    return escaped;
}

CCryptoString TypeName(const Oid& oid)
{
    const CCryptoString dotted = oid.dotted();
    const auto known = std::ranges::find(shortNames, dotted.view(), &ShortName::dotted);
    return known != std::end(shortNames) ? CCryptoString(known->name) : dotted;
}

/// Relative names as text, joined from the last to the first.
class NameWriter {
public:
    void add(const Oid& oid, const std::optional<CCryptoString>& text, std::span<const std::uint8_t> octets, bool isSameName)
    {
        if (!isSameName)
            relativeNames_.emplace_back();
        CCryptoString& target = relativeNames_.back();
        if (isSameName)
            target.append("+");
        target.append(TypeName(oid).view()).append("=");
        if (text)
            target.append(EscapedText(*text).view());
        else
            target.append("#").append(HexText(octets).view());
    }

    CCryptoString text() const
    {
        CCryptoString text;
        for (auto name = relativeNames_.rbegin(); name != relativeNames_.rend(); ++name) {
            if (name != relativeNames_.rbegin())
                text.append(", ");
            text.append(name->view());
        }
        return text;
    }

private:
    std::vector<CCryptoString> relativeNames_;
};

} // namespace

std::optional<ComparableName> ComparableName::Read(std::span<const std::uint8_t> der)
{
    const std::optional<NameOctets> name = ReadNameOctets(der);
    if (!name)
        return std::nullopt;
    ComparableName comparable;
    comparable.relativeNames_.reserve(name->size());
    for (const auto& relativeName : *name) {
        std::vector<std::string> attributes;
        attributes.reserve(relativeName.size());
        for (const AttributeOctets& attribute : relativeName)
            attributes.push_back(ComparableAttribute(attribute));
        std::ranges::sort(attributes);
        std::string& joined = comparable.relativeNames_.emplace_back();
        for (const std::string& attribute : attributes)
            AppendWithLength(joined, attribute);
    }
    return comparable;
}

bool ComparableName::isWithin(const ComparableName& base) const
{
    return base.relativeNames_.size() <= relativeNames_.size() &&
           std::equal(base.relativeNames_.begin(), base.relativeNames_.end(), relativeNames_.begin());
}

CCryptoString NameText(const CCrypto_X509_ValueList& name)
{
    NameWriter writer;
    const CCrypto_X509_Value* previous = nullptr;
    for (const auto& value : name.values()) {
        bool isText = false;
        const CCryptoString text = value->text(&isText);
        const element octets =
            isText || value->value() == nullptr ? element() : CCryptoParser::ToDer(value->value()->clone().get());
        const bool isSameName = previous != nullptr && previous->relativeName() == value->relativeName();
        writer.add(value->oid(), isText ? std::optional(text) : std::nullopt, octets.bytes(), isSameName);
        previous = value.get();
    }
    return writer.text();
}

CCryptoString NameText(std::span<const std::uint8_t> der)
{
    NameWriter writer;
    const std::optional<NameOctets> name = ReadNameOctets(der);
    if (!name)
        return {};
    for (const auto& relativeName : *name) {
        for (const AttributeOctets& attribute : relativeName)
            writer.add(Oid(attribute.oid), TextOfItem(attribute.value), attribute.value.octets,
                       &attribute != &relativeName.front());
    }
    return writer.text();
}

} // namespace ccrypto
