#include "pki/x509/extension_builder.h"

#include "asn1/der/der_cursor.h"
#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/x509/attribute_text.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/template_filling.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace ccrypto {

namespace {

// An OCTET_STRING with typed content is written with the constructed bit, which an extension must not have: of these only the
// content is used, and BuildExtension wraps it.
constexpr const char* basicConstraintsTemplate =
    "OCTET_STRING{SEQUENCE{BOOLEAN(OPTIONAL){cA};INTEGER (OPTIONAL){pathLenConstraint}}}";
constexpr const char* keyUsageTemplate = "OCTET_STRING [ PRIMITIVE ] { BIT_STRING { unused_bits, value }}";
constexpr const char* keyIdentifierTemplate = "OCTET_STRING{ KID }";
constexpr const char* authorityKeyIdentifierTemplate = "OCTET_STRING{SEQUENCE{CONTEXT_SPECIFIC[0,IMPLICIT]{KID}}}";
constexpr const char* purposeTemplate = "OBJECT_IDENTIFIER{oid}";
constexpr const char* crlNumberTemplate = "INTEGER = crlNumber;";
constexpr const char* nextPublishTemplate = "GeneralizedType { validity }";
constexpr const char* emailTemplate = "CONTEXT_SPECIFIC [ 1, IMPLICIT ] { email },";
constexpr const char* userPrincipalNameTemplate =
    "CONTEXT_SPECIFIC [ 0 ] { OBJECT_IDENTIFIER = \"1.3.6.1.4.1.311.20.2.3\", CONTEXT_SPECIFIC [ 0 ] { UTF8String { upn } } }";
constexpr const char* policyTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER{CPS_OID},SEQUENCE(OPTIONAL){"
    "SEQUENCE(OPTIONAL){OBJECT_IDENTIFIER=\"1.3.6.1.5.5.7.2.1\",IA5String{CPS_pointerNotice_URL}}"
    "SEQUENCE(OPTIONAL){OBJECT_IDENTIFIER=\"1.3.6.1.5.5.7.2.2\",SEQUENCE{UTF8String{CPS_userNotice}}}}}";
constexpr const char* accessTemplate = "SEQUENCE{OBJECT_IDENTIFIER{METHOD},CONTEXT_SPECIFIC[6,IMPLICIT]{POINT}}";
constexpr const char* distributionPointsTemplate =
    "SEQUENCE{SEQUENCE{CONTEXT_SPECIFIC[0]{CONTEXT_SPECIFIC[0]{CONTEXT_SPECIFIC[6,IMPLICIT]{CDP1}}}}"
    "SEQUENCE(OPTIONAL){CONTEXT_SPECIFIC[0]{CONTEXT_SPECIFIC[0]{CONTEXT_SPECIFIC[6,IMPLICIT]{CDP2}}}}}";
constexpr const char* issuingDistributionPointTemplate =
    "SEQUENCE{CONTEXT_SPECIFIC[0](OPTIONAL){CONTEXT_SPECIFIC[0,CONSTRUCTED]{names}}"
    "CONTEXT_SPECIFIC[1,IMPLICIT](OPTIONAL){onlyUser}CONTEXT_SPECIFIC[2,IMPLICIT](OPTIONAL){onlyCa}"
    "CONTEXT_SPECIFIC[3,IMPLICIT](OPTIONAL){reasons}CONTEXT_SPECIFIC[4,IMPLICIT](OPTIONAL){indirect}"
    "CONTEXT_SPECIFIC[5,IMPLICIT](OPTIONAL){onlyAttribute}}";

constexpr std::uint32_t maxNoticeCharacters = 200;
constexpr std::uint32_t maxListNumber = 20;

struct PurposeRow {
    std::string_view name;
    std::string_view oid;
};
constexpr PurposeRow purposeRows[] = {
    {"serverAuth", "1.3.6.1.5.5.7.3.1"},
    {"clientAuth", "1.3.6.1.5.5.7.3.2"},
    {"codeSigning", "1.3.6.1.5.5.7.3.3"},
    {"emailProtection", "1.3.6.1.5.5.7.3.4"},
    {"smartCardLogon", "1.3.6.1.4.1.311.20.2.2"},
    {"individualCodeSigning", "1.3.6.1.4.1.311.2.1.21"},
    {"commercialCodeSigning", "1.3.6.1.4.1.311.2.1.22"},
    {"encryptingFileSystem", "1.3.6.1.4.1.311.10.3.1"},
    {"", "1.3.6.1.4.1.4449.1.2.4.1.1"},
    {"timeStamping", "1.3.6.1.5.5.7.3.8"},
    {"OCSPSigning", "1.3.6.1.5.5.7.3.9"},
    {"ipsecEndSystem", "1.3.6.1.5.5.7.3.5"},
    {"ipsecTunnel", "1.3.6.1.5.5.7.3.6"},
    {"ipsecUser", "1.3.6.1.5.5.7.3.7"},
    {"ipsecIKE", "1.3.6.1.5.5.7.3.17"},
    {"documentSigning", "1.3.6.1.5.5.7.3.36"},
    {"anyExtendedKeyUsage", "2.5.29.37.0"},
};
constexpr std::size_t listedPurposes = 9;

ExtensionPtr NoExtension(CCryptoAutoLogger& logger, const char* reason)
{
    return logger.fail(ExtensionPtr(), "%s", reason);
}

bool IsPrintableAscii(const element& text, char first)
{
    return !text.isEmpty() && std::ranges::all_of(text.view(), [first](char c) { return c >= first && c <= '~'; });
}

/// Characters of IA5String without a blank.
bool IsUrl(const CCryptoString& url)
{
    return IsPrintableAscii(url.data(), '!');
}

/// Characters that people read: a control character would be obeyed by what shows them.
bool IsShownText(const CCryptoString& text)
{
    const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; };
    return AttributeText(ElementType::utf8String, text.data().bytes()).has_value() && std::ranges::none_of(text.view(), isControl);
}

std::uint32_t CharactersOf(const CCryptoString& text)
{
    return static_cast<std::uint32_t>(std::ranges::count_if(text.view(), [](char c) { return (c & 0xC0) != 0x80; }));
}

/// The octets of a BIT STRING: the count of unused bits and the bits, without zeros at their end (X.690, 11.2.2).
element NamedBits(std::uint16_t bits)
{
    element octets;
    const std::uint32_t count = static_cast<std::uint32_t>(std::bit_width(bits));
    octets.append(static_cast<std::uint8_t>((8 - count % 8) % 8));
    for (std::uint32_t first = 0; first < count; first += 8) {
        std::uint8_t octet = 0;
        for (std::uint32_t bit = 0; bit < 8; ++bit)
            if ((bits >> (first + bit) & 1) != 0)
                octet = static_cast<std::uint8_t>(octet | 0x80 >> bit);
        octets.append(octet);
    }
    return octets;
}

struct NameForm {
    GeneralName::Kind kind;
    const char* templateText;
    const char* placeholder;
    bool (*isValue)(const element& value);
};

bool IsText(const element& value)
{
    return IsPrintableAscii(value, ' ');
}

bool IsTextWithoutBlank(const element& value)
{
    return IsPrintableAscii(value, '!');
}

bool IsAddress(const element& value)
{
    return value.length() == 4 || value.length() == 16;
}

bool IsAnything(const element& value)
{
    return !value.isEmpty();
}

bool IsName(const element& value)
{
    return OnlyValue(value.bytes(), der_tag::sequence).has_value();
}

constexpr NameForm nameForms[] = {
    {GeneralName::Kind::otherName, "CONTEXT_SPECIFIC[0,CONSTRUCTED]{value}", "value", IsAnything},
    {GeneralName::Kind::email, emailTemplate, "email", IsText},
    {GeneralName::Kind::dns, "CONTEXT_SPECIFIC[2,IMPLICIT]{value}", "value", IsTextWithoutBlank},
    {GeneralName::Kind::x400Address, "CONTEXT_SPECIFIC[3,CONSTRUCTED]{value}", "value", IsAnything},
    {GeneralName::Kind::directory, "CONTEXT_SPECIFIC[4,CONSTRUCTED]{value}", "value", IsName},
    {GeneralName::Kind::ediPartyName, "CONTEXT_SPECIFIC[5,CONSTRUCTED]{value}", "value", IsAnything},
    {GeneralName::Kind::uri, "CONTEXT_SPECIFIC[6,IMPLICIT]{value}", "value", IsTextWithoutBlank},
    {GeneralName::Kind::ipAddress, "CONTEXT_SPECIFIC[7,IMPLICIT]{value}", "value", IsAddress},
    {GeneralName::Kind::registeredId, "CONTEXT_SPECIFIC[8,IMPLICIT]{value}", "value", IsAnything},
};

/// The names one after the other; empty, logged, when there is none or one cannot be written.
element EncodedNames(CCryptoAutoLogger& logger, const GeneralNames& names)
{
    element items;
    for (const GeneralName& name : names) {
        const auto* const form = std::ranges::find(nameForms, name.kind, &NameForm::kind);
        if (form == std::end(nameForms) || !form->isValue(name.value))
            return logger.fail(element(), "A name is empty, or has characters or a length that its type does not have");
        const element encoded = FillTemplate(form->templateText, {{form->placeholder, Octets(name.value)}});
        items.append(encoded.data(), encoded.length());
    }
    return items.isEmpty() ? logger.fail(element(), "There are no names") : items;
}

/// An extension whose value is the INTEGER of a list's number; null, logged, for a number that lists do not have.
ExtensionPtr BuildListNumber(CCryptoAutoLogger& logger, const Oid& oid, const element& number, bool critical)
{
    if (number.isEmpty() || number.length() > maxListNumber)
        return NoExtension(logger, "The number of a list has 1 to 20 bytes");
    element magnitude(number.data(), number.length(), ElementType::integer);
    while (magnitude.length() > 1 && magnitude[0] == 0)
        magnitude.erase(0, 1);
    logger.setResult(true);
    return BuildExtension(oid, FillTemplate(crlNumberTemplate, {{"crlNumber", magnitude}}), critical);
}

element UrlOctets(const CCryptoString& url)
{
    return Octets(url.data());
}

/// AccessDescriptions one after the other.
element AccessDescriptions(const Oid& method, const std::vector<CCryptoString>& urls)
{
    element items;
    for (const CCryptoString& url : urls) {
        const element item = FillTemplate(accessTemplate, {{"METHOD", OctetsOfSpan(method.octets())}, {"POINT", UrlOctets(url)}});
        items.append(item.data(), item.length());
    }
    return items;
}

element FlagOctets(bool flag)
{
    return flag ? element::FromTruth(true) : element();
}

} // namespace

ExtensionPtr BuildExtension(const Oid& oid, const element& content, bool critical)
{
    CCryptoAutoLogger logger("BuildExtension");
    if (oid.isNone() || content.isEmpty())
        return NoExtension(logger, "There is no content");
    const ElementNodePtr value = elementNode::Make(ElementType::octetString);
    value->set(LinkKind::content, Octets(content));
    logger.setResult(true);
    return std::make_unique<CCrypto_X509_Value>(oid, value.get(), critical);
}

ExtensionPtr BuildBasicConstraints(const BasicConstraints& constraints, bool critical)
{
    CCryptoAutoLogger logger("BuildBasicConstraints");
    if (constraints.pathLength && !constraints.isCa)
        return NoExtension(logger, "Only authorities have a path length");
    const element pathLength = constraints.pathLength ? element(*constraints.pathLength) : element();
    logger.setResult(true);
    return BuildExtension(oids::basicConstraints,
                          ContentOf(FillTemplate(basicConstraintsTemplate,
                                                 {{"cA", FlagOctets(constraints.isCa)}, {"pathLenConstraint", pathLength}})),
                          critical);
}

ExtensionPtr BuildKeyUsage(KeyUsage usage, bool critical)
{
    CCryptoAutoLogger logger("BuildKeyUsage");
    const element bits = NamedBits(usage.bits);
    if (bits.length() < 2)
        return NoExtension(logger, "A key usage has at least one bit");
    logger.setResult(true);
    return BuildExtension(oids::keyUsage,
                          ContentOf(FillTemplate(keyUsageTemplate, {{"unused_bits", OctetsOfSpan(bits.bytes().first(1))},
                                                                    {"value", OctetsOfSpan(bits.bytes().subspan(1))}})),
                          critical);
}

element KeyIdentifierOf(const ICryptoKeyPair& key)
{
    const element info = key.publicKeyInfo();
    const element fields = ContentOf(info);
    DerCursor cursor(fields.bytes());
    (void)cursor.read();
    const DerItem bits = cursor.read();
    // The key is whole bytes, after the count of unused bits.
    return bits.value.empty() ? element() : ICryptoHash::Create(algorithm::sha1)->digestOf(bits.value.subspan(1));
}

ExtensionPtr BuildSubjectKeyIdentifier(const element& keyIdentifier)
{
    CCryptoAutoLogger logger("BuildSubjectKeyIdentifier");
    if (keyIdentifier.isEmpty())
        return NoExtension(logger, "There is no key identifier");
    logger.setResult(true);
    // An OCTET STRING in the OCTET STRING.
    return BuildExtension(oids::subjectKeyIdentifier, FillTemplate(keyIdentifierTemplate, {{"KID", Octets(keyIdentifier)}}));
}

ExtensionPtr BuildAuthorityKeyIdentifier(const element& keyIdentifier)
{
    CCryptoAutoLogger logger("BuildAuthorityKeyIdentifier");
    if (keyIdentifier.isEmpty())
        return NoExtension(logger, "There is no key identifier");
    logger.setResult(true);
    return BuildExtension(oids::authorityKeyIdentifier,
                          ContentOf(FillTemplate(authorityKeyIdentifierTemplate, {{"KID", Octets(keyIdentifier)}})));
}

Oid PurposeNamed(std::string_view nameOrOid)
{
    if (nameOrOid.empty())
        return {};
    const auto* const found =
        std::ranges::find_if(purposeRows, [=](const PurposeRow& row) { return SameInAnyCase(row.name, nameOrOid); });
    return Oid::FromDotted(found != std::end(purposeRows) ? found->oid : nameOrOid);
}

std::string_view PurposeName(const Oid& purpose)
{
    const auto* const found =
        std::ranges::find_if(purposeRows, [&](const PurposeRow& row) { return Oid::FromDotted(row.oid) == purpose; });
    return found != std::end(purposeRows) ? found->name : std::string_view();
}

std::vector<Oid> ListedPurposes()
{
    std::vector<Oid> purposes;
    for (const PurposeRow& row : std::span(purposeRows).first(listedPurposes))
        purposes.push_back(Oid::FromDotted(row.oid));
    return purposes;
}

ExtensionPtr BuildExtendedKeyUsage(const std::vector<Oid>& purposes, bool critical)
{
    CCryptoAutoLogger logger("BuildExtendedKeyUsage");
    element items;
    for (const Oid& purpose : purposes) {
        if (purpose.isNone())
            return NoExtension(logger, "A purpose is not an object identifier");
        const element item = FillTemplate(purposeTemplate, {{"oid", OctetsOfSpan(purpose.octets())}});
        items.append(item.data(), item.length());
    }
    if (items.isEmpty())
        return NoExtension(logger, "There are no purposes");
    logger.setResult(true);
    return BuildExtension(oids::extendedKeyUsage, SequenceOfItems(items), critical);
}

std::optional<GeneralName> UserPrincipalName(const CCryptoString& name)
{
    CCryptoAutoLogger logger("UserPrincipalName");
    using Result = std::optional<GeneralName>;
    if (name.isEmpty() || !IsShownText(name))
        return logger.fail(Result(), "The name is empty, not UTF-8, or has control characters");
    logger.setResult(true);
    return GeneralName{.kind = GeneralName::Kind::otherName,
                       .value = ContentOf(FillTemplate(userPrincipalNameTemplate, {{"upn", Octets(name.data())}}))};
}

ExtensionPtr BuildSubjectAlternativeName(const GeneralNames& names, bool critical)
{
    CCryptoAutoLogger logger("BuildSubjectAlternativeName");
    const element items = EncodedNames(logger, names);
    if (items.isEmpty())
        return nullptr;
    logger.setResult(true);
    return BuildExtension(oids::subjectAlternativeName, SequenceOfItems(items), critical);
}

ExtensionPtr BuildCertificatePolicies(const std::vector<PolicyStatement>& policies, bool critical)
{
    CCryptoAutoLogger logger("BuildCertificatePolicies");
    element items;
    for (const PolicyStatement& statement : policies) {
        if (statement.policy.isNone())
            return NoExtension(logger, "A policy is not an object identifier");
        if (!statement.practiceStatementUrl.isEmpty() && !IsUrl(statement.practiceStatementUrl))
            return NoExtension(logger, "The URL of a policy has other characters than URLs");
        if (!IsShownText(statement.userNotice) || CharactersOf(statement.userNotice) > maxNoticeCharacters)
            return NoExtension(logger,
                               "The notice of a policy is not UTF-8, has control characters, or is longer than 200 characters");
        const element item = FillTemplate(policyTemplate, {{"CPS_OID", OctetsOfSpan(statement.policy.octets())},
                                                           {"CPS_pointerNotice_URL", UrlOctets(statement.practiceStatementUrl)},
                                                           {"CPS_userNotice", Octets(statement.userNotice.data())}});
        items.append(item.data(), item.length());
    }
    if (items.isEmpty())
        return NoExtension(logger, "There are no policies");
    logger.setResult(true);
    return BuildExtension(oids::certificatePolicies, SequenceOfItems(items), critical);
}

ExtensionPtr BuildAuthorityInformationAccess(const std::vector<CCryptoString>& ocspUrls,
                                             const std::vector<CCryptoString>& issuerUrls)
{
    CCryptoAutoLogger logger("BuildAuthorityInformationAccess");
    static const Oid ocsp = Oid::FromDotted("1.3.6.1.5.5.7.48.1");
    static const Oid caIssuers = Oid::FromDotted("1.3.6.1.5.5.7.48.2");
    if (!std::ranges::all_of(ocspUrls, IsUrl) || !std::ranges::all_of(issuerUrls, IsUrl))
        return NoExtension(logger, "A URL is empty or has other characters than URLs");
    element items = AccessDescriptions(ocsp, ocspUrls);
    const element issuers = AccessDescriptions(caIssuers, issuerUrls);
    items.append(issuers.data(), issuers.length());
    if (items.isEmpty())
        return NoExtension(logger, "There are no URLs");
    logger.setResult(true);
    return BuildExtension(oids::authorityInformationAccess, SequenceOfItems(items));
}

ExtensionPtr BuildCrlDistributionPoints(const std::vector<CCryptoString>& urls)
{
    CCryptoAutoLogger logger("BuildCrlDistributionPoints");
    if (urls.empty())
        return NoExtension(logger, "There are no URLs");
    if (!std::ranges::all_of(urls, IsUrl))
        return NoExtension(logger, "A URL is empty or has other characters than URLs");
    // The template holds two; longer lists are put together of several.
    element items;
    for (std::size_t index = 0; index < urls.size(); index += 2) {
        const element second = index + 1 < urls.size() ? UrlOctets(urls[index + 1]) : element();
        const element pair = FillTemplate(distributionPointsTemplate, {{"CDP1", UrlOctets(urls[index])}, {"CDP2", second}});
        const element points = ContentOf(pair);
        items.append(points.data(), points.length());
    }
    logger.setResult(true);
    return BuildExtension(oids::crlDistributionPoints, SequenceOfItems(items));
}

ExtensionPtr BuildCrlNumber(const element& number)
{
    CCryptoAutoLogger logger("BuildCrlNumber");
    return BuildListNumber(logger, oids::crlNumber, number, false);
}

ExtensionPtr BuildDeltaCrlIndicator(const element& base)
{
    CCryptoAutoLogger logger("BuildDeltaCrlIndicator");
    return BuildListNumber(logger, oids::deltaCrlIndicator, base, true);
}

ExtensionPtr BuildNextPublish(const CCryptoDateTime& time)
{
    CCryptoAutoLogger logger("BuildNextPublish");
    static const Oid nextPublish = Oid::FromDotted("1.3.6.1.4.1.311.21.4");
    const CCryptoString text = time.toGeneralizedTime();
    if (text.isEmpty())
        return NoExtension(logger, "There is no time");
    logger.setResult(true);
    return BuildExtension(nextPublish, FillTemplate(nextPublishTemplate, {{"validity", text.data()}}));
}

ExtensionPtr BuildIssuingDistributionPoint(const IssuingDistributionPoint& point)
{
    CCryptoAutoLogger logger("BuildIssuingDistributionPoint");
    if (point.onlyUserCertificates + point.onlyCaCertificates + point.onlyAttributeCertificates > 1)
        return NoExtension(logger, "A list is of one kind of certificates, or of all");
    if (point.onlySomeReasons && *point.onlySomeReasons == 0)
        return NoExtension(logger, "There are no reasons");
    element names;
    if (point.name) {
        if (!point.name->relativeName.isEmpty())
            return NoExtension(logger, "Relative names of distribution points are not written");
        names = EncodedNames(logger, point.name->fullName);
        if (names.isEmpty())
            return nullptr;
    }
    const element der = FillTemplate(issuingDistributionPointTemplate,
                                     {{"names", names},
                                      {"onlyUser", FlagOctets(point.onlyUserCertificates)},
                                      {"onlyCa", FlagOctets(point.onlyCaCertificates)},
                                      {"reasons", point.onlySomeReasons ? NamedBits(*point.onlySomeReasons) : element()},
                                      {"indirect", FlagOctets(point.isIndirect)},
                                      {"onlyAttribute", FlagOctets(point.onlyAttributeCertificates)}});
    // RFC 5280, 5.2.5: never an empty SEQUENCE.
    if (ContentOf(der).isEmpty())
        return NoExtension(logger, "Nothing is said about the list");
    logger.setResult(true);
    return BuildExtension(oids::issuingDistributionPoint, der, true);
}

} // namespace ccrypto
