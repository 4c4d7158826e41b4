#include "tools/cryptotool/pki/extension_text.h"

#include "asn1/der/der_cursor.h"
#include "core/text/hex.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/pki/names.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

namespace ccrypto {

namespace {

using Lines = std::vector<std::string>;
using Octets = std::span<const std::uint8_t>;

std::string HexLine(Octets octets)
{
    return "#" + std::string(HexText(octets).view());
}

std::string JoinedWords(const Lines& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

void AddNames(Lines& lines, const std::string& prefix, const GeneralNames& names, bool areSubtrees = false)
{
    for (const GeneralName& name : names)
        lines.push_back(prefix + AlternativeNameText(name, areSubtrees));
}

Lines BasicConstraintsLines(Octets content)
{
    const auto read = ReadBasicConstraints(content);
    if (!read)
        return {};
    const std::string length = read->pathLength ? ", at most " + std::to_string(*read->pathLength) + " intermediates" : "";
    return {(read->isCa ? "CA" : "not a CA") + length};
}

Lines KeyUsageLines(Octets content)
{
    const auto read = ReadKeyUsage(content);
    return read ? Lines{JoinedWords(KeyUsageNames(*read))} : Lines();
}

Lines PurposeLines(Octets content)
{
    Lines names;
    const auto read = ReadExtendedKeyUsage(content);
    if (!read)
        return {};
    for (const Oid& purpose : *read)
        names.push_back(ShortNameOf(purpose));
    return {JoinedWords(names)};
}

Lines SubjectKeyLines(Octets content)
{
    const auto read = ReadSubjectKeyIdentifier(content);
    return read ? Lines{std::string(HexText(read->bytes()).view())} : Lines();
}

Lines AuthorityKeyLines(Octets content)
{
    const auto read = ReadAuthorityKeyIdentifier(content);
    Lines lines;
    if (!read)
        return lines;
    if (!read->keyIdentifier.isEmpty())
        lines.emplace_back(HexText(read->keyIdentifier.bytes()).view());
    AddNames(lines, "issuer ", read->issuer);
    if (!read->serialNumber.isEmpty())
        lines.push_back("serial number " + SerialText(read->serialNumber.bytes()));
    return lines;
}

Lines NamesLines(Octets content)
{
    Lines lines;
    if (const auto read = ReadGeneralNames(content))
        AddNames(lines, "", *read);
    return lines;
}

Lines NameConstraintsLines(Octets content)
{
    Lines lines;
    if (const auto read = ReadNameConstraints(content)) {
        AddNames(lines, "permitted ", read->permitted, true);
        AddNames(lines, "excluded ", read->excluded, true);
    }
    return lines;
}

/// PolicyQualifierInfo (RFC 5280, 4.2.1.4): the URL of a practice statement, or a notice.
std::string QualifierLine(Octets qualifier)
{
    constexpr std::uint8_t practiceStatement[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x02, 0x01};
    DerCursor cursor(OnlyValue(qualifier, 0x30).value_or(Octets()));
    const DerItem type = cursor.read(0x06);
    const DerItem value = cursor.read();
    if (!type || !value)
        return HexLine(qualifier);
    const bool isUrl = std::ranges::equal(type.value, practiceStatement) && value.identifier == 0x16;
    return isUrl ? "practice statement " + std::string(value.value.begin(), value.value.end())
                 : "qualifier " + ShortNameOf(Oid(type.value)) + " " + HexLine(value.octets);
}

Lines PoliciesLines(Octets content)
{
    Lines lines;
    const auto read = ReadCertificatePolicies(content);
    if (!read)
        return lines;
    for (const PolicyInformation& information : *read) {
        lines.push_back(information.policy == oids::anyPolicy ? "anyPolicy" : OidText(information.policy));
        for (const element& qualifier : information.qualifiers)
            lines.push_back(QualifierLine(qualifier.bytes()));
    }
    return lines;
}

Lines MappingsLines(Octets content)
{
    Lines lines;
    if (const auto read = ReadPolicyMappings(content))
        for (const PolicyMapping& mapping : *read)
            lines.push_back(OidText(mapping.issuerDomain) + " = " + OidText(mapping.subjectDomain));
    return lines;
}

Lines PolicyConstraintsLines(Octets content)
{
    Lines lines;
    const auto read = ReadPolicyConstraints(content);
    if (read && read->requireExplicitPolicy)
        lines.push_back("requireExplicitPolicy after " + std::to_string(*read->requireExplicitPolicy) + " certificates");
    if (read && read->inhibitPolicyMapping)
        lines.push_back("inhibitPolicyMapping after " + std::to_string(*read->inhibitPolicyMapping) + " certificates");
    return lines;
}

Lines InhibitAnyPolicyLines(Octets content)
{
    const auto read = ReadSkipCertificates(content);
    return read ? Lines{"after " + std::to_string(*read) + " certificates"} : Lines();
}

Lines ReasonNames(ReasonFlags flags)
{
    constexpr std::string_view names[] = {"unused",      "keyCompromise",        "cACompromise",    "affiliationChanged",
                                          "superseded",  "cessationOfOperation", "certificateHold", "privilegeWithdrawn",
                                          "aACompromise"};
    Lines words;
    for (std::size_t bit = 0; bit < std::size(names); ++bit)
        if ((flags >> bit & 1) != 0)
            words.emplace_back(names[bit]);
    return words;
}

void AddPointName(Lines& lines, const std::optional<DistributionPointName>& name)
{
    if (!name)
        return;
    AddNames(lines, "", name->fullName);
    if (!name->relativeName.isEmpty())
        lines.push_back("relative name " + HexLine(name->relativeName.bytes()));
}

Lines PointsLines(Octets content)
{
    Lines lines;
    const auto read = ReadDistributionPoints(content);
    if (!read)
        return lines;
    for (const DistributionPoint& point : *read) {
        AddPointName(lines, point.name);
        if (point.reasons)
            lines.push_back("reasons " + JoinedWords(ReasonNames(*point.reasons)));
        AddNames(lines, "issuer of the list ", point.crlIssuer);
    }
    return lines;
}

Lines IssuingPointLines(Octets content)
{
    Lines lines;
    const auto read = ReadIssuingDistributionPoint(content);
    if (!read)
        return lines;
    AddPointName(lines, read->name);
    if (read->onlyUserCertificates)
        lines.emplace_back("only user certificates");
    if (read->onlyCaCertificates)
        lines.emplace_back("only CA certificates");
    if (read->onlyAttributeCertificates)
        lines.emplace_back("only attribute certificates");
    if (read->isIndirect)
        lines.emplace_back("indirect");
    if (read->onlySomeReasons)
        lines.push_back("only reasons " + JoinedWords(ReasonNames(*read->onlySomeReasons)));
    return lines;
}

Lines AccessLines(Octets content)
{
    Lines lines;
    if (const auto read = ReadAuthorityInformationAccess(content))
        for (const AccessDescription& access : *read)
            lines.push_back(ShortNameOf(access.method) + " " + AlternativeNameText(access.location));
    return lines;
}

Lines NumberLines(Octets content)
{
    const auto read = ReadCrlNumber(content);
    return read ? Lines{NumberText(read->bytes())} : Lines();
}

Lines NoCheckLines(Octets content)
{
    return content.size() == 2 && content[0] == 0x05 && content[1] == 0 ? Lines{"status of this certificate is not asked for"}
                                                                        : Lines();
}

struct ExtensionReader {
    const Oid& oid;
    Lines (*read)(Octets content);
};
const ExtensionReader extensionReaders[] = {
    {oids::basicConstraints, BasicConstraintsLines},
    {oids::keyUsage, KeyUsageLines},
    {oids::extendedKeyUsage, PurposeLines},
    {oids::subjectKeyIdentifier, SubjectKeyLines},
    {oids::authorityKeyIdentifier, AuthorityKeyLines},
    {oids::subjectAlternativeName, NamesLines},
    {oids::issuerAlternativeName, NamesLines},
    {oids::certificateIssuer, NamesLines},
    {oids::nameConstraints, NameConstraintsLines},
    {oids::certificatePolicies, PoliciesLines},
    {oids::policyMappings, MappingsLines},
    {oids::policyConstraints, PolicyConstraintsLines},
    {oids::inhibitAnyPolicy, InhibitAnyPolicyLines},
    {oids::crlDistributionPoints, PointsLines},
    {oids::freshestCrl, PointsLines},
    {oids::issuingDistributionPoint, IssuingPointLines},
    {oids::authorityInformationAccess, AccessLines},
    {oids::subjectInformationAccess, AccessLines},
    {oids::crlNumber, NumberLines},
    {oids::deltaCrlIndicator, NumberLines},
    {oids::ocspNoCheck, NoCheckLines},
};

} // namespace

std::vector<std::string> ExtensionLines(const CCrypto_X509_Value& extension)
{
    const element content = extension.content();
    const auto reader =
        std::ranges::find_if(extensionReaders, [&](const ExtensionReader& row) { return row.oid == extension.oid(); });
    Lines lines = reader != std::end(extensionReaders) ? reader->read(content.bytes()) : Lines();
    if (lines.empty())
        lines.push_back(HexLine(content.bytes()));
    return lines;
}

} // namespace ccrypto
