#include "tools/cryptotool/pki/names.h"

#include "asn1/der/der_cursor.h"
#include "asn1/oid/oid_names.h"
#include "core/base/ascii.h"
#include "core/text/hex.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/asn1/time_and_address.h"

#include <algorithm>

namespace ccrypto {

namespace {

struct Purpose {
    std::string_view name;
    std::string_view dotted;
};
constexpr Purpose purposes[] = {
    {"serverAuth", "1.3.6.1.5.5.7.3.1"},       {"clientAuth", "1.3.6.1.5.5.7.3.2"},
    {"codeSigning", "1.3.6.1.5.5.7.3.3"},      {"emailProtection", "1.3.6.1.5.5.7.3.4"},
    {"ipsecEndSystem", "1.3.6.1.5.5.7.3.5"},   {"ipsecTunnel", "1.3.6.1.5.5.7.3.6"},
    {"ipsecUser", "1.3.6.1.5.5.7.3.7"},        {"timeStamping", "1.3.6.1.5.5.7.3.8"},
    {"OCSPSigning", "1.3.6.1.5.5.7.3.9"},      {"ipsecIKE", "1.3.6.1.5.5.7.3.17"},
    {"documentSigning", "1.3.6.1.5.5.7.3.36"}, {"smartCardLogon", "1.3.6.1.4.1.311.20.2.2"},
    {"anyExtendedKeyUsage", "2.5.29.37.0"},
};

struct UsageName {
    KeyUsageBit bit;
    std::string_view name;
};
constexpr UsageName usageNames[] = {
    {KeyUsageBit::digitalSignature, "digitalSignature"},
    {KeyUsageBit::nonRepudiation, "nonRepudiation"},
    {KeyUsageBit::keyEncipherment, "keyEncipherment"},
    {KeyUsageBit::dataEncipherment, "dataEncipherment"},
    {KeyUsageBit::keyAgreement, "keyAgreement"},
    {KeyUsageBit::keyCertSign, "keyCertSign"},
    {KeyUsageBit::crlSign, "cRLSign"},
    {KeyUsageBit::encipherOnly, "encipherOnly"},
    {KeyUsageBit::decipherOnly, "decipherOnly"},
    // The newer name of X.509; the first one found is printed.
    {KeyUsageBit::nonRepudiation, "contentCommitment"},
};

/// Where the name of the table of object identifiers is no short one.
struct OwnName {
    std::string_view dotted;
    std::string_view name;
};
constexpr OwnName ownNames[] = {
    {"1.3.6.1.5.5.7.1.1", "authorityInfoAccess"},
    {"1.3.6.1.5.5.7.1.11", "subjectInfoAccess"},
    {"1.3.6.1.5.5.7.48.1.5", "ocspNoCheck"},
    {"2.5.29.21", "reasonCode"},
};

constexpr std::string_view principalNameOid = "1.3.6.1.4.1.311.20.2.3";

std::string_view WithoutSignOctet(std::span<const std::uint8_t> integer)
{
    const std::string_view octets(reinterpret_cast<const char*>(integer.data()), integer.size());
    return octets.substr(octets.size() > 1 && octets.front() == 0 ? 1 : 0);
}

std::string HexOf(std::span<const std::uint8_t> octets)
{
    return std::string(HexText(octets).view());
}

/// An OBJECT IDENTIFIER and a value under [0], which is text in the only kind that is common.
std::string OtherNameText(std::span<const std::uint8_t> content)
{
    DerCursor cursor(content);
    const DerItem type = cursor.read(0x06);
    const DerItem value = cursor.read(0xA0);
    if (!type || !value)
        return "otherName:#" + HexOf(content);
    const std::string dotted(Oid(type.value).dotted().view());
    const auto text = OnlyValue(value.value, 0x0C);
    if (dotted == principalNameOid && text)
        return "UPN:" + std::string(text->begin(), text->end());
    return "otherName:" + dotted + ":#" + HexOf(value.value);
}

} // namespace

std::string ShortNameOf(std::string_view dotted)
{
    for (const OwnName& row : ownNames)
        if (row.dotted == dotted)
            return std::string(row.name);
    const auto purpose = std::ranges::find(purposes, dotted, &Purpose::dotted);
    if (purpose != std::end(purposes))
        return std::string(purpose->name);
    const char* const found = FindOidName(dotted);
    if (found == nullptr)
        return std::string(dotted);
    std::string_view name(found);
    name = name.substr(0, std::min(name.find(':'), name.find(" (")));
    for (const std::string_view prefix : {"id-ad-", "id-pkix-ocsp-", "id-pe-"})
        if (name.starts_with(prefix))
            name.remove_prefix(prefix.size());
    return std::string(name);
}

std::string ShortNameOf(const Oid& oid)
{
    return ShortNameOf(oid.dotted().view());
}

Oid OidOf(std::string_view text)
{
    const bool isDotted = !text.empty() && IsDigit(text.front()) && text.find('.') != std::string_view::npos;
    return isDotted ? Oid::FromDotted(text) : Oid();
}

Oid PurposeOf(std::string_view text)
{
    const auto known = std::ranges::find_if(purposes, [=](const Purpose& row) { return SameInAnyCase(row.name, text); });
    return known != std::end(purposes) ? OidOf(known->dotted) : OidOf(text);
}

std::vector<std::string> KeyUsageNames(KeyUsage usage)
{
    std::vector<std::string> names;
    std::uint16_t seen = 0;
    for (const UsageName& row : usageNames) {
        const auto bit = static_cast<std::uint16_t>(row.bit);
        if (usage.has(row.bit) && (seen & bit) == 0)
            names.emplace_back(row.name);
        seen = static_cast<std::uint16_t>(seen | bit);
    }
    return names;
}

std::optional<KeyUsageBit> KeyUsageBitOf(std::string_view name)
{
    const auto known = std::ranges::find_if(usageNames, [=](const UsageName& row) { return SameInAnyCase(row.name, name); });
    return known != std::end(usageNames) ? std::optional(known->bit) : std::nullopt;
}

std::string SerialText(std::span<const std::uint8_t> integer)
{
    if (integer.empty() || (integer.front() & 0x80) == 0) {
        const std::string_view octets = WithoutSignOctet(integer);
        return HexOf({reinterpret_cast<const std::uint8_t*>(octets.data()), octets.size()});
    }
    std::vector<std::uint8_t> magnitude(integer.begin(), integer.end());
    bool carry = true;
    for (auto octet = magnitude.rbegin(); octet != magnitude.rend(); ++octet) {
        *octet = static_cast<std::uint8_t>(~*octet + (carry ? 1 : 0));
        carry = carry && *octet == 0;
    }
    return "-" + HexOf(magnitude);
}

bool ParseSerial(std::string_view text, element& integer)
{
    constexpr std::uint32_t maxBytes = 64;
    if (text.starts_with("0x") || text.starts_with("0X"))
        text.remove_prefix(2);
    std::string digits(text);
    std::erase(digits, ':');
    if (digits.size() % 2 != 0)
        digits.insert(0, 1, '0');
    element octets;
    if (digits.empty() || !BytesFromHex(digits, octets))
        return false;
    std::uint32_t zeros = 0;
    while (zeros + 1 < octets.length() && octets.data()[zeros] == 0)
        ++zeros;
    octets.erase(0, zeros);
    integer = element();
    if ((octets.data()[0] & 0x80) != 0)
        integer.append(std::string_view("\0", 1));
    integer.append(octets.view());
    return integer.length() <= maxBytes;
}

std::string NumberText(std::span<const std::uint8_t> integer)
{
    const std::string_view octets = WithoutSignOctet(integer);
    if (octets.size() > sizeof(std::uint64_t) || (!integer.empty() && (integer.front() & 0x80) != 0))
        return "0x" + SerialText(integer);
    std::uint64_t number = 0;
    for (const char octet : octets)
        number = number << 8 | static_cast<std::uint8_t>(octet);
    return std::to_string(number);
}

std::string AlternativeNameText(const GeneralName& name, bool isSubtree)
{
    const std::string text(name.value.view());
    switch (name.kind) {
    case GeneralName::Kind::otherName:
        return OtherNameText(name.value.bytes());
    case GeneralName::Kind::email:
        return "email:" + text;
    case GeneralName::Kind::dns:
        return "DNS:" + text;
    case GeneralName::Kind::uri:
        return "URI:" + text;
    case GeneralName::Kind::directory:
        return "dirName:" + std::string(NameText(name.value.bytes()).view());
    case GeneralName::Kind::registeredId:
        return "RID:" + std::string(Oid(name.value.bytes()).dotted().view());
    case GeneralName::Kind::ipAddress: {
        const std::string address = AddressText(name.value.bytes(), isSubtree);
        return "IP:" + (address.empty() ? "#" + HexOf(name.value.bytes()) : address);
    }
    case GeneralName::Kind::x400Address:
        return "x400Address:#" + HexOf(name.value.bytes());
    case GeneralName::Kind::ediPartyName:
        break;
    }
    return "ediPartyName:#" + HexOf(name.value.bytes());
}

} // namespace ccrypto
