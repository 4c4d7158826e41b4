#include "pki/validation/profile_names.h"

#include "asn1/der/der_cursor.h"
#include "asn1/text/unicode_text.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

namespace ccrypto {

namespace {

using NameFormOctets = std::span<const std::uint8_t>;

namespace name_form_tag {
constexpr std::uint8_t objectIdentifier = 0x06;
constexpr std::uint8_t utf8String = 0x0C;
constexpr std::uint8_t printableString = 0x13;
constexpr std::uint8_t teletexString = 0x14;
constexpr std::uint8_t ia5String = 0x16;
constexpr std::uint8_t universalString = 0x1C;
constexpr std::uint8_t bmpString = 0x1E;
constexpr std::uint8_t sequence = 0x30;
constexpr std::uint8_t set = 0x31;
} // namespace name_form_tag

constexpr std::uint8_t anyStringOfDirectory = 0;
constexpr std::size_t noUpperBound = 0;

/// An attribute of RFC 5280, appendix A.1.
struct BoundedAttribute {
    std::string_view oid; ///< octets
    std::uint8_t type;
    std::size_t maxCharacters;
};
constexpr BoundedAttribute boundedAttributes[] = {
    {"\x55\x04\x03", anyStringOfDirectory, 64},                                           // commonName
    {"\x55\x04\x04", anyStringOfDirectory, 32768},                                        // surname
    {"\x55\x04\x05", name_form_tag::printableString, 64},                                 // serialNumber
    {"\x55\x04\x06", name_form_tag::printableString, 2},                                  // countryName
    {"\x55\x04\x07", anyStringOfDirectory, 128},                                          // localityName
    {"\x55\x04\x08", anyStringOfDirectory, 128},                                          // stateOrProvinceName
    {"\x55\x04\x0A", anyStringOfDirectory, 64},                                           // organizationName
    {"\x55\x04\x0B", anyStringOfDirectory, 64},                                           // organizationalUnitName
    {"\x55\x04\x0C", anyStringOfDirectory, 64},                                           // title
    {"\x55\x04\x29", anyStringOfDirectory, 32768},                                        // name
    {"\x55\x04\x2A", anyStringOfDirectory, 32768},                                        // givenName
    {"\x55\x04\x2B", anyStringOfDirectory, 32768},                                        // initials
    {"\x55\x04\x2C", anyStringOfDirectory, 32768},                                        // generationQualifier
    {"\x55\x04\x2E", name_form_tag::printableString, noUpperBound},                       // dnQualifier
    {"\x55\x04\x41", anyStringOfDirectory, 128},                                          // pseudonym
    {"\x09\x92\x26\x89\x93\xF2\x2C\x64\x01\x19", name_form_tag::ia5String, noUpperBound}, // domainComponent
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x09\x01", name_form_tag::ia5String, 255},              // emailAddress
};

bool IsPrintableStringOctet(std::uint8_t character)
{
    const bool isLetterOrDigit =
        (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9');
    return isLetterOrDigit || std::string_view(" '()+,-./:=?").find(static_cast<char>(character)) != std::string_view::npos;
}

/// The number of characters of a string; none for octets that its type does not hold, and for a type that is not a string.
std::optional<std::size_t> CharactersOfString(std::uint8_t type, NameFormOctets octets)
{
    switch (type) {
    case name_form_tag::utf8String:
        if (!IsUtf8({reinterpret_cast<const char*>(octets.data()), octets.size()}))
            return std::nullopt;
        return octets.size() - static_cast<std::size_t>(std::ranges::count_if(octets, IsUtf8Continuation));
    case name_form_tag::printableString:
        return std::ranges::all_of(octets, IsPrintableStringOctet) ? std::optional(octets.size()) : std::nullopt;
    case name_form_tag::ia5String:
        return std::ranges::all_of(octets, [](std::uint8_t octet) { return octet < 0x80; }) ? std::optional(octets.size())
                                                                                            : std::nullopt;
    case name_form_tag::teletexString:
        return octets.size();
    case name_form_tag::bmpString:
        return octets.size() % 2 == 0 ? std::optional(octets.size() / 2) : std::nullopt;
    case name_form_tag::universalString:
        return octets.size() % 4 == 0 ? std::optional(octets.size() / 4) : std::nullopt;
    default:
        return std::nullopt;
    }
}

const char* AttributeFormFault(NameFormOctets octets)
{
    DerCursor fields(octets);
    const DerItem oid = fields.read(name_form_tag::objectIdentifier);
    const DerItem value = fields.read();
    if (!oid || !value || !fields.atEnd())
        return "an attribute of a name that is not DER";
    const std::string_view oidText(reinterpret_cast<const char*>(oid.value.data()), oid.value.size());
    const auto* const attribute = std::ranges::find(boundedAttributes, oidText, &BoundedAttribute::oid);
    if (attribute == std::end(boundedAttributes))
        return nullptr;
    const bool isOfType = attribute->type == anyStringOfDirectory ? value.identifier != name_form_tag::ia5String
                                                                  : value.identifier == attribute->type;
    const std::optional<std::size_t> characters = CharactersOfString(value.identifier, value.value);
    if (!isOfType || !characters)
        return "an attribute of a name is not a string of its type";
    if (*characters == 0)
        return "an attribute of a name is empty";
    return attribute->maxCharacters != noUpperBound && *characters > attribute->maxCharacters
               ? "an attribute of a name has too many characters"
               : nullptr;
}

} // namespace

const char* NameFormFault(std::span<const std::uint8_t> name)
{
    const auto level = OnlyValue(name, name_form_tag::sequence);
    if (!level)
        return "the name is not DER";
    DerCursor relativeNames(*level);
    while (!relativeNames.atEnd()) {
        const DerItem relativeName = relativeNames.read(name_form_tag::set);
        if (!relativeName)
            return "the name is not DER";
        DerCursor attributes(relativeName.value);
        NameFormOctets before;
        while (!attributes.atEnd()) {
            const NameFormOctets rest = attributes.rest();
            const DerItem attribute = attributes.read(name_form_tag::sequence);
            if (!attribute)
                return "an attribute of a name that is not DER";
            const NameFormOctets all = rest.first(rest.size() - attributes.rest().size());
            if (std::ranges::lexicographical_compare(all, before))
                return "the attributes of a relative name are not in the order of DER";
            if (const char* const fault = AttributeFormFault(attribute.value))
                return fault;
            before = all;
        }
    }
    return nullptr;
}

} // namespace ccrypto
