#include "tools/cryptotool/pki/names.h"

#include "asn1/der/der_cursor.h"
#include "asn1/oid/oid_names.h"
#include "core/base/ascii.h"
#include "core/text/hex.h"
#include "pki/x509/extension_builder.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/asn1/time_and_address.h"

#include <algorithm>
#include <utility>

namespace ccrypto {

namespace {

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

/// A number of an object identifier, in groups of seven bits, the lowest first.
using ArcGroups = std::vector<std::uint32_t>;
constexpr std::size_t maxArcDigits = 39; ///< of 128 bits, which the numbers under 2.25 have
constexpr std::size_t maxArcGroups = 19;

/// \return empty for what is not a number.
ArcGroups GroupsOfDecimal(std::string_view decimal)
{
    if (decimal.empty() || decimal.size() > maxArcDigits || !std::ranges::all_of(decimal, IsDigit))
        return {};
    ArcGroups groups = {0};
    for (const char digit : decimal) {
        std::uint32_t carry = static_cast<std::uint32_t>(digit - '0');
        for (std::uint32_t& group : groups) {
            carry += group * 10;
            group = carry % 128;
            carry /= 128;
        }
        if (carry != 0)
            groups.push_back(carry);
    }
    return groups;
}

std::string DecimalOfGroups(ArcGroups groups)
{
    std::string decimal;
    while (!groups.empty()) {
        std::uint32_t rest = 0;
        for (std::size_t at = groups.size(); at-- > 0;) {
            rest = rest * 128 + groups[at];
            groups[at] = rest / 10;
            rest %= 10;
        }
        decimal.insert(decimal.begin(), static_cast<char>('0' + rest));
        while (!groups.empty() && groups.back() == 0)
            groups.pop_back();
    }
    return decimal;
}

/// Adds to the second number what the first one counts in the octets (X.690, 8.19.4).
void AddTo(ArcGroups& groups, std::uint32_t summand)
{
    for (std::size_t at = 0; summand != 0; ++at) {
        if (at == groups.size())
            groups.push_back(0);
        summand += groups[at];
        groups[at] = summand % 128;
        summand /= 128;
    }
}

/// The reverse, where there is as much.
void TakeFrom(ArcGroups& groups, std::uint32_t subtrahend)
{
    for (std::uint32_t& group : groups) {
        const bool borrows = group < subtrahend;
        group = group + (borrows ? 128 : 0) - subtrahend;
        subtrahend = borrows ? 1 : 0;
    }
    while (groups.size() > 1 && groups.back() == 0)
        groups.pop_back();
}

/// An OBJECT IDENTIFIER and a value under [0], which is text in the only kind that is common.
std::string OtherNameText(std::span<const std::uint8_t> content)
{
    DerCursor cursor(content);
    const DerItem type = cursor.read(0x06);
    const DerItem value = cursor.read(0xA0);
    if (!type || !value)
        return "otherName:#" + HexOf(content);
    const std::string dotted = OidText(Oid(type.value));
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
    if (const std::string_view purpose = PurposeName(OidOf(dotted)); !purpose.empty())
        return std::string(purpose);
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
    return ShortNameOf(OidText(oid));
}

std::string OidText(const Oid& oid)
{
    std::string dotted;
    ArcGroups groups;
    for (const std::uint8_t octet : oid.octets()) {
        if ((groups.empty() && octet == 0x80) || groups.size() == maxArcGroups)
            return HexOf(oid.octets());
        groups.insert(groups.begin(), octet & 0x7FU);
        if ((octet & 0x80) != 0)
            continue;
        if (dotted.empty()) {
            const std::uint32_t first = groups.size() == 1 ? std::min(groups[0] / 40, 2U) : 2;
            TakeFrom(groups, 40 * first);
            dotted = std::to_string(first);
        }
        dotted += "." + DecimalOfGroups(groups);
        groups.clear();
    }
    return groups.empty() ? dotted : HexOf(oid.octets());
}

Oid OidOf(std::string_view text)
{
    const std::string_view first = text.substr(0, text.find('.'));
    if (first.size() != 1 || first[0] < '0' || first[0] > '2' || first.size() == text.size())
        return {};
    std::uint32_t firstTimes40 = 40 * static_cast<std::uint32_t>(first[0] - '0');
    std::vector<std::uint8_t> octets;
    for (std::size_t dot = 1; dot < text.size();) {
        const std::size_t next = std::min(text.find('.', dot + 1), text.size());
        ArcGroups groups = GroupsOfDecimal(text.substr(dot + 1, next - dot - 1));
        const bool isSmall = groups.size() == 1 && groups[0] < 40;
        if (groups.empty() || (octets.empty() && first[0] != '2' && !isSmall))
            return {};
        AddTo(groups, std::exchange(firstTimes40, 0));
        for (std::size_t at = groups.size(); at-- > 0;)
            octets.push_back(static_cast<std::uint8_t>(groups[at] | (at != 0 ? 0x80U : 0U)));
        dot = next;
    }
    return Oid(octets);
}

Oid PurposeOf(std::string_view text)
{
    Oid purpose = OidOf(text);
    return purpose.isNone() ? PurposeNamed(text) : purpose;
}

std::vector<std::string> KeyUsageNames(KeyUsage usage)
{
    std::vector<std::string> names;
    std::uint16_t seen = 0;
    for (const KeyUsageName& row : keyUsageNames) {
        const auto bit = static_cast<std::uint16_t>(row.bit);
        if (usage.has(row.bit) && (seen & bit) == 0)
            names.emplace_back(row.name);
        seen = static_cast<std::uint16_t>(seen | bit);
    }
    return names;
}

std::optional<KeyUsageBit> KeyUsageBitOf(std::string_view name)
{
    const auto known = std::ranges::find_if(keyUsageNames, [=](const KeyUsageName& row) { return SameInAnyCase(row.name, name); });
    return known != std::end(keyUsageNames) ? std::optional(known->bit) : std::nullopt;
}

std::string UnknownKeyUsageText(std::string_view name)
{
    std::string text = "unknown key usage " + std::string(name) + "; known are";
    const char* separator = " ";
    for (const KeyUsageName& row : keyUsageNames) {
        text.append(separator).append(row.name);
        separator = ", ";
    }
    return text;
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
        return "RID:" + OidText(Oid(name.value.bytes()));
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
