#include "pki/x509/extensions.h"

#include "asn1/der/der_cursor.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/field_reading.h"

#include <algorithm>
#include <limits>

// The octets are walked with a cursor and not matched against templates: what a signature covers is read as strictly as DER is
// written (minimal lengths, fields in order, nothing after the last), and every certificate that is tried in a path is read whole.
// Two departures from DER are common in certificates that are in use and mean the same, so they are read: a BOOLEAN or a number
// that is written though it has its default value, and named bits with trailing zeros. The strict profile refuses both.

namespace ccrypto {

namespace {

using ExtensionOctets = std::span<const std::uint8_t>;

/// Of any list within an extension.
constexpr std::size_t maxExtensionItems = 10'000;

element OctetsOf(ExtensionOctets octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

std::optional<Oid> TakeIdentifier(DerCursor& cursor)
{
    const DerItem item = cursor.read(der_tag::objectIdentifier);
    if (!item || !IsIdentifierContent(item.value))
        return std::nullopt;
    return Oid(item.value);
}

/// \return the largest number for those above 32 bits.
std::optional<std::uint32_t> CountOf(ExtensionOctets octets)
{
    if (!IsUnsignedInteger(octets))
        return std::nullopt;
    if (octets.size() > 5 || (octets.size() == 5 && octets[0] != 0))
        return std::numeric_limits<std::uint32_t>::max();
    std::uint32_t count = 0;
    for (const std::uint8_t octet : octets)
        count = count << 8 | octet;
    return count;
}

std::optional<bool> TruthOf(ExtensionOctets octets)
{
    if (octets.size() != 1 || (octets[0] != 0x00 && octets[0] != 0xFF))
        return std::nullopt;
    return octets[0] != 0;
}

/// Of the content of a BIT STRING; bit n of the number is bit n of the string. Bits from 16 on have no name and are ignored.
std::optional<std::uint16_t> NamedBitsOf(ExtensionOctets octets)
{
    if (octets.empty() || octets[0] > 7 || (octets.size() == 1 && octets[0] != 0))
        return std::nullopt;
    if ((octets.back() & ((1U << octets[0]) - 1)) != 0 && octets.size() > 1)
        return std::nullopt;
    std::uint16_t bits = 0;
    for (std::size_t bit = 0; bit < 16 && 1 + bit / 8 < octets.size(); ++bit)
        if ((octets[1 + bit / 8] & (0x80U >> bit % 8)) != 0)
            bits = static_cast<std::uint16_t>(bits | 1U << bit);
    return bits;
}

/// The items of a level, at least one and at most maxExtensionItems, each taken from the cursor by `take`.
template <typename Item>
std::optional<std::vector<Item>> TakeAll(ExtensionOctets level, std::optional<Item> (*take)(DerCursor&))
{
    DerCursor cursor(level);
    std::vector<Item> items;
    while (!cursor.atEnd()) {
        std::optional<Item> item = take(cursor);
        if (!item || items.size() == maxExtensionItems)
            return std::nullopt;
        items.push_back(std::move(*item));
    }
    if (items.empty())
        return std::nullopt;
    return items;
}

template <typename Item>
std::optional<std::vector<Item>> SequenceOf(ExtensionOctets content, std::optional<Item> (*take)(DerCursor&))
{
    const std::optional<ExtensionOctets> level = OnlyValue(content, der_tag::sequence);
    return level ? TakeAll(*level, take) : std::nullopt;
}

/// The attributes of a relative name: at least one.
bool IsRelativeName(ExtensionOctets level)
{
    DerCursor attributes(level);
    while (!attributes.atEnd()) {
        const DerItem attribute = attributes.read(der_tag::sequence);
        DerCursor fields(attribute.value);
        if (!attribute || !IsIdentifierContent(fields.read(der_tag::objectIdentifier).value) || !fields.read() || !fields.atEnd())
            return false;
    }
    return !level.empty();
}

/// Whether the octets are one Name.
bool IsDirectoryName(ExtensionOctets octets)
{
    const std::optional<ExtensionOctets> level = OnlyValue(octets, der_tag::sequence);
    if (!level)
        return false;
    DerCursor relativeNames(*level);
    while (!relativeNames.atEnd()) {
        const DerItem relativeName = relativeNames.read(der_tag::set);
        if (!relativeName || !IsRelativeName(relativeName.value))
            return false;
    }
    return true;
}

/// Whether the octets are the fields of OtherName: an identifier, and a value under [0].
bool IsOtherName(ExtensionOctets level)
{
    DerCursor fields(level);
    if (!IsIdentifierContent(fields.read(der_tag::objectIdentifier).value))
        return false;
    const DerItem wrapped = fields.read(der_tag::Constructed(0));
    DerCursor values(wrapped.value);
    return wrapped && fields.atEnd() && values.read() && values.atEnd();
}

bool IsIa5(ExtensionOctets octets)
{
    return std::ranges::all_of(octets, [](std::uint8_t octet) { return octet < 0x80; });
}

bool IsAnyOctets(ExtensionOctets)
{
    return true;
}

/// How an alternative of GeneralName is tagged, and what its value must be.
struct GeneralNameForm {
    std::uint8_t identifier;
    GeneralName::Kind kind;
    bool (*isValue)(ExtensionOctets);
};
constexpr GeneralNameForm generalNameForms[] = {
    {der_tag::Primitive(2), GeneralName::Kind::dns, IsIa5},
    {der_tag::Primitive(6), GeneralName::Kind::uri, IsIa5},
    {der_tag::Primitive(1), GeneralName::Kind::email, IsIa5},
    {der_tag::Primitive(7), GeneralName::Kind::ipAddress, IsAnyOctets},
    {der_tag::Constructed(4), GeneralName::Kind::directory, IsDirectoryName},
    {der_tag::Constructed(0), GeneralName::Kind::otherName, IsOtherName},
    {der_tag::Constructed(3), GeneralName::Kind::x400Address, IsAnyOctets},
    {der_tag::Constructed(5), GeneralName::Kind::ediPartyName, IsAnyOctets},
    {der_tag::Primitive(8), GeneralName::Kind::registeredId, IsIdentifierContent},
};

std::optional<GeneralName> TakeGeneralName(DerCursor& cursor)
{
    const DerItem item = cursor.read();
    const auto form = std::ranges::find(generalNameForms, item.identifier, &GeneralNameForm::identifier);
    if (!item || form == std::end(generalNameForms) || !form->isValue(item.value))
        return std::nullopt;
    return GeneralName{form->kind, OctetsOf(item.value)};
}

/// GeneralSubtree, of which only the base is kept.
std::optional<GeneralName> TakeSubtree(DerCursor& cursor)
{
    const DerItem item = cursor.read(der_tag::sequence);
    DerCursor fields(item.value);
    std::optional<GeneralName> base = TakeGeneralName(fields);
    if (const DerItem minimum = fields.read(der_tag::Primitive(0)); minimum && CountOf(minimum.value) != 0)
        return std::nullopt;
    return fields.atEnd() ? std::move(base) : std::nullopt;
}

std::optional<element> TakeQualifier(DerCursor& cursor)
{
    const DerItem item = cursor.read(der_tag::sequence);
    DerCursor fields(item.value);
    if (!IsIdentifierContent(fields.read(der_tag::objectIdentifier).value) || !fields.read() || !fields.atEnd())
        return std::nullopt;
    return OctetsOf(item.octets);
}

std::optional<PolicyInformation> TakePolicy(DerCursor& cursor)
{
    DerCursor fields(cursor.read(der_tag::sequence).value);
    std::optional<Oid> policy = TakeIdentifier(fields);
    if (!policy)
        return std::nullopt;
    PolicyInformation information = {std::move(*policy), {}};
    if (const DerItem qualifiers = fields.read(der_tag::sequence)) {
        std::optional<std::vector<element>> read = TakeAll(qualifiers.value, TakeQualifier);
        if (!read)
            return std::nullopt;
        information.qualifiers = std::move(*read);
    }
    if (!fields.atEnd())
        return std::nullopt;
    return information;
}

std::optional<PolicyMapping> TakeMapping(DerCursor& cursor)
{
    DerCursor fields(cursor.read(der_tag::sequence).value);
    std::optional<Oid> issuerDomain = TakeIdentifier(fields);
    std::optional<Oid> subjectDomain = TakeIdentifier(fields);
    if (!issuerDomain || !subjectDomain || !fields.atEnd())
        return std::nullopt;
    return PolicyMapping{std::move(*issuerDomain), std::move(*subjectDomain)};
}

std::optional<AccessDescription> TakeAccessDescription(DerCursor& cursor)
{
    DerCursor fields(cursor.read(der_tag::sequence).value);
    std::optional<Oid> method = TakeIdentifier(fields);
    std::optional<GeneralName> location = TakeGeneralName(fields);
    if (!method || !location || !fields.atEnd())
        return std::nullopt;
    return AccessDescription{std::move(*method), std::move(*location)};
}

/// \param level the contents of the EXPLICIT tag, which a CHOICE has.
std::optional<DistributionPointName> PointNameOf(ExtensionOctets level)
{
    DerCursor cursor(level);
    const DerItem item = cursor.read();
    if (!item || !cursor.atEnd())
        return std::nullopt;
    DistributionPointName name;
    if (item.identifier == der_tag::Constructed(0)) {
        std::optional<GeneralNames> names = TakeAll(item.value, TakeGeneralName);
        if (!names)
            return std::nullopt;
        name.fullName = std::move(*names);
        return name;
    }
    if (item.identifier != der_tag::Constructed(1) || !IsRelativeName(item.value))
        return std::nullopt;
    name.relativeName = OctetsOf(item.octets);
    name.relativeName.data()[0] = der_tag::set;
    return name;
}

/// Reads an optional field into `target`. \return whether the field is absent, or read.
template <typename Value, typename Target>
bool TakeOptional(DerCursor& fields, std::uint8_t identifier, std::optional<Value> (*read)(ExtensionOctets), Target& target)
{
    const DerItem item = fields.read(identifier);
    if (!item)
        return true;
    std::optional<Value> value = read(item.value);
    if (!value)
        return false;
    target = std::move(*value);
    return true;
}

std::optional<GeneralNames> NamesOf(ExtensionOctets level)
{
    return TakeAll(level, TakeGeneralName);
}

std::optional<GeneralNames> SubtreesOf(ExtensionOctets level)
{
    return TakeAll(level, TakeSubtree);
}

std::optional<element> AnyOctetsOf(ExtensionOctets octets)
{
    return OctetsOf(octets);
}

std::optional<element> IntegerOctetsOf(ExtensionOctets octets)
{
    // A serial number below zero is against the rules, but names a certificate.
    return IsMinimalInteger(octets) ? AnyOctetsOf(octets) : std::nullopt;
}

std::optional<DistributionPoint> TakeDistributionPoint(DerCursor& cursor)
{
    const DerItem item = cursor.read(der_tag::sequence);
    DerCursor fields(item.value);
    DistributionPoint point;
    if (!item || !TakeOptional(fields, der_tag::Constructed(0), PointNameOf, point.name) ||
        !TakeOptional(fields, der_tag::Primitive(1), NamedBitsOf, point.reasons) ||
        !TakeOptional(fields, der_tag::Constructed(2), NamesOf, point.crlIssuer) || !fields.atEnd())
        return std::nullopt;
    return point;
}

} // namespace

std::optional<BasicConstraints> ReadBasicConstraints(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> level = OnlyValue(content, der_tag::sequence);
    if (!level)
        return std::nullopt;
    DerCursor fields(*level);
    BasicConstraints constraints;
    if (!TakeOptional(fields, der_tag::boolean, TruthOf, constraints.isCa) ||
        !TakeOptional(fields, der_tag::integer, CountOf, constraints.pathLength) || !fields.atEnd())
        return std::nullopt;
    return constraints;
}

std::optional<KeyUsage> ReadKeyUsage(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> value = OnlyValue(content, der_tag::bitString);
    const std::optional<std::uint16_t> bits = value ? NamedBitsOf(*value) : std::nullopt;
    if (!bits)
        return std::nullopt;
    return KeyUsage{*bits};
}

std::optional<std::vector<Oid>> ReadExtendedKeyUsage(std::span<const std::uint8_t> content)
{
    return SequenceOf(content, TakeIdentifier);
}

std::optional<element> ReadSubjectKeyIdentifier(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> value = OnlyValue(content, der_tag::octetString);
    return value ? AnyOctetsOf(*value) : std::nullopt;
}

std::optional<AuthorityKeyIdentifier> ReadAuthorityKeyIdentifier(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> level = OnlyValue(content, der_tag::sequence);
    if (!level)
        return std::nullopt;
    DerCursor fields(*level);
    AuthorityKeyIdentifier identifier;
    if (!TakeOptional(fields, der_tag::Primitive(0), AnyOctetsOf, identifier.keyIdentifier) ||
        !TakeOptional(fields, der_tag::Constructed(1), NamesOf, identifier.issuer) ||
        !TakeOptional(fields, der_tag::Primitive(2), IntegerOctetsOf, identifier.serialNumber) || !fields.atEnd())
        return std::nullopt;
    return identifier;
}

std::optional<GeneralNames> ReadGeneralNames(std::span<const std::uint8_t> content)
{
    return SequenceOf(content, TakeGeneralName);
}

std::optional<NameConstraints> ReadNameConstraints(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> level = OnlyValue(content, der_tag::sequence);
    if (!level)
        return std::nullopt;
    DerCursor fields(*level);
    NameConstraints constraints;
    if (!TakeOptional(fields, der_tag::Constructed(0), SubtreesOf, constraints.permitted) ||
        !TakeOptional(fields, der_tag::Constructed(1), SubtreesOf, constraints.excluded) || !fields.atEnd())
        return std::nullopt;
    return constraints;
}

std::optional<std::vector<PolicyInformation>> ReadCertificatePolicies(std::span<const std::uint8_t> content)
{
    return SequenceOf(content, TakePolicy);
}

std::optional<std::vector<PolicyMapping>> ReadPolicyMappings(std::span<const std::uint8_t> content)
{
    return SequenceOf(content, TakeMapping);
}

std::optional<PolicyConstraints> ReadPolicyConstraints(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> level = OnlyValue(content, der_tag::sequence);
    if (!level)
        return std::nullopt;
    DerCursor fields(*level);
    PolicyConstraints constraints;
    if (!TakeOptional(fields, der_tag::Primitive(0), CountOf, constraints.requireExplicitPolicy) ||
        !TakeOptional(fields, der_tag::Primitive(1), CountOf, constraints.inhibitPolicyMapping) || !fields.atEnd())
        return std::nullopt;
    return constraints;
}

std::optional<std::uint32_t> ReadSkipCertificates(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> value = OnlyValue(content, der_tag::integer);
    return value ? CountOf(*value) : std::nullopt;
}

std::optional<std::vector<DistributionPoint>> ReadDistributionPoints(std::span<const std::uint8_t> content)
{
    return SequenceOf(content, TakeDistributionPoint);
}

std::optional<IssuingDistributionPoint> ReadIssuingDistributionPoint(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> level = OnlyValue(content, der_tag::sequence);
    if (!level)
        return std::nullopt;
    DerCursor fields(*level);
    IssuingDistributionPoint point;
    if (!TakeOptional(fields, der_tag::Constructed(0), PointNameOf, point.name) ||
        !TakeOptional(fields, der_tag::Primitive(1), TruthOf, point.onlyUserCertificates) ||
        !TakeOptional(fields, der_tag::Primitive(2), TruthOf, point.onlyCaCertificates) ||
        !TakeOptional(fields, der_tag::Primitive(3), NamedBitsOf, point.onlySomeReasons) ||
        !TakeOptional(fields, der_tag::Primitive(4), TruthOf, point.isIndirect) ||
        !TakeOptional(fields, der_tag::Primitive(5), TruthOf, point.onlyAttributeCertificates) || !fields.atEnd())
        return std::nullopt;
    return point;
}

std::optional<std::vector<AccessDescription>> ReadAuthorityInformationAccess(std::span<const std::uint8_t> content)
{
    return SequenceOf(content, TakeAccessDescription);
}

std::optional<element> ReadCrlNumber(std::span<const std::uint8_t> content)
{
    const std::optional<ExtensionOctets> value = OnlyValue(content, der_tag::integer);
    return value && IsUnsignedInteger(*value) ? AnyOctetsOf(*value) : std::nullopt;
}

} // namespace ccrypto
