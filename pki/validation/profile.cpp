#include "pki/validation/profile.h"

#include "asn1/der/der_cursor.h"
#include "pki/validation/name_constraints.h"
#include "pki/validation/name_forms.h"
#include "pki/validation/profile_names.h"
#include "pki/x509/der_tags.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ccrypto {

namespace {

using ProfileOctets = std::span<const std::uint8_t>;

constexpr std::uint8_t profileVersionTag = der_tag::Constructed(0);
constexpr std::uint8_t issuerUniqueIdTag = der_tag::Primitive(1);
constexpr std::uint8_t subjectUniqueIdTag = der_tag::Primitive(2);

/// The fields of a TBSCertificate that the loaded certificate does not keep as they were written.
struct WrittenFields {
    bool isRead = false;
    DerItem validFrom;
    DerItem validTo;
    DerItem algorithm;
    DerItem publicKey;
    bool hasUniqueIds = false;
};

WrittenFields ReadWrittenFields(ProfileOctets tbs)
{
    WrittenFields written;
    const auto level = OnlyValue(tbs, der_tag::sequence);
    if (!level)
        return written;
    DerCursor fields(*level);
    (void)fields.read(profileVersionTag);
    const DerItem serial = fields.read(der_tag::integer);
    written.algorithm = fields.read(der_tag::sequence);
    const DerItem issuer = fields.read(der_tag::sequence);
    DerCursor validity(fields.read(der_tag::sequence).value);
    written.validFrom = validity.read();
    written.validTo = validity.read();
    const DerItem subject = fields.read(der_tag::sequence);
    written.publicKey = fields.read(der_tag::sequence);
    written.isRead = serial && written.algorithm && issuer && written.validTo && subject && written.publicKey;
    const DerItem issuerUniqueId = fields.read(issuerUniqueIdTag);
    const DerItem subjectUniqueId = fields.read(subjectUniqueIdTag);
    written.hasUniqueIds = issuerUniqueId || subjectUniqueId;
    return written;
}

/// What the rules look at.
struct ProfileSubject {
    const KnownCertificate& known;
    const CCrypto_X509_Certificate& certificate;
    const ReadExtensions& extensions;
    const KnownCertificate* issuer; ///< null when it is not known
    bool isCa;                      ///< it issued a certificate of the path, or says that it may
    WrittenFields written;

    [[nodiscard]] const CCrypto_X509_Value* find(const Oid& oid) const { return certificate.extensions().find(oid); }
    [[nodiscard]] bool isCritical(const Oid& oid) const { return find(oid) != nullptr && find(oid)->isCritical(); }
    [[nodiscard]] bool isNotCritical(const Oid& oid) const { return find(oid) != nullptr && !find(oid)->isCritical(); }
    [[nodiscard]] bool hasUsage(KeyUsageBit bit) const { return extensions.keyUsage && extensions.keyUsage->has(bit); }
};

/// \return what is wrong; null when nothing is.
using ProfileCheck = const char* (*)(const ProfileSubject&);

const char* VersionFault(const ProfileSubject& subject)
{
    if (!subject.written.isRead)
        return "the fields are not DER";
    const bool hasExtensions = !subject.certificate.extensions().isEmpty();
    return subject.certificate.version() < 3 && hasExtensions ? "extensions without version 3" : nullptr;
}

const char* SerialNumberFault(const ProfileSubject& subject)
{
    constexpr std::size_t maxSerialNumber = 20;
    const ProfileOctets octets = subject.certificate.serialNumber().bytes();
    if (octets.empty() || std::ranges::all_of(octets, [](std::uint8_t octet) { return octet == 0; }))
        return "the serial number is zero";
    if ((octets[0] & 0x80) != 0)
        return "the serial number is negative";
    return octets.size() > maxSerialNumber ? "the serial number has more than 20 octets" : nullptr;
}

/// Whether the algorithm is one of PKCS#1 with another parameter than NULL, which RFC 3279 (2.2.1, 2.3.1) and RFC 4055 (5) demand.
bool LacksNull(ProfileOctets identifier)
{
    constexpr std::uint8_t pkcs1[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01};
    constexpr std::uint8_t withOtherParameters[] = {7, 8, 9, 10}; // OAEP, its functions and PSS
    DerCursor fields(identifier);
    const ProfileOctets oid = fields.read(der_tag::objectIdentifier).value;
    if (oid.size() != std::size(pkcs1) + 1 || !std::ranges::equal(oid.first(std::size(pkcs1)), pkcs1) ||
        std::ranges::find(withOtherParameters, oid.back()) != std::end(withOtherParameters))
        return false;
    const DerItem parameters = fields.read(der_tag::null);
    return !parameters || !parameters.value.empty() || !fields.atEnd();
}

const char* AlgorithmFault(const ProfileSubject& subject)
{
    if (!subject.certificate.algorithmsAgree())
        return "the two signature algorithms differ";
    return LacksNull(subject.written.algorithm.value) ? "the signature algorithm lacks its parameter NULL" : nullptr;
}

const char* KeyAlgorithmFault(const ProfileSubject& subject)
{
    DerCursor fields(subject.written.publicKey.value);
    return LacksNull(fields.read(der_tag::sequence).value) ? "the algorithm of the key lacks its parameter NULL" : nullptr;
}

const char* NameFormsFault(const ProfileSubject& subject)
{
    const element issuer = subject.certificate.issuer().GetDerEncodedElement();
    if (const char* const fault = NameFormFault(issuer.bytes()))
        return fault;
    const element name = subject.certificate.subject().GetDerEncodedElement();
    return NameFormFault(name.bytes());
}

const char* NameFault(const ProfileSubject& subject)
{
    if (subject.known.issuer.isEmpty())
        return "the issuer's name is empty";
    if (!subject.known.subject.isEmpty())
        return nullptr;
    if (subject.isCa || subject.hasUsage(KeyUsageBit::crlSign))
        return "the subject of a CA or of an issuer of revocation lists is empty";
    return subject.isCritical(oids::subjectAlternativeName) ? nullptr
                                                            : "the subject is empty and the alternative names are not critical";
}

const char* ValidityFault(const ProfileSubject& subject)
{
    constexpr std::uint32_t firstYearOfGeneralizedTime = 2050;
    constexpr std::uint32_t firstYearOfUtcTime = 1950;
    const auto isWrongType = [](const DerItem& written, const CCryptoDateTime& time) {
        const auto year = static_cast<std::uint32_t>(time.fields().year);
        const bool isUtcTime = year >= firstYearOfUtcTime && year < firstYearOfGeneralizedTime;
        return (written.identifier == der_tag::utcTime) != isUtcTime;
    };
    return isWrongType(subject.written.validFrom, subject.certificate.validFrom()) ||
                   isWrongType(subject.written.validTo, subject.certificate.validTo())
               ? "years to 2049 are UTCTime, from 2050 on GeneralizedTime"
               : nullptr;
}

const char* UniqueIdFault(const ProfileSubject& subject)
{
    return subject.written.hasUniqueIds ? "unique identifiers" : nullptr;
}

/// Whether the first field of the SEQUENCE is FALSE, which is the default value wherever this is asked.
bool StartsWithFalse(ProfileOctets content)
{
    const auto level = OnlyValue(content, der_tag::sequence);
    return level && level->size() >= 3 && (*level)[0] == der_tag::boolean && (*level)[2] == 0;
}

/// Whether a subtree says that its minimum is 0. \param content of name constraints.
bool WritesMinimum(ProfileOctets content)
{
    const auto level = OnlyValue(content, der_tag::sequence);
    DerCursor lists(level ? *level : ProfileOctets());
    while (const DerItem list = lists.read()) {
        DerCursor subtrees(list.value);
        while (const DerItem subtree = subtrees.read()) {
            DerCursor fields(subtree.value);
            if (fields.read() && !fields.atEnd())
                return true;
        }
    }
    return false;
}

bool WritesCriticalFalse(ProfileOctets extensions)
{
    const auto level = OnlyValue(extensions, der_tag::sequence);
    DerCursor cursor(level ? *level : ProfileOctets());
    while (const DerItem extension = cursor.read()) {
        DerCursor fields(extension.value);
        if (!fields.read(der_tag::objectIdentifier))
            return false;
        if (const DerItem critical = fields.read(der_tag::boolean);
            critical && critical.value.size() == 1 && critical.value[0] == 0)
            return true;
    }
    return false;
}

/// Of a BIT STRING of named bits, whether its last used bit is zero.
bool HasTrailingZeros(ProfileOctets content)
{
    const auto value = OnlyValue(content, der_tag::bitString);
    return value && value->size() > 1 && (*value)[0] < 8 && ((value->back() >> (*value)[0]) & 1) == 0;
}

const char* DefaultValueFault(const ProfileSubject& subject)
{
    const element extensions = subject.certificate.extensions().GetDerEncodedElement();
    if (WritesCriticalFalse(extensions.bytes()))
        return "an extension says FALSE where the critical flag is left out";
    if (const auto* const constraints = subject.find(oids::basicConstraints);
        constraints != nullptr && StartsWithFalse(constraints->content().bytes()))
        return "the basic constraints say FALSE where cA is left out";
    if (const auto* const usage = subject.find(oids::keyUsage); usage != nullptr && HasTrailingZeros(usage->content().bytes()))
        return "the key usage ends with a zero";
    if (const auto* const names = subject.find(oids::nameConstraints); names != nullptr && WritesMinimum(names->content().bytes()))
        return "a name constraint says 0 where the minimum is left out";
    return nullptr;
}

bool IsSelfSigned(const ProfileSubject& subject)
{
    return subject.known.isSelfIssued() && subject.certificate.publicKey() != nullptr &&
           subject.certificate.verifySignature(*subject.certificate.publicKey()) == SignatureResult::good;
}

const char* AuthorityKeyFault(const ProfileSubject& subject)
{
    const auto& identifier = subject.extensions.authorityKeyIdentifier;
    if (!identifier)
        return IsSelfSigned(subject) ? nullptr : "no authority key identifier";
    if (subject.isCritical(oids::authorityKeyIdentifier))
        return "the authority key identifier is critical";
    if (identifier->keyIdentifier.isEmpty())
        return "the authority key identifier names no key";
    if (identifier->issuer.empty() != identifier->serialNumber.isEmpty())
        return "the authority key identifier has an issuer or a serial number alone";
    const KnownCertificate* const issuer = subject.issuer == nullptr && IsSelfSigned(subject) ? &subject.known : subject.issuer;
    if (issuer != nullptr && issuer->extensions.subjectKeyIdentifier &&
        *issuer->extensions.subjectKeyIdentifier != identifier->keyIdentifier)
        return "the authority key identifier is not the key identifier of the issuer";
    return nullptr;
}

const char* SubjectKeyFault(const ProfileSubject& subject)
{
    if (subject.isCritical(oids::subjectKeyIdentifier))
        return "the subject key identifier is critical";
    return subject.isCa && !subject.extensions.subjectKeyIdentifier ? "a CA without a subject key identifier" : nullptr;
}

const char* KeyUsageFault(const ProfileSubject& subject)
{
    if (subject.extensions.keyUsage && subject.extensions.keyUsage->bits == 0)
        return "the key usage is empty";
    return subject.isCa && !subject.extensions.keyUsage ? "a CA without a key usage" : nullptr;
}

const char* BasicConstraintsFault(const ProfileSubject& subject)
{
    const auto& constraints = subject.extensions.basicConstraints;
    const bool saysCa = constraints && constraints->isCa;
    if (subject.hasUsage(KeyUsageBit::keyCertSign) && !saysCa)
        return "keyCertSign without cA";
    if (subject.isCa && !saysCa)
        return "a CA without cA";
    if (subject.isCa && !subject.isCritical(oids::basicConstraints))
        return "the basic constraints of a CA are not critical";
    if (constraints && constraints->pathLength && !(saysCa && subject.hasUsage(KeyUsageBit::keyCertSign)))
        return "a path length without cA and keyCertSign";
    return nullptr;
}

const char* CaExtensionFault(const ProfileSubject& subject)
{
    if (subject.isCa)
        return nullptr;
    const auto& extensions = subject.extensions;
    return extensions.nameConstraints || extensions.policyMappings || extensions.policyConstraints || extensions.inhibitAnyPolicy
               ? "an extension that belongs to CAs"
               : nullptr;
}

const Oid& DirectoryAttributesOid()
{
    static const Oid oid(std::array<std::uint8_t, 3>{0x55, 0x1D, 9});
    return oid;
}

const char* CriticalityFault(const ProfileSubject& subject)
{
    for (const Oid* const oid : {&oids::nameConstraints, &oids::policyConstraints, &oids::inhibitAnyPolicy})
        if (subject.isNotCritical(*oid))
            return "name constraints, policy constraints or inhibitAnyPolicy that are not critical";
    for (const Oid* const oid :
         {&oids::freshestCrl, &oids::authorityInformationAccess, &oids::subjectInformationAccess, &DirectoryAttributesOid()})
        if (subject.isCritical(*oid))
            return "information access, directory attributes or the place of fresh lists is critical";
    return nullptr;
}

const char* EmailFault(const ProfileSubject& subject)
{
    const auto isEmail = [](const GeneralName& name) { return name.kind == GeneralName::Kind::email; };
    const auto& names = subject.extensions.subjectAlternativeName;
    return subject.certificate.subject().find(oids::emailAddress) != nullptr && !(names && std::ranges::any_of(*names, isEmail))
               ? "an e-mail address in the subject alone"
               : nullptr;
}

const char* AlternativeNameFault(const ProfileSubject& subject)
{
    const auto areProper = [](const GeneralNames& names) { return std::ranges::all_of(names, IsConformingName); };
    if (subject.extensions.subjectAlternativeName && !areProper(*subject.extensions.subjectAlternativeName))
        return "an alternative name that is empty or not of its form";
    if (const auto* const value = subject.find(oids::issuerAlternativeName)) {
        const auto names = ReadGeneralNames(value->content().bytes());
        if (!names || !areProper(*names))
            return "an alternative name of the issuer that is empty or not of its form";
    }
    return nullptr;
}

const char* NameConstraintsFault(const ProfileSubject& subject)
{
    const auto& constraints = subject.extensions.nameConstraints;
    if (!constraints)
        return nullptr;
    if (constraints->permitted.empty() && constraints->excluded.empty())
        return "the name constraints are empty";
    if (!NameConstraintState().add(*constraints).passed())
        return "a name constraint that is not of its form";
    const auto hasDot = [](const GeneralName& base) {
        return base.kind == GeneralName::Kind::dns && base.value.view().starts_with('.');
    };
    return std::ranges::any_of(constraints->permitted, hasDot) || std::ranges::any_of(constraints->excluded, hasDot)
               ? "a DNS constraint begins with a dot"
               : nullptr;
}

const char* DirectoryAttributesFault(const ProfileSubject& subject)
{
    const auto* const value = subject.find(DirectoryAttributesOid());
    if (value == nullptr)
        return nullptr;
    const element content = value->content();
    const auto level = OnlyValue(content.bytes(), der_tag::sequence);
    bool isProper = level && !level->empty();
    DerCursor attributes(level ? *level : ProfileOctets());
    while (isProper && !attributes.atEnd()) {
        DerCursor fields(attributes.read(der_tag::sequence).value);
        isProper = fields.read(der_tag::objectIdentifier) && !fields.read(der_tag::set).value.empty() && fields.atEnd();
    }
    return isProper ? nullptr : "directory attributes that are empty or not of their form";
}

const char* InformationAccessFault(const ProfileSubject& subject)
{
    const auto* const value = subject.find(oids::subjectInformationAccess);
    return value != nullptr && !ReadAuthorityInformationAccess(value->content().bytes())
               ? "the information access of the subject is empty or not of its form"
               : nullptr;
}

constexpr std::uint8_t cpsQualifier[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x02, 0x01};
constexpr std::uint8_t noticeQualifier[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x02, 0x02};

/// Of a user notice the text, if any, is UTF8String or IA5String of 1 to 200 characters.
bool IsProperNotice(ProfileOctets level)
{
    constexpr std::ptrdiff_t maxCharacters = 200;
    DerCursor fields(level);
    if (fields.nextIs(der_tag::sequence) && !fields.read())
        return false;
    if (fields.atEnd())
        return true;
    if (!fields.nextIs(der_tag::utf8String) && !fields.nextIs(der_tag::ia5String))
        return false;
    const auto characters = std::ranges::count_if(fields.read().value, [](std::uint8_t octet) { return (octet & 0xC0) != 0x80; });
    return characters >= 1 && characters <= maxCharacters && fields.atEnd();
}

const char* QualifierFault(const PolicyInformation& policy)
{
    for (const element& qualifier : policy.qualifiers) {
        const auto level = OnlyValue(qualifier.bytes(), der_tag::sequence);
        DerCursor fields(level ? *level : ProfileOctets());
        const DerItem id = fields.read(der_tag::objectIdentifier);
        const bool isNotice = std::ranges::equal(id.value, noticeQualifier);
        if (policy.policy == oids::anyPolicy && !isNotice && !std::ranges::equal(id.value, cpsQualifier))
            return "anyPolicy has a qualifier that RFC 5280 does not define";
        if (isNotice && !IsProperNotice(fields.read(der_tag::sequence).value))
            return "the text of a user notice is not a UTF8String or IA5String of at most 200 characters";
        if (std::ranges::equal(id.value, cpsQualifier) && !fields.nextIs(der_tag::ia5String))
            return "the address of a practice statement is not an IA5String";
    }
    return nullptr;
}

const char* PolicyFault(const ProfileSubject& subject)
{
    if (!subject.extensions.policies)
        return nullptr;
    std::vector<Oid> policies;
    for (const PolicyInformation& policy : *subject.extensions.policies) {
        policies.push_back(policy.policy);
        if (const char* const fault = QualifierFault(policy))
            return fault;
    }
    std::ranges::sort(policies);
    return std::ranges::adjacent_find(policies) != policies.end() ? "a policy occurs twice" : nullptr;
}

const char* PolicyMappingFault(const ProfileSubject& subject)
{
    const auto mapsAny = [](const PolicyMapping& mapping) {
        return mapping.issuerDomain == oids::anyPolicy || mapping.subjectDomain == oids::anyPolicy;
    };
    return subject.extensions.policyMappings && std::ranges::any_of(*subject.extensions.policyMappings, mapsAny)
               ? "anyPolicy is mapped"
               : nullptr;
}

const char* PolicyConstraintsFault(const ProfileSubject& subject)
{
    const auto& constraints = subject.extensions.policyConstraints;
    return constraints && !constraints->requireExplicitPolicy && !constraints->inhibitPolicyMapping
               ? "the policy constraints are empty"
               : nullptr;
}

const char* PointsFault(const ProfileSubject& subject, const std::optional<std::vector<DistributionPoint>>& points)
{
    if (!points)
        return nullptr;
    for (const DistributionPoint& point : *points) {
        if (!point.name && point.crlIssuer.empty())
            return "a distribution point has neither a name nor an issuer";
        for (const GeneralName& issuer : point.crlIssuer) {
            if (issuer.kind != GeneralName::Kind::directory)
                return "the issuer at a distribution point is not a directory name";
            if (ComparableName::Read(issuer.value.bytes()) == subject.known.issuer)
                return "a distribution point names the issuer of the certificate";
        }
        if (point.name && !point.name->relativeName.isEmpty() && point.crlIssuer.size() > 1)
            return "a relative name at a distribution point of several issuers";
    }
    return std::ranges::all_of(*points, [](const DistributionPoint& point) { return point.reasons.has_value(); })
               ? "no distribution point is for all reasons"
               : nullptr;
}

const char* DistributionPointFault(const ProfileSubject& subject)
{
    const char* const fault = PointsFault(subject, subject.extensions.distributionPoints);
    return fault != nullptr ? fault : PointsFault(subject, subject.extensions.freshestCrl);
}

/// A rule of RFC 5280, by its section.
struct ProfileRule {
    const char* section;
    ProfileCheck check;
};
constexpr ProfileRule profileRules[] = {
    {"4.1.1.2", AlgorithmFault},
    {"4.1.2.1", VersionFault},
    {"4.1.2.2", SerialNumberFault},
    {"4.1.2.4", NameFault},
    {"4.1.2.4", NameFormsFault},
    {"4.1.2.5", ValidityFault},
    {"4.1.2.6", EmailFault},
    {"4.1.2.7", KeyAlgorithmFault},
    {"4.1.2.8", UniqueIdFault},
    {"4.1", DefaultValueFault},
    {"4.2", CriticalityFault},
    {"4.2", CaExtensionFault},
    {"4.2.1.1", AuthorityKeyFault},
    {"4.2.1.2", SubjectKeyFault},
    {"4.2.1.3", KeyUsageFault},
    {"4.2.1.4", PolicyFault},
    {"4.2.1.5", PolicyMappingFault},
    {"4.2.1.6", AlternativeNameFault},
    {"4.2.1.8", DirectoryAttributesFault},
    {"4.2.1.9", BasicConstraintsFault},
    {"4.2.1.10", NameConstraintsFault},
    {"4.2.1.11", PolicyConstraintsFault},
    {"4.2.1.13", DistributionPointFault},
    {"4.2.2.2", InformationAccessFault},
};

} // namespace

Finding CheckProfile(const KnownCertificate& certificate, CertificateRole role, const KnownCertificate* issuer)
{
    const auto& constraints = certificate.extensions.basicConstraints;
    const ProfileSubject subject = {
        .known = certificate,
        .certificate = *certificate.certificate,
        .extensions = certificate.extensions,
        .issuer = issuer,
        .isCa = role != CertificateRole::endEntity || (constraints && constraints->isCa),
        .written = ReadWrittenFields(certificate.certificate->signedOctets()),
    };
    for (const ProfileRule& rule : profileRules)
        if (const char* const fault = rule.check(subject))
            return {Reason::profile, CCryptoString("RFC 5280, ", rule.section) + CCryptoString(": ") + CCryptoString(fault)};
    return {};
}

} // namespace ccrypto
