#include "asn1/oid/oid_names.h"
#include "pki/x509/extensions.h"

#include <algorithm>
#include <iterator>

namespace ccrypto {

namespace {

/// Reads `content` with `reader` into the field `field`.
template <auto field, auto reader>
bool ReadInto(std::span<const std::uint8_t> content, ReadExtensions& extensions)
{
    extensions.*field = reader(content);
    return (extensions.*field).has_value();
}

bool ReadOcspNoCheck(std::span<const std::uint8_t> content, ReadExtensions& extensions)
{
    // NULL; some responders have nothing at all.
    constexpr std::uint8_t null[] = {0x05, 0x00};
    extensions.hasOcspNoCheck = content.empty() || std::ranges::equal(content, null);
    return extensions.hasOcspNoCheck;
}

/// Whether an extension is read in a certificate or a list, and whether it may be critical there.
enum class ExtensionUse { ignored, hint, processed };

struct ExtensionRow {
    const Oid& oid;
    bool (*read)(std::span<const std::uint8_t> content, ReadExtensions& extensions);
    ExtensionUse inCertificate;
    ExtensionUse inList;

    [[nodiscard]] ExtensionUse useIn(ExtensionOwner owner) const
    {
        return owner == ExtensionOwner::certificate ? inCertificate : inList;
    }
};

/// \return null for an extension that no reader knows.
const ExtensionRow* RowOfExtension(const Oid& oid)
{
    using enum ExtensionUse;
    using Read = ReadExtensions;

    // A hint helps to find keys, lists and responders and is not enforced, so that nobody may rely on it by making it critical; but
    // the key identifier of a list has done its work when a key verifies the list.
    static const ExtensionRow rows[] = {
        {oids::keyUsage, ReadInto<&Read::keyUsage, ReadKeyUsage>, processed, ignored},
        {oids::basicConstraints, ReadInto<&Read::basicConstraints, ReadBasicConstraints>, processed, ignored},
        {oids::extendedKeyUsage, ReadInto<&Read::extendedKeyUsage, ReadExtendedKeyUsage>, processed, ignored},
        {oids::subjectKeyIdentifier, ReadInto<&Read::subjectKeyIdentifier, ReadSubjectKeyIdentifier>, hint, ignored},
        {oids::authorityKeyIdentifier, ReadInto<&Read::authorityKeyIdentifier, ReadAuthorityKeyIdentifier>, hint, processed},
        {oids::subjectAlternativeName, ReadInto<&Read::subjectAlternativeName, ReadGeneralNames>, processed, ignored},
        {oids::certificatePolicies, ReadInto<&Read::policies, ReadCertificatePolicies>, processed, ignored},
        {oids::crlDistributionPoints, ReadInto<&Read::distributionPoints, ReadDistributionPoints>, processed, ignored},
        {oids::authorityInformationAccess, ReadInto<&Read::authorityInformation, ReadAuthorityInformationAccess>, hint, hint},
        {oids::nameConstraints, ReadInto<&Read::nameConstraints, ReadNameConstraints>, processed, ignored},
        {oids::policyMappings, ReadInto<&Read::policyMappings, ReadPolicyMappings>, processed, ignored},
        {oids::policyConstraints, ReadInto<&Read::policyConstraints, ReadPolicyConstraints>, processed, ignored},
        {oids::inhibitAnyPolicy, ReadInto<&Read::inhibitAnyPolicy, ReadSkipCertificates>, processed, ignored},
        {oids::freshestCrl, ReadInto<&Read::freshestCrl, ReadDistributionPoints>, hint, hint},
        {oids::ocspNoCheck, ReadOcspNoCheck, processed, ignored},
        {oids::crlNumber, ReadInto<&Read::crlNumber, ReadCrlNumber>, ignored, processed},
        {oids::issuingDistributionPoint, ReadInto<&Read::issuingDistributionPoint, ReadIssuingDistributionPoint>, ignored,
         processed},
        {oids::deltaCrlIndicator, ReadInto<&Read::deltaCrlIndicator, ReadCrlNumber>, ignored, processed},
    };
    const auto* const row = std::ranges::find_if(rows, [&](const ExtensionRow& known) { return known.oid == oid; });
    return row != std::end(rows) ? row : nullptr;
}

bool HasDoubled(const CCrypto_X509_ValueList& extensions)
{
    std::vector<std::span<const std::uint8_t>> identifiers;
    identifiers.reserve(extensions.values().size());
    for (const auto& extension : extensions.values())
        identifiers.push_back(extension->oid().octets());
    std::ranges::sort(identifiers,
                      [](const auto& left, const auto& right) { return std::ranges::lexicographical_compare(left, right); });
    return std::ranges::adjacent_find(identifiers, [](const auto& left, const auto& right) {
               return std::ranges::equal(left, right);
           }) != identifiers.end();
}

} // namespace

ReadExtensions ReadAllExtensions(const CCrypto_X509_ValueList& extensions, ExtensionOwner owner)
{
    ReadExtensions read;
    read.isMalformed = HasDoubled(extensions);
    for (const auto& extension : extensions.values()) {
        const ExtensionRow* const row = RowOfExtension(extension->oid());
        const ExtensionUse use = row != nullptr ? row->useIn(owner) : ExtensionUse::ignored;
        if (use != ExtensionUse::ignored && !row->read(extension->content().bytes(), read))
            read.isMalformed = true;
        if (use != ExtensionUse::processed && extension->isCritical()) {
            if (!read.hasUnknownCritical)
                read.unknownCritical = extension->oid();
            read.hasUnknownCritical = true;
        }
    }
    return read;
}

CCryptoString CriticalExtensionText(const ReadExtensions& extensions)
{
    const CCryptoString dotted = extensions.unknownCritical.dotted();
    const char* const name = FindOidName(dotted.view());
    return name != nullptr ? dotted + " " + name : dotted;
}

} // namespace ccrypto
